#pragma once

#include "export/export_findings.h"
#include "model/aggregates.h"
#include "model/bitfield.h"
#include "model/valuable.h"

#include <QHash>

#include <optional>
#include <vector>

class VMEnum;
class VMMemoryMap;
class VMRootArchive;

/// The frozen tree as the formats of other tools see it: blocks at addresses, in them registers and groups of
/// registers, in these fields with named values. All formats are written from this one walk.
namespace veldmap {

/// One thing in the memory map, or an array of such things.
struct MapPlace {
    const VMXMLElement &element;   ///< of an array its first member
    const VMXMLElement &declared;  ///< of an array the array: it has name, comment and place
    QString name;                  ///< with the index where each member of an array is told by itself
    quint32 address = 0;           ///< absolute
    quint32 offset = 0;            ///< in the block or group around it
    quint32 size = 0;              ///< bytes of one member
    std::optional<int> count = {}; ///< of members, which follow one another; none for what is no array
};

/// The comment of what stands at \a place, or of the array of it.
const QString &commentOf(const MapPlace &place);

/// A named value of a field.
struct MapOption {
    const VMBitFieldOption &option;
    quint32 value = 0; ///< counted from the field's lowest bit; it fits into the field
};

/// A field as far as it lies inside its register.
struct MapField {
    const VMBitField &field;
    int lowest = 0;
    int width = 1;
    quint32 mask = 0;             ///< its bits in the register
    std::optional<quint32> reset; ///< counted from the lowest bit
    std::vector<MapOption> options;

    int highest() const { return lowest + width - 1; }
};

/// What a walk tells of.
class MapListener {
public:
    virtual ~MapListener() = default;
    /// An instance of a root, or what stands for one; false to pass over what it holds.
    virtual bool beginBlock(const MapPlace &block) = 0;
    virtual void endBlock(const MapPlace &block) = 0;
    /// A structure inside; its parts follow.
    virtual bool beginGroup(const MapPlace &group) = 0;
    virtual void endGroup(const MapPlace &group) = 0;
    /// A register, an integer or a pointer.
    virtual void takeRegister(const MapPlace &place, const VMValuable &valuable) = 0;
    virtual void takeMemory(const MapPlace &place) = 0;
};

/// Whether an array is told as one place, or each of its members as one.
enum class MapArrays { AsOne, EachMember };

/// The elements that stand for the instances of \a root: these, or if there are none the modules of its files. Empty,
/// with an error in \a findings, when there are neither.
std::vector<const VMXMLElement *> blocksOf(const VMRootArchive &root, ExportFindings &findings);

/// Tells \a listener of \a block and all that is in it.
void walkBlock(const VMXMLElement &block, MapArrays arrays, MapListener &listener, ExportFindings &findings);

/// Bits of \a valuable: 8, 16 or 32.
int bitsOf(const VMValuable &valuable);

/// The fields of \a valuable, in the order of its description. What lies outside the register, and options and resets
/// that do not fit, are told.
std::vector<MapField> fieldsOf(const VMValuable &valuable, ExportFindings &findings);

/// The reset value of a register with \a fields, and which of its bits are known.
struct MapReset {
    quint32 value = 0;
    quint32 mask = 0;
};
MapReset resetOf(const std::vector<MapField> &fields);

/// How a field or register can be reached, put together of both.
struct MapAccess {
    bool isReadable = false;
    int writeMode = 0; ///< as VMBitField::writeMode
    bool isWritable() const { return writeMode != 0; }
};
MapAccess accessOf(const VMValuable &valuable);
MapAccess accessOf(const VMBitField &field);

/// The names of the halves of registers, which stand where a description declares them and not in the copies of it.
class HalfNames {
public:
    struct Names {
        QString low;
        QString high;
    };

    /// Of all types of \a root.
    void take(const VMRootArchive &root);
    Names of(const VMValuable &valuable) const;

private:
    void takeBelow(const VMXMLElement &element);

    QHash<QString, Names> m_names; // by the places of registers
};

/// Finds the enums whose entries are the options of fields.
class EnumsOfFields {
public:
    /// Of all files of \a root.
    void take(const VMRootArchive &root);
    /// The enum that the options of \a field come from, null when they are the field's own.
    const VMEnum *of(const VMBitField &field) const;

private:
    QHash<QString, const VMEnum *> m_owners; // by the name of an entry and its place
};

} // namespace veldmap

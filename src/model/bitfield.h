#pragma once

#include <veldmap/model/element.h>

#include <QList>

class VMValuable;

/// How a number stands in text.
enum DisplayType : std::uint8_t {
    DISPLAY_DEC = 0,
    DISPLAY_HEX = 1,    ///< "0x" and upper-case digits
    DISPLAY_BIN = 2,    ///< "0b" and the digits 0 and 1
    DISPLAY_DEFAULT = 3 ///< only as an argument: the element's own display
};

/// A named value of a bitfield.
struct VELDMAP_EXPORT VMBitFieldOption {
    QString name;
    int value = 0;
    QString comment;
    veldmap::SourcePlace source = {}; ///< its tag, or that of the enum's entry that it was taken from
};

/// The named values of a bitfield, and which macros a header gives the field besides.
struct VELDMAP_EXPORT VMBitFieldOptions {
    QList<VMBitFieldOption> optionList; ///< in document order
    bool hasDefault = false;            ///< the value macro, although there are options
    bool hasMask = false;
    bool hasShift = false;
};

/// A range of bits of a valuable, its parent.
///
/// A position stands as number and as the text that the description wrote; twice, in the register that software sees
/// and in the packed word of the hardware. Positions may be any int: what lies outside the 32 bits of a word counts as
/// 0 in masks and values. Text: headers/bitfield_macros.cpp, docsite/pages.cpp, vhdl/maps.cpp.
class VELDMAP_EXPORT VMBitField : public VMXMLElement {
public:
    VMBitField(const QString &name, bool readable, int writeMode, const QString &upPosExpression, int upPos,
               const QString &downPosExpression, int downPos, int resetValue, bool hasReset, DisplayType displayType);
    VMBitField(const VMBitField &source) = default;
    ~VMBitField() override;

    static bool matches(const VMXMLElement &element) { return element.getType() == XML_BITFIELD; }

    int sizeOf() const override;
    int getAlignConstraint() const override;
    int getBitSize() const override;
    /// The valuable's address: a field has none of its own.
    unsigned int getBaseAddress() const override;
    QString getPath() const override;
    QString getTypeString() const override;
    int dumpInfo(int level) const override;

    virtual QString vhdl_logical_serialize(int indent, QStringList &seen) const;
    virtual QString vhdl_physical_serialize(int indent, QStringList &seen) const;

    void setPositions(const QString &upExpression, int up, const QString &downExpression, int down);
    void setPhysicalPositions(const QString &upExpression, int up, const QString &downExpression, int down);

    /// The field's bits set, in place.
    unsigned int getFullValueUnshifted() const;
    /// The same mask moved down to bit 0.
    unsigned int getFullValueShifted() const;
    /// The field's bits out of the valuable's value \a cache, moved down to bit 0.
    unsigned int getValueFromCache(unsigned int cache) const;
    unsigned int getValue() const;
    /// One digit for each bit from the highest, "?" when it can't be read.
    QString getBitString() const;
    /// The value of the first option of that name, 0 when there is none.
    int getValueFromOptionName(const QString &optionName) const;
    QString convertValueToBitString(unsigned int value) const;
    /// \a value, cut to the field's width, as text; with \a useOptions the name of its option in parentheses behind
    /// it, or in its place with \a optionNameOnly.
    QString convertValueToValueString(unsigned int value, DisplayType display, bool useOptions,
                                      bool optionNameOnly) const;
    /// The present value with its option, "?" when it can't be read and \a force is not set.
    QString getValueString(DisplayType display, bool optionNameOnly, bool force) const;
    /// As getValueString, for the field's own value \a value.
    QString getValueStringFromCache(unsigned int value, DisplayType display, bool optionNameOnly, bool force) const;
    /// The reset value as text, "-" when there is none. 0 and 1 carry no prefix.
    QString getResetString(DisplayType display) const;
    /// "r" or "-", then "-", "w", "s" or "c".
    QString getAccessString() const;
    /// The options as an HTML table, empty without options. Text: docsite/options_table.cpp.
    QString generateOptionsComment() const;

    bool readable;
    bool hasReset;
    int upPos;   ///< highest bit
    int downPos; ///< lowest bit
    int physicalUpPos = 0;
    int physicalDownPos = 0;
    int writeMode; ///< 0 none, 1 plain write, 2 write sets, 3 write clears
    QString upPosExpression;
    QString downPosExpression;
    QString physicalUpPosExpression;
    QString physicalDownPosExpression;
    [[no_unique_address]] VMBitFieldOptions options; // the two below stand in what its flags leave
    DisplayType displayType;
    std::uint32_t resetValue; ///< counted from the field's lowest bit
};

/// Bitfields of one valuable under one name, in the order of adding. Owns none of them; the valuable owns both.
class VELDMAP_EXPORT VMBitGroup : public QList<VMBitField *> {
public:
    VMBitGroup(const QString &name, VMValuable *valuable);

    void addBitField(VMBitField *field);
    /// Appends each field of \a group.
    void addBitGroup(const VMBitGroup *group);

    /// The lowest bit of the group, 32 when it is empty.
    int getShift() const;
    unsigned int getFullValueUnshifted() const;
    unsigned int getFullValueShifted() const;
    /// Whether the bits form one run.
    bool isContiguous() const;
    int getTotalBits() const;
    bool isPhysicalContiguous() const;
    QString getUpPosExpression() const;
    QString getDownPosExpression() const;
    QString getUpPosPhysicalExpression() const;
    QString getDownPosPhysicalExpression() const;

    /// The group's line in the logical and the physical map of a VHDL package, as that of a field. Text: vhdl/maps.cpp.
    QString vhdl_logical_serialize(int indent, QStringList &seen) const;
    QString vhdl_physical_serialize(int indent, QStringList &seen) const;
    /// The group's three macros: value, mask and shift. Text: headers/bitfield_macros.cpp.
    QString macro_serialize(const QString &prefix, QStringList &usedNames) const;

    VMValuable *valuable; ///< not owned
    QString name;
    veldmap::SourcePlace source = {}; ///< its tag, or that of the cut field which made it
};

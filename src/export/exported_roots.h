#pragma once

#include "export/export_findings.h"

#include <QHash>
#include <QString>

#include <optional>
#include <vector>

class VMMemoryMap;
class VMRootArchive;
class VMXMLElement;

namespace veldmap {

/// What a format can do with blocks that are unlike the others.
struct BlockRules {
    bool needsRoom = true;      ///< it has no place for one of no bytes
    QString sameAddresses = {}; ///< what becomes of one that lies where another does; empty where that is no matter
};

/// What an export is about: the roots of a memory map, and the blocks in them.
class ExportedRoots {
public:
    /// Tells what \a format has no place for.
    ExportedRoots(const VMMemoryMap &map, QLatin1StringView format, const BlockRules &rules, ExportFindings &findings);

    const std::vector<const VMRootArchive *> &roots() const { return m_roots; }
    /// The chip's before the software's.
    const std::vector<const VMXMLElement *> &blocks() const { return m_blocks; }
    /// The block that \a block shares addresses with, null if none or if that is no matter. It is not itself such a
    /// one.
    const VMXMLElement *blockUnder(const VMXMLElement &block) const { return m_under.value(&block); }
    /// The name of the whole: the one that the comment of the first root begins with, as "RP2040: two cores", or that
    /// of the root's file as C takes it.
    QString name() const;
    /// What the first root says of itself behind such a name.
    QString description() const;

    /// All that the first root says of itself.
    QString comment() const;

private:
    void takeBlocks(const VMRootArchive &root, QLatin1StringView format, bool needsRoom, ExportFindings &findings);
    void findOverlaps(const BlockRules &rules, ExportFindings &findings);

    std::vector<const VMRootArchive *> m_roots;
    std::vector<const VMXMLElement *> m_blocks;
    QHash<const VMXMLElement *, const VMXMLElement *> m_under;
};

/// What all instances of one type in one root have in common.
using TypeKey = std::pair<const VMRootArchive *, QString>;

/// That of \a block; nothing if its type has no name.
std::optional<TypeKey> typeOf(const VMXMLElement &block);

} // namespace veldmap

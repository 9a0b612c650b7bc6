#include "export/exported_roots.h"

#include "export/comment_text.h"
#include "export/export_names.h"
#include "export/export_rules.h"
#include "export/map_walk.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QRegularExpression>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// What of the files of \a root no format has a place for, in words.
QStringList onlyHere(const VMRootArchive &root)
{
    QStringList words;
    const auto any = [&](auto has, const QString &word) {
        if (std::ranges::any_of(root.xmlArchives, has))
            words += word;
    };
    any(
        [](const VMXMLArchive *archive) {
            return std::ranges::any_of(*archive->variables,
                                       [](const VMIntVar &variable) { return !variable.leftExpression.isEmpty(); });
        },
        u"variables"_s);
    any([](const VMXMLArchive *archive) { return !archive->variables->enums.empty(); }, u"enums"_s);
    any([](const VMXMLArchive *archive) { return !archive->cJoker.isEmpty(); }, u"C text"_s);
    return words;
}

/// "a", "a and b", "a, b and c".
QString listOf(QStringList words)
{
    const QString last = words.takeLast();
    return words.isEmpty() ? last : words.join(", "_L1) + " and "_L1 + last;
}

/// The name of the chip in a comment such as "RP2040: two cores": one that is no plain word of a language. Empty when
/// there is none.
QString nameInFront(const QString &comment)
{
    // "A1: b" and "A1", but not "Note: b".
    static const QRegularExpression pattern(u"^([A-Za-z]\\w*[A-Z0-9_]\\w*)(:\\s|:?$)"_s);
    return pattern.match(comment).captured(1);
}

} // namespace

ExportedRoots::ExportedRoots(const VMMemoryMap &map, QLatin1StringView format, const BlockRules &rules,
                             ExportFindings &findings)
{
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (!root)
            continue;
        m_roots.push_back(root);
        takeBlocks(*root, format, rules.needsRoom, findings);
        if (const QStringList words = onlyHere(*root); !words.isEmpty())
            findings.add(rules::exportValuesOnly, {}, {format, listOf(words)});
    }
    if (!rules.sameAddresses.isEmpty())
        findOverlaps(rules, findings);
}

void ExportedRoots::takeBlocks(const VMRootArchive &root, QLatin1StringView format, bool needsRoom,
                               ExportFindings &findings)
{
    for (const VMXMLElement *block : blocksOf(root, findings)) {
        if (needsRoom && block->sizeOf() == 0)
            findings.add(rules::exportEmptyBlock, block->source, {block->getName(), format});
        else
            m_blocks.push_back(block);
    }
}

void ExportedRoots::findOverlaps(const BlockRules &rules, ExportFindings &findings)
{
    std::vector<const VMXMLElement *> inOrder;
    std::ranges::copy_if(m_blocks, std::back_inserter(inOrder), &VMXMLElement::isInstance);
    std::ranges::stable_sort(inOrder, {}, &VMXMLElement::offset);
    const VMXMLElement *last = nullptr;
    quint64 end = 0;
    for (const VMXMLElement *block : inOrder) {
        if (last && block->offset < end) {
            m_under.insert(block, last);
            findings.add(rules::exportSameAddresses, block->source,
                         {block->getName(), last->getName(), rules.sameAddresses});
            continue;
        }
        last = block;
        end = quint64(block->offset) + static_cast<quint32>(block->sizeOf());
    }
}

QString ExportedRoots::comment() const
{
    const bool isAny = !m_roots.empty() && !m_roots.front()->xmlArchives.isEmpty();
    return isAny ? plainCommentText(m_roots.front()->xmlArchives.first()->archiveComment) : QString();
}

QString ExportedRoots::name() const
{
    if (const QString named = nameInFront(comment()); !named.isEmpty())
        return named;
    return m_roots.empty() ? u"unnamed"_s : legalName(m_roots.front()->getName());
}

QString ExportedRoots::description() const
{
    const QString text = comment();
    const QString named = nameInFront(text);
    return named.isEmpty() ? text : text.sliced(named.size()).remove(0, 1).trimmed();
}

std::optional<TypeKey> typeOf(const VMXMLElement &block)
{
    if (block.typedefName.isEmpty())
        return {};
    return TypeKey(block.getRootArchive(), block.typedefName);
}

} // namespace veldmap

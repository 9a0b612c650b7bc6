#include "check/known_names.h"

#include "check/schema.h"
#include "text/nearest_name.h"
#include "xml/tag_attributes.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// A rule that names an unknown tag last, and where that stands.
struct ForeignTagRow {
    QLatin1StringView ruleId;
    TagKind parent;
};
constexpr ForeignTagRow kForeignTags[] = {
    {"foreign-tag-among-archives"_L1, TagKind::BigArchive},
    {"foreign-tag-in-archive"_L1, TagKind::Archive},
    {"foreign-tag-in-include"_L1, TagKind::Include},
    {"foreign-tag-in-enum"_L1, TagKind::Enum},
    {"foreign-tag-in-module"_L1, TagKind::Type},
    {"foreign-tag-in-struct"_L1, TagKind::Struct},
    {"foreign-tag-in-alias"_L1, TagKind::Alias},
    {"foreign-tag-in-memory"_L1, TagKind::Memory},
    {"foreign-tag-in-pointer"_L1, TagKind::Pointer},
    {"foreign-tag-in-valuable"_L1, TagKind::Register},
    {"foreign-tag-in-field"_L1, TagKind::Field},
    {"foreign-tag-in-group"_L1, TagKind::Bitgroup},
    {"foreign-tag-in-options"_L1, TagKind::Options},
    {"foreign-tag-in-option"_L1, TagKind::Option},
};

/// A rule whose second argument is an unknown type or enum.
struct NameRow {
    QLatin1StringView ruleId;
    bool isType;
};
constexpr NameRow kNameRows[] = {
    {"instance-of-unknown-type"_L1, true},
    {"member-of-unknown-type"_L1, true},
    {"pointer-type-unknown"_L1, true},
    {"cut-enum"_L1, false},
    {"options-enum"_L1, false},
};

QString nearestOf(const QString &word, QStringList names)
{
    names.sort(); // of equally near ones always the same
    NearestName nearest(word);
    for (const QString &name : std::as_const(names))
        nearest.offer(name);
    return nearest.name();
}

} // namespace

void KnownNames::onDocument(const TagDocument &document, const QString &)
{
    const auto take = [&](const Tag &tag) {
        const QStringView name = tag.name();
        if (name == "module"_L1 || name == "typedef"_L1 || name == "alias"_L1)
            m_types += readText(tag, u"name");
        else if (name == "enum"_L1)
            m_enums += readText(tag, u"name");
    };
    const auto takeAll = [&](const Tag &archive) {
        for (const Tag &child : ChildTags(archive)) {
            take(child);
            for (const Tag &inner : ChildTags(child)) {
                if (inner.name() == "enum"_L1)
                    take(inner);
            }
        }
    };
    const Tag root = document.root();
    take(root);
    if (root.name() != "bigarchive"_L1) {
        takeAll(root);
        return;
    }
    for (const Tag &archive : ChildTags(root))
        takeAll(archive);
}

QString KnownNames::nearestFor(const Finding &finding) const
{
    const QLatin1StringView id = finding.rule->id;
    const auto tag = std::ranges::find(kForeignTags, id, &ForeignTagRow::ruleId);
    if (tag != std::end(kForeignTags) && !finding.arguments.isEmpty())
        return nearestOf(finding.arguments.last(), tagNamesIn(tag->parent));
    const auto row = std::ranges::find(kNameRows, id, &NameRow::ruleId);
    if (row == std::end(kNameRows) || finding.arguments.size() < 2)
        return {};
    const QStringList enums(m_enums.begin(), m_enums.end());
    if (!row->isType)
        return nearestOf(finding.arguments.at(1), enums);
    return nearestOf(finding.arguments.at(1), QStringList(m_types.begin(), m_types.end()) + enums);
}

} // namespace veldmap

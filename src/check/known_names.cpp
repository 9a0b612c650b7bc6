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

const ForeignTagRow *foreignTagRow(const Finding &finding)
{
    const auto row = std::ranges::find(kForeignTags, QLatin1StringView(finding.rule->id), &ForeignTagRow::ruleId);
    return row == std::end(kForeignTags) || finding.arguments.isEmpty() ? nullptr : row;
}

/// What may stand in a tag, as a hint: "here may stand entry, bound, comment".
QString allowedTags(TagKind parent)
{
    QStringList names = tagNamesIn(parent);
    names.removeDuplicates();
    return names.isEmpty() ? QString() : "here may stand "_L1 + names.join(", "_L1);
}

} // namespace

void KnownNames::onDocument(const TagDocument &document, const QString &file, const DocumentStudy *)
{
    const auto keep = [&](Declarations &names, const Tag &tag, const QString &name) {
        if (!name.isEmpty() && !names.contains(name))
            names.insert(name, {file, tag.lineNumber(), tag.columnNumber(), 0});
    };
    const auto take = [&](const Tag &tag) {
        const QStringView kind = tag.name();
        if (kind == "module"_L1 || kind == "typedef"_L1 || kind == "alias"_L1)
            keep(m_types, tag, readText(tag, u"name"));
        else if (kind == "var"_L1 || kind == "range"_L1)
            keep(m_variables, tag, readName(tag, u"name"));
        if (kind != "enum"_L1)
            return;
        keep(m_enums, tag, readName(tag, u"name"));
        for (const Tag &entry : ChildTags(tag)) {
            if (entry.name() == "entry"_L1 || entry.name() == "bound"_L1)
                keep(m_variables, entry, readName(entry, u"name"));
        }
    };
    const auto takeAll = [&](const Tag &archive) {
        for (const Tag &child : ChildTags(archive)) {
            take(child);
            const QStringView kind = child.name();
            if (kind != "module"_L1 && kind != "typedef"_L1)
                continue;
            for (const Tag &inner : ChildTags(child)) // which may hold variables and enums
                take(inner);
        }
    };
    if (!m_includes.contains(file)) // a root, which files below may include again
        m_includes.insert(file, {});
    const Tag root = document.root();
    take(root);
    if (root.name() != "bigarchive"_L1) {
        takeAll(root);
        return;
    }
    for (const Tag &archive : ChildTags(root))
        takeAll(archive);
}

void KnownNames::onInclude(const Place &include, const QString &file)
{
    if (!m_includes.contains(file))
        m_includes.insert(file, include);
}

KnownNames::Unknown KnownNames::unknownOf(const Finding &finding) const
{
    if (!finding.expression.unknownName.isEmpty())
        return {finding.expression.unknownName, {&m_variables}};
    const auto row = std::ranges::find(kNameRows, QLatin1StringView(finding.rule->id), &NameRow::ruleId);
    if (row == std::end(kNameRows) || finding.arguments.size() < 2)
        return {};
    if (row->isType)
        return {finding.arguments.at(1), {&m_types, &m_enums}};
    return {finding.arguments.at(1), {&m_enums}};
}

QString KnownNames::nearestFor(const Finding &finding) const
{
    if (const ForeignTagRow *row = foreignTagRow(finding))
        return nearestOf(finding.arguments.last().trimmed(), tagNamesIn(row->parent));
    const Unknown unknown = unknownOf(finding);
    QStringList names;
    for (const Declarations *declared : unknown.among)
        names += declared->keys();
    return names.isEmpty() ? QString() : nearestOf(unknown.name, names);
}

void KnownNames::explain(Finding &finding)
{
    constexpr int kMostSearches = 200; // each looks at all names; nobody reads further
    QString file = finding.place.file;
    // The first include of a file stands in one that was read before it, so that the way ends at a root.
    for (Place include = m_includes.value(file); !include.isNull(); include = m_includes.value(file)) {
        finding.includes += include;
        file = include.file;
    }
    const Unknown unknown = unknownOf(finding);
    for (const Declarations *names : finding.place.isNull() ? decltype(unknown.among)() : unknown.among) {
        const auto declared = names->constFind(unknown.name);
        if (declared == names->cend())
            continue;
        const bool isBelow = declared->file == finding.place.file;
        if (isBelow && declared->line == finding.place.line && declared->column == finding.place.column) {
            finding.hint = u"this tag declares the name, which is not known in its own value"_s;
            return;
        }
        finding.withPlace(*declared, isBelow ? u"declared here, further down"_s : u"declared here"_s);
        if (!isBelow)
            finding.hint = u"include its file in front of this place"_s;
        else if (finding.rule->hint.isEmpty())
            finding.hint = u"declare it before it is used"_s;
        return;
    }
    const ForeignTagRow *row = foreignTagRow(finding);
    if ((row || !unknown.among.isEmpty()) && ++m_searches > kMostSearches)
        return;
    if (const QString nearest = nearestFor(finding); !nearest.isEmpty())
        finding.hint = u"did you mean '%1'?"_s.arg(nearest);
    else if (row)
        finding.hint = allowedTags(row->parent);
}

} // namespace veldmap

#include "check/unused_names.h"

#include "check/tree_rules.h"
#include "text/names.h"
#include "xml/tag_attributes.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Attributes whose words name nothing.
constexpr QLatin1StringView kPlain[] = {"name"_L1,     "access"_L1, "protect"_L1,  "file"_L1,   "display"_L1,
                                        "category"_L1, "load"_L1,   "optional"_L1, "global"_L1, "dir"_L1};

bool isPlain(QStringView attribute)
{
    return std::ranges::any_of(kPlain, [&](QLatin1StringView name) { return name == attribute; });
}

bool beginsName(QChar c)
{
    return c.isLetter() || c == u'_';
}

} // namespace

void UnusedNames::read(const TagDocument &document, const QString &file)
{
    m_files[file];
    m_fileOrder += file;
    if (!document.root().isNull())
        readTag(document.root(), file);
}

void UnusedNames::readInclude(const Place &include, const QString &file)
{
    File &known = m_files[file];
    if (known.include.isNull())
        known.include = include;
    m_files[include.file].isOfUse = true; // as a list of others
}

void UnusedNames::readTag(const Tag &tag, const QString &file)
{
    const QStringView name = tag.name();
    if (name == "comment"_L1)
        return;
    if (name == "cjoker"_L1) {
        use(readCJoker(tag), file);
        m_files[file].isOfUse = true;
        return;
    }
    declare(tag, file);
    for (const TagDocument::Attribute &attribute : tag.attributes()) {
        if (!isPlain(attribute.name))
            use(attribute.value, file);
    }
    for (const Tag &child : ChildTags(tag))
        readTag(child, file);
}

void UnusedNames::declare(const Tag &tag, const QString &file)
{
    const QStringView kind = tag.name();
    const auto add = [&](const QString &name) { m_files[file].names += name; };
    const auto declared = [&] {
        return Declared{readName(tag, u"name"), {file, tag.lineNumber(), tag.columnNumber(), 0}};
    };
    if (kind == "var"_L1) {
        m_variables += declared();
        add(m_variables.last().name);
    } else if (kind == "enum"_L1) {
        m_enums += declared();
        for (const Tag &entry : ChildTags(tag))
            m_enums.last().entries += readName(entry, u"name");
        m_files[file].names += m_enums.last().entries;
        add(m_enums.last().name);
    } else if (kind == "module"_L1 || kind == "typedef"_L1 || kind == "alias"_L1) {
        add(readText(tag, u"name"));
    } else if (kind == "range"_L1 || (kind == "archive"_L1 && !tag.attribute(u"vhdlpkg").isEmpty())) {
        m_files[file].isOfUse = true; // for hardware
    } else if (kind == "instance"_L1 && !tag.attribute(u"address").isNull()) {
        m_files[file].isOfUse = true;
    }
}

void UnusedNames::use(QStringView text, const QString &file)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (!isNameCharacter(text[at]))
            continue;
        const qsizetype begin = at;
        while (at < text.size() && isNameCharacter(text[at]))
            ++at;
        if (!beginsName(text[begin]))
            continue;
        const QString name = text.sliced(begin, at - begin).toString();
        const auto user = m_users.find(name);
        if (user == m_users.end())
            m_users.insert(name, file);
        else if (*user != file)
            user->clear();
    }
}

void UnusedNames::report(Sink &sink) const
{
    const auto isUsed = [&](const QString &name) { return m_users.contains(name); };
    for (const Declared &variable : m_variables) {
        if (!isUsed(variable.name))
            sink.take(Finding(lint::unusedVariable.rule, variable.place, {variable.name}));
    }
    for (const Declared &one : m_enums) {
        if (!isUsed(one.name) && std::ranges::none_of(one.entries, isUsed))
            sink.take(Finding(lint::unusedEnum.rule, one.place, {one.name}));
    }
    for (const QString &name : m_fileOrder) {
        const File &file = *m_files.constFind(name);
        const bool hasUser = std::ranges::any_of(file.names, [&](const QString &declared) {
            const auto user = m_users.constFind(declared);
            return user != m_users.cend() && *user != name;
        });
        if (!file.isOfUse && !hasUser && !file.include.isNull())
            sink.take(Finding(lint::unusedFile.rule, file.include, {name.section(u'/', -1)}));
    }
}

} // namespace veldmap

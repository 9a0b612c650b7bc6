#include "check/unused_names.h"

#include "check/tree_rules.h"
#include "text/names.h"
#include "text/words.h"
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
    return std::ranges::any_of(kPlain, [&](QLatin1StringView name) { return isWord(attribute, name); });
}

bool beginsName(QChar c)
{
    return c.isLetter() || c == u'_';
}

/// Goes through the tags of a document.
class NameReader {
public:
    explicit NameReader(DocumentNames &names) : m_names(names) {}

    void read(const Tag &tag)
    {
        const QStringView kind = tag.name();
        if (isWord(kind, "comment"_L1))
            return;
        if (isWord(kind, "cjoker"_L1)) {
            m_names.texts += readCJoker(tag);
            use(m_names.texts.last());
            m_names.isOfUse = true;
            return;
        }
        declare(tag);
        for (const TagDocument::Attribute &attribute : tag.attributes()) {
            if (!isPlain(attribute.name))
                use(attribute.value);
        }
        for (const Tag &child : ChildTags(tag))
            read(child);
    }

private:
    void declare(const Tag &tag)
    {
        const QStringView kind = tag.name();
        const auto declared = [&] {
            return DocumentNames::Declared{readName(tag, u"name"), {{}, tag.lineNumber(), tag.columnNumber(), 0}};
        };
        if (isWord(kind, "var"_L1)) {
            m_names.variables += declared();
            m_names.declared += m_names.variables.last().name;
        } else if (isWord(kind, "enum"_L1)) {
            m_names.enums += declared();
            DocumentNames::Declared &one = m_names.enums.last();
            for (const Tag &entry : ChildTags(tag))
                one.entries += readName(entry, u"name");
            m_names.declared += one.entries;
            m_names.declared += one.name;
        } else if (isWord(kind, "module"_L1) || isWord(kind, "typedef"_L1) || isWord(kind, "alias"_L1)) {
            m_names.declared += readText(tag, u"name");
        } else if (isWord(kind, "range"_L1) || (isWord(kind, "archive"_L1) && !tag.attribute(u"vhdlpkg").isEmpty())) {
            m_names.isOfUse = true; // for hardware
        } else if (isWord(kind, "instance"_L1) && !tag.attribute(u"address").isNull()) {
            m_names.isOfUse = true;
        }
    }

    void use(QStringView text)
    {
        for (qsizetype at = 0; at < text.size(); ++at) {
            if (!isNameCharacter(text[at]))
                continue;
            const qsizetype begin = at;
            while (at < text.size() && isNameCharacter(text[at]))
                ++at;
            if (beginsName(text[begin]))
                m_names.used.insert(text.sliced(begin, at - begin));
        }
    }

    DocumentNames &m_names;
};

/// \a declared, which is in \a file.
QList<DocumentNames::Declared> inFile(QList<DocumentNames::Declared> declared, const QString &file)
{
    for (DocumentNames::Declared &one : declared)
        one.place.file = file;
    return declared;
}

} // namespace

DocumentNames namesIn(const TagDocument &document)
{
    DocumentNames names;
    if (!document.root().isNull())
        NameReader(names).read(document.root());
    return names;
}

void UnusedNames::add(const DocumentNames &names, const QString &file)
{
    m_fileOrder += file;
    File &known = m_files[file];
    known.names = names.declared;
    known.isOfUse = known.isOfUse || names.isOfUse;
    m_variables += inFile(names.variables, file);
    m_enums += inFile(names.enums, file);
    for (const QStringView name : names.used) {
        const QString text = name.toString();
        const auto user = m_users.find(text);
        if (user == m_users.end())
            m_users.insert(text, file);
        else if (*user != file)
            user->clear();
    }
}

void UnusedNames::readInclude(const Place &include, const QString &file)
{
    File &known = m_files[file];
    if (known.include.isNull())
        known.include = include;
    m_files[include.file].isOfUse = true; // as a list of others
}

void UnusedNames::report(Sink &sink) const
{
    const auto isUsed = [&](const QString &name) { return m_users.contains(name); };
    for (const DocumentNames::Declared &variable : m_variables) {
        if (!isUsed(variable.name))
            sink.take(Finding(lint::unusedVariable.rule, variable.place, {variable.name}));
    }
    for (const DocumentNames::Declared &one : m_enums) {
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

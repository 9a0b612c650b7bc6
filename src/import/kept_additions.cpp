#include "import/kept_additions.h"

#include "files/file_reader.h"
#include "findings/limits.h"
#include "import/rules.h"
#include "xml/tag_attributes.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// What a tag is called among its siblings.
QString nameOf(const Tag &tag)
{
    for (const QStringView attribute : {QStringView(u"name"), QStringView(u"file"), QStringView(u"ref")}) {
        const QStringView value = tag.attribute(attribute);
        if (!value.isNull())
            return tag.name().toString() + u' ' + value.toString();
    }
    return tag.name().toString();
}

/// The tags of a document by their paths: "module uart/reg32 CTRL/bits EN". Of several with one path each but the first
/// has a number too.
class TagPaths {
public:
    struct Entry {
        Tag tag;
        QString path;
        QString comment; ///< its own, null without one
        int level = 0;
    };

    /// Of tags no deeper than \a depth.
    explicit TagPaths(const TagDocument &document, int depth = limits::kTagDepth) : m_depth(depth)
    {
        add(document.root(), {}, 0);
    }

    const std::vector<Entry> &entries() const { return m_entries; }
    const Entry *find(const QString &path) const
    {
        const auto known = m_byPath.constFind(path);
        return known == m_byPath.constEnd() ? nullptr : &m_entries[*known];
    }
    const Entry *ofNumber(int number) const
    {
        const auto known = m_byNumber.constFind(number);
        return known == m_byNumber.constEnd() ? nullptr : &m_entries[*known];
    }

private:
    void add(const Tag &tag, const QString &parent, int level)
    {
        const QString own = level == 0 ? QString() : level == 1 ? nameOf(tag) : parent + u'/' + nameOf(tag);
        QString path = own;
        for (int number = 2; m_byPath.contains(path); ++number)
            path = own + u'#' + QString::number(m_next[own] = std::max(m_next.value(own), number));
        const std::size_t at = m_entries.size();
        m_byPath.insert(path, at);
        m_byNumber.insert(tag.number(), at);
        m_entries.push_back({tag, path, {}, level});
        for (const Tag &child : ChildTags(tag)) {
            if (child.name() == "comment"_L1)
                m_entries[at].comment = readComment(child);
            else if (level < m_depth)
                add(child, path, level + 1);
        }
    }

    int m_depth;
    std::vector<Entry> m_entries;
    QHash<QString, std::size_t> m_byPath;
    QHash<int, std::size_t> m_byNumber;
    QHash<QString, int> m_next;
};

std::optional<QByteArray> bytesOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return readAtMost(file, limits::kDocumentBytes);
}

/// Puts what was added to one file into the file as it is now.
class Keeper {
public:
    Keeper(const QString &path, const QSet<QString> &made, WrittenFile &file, Sink &sink)
        : m_path(path), m_made(made), m_file(file), m_sink(sink)
    {
    }

    void run(const QByteArray &before)
    {
        TagDocument oldDocument;
        TagDocument newDocument;
        if (const TagDocument::Error error = oldDocument.read(before)) {
            m_sink.take(Finding(*error.refusal.rule, {m_path, error.line, error.column}, error.refusal.arguments));
            return;
        }
        if (newDocument.read(m_file.text))
            return;
        const TagPaths before_(oldDocument);
        const TagPaths after(newDocument);
        m_lines = m_file.text.split('\n');
        m_lines.removeLast();
        for (const QByteArray &line : std::as_const(m_lines))
            m_output.append({{}, line, {}});
        keepNotes(oldDocument, before_, newDocument, after);
        keepComments(before_, after);
        keepTags(before_, after);
        writeBack();
    }

private:
    /// A line as it was made, with what stands around it now.
    struct Line {
        QByteArrayList before;
        QByteArray text;
        QByteArrayList behind;
    };

    static QByteArray indent(int level) { return QByteArray(2 * level, ' '); }
    Line &lineOf(const Tag &tag)
    {
        return m_output[std::clamp<qsizetype>(tag.lineNumber() - 1, 0, m_output.size() - 1)];
    }

    void lose(const Place &place, const QString &where, const QString &what)
    {
        constexpr qsizetype kShown = 80;
        m_sink.take(Finding(rules::importLostAddition, place, {where, what.simplified().left(kShown)}));
    }

    void keepNotes(const TagDocument &oldDocument, const TagPaths &before, const TagDocument &newDocument,
                   const TagPaths &after)
    {
        QSet<std::pair<QString, QString>> made;
        for (const TagDocument::Note &note : newDocument.notes()) {
            if (const TagPaths::Entry *entry = after.ofNumber(note.tag))
                made.insert({entry->path, note.text.toString()});
        }
        for (const TagDocument::Note &note : oldDocument.notes()) {
            const TagPaths::Entry *old = before.ofNumber(note.tag);
            const QString text = note.text.toString();
            // One behind the last tag of another belongs to that one's end.
            const TagPaths::Entry *to = old ? after.find(old->path) : nullptr;
            if (old && made.contains({old->path, text}))
                continue;
            if (to)
                lineOf(to->tag).before += indent(to->level) + "<!--" + text.toUtf8() + "-->";
            else if (!(old && isKeptWhole(*old)))
                lose({m_path, note.line, note.column}, old ? old->path : u"the end of a tag"_s, text);
        }
    }

    void keepComments(const TagPaths &before, const TagPaths &after)
    {
        for (const TagPaths::Entry &old : before.entries()) {
            const TagPaths::Entry *to = old.comment.isNull() ? nullptr : after.find(old.path);
            if (!to || !to->comment.isNull())
                continue;
            const QByteArray comment = "<comment>" + old.comment.toUtf8().replace("<br>", "<br/>") + "</comment>";
            QByteArray &line = lineOf(to->tag).text;
            if (line.endsWith("/>"))
                line = line.chopped(2) + '>' + comment + "</" + to->tag.nameAsWritten().toUtf8() + '>';
            else
                lineOf(to->tag).behind += indent(to->level + 1) + comment;
        }
    }

    /// Whether \a old is a number, or another tag of an archive, that no import made.
    bool isKeptWhole(const TagPaths::Entry &old) const
    {
        return old.level == 1 && old.tag.name() != "module"_L1 && !m_made.contains(m_file.path + u' ' + old.path);
    }

    void keepTags(const TagPaths &before, const TagPaths &after)
    {
        for (const TagPaths::Entry &old : before.entries()) {
            if (old.level != 1 || after.find(old.path) || !isKeptWhole(old))
                continue;
            // In front of what may use it: an include of the other includes, the rest of types and instances.
            const bool isInclude = old.tag.name() == "include"_L1;
            const auto next = std::ranges::find_if(after.entries(), [&](const TagPaths::Entry &entry) {
                return entry.level == 1 && (entry.tag.name() != "include"_L1 || isInclude);
            });
            constexpr qsizetype kColumns = 118; // behind the indent
            QByteArray text = old.tag.serialized().trimmed().toUtf8();
            if (text.size() <= kColumns)
                text.replace('\n', QByteArrayView());
            Line &line = next == after.entries().end() ? m_output.last() : lineOf(next->tag);
            for (const QByteArray &one : text.split('\n'))
                line.before += indent(1) + one;
        }
    }

    void writeBack()
    {
        QByteArray text;
        QList<chip::At> sources;
        for (qsizetype at = 0; at < m_output.size(); ++at) {
            const Line &line = m_output[at];
            const auto append = [&](const QByteArray &one, const chip::At &source) {
                text += one + '\n';
                sources.append(source);
            };
            for (const QByteArray &one : line.before)
                append(one, {});
            append(line.text, m_file.sources.value(at));
            for (const QByteArray &one : line.behind)
                append(one, {});
        }
        m_file.text = text;
        m_file.sources = sources;
    }

    QString m_path;
    const QSet<QString> &m_made;
    WrittenFile &m_file;
    Sink &m_sink;
    QByteArrayList m_lines;
    QList<Line> m_output;
};

constexpr QLatin1StringView kMadeBegin = "<!-- made by the import:"_L1;

/// What the import before made, by file and path.
QSet<QString> madeBefore(const QString &directory)
{
    QSet<QString> made;
    const std::optional<QByteArray> bytes = bytesOf(directory + u'/' + kImportReport);
    if (!bytes)
        return made;
    const QString report = QString::fromUtf8(*bytes);
    const qsizetype begin = report.indexOf(kMadeBegin);
    if (begin < 0)
        return made;
    for (const QStringView line : QStringView(report).sliced(begin + kMadeBegin.size()).split(u'\n'))
        made.insert(line.toString());
    return made;
}

} // namespace

void keepAdditions(const QString &directory, Import &import, Sink &sink)
{
    const QSet<QString> made = madeBefore(directory);
    QSet<QString> paths;
    for (WrittenFile &file : import.files) {
        const QString path = directory + u'/' + file.path;
        paths.insert(file.path);
        if (const std::optional<QByteArray> before = bytesOf(path))
            Keeper(path, made, file, sink).run(*before);
    }
    // Files of the import before that are none of this one.
    QStringList before(made.begin(), made.end());
    before.sort();
    for (const QString &one : std::as_const(before)) {
        const QString include = u"soc.xml include "_s;
        const QString name = one.startsWith(include) ? one.sliced(include.size()) : QString();
        if (!name.isEmpty() && !paths.contains(name) && QFile::exists(directory + u'/' + name))
            sink.take(Finding(rules::importLostFile, {directory + u'/' + name}, {name}));
    }
}

QString madeTags(const Import &import)
{
    QString text = QString(kMadeBegin) + u'\n';
    for (const WrittenFile &file : import.files) {
        TagDocument document;
        if (document.read(file.text))
            continue;
        const TagPaths paths(document, 1);
        for (const TagPaths::Entry &entry : paths.entries()) {
            if (entry.level == 1)
                text += file.path + u' ' + entry.path + u'\n';
        }
    }
    return text + u"-->\n"_s;
}

} // namespace veldmap

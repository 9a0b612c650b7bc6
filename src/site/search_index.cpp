#include "site/search_index.h"

#include "model/visit.h"
#include "site/comment_html.h"
#include "site/page_rows.h"
#include "site/pages.h"
#include "site/site_plan.h"

#include <QHash>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

using namespace Qt::StringLiterals;

// The lines of a type in the names:
//
//     #uart
//     ctrl<tab><tab>enable,speed,parity        a 32-bit register behind what stands before it, and its fields
//     chan<tab>@10*4:4                         at 0x10, 4 members, 4 bytes apart
//     {fifo                                    a structure; its members follow up to the closing line
//     level<tab>h                              h 16 bits, b 8 bits, sN another size in bytes, mN memory of N bytes
//     }
//
// All numbers but counts are hexadecimal. Names are pieces of ids, and what has a meaning here is written as in
// addresses.

namespace veldmap {

namespace {

constexpr qint64 kNamesLines = 16'000; // of one file; some 500 KB
constexpr qint64 kTextsLines = 500;    // of one file; some 70 KB
constexpr qint64 kWordsLines = 1'500;  // for which there is a file of words; some 60 KB

qint64 linesInside(const VMXMLElement &element)
{
    return visit(element, Overloads{[](const VMStruct &structure) -> qint64 {
                                        qint64 lines = 2;
                                        for (const auto &member : structure.memberList)
                                            lines += linesInside(*member);
                                        return lines;
                                    },
                                    [](const VMArray &array) -> qint64 { return linesInside(*array.prototype); },
                                    [](const VMHole &) -> qint64 { return 0; },
                                    [](const VMXMLElement &) -> qint64 { return 1; }});
}

/// The lines of a type, its own among them. The members of a structure stand in no braces of its own.
qint64 linesOfType(const VMXMLElement &type)
{
    return type.isStruct() ? linesInside(type) - 1 : linesInside(type) + 1;
}

/// Appends \a text as it stands inside of a comment of a script.
void appendQuoted(QByteArray &script, QByteArrayView text)
{
    if (!text.contains('\\') && !text.contains("*/")) {
        script += text;
        return;
    }
    char before = 0;
    for (const char c : text) {
        if (c == '\\' || (c == '/' && before == '*'))
            script += '\\';
        script += c;
        before = c;
    }
}

void openScript(QByteArray &script, QByteArrayView kind, qsizetype number)
{
    script += "veldmapIndex(\"";
    script += kind;
    script += "\"," + QByteArray::number(number) + ",()=>{/*\n";
}

void closeScript(QByteArray &script)
{
    script += "*/})\n";
}

/// A piece of an id in a line of names.
void appendName(QByteArray &line, QByteArrayView name)
{
    constexpr std::string_view kSpecial = ",{}#%\\*@";
    const auto isSpecial = [&](char c) { return kSpecial.find(c) != kSpecial.npos; };
    if (std::ranges::none_of(name, isSpecial)) {
        line += name;
        return;
    }
    for (const char c : name) {
        if (isSpecial(c))
            line += '%' + QByteArray::number(static_cast<unsigned char>(c), 16).rightJustified(2, '0');
        else
            line += c;
    }
}

QByteArrayView behind(const QByteArray &id, qsizetype parent)
{
    return QByteArrayView(id).sliced(parent == 0 ? 0 : parent + 1);
}

class NamesWriter {
public:
    explicit NamesWriter(QByteArray &script) : m_script(script) {}

    void write(const VMXMLElement &type)
    {
        m_script += '#';
        appendName(m_script, type.typedefName.toUtf8());
        m_script += '\n';
        PageIds ids;
        m_open.clear();
        m_place = 0;
        for (const PageRow &row : rowsOf(type, {}, ids, false)) {
            if (row.id.isEmpty())
                continue;
            closeTo(row.level);
            visit(*row.element, [&](const auto &element) { writeRow(element, row); });
        }
        closeTo(0);
    }

private:
    struct Open {
        qsizetype id; ///< how long it is
        qint64 end;   ///< behind the last member of an array; -1 for what stands there once
    };

    void closeTo(int level)
    {
        while (static_cast<int>(m_open.size()) > level) {
            m_script += "}\n";
            if (m_open.back().end >= 0)
                m_place = m_open.back().end;
            m_open.pop_back();
        }
    }

    void writeName(const PageRow &row)
    {
        const qsizetype indices = 3 * static_cast<qsizetype>(row.repetitions.size() - row.repeatedAround); // "[n]"
        const QByteArray id = isCopy(row.id) ? row.id : row.id.chopped(indices);
        appendName(m_script, behind(id, m_open.empty() ? 0 : m_open.back().id));
    }

    /// Whether an id has a number of its own behind the indices, which then belong to the name.
    static bool isCopy(const QByteArray &id) { return id.contains("]~"); }

    QByteArray placeOf(const PageRow &row)
    {
        QByteArray attribute;
        if (row.offset != m_place)
            attribute += '@' + QByteArray::number(row.offset, 16);
        m_place = row.offset;
        for (std::size_t at = row.repeatedAround; at < row.repetitions.size(); ++at)
            attribute += '*' + QByteArray::number(row.repetitions[at].count) + ':' +
                         QByteArray::number(row.repetitions[at].stride, 16);
        return attribute;
    }

    /// The end of an array that begins at \a place, or of one element of \a size bytes.
    static qint64 endOf(const PageRow &row, qint64 place, qint64 size)
    {
        const Repetition *outermost = row.isRepeated() ? &row.repetitions[row.repeatedAround] : nullptr;
        return quint32(outermost ? place + outermost->count * outermost->stride : place + size);
    }

    void writeRow(const VMStruct &, const PageRow &row)
    {
        m_script += '{';
        writeName(row);
        if (const QByteArray place = placeOf(row); !place.isEmpty())
            m_script += '\t' + place;
        m_script += '\n';
        m_open.push_back({row.id.size(), row.isRepeated() ? endOf(row, m_place, 0) : -1});
    }

    void writeRow(const VMValuable &valuable, const PageRow &row)
    {
        const int bytes = valuable.sizeOf();
        QByteArray attribute = bytes == 4   ? QByteArray()
                               : bytes == 2 ? QByteArray("h")
                               : bytes == 1 ? QByteArray("b")
                                            : 's' + QByteArray::number(bytes, 16);
        writeLeaf(row, attribute, bytes);
        for (std::size_t at = 0; at < row.fieldIds.size(); ++at) {
            m_script += at == 0 ? '\t' : ',';
            appendName(m_script, behind(row.fieldIds[at], row.id.size()));
        }
        m_script += '\n';
    }

    void writeRow(const VMMemory &memory, const PageRow &row)
    {
        const auto bytes = static_cast<quint32>(memory.sizeOf());
        writeLeaf(row, 'm' + QByteArray::number(bytes, 16), bytes);
        m_script += '\n';
    }

    /// The name and place of a row, up to its fields.
    void writeLeaf(const PageRow &row, const QByteArray &size, qint64 bytes)
    {
        writeName(row);
        const QByteArray attribute = size + placeOf(row);
        if (!attribute.isEmpty() || !row.fieldIds.empty())
            m_script += '\t' + attribute;
        m_place = endOf(row, m_place, bytes);
    }

    void writeRow(const VMXMLElement &, const PageRow &) { m_script += "?\n"; } // there are no others

    QByteArray &m_script;
    std::vector<Open> m_open;
    qint64 m_place = 0;
};

/// Tells \a listener the lines of \a element in order: an element with its array, or null for a closing line.
template <typename Listener>
void forEachLine(const VMXMLElement &element, const VMArray *array, Listener &listener)
{
    visit(element,
          Overloads{[&](const VMStruct &structure) {
                        listener(&structure, array);
                        for (const auto &member : structure.memberList)
                            forEachLine(*member, nullptr, listener);
                        listener(nullptr, nullptr);
                    },
                    [&](const VMArray &inner) { forEachLine(*inner.prototype, array ? array : &inner, listener); },
                    [&](const VMHole &) {}, [&](const VMXMLElement &other) { listener(&other, array); }});
}

/// The same for a whole type, whose first line is its own.
template <typename Listener>
void forEachLineOfType(const VMXMLElement &type, Listener &listener)
{
    if (const auto *structure = elementCast<VMStruct>(&type)) {
        listener(structure, nullptr);
        for (const auto &member : structure->memberList)
            forEachLine(*member, nullptr, listener);
        return;
    }
    listener(nullptr, nullptr);
    forEachLine(type, nullptr, listener);
}

/// \a text on one line without tabs, which comments of a description have none of.
QString onOneLine(const QString &text)
{
    const bool isPlain = std::ranges::none_of(text, [](QChar c) { return c.unicode() < 0x20; });
    return isPlain ? text : text.simplified();
}

QString lineComment(const VMXMLElement &element, const VMArray *array)
{
    const QString &own = element.getComment();
    return onOneLine(plainComment(own.isEmpty() && array ? array->getComment() : own));
}

/// What is said of a field: its comment and its options.
QString fieldText(const VMBitField &field)
{
    QString text = onOneLine(plainComment(ownComment(field)));
    for (const VMBitFieldOption &option : field.options.optionList) {
        text += (text.isEmpty() ? ""_L1 : "; "_L1) + onOneLine(option.name) + " = "_L1 + QString::number(option.value);
        if (!option.comment.isEmpty())
            text += ", "_L1 + onOneLine(plainComment(option.comment));
    }
    return text;
}

/// The texts of one line, with tabs between: its own, then those of its fields.
QByteArray textOf(const VMXMLElement *element, const VMArray *array)
{
    if (!element)
        return {};
    QString text = lineComment(*element, array);
    if (const auto *valuable = elementCast<VMValuable>(element)) {
        for (const auto &field : valuable->bitFields) {
            text += u'\t';
            text += fieldText(*field);
        }
    }
    qsizetype end = text.size();
    while (end > 0 && text[end - 1] == u'\t')
        --end;
    text.truncate(end);
    return text.toUtf8();
}

/// The words of texts, each with the lines in which it stands.
class WordTable {
public:
    /// Notes the words of \a text, in UTF-8.
    void add(const QByteArray &text, qint64 line)
    {
        const bool isPlain = std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        const QByteArray lower = isPlain ? text.toLower() : QString::fromUtf8(text).toLower().toUtf8();
        qsizetype begin = -1;
        for (qsizetype at = 0; at <= lower.size(); ++at) {
            const bool isInWord = at < lower.size() && isWordByte(lower.at(at));
            if (isInWord && begin < 0)
                begin = at;
            if (isInWord || begin < 0)
                continue;
            if (at - begin >= kShortestWord)
                note(lower.constData() + begin, qMin(at - begin, kLongestWord), line);
            begin = -1;
        }
    }

    /// A list of the others by their first words, then the words in \a count scripts. A word that stands in very many
    /// lines goes on from one to the next.
    std::vector<QByteArray> scripts(qsizetype count) const
    {
        std::vector<const QByteArray *> words;
        words.reserve(static_cast<std::size_t>(m_lines.size()));
        for (auto word = m_lines.keyBegin(); word != m_lines.keyEnd(); ++word)
            words.push_back(&*word);
        std::ranges::sort(words, [](const QByteArray *a, const QByteArray *b) { return *a < *b; });
        qsizetype bytes = 0;
        for (const QByteArray *word : words)
            bytes += word->size() + m_lines.constFind(*word)->text.size();
        bytes = bytes / count + 1; // of a script
        std::vector<QByteArray> scripts(1);
        openScript(scripts[0], "words", 0);
        const auto startScript = [&](const QByteArray &word) {
            if (scripts.size() > 1)
                closeScript(scripts.back());
            scripts[0] += word + '\n';
            const auto number = static_cast<qsizetype>(scripts.size());
            openScript(scripts.emplace_back(), "words", number);
        };
        const auto mayStart = [&] { return static_cast<qsizetype>(scripts.size()) <= count; };
        for (const QByteArray *word : words) {
            for (const QByteArray &run : m_lines.constFind(*word)->text.split('\n')) {
                if (scripts.size() == 1 || (scripts.back().size() > bytes && mayStart()))
                    startScript(*word);
                scripts.back() += *word + '\t' + run + '\n';
            }
        }
        while (mayStart())
            startScript({});
        closeScript(scripts[0]);
        closeScript(scripts.back());
        return scripts;
    }

private:
    static constexpr qsizetype kShortestWord = 2;
    static constexpr qsizetype kLongestWord = 40;

    static constexpr qsizetype kRunBytes = 16'000;

    struct Lines {
        qint64 last = 0;
        qsizetype run = 0; ///< where the last run begins
        QByteArray text;   ///< runs: how far each lies behind the one before in its run, in digits and letters
    };

    /// Letters of other alphabets are bytes beyond ASCII.
    static bool isWordByte(char c)
    {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || static_cast<unsigned char>(c) >= 0x80;
    }

    void note(const char *word, qsizetype length, qint64 line)
    {
        const QByteArray key = QByteArray::fromRawData(word, length);
        auto lines = m_lines.find(key);
        if (lines == m_lines.end())
            lines = m_lines.insert(QByteArray(word, length), {});
        else if (lines->last == line)
            return;
        if (lines->text.size() - lines->run > kRunBytes) {
            lines->text += '\n';
            lines->run = lines->text.size();
            lines->last = 0;
        }
        std::array<char, 16> step{' '};
        const char *end = std::to_chars(step.data() + 1, step.data() + step.size(), line - lines->last, 36).ptr;
        const char *begin = step.data() + (lines->text.size() == lines->run ? 1 : 0);
        lines->text.append(begin, end - begin);
        lines->last = line;
    }

    QHash<QByteArray, Lines> m_lines;
};

QByteArray jsonList(const QByteArrayList &items)
{
    return '[' + items.join(',') + ']';
}

} // namespace

SearchIndex::SearchIndex(const SitePlan &plan) : m_plan(plan)
{
    qint64 line = 1; // words count from the line before
    for (const SiteType &type : plan.types()) {
        m_firstLines.push_back(line);
        line += linesOfType(*type.element);
    }
    m_firstLines.push_back(line);
    m_names = piecesOf(kNamesLines);
    m_texts = piecesOf(kTextsLines);
}

qsizetype SearchIndex::wordsPieces() const
{
    return 1 + m_firstLines.back() / kWordsLines;
}

std::vector<SearchIndex::Piece> SearchIndex::piecesOf(qint64 lines) const
{
    std::vector<Piece> pieces;
    for (std::size_t type = 0; type < m_plan.types().size(); ++type) {
        if (pieces.empty() || m_firstLines[type + 1] - pieces.back().firstLine > lines)
            pieces.push_back({type, type, m_firstLines[type]});
        pieces.back().endType = type + 1;
    }
    return pieces;
}

QByteArray SearchIndex::mainScript() const
{
    QByteArray script;
    openScript(script, "main", 0);
    QByteArrayList names;
    QByteArrayList texts;
    for (const Piece &piece : m_names)
        names += '[' + QByteArray::number(qint64(piece.firstType)) + ',' + QByteArray::number(piece.firstLine) + ']';
    for (const Piece &piece : m_texts)
        texts += QByteArray::number(piece.firstLine);
    const QList<Constant> constants = constantsOf(m_plan);
    const auto pages = std::ranges::count_if(m_plan.types(), &SiteType::hasPage);
    script += "{\"names\":" + jsonList(names) + ",\"texts\":" + jsonList(texts);
    const std::pair<QByteArrayView, qint64> counts[] = {{"count", m_firstLines.back()},
                                                        {"typeCount", qint64(m_plan.types().size())},
                                                        {"instances", qint64(m_plan.instances().size())},
                                                        {"types", qint64(pages)}};
    for (const auto &[name, count] : counts)
        script += ",\"" + name.toByteArray() + "\":" + QByteArray::number(count);
    script += "}\n";
    const auto addLine = [&](const QByteArrayList &parts) {
        appendQuoted(script, parts.join('\t'));
        script += '\n';
    };
    const auto nameOf = [](const QString &name) { return name.simplified().toUtf8(); };
    for (const SiteInstance &instance : m_plan.instances()) {
        QByteArrayList parts = {nameOf(instance.element->getName()),
                                QByteArray::number(instance.element->getBaseAddress(), 16),
                                instance.type < 0 ? QByteArray() : QByteArray::number(instance.type, 36)};
        if (const QByteArray file = instance.file.chopped(5).toUtf8(); file != parts[0])
            parts += file;
        addLine(parts);
    }
    for (qsizetype at = 0; const SiteType &type : m_plan.types()) {
        if (type.hasPage)
            addLine({nameOf(type.element->typedefName), QByteArray::number(at, 36), type.file.chopped(5).toUtf8()});
        ++at;
    }
    for (const Constant &constant : constants)
        addLine({nameOf(constant.name), constant.link});
    closeScript(script);
    return script;
}

QByteArray SearchIndex::namesScript(qsizetype at) const
{
    const Piece &piece = m_names[static_cast<std::size_t>(at)];
    QByteArray script;
    openScript(script, "names", at);
    NamesWriter writer(script);
    for (std::size_t type = piece.firstType; type < piece.endType; ++type)
        writer.write(*m_plan.types()[type].element);
    closeScript(script);
    return script;
}

SearchIndex::Descriptions SearchIndex::descriptions() const
{
    Descriptions made;
    WordTable words;
    for (const Piece &piece : m_texts) {
        QByteArray &script = made.texts.emplace_back();
        openScript(script, "texts", static_cast<qsizetype>(made.texts.size()) - 1);
        qint64 line = piece.firstLine;
        const auto write = [&](const VMXMLElement *element, const VMArray *array) {
            const QByteArray text = textOf(element, array);
            words.add(text, line++);
            appendQuoted(script, text);
            script += '\n';
        };
        for (std::size_t type = piece.firstType; type < piece.endType; ++type)
            forEachLineOfType(*m_plan.types()[type].element, write);
        closeScript(script);
    }
    made.words = words.scripts(wordsPieces());
    return made;
}

} // namespace veldmap

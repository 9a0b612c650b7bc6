#include "findings/quotation.h"

#include <QChar>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Characters of a text, from one offset to in front of another.
struct Span {
    qsizetype begin = 0;
    qsizetype end = 0;

    qsizetype size() const { return end - begin; }
};

struct WrittenAttribute {
    Span name;
    Span value; ///< between the quotes
};

/// A start tag as it stands in a description.
struct WrittenTag {
    Span name;
    QList<WrittenAttribute> attributes;
};

bool isBlank(QChar c)
{
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

/// The start tag whose ">" stands at \a end. Nothing when none ends there.
std::optional<WrittenTag> tagBefore(QStringView text, qsizetype end)
{
    constexpr qsizetype kLongest = 64 * 1024; // a tag that is worth showing
    if (end >= text.size() || text[end] != u'>')
        return {};
    const qsizetype front = qMax<qsizetype>(0, end - kLongest);
    const qsizetype found = text.sliced(front, end - front).lastIndexOf(u'<'); // no value of an attribute holds one
    if (found < 0)
        return {};
    qsizetype at = front + found + 1;
    const auto spanUntil = [&](auto isEnd) {
        const qsizetype begin = at;
        while (at < end && !isEnd(text[at]))
            ++at;
        return Span{begin, at};
    };
    const auto isNameEnd = [](QChar c) { return isBlank(c) || c == u'=' || c == u'/'; };
    const auto isInk = [](QChar c) { return !isBlank(c); };
    WrittenTag tag = {spanUntil(isNameEnd), {}};
    if (tag.name.size() == 0 || text[tag.name.begin] == u'!' || text[tag.name.begin] == u'?')
        return {};
    while (true) {
        spanUntil(isInk);
        WrittenAttribute attribute = {spanUntil(isNameEnd), {}};
        spanUntil([](QChar c) { return c == u'"' || c == u'\''; });
        if (at >= end || attribute.name.size() == 0)
            return tag;
        const QChar quote = text[at++];
        attribute.value = spanUntil([&](QChar c) { return c == quote; });
        ++at;
        tag.attributes += attribute;
    }
}

/// The value of an attribute as handlers read it.
QString decoded(QStringView text)
{
    static constexpr std::pair<QStringView, char16_t> kEntities[] = {
        {u"&lt;", u'<'}, {u"&gt;", u'>'}, {u"&quot;", u'"'}, {u"&apos;", u'\''}, {u"&amp;", u'&'}};
    QString value = text.toString();
    for (const auto &[entity, character] : kEntities)
        value.replace(entity.toString(), QString(QChar(character)));
    return value;
}

/// The attribute of \a tag whose value alone is \a value; null when that is none, or several.
const WrittenAttribute *attributeOfValue(const WrittenTag &tag, QStringView text, const QString &value)
{
    const WrittenAttribute *found = nullptr;
    for (const WrittenAttribute &attribute : tag.attributes) {
        if (decoded(text.sliced(attribute.value.begin, attribute.value.size())) != value)
            continue;
        if (found)
            return nullptr;
        found = &attribute;
    }
    return found;
}

/// What a finding of \a rule with \a arguments speaks of in \a tag: the value of an attribute other than its name,
/// which only says what it is; an attribute; or else the name in quotes, also where it ends a path, or that of the tag.
Span meantOf(const WrittenTag &tag, QStringView text, const Rule &rule, const QStringList &arguments)
{
    const auto textOf = [&](Span span) { return text.sliced(span.begin, span.size()); };
    for (const WrittenAttribute &attribute : tag.attributes) {
        if (!rule.attribute.isEmpty() && textOf(attribute.name) == rule.attribute && attribute.value.size() > 0)
            return attribute.value;
    }
    for (qsizetype i = arguments.size() - 1; i >= 0; --i) {
        const QString &argument = arguments.at(i);
        const WrittenAttribute *attribute = argument.isEmpty() ? nullptr : attributeOfValue(tag, text, argument);
        if (attribute && textOf(attribute->name) != u"name")
            return attribute->value;
    }
    const auto attributeOf = [&](auto isMeant) {
        const auto found = std::ranges::find_if(tag.attributes, isMeant);
        return found == tag.attributes.end() ? nullptr : &*found;
    };
    for (const QString &argument : arguments) {
        if (const auto *attribute = attributeOf([&](const auto &one) { return textOf(one.name) == argument; }))
            return attribute->name;
        if (argument.compare(textOf(tag.name), Qt::CaseInsensitive) == 0)
            return tag.name;
    }
    const auto *named = attributeOf([&](const auto &one) { return textOf(one.name) == u"name"; });
    const auto isOfName = [&](const QString &argument) {
        return argument.section(u'.', -1) == decoded(textOf(named->value));
    };
    // A file is named by its whole path.
    const auto *file = attributeOf([&](const auto &one) { return textOf(one.name) == u"file"; });
    if (file && std::ranges::any_of(arguments, [&](const QString &argument) {
            return argument.section(u'/', -1) == decoded(textOf(file->value)).section(u'/', -1);
        }))
        return file->value;
    return named && std::ranges::any_of(arguments, isOfName) ? named->value : tag.name;
}

/// What of an expression is meant: the value of an attribute that holds it, and in it the character at which it is
/// wrong, which may stand behind its end.
struct MeantExpression {
    Span value;
    qsizetype at; ///< in the source
};

/// Where the character \a number of the decoded text stands in \a written.
qsizetype offsetOfCharacter(QStringView written, qsizetype number)
{
    qsizetype at = 0;
    for (; number > 0 && at < written.size(); --number) {
        const qsizetype end = written[at] == u'&' ? written.indexOf(u';', at) : -1;
        at = end < 0 ? at + 1 : end + 1;
    }
    return at;
}

std::optional<MeantExpression> meantExpression(const WrittenTag &tag, QStringView text, const WrongExpression &wrong)
{
    if (wrong.text.isEmpty())
        return {};
    const WrittenAttribute *attribute = attributeOfValue(tag, text, wrong.text);
    qsizetype front = 0; // of the expression in the value
    for (const WrittenAttribute &candidate : tag.attributes) {
        if (attribute)
            break;
        front = decoded(text.sliced(candidate.value.begin, candidate.value.size())).indexOf(wrong.text); // as in "7:N"
        attribute = front < 0 ? nullptr : &candidate;
    }
    if (!attribute)
        return {};
    const Span value = attribute->value;
    const qsizetype inside =
        offsetOfCharacter(text.sliced(value.begin, value.size()), front + qMax<qsizetype>(wrong.character, 0));
    return MeantExpression{value, wrong.character < 0 ? value.begin : value.begin + inside};
}

/// Characters that terminals show two columns wide, as ranges of code points.
bool isWide(char32_t c)
{
    static constexpr std::pair<char32_t, char32_t> kWide[] = {
        {0x1100, 0x115F},   {0x2E80, 0x303E},  {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},
        {0xA000, 0xA4CF},   {0xA960, 0xA97F},  {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
        {0xFF01, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F}, {0x1F680, 0x1F6FF}, {0x1F900, 0x1F9FF},
        {0x20000, 0x2FFFD}, {0x30000, 0x3FFFD}};
    return std::ranges::any_of(kWide, [&](const auto &range) { return range.first <= c && c <= range.second; });
}

/// One character as a terminal shows it.
struct Cell {
    QString shown;
    int width;
    qsizetype at; ///< in the text
};

/// \a c in column \a column. What a terminal would obey and not show is a question mark.
Cell cellOf(char32_t c, int column, qsizetype at)
{
    constexpr int kTabStop = 8;
    if (c == u'\t') {
        const int width = kTabStop - column % kTabStop;
        return {QString(width, u' '), width, at};
    }
    switch (QChar::category(c)) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_Surrogate:
    case QChar::Other_PrivateUse:
    case QChar::Other_NotAssigned:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return {u"?"_s, 1, at};
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
        return {QString::fromUcs4(&c, 1), 0, at};
    default: // all others print
        return {QString::fromUcs4(&c, 1), isWide(c) ? 2 : 1, at};
    }
}

QList<Cell> cellsOf(QStringView text, Span part)
{
    QList<Cell> cells;
    int column = 0;
    for (qsizetype at = part.begin; at < part.end; ++at) {
        const bool isPair = text[at].isHighSurrogate() && at + 1 < part.end && text[at + 1].isLowSurrogate();
        const char32_t c = isPair ? QChar::surrogateToUcs4(text[at], text[at + 1]) : text[at].unicode();
        cells += cellOf(c, column, at);
        column += cells.last().width;
        at += isPair ? 1 : 0;
    }
    return cells;
}

int widthOf(const QList<Cell> &cells, qsizetype begin, qsizetype end)
{
    int width = 0;
    for (qsizetype i = begin; i < end; ++i)
        width += cells.at(i).width;
    return width;
}

/// The cells from \a mark on that \a width columns can show: those of the mark first, then as many at both sides.
Span shownAround(const QList<Cell> &cells, Span mark, int width)
{
    Span shown = {mark.begin, mark.begin};
    int used = 0;
    const auto takes = [&](qsizetype cell) {
        const bool fits = cell >= 0 && cell < cells.size() && used + cells.at(cell).width <= width;
        used += fits ? cells.at(cell).width : 0;
        return fits;
    };
    while (shown.end < mark.end && takes(shown.end))
        ++shown.end;
    bool grows = true;
    while (grows) {
        const bool growsRight = takes(shown.end);
        shown.end += growsRight ? 1 : 0;
        const bool growsLeft = takes(shown.begin - 1);
        shown.begin -= growsLeft ? 1 : 0;
        grows = growsRight || growsLeft;
    }
    return shown;
}

constexpr int kNumberWidth = 6;
constexpr QLatin1StringView kBar = " | "_L1;
constexpr QLatin1StringView kCut = "..."_L1;

/// The line \a number of \a source with a mark under \a meant, in which \a caret is the point.
QString quoted(const SourceText &source, qint64 number, Span meant, qsizetype caret, int width)
{
    const QStringView text = source.text();
    const int room = qMax(width - kNumberWidth - static_cast<int>(kBar.size()) - 1, 20);
    const Span line = {source.beginOf(number), source.endOf(number)};
    meant.end = qMin(meant.end, line.end);
    // No more of a line than can be shown, however long it is.
    Span part = {qMax(line.begin, meant.begin - room), qMin(line.end, meant.begin + 2 * room)};
    if (part.begin > line.begin && text[part.begin].isLowSurrogate())
        --part.begin;
    const QList<Cell> cells = cellsOf(text, part);
    const auto cellAt = [&](qsizetype at) {
        return std::ranges::lower_bound(cells, at, {}, &Cell::at) - cells.begin();
    };
    const Span mark = {cellAt(meant.begin), cellAt(meant.end)};
    const bool isWhole = part.size() == line.size() && widthOf(cells, 0, cells.size()) <= room;
    const Span shown =
        isWhole ? Span{0, cells.size()} : shownAround(cells, mark, room - 2 * static_cast<int>(kCut.size()));
    const bool isCutInFront = part.begin > line.begin || shown.begin > 0;
    const bool isCutBehind = part.end < line.end || shown.end < cells.size();
    QString above = QString::number(number).rightJustified(kNumberWidth) + kBar;
    QString below = QString(kNumberWidth, u' ') + kBar;
    if (isCutInFront) {
        above += kCut;
        below += QString(kCut.size(), u' ');
    }
    for (qsizetype i = shown.begin; i < shown.end; ++i)
        above += cells.at(i).shown;
    if (isCutBehind)
        above += kCut;
    QString wave(qMax(1, widthOf(cells, mark.begin, qMin(mark.end, shown.end))), u'~');
    const qsizetype point = widthOf(cells, mark.begin, cellAt(caret));
    if (point >= wave.size() && mark.end <= shown.end) // behind its end
        wave += u'~';
    wave[qMin(point, wave.size() - 1)] = u'^';
    below += QString(widthOf(cells, shown.begin, mark.begin), u' ') + wave;
    return above + u'\n' + below + u'\n';
}

} // namespace

QString quotation(const Finding &finding, const SourceText &source, int width)
{
    const qsizetype offset = source.offsetOf(finding.place.line, finding.place.column);
    if (offset < 0)
        return {};
    Span meant = {offset, offset + qMax<qint64>(1, finding.place.length)};
    qsizetype caret = offset;
    if (const std::optional<WrittenTag> tag = tagBefore(source.text(), offset)) {
        meant = meantOf(*tag, source.text(), *finding.rule, finding.arguments);
        caret = meant.begin;
        if (const auto wrong = meantExpression(*tag, source.text(), finding.expression)) {
            meant = wrong->value;
            caret = wrong->at;
        }
    }
    return quoted(source, source.lineAt(meant.begin), meant, caret, width);
}

} // namespace veldmap

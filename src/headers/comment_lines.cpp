#include "headers/comment_lines.h"

#include "headers/c_names.h"
#include "text/lines.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kCommentWidth = 80;

/// Whether \a character changes in which direction text is shown. Compilers warn of those that nothing ends.
bool isDirection(QChar character)
{
    const char16_t c = character.unicode();
    return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

/// Blanks for whatever a compiler might take for the end of a line or warn of, line feeds apart.
QString shownCharacters(QString text)
{
    for (QChar &c : text) {
        const bool endsLine = c.category() == QChar::Separator_Line || c.category() == QChar::Separator_Paragraph;
        if (c != u'\n' && c != u'\t' && (c.unicode() < 0x20 || (c.unicode() >= 0x7F && c.unicode() < 0xA0) || endsLine))
            c = u' ';
    }
    text.removeIf(isDirection);
    return text;
}

/// \a text, which a tree keeps as it stands in XML, as people read it.
QString readable(QString text)
{
    return text.replace("&lt;"_L1, "<"_L1).replace("&gt;"_L1, ">"_L1).replace("&amp;"_L1, "&"_L1);
}

/// Behind a backslash the line would go on. "??/" is one too.
bool goesOn(QStringView line)
{
    const QStringView words = line.trimmed();
    return words.endsWith(u'\\') || words.endsWith("?\?/"_L1);
}

} // namespace

QString safeCommentLines(const QString &lines)
{
    const QString shown = shownCharacters(lines);
    QString text;
    for (const QStringView line : QStringView(shown).split(u'\n'))
        appendLine(text, line, goesOn(line) ? "."_L1 : ""_L1);
    return text.chopped(1); // behind the last line feed stands an empty line
}

QString commentLines(const QString &comment)
{
    QString text = comment;
    text = readable(text.replace("<br>"_L1, "\n"_L1)).trimmed();
    return text.isEmpty() ? text : safeCommentLines(convertCommentToCComment(text, kCommentWidth, 0) + u'\n');
}

QString commentWords(const QString &text)
{
    const QString words = readable(shownCharacters(text)).replace(u'\n', u' ').trimmed();
    return goesOn(words) ? words + u'.' : words;
}

} // namespace veldmap

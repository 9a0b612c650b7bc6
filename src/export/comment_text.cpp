#include "export/comment_text.h"

#include "model/bitfield.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Whether a tag begins at \a at, and no sign of comparison.
bool isTag(QStringView text, qsizetype at)
{
    const QChar next = at + 1 < text.size() ? text[at + 1] : QChar();
    return next.isLetter() || next == u'/';
}

QString withoutTags(const QString &markup)
{
    QString text;
    text.reserve(markup.size());
    for (qsizetype at = 0; at < markup.size(); ++at) {
        const qsizetype end = markup[at] == u'<' && isTag(markup, at) ? markup.indexOf(u'>', at) : -1;
        if (end < 0) {
            text += markup[at];
            continue;
        }
        const QStringView tag = QStringView(markup).sliced(at + 1, end - at - 1).trimmed();
        if (tag == "br"_L1 || tag == "br/"_L1)
            text += u'\n';
        at = end;
    }
    return text;
}

} // namespace

QString plainCommentText(const QString &comment)
{
    QString text = withoutTags(comment);
    text.replace("&lt;"_L1, "<"_L1)
        .replace("&gt;"_L1, ">"_L1)
        .replace("&quot;"_L1, "\""_L1)
        .replace("&amp;"_L1, "&"_L1);
    QStringList lines = text.split(u'\n');
    for (QString &line : lines)
        line = line.simplified();
    return lines.join(u'\n').trimmed();
}

QString plainCommentText(const VMBitField &field)
{
    // The table stands at the end of what an author has written.
    const QString table = field.generateOptionsComment();
    const QString &comment = field.getComment();
    return plainCommentText(!table.isEmpty() && comment.endsWith(table) ? comment.chopped(table.size()) : comment);
}

} // namespace veldmap

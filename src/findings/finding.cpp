#include "findings/finding.h"

using namespace Qt::StringLiterals;

namespace veldmap {

QString Finding::text() const
{
    QString text;
    QStringView words = rule->words;
    for (qsizetype hole = words.indexOf(u'%'); hole >= 0; hole = words.indexOf(u'%')) {
        const int number = hole + 1 < words.size() ? words[hole + 1].digitValue() : -1;
        const bool isHole = number >= 1 && number <= arguments.size();
        Q_ASSERT(number < 1 || isHole); // a row that asks for more than it is given
        text += words.first(hole);
        text += isHole ? QStringView(arguments[number - 1]) : words.sliced(hole, 1);
        words = words.sliced(hole + (isHole ? 2 : 1));
    }
    text += words;
    return text;
}

QString Finding::whatToDo() const
{
    return hint.isEmpty() ? rule->hint.toString() : hint;
}

Finding &Finding::withPlace(const Place &other, const QString &what)
{
    if (!other.isNull())
        related.append({other, what});
    return *this;
}

QString wordOf(Severity severity)
{
    switch (severity) {
    case Severity::Note:
        return u"note"_s;
    case Severity::Warning:
        return u"warning"_s;
    case Severity::Error:
        break;
    }
    return u"error"_s;
}

QString wordsWithoutArguments(const Rule &rule)
{
    return Finding(rule, {}, QStringList(9, u"..."_s)).text();
}

QString placedText(const Finding &finding)
{
    const Place &place = finding.place;
    if (place.isNull())
        return finding.text();
    return place.file + u':' + QString::number(place.line) + u':' + QString::number(place.column) + u':' +
           finding.text();
}

} // namespace veldmap

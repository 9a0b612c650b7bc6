#include "text/lines.h"

#include <algorithm>

namespace veldmap {

QString hex8(quint32 value)
{
    QString digits(8, u'0');
    for (qsizetype place = 7; value != 0; --place, value >>= 4)
        digits[place] = QLatin1Char("0123456789ABCDEF"[value & 0xF]);
    return digits;
}

QString expand(QStringView form, const QList<std::pair<QString, QString>> &holes)
{
    QString text;
    while (true) {
        const qsizetype begin = form.indexOf(u'@');
        const qsizetype end = begin < 0 ? -1 : form.indexOf(u'@', begin + 1);
        if (end < 0)
            break;
        const QStringView name = form.sliced(begin + 1, end - begin - 1);
        const auto hole = std::ranges::find_if(holes, [&](const auto &row) { return row.first == name; });
        Q_ASSERT(hole != holes.end());
        text += form.first(begin);
        text += hole->second;
        form = form.sliced(end + 1);
    }
    text += form;
    return text;
}

} // namespace veldmap

QString space_complement_to(const QString &text, int column)
{
    return QString(veldmap::blanksToColumn(text.size(), column), u' ');
}

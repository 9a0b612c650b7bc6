#include "headers/c_names.h"

#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// An underscore at every border inside a camel-case name: myReg becomes my_Reg.
QString withWordBorders(const QString &name)
{
    QString result;
    for (qsizetype at = 0; at < name.size(); ++at) {
        const QChar c = name[at];
        if (at > 0 && c >= u'A' && c <= u'Z' && name[at - 1] >= u'a' && name[at - 1] <= u'z')
            result += u'_';
        result += c;
    }
    return result;
}

} // namespace

QString convertCommentToCComment(const QString &comment, int width, int indent)
{
    QString text = comment;
    if (text.contains(u'<'))
        text.replace("<br>"_L1, "\n"_L1);
    const QString prefix = QString(4 * qMax(indent, 0), u' ') + "/// "_L1;
    const int firstColumn = 4 * indent + 4;
    if (width - 4 * indent + 3 <= 39)
        width = 4 * indent + 43;

    QString result = prefix;
    qsizetype column = firstColumn;
    for (qsizetype at = 0; at < text.size();) {
        const auto blank = std::find_if(text.cbegin() + at, text.cend(), [](QChar c) { return c.isSpace(); });
        const QStringView word(text.constData() + at, blank - text.cbegin() - at);
        result += word;
        if (blank == text.cend())
            return result;
        if (column + word.size() >= width || *blank == u'\n') {
            result += u'\n' + prefix;
            column = firstColumn;
        } else {
            result += *blank;
            column += word.size() + 1;
        }
        at += word.size() + 1;
    }
    return result;
}

QString ESDRConvert(const QString &name)
{
    const QString lower = withWordBorders(name).toLower();
    QString result;
    for (qsizetype at = 0; at < lower.size(); ++at) {
        if (lower[at] != u'_') {
            result += lower[at];
            continue;
        }
        // A run of underscores capitalises what follows it; at the end of the name one of them stays.
        while (at + 1 < lower.size() && lower[at] == u'_')
            ++at;
        result += lower[at].toUpper();
    }
    return result;
}

QString ESDRTypeConvert(const QString &name)
{
    static const QStringList builtInWords = {u"uint"_s,  u"uint32"_s, u"uint16"_s, u"uint8"_s,  u"int"_s,
                                             u"int32"_s, u"int16"_s,  u"int8"_s,   u"memory"_s, u"void"_s,
                                             u"bool"_s,  u"reg32"_s,  u"reg16"_s,  u"reg8"_s};
    QString upper = name.toUpper();
    const bool isBuiltIn = std::ranges::any_of(builtInWords, [&](const QString &word) {
        return word.size() == name.size() && word.compare(name, Qt::CaseInsensitive) == 0;
    });
    if (!isBuiltIn && !name.endsWith("_T"_L1))
        upper += "_T"_L1;
    return upper;
}

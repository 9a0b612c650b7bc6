#include "headers/c_names.h"

#include "model/kinds.h"
#include "text/text_buffer.h"

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

/// Whether C code has a type of that name, whatever its case.
bool isCType(const QString &name)
{
    const auto isName = [&](QLatin1StringView word) {
        return word.size() == name.size() && name.compare(word, Qt::CaseInsensitive) == 0;
    };
    return isName(veldmap::kMemoryWord) || std::ranges::any_of(veldmap::scalarKinds(), [&](const auto &kind) {
               return std::ranges::any_of(kind.words, [&](const veldmap::KindWord &word) {
                   return (word.uses & veldmap::kCType) != 0 && isName(word.word);
               });
           });
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

    veldmap::TextBuffer result;
    result.append(QStringView(prefix));
    qsizetype column = firstColumn;
    for (qsizetype at = 0; at < text.size();) {
        const auto blank = std::find_if(text.cbegin() + at, text.cend(), [](QChar c) { return c.isSpace(); });
        const QStringView word(text.constData() + at, blank - text.cbegin() - at);
        result.append(word);
        if (blank == text.cend())
            return result.text();
        if (column + word.size() >= width || *blank == u'\n') {
            result.append(u'\n');
            result.append(QStringView(prefix));
            column = firstColumn;
        } else {
            result.append(blank->unicode());
            column += word.size() + 1;
        }
        at += word.size() + 1;
    }
    return result.text();
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
    QString upper = name.toUpper();
    if (!isCType(name) && !name.endsWith("_T"_L1))
        upper += "_T"_L1;
    return upper;
}

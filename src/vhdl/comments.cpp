#include "vhdl/comments.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

bool isPlainByte(char byte)
{
    const auto c = static_cast<unsigned char>(byte);
    return c < 0x7F || c >= 0xA0;
}

} // namespace

bool isPlainComment(const QString &text)
{
    return std::ranges::all_of(text.toUtf8(), isPlainByte);
}

QString printableComment(const QString &text)
{
    const auto isLine = [](QChar c) { return c == u'\t' || (c >= u' ' && c < u'\x7F'); };
    if (std::ranges::all_of(text, isLine))
        return text;
    QString plain;
    plain.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        const QString character = text.sliced(at, isPair ? 2 : 1);
        plain += isLine(text[at]) || (text[at] > u'\x7F' && isPlainComment(character)) ? character : u"?"_s;
        at += isPair ? 1 : 0;
    }
    return plain;
}

void commentOut(QString &text, qsizetype begin, const QString &reason)
{
    if (reason.isEmpty())
        return;
    const QString line = text.sliced(begin).chopped(1); // the line feed at its end
    text.truncate(begin);
    text += "--"_L1 + printableComment(line) + " -- refused: "_L1 + printableComment(reason) + u'\n';
}

} // namespace veldmap

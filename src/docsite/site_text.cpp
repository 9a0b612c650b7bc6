#include "docsite/site_text.h"

#include <charconv>

namespace veldmap {

char *SiteText::write(char *out, QStringView piece)
{
    for (qsizetype at = 0; at < piece.size(); ++at) {
        const char16_t unit = piece[at].unicode();
        if (unit >= 0x80) {
            const QByteArray rest = piece.sliced(at).toUtf8();
            return write(out, QLatin1StringView(rest));
        }
        *out++ = static_cast<char>(unit);
    }
    return out;
}

char *SiteText::write(char *out, qint64 piece)
{
    return std::to_chars(out, out + kMostDigits, piece).ptr;
}

char *SiteText::write(char *out, Blanks piece)
{
    const qsizetype count = mostBytes(piece);
    std::memset(out, ' ', static_cast<std::size_t>(count));
    return out + count;
}

char *SiteText::write(char *out, Hex8 piece)
{
    for (int shift = 28; shift >= 0; shift -= 4)
        *out++ = "0123456789ABCDEF"[(piece.value >> shift) & 0xF];
    return out;
}

} // namespace veldmap

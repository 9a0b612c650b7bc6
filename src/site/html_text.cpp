#include "site/html_text.h"

#include <array>
#include <charconv>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Whether \a unit stands for itself, in one byte.
constexpr bool isPlain(char16_t unit)
{
    return unit >= 0x20 && unit < 0x7F && unit != u'&' && unit != u'<' && unit != u'>' && unit != u'"' && unit != u'\'';
}

constexpr auto kPlain = [] {
    std::array<bool, 0x80> plain{};
    for (char16_t unit = 0; unit < plain.size(); ++unit)
        plain[unit] = isPlain(unit);
    return plain;
}();

/// What stands in HTML for \a unit, of ASCII, which is not plain.
QLatin1StringView escapeOf(char16_t unit)
{
    switch (unit) {
    case u'&':
        return "&amp;"_L1;
    case u'<':
        return "&lt;"_L1;
    case u'>':
        return "&gt;"_L1;
    case u'"':
        return "&quot;"_L1;
    case u'\'':
        return "&#39;"_L1;
    default:
        return " "_L1; // HTML knows no control characters but blanks
    }
}

} // namespace

char *HtmlText::write(char *out, QStringView piece)
{
    for (qsizetype at = 0; at < piece.size(); ++at) {
        const char16_t unit = piece[at].unicode();
        if (unit < kPlain.size() && kPlain[unit]) {
            *out++ = static_cast<char>(unit);
        } else if (unit >= 0x80) {
            qsizetype end = at + 1;
            while (end < piece.size() && piece[end].unicode() >= 0x80)
                ++end;
            const QByteArray run = piece.sliced(at, end - at).toUtf8();
            out = copy(out, run.data(), run.size());
            at = end - 1;
        } else {
            const QLatin1StringView escape = escapeOf(unit);
            out = copy(out, escape.data(), escape.size());
        }
    }
    return out;
}

char *HtmlText::write(char *out, qint64 piece)
{
    return std::to_chars(out, out + kMostDigits, piece).ptr;
}

char *HtmlText::write(char *out, Hex piece)
{
    int digits = qBound(1, piece.digits, 8);
    while (digits < 8 && piece.value >> (4 * digits) != 0)
        ++digits;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4)
        *out++ = "0123456789ABCDEF"[(piece.value >> shift) & 0xF];
    return out;
}

} // namespace veldmap

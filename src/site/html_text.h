#pragma once

#include "text/text_bytes.h"

#include <QString>

#include <cstring>
#include <utility>

namespace veldmap {

/// A number as at least \a digits upper-case hexadecimal digits.
struct Hex {
    quint32 value;
    int digits = 1;
};

/// HTML under construction, in UTF-8.
///
/// A QStringView is text and is escaped, wherever it comes from; only literals and QByteArrayViews, which the caller
/// vouches for, are markup. So no text of a description can become a tag by being forgotten.
class HtmlText : public TextBytes {
public:
    /// Uses the memory of \a buffer, whatever it holds.
    explicit HtmlText(QByteArray buffer = {}) : TextBytes(std::move(buffer)) {}

    template <typename... Pieces>
    HtmlText &put(const Pieces &...pieces)
    {
        char *end = roomFor((mostBytes(pieces) + ... + 0));
        ((end = write(end, pieces)), ...);
        endAt(end);
        return *this;
    }

private:
    static constexpr qsizetype kMostDigits = 20; // of a 64-bit number with its sign
    static constexpr qsizetype kMostEscaped = 6; // "&quot;"

    static qsizetype mostBytes(QLatin1StringView piece) { return piece.size(); }
    static qsizetype mostBytes(QByteArrayView piece) { return piece.size(); }
    static qsizetype mostBytes(const QByteArray &piece) { return piece.size(); }
    static qsizetype mostBytes(QStringView piece) { return kMostEscaped * piece.size(); }
    static qsizetype mostBytes(const QString &piece) { return kMostEscaped * piece.size(); }
    static qsizetype mostBytes(qint64) { return kMostDigits; }
    static qsizetype mostBytes(int) { return kMostDigits; }
    static qsizetype mostBytes(quint32) { return kMostDigits; }
    static qsizetype mostBytes(char16_t) = delete; // it would be taken for a number
    static qsizetype mostBytes(Hex) { return 8; }

    // Each gives the end of what it has written.
    static char *write(char *out, QLatin1StringView piece) { return copy(out, piece.data(), piece.size()); }
    static char *write(char *out, QByteArrayView piece) { return copy(out, piece.data(), piece.size()); }
    static char *write(char *out, const QByteArray &piece) { return copy(out, piece.data(), piece.size()); }
    static char *write(char *out, QStringView piece);
    static char *write(char *out, const QString &piece) { return write(out, QStringView(piece)); }
    static char *write(char *out, qint64 piece);
    static char *write(char *out, int piece) { return write(out, qint64(piece)); }
    static char *write(char *out, quint32 piece) { return write(out, qint64(piece)); }
    static char *write(char *out, Hex piece);
    static char *copy(char *out, const char *from, qsizetype bytes)
    {
        std::memcpy(out, from, static_cast<std::size_t>(bytes));
        return out + bytes;
    }
};

} // namespace veldmap

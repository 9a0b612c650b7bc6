#pragma once

#include "text/text_bytes.h"

#include <QString>

#include <cstring>
#include <utility>

class VMRootArchive;
class VMXMLElement;

namespace veldmap {

/// Blanks in a text under construction.
struct Blanks {
    int count;
};

/// A number as exactly eight upper-case hexadecimal digits.
struct Hex8 {
    quint32 value;
};

/// Text of a site under construction, in UTF-8 as its files have it. A site is many times larger than the description,
/// and most of it is the same few pieces again and again, which take no conversion here.
class SiteText : public TextBytes {
public:
    /// Uses the memory of \a buffer, whatever it holds.
    explicit SiteText(QByteArray buffer = {}) : TextBytes(std::move(buffer)) {}

    /// Appends the pieces in order: texts, literals (in ASCII), numbers and the pieces above.
    template <typename... Pieces>
    void append(const Pieces &...pieces)
    {
        char *end = roomFor((mostBytes(pieces) + ...));
        ((end = write(end, pieces)), ...);
        endAt(end);
    }

    QString toString() const { return QString::fromUtf8(view()); }

private:
    static constexpr qsizetype kMostDigits = 20; // of a 64-bit number with its sign

    static qsizetype mostBytes(QLatin1StringView piece) { return piece.size(); }
    static qsizetype mostBytes(QStringView piece) { return 3 * piece.size(); }
    static qsizetype mostBytes(qint64) { return kMostDigits; }
    static qsizetype mostBytes(int) { return kMostDigits; }
    static qsizetype mostBytes(char16_t) = delete; // it would be taken for a number
    static qsizetype mostBytes(Blanks piece) { return qMax(piece.count, 0); }
    static qsizetype mostBytes(Hex8) { return 8; }

    // Each gives the end of what it has written.
    static char *write(char *out, QLatin1StringView piece)
    {
        std::memcpy(out, piece.data(), static_cast<std::size_t>(piece.size()));
        return out + piece.size();
    }
    static char *write(char *out, QStringView piece);
    static char *write(char *out, qint64 piece);
    static char *write(char *out, int piece) { return write(out, qint64(piece)); }
    static char *write(char *out, Blanks piece);
    static char *write(char *out, Hex8 piece);
};

/// Appends what getHrefName of \a element gives.
void appendAnchor(SiteText &text, const VMXMLElement &element);

/// Appends what html_serialize of \a element gives.
void appendPageText(SiteText &text, const VMXMLElement &element, int level);

/// Appends what treenode_serialize of \a root gives.
void appendMenuScript(SiteText &text, const VMRootArchive &root);

} // namespace veldmap

#include "site/bit_diagram.h"

#include "model/valuable.h"
#include "site/html_text.h"
#include "site/page_names.h"

#include <QVarLengthArray>

#include <array>

using namespace Qt::StringLiterals;

// One row of the diagram of the register ctrl, whose highest field is at bits 13 to 8; the rest of a row is a gap:
//
//     <svg class="bits" viewBox="0 0 642 50" width="642" height="50" role="group" aria-label="Bits of ctrl">
//     <use href="#-low"/>                                            the numbers of the bits
//     <path class="gap" d="M1 16h80v32h-80z"/>
//     <path class="box" d="M81 16h240v32h-240z"/>
//     <a href="#ctrl.speed"><text x="201" y="30">speed</text></a>
//     <text class="say" x="201" y="43">rw 2</text></svg>

namespace veldmap {

namespace {

constexpr int kBitsInRow = 16;
constexpr int kBitWidth = 40; // of 642 units, which are pixels on a wide page
constexpr int kBorder = 1;
constexpr int kNumbersHeight = 15;
constexpr int kBoxHeight = 34;
constexpr int kEmptyBoxHeight = 16; // of a row without fields
constexpr int kRowGap = 5;
constexpr int kLetterWidth = 7;    // of a name
constexpr int kLongestTurned = 18; // letters of a name that stands upright

/// Neighbouring bits of one row that the same field covers, or none.
struct Cell {
    int highest;
    int lowest;
    int field;      ///< the first that covers it; -1 in a gap
    int other = -1; ///< a second one that does
    int width() const { return (highest - lowest + 1) * kBitWidth; }
};

struct Coverage {
    int field = -1;
    int other = -1;
    bool operator==(const Coverage &) const = default;
};

constexpr int kMostBits = 32;
using Bits = std::array<Coverage, kMostBits>;

/// Which fields cover each bit. Of a field that reaches beyond the register only the bits inside it count.
Bits coverageOf(const VMValuable &valuable, int bits)
{
    Bits coverage;
    for (int at = 0; const auto &field : valuable.bitFields) {
        for (int bit = qMax(field->downPos, 0); bit <= field->upPos && bit < bits; ++bit) {
            Coverage &covered = coverage[static_cast<std::size_t>(bit)];
            (covered.field < 0 ? covered.field : covered.other) = at;
        }
        ++at;
    }
    return coverage;
}

using Cells = QVarLengthArray<Cell, kBitsInRow>;

Cells cellsOf(const Bits &coverage, int highest, int lowest)
{
    Cells cells;
    for (int bit = highest; bit >= lowest; --bit) {
        const Coverage &covered = coverage[static_cast<std::size_t>(bit)];
        if (bit == highest || covered != coverage[static_cast<std::size_t>(bit) + 1])
            cells.append({bit, bit, covered.field, covered.other});
        cells.last().lowest = bit;
    }
    return cells;
}

class DiagramWriter {
public:
    DiagramWriter(HtmlText &text, const VMValuable &valuable, std::span<const QByteArray> ids)
        : m_text(text), m_valuable(valuable), m_ids(ids)
    {
    }

    void write()
    {
        const int bits = qBound(0, m_valuable.getBitSize(), kMostBits);
        if (bits == 0)
            return;
        const Bits coverage = coverageOf(m_valuable, bits);
        QVarLengthArray<Cells, 2> rows;
        for (int highest = bits - 1; highest >= 0; highest -= kBitsInRow)
            rows.append(cellsOf(coverage, highest, qMax(highest - kBitsInRow + 1, 0)));
        int height = -kRowGap;
        for (const Cells &cells : rows)
            height += kNumbersHeight + boxHeightOf(cells) + kRowGap + 1;
        const int width = qMin(bits, kBitsInRow) * kBitWidth + 2 * kBorder;
        m_text.put("<svg class=\"bits b"_L1, qMin(bits, kBitsInRow), "\" viewBox=\"0 0 "_L1, width, " "_L1, height,
                   "\" width=\""_L1, width, "\" height=\""_L1, height, "\" role=\"group\" aria-label=\"Bits of "_L1,
                   m_valuable.getName(), "\">"_L1);
        int top = 0;
        for (const Cells &cells : rows)
            top = writeRow(cells, top, bits) + kRowGap + 1;
        m_text.put("</svg>\n"_L1);
    }

private:
    const VMBitField &fieldOf(const Cell &cell) const
    {
        return *m_valuable.bitFields[static_cast<std::size_t>(cell.field)];
    }

    static bool fits(qsizetype letters, const Cell &cell) { return letters * kLetterWidth + 4 <= cell.width(); }

    int boxHeightOf(const Cells &cells) const
    {
        int height = kEmptyBoxHeight;
        for (const Cell &cell : cells) {
            height = cell.field < 0 ? height : qMax(height, kBoxHeight);
            if (cell.field < 0 || fits(fieldOf(cell).getName().size(), cell))
                continue;
            const int letters = static_cast<int>(qMin<qsizetype>(fieldOf(cell).getName().size(), kLongestTurned));
            height = qMax(height, letters * kLetterWidth + 24);
        }
        return height;
    }

    int xOf(int bit, int highestOfRow) const { return kBorder + (highestOfRow - bit) * kBitWidth; }

    int writeRow(const Cells &cells, int top, int bits)
    {
        const int highest = cells.first().highest;
        const QLatin1StringView numbers = bits <= 8 ? "-byte"_L1 : highest >= kBitsInRow ? "-high"_L1 : "-low"_L1;
        m_text.put("<use href=\"#"_L1, numbers, "\""_L1);
        if (top > 0)
            m_text.put(" y=\""_L1, top, "\""_L1);
        m_text.put("/>"_L1);
        const int boxTop = top + kNumbersHeight;
        const int height = boxHeightOf(cells);
        writeBoxes(cells, highest, boxTop, height, true);
        writeBoxes(cells, highest, boxTop, height, false);
        for (const Cell &cell : cells) {
            if (cell.field >= 0)
                writeField(cell, xOf(cell.highest, highest), boxTop, height);
        }
        return boxTop + height;
    }

    void writeBoxes(const Cells &cells, int highest, int top, int height, bool gaps)
    {
        bool isOpen = false;
        for (const Cell &cell : cells) {
            if ((cell.field < 0) != gaps)
                continue;
            if (!isOpen)
                m_text.put(gaps ? "<path class=\"gap\" d=\""_L1 : "<path class=\"box\" d=\""_L1);
            isOpen = true;
            m_text.put("M"_L1, xOf(cell.highest, highest), " "_L1, top, "h"_L1, cell.width(), "v"_L1, height, "h-"_L1,
                       cell.width(), "z"_L1);
        }
        if (isOpen)
            m_text.put("\"/>"_L1);
    }

    void writeField(const Cell &cell, int left, int top, int height)
    {
        const VMBitField &field = fieldOf(cell);
        QStringView name = field.getName();
        const int middle = left + cell.width() / 2;
        m_text.put("<a href=\"#"_L1, fragmentOf(m_ids[static_cast<std::size_t>(cell.field)]), "\"><text x=\""_L1,
                   middle, "\" y=\""_L1);
        if (fits(name.size(), cell)) {
            m_text.put(top + (height - 16) / 2 + 5, "\">"_L1, name);
        } else {
            const int y = top + (height - 16) / 2;
            m_text.put(y, "\" transform=\"rotate(-90 "_L1, middle, " "_L1, y, ")\" dy=\"4\">"_L1);
            const bool isCut = name.size() > kLongestTurned;
            if (isCut)
                name = name.first(name[kLongestTurned - 2].isHighSurrogate() ? kLongestTurned - 2 : kLongestTurned - 1);
            m_text.put(name, isCut ? QStringView(u"…") : QStringView());
        }
        m_text.put(cell.other >= 0 ? "+</text></a>"_L1 : "</text></a>"_L1);
        writeState(field, cell, middle, top + height - 5);
    }

    /// Who may access the field and, where there is room, its reset value.
    void writeState(const VMBitField &field, const Cell &cell, int middle, int y)
    {
        const QString reset = field.hasReset ? field.getResetString(DISPLAY_DEFAULT) : QString();
        m_text.put("<text class=\"say\" x=\""_L1, middle, "\" y=\""_L1, y, "\">"_L1, field.getAccessString());
        if (!reset.isEmpty() && (reset.size() + 3) * (kLetterWidth - 1) <= cell.width())
            m_text.put(" "_L1, reset);
        m_text.put("</text>"_L1);
    }

    HtmlText &m_text;
    const VMValuable &m_valuable;
    std::span<const QByteArray> m_ids;
};

void appendNumbers(HtmlText &text, QLatin1StringView id, int highest, int lowest)
{
    text.put("<g id=\""_L1, id, "\">"_L1);
    for (int bit = highest; bit >= lowest; --bit)
        text.put("<text class=\"number\" x=\""_L1, kBorder + (highest - bit) * kBitWidth + kBitWidth / 2,
                 "\" y=\"11\">"_L1, bit, "</text>"_L1);
    text.put("</g>"_L1);
}

} // namespace

void appendDiagramParts(HtmlText &text)
{
    text.put("<svg class=\"parts\" width=\"0\" height=\"0\" aria-hidden=\"true\"><defs>"_L1);
    appendNumbers(text, "-high"_L1, 31, 16);
    appendNumbers(text, "-low"_L1, 15, 0);
    appendNumbers(text, "-byte"_L1, 7, 0);
    text.put("</defs></svg>\n"_L1);
}

void appendDiagram(HtmlText &text, const VMValuable &valuable, std::span<const QByteArray> fieldIds)
{
    DiagramWriter(text, valuable, fieldIds).write();
}

} // namespace veldmap

#include "site/bit_diagram.h"

#include "model/valuable.h"
#include "site/html_text.h"
#include "site/page_names.h"

#include <QVarLengthArray>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

// The upper half of the diagram of the register ctrl, whose highest field is at bits 25 to 18; the rest is a gap:
//
//     <div class="bits" role="group" aria-label="Bits of ctrl">
//     <svg viewBox="0 0 320 50"><use href="#-3"/>                        the numbers of the bits
//     <path class="gap" d="M0 15h240v34h-240z"/>
//     <path class="box" d="M320 15h-80v34h80"/>                          open where the field goes on
//     <text class="rest" x="280" y="36">speed</text></svg>               its name again, for narrow screens
//     <svg class="top" viewBox="0 0 320 50"><use href="#-2"/>...
//     <g class="m2"><a href="#ctrl.speed"><text x="120" y="29">speed</text></a>
//     <text class="say" x="120" y="44">rw 2</text></g></svg>
//
// A drawing has eight bits. Two stand side by side where there is room, and one above the other on narrow screens. The
// name of a field stands in the larger of its parts; where two are side by side the style sheet moves it to the middle
// of both: "p" or "m" and how many half bits to the right or to the left.

namespace veldmap {

namespace {

constexpr int kBitsInRow = 16;
constexpr int kBitsInDrawing = 8;
constexpr int kBitWidth = 40; // units, which are pixels on a wide page
constexpr int kNumbersHeight = 15;
constexpr int kBoxHeight = 34;
constexpr int kEmptyBoxHeight = 16; // of a row without fields
constexpr int kLetterWidth = 7;     // of a name
constexpr int kLongestTurned = 18;  // letters of a name that stands upright

/// Neighbouring bits of one drawing that the same field covers, or none.
struct Cell {
    int highest;
    int lowest;
    int field;         ///< the first that covers it; -1 in a gap
    int other = -1;    ///< a second one that does
    int bitsLeft = 0;  ///< of the same in the drawing to the left of it
    int bitsRight = 0; ///< in the one to the right
    int bits() const { return highest - lowest + 1; }
    int width() const { return bits() * kBitWidth; }
    int left() const { return (kBitsInDrawing - 1 - highest % kBitsInDrawing) * kBitWidth; }
    /// Whether the name stands here, and not in the other part.
    bool isNamed() const { return field >= 0 && bits() > bitsLeft && bits() >= bitsRight; }
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

/// The cells of a row, cut between its two drawings.
Cells cellsOf(const Bits &coverage, int highest, int lowest)
{
    Cells cells;
    for (int bit = highest; bit >= lowest; --bit) {
        const Coverage &covered = coverage[static_cast<std::size_t>(bit)];
        const bool goesOn = bit != highest && covered == coverage[static_cast<std::size_t>(bit) + 1];
        if (!goesOn || bit % kBitsInDrawing == kBitsInDrawing - 1)
            cells.append({bit, bit, covered.field, covered.other, goesOn ? cells.last().bits() : 0});
        cells.last().lowest = bit;
    }
    for (qsizetype at = 1; at < cells.size(); ++at)
        cells[at - 1].bitsRight = cells[at].bitsLeft > 0 ? cells[at].bits() : 0;
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
        m_text.put("<div class=\"bits\" role=\"group\" aria-label=\"Bits of "_L1, m_valuable.getName(), "\">"_L1);
        for (int highest = bits - 1; highest >= 0; highest -= kBitsInRow)
            writeRow(cellsOf(coverage, highest, qMax(highest - kBitsInRow + 1, 0)));
        m_text.put("</div>\n"_L1);
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
            if (!cell.isNamed() || fits(fieldOf(cell).getName().size(), cell))
                continue;
            const int letters = static_cast<int>(qMin<qsizetype>(fieldOf(cell).getName().size(), kLongestTurned));
            height = qMax(height, letters * kLetterWidth + 24);
        }
        return height;
    }

    void writeRow(const Cells &cells)
    {
        const int height = boxHeightOf(cells);
        for (const Cell *begin = cells.begin(); begin != cells.end();) {
            const int drawing = begin->highest / kBitsInDrawing;
            const Cell *end = std::find_if(begin, cells.end(),
                                           [&](const Cell &cell) { return cell.highest / kBitsInDrawing != drawing; });
            writeDrawing({begin, end}, drawing, height);
            begin = end;
        }
    }

    void writeDrawing(std::span<const Cell> cells, int drawing, int height)
    {
        // The drawing on the left lies above its neighbour, unless a name of that reaches into it.
        const bool isTop = cells[0].bitsLeft > 0 && cells[0].isNamed();
        m_text.put(isTop ? "<svg class=\"top\" viewBox=\"0 0 320 "_L1 : "<svg viewBox=\"0 0 320 "_L1,
                   kNumbersHeight + height + 1, "\"><use href=\"#-"_L1, drawing, "\"/>"_L1);
        writeBoxes(cells, height, true);
        writeBoxes(cells, height, false);
        for (const Cell &cell : cells) {
            if (cell.isNamed())
                writeField(cell, height);
            else if (cell.field >= 0)
                writeRest(cell, height);
        }
        m_text.put("</svg>"_L1);
    }

    void writeBoxes(std::span<const Cell> cells, int height, bool gaps)
    {
        bool isOpen = false;
        for (const Cell &cell : cells) {
            if ((cell.field < 0) != gaps)
                continue;
            if (!isOpen)
                m_text.put(gaps ? "<path class=\"gap\" d=\""_L1 : "<path class=\"box\" d=\""_L1);
            isOpen = true;
            const bool goesOn = cell.bitsRight > 0; // then from the right
            m_text.put("M"_L1, goesOn ? cell.left() + cell.width() : cell.left(), " "_L1, kNumbersHeight,
                       goesOn ? "h-"_L1 : "h"_L1, cell.width(), "v"_L1, height, goesOn ? "h"_L1 : "h-"_L1, cell.width(),
                       goesOn || cell.bitsLeft > 0 ? ""_L1 : "z"_L1);
        }
        if (isOpen)
            m_text.put("\"/>"_L1);
    }

    void writeField(const Cell &cell, int height)
    {
        const VMBitField &field = fieldOf(cell);
        QStringView name = field.getName();
        const int middle = cell.left() + cell.width() / 2;
        const bool isMoved = cell.bitsLeft > 0 || cell.bitsRight > 0;
        if (isMoved)
            m_text.put("<g class=\""_L1, cell.bitsLeft > 0 ? "m"_L1 : "p"_L1, cell.bitsLeft + cell.bitsRight, "\">"_L1);
        m_text.put("<a href=\"#"_L1, fragmentOf(m_ids[static_cast<std::size_t>(cell.field)]), "\"><text x=\""_L1,
                   middle, "\" y=\""_L1);
        const int y = kNumbersHeight + (height - 16) / 2;
        if (fits(name.size(), cell)) {
            m_text.put(y + 5, "\">"_L1, name);
        } else {
            m_text.put(y, "\" transform=\"rotate(-90 "_L1, middle, " "_L1, y, ")\" dy=\"4\">"_L1);
            const bool isCut = name.size() > kLongestTurned;
            if (isCut)
                name = name.first(name[kLongestTurned - 2].isHighSurrogate() ? kLongestTurned - 2 : kLongestTurned - 1);
            m_text.put(name, isCut ? QStringView(u"…") : QStringView());
        }
        m_text.put(cell.other >= 0 ? "+</text></a>"_L1 : "</text></a>"_L1);
        writeState(field, cell, middle, kNumbersHeight + height - 5);
        if (isMoved)
            m_text.put("</g>"_L1);
    }

    /// The part of a field whose name stands in the other one.
    void writeRest(const Cell &cell, int height)
    {
        const QStringView name = fieldOf(cell).getName();
        m_text.put("<text class=\"rest\" x=\""_L1, cell.left() + cell.width() / 2, "\" y=\""_L1,
                   kNumbersHeight + height / 2 + 4, "\">"_L1, fits(name.size(), cell) ? name : QStringView(u"…"),
                   "</text>"_L1);
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

void appendNumbers(HtmlText &text, int drawing)
{
    text.put("<g id=\"-"_L1, drawing, "\">"_L1);
    for (int at = 0; at < kBitsInDrawing; ++at)
        text.put("<text class=\"number\" x=\""_L1, at * kBitWidth + kBitWidth / 2, "\" y=\"11\">"_L1,
                 drawing * kBitsInDrawing + kBitsInDrawing - 1 - at, "</text>"_L1);
    text.put("</g>"_L1);
}

} // namespace

void appendDiagramParts(HtmlText &text)
{
    text.put("<svg class=\"parts\" width=\"0\" height=\"0\" aria-hidden=\"true\"><defs>"_L1);
    for (int drawing = kMostBits / kBitsInDrawing - 1; drawing >= 0; --drawing)
        appendNumbers(text, drawing);
    text.put("</defs></svg>\n"_L1);
}

void appendDiagram(HtmlText &text, const VMValuable &valuable, std::span<const QByteArray> fieldIds)
{
    DiagramWriter(text, valuable, fieldIds).write();
}

} // namespace veldmap

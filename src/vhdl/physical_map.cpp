#include "model/valuable.h"
#include "text/bit_arithmetic.h"
#include "text/literals.h"
#include "vhdl/notation.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using veldmap::wrappingAdd;
using veldmap::wrappingSubtract;

// The packed word holds the fields of a register next to each other from bit 0, in list order:
//
//     register   a at 0   b at 5:4   c at W-1:0   d at 9
//     packed     0        2:1        3+W-1:3      3+W-1+1

namespace {

/// Hands out the bits of a packed word, as numbers and as texts. The text is the number until a field's width turns out
/// to be no plain number; from then on it is an expression that grows.
class PackedWord {
public:
    void place(VMBitField &field)
    {
        const QString up = cleaned(field.upPosExpression);
        const QString down = cleaned(field.downPosExpression);
        if (up == down)
            placeBit(field);
        else
            placeRange(field, up, down);
    }

    const QString &top() const { return m_top; }

private:
    static QString cleaned(const QString &expression)
    {
        const bool isNumber = std::ranges::all_of(expression, [](QChar c) { return c >= u'0' && c <= u'9'; });
        return isNumber ? expression : vhdl_clean_expr(expression.toUpper());
    }

    void placeBit(VMBitField &field)
    {
        m_top = nextText();
        if (m_symbolic)
            m_nextText += "+1"_L1;
        field.setPhysicalPositions(m_top, m_next, m_top, m_next);
        m_next = wrappingAdd(m_next, 1);
    }

    void placeRange(VMBitField &field, const QString &up, const QString &down)
    {
        const QString low = nextText();
        const int lowNumber = m_next;
        const int highNumber = wrappingAdd(wrappingSubtract(field.upPos, field.downPos), m_next);
        if (m_symbolic || !isInteger(up) || !isInteger(down)) {
            appendRange(up, down);
            m_top = nextText();
            m_nextText += "+1"_L1;
        } else {
            m_top = veldmap::decimalText(highNumber);
        }
        m_next = wrappingAdd(highNumber, 1);
        field.setPhysicalPositions(m_top, highNumber, low, lowNumber);
    }

    /// Carries the text on to the top bit of a range.
    void appendRange(const QString &up, const QString &down)
    {
        if (m_symbolic)
            m_nextText += u'+' + up;
        else
            m_nextText = m_next == 0 ? up : QString::number(m_next) + u'+' + up;
        m_symbolic = true;
        if (down != "0"_L1)
            m_nextText += u'-' + down;
    }

    /// The growing text has spare room, which a field would keep.
    QString nextText() const
    {
        return m_symbolic ? QString(m_nextText.constData(), m_nextText.size()) : veldmap::decimalText(m_next);
    }

    static bool isInteger(const QString &text)
    {
        bool isNumber = false;
        text.toInt(&isNumber);
        return isNumber;
    }

    int m_next = 0;
    QString m_nextText;
    bool m_symbolic = false;
    QString m_top;
};

} // namespace

void VMValuable::buildPhysicalMap()
{
    PackedWord word;
    for (const auto &field : bitFields)
        word.place(*field);
    physicalName = word.top();
}

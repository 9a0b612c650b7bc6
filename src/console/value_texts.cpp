#include "console/value_texts.h"

#include "access/field_values.h"
#include "model/visit.h"
#include "site/comment_html.h"
#include "text/bit_arithmetic.h"
#include "text/lines.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

const QString kReadError = u"read error"_s;

DisplayType displayOf(ConsoleSettings::Base base)
{
    switch (base) {
    case ConsoleSettings::Hexadecimal:
        return DISPLAY_HEX;
    case ConsoleSettings::Decimal:
        return DISPLAY_DEC;
    case ConsoleSettings::Binary:
        return DISPLAY_BIN;
    case ConsoleSettings::AsDescribed:
        break;
    }
    return DISPLAY_DEFAULT;
}

/// The comment of \a element without the table of options that the load has put behind that of a field.
QString ownComment(const VMXMLElement &element)
{
    QString comment = element.getComment();
    if (const auto *field = elementCast<VMBitField>(&element)) {
        const QString options = field->generateOptionsComment();
        if (comment.endsWith(options))
            comment.chop(options.size());
    }
    return plainComment(comment).simplified();
}

QString fieldText(const VMBitField &field, std::optional<quint32> value)
{
    if (!value)
        return kReadError;
    return field.convertValueToValueString(field.getValueFromCache(*value), DISPLAY_DEFAULT, true, false);
}

} // namespace

QString hexText(quint32 value, int bits)
{
    const int digits = qBound(1, (bits + 3) / 4, 8);
    return "0x"_L1 + hex8(value & lowBits(bits)).right(digits);
}

QString numberText(const variant::Variant &value, ConsoleSettings::Base base)
{
    unsigned long number = 0;
    const bool isNumber = value.getType() == variant::Variant::kInt || value.getType() == variant::Variant::kDWord;
    if (!isNumber || value.asDWORD(number) == 0) {
        std::string text;
        value.asString(text);
        return QString::fromStdString(text);
    }
    const auto word = static_cast<quint32>(number);
    if (base == ConsoleSettings::Decimal)
        return value.getType() == variant::Variant::kInt ? QString::number(value.getInt()) : QString::number(word);
    return base == ConsoleSettings::Binary ? "0b"_L1 + QString::number(word, 2) : "0x"_L1 + hexDigits(word);
}

QString ValueTexts::of(const VMValuable &valuable) const
{
    if (valuable.readError)
        return kReadError;
    const bool isHex = m_base == ConsoleSettings::Hexadecimal || (m_isForced && !valuable.readable);
    if (isHex && (m_isForced || canBeRead(valuable)))
        return hexText(valuable.getValue(), valuable.getBitSize());
    return m_base == ConsoleSettings::AsDescribed ? valueText(valuable) : valuable.getValueString(displayOf(m_base));
}

QString ValueTexts::of(const VMBitField &field) const
{
    const auto *valuable = elementCast<VMValuable>(field.parent);
    return valuable && valuable->readError ? kReadError : field.getValueString(displayOf(m_base), false, m_isForced);
}

QString ValueTexts::ofElement(const VMXMLElement &element) const
{
    const auto *valuable = elementCast<VMValuable>(&element);
    return valuable ? "= "_L1 + of(*valuable) : QString();
}

QString ValueTexts::ofField(const VMBitField &field) const
{
    return "= "_L1 + of(field);
}

QString differenceText(const VMValuable &valuable, std::optional<quint32> before, std::optional<quint32> after,
                       const QString &margin)
{
    const auto whole = [&](std::optional<quint32> value) {
        return value ? hexText(*value, valuable.getBitSize()) : kReadError;
    };
    QString text = lineOf(margin, valuable.getPath(), u"  ", whole(before), u" -> ", whole(after));
    for (const auto &field : valuable.bitFields) {
        const QString old = fieldText(*field, before);
        const QString now = fieldText(*field, after);
        if (before && after && old != now)
            text += lineOf(margin, u"  ", field->getName(), u"  ", old, u" -> ", now);
    }
    return text;
}

QString documentationOf(const VMXMLElement &element)
{
    QString text = ownComment(element);
    if (!text.isEmpty())
        text += u'\n';
    if (const auto *field = elementCast<VMBitField>(&element)) {
        for (const VMBitFieldOption &option : field->options.optionList) {
            const QString value =
                field->convertValueToValueString(static_cast<quint32>(option.value), DISPLAY_DEFAULT, false, true);
            const QString meaning = plainComment(option.comment).simplified();
            text += lineOf(u"  ", value, u"  ", option.name, meaning.isEmpty() ? u""_s : u"  "_s + meaning);
        }
    }
    return text;
}

} // namespace veldmap

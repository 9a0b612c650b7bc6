#include "access/field_values.h"

#include "access/access_rules.h"
#include "findings/finding.h"
#include "model/valuable.h"
#include "text/bit_arithmetic.h"
#include "text/literals.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kSetMode = 2;
constexpr int kClearMode = 3;

const QString kUnknown = u"?"_s;

/// The number that \a value stands for: itself, or that of the option of this name.
std::optional<qint64> fieldNumber(const VMBitField &field, const QString &value)
{
    if (const std::optional<qint64> number = numberOf(value))
        return number;
    const auto option = std::ranges::find(field.options.optionList, value, &VMBitFieldOption::name);
    return option == field.options.optionList.end() ? std::nullopt
                                                    : std::optional<qint64>(static_cast<quint32>(option->value));
}

std::nullopt_t refuse(Sink &sink, const Rule &rule, const QStringList &arguments)
{
    sink.take(Finding(rule, {}, arguments));
    return std::nullopt;
}

} // namespace

bool canBeRead(const VMValuable &valuable)
{
    return valuable.readable && !valuable.readError;
}

bool canBeRead(const VMBitField &field)
{
    const auto *valuable = elementCast<VMValuable>(field.parent);
    return field.readable && valuable && canBeRead(*valuable);
}

QString valueText(const VMValuable &valuable)
{
    if (!canBeRead(valuable))
        return kUnknown;
    const int digits = 2 * valuable.sizeOf();
    const QString hex =
        "0x"_L1 + QString::number(valuable.getValue(), 16).toUpper().right(digits).rightJustified(digits, u'0');
    return valuable.displayType == DISPLAY_HEX ? hex : hex + " = "_L1 + valuable.getValueString(DISPLAY_DEFAULT);
}

QString valueText(const VMBitField &field)
{
    return canBeRead(field) ? field.getValueString(DISPLAY_DEFAULT, false, false) : kUnknown;
}

std::optional<quint32> valueToWrite(const VMValuable &valuable, const Assignment &assignment, Sink &sink)
{
    const auto &[path, value, force] = assignment;
    if (!valuable.writable && !force)
        return refuse(sink, access_rules::kNotWritable, {path});
    const std::optional<qint64> number = numberOf(value);
    if (!number)
        return refuse(sink, access_rules::kNoNumber, {path, value});
    const int width = valuable.getBitSize();
    // 0xFE is a pattern of 8 bits also where it means -2.
    const bool isPattern = value.startsWith("0x"_L1) || value.startsWith("0b"_L1);
    const qint64 greatest = lowBits(valuable.isSigned() && !isPattern ? width - 1 : width);
    const qint64 least = valuable.isSigned() ? -qint64(lowBits(width - 1)) - 1 : 0;
    if (*number < least || *number > greatest)
        return refuse(sink, access_rules::kTooWide, {path, value, QString::number(width)});
    return static_cast<quint32>(*number);
}

std::optional<quint32> valueToWrite(const VMBitField &field, const VMValuable &valuable, quint32 before,
                                    const Assignment &assignment, Sink &sink)
{
    const auto &[path, value, force] = assignment;
    if (field.writeMode == 0 && !force)
        return refuse(sink, access_rules::kNotWritable, {path});
    const std::optional<qint64> number = fieldNumber(field, value);
    if (!number)
        return refuse(sink, access_rules::kNoNumberOrOption, {path, value});
    if (field.writeMode == kSetMode && *number != 1)
        return refuse(sink, access_rules::kOnlySets, {path});
    if (field.writeMode == kClearMode && *number != 1)
        return refuse(sink, access_rules::kOnlyClears, {path});
    // Bits of the field outside its register hold nothing.
    const quint32 mask = field.getFullValueUnshifted() & lowBits(valuable.getBitSize());
    const quint32 moved =
        *number < 0 || *number > 0xFFFFFFFF ? 0 : shiftLeft(static_cast<quint32>(*number), field.downPos) & mask;
    if (*number < 0 || shiftRight(moved, field.downPos) != *number)
        return refuse(sink, access_rules::kTooWideForField,
                      {path, value, QString::number(field.upPos), QString::number(field.downPos),
                       QString::number(valuable.getBitSize())});
    return (before & ~mask) | moved;
}

} // namespace veldmap

#include "model/bitfield.h"

#include "model/valuable.h"
#include "text/bit_arithmetic.h"
#include "text/lines.h"

#include <algorithm>
#include <bit>

using namespace Qt::StringLiterals;

namespace {

/// Which of a field's two positions a rule of a group reads.
struct PositionFields {
    int VMBitField::*up;
    int VMBitField::*down;
    QString VMBitField::*upExpression;
    QString VMBitField::*downExpression;
};
constexpr PositionFields kLogical = {&VMBitField::upPos, &VMBitField::downPos, &VMBitField::upPosExpression,
                                     &VMBitField::downPosExpression};
constexpr PositionFields kPhysical = {&VMBitField::physicalUpPos, &VMBitField::physicalDownPos,
                                      &VMBitField::physicalUpPosExpression, &VMBitField::physicalDownPosExpression};

/// Where a search for the lowest bit starts: behind the last bit of a word.
constexpr int kBehindWord = 32;

/// The lowest position that a field of \a group begins at, 32 for an empty group.
int lowestPosition(const VMBitGroup &group, const PositionFields &positions)
{
    if (group.isEmpty())
        return kBehindWord;
    return (*std::ranges::min_element(group, {}, [&](const VMBitField *f) {
               return f->*positions.down;
           }))->*positions.down;
}

/// The field with the lowest bit, the earliest of equals; null when none begins inside the word.
const VMBitField *lowestField(const VMBitGroup &group, const PositionFields &positions)
{
    const VMBitField *lowest = nullptr;
    for (const VMBitField *field : group) {
        if (field->*positions.down < (lowest ? lowest->*positions.down : kBehindWord))
            lowest = field;
    }
    return lowest;
}

/// The field that is highest in a group whose fields don't overlap, in whatever order they are listed: one that begins
/// above the end of the one held so far takes its place.
const VMBitField *highestField(const VMBitGroup &group, const PositionFields &positions)
{
    const VMBitField *highest = nullptr;
    for (const VMBitField *field : group) {
        if (field->*positions.down > (highest ? highest->*positions.up : -1))
            highest = field;
    }
    return highest;
}

QString upExpression(const VMBitGroup &group, const PositionFields &positions)
{
    const VMBitField *field = highestField(group, positions);
    return field ? field->*positions.upExpression : QString();
}

QString downExpression(const VMBitGroup &group, const PositionFields &positions)
{
    const VMBitField *field = lowestField(group, positions);
    return field ? field->*positions.downExpression : QString();
}

} // namespace

VMBitField::VMBitField(const QString &name, bool readable, int writeMode, const QString &upPosExpression, int upPos,
                       const QString &downPosExpression, int downPos, int resetValue, bool hasReset,
                       DisplayType displayType)
    : VMXMLElement(name, XML_BITFIELD), readable(readable), hasReset(hasReset), upPos(upPos), downPos(downPos),
      writeMode(writeMode), upPosExpression(upPosExpression), downPosExpression(downPosExpression),
      displayType(displayType), resetValue(static_cast<std::uint32_t>(resetValue))
{
}

VMBitField::~VMBitField() = default;

int VMBitField::sizeOf() const
{
    return getBitSize() / 8;
}

int VMBitField::getAlignConstraint() const
{
    return 0;
}

int VMBitField::getBitSize() const
{
    return veldmap::wrappingAdd(veldmap::wrappingSubtract(upPos, downPos), 1);
}

unsigned int VMBitField::getBaseAddress() const
{
    return parent ? parent->getBaseAddress() : 0;
}

QString VMBitField::getPath() const
{
    return parent ? parent->getPath() + u'.' + getName() : getName();
}

QString VMBitField::getTypeString() const
{
    return u"Bitfield"_s;
}

int VMBitField::dumpInfo(int level) const
{
    return dumpLine(level, sizeof(*this));
}

void VMBitField::setPositions(const QString &upExpression, int up, const QString &downExpression, int down)
{
    upPosExpression = upExpression;
    upPos = up;
    downPosExpression = downExpression;
    downPos = down;
}

void VMBitField::setPhysicalPositions(const QString &upExpression, int up, const QString &downExpression, int down)
{
    physicalUpPosExpression = upExpression;
    physicalUpPos = up;
    physicalDownPosExpression = downExpression;
    physicalDownPos = down;
}

unsigned int VMBitField::getFullValueUnshifted() const
{
    return veldmap::bitRange(upPos, downPos);
}

unsigned int VMBitField::getFullValueShifted() const
{
    return veldmap::shiftRight(getFullValueUnshifted(), downPos);
}

unsigned int VMBitField::getValueFromCache(unsigned int cache) const
{
    return veldmap::shiftRight(cache & getFullValueUnshifted(), downPos);
}

unsigned int VMBitField::getValue() const
{
    const auto *valuable = elementCast<VMValuable>(static_cast<const VMXMLElement *>(parent));
    return valuable ? getValueFromCache(valuable->getValue()) : 0;
}

QString VMBitField::getBitString() const
{
    const auto *valuable = elementCast<VMValuable>(static_cast<const VMXMLElement *>(parent));
    if (!readable || !valuable || !valuable->readable)
        return u"?"_s;
    return convertValueToBitString(getValue());
}

int VMBitField::getValueFromOptionName(const QString &optionName) const
{
    const auto option = std::ranges::find(options.optionList, optionName, &VMBitFieldOption::name);
    return option == options.optionList.end() ? 0 : option->value;
}

QString VMBitField::convertValueToBitString(unsigned int value) const
{
    // Positions may span the whole range of an int; nobody reads on for more zeros than these.
    constexpr qint64 kMostDigits = 4'096;
    const qint64 width = qMin(qint64(upPos) - downPos + 1, kMostDigits);
    QString digits;
    for (qint64 bit = width - 1; bit >= 0; --bit)
        digits += (veldmap::shiftRight(value, bit) & 1u) ? u'1' : u'0';
    return digits;
}

QString VMBitField::convertValueToValueString(unsigned int value, DisplayType display, bool useOptions,
                                              bool optionNameOnly) const
{
    value &= veldmap::lowBits(qint64(upPos) - downPos + 1);
    if (display == DISPLAY_DEFAULT)
        display = displayType;
    QString text = display == DISPLAY_HEX   ? "0x"_L1 + veldmap::hexDigits(value)
                   : display == DISPLAY_BIN ? "0b"_L1 + convertValueToBitString(value)
                                            : QString::number(value);

    if (!useOptions)
        return text;
    const auto match = std::ranges::find_if(options.optionList, [value](const VMBitFieldOption &option) {
        return static_cast<unsigned int>(option.value) == value;
    });
    if (match == options.optionList.end())
        return text;
    return optionNameOnly ? match->name : text + " ("_L1 + match->name + u')';
}

QString VMBitField::getValueString(DisplayType display, bool optionNameOnly, bool force) const
{
    return getValueStringFromCache(getValue(), display, optionNameOnly, force);
}

QString VMBitField::getValueStringFromCache(unsigned int value, DisplayType display, bool optionNameOnly,
                                            bool force) const
{
    const auto *valuable = elementCast<VMValuable>(static_cast<const VMXMLElement *>(parent));
    if (!force && (!readable || !valuable || !valuable->readable))
        return u"?"_s;
    return convertValueToValueString(value, display, true, optionNameOnly);
}

QString VMBitField::getResetString(DisplayType display) const
{
    if (!hasReset)
        return u"-"_s;
    if (display == DISPLAY_DEFAULT)
        display = displayType;
    if (display == DISPLAY_HEX)
        return (resetValue > 1 ? u"0x"_s : QString()) + veldmap::hexDigits(resetValue);
    if (display == DISPLAY_BIN)
        return (resetValue > 1 ? u"0b"_s : QString()) + convertValueToBitString(resetValue);
    return QString::number(resetValue);
}

QString VMBitField::getAccessString() const
{
    const bool known = writeMode >= 0 && writeMode <= 3;
    return QString(readable ? u'r' : u'-') + QLatin1Char("-wsc"[known ? writeMode : 0]);
}

VMBitGroup::VMBitGroup(const QString &name, VMValuable *valuable) : valuable(valuable), name(name) {}

void VMBitGroup::addBitField(VMBitField *field)
{
    append(field);
}

void VMBitGroup::addBitGroup(const VMBitGroup *group)
{
    append(QList<VMBitField *>(*group));
}

int VMBitGroup::getShift() const
{
    return lowestPosition(*this, kLogical);
}

unsigned int VMBitGroup::getFullValueUnshifted() const
{
    unsigned int bits = 0;
    for (const VMBitField *field : *this)
        bits |= field->getFullValueUnshifted();
    return bits;
}

unsigned int VMBitGroup::getFullValueShifted() const
{
    return veldmap::shiftRight(getFullValueUnshifted(), getShift());
}

bool VMBitGroup::isContiguous() const
{
    const unsigned int bits = getFullValueShifted();
    return (bits & (bits + 1u)) == 0;
}

int VMBitGroup::getTotalBits() const
{
    return std::popcount(getFullValueUnshifted());
}

bool VMBitGroup::isPhysicalContiguous() const
{
    const VMBitField *highest = highestField(*this, kPhysical);
    const int down = lowestPosition(*this, kPhysical);
    const int up = highest ? highest->physicalUpPos : -1;
    return veldmap::wrappingAdd(veldmap::wrappingSubtract(up, down), 1) == getTotalBits();
}

QString VMBitGroup::getUpPosExpression() const
{
    return upExpression(*this, kLogical);
}

QString VMBitGroup::getDownPosExpression() const
{
    return downExpression(*this, kLogical);
}

QString VMBitGroup::getUpPosPhysicalExpression() const
{
    return upExpression(*this, kPhysical);
}

QString VMBitGroup::getDownPosPhysicalExpression() const
{
    return downExpression(*this, kPhysical);
}

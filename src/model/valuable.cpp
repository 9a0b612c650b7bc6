#include "model/valuable.h"

#include "text/bit_arithmetic.h"
#include "text/lines.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

VMValuable::VMValuable(const QString &name, bool readable, bool writable)
    : VMXMLElement(name, XML_VALUABLE), readable(readable), writable(writable)
{
}

VMValuable::VMValuable(const VMValuable &source)
    : VMXMLElement(source), readable(source.readable), writable(source.writable), displayType(source.displayType),
      enumTemplate(source.enumTemplate), physicalName(source.physicalName)
{
    bitFields.reserve(source.bitFields.size());
    for (const auto &field : source.bitFields)
        addBitField(std::make_unique<VMBitField>(*field).release());
    if (source.bitGroups.empty())
        return;
    QHash<QString, VMBitField *> firstOfName;
    for (const auto &field : bitFields) {
        if (!firstOfName.contains(field->getName()))
            firstOfName.insert(field->getName(), field.get());
    }
    for (const auto &group : source.bitGroups) {
        auto copy = std::make_unique<VMBitGroup>(group->name, this);
        copy->reserve(group->size());
        for (const VMBitField *field : *group)
            copy->addBitField(firstOfName.value(field->getName()));
        addBitGroup(copy.release());
    }
}

VMValuable::~VMValuable() = default;

int VMValuable::getAlignConstraint() const
{
    return sizeOf();
}

bool VMValuable::isValuable() const
{
    return true;
}

int VMValuable::dumpInfo(int level) const
{
    return dumpValuable(level, sizeof(*this));
}

int VMValuable::dumpValuable(int level, std::size_t objectSize) const
{
    int size = dumpLine(level, objectSize);
    for (const auto &field : bitFields)
        size += field->dumpInfo(level + 1);
    return size;
}

int VMValuable::getSignedValue() const
{
    return static_cast<int>(getValue());
}

unsigned int VMValuable::getValueForWritingBitfieldFromCache(unsigned int cache) const
{
    for (const auto &field : bitFields) {
        if (field->writeMode == 2 || field->writeMode == 3)
            cache &= ~field->getFullValueUnshifted();
    }
    return cache;
}

unsigned int VMValuable::getValueForWritingBitfield() const
{
    return getValueForWritingBitfieldFromCache(getValue());
}

bool VMValuable::isSigned() const
{
    return false;
}

void VMValuable::addBitField(VMBitField *field)
{
    Q_ASSERT_X(field, "VMValuable::addBitField", "a valuable takes bitfields, not null");
    field->reparent(this);
    bitFields.emplace_back(field);
}

void VMValuable::addBitGroup(VMBitGroup *group)
{
    bitGroups.emplace_back(group);
}

VMBitField *VMValuable::getBitFieldByName(const QString &fieldName) const
{
    const auto field = std::ranges::find_if(bitFields, [&](const auto &f) { return f->getName() == fieldName; });
    return field == bitFields.end() ? nullptr : field->get();
}

VMBitGroup *VMValuable::getBitGroupByName(const QString &groupName) const
{
    const auto group = std::ranges::find_if(bitGroups, [&](const auto &g) { return g->name == groupName; });
    return group == bitGroups.end() ? nullptr : group->get();
}

QString VMValuable::getProtectString() const
{
    return QString(readable ? u'r' : u'-') + QChar(writable ? u'w' : u'-');
}

QString VMValuable::getValueString(DisplayType display) const
{
    if (display == DISPLAY_DEFAULT)
        display = displayType;
    if (!readable)
        return u"?"_s;
    if (display == DISPLAY_HEX)
        return "0x"_L1 + veldmap::hexDigits(getValue() & veldmap::lowBits(getBitSize()));
    if (display == DISPLAY_BIN)
        return "0b"_L1 +
               QString::number(getValue() & veldmap::lowBits(getBitSize()), 2).rightJustified(getBitSize(), u'0');
    return isSigned() ? QString::number(getSignedValue()) : QString::number(getValue());
}

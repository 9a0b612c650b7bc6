#include "site/field_macros.h"

#include "model/bitfield.h"
#include "text/bit_arithmetic.h"

namespace veldmap {

// Names and values are those of headers/bitfield_macros.cpp.
FieldMacros::OfField FieldMacros::take(const VMBitField &field)
{
    const QByteArray name = m_prefix + field.getName().toUpper().toUtf8();
    const quint32 mask = field.getFullValueShifted();
    const int shift = field.downPos;
    const VMBitFieldOptions &options = field.options;
    OfField macros;
    if (options.hasDefault || options.optionList.isEmpty())
        macros.value = defineValue(name, field.getBitSize(), mask, shift);
    if (options.hasMask)
        macros.mask = define(name + "_MASK", {shiftLeft(mask, shift), 0, false});
    if (options.hasShift)
        macros.shift = define(name + "_SHIFT", {static_cast<quint32>(shift), 0, false});
    for (const VMBitFieldOption &option : options.optionList)
        macros.options.push_back(define(name + '_' + option.name.toUpper().toUtf8(),
                                        {shiftLeft(static_cast<quint32>(option.value), shift), 0, false}));
    return macros;
}

FieldMacros::OfField FieldMacros::take(const VMBitGroup &group)
{
    const QByteArray name = m_prefix + group.name.toUpper().toUtf8();
    const quint32 mask = group.getFullValueShifted();
    const int shift = group.getShift();
    OfField macros;
    macros.value = defineValue(name, group.getTotalBits(), mask, shift);
    macros.mask = define(name + "_MASK", {shiftLeft(mask, shift), 0, false});
    macros.shift = define(name + "_SHIFT", {static_cast<quint32>(shift), 0, false});
    return macros;
}

/// The macro that puts a value in its place, as it is written; a single bit needs no parameter.
QByteArray FieldMacros::defineValue(const QByteArray &name, int width, quint32 mask, int shift)
{
    if (width <= 1)
        return define(name, {shiftLeft(mask, shift), 0, false});
    const QByteArray macro = define(name, {mask, shift, true});
    return macro.isEmpty() ? macro : macro + "(n)";
}

/// The name, if it stands for \a meaning in a header.
QByteArray FieldMacros::define(const QByteArray &name, Meaning meaning)
{
    const auto known = m_known.constFind(name);
    if (known == m_known.cend()) {
        m_known.insert(name, meaning);
        return name;
    }
    return *known == meaning ? name : QByteArray();
}

} // namespace veldmap

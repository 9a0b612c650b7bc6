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
    if (options.hasDefault || options.optionList.isEmpty()) {
        const bool hasParameter = field.getBitSize() > 1;
        macros.value =
            define(name, hasParameter ? Meaning{mask, shift, true} : Meaning{shiftLeft(mask, shift), 0, false});
        if (hasParameter && !macros.value.isEmpty())
            macros.value += "(n)";
    }
    if (options.hasMask)
        macros.mask = define(name + "_MASK", {shiftLeft(mask, shift), 0, false});
    if (options.hasShift)
        macros.shift = define(name + "_SHIFT", {static_cast<quint32>(shift), 0, false});
    for (const VMBitFieldOption &option : options.optionList)
        macros.options.push_back(define(name + '_' + option.name.toUpper().toUtf8(),
                                        {shiftLeft(static_cast<quint32>(option.value), shift), 0, false}));
    return macros;
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

#pragma once

#include "check/declared.h"
#include "text/bit_arithmetic.h"

#include <QHash>
#include <QSet>

#include <functional>

namespace veldmap {

/// A macro that headers define for a field, an option or a bitgroup.
struct FieldMacro {
    bool hasParameter = false; ///< it puts a value in its place
    quint32 value = 0;         ///< in place; of a macro with parameter the mask, moved down to bit 0
    int shift = 0;             ///< of a macro with parameter
    const VMValuable *owner = nullptr;

    bool hasValueOf(const FieldMacro &other) const
    {
        return hasParameter == other.hasParameter && value == other.value && shift == other.shift;
    }
};

/// Hears macros, whose names are without the type's name and the underscore behind it.
using MacroListener = std::function<void(const QString &name, const FieldMacro &macro)>;

/// Tells \a listener all macros of the type \a element, in the order of the headers, also those that stand commented
/// out there. What an inner type has in several places is told once.
void forEachMacro(const VMXMLElement &element, const MacroListener &listener);

} // namespace veldmap

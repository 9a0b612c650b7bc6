#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

#include <functional>
#include <optional>

namespace veldmap {

/// What VHDL makes of an expression of integers.
enum class StaticResult {
    Value,     ///< a number that an integer holds
    TooLarge,  ///< a number, or a step to it, beyond 32-bit integers
    Unreadable ///< an operator, literal or name that VHDL does not have there, or no value
};

/// The value of the constant of a name, in upper case, that is visible; nothing for any other name.
using ConstantLookup = std::function<std::optional<qint64>(const QString &name)>;

/// Reads \a text as a static expression of VHDL: decimal and based literals, \a constants, signs, + - * / ** and
/// parentheses. Its number goes to \a value, if that is given and there is one.
VELDMAP_EXPORT StaticResult evaluateStatic(const QString &text, const ConstantLookup &constants,
                                           qint64 *value = nullptr);

/// Whether \a name can be declared: a basic identifier that is no reserved word of VHDL-93 or VHDL-2008, nor INTEGER,
/// which every line uses.
bool isDeclarableName(const QString &name);

/// Whether the packages that every package uses, STANDARD and std_logic_1164, declare \a name.
bool isStandardName(const QString &name);

} // namespace veldmap

#pragma once

#include "findings/rule.h"

/// What VHDL will not take of a package.
namespace veldmap::rules {

using namespace Qt::StringLiterals;

inline constexpr Rule vhdlPackageTaken = {
    "vhdl-package-taken"_L1, Severity::Warning,
    u"Package '%1': another file of the chip has a package of this name, and a library holds one"};

// The others tell of all lines of one kind in a module, or among the variables of a file: "Module 'uart'", how many
// there are, "line" or "lines", and where the first stands.

inline constexpr Rule vhdlNoFields = {
    "vhdl-no-fields"_L1, Severity::Warning,
    u"%1: VHDL refuses %2 %3, ranges of registers without bitfields; the first is %4"};
inline constexpr Rule vhdlDeclaredTwice = {"vhdl-declared-twice"_L1, Severity::Warning,
                                           u"%1: VHDL refuses %2 %3, names that are declared already; the first is %4"};
inline constexpr Rule vhdlIllegalName = {
    "vhdl-illegal-name"_L1, Severity::Warning,
    u"%1: VHDL refuses %2 %3, names that are reserved or no identifiers; the first is %4"};
inline constexpr Rule vhdlAddressBits = {"vhdl-address-bits"_L1, Severity::Warning,
                                         u"%1: VHDL refuses %2 %3, _REG_NBA outside 1 to 12; the first is %4"};
inline constexpr Rule vhdlTooLarge = {"vhdl-too-large"_L1, Severity::Warning,
                                      u"%1: VHDL refuses %2 %3, numbers beyond its integers; the first is %4"};
inline constexpr Rule vhdlUnreadable = {"vhdl-unreadable"_L1, Severity::Warning,
                                        u"%1: VHDL refuses %2 %3, expressions that it can't read; the first is %4"};
inline constexpr Rule vhdlUnevaluated = {"vhdl-unevaluated"_L1, Severity::Warning,
                                         u"%1: VHDL refuses %2 %3, positions that have no value; the first is %4"};
inline constexpr Rule vhdlHiddenType = {
    "vhdl-hidden-type"_L1, Severity::Warning,
    u"%1: VHDL refuses %2 %3, types whose words another declaration hides; the first is %4"};
inline constexpr Rule vhdlCircularUse = {
    "vhdl-circular-use"_L1, Severity::Warning,
    u"%1: VHDL refuses %2 %3, uses of packages that use this one; the first is %4"};
inline constexpr Rule vhdlComment = {
    "vhdl-comment"_L1, Severity::Warning,
    u"%1: VHDL refuses %2 %3, comments with characters that VHDL-93 lacks; the first is %4"};
// Of packages that have comments in the place of refused lines.

inline constexpr Rule vhdlDependent = {"vhdl-dependent"_L1, Severity::Warning,
                                       u"%1: VHDL refuses %2 %3, uses of what it refuses; the first is %4"};
inline constexpr Rule vhdlOtherNumber = {
    "vhdl-other-number"_L1, Severity::Warning,
    u"%1: VHDL makes another number of %2 %3, expressions that it reads otherwise; the first is %4"};

struct LineRule {
    const Rule *rule;
    QStringView reason; ///< of one line, as its comment tells it
};

/// The rules of refused lines, in the order in which they are reported.
inline constexpr LineRule vhdlRefusals[] = {
    {&vhdlNoFields, u"the register has no bitfields"},
    {&vhdlDeclaredTwice, u"the name is declared already"},
    {&vhdlIllegalName, u"the name is reserved or no identifier"},
    {&vhdlAddressBits, u"the number lies outside 1 to 12"},
    {&vhdlTooLarge, u"a number lies beyond the integers of VHDL"},
    {&vhdlUnreadable, u"VHDL can't read the expression"},
    {&vhdlUnevaluated, u"the position has no value"},
    {&vhdlHiddenType, u"another declaration hides a word of the type"},
    {&vhdlCircularUse, u"that package uses this one"},
    {&vhdlComment, u"VHDL-93 lacks characters of this comment"},
    {&vhdlDependent, u"it uses what is refused"},
    {&vhdlOtherNumber, u"the expression has another number in VHDL"},
};

} // namespace veldmap::rules

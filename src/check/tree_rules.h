#pragma once

#include "check/lint_rule.h"

/// What trees show of descriptions that are most likely not meant so.
namespace veldmap::lint {

using namespace Qt::StringLiterals;

// Registers: a field or option, then the path of its register.

inline constexpr LintRule fieldOverlap = {
    {"field-overlap"_L1, Severity::Warning, u"field '%1' of '%2' overlaps '%3' in %4",
     u"move one of them, or make one readable and the other writable alone", "pos"_L1}};
inline constexpr LintRule fieldNameTwice = {
    {"field-name-twice"_L1, Severity::Warning, u"%1 '%2' of '%3' has the name of a field further up"}};
inline constexpr LintRule fieldBeyondRegister = {{"field-beyond-register"_L1,
                                                  Severity::Warning,
                                                  u"field '%1' of '%2' has %3, but the register ends at bit %4",
                                                  {},
                                                  "pos"_L1}};
inline constexpr LintRule fieldWidth = {{"field-width"_L1,
                                         Severity::Error,
                                         u"field '%1' of '%2' is %3 bits wide: its position '%4:%5' comes to %6:%7",
                                         {},
                                         "pos"_L1}};
inline constexpr LintRule fieldNoAccess = {
    {"field-no-access"_L1, Severity::Warning,
     u"%1 of the %2 fields of '%3' can be neither read nor written; the first is '%4'",
     u"give them access=\"r\", \"w\" or \"rw\"; s and c set and clear when written", "access"_L1}};
inline constexpr LintRule registerNoAccess = {{"register-no-access"_L1, Severity::Warning,
                                               u"register '%1' can be neither read nor written",
                                               u"give it protect=\"r\", \"w\" or \"rw\"", "protect"_L1}};
inline constexpr LintRule optionBeyondField = {
    {"option-beyond-field"_L1,
     Severity::Warning,
     u"option '%1' of field '%2' of '%3' has the value %4, but the field holds 0 to %5",
     {},
     "value"_L1}};
inline constexpr LintRule optionValueTwice = {{"option-value-twice"_L1,
                                               Severity::Warning,
                                               u"option '%1' of field '%2' of '%3' has the value %4 of option '%5'",
                                               {},
                                               "value"_L1}};
inline constexpr LintRule optionNameTwice = {
    {"option-name-twice"_L1, Severity::Warning,
     u"option '%1' of field '%2' of '%3' has the name of an option further up"}};
inline constexpr LintRule groupOverlap = {
    {"group-overlap"_L1, Severity::Warning, u"pieces of bitgroup '%1' of '%2' overlap in %3"}};
inline constexpr LintRule groupGap = {
    {"group-gap"_L1, Severity::Warning, u"bitgroup '%1' of '%2' leaves out %3 between its pieces"}};

// The memory map: instances.

inline constexpr LintRule instanceOverlap = {{"instance-overlap"_L1,
                                              Severity::Warning,
                                              u"members of instance '%1' (%2 to %3) overlap those of '%4' (%5 to %6)",
                                              {},
                                              "address"_L1}};
inline constexpr LintRule instanceView = {{"instance-view"_L1,
                                           Severity::Warning,
                                           u"instance '%1' of type '%2' lies at %3, as '%4' of type '%5' does",
                                           {},
                                           "address"_L1},
                                          false};
inline constexpr LintRule instanceUnaligned = {
    {"instance-unaligned"_L1, Severity::Warning,
     u"instance '%1' lies at %2, which is no multiple of %3 as the alignment of its type '%4' asks for",
     u"check the address", "address"_L1}};
inline constexpr LintRule instanceBeyondMemory = {
    {"instance-beyond-memory"_L1,
     Severity::Warning,
     u"instance '%1' at %2 takes %3 bytes, which is %4 beyond the last 32-bit address",
     {},
     "address"_L1}};
inline constexpr LintRule instanceNameTwice = {
    {"instance-name-twice"_L1, Severity::Warning,
     u"instance '%1' at %2 shares its name in paths or headers with '%3' at %4"}};

// Structures: a member, then the path of its structure.

inline constexpr LintRule memberNameTwice = {
    {"member-name-twice"_L1, Severity::Warning, u"member '%1' of '%2' has the name of a member further up"}};
inline constexpr LintRule negativeSize = {{"negative-size"_L1,
                                           Severity::Error,
                                           u"%1 of '%2' has a size of %3 %4: what follows lies in front of it",
                                           {},
                                           "size"_L1}};
inline constexpr LintRule holeBits = {
    {"hole-bits"_L1,
     Severity::Warning,
     u"hole of %1 bits in '%2' is no whole number of bytes: it takes %3, and the rest is lost",
     {},
     "size"_L1}};
inline constexpr LintRule layoutDiffers = {
    {"layout-differs"_L1, Severity::Warning, u"member '%1' of '%2' lies at offset %3, but C places it at %4",
     u"fill the gap with a <hole>, or give the structure ckeywords that pack it"}};
inline constexpr LintRule sizeDiffers = {{"size-differs"_L1, Severity::Warning,
                                          u"structure '%1' takes %2 bytes, but %3 in C",
                                          u"fill the end or the gap with a <hole> so that both agree"}};
inline constexpr LintRule moduleTypeName = {
    {"module-type-name"_L1, Severity::Warning,
     u"%1 '%2' has the C type %3, which no header defines: module '%4' is called %5 there",
     u"make a typedef of the module"}};
inline constexpr LintRule pointerTypeUnknown = {
    {"pointer-type-unknown"_L1, Severity::Warning, u"pointer '%1' points to type '%2', which does not exist"}};
inline constexpr LintRule unusedType = {
    {"unused-type"_L1, Severity::Note, u"type '%1' is used by no instance, member or pointer"}, false};
inline constexpr LintRule unusedVariable = {
    {"unused-variable"_L1, Severity::Note, u"variable '%1' is used by no expression, text or C code"}, false};
inline constexpr LintRule unusedEnum = {
    {"unused-enum"_L1, Severity::Note, u"enum '%1' and its entries are used by no field, member or expression"}, false};
inline constexpr LintRule unusedFile = {
    {"unused-file"_L1, Severity::Note, u"file '%1' is included, but no other file uses what it declares"}, false};

// Names in headers.

inline constexpr LintRule macroNameTwice = {{"macro-name-twice"_L1, Severity::Warning,
                                             u"headers leave out %1 of type '%2', whose names stand for other values "
                                             u"further up; the first is %3 of '%4', taken by '%5'",
                                             u"rename the fields, such as with the name of the register in front"}};
inline constexpr LintRule macroOfTwoTypes = {
    {"macro-of-two-types"_L1, Severity::Warning, u"macro %1 is defined for '%2' and for '%3', with different values"}};
inline constexpr LintRule variableNameTwice = {
    {"variable-name-twice"_L1, Severity::Warning, u"headers define '%1' as %2 here, and in %3 as %4"}};
inline constexpr LintRule variableLikeMacro = {
    {"variable-like-macro"_L1, Severity::Warning, u"variable '%1' has the name of a macro of %2"}};
inline constexpr LintRule memberLikeMacro = {
    {"member-like-macro"_L1, Severity::Warning, u"member '%1' of '%2' has the name of a macro, of %3"}};
inline constexpr LintRule typeNameTwice = {
    {"type-name-twice"_L1, Severity::Warning, u"type '%1' has the name of type '%2' of %3 in headers"}};
inline constexpr LintRule typeSuffixTwice = {
    {"type-suffix-twice"_L1, Severity::Warning, u"type '%1' is called %2 in headers", u"leave the _t out"}};
inline constexpr LintRule guardTwice = {
    {"guard-twice"_L1, Severity::Warning,
     u"the headers of '%1' and '%2' have one include guard, %3: where both are included, one is left out",
     u"rename one of the files"}};
inline constexpr LintRule assemblyMissing = {
    {"assembly-missing"_L1, Severity::Warning,
     u"the assembly header of '%1' includes '%2', which is not written: asm is \"no\" there"}};
inline constexpr LintRule registerNamedBase = {
    {"register-named-base"_L1, Severity::Warning,
     u"register '%1' has the assembly macro _%2 of an instance's base address"}};

// Includes.

inline constexpr LintRule fileTwice = {{"file-twice"_L1, Severity::Warning,
                                        u"file '%1' is read twice, as '%2' and '%3': what it declares is there twice"}};
inline constexpr LintRule conditionNever = {
    {"condition-never"_L1, Severity::Warning, u"condition '%1' never holds: '%2' is never included"}};

} // namespace veldmap::lint

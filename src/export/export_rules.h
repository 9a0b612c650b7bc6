#pragma once

#include "findings/rule.h"

/// What other formats can't say of a description. Each of these is told with the place of the element that it is about;
/// nothing is left out without one.
namespace veldmap::rules {

using namespace Qt::StringLiterals;

// of names
inline constexpr Rule exportNameChanged = {"export-name-changed"_L1, Severity::Warning,
                                           u"'%1' is no name in %2 and is written as '%3'."};
inline constexpr Rule exportNameTwice = {"export-name-twice"_L1, Severity::Warning,
                                         u"'%1' stands here a second time, which %2 does not take; it is written as "
                                         "'%3'."};

// of blocks
inline constexpr Rule exportNothing = {"export-nothing"_L1, Severity::Error,
                                       u"%1 has no instances and no modules: there is nothing to export."};
inline constexpr Rule exportWithoutInstances = {
    "export-without-instances"_L1, Severity::Note,
    u"%1 has no instances; each of its modules is written as if it were one at address 0."};
inline constexpr Rule exportEmptyBlock = {"export-empty-block"_L1, Severity::Warning,
                                          u"'%1' takes no room and is left out: %2 wants some of each block."};
inline constexpr Rule exportSameAddresses = {"export-same-addresses"_L1, Severity::Warning,
                                             u"'%1' lies where '%2' does; %3."};
inline constexpr Rule exportOtherBus = {"export-other-bus"_L1, Severity::Warning,
                                        u"'%1' is reached through another bus than the memory's, which %2 can't say; "
                                        "%3."};
inline constexpr Rule exportValuesOnly = {
    "export-values-only"_L1, Severity::Note,
    u"%1 has no place for %2; what they make of registers and fields is written."};

inline constexpr Rule exportInterrupt = {
    "export-interrupt"_L1, Severity::Warning,
    u"The interrupt '%1' begins with no instance's name; in %2 it is one of '%3'."};

// of members
inline constexpr Rule exportMemoryInside = {"export-memory-inside"_L1, Severity::Warning,
                                            u"The memory '%1' lies inside a block, where %2 has no place for it; it is "
                                            "left out."};
inline constexpr Rule exportMemoryName = {"export-memory-name"_L1, Severity::Warning,
                                          u"The memory '%1' has no name in %2; where it lies is written."};
inline constexpr Rule exportEmptyArray = {"export-empty-array"_L1, Severity::Warning,
                                          u"The array '%1' has no members and is left out."};
inline constexpr Rule exportEmptyGroup = {"export-empty-group"_L1, Severity::Warning,
                                          u"The structure '%1' has nothing in it that %2 could say and is left out."};
inline constexpr Rule exportPointer = {"export-pointer"_L1, Severity::Warning,
                                       u"%1 can't say what the pointer '%2' leads to, a '%3'; a number is written."};
inline constexpr Rule exportSigned = {"export-signed"_L1, Severity::Warning,
                                      u"%1 can't say that '%2' is signed; it is written as a register."};
inline constexpr Rule exportHalfNames = {"export-half-names"_L1, Severity::Warning,
                                         u"%1 has no names for the halves of '%2'; they are left out."};
inline constexpr Rule exportBitGroup = {"export-bit-group"_L1, Severity::Warning,
                                        u"%1 can't say that fields belong together as '%2'; only the fields are "
                                        "written."};
inline constexpr Rule exportNoAccess = {"export-no-access"_L1, Severity::Warning,
                                        u"%1 has no word for '%2', which can be neither read nor written; it is left "
                                        "out."};
inline constexpr Rule exportWholeField = {"export-whole-field"_L1, Severity::Note,
                                          u"'%1' has no fields, which %2 does not take; it gets one, '%3', of all its "
                                          "bits."};

// of fields
inline constexpr Rule exportFieldOutside = {"export-field-outside"_L1, Severity::Warning,
                                            u"'%1' has no bit inside its register and is left out."};
inline constexpr Rule exportFieldCut = {"export-field-cut"_L1, Severity::Warning,
                                        u"'%1' leads out of its register; the bits inside are written."};
inline constexpr Rule exportFieldOverlap = {"export-field-overlap"_L1, Severity::Warning,
                                            u"'%1' has bits of '%2', which %3 does not take; it is left out."};
inline constexpr Rule exportOptionOutside = {"export-option-outside"_L1, Severity::Warning,
                                             u"The value %1 of the option '%2' does not fit into its field; it is left "
                                             "out."};
inline constexpr Rule exportOptionTwice = {"export-option-twice"_L1, Severity::Warning,
                                           u"The option '%1' has the value of '%2', which %3 does not take; it is left "
                                           "out."};

} // namespace veldmap::rules

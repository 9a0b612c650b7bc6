#pragma once

#include "findings/rule.h"

/// What can be wrong with a path, or with a value that is to be stored at one.
namespace veldmap::access_rules {

using namespace Qt::StringLiterals;

inline constexpr Rule kNoElement = {"no-element"_L1, Severity::Error, u"No element has the path %1."};
inline constexpr Rule kNoPath = {"no-path"_L1, Severity::Error,
                                 u"No element has the path %1; a path begins with '$' and the name of an instance."};
inline constexpr Rule kPathEnds = {"path-ends"_L1, Severity::Error,
                                   u"No element has the path %1; it leads as far as %2."};

inline constexpr Rule kNoValue = {
    "no-value-of-its-own"_L1, Severity::Error,
    u"%1 can't be written: it has no value of its own; name a register, an integer or a field in it."};
inline constexpr Rule kNotInImage = {"not-in-image"_L1, Severity::Error,
                                     u"%1 can't be written: it does not lie in %2."};
inline constexpr Rule kNotWritable = {"not-writable"_L1, Severity::Error,
                                      u"%1 can't be written: it is not writable; --force writes it all the same."};
inline constexpr Rule kNoNumber = {"no-number"_L1, Severity::Error, u"%1 can't be written: '%2' is no number."};
inline constexpr Rule kNoNumberOrOption = {"no-number-or-option"_L1, Severity::Error,
                                           u"%1 can't be written: '%2' is neither a number nor one of its options."};
inline constexpr Rule kTooWide = {"value-too-wide"_L1, Severity::Error,
                                  u"%1 can't be written: %2 does not fit into %3 bits."};
inline constexpr Rule kTooWideForField = {"value-too-wide-for-field"_L1, Severity::Error,
                                          u"%1 can't be written: %2 does not fit into bits %3 to %4 of %5 bits."};
inline constexpr Rule kOnlySets = {"only-sets"_L1, Severity::Error,
                                   u"%1 can't be written: it takes no value but 1, which sets it."};
inline constexpr Rule kOnlyClears = {"only-clears"_L1, Severity::Error,
                                     u"%1 can't be written: it takes no value but 1, which clears it."};

inline constexpr Rule kNotRead = {"not-read"_L1, Severity::Error, u"%1 can't be read: %2."};
inline constexpr Rule kNotWritten = {"not-written"_L1, Severity::Error, u"%1 can't be written: %2."};
inline constexpr Rule kRestUnknown = {
    "rest-unknown"_L1, Severity::Error,
    u"%1 can't be written: its register can't be read, so what stands beside it is not known; write the register."};
inline constexpr Rule kNotReadBack = {"not-read-back"_L1, Severity::Error,
                                      u"%1 was written, but can't be read back: %2."};
inline constexpr Rule kDidNotStick = {"did-not-stick"_L1, Severity::Error,
                                      u"%1 did not take what was written: %2 reads back as %3."};
inline constexpr Rule kNotFlushed = {"not-flushed"_L1, Severity::Error, u"%1"};

} // namespace veldmap::access_rules

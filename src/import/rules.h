#pragma once

#include "findings/rule.h"

/// What an import has to say: what it can't read, and what a description can't say. Their first argument is the path of
/// the element in the source.
namespace veldmap::rules {

using namespace Qt::StringLiterals;

// The file

inline constexpr Rule importUnknownFormat = {"import-format"_L1, Severity::Error,
                                             u"'%1' is no format that descriptions are made of: the root is to be %2."};
inline constexpr Rule importEmpty = {"import-empty"_L1, Severity::Error,
                                     u"%1: it has no %2, so nothing is made of it."};
inline constexpr Rule importNumber = {"import-number"_L1, Severity::Error, u"%1: %2 is '%3', which is no number%4."};
inline constexpr Rule importNoNumber = {"import-no-number"_L1, Severity::Error, u"%1: it has no %2."};
inline constexpr Rule importCycle = {"import-cycle"_L1, Severity::Error,
                                     u"%1: it is derived from '%2', which is derived from it."};
inline constexpr Rule importTooMany = {"import-too-many"_L1, Severity::Error,
                                       u"%1: with it the file has more than %2 registers, fields and values."};
inline constexpr Rule importTooMuch = {"import-too-much"_L1, Severity::Error, u"%1: %2 is %3, and may be %4 at most."};
inline constexpr Rule importNoBase = {"import-no-base"_L1, Severity::Warning,
                                      u"%1: it is derived from '%2', which is not there."};
inline constexpr Rule importDimIndex = {"import-dim-index"_L1, Severity::Warning,
                                        u"%1: its index '%2' does not name %3 of them; they are counted from 0."};

// What is changed

inline constexpr Rule importName = {"import-name"_L1, Severity::Note, u"%1: it is called '%2'.",
                                    u"names consist of letters, digits and underscores, and are those of one thing"};
inline constexpr Rule importPrefix = {"import-prefix"_L1, Severity::Note,
                                      u"%1: the names of its registers begin with '%2', which they lose."};
inline constexpr Rule importSameType = {"import-same-type"_L1, Severity::Note,
                                        u"%1: its registers are those of '%2', so it is an instance of the same type."};
inline constexpr Rule importGathered = {"import-gathered"_L1, Severity::Note,
                                        u"%1: it and %2 more of equal make are the array '%3'."};
inline constexpr Rule importCut = {"import-cut"_L1, Severity::Note,
                                   u"%1: it and %2 more fields of equal make are the field '%3', cut into pieces."};
inline constexpr Rule importInterleaved = {"import-interleaved"_L1, Severity::Note,
                                           u"%1: with what lies between its members it is the structure '%2'."};
inline constexpr Rule importTakenApart = {"import-taken-apart"_L1, Severity::Note,
                                          u"%1: other things lie between its members, so each stands for itself."};
inline constexpr Rule importView = {"import-view"_L1, Severity::Note,
                                    u"%1: it lies over '%2', so it stands in a type of its own, '%3'."};
inline constexpr Rule importHalves = {"import-halves"_L1, Severity::Note,
                                      u"%1: it has %2 bits and becomes registers of 32 bits, the lower one first."};
inline constexpr Rule importWholeField = {
    "import-whole-field"_L1, Severity::Note,
    u"%1: it has no fields; one over all its bits says its reset value and what writing does."};
inline constexpr Rule importSharedComments = {
    "import-shared-comments"_L1, Severity::Note,
    u"%1: its values share the enum '%2', and what it says of single values is left out."};

// What is approximated

inline constexpr Rule importSize = {"import-size"_L1, Severity::Warning, u"%1: it has %2 bits and becomes one of %3."};
inline constexpr Rule importAccess = {"import-access"_L1, Severity::Warning,
                                      u"%1: its access is '%2', of which '%3' is left."};
inline constexpr Rule importOnWrite = {"import-on-write"_L1, Severity::Warning,
                                       u"%1: what writing does is '%2', of which '%3' is left."};
inline constexpr Rule importPartlyReset = {"import-partly-reset"_L1, Severity::Warning,
                                           u"%1: only some of its bits are known after a reset, so none is."};
inline constexpr Rule importDontCare = {"import-dont-care"_L1, Severity::Warning,
                                        u"%1: it stands for several values, of which it keeps the lowest, %2."};
inline constexpr Rule importDefault = {"import-default-value"_L1, Severity::Warning,
                                       u"%1: it stands for all other values, which the field's comment tells."};

// What is left out

inline constexpr Rule importOnRead = {"import-on-read"_L1, Severity::Warning,
                                      u"%1: that reading it does something, '%2', is left out."};
inline constexpr Rule importWriteValues = {
    "import-write-values"_L1, Severity::Warning,
    u"%1: its values for writing are left out: those for reading have the same numbers."};
inline constexpr Rule importLeftOut = {"import-left-out"_L1, Severity::Note,
                                       u"%1: a description has no place for its '%2'."};
inline constexpr Rule importNoRegisters = {"import-no-registers"_L1, Severity::Warning,
                                           u"%1: it has no registers and is left out."};
inline constexpr Rule importUnaligned = {
    "import-unaligned"_L1, Severity::Warning,
    u"%1: it lies at offset %2, which is no multiple of its size, and is left out."};
inline constexpr Rule importBeyond = {"import-beyond"_L1, Severity::Warning, u"%1: it lies beyond %2 and is left out."};
inline constexpr Rule importTwice = {"import-twice"_L1, Severity::Warning,
                                     u"%1: another one of this name stands in front of it."};

inline constexpr Rule importNotPresent = {"import-not-present"_L1, Severity::Note,
                                          u"%1: its isPresent says that it is not there, so it is left out."};
inline constexpr Rule importFlattened = {"import-flattened"_L1, Severity::Note,
                                         u"%1: it is an array of arrays, whose members are counted as one row."};

// What a person added

inline constexpr Rule importLostAddition = {"import-lost-addition"_L1, Severity::Warning,
                                            u"What stood at '%1' has no place any more: %2"};

inline constexpr Rule importLostFile = {"import-lost-file"_L1, Severity::Warning,
                                        u"'%1' is no part of the description any more."};

} // namespace veldmap::rules

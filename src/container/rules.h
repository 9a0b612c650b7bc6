#pragma once

#include "findings/rule.h"

/// What can be wrong with a container, and with writing one.
namespace veldmap::rules {

using namespace Qt::StringLiterals;

inline constexpr Rule containerTooShort = {"container-too-short"_L1, Severity::Error,
                                           u"The container ends within its header of %1 bytes."};
inline constexpr Rule containerUneven = {"container-uneven"_L1, Severity::Error,
                                         u"The container holds %1 enciphered bytes, which is no multiple of %2."};
inline constexpr Rule containerLength = {"container-length"_L1, Severity::Error,
                                         u"The container holds %1 enciphered bytes, but claims a document of %2."};
inline constexpr Rule containerDamaged = {"container-damaged"_L1, Severity::Error,
                                          u"The container is damaged, or was written with another key."};
inline constexpr Rule sourceNotOpened = {"source-not-opened"_L1, Severity::Error, u"Unable to open file %1"};
inline constexpr Rule sourceNotRead = {"source-not-read"_L1, Severity::Error, u"%1 can't be read: %2"};
inline constexpr Rule sourceTooLarge = {"source-too-large"_L1, Severity::Error, u"The file is larger than %1 bytes."};
inline constexpr Rule sourceIsDestination = {"source-is-destination"_L1, Severity::Error,
                                             u"The source %1 and the destination %2 are the same file."};
inline constexpr Rule destinationNotWritten = {"destination-not-written"_L1, Severity::Error,
                                               u"%1 can't be written: %2"};

} // namespace veldmap::rules

#pragma once

#include "findings/rule.h"

/// What is told of the files of an output.
namespace veldmap::output_rules {

using namespace Qt::StringLiterals;

inline constexpr Rule kOutside = {"outside-directory"_L1, Severity::Warning,
                                  u"%1 lies outside %2, as its description lies outside the directory of the root."};
inline constexpr Rule kOverwritten = {"page-overwritten"_L1, Severity::Warning,
                                      u"%1 shows the last of several instances of that name."};
inline constexpr Rule kMissing = {"site-incomplete"_L1, Severity::Error, u"%1 is not complete, since %2 lacks: %3"};
inline constexpr Rule kFailed = {"file-unwritable"_L1, Severity::Error, u"%1 can't be written: %2"};
inline constexpr Rule kBeyond = {"output-too-large"_L1, Severity::Error,
                                 u"%1 and %2 files behind it are not written, since it would be more than %3 bytes in "
                                 "all; --max-output SIZE allows more."};
inline constexpr Rule kUnreached = {"pages-unreached"_L1, Severity::Error, u"The pages behind it are not written: %1"};

} // namespace veldmap::output_rules

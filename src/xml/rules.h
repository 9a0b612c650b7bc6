#pragma once

#include "findings/rule.h"

/// What is wrong with a document before its tags are looked at.
namespace veldmap::rules {

using namespace Qt::StringLiterals;

inline constexpr Rule notWellFormed = {"not-well-formed"_L1, Severity::Error, u"%1"};
inline constexpr Rule tagsTooDeep = {"tags-too-deep"_L1, Severity::Error, u"Tags are nested more than %1 deep."};
inline constexpr Rule tooManyAttributes = {"too-many-attributes"_L1, Severity::Error,
                                           u"A tag has more than %1 attributes."};
inline constexpr Rule entitiesTooLarge = {"entities-too-large"_L1, Severity::Error,
                                          u"The entities of the document grow beyond %1 characters."};

} // namespace veldmap::rules

#pragma once

#include <QLatin1StringView>
#include <QStringView>

namespace veldmap {

/// How grave a finding is. A note only tells what happens.
enum class Severity { Note, Warning, Error };

/// One kind of finding. Each room keeps its rules as rows of one table, so that the words of every message stand in one
/// place; a finding points to its row.
struct Rule {
    QLatin1StringView id; ///< lower case with hyphens, unique in the program
    Severity severity;
    QStringView words;     ///< with %1 to %9 for the arguments, which are numbered from 1 without gaps
    QStringView hint = {}; ///< what to do about it, where the words leave that open; a clause without a full stop
    QLatin1StringView attribute = {}; ///< whose value is wrong, where the arguments do not show it
};

} // namespace veldmap

#pragma once

namespace veldmap::cli {

/// Sees to it that the process leaves no unfinished file behind, whatever ends it: a signal that asks it to end removes
/// what was begun, a file that may not grow further is an error like any, and where memory runs out the process says so
/// and ends with status 1.
void prepareForEndings();

} // namespace veldmap::cli

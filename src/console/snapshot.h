#pragma once

#include <QString>

#include <optional>
#include <vector>

class VMValuable;

namespace veldmap {

class ConsoleState;

// A snapshot is a text that people read and compare:
//
//     # values of gdb:localhost:1234
//     $UART0.CTRL = 0x00000003
//     $UART0.STATE = ?
//
// A "?" stands where a register could not be read.

/// A line of a snapshot.
struct SavedValue {
    VMValuable *valuable;         ///< not owned
    std::optional<quint32> value; ///< nothing for one that could not be read
};

/// The values that the file \a path has. Nothing, told, when it can't be read, or a line is none of a snapshot of this
/// description.
std::optional<std::vector<SavedValue>> readSnapshot(ConsoleState &state, const QString &path);
/// Writes \a values to the file \a path; false, told, when that fails.
bool writeSnapshot(ConsoleState &state, const QString &path, const std::vector<SavedValue> &values);

} // namespace veldmap

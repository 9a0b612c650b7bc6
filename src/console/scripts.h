#pragma once

#include <QString>

namespace veldmap {

class ConsoleState;
struct Place;

/// Runs one line, whose findings stand at \a place. False when it failed.
bool runLine(ConsoleState &state, const QString &line, const Place &place);
/// Runs the lines of \a text, whose findings stand in \a file. False when one failed, which ends it unless it
/// \a keepsGoing. It ends too where the user asks for that, and behind "quit".
bool runLines(ConsoleState &state, const QString &text, const QString &file, bool keepsGoing);
/// Runs the lines of the file \a path up to the first that fails.
bool runFile(ConsoleState &state, const QString &path);

} // namespace veldmap

#pragma once

#include <QString>

/// Everything that the program tells its user beside its results, on the standard error.
namespace veldmap::cli {

/// How much is told: errors only, warnings too, or the log as well.
enum class Verbosity { Quiet, Normal, Verbose };
void setVerbosity(Verbosity verbosity);

// The callbacks of a load. A message "FILE:LINE:COLUMN:TEXT" is printed as compilers do, "FILE:LINE:COLUMN: error:
// TEXT"; one without a place as "error: TEXT".
void onLog(const char *text);
void onError(const char *text);
void onWarning(const char *text);

void printError(const QString &text);
void printWarning(const QString &text);
/// How many errors were told so far.
int errorCount();

/// Shows \a text as the state of a long job in one line of a terminal, which the next message or clearProgress() takes
/// away. Elsewhere, and in a short job, nothing is shown.
void showProgress(const QString &text);
void clearProgress();

/// Writes \a text to the standard output; false, with an error told, when it can't be written.
[[nodiscard]] bool printResult(const QString &text);
[[nodiscard]] bool printResult(const QByteArray &text);

} // namespace veldmap::cli

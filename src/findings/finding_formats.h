#pragma once

#include "findings/finding.h"

#include <memory>

namespace veldmap {

/// A text of findings for programs, which is written as they come: a beginning, a piece for each, and an end.
class FindingFormat {
public:
    virtual ~FindingFormat() = default;
    virtual QByteArray begin() const = 0;
    /// The piece of \a finding, which counts as \a severity and says \a text.
    virtual QByteArray piece(const Finding &finding, Severity severity, const QString &text) = 0;
    virtual QByteArray end() const = 0;
};

/// A JSON list with an object a line: {"rule", "severity", "file", "line", "column", "text"}, and where there is such
/// "hint", "note" and "related", a list of {"file", "line", "column", "text"} with the tags that include the file last.
/// Without a place the file is empty, line and column are 0.
VELDMAP_EXPORT std::unique_ptr<FindingFormat> jsonOfFindings();

/// The static analysis results interchange format, version 2.1.0, with one run of the tool veldmap of that \a version.
/// The names of files are relative to \a directory where they lie below it.
VELDMAP_EXPORT std::unique_ptr<FindingFormat> sarifOfFindings(const QString &version, const QString &directory);

} // namespace veldmap

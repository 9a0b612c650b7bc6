#include "cli/headers.h"

#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "headers/header_files.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// Writes the headers of one root; false when a file could not be written.
bool writeHeaders(Session &session, const QString &directory, bool chip)
{
    if (!QDir().mkpath(directory)) {
        session.messages.tell(rules::kNoDirectory, {directory});
        return false;
    }
    const GenerationReport report = writeCHeaders(session.map, directory, chip, HeaderTrace::None, [&](const QString &file) {
        session.messages.showProgress(u"Writing %1..."_s.arg(file));
    });
    session.messages.clearProgress();
    for (const QString &file : report.outside)
        session.messages.tell(rules::kOutside, {file, directory});
    for (const FailedFile &file : report.failed)
        session.messages.tell(rules::kNotWritten, {file.path, file.reason});
    return report.failed.isEmpty();
}

} // namespace

bool writeAllHeaders(Session &session, const QString &directory)
{
    return writeEachRoot(session.map, directory,
                         [&session](const QString &ofRoot, bool chip) { return writeHeaders(session, ofRoot, chip); });
}

ExitStatus headers(const Options &options, Session &session)
{
    session.map.skipUpToDate = options.skipUpToDate;
    if (!loadDescriptions(options, session))
        return kFailed;
    return writeAllHeaders(session, options.outputDirectory) ? kDone : kFailed;
}

} // namespace veldmap::cli

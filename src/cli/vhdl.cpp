#include "cli/vhdl.h"

#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "vhdl/packages.h"

#include <QDir>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

bool requireChip(const Options &options, Messages &messages)
{
    if (options.chip.isEmpty())
        messages.tell(rules::kNoChip);
    return !options.chip.isEmpty();
}

bool writePackages(Session &session, const QString &directory)
{
    if (!QDir().mkpath(directory)) {
        session.messages.tell(rules::kNoDirectory, {directory});
        return false;
    }
    const VhdlReport report = writeVhdlPackages(session.map, directory, [&](const QString &file) {
        session.messages.showProgress(u"Writing %1..."_s.arg(file));
    });
    session.messages.clearProgress();
    for (const Finding &finding : report.findings)
        session.messages.take(finding);
    for (const FailedFile &file : report.failed)
        session.messages.tell(rules::kNotWritten, {file.path, file.reason});
    return report.failed.isEmpty();
}

ExitStatus vhdl(const Options &options, Session &session)
{
    if (!requireChip(options, session.messages))
        return kWrongUsage;
    if (!loadDescriptions(options, session))
        return kFailed;
    return writePackages(session, options.outputDirectory) ? kDone : kFailed;
}

} // namespace veldmap::cli

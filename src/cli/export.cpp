#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "export/export_findings.h"
#include "export/exports.h"
#include "files/file_writer.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

ExitStatus listFormats(Messages &messages)
{
    constexpr qsizetype kNameWidth = 11;
    QString lines;
    for (const ExportFormat &format : exportFormats())
        lines += QString(format.name).leftJustified(kNameWidth) + format.what + u'\n';
    return printResult(lines, messages) ? kDone : kFailed;
}

QString formatNames()
{
    QStringList names;
    for (const ExportFormat &format : exportFormats())
        names += format.name;
    return names.join(", "_L1);
}

void tell(const ExportFindings &findings, qsizetype most, Messages &messages)
{
    qsizetype hidden = 0;
    for (const ExportFindings::Told &told : findings.told(most)) {
        messages.takeLint(told.finding, 0);
        hidden += told.more;
    }
    if (hidden > 0)
        messages.tellNote(rules::kMoreOfAKind, {QString::number(hidden)});
}

bool writeText(const QByteArray &text, const QString &file, Messages &messages)
{
    if (file == "-"_L1)
        return printResult(text, messages);
    removeLeftovers(QFileInfo(file).path());
    const WriteResult result = writeWholeFile(file, text, {.keepsSame = true});
    if (result.outcome == WriteResult::Failed)
        messages.tell(rules::kExportUnwritten, {file, result.reason});
    return result.outcome != WriteResult::Failed;
}

} // namespace

ExitStatus exportMap(const Options &options, Session &session)
{
    Messages &messages = session.messages;
    if (options.list)
        return listFormats(messages);
    const ExportFormat *format = findExportFormat(options.exportFormat);
    if (!format) {
        messages.tell(rules::kNoExportFormat, {formatNames()});
        return kWrongUsage;
    }
    if (!options.hasRoot()) {
        messages.tell(rules::kNoRoot);
        return kWrongUsage;
    }
    if (!loadDescriptions(options, session))
        return kFailed;
    ExportFindings findings;
    const QByteArray text = format->text(session.map, findings);
    tell(findings, options.mostOfAKind, messages);
    if (findings.hasError())
        return kFailed;
    return writeText(text, options.outputFile, messages) ? kDone : kFailed;
}

} // namespace veldmap::cli

#include "cli/commands.h"
#include "cli/description.h"
#include "cli/element_text.h"
#include "cli/messages.h"
#include "cli/tree_json.h"
#include "text/lines.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

using namespace Qt::StringLiterals;

// The tree as an engineer reads it:
//
//     chip soc
//       file periph/uart.xml: UART
//         UART_NB_CHAN = 2
//         type uart, 20 bytes
//       UART0                             0x40034000 uart
//         ctrl                            0x40034000 Reg32 rw
//           speed                         3:1        rw reset 0

namespace veldmap::cli {

namespace {

QString margin(int level)
{
    return QString(2 * level, u' ');
}

void appendVariable(const VMIntVar &variable, int level, QString &text)
{
    const QString right = variable.isRange ? " .. "_L1 + QString::number(variable.rightValue) : QString();
    const bool isPlain = variable.leftExpression == QString::number(variable.leftValue);
    text += lineOf(margin(level), variable.name, " = "_L1, variable.leftValue, right,
                   isPlain || variable.isRange ? QString() : " ("_L1 + variable.leftExpression + u')');
}

void appendArchive(const VMXMLArchive &archive, QString &text)
{
    text += lineOf(margin(1), "file "_L1, archive.relativeFileName, archive.archiveComment.isEmpty() ? ""_L1 : ": "_L1,
                   archive.archiveComment);
    for (const VMIntVar &variable : *archive.variables) {
        if (!variable.leftExpression.isEmpty())
            appendVariable(variable, 2, text);
    }
    for (const auto &element : archive.templates)
        text += lineOf(margin(2), "type "_L1, element->typedefName, ", "_L1, element->sizeOf(), " bytes"_L1);
}

void appendRoot(const VMRootArchive *root, QLatin1StringView word, QString &text)
{
    if (!root)
        return;
    text += lineOf(word, u" ", root->getName());
    for (const VMXMLArchive *archive : root->xmlArchives)
        appendArchive(*archive, text);
    for (const auto &instance : root->instances)
        appendElement(text, *instance, instance->getName(), 1, kAllLevels, OptionNotes());
}

QString readableTree(const VMMemoryMap &map)
{
    QString text;
    for (const VMIntVar &variable : *map.globalVariables)
        appendVariable(variable, 0, text);
    appendRoot(map.chipRootArchive, "chip"_L1, text);
    appendRoot(map.softRootArchive, "soft"_L1, text);
    return text;
}

} // namespace

ExitStatus tree(const Options &options)
{
    VMMemoryMap &map = processMemoryMap();
    if (!loadDescriptions(options, map))
        return kFailed;
    const bool printed = options.json ? printResult(jsonOf(map) + '\n') : printResult(readableTree(map));
    return printed ? kDone : kFailed;
}

} // namespace veldmap::cli

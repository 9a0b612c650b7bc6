#include "access/completion.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/messages.h"
#include "model/memory_map.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// \a text without the characters that separate candidates and their columns.
QString inOneCell(QString text)
{
    return text.replace(u'\t', u' ').replace(u'\n', u' ');
}

QString lineOfEntry(const CXMLCompletionEntry &entry)
{
    return QStringList{inOneCell(entry.name), entry.arguments, entry.result, inOneCell(entry.help)}.join(u'\t') + u'\n';
}

QJsonObject jsonOfEntry(const CXMLCompletionEntry &entry)
{
    return {{u"name"_s, entry.name},
            {u"arguments"_s, entry.arguments},
            {u"result"_s, entry.result},
            {u"help"_s, entry.help},
            {u"type"_s, static_cast<int>(entry.type)}};
}

} // namespace

ExitStatus complete(const Options &options)
{
    VMMemoryMap &map = processMemoryMap();
    if (!loadDescriptions(options, map))
        return kFailed;
    QString lines;
    QJsonArray objects;
    for (const CXMLCompletionEntry &entry : map.getCompletionListFromPath(options.words.first())) {
        lines += lineOfEntry(entry);
        objects.append(jsonOfEntry(entry));
    }
    return printResult(options.json ? QString::fromUtf8(QJsonDocument(objects).toJson()) : lines) ? kDone : kFailed;
}

} // namespace veldmap::cli

#include "access/completion.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/session.h"

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

ExitStatus complete(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session))
        return kFailed;
    QString lines;
    QJsonArray objects;
    for (const CXMLCompletionEntry &entry : session.map.getCompletionListFromPath(options.words.first())) {
        lines += lineOfEntry(entry);
        objects.append(jsonOfEntry(entry));
    }
    const QByteArray text = options.json ? QJsonDocument(objects).toJson() : lines.toUtf8();
    return printResult(text, session.messages) ? kDone : kFailed;
}

} // namespace veldmap::cli

#include "access/completion.h"
#include "access/path_hint.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/result.h"
#include "cli/session.h"

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

/// Says why nothing can stand behind the path in \a text, where findings are explained: elsewhere an empty list says
/// all.
void tellWrongPath(Session &session, const QString &text)
{
    if (!session.messages.showsExplanations())
        return;
    const qsizetype dot = text.lastIndexOf(u'.');
    FindingList told;
    if (findElement(session.map, dot < 0 ? text : text.first(dot), told))
        return;
    for (const Finding &finding : std::as_const(told.findings))
        session.messages.tellAsNote(finding);
}

} // namespace

ExitStatus complete(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session))
        return kFailed;
    Result result(options.output.mostBytes, session.messages);
    ResultList list(result);
    const auto entries = session.map.getCompletionListFromPath(options.words.first());
    if (entries.isEmpty())
        tellWrongPath(session, options.words.first());
    for (const CXMLCompletionEntry &entry : entries) {
        if (!(options.json ? list.append(jsonOfEntry(entry)) : result.print(lineOfEntry(entry))))
            break;
    }
    if (options.json)
        list.finish();
    return result.finish() ? kDone : kFailed;
}

} // namespace veldmap::cli

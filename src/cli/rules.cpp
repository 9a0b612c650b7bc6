#include "check/lint.h"
#include "cli/commands.h"
#include "cli/session.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

ExitStatus listRules(const Options &options, Session &session)
{
    constexpr qsizetype kIdWidth = 28;
    QString lines;
    QJsonArray objects;
    for (const LintRule *row : lintRules()) {
        const QString id = row->rule.id;
        const QString severity = wordOf(row->rule.severity);
        const QString words = wordsWithoutArguments(row->rule);
        lines += id.leftJustified(kIdWidth) + u' ' + severity.leftJustified(8) + (row->isOn ? "on   "_L1 : "off  "_L1) +
                 words + u'\n';
        objects.append(QJsonObject{{u"id"_s, id}, {u"severity"_s, severity}, {u"on"_s, row->isOn}, {u"text"_s, words}});
    }
    const QByteArray text = options.json ? QJsonDocument(objects).toJson() : lines.toUtf8();
    return printResult(text, session.messages) ? kDone : kFailed;
}

} // namespace veldmap::cli

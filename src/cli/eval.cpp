#include "cli/commands.h"
#include "cli/description.h"
#include "cli/session.h"
#include "expression/evaluator.h"
#include "model/archive.h"
#include "model/evaluation_errors.h"
#include "model/root_archive.h"
#include "text/literals.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

QJsonObject jsonOf(const variant::Variant &value)
{
    switch (value.getType()) {
    case variant::Variant::kBool:
        return {{u"type"_s, u"bool"_s}, {u"value"_s, value.getBool() != 0}};
    case variant::Variant::kInt:
        return {{u"type"_s, u"int"_s}, {u"value"_s, value.getInt()}};
    case variant::Variant::kDWord:
        return {{u"type"_s, u"dword"_s}, {u"value"_s, static_cast<qint64>(value.getDWORD())}};
    case variant::Variant::kReal:
        return {{u"type"_s, u"real"_s}, {u"value"_s, value.getReal()}};
    case variant::Variant::kString:
        return {{u"type"_s, u"string"_s}, {u"value"_s, QString::fromUtf8(value.getString())}};
    case variant::Variant::kNull:
    case variant::Variant::kBinary:
    case variant::Variant::kPtr:
        break;
    }
    return {{u"type"_s, u"null"_s}, {u"value"_s, QJsonValue()}};
}

/// Evaluates expressions and gathers their values for printing.
class Evaluation {
public:
    Evaluation(cexev::CExEvCtx &context, Messages &messages) : m_evaluator(&context), m_messages(messages) {}

    void evaluate(const QString &expression)
    {
        variant::Variant value;
        const int error =
            m_evaluator.evalExpression(hexadecimalPreparseExpression(expression).toUtf8().constData(), value);
        if (error != 0) {
            m_messages.take(evaluationError(expression, m_evaluator));
            m_values.append(QJsonObject{{u"error"_s, error}});
            m_complete = false;
            return;
        }
        std::string text;
        value.asString(text);
        m_lines += QString::fromStdString(text) + u'\n';
        m_values.append(jsonOf(value));
    }

    bool print(bool json) const
    {
        return printResult(json ? QJsonDocument(m_values).toJson() : m_lines.toUtf8(), m_messages);
    }

    bool isComplete() const { return m_complete; }

private:
    cexev::CExEv m_evaluator;
    Messages &m_messages;
    QJsonArray m_values;
    QString m_lines;
    bool m_complete = true;
};

} // namespace

ExitStatus eval(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session, InstanceParts::Outlines))
        return kFailed;
    const VMMemoryMap &map = session.map;
    CXMLVarCtx plainContext;
    const VMRootArchive *root = map.chipRootArchive ? map.chipRootArchive : map.softRootArchive;
    ScopeContext scope(root ? *root->xmlArchives.first()->variables : *map.globalVariables);
    Evaluation evaluation(root ? static_cast<cexev::CExEvCtx &>(scope) : plainContext, session.messages);
    for (const QString &expression : options.words)
        evaluation.evaluate(expression);
    const bool printed = evaluation.print(options.json);
    return printed && evaluation.isComplete() ? kDone : kFailed;
}

} // namespace veldmap::cli

#include "cli/commands.h"
#include "cli/description.h"
#include "cli/messages.h"
#include "text/literals.h"
#include "expression/evaluator.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// What an error code of the evaluator means to its user.
QString errorText(int code)
{
    switch (code) {
    case cexev::CExEv::kErrorToken:
        return u"a character or literal that has no meaning here"_s;
    case cexev::CExEv::kErrorMemory:
        return u"out of memory"_s;
    case cexev::CExEv::kErrorIdentifier:
        return u"a name that is not known"_s;
    case cexev::CExEv::kErrorSyntax:
        return u"something stands where it may not stand"_s;
    case cexev::CExEv::kErrorCall:
    case cexev::CExEv::kErrorUnary:
        return u"an operation that these values do not allow"_s;
    case cexev::CExEv::kErrorParenthesis:
        return u"a parenthesis is left open"_s;
    }
    return u"error %1"_s.arg(code);
}

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
    explicit Evaluation(cexev::CExEvCtx &context) : m_evaluator(&context) {}

    void evaluate(const QString &expression)
    {
        variant::Variant value;
        const int error =
            m_evaluator.evalExpression(hexadecimalPreparseExpression(expression).toUtf8().constData(), value);
        if (error != 0) {
            printError(u"'%1' has no value: %2"_s.arg(expression, errorText(error)));
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
        return printResult(json ? QString::fromUtf8(QJsonDocument(m_values).toJson()) : m_lines);
    }

    bool isComplete() const { return m_complete; }

private:
    cexev::CExEv m_evaluator;
    QJsonArray m_values;
    QString m_lines;
    bool m_complete = true;
};

} // namespace

ExitStatus eval(const Options &options)
{
    VMMemoryMap &map = processMemoryMap();
    if (!loadDescriptions(options, map))
        return kFailed;
    CXMLVarCtx plainContext;
    const VMRootArchive *root = map.chipRootArchive ? map.chipRootArchive : map.softRootArchive;
    ScopeContext scope(root ? *root->xmlArchives.first()->variables : *map.globalVariables);
    Evaluation evaluation(root ? static_cast<cexev::CExEvCtx &>(scope) : plainContext);
    for (const QString &expression : options.words)
        evaluation.evaluate(expression);
    const bool printed = evaluation.print(options.json);
    return printed && evaluation.isComplete() ? kDone : kFailed;
}

} // namespace veldmap::cli

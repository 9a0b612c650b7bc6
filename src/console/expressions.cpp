#include "access/path_hint.h"
#include "console/commands.h"
#include "console/console_rules.h"
#include "console/interpreter.h"
#include "expression/evaluator.h"
#include "model/archive.h"
#include "model/evaluation_errors.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/valuable.h"
#include "text/literals.h"
#include "text/names.h"
#include "text/nearest_name.h"

#include <algorithm>

using namespace Qt::StringLiterals;

// The evaluator knows names and numbers. What else a line may have in the place of a value, a path or an operation with
// arguments, is cut out before and stands there as a run of marks of the same length:
//
//     $UART0.ctrl.speed.rl(x)+1
//     #######################+1        a mark is the character 1
//
// The evaluator asks for the values of names in their order, so the runs need no names.

namespace veldmap {

namespace {

constexpr char16_t kMark = 1;
constexpr int kMostLevels = 64; // of arguments in arguments

/// Where the word that begins at \a at of \a text ends that is no path: a number, or a text in quotes.
qsizetype endOfLiteral(QStringView text, qsizetype at)
{
    const QChar first = text[at];
    if (first == u'"' || first == u'\'') {
        for (++at; at < text.size() && text[at] != first; ++at) {
            if (text[at] == u'\\')
                ++at;
        }
        return qMin(at + 1, text.size());
    }
    while (at < text.size() && (isNameCharacter(text[at]) || text[at] == u'.'))
        ++at;
    return at;
}

/// Whether the evaluator takes \a character as a further one of a name.
bool isNamePart(QChar character)
{
    return isNameCharacter(character) || character == kMark || character == u'.' || character == u':' ||
           character == u'?';
}

/// What the names of a line mean: options of a field, values that were kept, and variables of the description.
class LineContext final : public CXMLVarCtx {
public:
    LineContext(ConsoleState &state, const PreparedValue &prepared) : m_state(state), m_prepared(prepared) {}

    int isValidIdentStartChar(int c) override { return c == kMark || CXMLVarCtx::isValidIdentStartChar(c); }
    int isValidIdentChar(int c) override { return c == kMark || CXMLVarCtx::isValidIdentChar(c); }

    int getValue(const char *name, variant::Variant &result) override
    {
        if (*name == kMark)
            return valueOfOperand(result);
        const QString text = QString::fromUtf8(name);
        if (const std::optional<int> option = optionOf(m_prepared.field, text)) {
            result.setInt(*option);
            return 1;
        }
        if (const auto kept = m_state.kept.constFind(text); kept != m_state.kept.constEnd()) {
            result = *kept;
            return 1;
        }
        for (const VMRootArchive *root : {m_state.map.chipRootArchive, m_state.map.softRootArchive}) {
            if (root && !root->xmlArchives.isEmpty() &&
                ScopeContext(*root->xmlArchives.first()->variables).getValue(name, result))
                return 1;
        }
        return CXMLVarCtx::getValue(name, result);
    }

    static std::optional<int> optionOf(const VMBitField *field, const QString &name)
    {
        if (!field)
            return std::nullopt;
        const auto option = std::ranges::find(field->options.optionList, name, &VMBitFieldOption::name);
        return option == field->options.optionList.end() ? std::nullopt : std::optional<int>(option->value);
    }

    /// Gives operands their values from now on; before, each counts as 1.
    void computeWith(Interpreter &interpreter) { m_interpreter = &interpreter; }
    bool hasFailed() const { return m_hasFailed; }

private:
    int valueOfOperand(variant::Variant &result)
    {
        if (!m_interpreter) {
            result.setInt(1);
            return 1;
        }
        const std::optional<variant::Variant> value = m_interpreter->call(m_prepared.operands[m_next++]);
        m_hasFailed = !value;
        if (value)
            result = *value;
        return value ? 1 : 0;
    }

    ConsoleState &m_state;
    const PreparedValue &m_prepared;
    Interpreter *m_interpreter = nullptr;
    std::size_t m_next = 0;
    bool m_hasFailed = false;
};

int evaluateIn(LineContext &context, const QString &masked, variant::Variant &value, cexev::CExEv &evaluator)
{
    evaluator.context = &context;
    return evaluator.evalExpression(hexadecimalPreparseExpression(masked).toUtf8().constData(), value);
}

} // namespace

bool PreparedValue::isOperandAlone() const
{
    return operands.size() == 1 && std::ranges::all_of(masked.trimmed(), [](QChar c) { return c == kMark; });
}

/// Says what \a name, which nothing has, may have meant.
bool Interpreter::tellUnknown(const PreparedValue &prepared, const QString &name)
{
    if (name.contains(u'.')) {
        findElement(m_state.map, u'$' + name, m_state);
        return false;
    }
    NearestName nearest(name);
    QString options;
    if (prepared.field) {
        for (const VMBitFieldOption &option : prepared.field->options.optionList)
            nearest.offer(option.name);
        options = ", no option of "_L1 + prepared.field->getPath();
    }
    if (prepared.text == m_line && m_line.startsWith(name)) {
        for (const ConsoleCommand &command : consoleCommands())
            nearest.offer(command.name);
    }
    for (auto kept = m_state.kept.keyBegin(); kept != m_state.kept.keyEnd(); ++kept)
        nearest.offer(*kept);
    for (const VMRootArchive *root : {m_state.map.chipRootArchive, m_state.map.softRootArchive}) {
        for (std::size_t at = 0; root && at < root->instances.size(); ++at)
            nearest.offer(root->instances[at]->getName());
    }
    return m_state.fail(console_rules::kNoKnownValue, {name, options},
                        nearest.name().isEmpty() ? QString() : u"did you mean '%1'?"_s.arg(nearest.name()));
}

std::optional<PreparedValue> Interpreter::prepare(const QString &text, const VMBitField *field, int depth)
{
    if (depth > kMostLevels) {
        m_state.fail(console_rules::kTooDeep, {text.left(40), QString::number(kMostLevels)});
        return std::nullopt;
    }
    PreparedValue prepared{text.trimmed(), {}, {}, field};
    if (LineContext::optionOf(field, prepared.text)) // which need not be a name
        return prepared;
    for (qsizetype at = 0; at < prepared.text.size();) {
        const QChar c = prepared.text[at];
        const bool isPathBegin =
            c == u'$' || c == u'_' || (c.unicode() > 0x7F && c.isLetter()) || (isNameCharacter(c) && !c.isDigit());
        const bool isLiteral = c == u'"' || c == u'\'' || c.isDigit();
        qsizetype end = isLiteral ? endOfLiteral(prepared.text, at) : at + 1;
        if (isPathBegin) {
            const qsizetype nameEnd = qMax(endOfPath(prepared.text, at), at + 1);
            const QString name = prepared.text.sliced(at, nameEnd - at);
            const bool isName = LineContext::optionOf(prepared.field, name) || m_state.kept.contains(name);
            // Marks directly behind a name would be a part of it.
            const bool isApart = prepared.masked.isEmpty() || !isNamePart(prepared.masked.back());
            if (!isName && isApart && isOfInstance(QStringView(prepared.text).sliced(at))) {
                std::optional<Operand> operand = operandAt(prepared.text, at, &end, depth);
                if (!operand)
                    return std::nullopt;
                if (end < prepared.text.size() && isNamePart(prepared.text[end])) {
                    m_state.fail(console_rules::kBehindPath, {prepared.text.sliced(end), operand->text()});
                    return std::nullopt;
                }
                if (!prepared.field) // as in UART0.ctrl.speed == fast
                    prepared.field = elementCast<VMBitField>(operand->element);
                prepared.operands.push_back(*std::move(operand));
                prepared.masked += QString(end - at, kMark);
                at = end;
                continue;
            }
            end = nameEnd;
        }
        constexpr char16_t kNothing = 2; // which the evaluator refuses
        const QString piece = prepared.text.sliced(at, end - at);
        prepared.masked += QString(piece).replace(QChar(kMark), QChar(kNothing));
        at = end;
    }
    if (prepared.isOperandAlone())
        return prepared;
    LineContext context(m_state, prepared);
    cexev::CExEv evaluator;
    variant::Variant value;
    const int error = evaluateIn(context, prepared.masked, value, evaluator);
    // What the values make of it is seen when they are there.
    if (error == 0 ||
        (!prepared.operands.empty() && (error == cexev::CExEv::kErrorCall || error == cexev::CExEv::kErrorUnary)))
        return prepared;
    const Finding finding = evaluationError(prepared.text, evaluator);
    if (error == cexev::CExEv::kErrorIdentifier && !finding.expression.unknownName.isEmpty()) {
        QString name = finding.expression.unknownName;
        if (prepared.text.startsWith(name)) // with what stands behind it, as in URAT0.ctrl
            name = prepared.text.first(qMax(endOfPath(prepared.text, 0), name.size()));
        tellUnknown(prepared, name);
    } else {
        m_state.take(finding);
    }
    return std::nullopt;
}

std::optional<variant::Variant> Interpreter::compute(const PreparedValue &prepared)
{
    variant::Variant value;
    if (const std::optional<int> option = LineContext::optionOf(prepared.field, prepared.text)) {
        value.setInt(*option);
        return value;
    }
    if (prepared.isOperandAlone())
        return call(prepared.operands.front());
    LineContext context(m_state, prepared);
    context.computeWith(*this);
    cexev::CExEv evaluator;
    if (evaluateIn(context, prepared.masked, value, evaluator) == 0)
        return value;
    if (!context.hasFailed())
        m_state.take(evaluationError(prepared.text, evaluator));
    return std::nullopt;
}

std::optional<variant::Variant> Interpreter::evaluate(const QString &text, const VMBitField *field)
{
    const std::optional<PreparedValue> prepared = prepare(text, field);
    return prepared ? compute(*prepared) : std::nullopt;
}

std::optional<quint32> Interpreter::number(const QString &text)
{
    const std::optional<variant::Variant> value = evaluate(text);
    unsigned long number = 0;
    if (!value)
        return std::nullopt;
    const bool isNumber = value->getType() == variant::Variant::kInt || value->getType() == variant::Variant::kDWord ||
                          value->getType() == variant::Variant::kBool;
    if (!isNumber || value->asDWORD(number) == 0) {
        m_state.fail(console_rules::kNoNumberHere, {text.trimmed()});
        return std::nullopt;
    }
    return static_cast<quint32>(number);
}

} // namespace veldmap

#include "model/variables.h"

#include "expression/evaluator.h"
#include "model/archive.h"
#include "model/evaluation_errors.h"
#include "model/include_walk.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/scope_index.h"
#include "text/literals.h"
#include "text/plain_number.h"

#include <QSet>

#include <algorithm>
#include <atomic>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView kSpacerName = "VELDMAPSPACER"_L1;

/// The value of \a expression in \a context.
veldmap::Evaluated evaluate(cexev::CExEvCtx &context, const QString &name, const QString &expression)
{
    if (const std::optional<int> number = veldmap::plainNumber(expression))
        return {*number, false, {}, {}, {}};
    cexev::CExEv evaluator(&context);
    variant::Variant value;
    if (evaluator.evalExpression(hexadecimalPreparseExpression(expression).toUtf8().constData(), value) != 0) {
        const veldmap::Finding found = veldmap::evaluationError(expression, evaluator);
        return {-1, true, u"Error in expression of : %1"_s.arg(name), found.text(), found.expression};
    }
    int number = 0; // what a text counts as
    value.asInt(number);
    return {number, false, {}, {}, {}};
}

/// Hands \a result to an operation's out-parameters.
int handOver(const veldmap::Evaluated &result, QString &errorMessage, bool &error)
{
    errorMessage = result.message;
    error = result.failed;
    return result.value;
}

/// A context in which names are what a function finds.
class FoundContext final : public CXMLVarCtx {
public:
    explicit FoundContext(const veldmap::FindVariable &find) : m_find(find) {}
    int getValue(const char *name, variant::Variant &result) override
    {
        const VMIntVar *variable = m_find(QString::fromUtf8(name));
        if (variable) {
            result.setInt(variable->leftValue);
            return 1;
        }
        const int isKnown = CXMLVarCtx::getValue(name, result);
        if (!isKnown)
            unknownName = QString::fromUtf8(name);
        return isKnown;
    }

    QString unknownName;

private:
    const veldmap::FindVariable &m_find;
};

/// Appends the table of \a archive and of all that it includes, each as often as there are ways to it. False once more
/// tables have been added than anyone can use: diamonds of includes double their number at each level.
bool appendEveryTable(const VMXMLArchive &archive, QSet<const VMXMLArchive *> &onTheWay, int &tables,
                      QList<VMIntVar> &variables)
{
    constexpr int kMostTables = 10'000;
    if (++tables > kMostTables)
        return false;
    variables += *archive.variables;
    onTheWay.insert(&archive);
    for (const VMXMLArchive *included : archive.includedArchives) {
        if (!onTheWay.contains(included) && !appendEveryTable(*included, onTheWay, tables, variables))
            return false;
    }
    onTheWay.remove(&archive);
    if (const VMVariableManager *globals = veldmap::globalVariablesOf(archive))
        variables += *globals;
    return true;
}

/// The tables that \a archive sees, each at its last place only.
QList<VMIntVar> lastTables(const VMXMLArchive &archive)
{
    QList<const VMXMLArchive *> lastToFirst;
    QSet<const VMXMLArchive *> listed;
    veldmap::walkIncludes(archive, true, [&](const VMXMLArchive &included) {
        if (!listed.contains(&included))
            lastToFirst += &included;
        listed.insert(&included);
        return false;
    });
    QList<VMIntVar> variables;
    for (auto included = lastToFirst.crbegin(); included != lastToFirst.crend(); ++included)
        variables += *(*included)->variables;
    if (const VMVariableManager *globals = veldmap::globalVariablesOf(archive))
        variables += *globals;
    return variables;
}

} // namespace

QList<VMIntVar> VMXMLArchive::getAllIncludedVariables() const
{
    QList<VMIntVar> everyTable;
    QSet<const VMXMLArchive *> onTheWay;
    int tables = 0;
    return appendEveryTable(*this, onTheWay, tables, everyTable) ? everyTable : lastTables(*this);
}

VMIntVar generateSpacer()
{
    static std::atomic<int> spacers = 0; // one count for the process, in whatever thread
    VMIntVar spacer;
    spacer.name = kSpacerName + u'_' + QString::number(++spacers);
    return spacer;
}

bool veldmap::isSpacer(const VMIntVar &variable)
{
    return variable.name.startsWith(kSpacerName);
}

void VMIntVarTable::addVar(const VMIntVar &variable)
{
    append(variable);
}

const VMIntVar *VMIntVarTable::findVariable(const QString &name) const
{
    const auto row = std::find_if(crbegin(), crend(), [&](const VMIntVar &variable) { return variable.name == name; });
    return row == crend() ? nullptr : &*row;
}

QString VMEnum::getEntryName(int index) const
{
    if (index < 0)
        return u"0"_s;
    return index < size() ? at(index).name : QString::number(index);
}

VMVariableManager::VMVariableManager(VMXMLArchive *archive) : archive(archive) {}

VMVariableManager::~VMVariableManager() = default;

void VMVariableManager::addEnum(VMEnum *newEnum)
{
    enums.emplace_back(newEnum);
}

VMEnum *VMVariableManager::getEnumByName(const QString &enumName) const
{
    const auto ownEnum = [&enumName](const VMVariableManager &manager) -> VMEnum * {
        const auto own =
            std::ranges::find_if(manager.enums, [&](const auto &known) { return known->name == enumName; });
        return own == manager.enums.end() ? nullptr : own->get();
    };
    if (!archive)
        return ownEnum(*this);
    VMEnum *found = nullptr;
    veldmap::walkIncludes(*archive, false, [&](const VMXMLArchive &included) {
        found = ownEnum(*included.variables);
        return found != nullptr;
    });
    return found;
}

const VMIntVar *VMVariableManager::getVisibleVariable(const QString &variableName) const
{
    if (!archive)
        return findVariable(variableName);
    const VMVariableManager *globals = veldmap::globalVariablesOf(*archive);
    const VMIntVar *found = globals ? globals->findVariable(variableName) : nullptr;
    if (found)
        return found;
    veldmap::walkIncludes(*archive, true, [&](const VMXMLArchive &included) {
        found = included.variables->findVariable(variableName);
        return found != nullptr;
    });
    return found;
}

int VMVariableManager::evalExpression(const QString &name, const QString &expression, QString &errorMessage,
                                      bool &error) const
{
    veldmap::ScopeContext context(*this);
    return handOver(evaluate(context, name, expression), errorMessage, error);
}

int VMVariableManager::evalExpression(const QString &expression, QString &errorMessage, bool &error) const
{
    return evalExpression(expression, expression, errorMessage, error);
}

int VMVariableManager::evalExpressionAndAddVar(const QString &name, const QString &expression, const QString &comment,
                                               VMEnum *owner, QString &errorMessage, bool &error)
{
    const int value = evalExpression(name, expression, errorMessage, error);
    if (error)
        return value;
    VMIntVar variable;
    variable.leftExpression = expression;
    variable.leftValue = value;
    variable.ownerEnum = owner;
    variable.name = name;
    variable.comment = comment;
    addVar(variable);
    return value;
}

int VMVariableManager::evalExpressionAndAddRange(const QString &name, const QString &left, const QString &right,
                                                 VMIntVar::direction dir, const QString &comment, QString &errorMessage,
                                                 bool &error)
{
    const int leftValue = evalExpression(name, left, errorMessage, error);
    if (error)
        return leftValue;
    const int rightValue = evalExpression(name, right, errorMessage, error);
    if (error)
        return rightValue;
    VMIntVar range;
    range.leftExpression = left;
    range.rightExpression = right;
    range.leftValue = leftValue;
    range.rightValue = rightValue;
    range.dir = dir;
    range.isRange = 1;
    range.name = name;
    range.comment = comment;
    addVar(range);
    return leftValue;
}

int CXMLVarCtx::getValue(const char *name, variant::Variant &result)
{
    const auto value = values.constFind(QString::fromUtf8(name));
    if (value == values.cend())
        return CExEvCtx::getValue(name, result);
    result.setInt(*value);
    return 1;
}

int CXMLVarCtx::callFunction(const char *name, int argc, variant::Variant **argv, variant::Variant &result)
{
    if (argc != 1 || qstrcmp(name, "exp2") != 0)
        return CExEvCtx::callFunction(name, argc, argv, result);
    int exponent = 0;
    if (!argv[0]->asInt(exponent))
        return 0;
    result.setInt(static_cast<int>(1u << (static_cast<unsigned int>(exponent) & 31u)));
    return 1;
}

int evaluateExpressionWithVariables(const QList<VMIntVar> &variables, const QString &name, const QString &expression,
                                    QString &errorMessage, bool &error)
{
    CXMLVarCtx context;
    for (const VMIntVar &variable : variables)
        context.values.insert(variable.name, variable.leftValue);
    return handOver(evaluate(context, name, expression), errorMessage, error);
}

namespace veldmap {

const VMVariableManager *globalVariablesOf(const VMXMLArchive &archive)
{
    const VMRootArchive *root = archive.getRootArchive();
    return root && root->memoryMap ? root->memoryMap->globalVariables.get() : nullptr;
}

Evaluated evaluateExpression(const QString &expression, const FindVariable &find, const QString &name)
{
    FoundContext context(find);
    Evaluated result = evaluate(context, name.isEmpty() ? expression : name, expression);
    if (result.failed)
        result.wrong.unknownName = context.unknownName;
    return result;
}

ScopeContext::ScopeContext(const VMVariableManager &manager) : m_manager(manager) {}

int ScopeContext::getValue(const char *name, variant::Variant &result)
{
    const VMIntVar *variable = m_manager.getVisibleVariable(QString::fromUtf8(name));
    if (!variable)
        return CXMLVarCtx::getValue(name, result);
    result.setInt(variable->leftValue);
    return 1;
}

} // namespace veldmap

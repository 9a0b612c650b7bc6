#include "model/variables.h"

#include "text/literals.h"
#include "expression/evaluator.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr QLatin1StringView kSpacerName = "VELDMAPSPACER"_L1;

const QString kUnnamedExpression = u"____internal"_s;

/// Whether \a expression is a plain decimal number that an int holds, as most positions are.
bool isPlainNumber(const QString &expression)
{
    return !expression.isEmpty() && expression.size() <= 9 &&
           std::ranges::all_of(expression, [](QChar c) { return c >= u'0' && c <= u'9'; });
}

/// The value of \a expression in \a context.
int evaluate(cexev::CExEvCtx &context, const QString &name, const QString &expression, QString &errorMessage,
             bool &error)
{
    error = false;
    errorMessage.clear();
    if (isPlainNumber(expression))
        return expression.toInt();

    cexev::CExEv evaluator(&context);
    variant::Variant value;
    if (evaluator.evalExpression(hexadecimalPreparseExpression(expression).toUtf8().constData(), value) != 0) {
        errorMessage = u"Error in expression of : %1"_s.arg(name);
        error = true;
        return -1;
    }
    int number = 0; // what a text counts as
    value.asInt(number);
    return number;
}

/// The global variables of the memory map that \a archive hangs on, or null.
const VMVariableManager *globalVariablesOf(const VMXMLArchive &archive)
{
    const VMRootArchive *root = archive.getRootArchive();
    return root && root->memoryMap ? root->memoryMap->globalVariables.get() : nullptr;
}

/// How many archives the root of \a archive has deleted so far.
int discardedArchivesOf(const VMXMLArchive &archive)
{
    const VMRootArchive *root = archive.getRootArchive();
    return root ? root->discardedArchives() : 0;
}

/// Walks \a top and the archives that it includes, each archive once, so that the includes of an archive come before
/// the archive itself. With \a lastFirst the includes are taken from the last to the first. Ends at the first archive
/// for which \a visit holds. An archive that is still being walked is skipped, which keeps circular includes finite;
/// one that was walked in vain would be so again.
template <typename Visit>
void walkIncludes(const VMXMLArchive &top, bool lastFirst, const Visit &visit)
{
    struct Step {
        const VMXMLArchive *archive;
        qsizetype taken = 0;
    };
    QSet<const VMXMLArchive *> walked = {&top};
    std::vector<Step> way = {{&top}};
    while (!way.empty()) {
        Step &step = way.back();
        const auto &includes = step.archive->includedArchives;
        if (step.taken == includes.size()) {
            if (visit(*step.archive))
                return;
            way.pop_back();
            continue;
        }
        const VMXMLArchive *next = includes[lastFirst ? includes.size() - 1 - step.taken : step.taken];
        ++step.taken;
        if (next->includedArchives.isEmpty()) {
            if (visit(*next))
                return;
        } else if (!walked.contains(next)) {
            walked.insert(next);
            way.push_back({next});
        }
    }
}

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
    if (const VMVariableManager *globals = globalVariablesOf(archive))
        variables += *globals;
    return true;
}

/// The tables that \a archive sees, each at its last place only.
QList<VMIntVar> lastTables(const VMXMLArchive &archive)
{
    QList<const VMXMLArchive *> lastToFirst;
    QSet<const VMXMLArchive *> listed;
    walkIncludes(archive, true, [&](const VMXMLArchive &included) {
        if (!listed.contains(&included))
            lastToFirst += &included;
        listed.insert(&included);
        return false;
    });
    QList<VMIntVar> variables;
    for (auto included = lastToFirst.crbegin(); included != lastToFirst.crend(); ++included)
        variables += *(*included)->variables;
    if (const VMVariableManager *globals = globalVariablesOf(archive))
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
    static int spacers = 0;
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
    for (; m_indexedRows < size(); ++m_indexedRows)
        m_lastRows.insert(at(m_indexedRows).name, m_indexedRows);
    const auto row = m_lastRows.constFind(name);
    return row == m_lastRows.cend() ? nullptr : &at(*row);
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

VMEnum *VMVariableManager::findOwnEnum(const QString &enumName) const
{
    for (; m_indexedEnums < enums.size(); ++m_indexedEnums) {
        VMEnum *known = enums[m_indexedEnums].get();
        if (!m_firstEnums.contains(known->name))
            m_firstEnums.insert(known->name, known);
    }
    return m_firstEnums.value(enumName);
}

VMEnum *VMVariableManager::getEnumByName(const QString &enumName) const
{
    if (!archive)
        return findOwnEnum(enumName);
    VMEnum *found = nullptr;
    walkIncludes(*archive, false, [&](const VMXMLArchive &included) {
        found = included.variables->findOwnEnum(enumName);
        return found != nullptr;
    });
    return found;
}

const VMIntVar *VMVariableManager::getVisibleVariable(const QString &variableName) const
{
    if (!archive)
        return findVariable(variableName);
    const VMVariableManager *globals = globalVariablesOf(*archive);
    const VMIntVar *found = globals ? globals->findVariable(variableName) : nullptr;
    if (found)
        return found;
    for (const VMVariableManager *table : searchedTables()) {
        if (const VMIntVar *variable = table->findVariable(variableName))
            return variable;
    }
    return nullptr;
}

bool VMVariableManager::isCurrent(const SearchOrder &order) const
{
    return !order.walked.isEmpty() && order.discardedArchives == discardedArchivesOf(*archive) &&
           std::ranges::all_of(order.walked, [](const SearchOrder::Walked &step) {
               return step.archive->includedArchives.size() == step.includes;
           });
}

const QList<const VMVariableManager *> &VMVariableManager::searchedTables() const
{
    if (isCurrent(m_searchOrder))
        return m_searchOrder.tables;
    m_searchOrder = {};
    m_searchOrder.discardedArchives = discardedArchivesOf(*archive);
    QSet<const VMXMLArchive *> listed;
    walkIncludes(*archive, true, [&](const VMXMLArchive &included) {
        if (!listed.contains(&included)) {
            listed.insert(&included);
            m_searchOrder.walked.append({&included, included.includedArchives.size()});
            m_searchOrder.tables += included.variables.get();
        }
        return false;
    });
    return m_searchOrder.tables;
}

int VMVariableManager::evalExpression(const QString &name, const QString &expression, QString &errorMessage,
                                      bool &error) const
{
    veldmap::ScopeContext context(*this);
    return evaluate(context, name, expression, errorMessage, error);
}

int VMVariableManager::evalExpression(const QString &expression, QString &errorMessage, bool &error) const
{
    const int value = evalExpression(kUnnamedExpression, expression, errorMessage, error);
    if (error)
        errorMessage.replace(kUnnamedExpression, expression);
    return value;
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
    return evaluate(context, name, expression, errorMessage, error);
}

namespace veldmap {

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

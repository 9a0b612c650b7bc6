#pragma once

#include <veldmap/expression/evaluation_context.h>
#include <veldmap/model/source_place.h>
#include <veldmap/veldmap_export.h>

#include <QList>
#include <QMap>
#include <QString>

#include <memory>
#include <vector>

class VMEnum;
class VMXMLArchive;

/// A named integer of a description: a variable, a range or an entry of an enum. Each number stands beside the text
/// that the description wrote, which generators print.
struct VELDMAP_EXPORT VMIntVar {
    enum direction { up = 0, down = 1 };

    /// The C text of the variable: a #define, or with \a enumEntry a line of an enum. Text: headers/c_types.cpp.
    QString c_serialize(bool enumEntry) const;

    QString leftExpression;  ///< a variable's value as written; a range's left bound
    QString rightExpression; ///< a range's right bound
    int leftValue = 0;       ///< the value; what an expression sees under the name
    int rightValue = 0;
    direction dir = down;
    int isRange = 0;             ///< 1 for a range
    VMEnum *ownerEnum = nullptr; ///< the enum of which this is an entry; not owned
    QString name;
    QString comment;
    veldmap::SourcePlace source = {}; ///< its tag
};

/// A new variable that marks a place in a variable list, where generators print an empty line. The counter in its name
/// is one for the process, so loads do not run in parallel.
VELDMAP_EXPORT VMIntVar generateSpacer();

namespace veldmap {

/// Whether \a variable is such a mark and no variable.
VELDMAP_EXPORT bool isSpacer(const VMIntVar &variable);

} // namespace veldmap

/// Variables in the order of declaration. A name may stand more than once; the row added last wins.
class VELDMAP_EXPORT VMIntVarTable : public QList<VMIntVar> {
public:
    void addVar(const VMIntVar &variable);

    /// The row added last under \a name, or null.
    const VMIntVar *findVariable(const QString &name) const;
};

/// An enumeration; its rows are the entries.
class VELDMAP_EXPORT VMEnum : public VMIntVarTable {
public:
    /// The name of the entry at place \a index: "0" for a negative index, the index in decimal behind the last entry.
    QString getEntryName(int index) const;
    /// The C enum, without a line feed at its end. \a level has no effect. Text: headers/c_types.cpp.
    QString c_serialize(int level) const;

    int lastValue = -1; ///< number of the last entry; an entry without a value follows it
    QString name;
    QString comment;
    veldmap::SourcePlace source = {}; ///< its tag
};

/// The variables, ranges and enums of one archive, or, without an archive, the global variables of a memory map.
///
/// Owns its enums. Lookups walk the tables, so a host may change them as it likes; who looks up much in tables that
/// stay as they are uses a ScopeIndex. An expression sees the global variables first, then those of the included
/// archives from the last to the first, then the own table.
class VELDMAP_EXPORT VMVariableManager : public VMIntVarTable {
public:
    explicit VMVariableManager(VMXMLArchive *archive);
    VMVariableManager(const VMVariableManager &) = delete;
    VMVariableManager &operator=(const VMVariableManager &) = delete;
    ~VMVariableManager();

    /// Takes ownership of \a newEnum.
    void addEnum(VMEnum *newEnum);
    /// The enum of that name: the first of an included archive wins over the archive's own. Null when there is none.
    VMEnum *getEnumByName(const QString &enumName) const;
    /// The variable that an expression of this manager sees under \a variableName, or null.
    const VMIntVar *getVisibleVariable(const QString &variableName) const;

    // On failure each of these sets \a error, words \a errorMessage and gives -1; on success both are cleared.

    /// The value of \a expression in the scope of this manager. \a name only serves the message.
    int evalExpression(const QString &name, const QString &expression, QString &errorMessage, bool &error) const;
    /// The same; the message quotes the expression.
    int evalExpression(const QString &expression, QString &errorMessage, bool &error) const;
    /// Evaluates \a expression and adds it as a variable; adds nothing on failure.
    int evalExpressionAndAddVar(const QString &name, const QString &expression, const QString &comment, VMEnum *owner,
                                QString &errorMessage, bool &error);
    /// Evaluates both bounds and adds a range; adds nothing on failure. The left value is the result.
    int evalExpressionAndAddRange(const QString &name, const QString &left, const QString &right,
                                  VMIntVar::direction dir, const QString &comment, QString &errorMessage, bool &error);

    std::vector<std::unique_ptr<VMEnum>> enums; ///< in load order
    VMXMLArchive *archive;                      ///< not owned
};

/// What the expressions of a description may name: variables by their value, the function exp2(n), which is 1 shifted
/// left by the low 5 bits of n, and whatever the base context knows.
class VELDMAP_EXPORT CXMLVarCtx : public cexev::CExEvCtx {
public:
    int getValue(const char *name, variant::Variant &result) override;
    int callFunction(const char *name, int argc, variant::Variant **argv, variant::Variant &result) override;

    QMap<QString, int> values;
};

/// The value of \a expression as a signed 32-bit number, in which the names of \a variables stand for their values; of
/// equal names the later one counts. \a name only serves the message.
VELDMAP_EXPORT int evaluateExpressionWithVariables(const QList<VMIntVar> &variables, const QString &name,
                                                   const QString &expression, QString &errorMessage, bool &error);

namespace veldmap {

/// The context in which the expressions of \a manager are evaluated; it looks names up where they stand. The manager
/// must outlive it.
class VELDMAP_EXPORT ScopeContext : public CXMLVarCtx {
public:
    explicit ScopeContext(const VMVariableManager &manager);
    int getValue(const char *name, variant::Variant &result) override;

private:
    const VMVariableManager &m_manager;
};

} // namespace veldmap

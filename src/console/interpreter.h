#pragma once

#include "console/accesses.h"
#include "console/state.h"

#include <QList>

#include <vector>

class VMBitField;
class VMValuable;
class VMXMLElement;

namespace veldmap {

struct PreparedValue;

/// What a path in a line stands for: an element, or an operation on it.
struct Operand {
    VMXMLElement *element = nullptr; ///< not owned
    QString path;                    ///< as messages name the element
    QString operation;               ///< empty for the element itself
    std::vector<PreparedValue> arguments;

    /// The element and its operation, as a line has them.
    QString text() const { return operation.isEmpty() ? path : path + u'.' + operation; }
};

/// An expression that has been read and whose paths lead to elements. No access was made for it.
struct PreparedValue {
    QString text;                  ///< as written
    QString masked;                ///< with a run of marks in the place of each operand
    std::vector<Operand> operands; ///< in their order in the text
    const VMBitField *field;       ///< whose options are names in it: the receiver of the value, or the first in it

    /// Whether it is no more than an operand.
    bool isOperandAlone() const;
};

/// Makes lines happen. All that is wrong with a line is told before the first access of it.
class Interpreter {
public:
    explicit Interpreter(ConsoleState &state) : m_state(state), m_accesses(state) {}

    /// Runs one line; false, told, when it failed.
    bool run(const QString &line);

    /// Reads \a text as an expression, with the options of \a field as names.
    std::optional<PreparedValue> prepare(const QString &text, const VMBitField *field = nullptr, int depth = 0);
    /// The value of \a prepared, with all the accesses that it asks for.
    std::optional<variant::Variant> compute(const PreparedValue &prepared);
    std::optional<variant::Variant> evaluate(const QString &text, const VMBitField *field = nullptr);
    /// The value of \a text as a number of 32 bits.
    std::optional<quint32> number(const QString &text);

    /// The element that the path \a text names, with or without its "$".
    std::optional<Operand> find(const QString &text);
    /// Whether \a text begins with the name of an instance.
    bool isOfInstance(QStringView text) const;

    /// Does what \a operand says. The value is null for an operation without a result.
    std::optional<variant::Variant> call(const Operand &operand);
    /// Reads \a element, of which the description must allow it, and shows it with what it holds.
    bool show(const Operand &operand);
    /// Gives \a operand the value of \a value, as its operation w does, or set or clear.
    bool assign(const Operand &operand, const PreparedValue &value);

    Accesses &accesses() { return m_accesses; }
    ConsoleState &state() { return m_state; }

private:
    bool runAssignment(const QString &left, const QString &right);
    bool keep(const QString &name, const QString &right);
    bool showValue(const PreparedValue &prepared);
    std::optional<Operand> operandAt(const QString &text, qsizetype begin, qsizetype *end, int depth);
    std::optional<QString> withIndexes(const QString &path, int depth);
    std::optional<Operand> resolve(const QString &path);
    bool takeArguments(Operand &operand, const QString &text, int depth);
    bool tellNoMember(const QString &path, const QString &holder);
    bool tellUnknown(const PreparedValue &prepared, const QString &name);

    ConsoleState &m_state;
    Accesses m_accesses;
    QString m_line; // the expression that is a line of its own, where a command may be meant
};

/// Where the path that begins at \a begin of \a text ends: names, indexes in brackets, dots and ">" between them. -1
/// when a bracket is left open.
qsizetype endOfPath(QStringView text, qsizetype begin);
/// Where the bracket at \a open of \a text is closed, -1 when it is not.
qsizetype closingOf(QStringView text, qsizetype open);
/// The place of the "=" that makes an assignment of \a line, -1 when there is none.
qsizetype assignmentIn(QStringView line);

/// The operations that a console has on \a element, offered there or not: those of valuables, or those of fields.
bool isOperation(const VMXMLElement &element, QStringView name);
/// What an operation takes, and of what field its value may be an option.
struct OperationArguments {
    int count = 0;
    bool isLastOfField = false;
};
OperationArguments argumentsOf(const VMXMLElement &element, QStringView operation);

} // namespace veldmap

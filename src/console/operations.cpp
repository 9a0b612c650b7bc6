#include "access/completion.h"
#include "access/field_values.h"
#include "console/commands.h"
#include "console/console_rules.h"
#include "console/interpreter.h"
#include "console/value_texts.h"
#include "model/memory_map.h"
#include "model/visit.h"
#include "text/bit_arithmetic.h"
#include "text/literals.h"

#include <algorithm>

using namespace Qt::StringLiterals;

// What the operations do that completion offers: a row for each, in the order of its tables.

namespace veldmap {

namespace {

using Result = std::optional<variant::Variant>;

constexpr int kNoWrite = 0;
constexpr int kPlainWrite = 1;
constexpr int kWriteSets = 2;

variant::Variant numberOfWord(quint32 word)
{
    variant::Variant value;
    if (word <= 0x7FFFFFFF) // as the evaluator reads literals
        value.setInt(static_cast<int>(word));
    else
        value.setDWORD(word);
    return value;
}

variant::Variant valueOf(const VMValuable &valuable)
{
    variant::Variant value = numberOfWord(valuable.getValue());
    if (valuable.isSigned())
        value.setInt(valuable.getSignedValue());
    return value;
}

/// What gives an element a value, as the rules of values read it: a number as it was written, or what it comes to.
QString assignedText(const PreparedValue &prepared, const variant::Variant &value)
{
    if (numberOf(prepared.text))
        return prepared.text;
    if (value.getType() == variant::Variant::kInt)
        return QString::number(value.getInt());
    unsigned long number = 0;
    return value.asDWORD(number) != 0 ? QString::number(static_cast<quint32>(number)) : prepared.text;
}

/// Appends the line of \a element and of all that it holds, without fields and gaps.
void appendTable(QString &text, const VMXMLElement &element, const QString &name, int level, const ValueTexts &values)
{
    appendElement(text, element, name, level, 0, values);
    const auto appendMembers = [&](const auto &members) {
        for (const auto &member : members) {
            if (member->getType() != VMXMLElement::XML_HOLE)
                appendTable(text, *member, member->getName(), level + 1, values);
        }
    };
    visit(element,
          Overloads{[&](const VMStruct &structure) { appendMembers(structure.memberList); },
                    [&](const VMArray &array) { appendMembers(array.memberList); }, [](const VMXMLElement &) {}});
}

/// One call of an operation.
class Call {
public:
    Call(Interpreter &interpreter, const Operand &operand, VMValuable &valuable, VMBitField *field)
        : m_interpreter(interpreter), m_state(interpreter.state()), m_operand(operand), m_valuable(valuable),
          m_field(field)
    {
    }

    Result address()
    {
        if (m_interpreter.accesses().hasTarget() && !m_interpreter.accesses().followPointersTo(m_valuable))
            return std::nullopt;
        return numberOfWord(m_operand.element->getBaseAddress());
    }

    Result doc()
    {
        variant::Variant text;
        text.setString(documentationOf(*m_operand.element).toStdString());
        return text;
    }

    Result read() { return mayRead() ? readAllTheSame() : std::nullopt; }
    Result readAndPrint() { return printed(read()); }
    Result readByForce() { return needsForce(isReadable(), u"R"_s, u"r"_s) ? readAllTheSame() : std::nullopt; }
    Result readByForceAndPrint() { return printed(readByForce()); }

    Result withoutActions() // prepl
    {
        const std::optional<quint32> cache = cacheOf(0);
        return cache ? Result(numberOfWord(m_valuable.getValueForWritingBitfieldFromCache(*cache))) : std::nullopt;
    }

    Result cached() // getl
    {
        if (!m_valuable.readError)
            return valueOf(m_valuable);
        m_state.fail(console_rules::kStale, {m_operand.path});
        return std::nullopt;
    }

    Result setCached() // setl
    {
        const std::optional<quint32> word = wordToWrite();
        if (!word)
            return std::nullopt;
        m_valuable.setValue(*word);
        m_valuable.setReadError(false);
        return variant::Variant();
    }

    Result readLocal() // rl
    {
        const std::optional<quint32> cache = cacheOf(0);
        return cache ? Result(numberOfWord(m_field->getValueFromCache(*cache))) : std::nullopt;
    }

    Result writeLocal() // wl
    {
        const std::optional<quint32> cache = cacheOf(0);
        const std::optional<quint32> word = cache ? wordWithField(*cache, 1) : std::nullopt;
        return word ? Result(numberOfWord(*word)) : std::nullopt;
    }

    Result write()
    {
        if (m_field && m_field->writeMode != kPlainWrite && m_field->writeMode != kNoWrite)
            return tellSetOrClear();
        return mayWrite() ? writeAllTheSame() : std::nullopt;
    }
    Result writeByForce()
    {
        if (m_field && m_field->writeMode != kPlainWrite && m_field->writeMode != kNoWrite)
            return tellSetOrClear();
        return needsForce(isWritable(), u"w"_s, u"w"_s) ? writeAllTheSame() : std::nullopt;
    }

    /// Both write ones: what a set or clear field makes of a zero is nothing.
    Result set() { return setOrClear(kWriteSets, u"set"_s); }
    Result clear() { return setOrClear(kWriteSets + 1, u"clear"_s); }

    Result dereference()
    {
        m_state.fail(console_rules::kNotOffered, {m_operand.path, m_operand.operation, u"no pointer"_s});
        return std::nullopt;
    }

    bool mayRead()
    {
        if (m_state.settings.force || (isReadable() && m_valuable.readable))
            return true;
        // A field that may be read in a register that may not has no operation that forces it.
        const QString &path = isReadable() ? m_valuable.getPath() : m_operand.path;
        return m_state.fail(console_rules::kUnreadable, {m_operand.path, path + ".rf"_L1});
    }

private:
    bool isReadable() const { return m_field ? m_field->readable : m_valuable.readable; }
    bool isWritable() const { return m_field ? m_field->writeMode != kNoWrite : m_valuable.writable; }

    bool mayWrite()
    {
        if (m_state.settings.force)
            return true;
        if (!isWritable())
            return m_state.fail(console_rules::kUnwritable, {m_operand.path, m_operand.path + ".wf"_L1});
        return m_valuable.writable ||
               m_state.fail(console_rules::kRegisterUnwritable, {m_operand.path, m_valuable.getPath()});
    }

    /// Operations that force are there for what is protected alone.
    bool needsForce(bool isAllowed, const QString &upper, const QString &lower)
    {
        if (!isAllowed)
            return true;
        const QString other = m_operand.operation == upper + u'F' ? upper : lower;
        return m_state.fail(console_rules::kNeedsNoForce, {m_operand.text(), m_operand.path + u'.' + other});
    }

    Result readAllTheSame()
    {
        if (!m_interpreter.accesses().read(m_valuable))
            return std::nullopt;
        return m_field ? numberOfWord(m_field->getValue()) : valueOf(m_valuable);
    }

    Result printed(const Result &value)
    {
        if (value && !m_state.settings.dryRun)
            m_state.host.print(hexText(m_field ? m_field->getValue() : m_valuable.getValue(),
                                       m_field ? m_field->getBitSize() : m_valuable.getBitSize()) +
                               u'\n');
        return value;
    }

    std::optional<quint32> cacheOf(std::size_t argument)
    {
        const PreparedValue &prepared = m_operand.arguments[argument];
        const Result value = m_interpreter.compute(prepared);
        if (!value)
            return std::nullopt;
        unsigned long word = 0;
        const int bits = m_valuable.getBitSize();
        const bool isNumber = value->asDWORD(word) != 0;
        const auto number = static_cast<quint32>(word);
        // What is read of a signed integer of fewer bits goes on in all 32.
        const bool fits = (number & ~lowBits(bits)) == 0 || (m_valuable.isSigned() && number >= ~lowBits(bits - 1));
        if (isNumber && fits)
            return number & lowBits(bits);
        if (isNumber)
            m_state.fail(console_rules::kCacheTooWide, {m_operand.text(), prepared.text, QString::number(bits)});
        else
            m_state.fail(console_rules::kNoNumberHere, {prepared.text});
        return std::nullopt;
    }

    /// The value of the last argument, as text for the rules of values.
    std::optional<Assignment> assignment()
    {
        const PreparedValue &prepared = m_operand.arguments.back();
        const Result value = m_interpreter.compute(prepared);
        if (!value)
            return std::nullopt;
        QString text = assignedText(prepared, *value);
        if (!m_field && m_valuable.getBitSize() == 32 && !m_valuable.isSigned() && text.startsWith(u'-'))
            text = QString::number(static_cast<quint32>(value->getInt())); // as in ~1
        return Assignment{m_operand.path, text, true};
    }

    std::optional<quint32> wordToWrite()
    {
        const std::optional<Assignment> given = assignment();
        return given ? valueToWrite(m_valuable, *given, m_state) : std::nullopt;
    }

    /// \a before with the field at the value of the last argument, as a field that is written in \a mode.
    std::optional<quint32> wordWithField(quint32 before, int mode)
    {
        VMBitField field(*m_field);
        field.writeMode = mode;
        const std::optional<Assignment> given = assignment();
        return given ? valueToWrite(field, m_valuable, before, *given, m_state) : std::nullopt;
    }

    Result writeAllTheSame()
    {
        std::optional<quint32> word;
        if (!m_field) {
            word = wordToWrite();
        } else if ((word = wordWithField(0, kPlainWrite))) {
            // The value is known to fit before the register is read.
            const std::optional<quint32> base = baseOf(m_field->getFullValueUnshifted());
            word = base ? std::optional<quint32>(*base | *word) : std::nullopt;
        }
        return word ? put(*word) : std::nullopt;
    }

    Result put(quint32 word)
    {
        return m_interpreter.accesses().write(m_valuable, word) ? Result(variant::Variant()) : std::nullopt;
    }

    /// What the bits of the register other than \a bits are written with: as they are, set and clear bits as 0. It is
    /// read for that, unless it has no others.
    std::optional<quint32> baseOf(quint32 bits)
    {
        if ((~bits & lowBits(m_valuable.getBitSize())) == 0)
            return 0;
        if (!m_valuable.readable && !m_state.settings.force) {
            const QString path = m_valuable.getPath();
            const bool isPlain = m_field->writeMode == kPlainWrite || m_field->writeMode == kNoWrite;
            m_state.fail(console_rules::kNoBase,
                         {m_operand.path,
                          u"%1.w(%2.wl(%1.getl,%3))"_s.arg(path, m_operand.path, isPlain ? u"value"_s : u"1"_s)});
            return std::nullopt;
        }
        if (!m_interpreter.accesses().read(m_valuable))
            return std::nullopt;
        return m_valuable.getValueForWritingBitfield() & ~bits;
    }

    Result tellSetOrClear()
    {
        const bool sets = m_field->writeMode == kWriteSets;
        m_state.fail(console_rules::kTakesOperation, {m_operand.path, sets ? u"is set"_s : u"is cleared"_s,
                                                      m_operand.path + (sets ? ".set"_L1 : ".clear"_L1)});
        return std::nullopt;
    }

    Result setOrClear(int mode, const QString &operation)
    {
        if (m_field->writeMode != mode) {
            const QString how = m_field->writeMode == kNoWrite      ? u"not writable"_s
                                : m_field->writeMode == kPlainWrite ? u"written with w"_s
                                : m_field->writeMode == kWriteSets  ? u"one that is set with set"_s
                                                                    : u"one that is cleared with clear"_s;
            m_state.fail(console_rules::kNotOffered, {m_operand.path, operation, how});
            return std::nullopt;
        }
        if (!mayWrite())
            return std::nullopt;
        const quint32 bits = m_field->getFullValueUnshifted() & lowBits(m_valuable.getBitSize());
        // Where there are no others that keep a value, zeros leave all as it is.
        const bool hasPlain =
            std::ranges::any_of(m_valuable.bitFields, [](const auto &f) { return f->writeMode == kPlainWrite; });
        const std::optional<quint32> base = hasPlain ? baseOf(bits) : 0;
        return base ? put(*base | bits) : std::nullopt;
    }

    Interpreter &m_interpreter;
    ConsoleState &m_state;
    const Operand &m_operand;
    VMValuable &m_valuable;
    VMBitField *m_field; // null for an operation on the valuable
};

struct OperationRow {
    QLatin1StringView name;
    OperationArguments arguments;
    Result (Call::*run)();
};

constexpr OperationRow kOfValuables[] = {
    {"doc"_L1, {}, &Call::doc},
    {"address"_L1, {}, &Call::address},
    {"R"_L1, {}, &Call::read},
    {"r"_L1, {}, &Call::readAndPrint},
    {"RF"_L1, {}, &Call::readByForce},
    {"rf"_L1, {}, &Call::readByForceAndPrint},
    {"prepl"_L1, {1}, &Call::withoutActions},
    {"getl"_L1, {}, &Call::cached},
    {"setl"_L1, {1}, &Call::setCached},
    {"w"_L1, {1}, &Call::write},
    {"wf"_L1, {1}, &Call::writeByForce},
    {">"_L1, {}, &Call::dereference}, // what a pointer points to is an element, to which its path leads
};

constexpr OperationRow kOfFields[] = {
    {"address"_L1, {}, &Call::address}, {"doc"_L1, {}, &Call::doc},
    {"R"_L1, {}, &Call::read},          {"r"_L1, {}, &Call::readAndPrint},
    {"RF"_L1, {}, &Call::readByForce},  {"rf"_L1, {}, &Call::readByForceAndPrint},
    {"rl"_L1, {1}, &Call::readLocal},   {"wl"_L1, {2, true}, &Call::writeLocal},
    {"w"_L1, {1, true}, &Call::write},  {"wf"_L1, {1, true}, &Call::writeByForce},
    {"set"_L1, {}, &Call::set},         {"clear"_L1, {}, &Call::clear},
};

const OperationRow *rowOf(const VMXMLElement &element, QStringView name)
{
    const std::span<const OperationRow> rows =
        elementCast<VMBitField>(&element) ? std::span<const OperationRow>(kOfFields) : kOfValuables;
    const auto row = std::ranges::find_if(rows, [name](const OperationRow &one) { return one.name == name; });
    return row == rows.end() || (name == u'>' && element.isPointer()) ? nullptr : &*row;
}

} // namespace

bool isOperation(const VMXMLElement &element, QStringView name)
{
    return rowOf(element, name) != nullptr;
}

OperationArguments argumentsOf(const VMXMLElement &element, QStringView operation)
{
    const OperationRow *row = rowOf(element, operation);
    return row ? row->arguments : OperationArguments();
}

std::optional<variant::Variant> Interpreter::call(const Operand &operand)
{
    auto *field = elementCast<VMBitField>(operand.element);
    auto *valuable = elementCast<VMValuable>(field ? field->parent : operand.element);
    if (!valuable) {
        m_state.fail(console_rules::kHasNoValue, {operand.path});
        return std::nullopt;
    }
    Call call(*this, operand, *valuable, field);
    if (operand.operation.isEmpty())
        return call.read();
    return (call.*rowOf(*operand.element, operand.operation)->run)();
}

bool Interpreter::assign(const Operand &operand, const PreparedValue &value)
{
    Operand written{operand.element, operand.path, u"w"_s, {value}};
    const auto *field = elementCast<VMBitField>(operand.element);
    if (field && (field->writeMode == kWriteSets || field->writeMode == kWriteSets + 1)) {
        // PATH = 1 is PATH.set or PATH.clear; the rules of values refuse all others.
        const Result number = compute(value);
        if (!number)
            return false;
        const Assignment given{operand.path, assignedText(value, *number), true};
        if (!valueToWrite(*field, *elementCast<VMValuable>(field->parent), 0, given, m_state))
            return false;
        written.operation = field->writeMode == kWriteSets ? u"set"_s : u"clear"_s;
        written.arguments.clear();
    }
    return call(written).has_value();
}

bool Interpreter::show(const Operand &operand)
{
    VMXMLElement &element = *operand.element;
    auto *field = elementCast<VMBitField>(&element);
    auto *valuable = elementCast<VMValuable>(field ? field->parent : &element);
    if (valuable && !Call(*this, operand, *valuable, field).mayRead())
        return false;
    const bool isRead = valuable ? m_accesses.read(*valuable) : m_accesses.readAll(element);
    // Of what has no value at all there is no table.
    const auto hasValue = [](const VMValuable *one) { return one->readable && !one->readError; };
    if (m_state.settings.dryRun || m_state.isInterrupted ||
        (!isRead && !valuable && std::ranges::none_of(valuablesIn(element), hasValue)))
        return isRead;
    const ValueTexts values(m_state.settings);
    QString text;
    if (field)
        appendFieldAlone(text, *field, values);
    else if (valuable)
        appendElement(text, element, operand.path, 0, 1, values);
    else
        appendTable(text, element, operand.path, 0, values);
    m_state.host.print(text);
    return isRead;
}

} // namespace veldmap

#include "check/declared.h"
#include "check/repeats.h"
#include "check/tree_groups.h"
#include "check/tree_rules.h"
#include "text/bit_arithmetic.h"

#include <array>
#include <bit>
#include <optional>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kWordBits = 32;

/// "bit 3", or "bits 7:4".
QString bitsText(qint64 up, qint64 down)
{
    return up == down ? "bit "_L1 + QString::number(up)
                      : "bits "_L1 + QString::number(up) + u':' + QString::number(down);
}

/// The set bits of \a mask, run by run from the highest: "bits 7:4 and bit 2".
QString bitsText(quint32 mask)
{
    QStringList runs;
    while (mask != 0) {
        const int up = kWordBits - 1 - std::countl_zero(mask);
        const int length = std::countl_one(mask << (kWordBits - 1 - up));
        runs += bitsText(up, up - length + 1);
        mask &= ~bitRange(up, up - length + 1);
    }
    return runs.join(" and "_L1);
}

/// What software can do with a field. Two fields that can only be read and only be written are two views of the same
/// bits, as of a data register; any others that share a bit are not both meant.
enum View { kRead, kWritten, kOther, kViews };

View viewOf(const VMBitField &field)
{
    const bool isWritable = field.writeMode != 0;
    if (field.readable == isWritable)
        return kOther;
    return field.readable ? kRead : kWritten;
}

bool mayShareBits(View one, View other)
{
    return (one == kRead && other == kWritten) || (one == kWritten && other == kRead);
}

/// Where an option is declared: its own tag, or for one that came out of an enum the field that names the enum.
Place placeOf(const VMBitFieldOption &option, const VMBitField &field)
{
    const Place own = option.source.place();
    const Place ofField = field.source.place();
    const bool isInside = own.file == ofField.file &&
                          (own.line > ofField.line || (own.line == ofField.line && own.column > ofField.column));
    return isInside ? own : ofField;
}

/// Checks one register or other valuable.
class RegisterChecks {
public:
    RegisterChecks(const VMValuable &valuable, Sink &sink) : m_valuable(valuable), m_sink(sink) {}

    void run()
    {
        checkAccess();
        for (const auto &field : m_valuable.bitFields) {
            checkPosition(*field);
            checkOverlap(*field);
            checkName(*field);
            checkOptions(*field);
        }
        for (const auto &group : m_valuable.bitGroups)
            checkGroup(*group);
    }

private:
    void checkAccess()
    {
        const ScalarKind *kind = scalarKindOf(m_valuable.getType());
        const bool isRegister = kind && (kind->isBusRegister || kind->type == VMXMLElement::XML_INTERNAL_REGISTER8);
        if (isRegister && !m_valuable.readable && !m_valuable.writable)
            take(lint::registerNoAccess, m_valuable.source, {path()});

        const VMBitField *first = nullptr;
        int count = 0;
        for (const auto &field : m_valuable.bitFields) {
            if (field->readable || field->writeMode != 0)
                continue;
            ++count;
            first = first ? first : field.get();
        }
        if (first)
            take(lint::fieldNoAccess, first->source,
                 {QString::number(count), QString::number(m_valuable.bitFields.size()), path(), first->getName()});
    }

    void checkPosition(const VMBitField &field)
    {
        const int top = m_valuable.getBitSize() - 1;
        const qint64 width = qint64(field.upPos) - field.downPos + 1;
        if (width < 1)
            take(lint::fieldWidth, field.source,
                 {field.getName(), path(), QString::number(width), field.upPosExpression, field.downPosExpression,
                  QString::number(field.upPos), QString::number(field.downPos)});
        else if (field.upPos > top || field.downPos < 0)
            take(lint::fieldBeyondRegister, field.source,
                 {field.getName(), path(), bitsText(field.upPos, field.downPos), QString::number(top)});
    }

    void checkOverlap(const VMBitField &field)
    {
        const View view = viewOf(field);
        const quint32 bits = field.getFullValueUnshifted();
        quint32 taken = 0; // by those that may not share bits with it
        for (int other = 0; other < kViews; ++other)
            taken |= mayShareBits(view, static_cast<View>(other)) ? 0 : m_taken[static_cast<std::size_t>(other)];
        m_taken[view] |= bits;
        const bool isOverlap = (taken & bits) != 0;
        if (isOverlap && !m_latest)
            beginLatest(field);
        if (isOverlap)
            tellOverlap(field, view);
        if (m_latest)
            addLatest(field);
    }

    /// Notes the field that every bit has last in front of \a field, which few registers ask for.
    void beginLatest(const VMBitField &field)
    {
        m_latest.emplace();
        for (const auto &earlier : m_valuable.bitFields) {
            if (earlier.get() == &field)
                break;
            addLatest(*earlier);
        }
    }

    void addLatest(const VMBitField &field)
    {
        for (int bit = qMax(field.downPos, 0); bit <= qMin(field.upPos, kWordBits - 1); ++bit)
            (*m_latest)[static_cast<std::size_t>(bit)][viewOf(field)] = &field;
    }

    /// Tells of each field that was the latest one with a bit of \a field.
    void tellOverlap(const VMBitField &field, View view)
    {
        QList<std::pair<const VMBitField *, quint32>> overlapped;
        for (int bit = qMax(field.downPos, 0); bit <= qMin(field.upPos, kWordBits - 1); ++bit) {
            const auto &latest = (*m_latest)[static_cast<std::size_t>(bit)];
            for (int other = 0; other < kViews; ++other) {
                const VMBitField *earlier = latest[static_cast<std::size_t>(other)];
                if (!earlier || mayShareBits(view, static_cast<View>(other)))
                    continue;
                const auto known =
                    std::ranges::find(overlapped, earlier, &std::pair<const VMBitField *, quint32>::first);
                if (known == overlapped.end())
                    overlapped.append({earlier, 1u << bit});
                else
                    known->second |= 1u << bit;
            }
        }
        for (const auto &[earlier, bits] : std::as_const(overlapped))
            take(lint::fieldOverlap, field.source, {field.getName(), path(), earlier->getName(), bitsText(bits)},
                 earlier->source, u"the other field"_s);
    }

    void checkName(const VMBitField &field)
    {
        if (const qsizetype first = m_names.add(field.getName()); first >= 0)
            take(lint::fieldNameTwice, field.source, {u"field"_s, field.getName(), path()}, sourceOfName(first),
                 u"first declared here"_s);
    }

    /// Where the field or, behind all fields, the group with the number \a place is declared.
    const SourcePlace &sourceOfName(qsizetype place) const
    {
        const auto number = static_cast<std::size_t>(place);
        const std::size_t fields = m_valuable.bitFields.size();
        return number < fields ? m_valuable.bitFields[number]->source : m_valuable.bitGroups[number - fields]->source;
    }

    void checkOptions(const VMBitField &field)
    {
        const auto &options = field.options.optionList;
        const quint32 most = lowBits(qint64(field.upPos) - field.downPos + 1);
        if (options.isEmpty())
            return;
        Repeats<QStringView> names;
        Repeats<int> values;
        for (const VMBitFieldOption &option : options) {
            const auto tell = [&](const LintRule &rule, const QStringList &more, qsizetype other = -1) {
                Finding finding(rule.rule, placeOf(option, field),
                                QStringList{option.name, field.getName(), path()} + more);
                if (other >= 0)
                    finding.withPlace(options[other].source.place(), u"the other option"_s);
                m_sink.take(finding);
            };
            if (const qsizetype same = names.add(option.name); same >= 0)
                tell(lint::optionNameTwice, {}, same);
            if (static_cast<quint32>(option.value) > most)
                tell(lint::optionBeyondField, {QString::number(option.value), QString::number(most)});
            if (const qsizetype same = values.add(option.value); same >= 0)
                tell(lint::optionValueTwice, {QString::number(option.value), options[same].name}, same);
        }
    }

    void checkGroup(const VMBitGroup &group)
    {
        if (const qsizetype first = m_names.add(group.name); first >= 0)
            take(lint::fieldNameTwice, group.source, {u"bitgroup"_s, group.name, path()}, sourceOfName(first),
                 u"first declared here"_s);
        quint32 bits = 0;
        quint32 shared = 0;
        for (const VMBitField *field : group) {
            shared |= bits & field->getFullValueUnshifted();
            bits |= field->getFullValueUnshifted();
        }
        if (shared != 0)
            take(lint::groupOverlap, group.source, {group.name, path(), bitsText(shared)});
        const quint32 span = bitRange(kWordBits - 1 - std::countl_zero(bits), std::countr_zero(bits));
        if (const quint32 missing = span & ~bits)
            take(lint::groupGap, group.source, {group.name, path(), bitsText(missing)});
    }

    QString path() const { return declaredPath(m_valuable); }
    void take(const LintRule &rule, const SourcePlace &source, const QStringList &arguments)
    {
        m_sink.take(Finding(rule.rule, source.place(), arguments));
    }
    void take(const LintRule &rule, const SourcePlace &source, const QStringList &arguments, const SourcePlace &other,
              const QString &what)
    {
        m_sink.take(Finding(rule.rule, source.place(), arguments).withPlace(other.place(), what));
    }

    const VMValuable &m_valuable;
    Sink &m_sink;
    using Latest = std::array<std::array<const VMBitField *, kViews>, kWordBits>; // by bit and view
    std::optional<Latest> m_latest;                                               // none before the first overlap
    std::array<quint32, kViews> m_taken = {};                                     // bits, by view
    Repeats<QStringView> m_names;
};

class RegisterChecksOfTypes final : public TypeChecks {
public:
    explicit RegisterChecksOfTypes(Sink &sink) : m_sink(sink) {}

    void check(const VMXMLArchive &, const VMXMLElement &type) override
    {
        visitDeclared(type, Overloads{[&](const VMValuable &valuable) {
                                          if (!valuable.enumTemplate && !isCopyOfType(valuable))
                                              RegisterChecks(valuable, m_sink).run();
                                      },
                                      [](const VMXMLElement &) {}});
    }

private:
    Sink &m_sink;
};

} // namespace

std::unique_ptr<TypeChecks> registerChecks(Sink &sink)
{
    return std::make_unique<RegisterChecksOfTypes>(sink);
}

} // namespace veldmap

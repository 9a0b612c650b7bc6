#include "check/macro_names.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

// The names and values are those of headers/bitfield_macros.cpp.
class MacroWalk {
public:
    explicit MacroWalk(const MacroListener &listener) : m_listener(listener) {}

    void walk(const VMXMLElement &element)
    {
        const bool isInner = element.parent && element.parent->getType() != VMXMLElement::XML_ARCHIVE;
        if (isInner && !element.typedefName.isEmpty()) {
            const qsizetype before = m_innerTypes.size();
            m_innerTypes.insert(element.typedefName);
            if (m_innerTypes.size() == before)
                return;
        }
        visit(element,
              Overloads{[this](const VMStruct &structure) {
                            for (const auto &member : structure.memberList)
                                walk(*member);
                        },
                        [this](const VMArray &array) { walk(*array.prototype); },
                        [this](const VMValuable &valuable) { tellAll(valuable); }, [](const VMXMLElement &) {}});
    }

private:
    void tellAll(const VMValuable &valuable)
    {
        if (valuable.enumTemplate)
            return;
        m_owner = &valuable;
        for (const auto &field : valuable.bitFields)
            tellField(*field);
        for (const auto &group : valuable.bitGroups) {
            const MacroName name(group->name);
            const quint32 mask = group->getFullValueShifted();
            const int shift = group->getShift();
            tellPlace(name, group->getTotalBits(), mask, shift);
            tell(name.with(u"MASK"), shiftLeft(mask, shift));
            tell(name.with(u"SHIFT"), static_cast<quint32>(shift));
        }
    }

    void tellField(const VMBitField &field)
    {
        const MacroName name(field.getName());
        const quint32 mask = field.getFullValueShifted();
        const VMBitFieldOptions &options = field.options;
        if (options.hasDefault || options.optionList.isEmpty())
            tellPlace(name, field.getBitSize(), mask, field.downPos);
        if (options.hasMask)
            tell(name.with(u"MASK"), shiftLeft(mask, field.downPos));
        if (options.hasShift)
            tell(name.with(u"SHIFT"), static_cast<quint32>(field.downPos));
        for (const VMBitFieldOption &option : options.optionList)
            tell(name.with(option.name), shiftLeft(static_cast<quint32>(option.value), field.downPos));
    }

    void tellPlace(const MacroName &name, int width, quint32 mask, int shift)
    {
        if (width > 1)
            m_listener(name, {true, mask, shift, m_owner});
        else
            tell(name, shiftLeft(mask, shift));
    }

    void tell(const MacroName &name, quint32 value) { m_listener(name, {false, value, 0, m_owner}); }

    const MacroListener &m_listener;
    const VMValuable *m_owner = nullptr;
    QSet<QString> m_innerTypes;
};

} // namespace

QString MacroName::text() const
{
    const QString field = m_field.toString().toUpper();
    return m_part.isNull() ? field : field + u'_' + m_part.toString().toUpper();
}

void MacroTable::clear()
{
    ++m_round;
    m_used = 0;
}

const FieldMacro *MacroTable::add(const MacroName &name, const FieldMacro &macro)
{
    if (2 * (m_used + 1) > m_rows.size())
        grow();
    Row &row = rowFor(name);
    if (row.round == m_round)
        return &row.macro;
    row = {name, macro, m_round};
    ++m_used;
    return nullptr;
}

/// The row of \a name, or the free one that it would take.
MacroTable::Row &MacroTable::rowFor(const MacroName &name)
{
    const std::size_t last = m_rows.size() - 1;
    std::size_t at = static_cast<std::size_t>(name.hash() ^ (name.hash() >> 32)) & last;
    while (m_rows[at].round == m_round && !(m_rows[at].name == name))
        at = (at + 1) & last;
    return m_rows[at];
}

void MacroTable::grow()
{
    constexpr std::size_t kFewest = 64;
    std::vector<Row> rows(qMax(kFewest, 2 * m_rows.size()));
    rows.swap(m_rows);
    for (const Row &row : rows) {
        if (row.round == m_round)
            rowFor(row.name) = row;
    }
}

void forEachMacro(const VMXMLElement &element, const MacroListener &listener)
{
    MacroWalk(listener).walk(element);
}

} // namespace veldmap

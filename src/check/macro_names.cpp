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
            const QString name = group->name.toUpper();
            const quint32 mask = group->getFullValueShifted();
            const int shift = group->getShift();
            tellPlace(name, group->getTotalBits(), mask, shift);
            tell(name + "_MASK"_L1, shiftLeft(mask, shift));
            tell(name + "_SHIFT"_L1, static_cast<quint32>(shift));
        }
    }

    void tellField(const VMBitField &field)
    {
        const QString name = field.getName().toUpper();
        const quint32 mask = field.getFullValueShifted();
        const VMBitFieldOptions &options = field.options;
        if (options.hasDefault || options.optionList.isEmpty())
            tellPlace(name, field.getBitSize(), mask, field.downPos);
        if (options.hasMask)
            tell(name + "_MASK"_L1, shiftLeft(mask, field.downPos));
        if (options.hasShift)
            tell(name + "_SHIFT"_L1, static_cast<quint32>(field.downPos));
        for (const VMBitFieldOption &option : options.optionList)
            tell(name + u'_' + option.name.toUpper(), shiftLeft(static_cast<quint32>(option.value), field.downPos));
    }

    void tellPlace(const QString &name, int width, quint32 mask, int shift)
    {
        if (width > 1)
            m_listener(name, {true, mask, shift, m_owner});
        else
            tell(name, shiftLeft(mask, shift));
    }

    void tell(const QString &name, quint32 value) { m_listener(name, {false, value, 0, m_owner}); }

    const MacroListener &m_listener;
    const VMValuable *m_owner = nullptr;
    QSet<QString> m_innerTypes;
};

} // namespace

void forEachMacro(const VMXMLElement &element, const MacroListener &listener)
{
    MacroWalk(listener).walk(element);
}

} // namespace veldmap

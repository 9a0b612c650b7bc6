#include "check/c_layout.h"
#include "check/declared.h"
#include "check/tree_groups.h"
#include "check/tree_rules.h"
#include "headers/c_names.h"
#include "model/memory_map.h"
#include "text/lines.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Whether C code says itself how \a element is to be laid out.
bool hasOwnLayout(const VMXMLElement &element)
{
    return std::ranges::any_of(element.cKeywords, [](const QString &keyword) {
        return keyword.contains("pack"_L1) || keyword.contains("align"_L1);
    });
}

/// Whether headers define \a type under a name of modules: HWP_UART_T.
bool isModuleInC(const VMXMLElement &type)
{
    const auto *structure = elementCast<VMStruct>(&type);
    return structure && !structure->isTypedef && structure->declaredType.isEmpty();
}

/// Calls \a take with each name that \a member has in a C structure: a register whose halves have names has three.
template <typename Take>
void forEachName(const VMXMLElement &member, bool withHoles, const Take &take)
{
    if (const auto *hole = elementCast<VMHole>(&member)) {
        if (withHoles && hole->sizeOf() > 0)
            take("Reserved_"_L1 + hex8(hole->offset));
        return;
    }
    if (!member.getName().isEmpty()) // what has no name is told elsewhere
        take(member.getName());
    const auto *array = elementCast<VMArray>(&member);
    const auto *valuable = elementCast<VMValuable>(array ? array->prototype.get() : &member);
    if (valuable && !valuable->lowName.isEmpty() && valuable->getBitSize() != 8) {
        take(valuable->lowName);
        take(valuable->highName);
    }
}

class StructureChecks final : public TypeChecks {
public:
    StructureChecks(const VMRootArchive &root, Sink &sink) : m_types(root), m_layout(m_types), m_sink(sink) {}

    void check(const VMXMLArchive &, const VMXMLElement &type) override
    {
        visitDeclared(type, [this](const auto &element) { (*this)(element); });
    }

    void operator()(const VMStruct &structure)
    {
        if (isCopyOfType(structure)) {
            checkTypeName(structure, "member"_L1, m_types.typeOf(structure), structure.declaredType);
            return;
        }
        checkNames(structure);
        checkLayout(structure);
    }

    void operator()(const VMPointer &pointer)
    {
        const QString &name = pointer.pointedType;
        const VMXMLElement *type = m_types.find(name);
        if (!type && name != kMemoryWord && !scalarKindNamed(name, kPointedType | kFoldedType | kCType))
            take(lint::pointerTypeUnknown, pointer, {declaredPath(pointer), name});
        checkTypeName(pointer, "pointer"_L1, type, name);
    }

    void operator()(const VMHole &hole)
    {
        if (hole.holeBits < 0)
            take(lint::negativeSize, hole,
                 {u"a hole"_s, declaredPath(*hole.parent), QString::number(hole.holeBits), u"bits"_s});
        else if (hole.holeBits % 8 != 0)
            take(lint::holeBits, hole,
                 {QString::number(hole.holeBits), declaredPath(*hole.parent), QString::number(hole.holeBits / 8)});
    }

    void operator()(const VMMemory &memory)
    {
        if (memory.memorySize < 0)
            take(lint::negativeSize, memory,
                 {"memory '"_L1 + memory.getName() + u'\'', declaredPath(*memory.parent),
                  QString::number(memory.memorySize), u"bytes"_s});
    }

    void operator()(const VMXMLElement &) {}

private:
    void checkNames(const VMStruct &structure)
    {
        // Headers name gaps by their offsets, so that they can only be in the way of a member of such a name.
        const bool withHoles = std::ranges::any_of(
            structure.memberList, [](const auto &member) { return member->getName().startsWith("Reserved_"_L1); });
        QHash<QString, const VMXMLElement *> known;
        known.reserve(static_cast<qsizetype>(structure.memberList.size()));
        for (const auto &member : structure.memberList) {
            forEachName(*member, withHoles, [&](const QString &name) {
                const VMXMLElement *&first = known[name];
                if (first)
                    m_sink.take(
                        Finding(lint::memberNameTwice.rule, member->source.place(), {name, declaredPath(structure)})
                            .withPlace(first->source.place(), u"first declared here"_s));
                else
                    first = member.get();
            });
        }
    }

    /// Behind the first member that C places elsewhere all others are likely to be, so it is told alone.
    void checkLayout(const VMStruct &structure)
    {
        const auto isNegative = [](const auto &member) { return member->sizeOf() < 0; };
        bool hasDifference = hasOwnLayout(structure) || std::ranges::any_of(structure.memberList, isNegative);
        const CLayout::Size inC = m_layout.walk(structure, [&](const VMXMLElement &member, qint64 offset) {
            hasDifference = hasDifference || hasOwnLayout(member);
            if (hasDifference || member.offset == offset)
                return;
            hasDifference = true;
            take(lint::layoutDiffers, member,
                 {member.getName(), declaredPath(structure), QString::number(member.offset), QString::number(offset)});
        });
        if (!hasDifference && inC.bytes != structure.sizeOf())
            take(lint::sizeDiffers, structure,
                 {declaredPath(structure), QString::number(structure.sizeOf()), QString::number(inC.bytes)});
    }

    /// A member or pointer of type "uart" is a UART_T in C, also where uart is a module.
    void checkTypeName(const VMXMLElement &element, QLatin1StringView what, const VMXMLElement *type,
                       const QString &name)
    {
        if (!type || !isModuleInC(*type))
            return;
        const QString ofModule = "HWP_"_L1 + type->typedefName.toUpper() + "_T"_L1;
        const QString used = ESDRTypeConvert(what == "member"_L1 ? name.toUpper() : name);
        if (used != ofModule)
            m_sink.take(Finding(lint::moduleTypeName.rule, element.source.place(),
                                {QString(what), declaredPath(element), used, name, ofModule})
                            .withPlace(type->source.place(), u"the module"_s));
    }

    void take(const LintRule &rule, const VMXMLElement &element, const QStringList &arguments)
    {
        m_sink.take(Finding(rule.rule, element.source.place(), arguments));
    }

    TypeNames m_types;
    CLayout m_layout;
    Sink &m_sink;
};

class UsedTypes final : public TypeChecks {
public:
    explicit UsedTypes(QSet<QString> &names) : m_names(names) {}

    void check(const VMXMLArchive &, const VMXMLElement &type) override
    {
        visitDeclared(type, Overloads{[this](const VMPointer &pointer) { m_names += pointer.pointedType; },
                                      [this](const VMXMLElement &element) {
                                          if (isCopyOfType(element))
                                              m_names +=
                                                  element.isRootElement() ? element.declaredType : element.typedefName;
                                      }});
    }

private:
    QSet<QString> &m_names;
};

} // namespace

std::unique_ptr<TypeChecks> structureChecks(const VMRootArchive &root, Sink &sink)
{
    return std::make_unique<StructureChecks>(root, sink);
}

std::unique_ptr<TypeChecks> usedTypes(QSet<QString> &names)
{
    return std::make_unique<UsedTypes>(names);
}

void tellUnusedTypes(const VMRootArchive &root, const QSet<QString> &used, Sink &sink)
{
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const auto &type : archive->templates) {
            const auto *valuable = elementCast<VMValuable>(type.get());
            const bool isEnum = valuable && valuable->enumTemplate; // fields may name it, which no tree shows
            if (!isEnum && !used.contains(type->typedefName))
                sink.take(Finding(lint::unusedType.rule, type->source.place(), {type->typedefName}));
        }
    }
}

} // namespace veldmap

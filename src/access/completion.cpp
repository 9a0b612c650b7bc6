#include "access/completion.h"

#include "access/path_segments.h"
#include "model/aggregates.h"
#include "model/memory_map.h"
#include "model/pointer.h"
#include "model/root_archive.h"

#include <algorithm>
#include <array>
#include <optional>

using namespace Qt::StringLiterals;
using veldmap::Segments;

namespace {

using CompletionList = QMap<QString, CXMLCompletionEntry>;

/// An operation that a console offers on a T, which \a isOffered looks at.
template <typename T>
struct Operation {
    QString name;
    QString arguments;
    QString result;
    bool (*isOffered)(const T &element);
    QString help;
};

template <typename T>
bool always(const T &)
{
    return true;
}
template <typename T>
bool isReadable(const T &element)
{
    return element.readable;
}
template <typename T>
bool isUnreadable(const T &element)
{
    return !element.readable;
}
bool isWritable(const VMValuable &valuable)
{
    return valuable.writable;
}
bool isUnwritable(const VMValuable &valuable)
{
    return !valuable.writable;
}
bool isPointer(const VMValuable &valuable)
{
    return valuable.isPointer();
}
template <int mode>
bool hasWriteMode(const VMBitField &field)
{
    return field.writeMode == mode;
}

// clang-format off

using ValuableOperations = std::array<Operation<VMValuable>, 12>;
const ValuableOperations &valuableOperations()
{
    static const ValuableOperations operations = {{
        {u"doc"_s, {}, u"str"_s, always, u"Returns the documentation of this valuable."_s},
        {u"address"_s, {}, u"val"_s, always, u"Returns the address of the bitfield."_s},
        {u"R"_s, {}, u"val"_s, isReadable,
         u"Reads this valuable and then returns its value. Does not print the result."_s},
        {u"r"_s, {}, u"val"_s, isReadable,
         u"Reads this valuable and then returns its value. Prints the result in hex."_s},
        {u"RF"_s, {}, u"val"_s, isUnreadable,
         u"Forces the reading of this valuable and then returns its value (besides the read protection). Does not "
         u"print the result."_s},
        {u"rf"_s, {}, u"val"_s, isUnreadable,
         u"Forces the reading of this valuable and then returns its value (besides the read protection). Prints the "
         u"result in hex."_s},
        {u"prepl"_s, u"cacheval"_s, u"newcacheval"_s, always,
         u"Modifies a 'cacheval' value, taken as the valuable value, by setting all the set and clear bits to 0. "
         u"Returns the modified value."_s},
        {u"getl"_s, {}, u"val"_s, always, u"Returns the cache value of this valuable."_s},
        {u"setl"_s, u"val"_s, {}, always, u"Sets the cache value of this valuable."_s},
        {u"w"_s, u"value"_s, {}, isWritable, u"Writes 'value' into the valuable."_s},
        {u"wf"_s, u"value"_s, {}, isUnwritable,
         u"Writes 'value' into the valuable (overiding the write protection)."_s},
        {u">"_s, {}, u"value"_s, isPointer,
         u"Dereferences the pointer (reads its value, and returns the element at the pointed address)."_s},
    }};
    return operations;
}

using FieldOperations = std::array<Operation<VMBitField>, 12>;
const FieldOperations &fieldOperations()
{
    static const FieldOperations operations = {{
        {u"address"_s, {}, u"val"_s, always, u"Returns the address of the bitfield."_s},
        {u"doc"_s, {}, u"str"_s, always, u"Returns the documentation of the bitfield."_s},
        {u"R"_s, {}, u"val"_s, isReadable,
         u"Reads the parent register and then returns the value of the bitfield. Does not print the result."_s},
        {u"r"_s, {}, u"val"_s, isReadable,
         u"Reads the parent register and then returns the value of the bitfield. Prints the result in hex."_s},
        {u"RF"_s, {}, u"val"_s, isUnreadable,
         u"Forces the reading of the parent register and then returns the value of the bitfield (besides the read "
         u"protection). Does not print the result."_s},
        {u"rf"_s, {}, u"val"_s, isUnreadable,
         u"Forces the reading of the parent register and then returns the value of the bitfield (besides the read "
         u"protection). Prints the result in hex."_s},
        {u"rl"_s, u"cacheval"_s, u"val"_s, always,
         u"\"Read local\". Returns the value of the bitfield, interpreted from 'cacheval', taken as the parent "
         u"register's value."_s},
        {u"wl"_s, u"cacheval,value"_s, u"newcacheval"_s, always,
         u"\"Write local\". Sets the value of the bitfield inside the 'cacheval', taken as the parent register's "
         u"value. Returns the modified cache."_s},
        {u"w"_s, u"value"_s, {}, hasWriteMode<1>,
         u"Writes 'value' into the bitfield. (It's a read modify write in the parent register, with the clear and set "
         u"bits set to 0 if some exist)."_s},
        {u"wf"_s, u"value"_s, {}, hasWriteMode<0>,
         u"Writes 'value' into the bitfield (overiding the write protection). (It's a read modify write in the parent "
         u"register, with the clear and set bits set to 0 if some exist)."_s},
        {u"set"_s, {}, {}, hasWriteMode<2>, u"Sets the bitfield."_s},
        {u"clear"_s, {}, {}, hasWriteMode<3>, u"Clears the bitfield."_s},
    }};
    return operations;
}

// clang-format on

template <typename T, std::size_t count>
void addOperations(CompletionList &list, const std::array<Operation<T>, count> &operations, const T &element)
{
    for (const Operation<T> &operation : operations) {
        if (operation.isOffered(element))
            list.insert(operation.name, {operation.name, operation.arguments, operation.result, operation.help,
                                         CXMLCompletionEntry::COMPLETION_OPERATION});
    }
}

/// How an element of \a type stands in a list; nothing for one that is not offered.
std::optional<CXMLCompletionEntry::CompletionEntryType> entryTypeOf(VMXMLElement::XMLElementType type)
{
    switch (type) {
    case VMXMLElement::XML_REGISTER32:
        return CXMLCompletionEntry::COMPLETION_REGISTER32;
    case VMXMLElement::XML_REGISTER16:
        return CXMLCompletionEntry::COMPLETION_REGISTER16;
    case VMXMLElement::XML_REGISTER8:
        return CXMLCompletionEntry::COMPLETION_REGISTER8;
    case VMXMLElement::XML_INTERNAL_REGISTER8:
        return CXMLCompletionEntry::COMPLETION_INTERNAL_REGISTER8;
    case VMXMLElement::XML_POINTER:
        return CXMLCompletionEntry::COMPLETION_POINTER;
    case VMXMLElement::XML_INT32:
        return CXMLCompletionEntry::COMPLETION_INT32;
    case VMXMLElement::XML_INT16:
        return CXMLCompletionEntry::COMPLETION_INT16;
    case VMXMLElement::XML_INT8:
        return CXMLCompletionEntry::COMPLETION_INT8;
    case VMXMLElement::XML_UNSIGNED_INT32:
        return CXMLCompletionEntry::COMPLETION_UNSIGNED_INT32;
    case VMXMLElement::XML_UNSIGNED_INT16:
        return CXMLCompletionEntry::COMPLETION_UNSIGNED_INT16;
    case VMXMLElement::XML_UNSIGNED_INT8:
        return CXMLCompletionEntry::COMPLETION_UNSIGNED_INT8;
    case VMXMLElement::XML_BOOLEAN:
        return CXMLCompletionEntry::COMPLETION_BOOLEAN;
    case VMXMLElement::XML_STRUCT:
        return CXMLCompletionEntry::COMPLETION_STRUCT;
    case VMXMLElement::XML_ARRAY:
        return CXMLCompletionEntry::COMPLETION_ARRAY;
    case VMXMLElement::XML_VOID:
        return CXMLCompletionEntry::COMPLETION_NONE;
    case VMXMLElement::XML_HOLE:
    case VMXMLElement::XML_VALUABLE:
    case VMXMLElement::XML_BITFIELD:
    case VMXMLElement::XML_MEMORY:
    case VMXMLElement::XML_ARCHIVE:
    case VMXMLElement::XML_ROOT_ARCHIVE:
        break;
    }
    return std::nullopt;
}

void addInstances(CompletionList &list, const VMRootArchive *root)
{
    if (!root)
        return;
    for (const auto &instance : root->getInstanciatedTemplates()) {
        CXMLCompletionEntry entry = getCompletionEntryFromElement(instance.get());
        if (entry.name.isEmpty())
            continue;
        entry.name = instance->getPath();
        list.insert(entry.name, entry);
    }
}

/// The number of the member that \a token names of the array \a name: its index in brackets behind the name. Nothing
/// when \a token is anything else or the number has no 32 bits.
std::optional<std::size_t> indexOf(QStringView token, QStringView name)
{
    if (!token.startsWith(name) || !token.endsWith(u']'))
        return std::nullopt;
    token = token.sliced(name.size());
    if (token.size() < 3 || token.front() != u'[')
        return std::nullopt;
    quint64 index = 0;
    for (const QChar digit : token.sliced(1).chopped(1)) {
        if (!digit.isDigit())
            return std::nullopt;
        index = 10 * index + static_cast<quint64>(digit.digitValue());
        if (index > 0xFFFFFFFFu)
            return std::nullopt;
    }
    return static_cast<std::size_t>(index);
}

/// What the segment \a name names at \a member of a structure: the member, or for an array one of its members. Null
/// when it names something else.
VMXMLElement *matchOf(VMXMLElement &member, QStringView name)
{
    if (member.getType() == VMXMLElement::XML_HOLE)
        return nullptr;
    const auto *array = elementCast<VMArray>(&member);
    if (!array)
        return member.getName() == name ? &member : nullptr;
    const std::optional<std::size_t> index = indexOf(name, array->getName());
    return index && *index < array->memberList.size() ? array->memberList[*index].get() : nullptr;
}

CompletionList listOf(VMXMLElement &element, Segments segments);

CompletionList listOfField(const VMBitField &field, Segments segments)
{
    CompletionList list;
    if (segments.size() == 1)
        addOperations(list, fieldOperations(), field);
    return list;
}

CompletionList listOfValuable(VMValuable &valuable, Segments segments)
{
    CompletionList list;
    if (segments.size() == 1) {
        for (const auto &field : valuable.bitFields)
            list.insert(field->getName(),
                        {field->getName(), {}, {}, field->getComment(), CXMLCompletionEntry::COMPLETION_BITFIELD});
        addOperations(list, valuableOperations(), valuable);
        return list;
    }
    const auto isNamed = [&](const auto &field) { return field->getName() == segments.front(); };
    const auto field = std::ranges::find_if(valuable.bitFields, isNamed);
    if (field != valuable.bitFields.end())
        return listOfField(**field, segments.subspan(1));
    auto *pointer = elementCast<VMPointer>(&valuable);
    if (!pointer || segments.front() != u'>')
        return list;
    pointer->allocatePointedElement();
    return pointer->pointedElement ? listOf(*pointer->pointedElement, segments.subspan(1)) : list;
}

CompletionList listOfStruct(const VMStruct &structure, Segments segments)
{
    CompletionList list;
    for (const auto &member : structure.memberList) {
        if (segments.size() == 1) {
            const CXMLCompletionEntry entry = getCompletionEntryFromElement(member.get());
            if (!entry.name.isEmpty())
                list.insert(entry.name, entry);
        } else if (VMXMLElement *match = matchOf(*member, segments.front())) {
            return listOf(*match, segments.subspan(1));
        }
    }
    return list;
}

/// What may stand behind \a element, in the place of the last of \a segments.
CompletionList listOf(VMXMLElement &element, Segments segments)
{
    if (segments.empty())
        return {};
    if (auto *valuable = elementCast<VMValuable>(&element))
        return listOfValuable(*valuable, segments);
    if (const auto *structure = elementCast<VMStruct>(&element))
        return listOfStruct(*structure, segments);
    if (const auto *field = elementCast<VMBitField>(&element))
        return listOfField(*field, segments);
    return {};
}

CompletionList listOf(VMXMLElement &element, const QStringList &tokens)
{
    return listOf(element, veldmap::segmentsOf(tokens));
}

} // namespace

CXMLCompletionEntry getCompletionEntryFromElement(const VMXMLElement *element)
{
    const auto type = element ? entryTypeOf(element->getType()) : std::nullopt;
    if (!type)
        return {};
    return {element->getName(), {}, {}, element->getComment(), *type};
}

CompletionList VMMemoryMap::getCompletionListFromPath(const QString &path) const
{
    const QList<QStringView> segments = veldmap::segmentsOf(path);
    CompletionList list;
    if (segments.size() == 1) {
        addInstances(list, chipRootArchive);
        addInstances(list, softRootArchive);
    }
    if (segments.size() < 2 || !segments.front().startsWith(u'$'))
        return list;
    const QStringView name = segments.front().sliced(1);
    for (const VMRootArchive *root : {chipRootArchive, softRootArchive}) {
        if (!root)
            continue;
        const auto &instances = root->getInstanciatedTemplates();
        const auto found = std::ranges::find_if(instances, [name](const auto &i) { return i->getName() == name; });
        if (found != instances.end())
            list = listOf(**found, Segments(segments).subspan(1));
    }
    return list;
}

CompletionList VMXMLElement::getCompletionListFromTokens(const QStringList &)
{
    return {};
}

CompletionList VMBitField::getCompletionListFromTokens(const QStringList &tokens)
{
    return listOf(*this, tokens);
}

CompletionList VMValuable::getCompletionListFromTokens(const QStringList &tokens)
{
    return listOf(*this, tokens);
}

CompletionList VMStruct::getCompletionListFromTokens(const QStringList &tokens)
{
    return listOf(*this, tokens);
}

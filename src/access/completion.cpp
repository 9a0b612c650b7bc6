#include "access/completion.h"

#include "access/path_segments.h"
#include "model/memory_map.h"
#include "model/visit.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

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

/// How an element stands in a list; nothing for one that is not offered. The numbers of completion are those of the
/// kinds without that of an unfinished valuable.
struct EntryTypeOf {
    using EntryType = CXMLCompletionEntry::CompletionEntryType;

    std::optional<EntryType> operator()(const VMVoid &) const { return CXMLCompletionEntry::COMPLETION_NONE; }
    std::optional<EntryType> operator()(const VMValuable &valuable) const { return numberOf(valuable); }
    std::optional<EntryType> operator()(const VMStruct &structure) const { return numberOf(structure); }
    std::optional<EntryType> operator()(const VMArray &array) const { return numberOf(array); }
    std::optional<EntryType> operator()(const VMXMLElement &) const { return std::nullopt; }

    static EntryType numberOf(const VMXMLElement &element) { return static_cast<EntryType>(element.getType() - 1); }
};
static_assert(VMXMLElement::XML_REGISTER32 - 1 == CXMLCompletionEntry::COMPLETION_REGISTER32);
static_assert(VMXMLElement::XML_POINTER - 1 == CXMLCompletionEntry::COMPLETION_POINTER);
static_assert(VMXMLElement::XML_BOOLEAN - 1 == CXMLCompletionEntry::COMPLETION_BOOLEAN);
static_assert(VMXMLElement::XML_ARRAY - 1 == CXMLCompletionEntry::COMPLETION_ARRAY);

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

/// The element that a segment names behind another one, null when it names none. May make the one behind a pointer.
struct StepTo {
    QStringView segment;

    VMXMLElement *operator()(VMStruct &structure) const
    {
        for (const auto &member : structure.memberList) {
            if (VMXMLElement *match = matchOf(*member, segment))
                return match;
        }
        return nullptr;
    }

    VMXMLElement *operator()(VMValuable &valuable) const
    {
        const auto isNamed = [&](const auto &field) { return field->getName() == segment; };
        const auto field = std::ranges::find_if(valuable.bitFields, isNamed);
        return field == valuable.bitFields.end() ? nullptr : field->get();
    }

    VMXMLElement *operator()(VMPointer &pointer) const
    {
        if (VMXMLElement *field = (*this)(static_cast<VMValuable &>(pointer)))
            return field;
        if (segment != u'>')
            return nullptr;
        pointer.allocatePointedElement();
        return pointer.pointedElement.get();
    }

    VMXMLElement *operator()(VMXMLElement &) const { return nullptr; }
};

/// All that may stand directly behind an element.
struct ListOf {
    CompletionList operator()(const VMStruct &structure) const
    {
        CompletionList list;
        for (const auto &member : structure.memberList) {
            const CXMLCompletionEntry entry = getCompletionEntryFromElement(member.get());
            if (!entry.name.isEmpty())
                list.insert(entry.name, entry);
        }
        return list;
    }

    CompletionList operator()(const VMValuable &valuable) const
    {
        CompletionList list;
        for (const auto &field : valuable.bitFields)
            list.insert(field->getName(),
                        {field->getName(), {}, {}, field->getComment(), CXMLCompletionEntry::COMPLETION_BITFIELD});
        addOperations(list, valuableOperations(), valuable);
        return list;
    }

    CompletionList operator()(const VMBitField &field) const
    {
        CompletionList list;
        addOperations(list, fieldOperations(), field);
        return list;
    }

    CompletionList operator()(const VMXMLElement &) const { return {}; }
};

/// What may stand behind \a first in the place of the last of \a segments. A loop, since chains of pointers may be
/// followed for thousands of segments.
CompletionList listBehind(VMXMLElement &first, Segments segments)
{
    VMXMLElement *element = &first;
    for (; element && segments.size() > 1; segments = segments.subspan(1))
        element = veldmap::visit(*element, StepTo{segments.front()});
    return element && !segments.empty() ? veldmap::visit(std::as_const(*element), ListOf()) : CompletionList();
}

} // namespace

CXMLCompletionEntry getCompletionEntryFromElement(const VMXMLElement *element)
{
    const auto type = element ? veldmap::visit(*element, EntryTypeOf()) : std::nullopt;
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
            list = listBehind(**found, Segments(segments).subspan(1));
    }
    return list;
}

CompletionList VMXMLElement::getCompletionListFromTokens(const QStringList &tokens)
{
    return listBehind(*this, veldmap::segmentsOf(tokens));
}

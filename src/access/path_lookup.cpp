#include "access/path_segments.h"
#include "model/aggregates.h"
#include "model/memory_map.h"
#include "model/pointer.h"
#include "model/root_archive.h"

using namespace Qt::StringLiterals;
using veldmap::Segments;

// $top.table[3].val: a path is what getPath writes. Each element answers for its own name, the first segment, and
// passes what follows to those inside it; the first that answers wins.

namespace {

VMXMLElement *find(VMXMLElement &element, QStringView name, Segments rest);

/// The first answer of \a members to a path that goes on with \a name and \a rest, or null.
VMXMLElement *findAmong(const std::vector<std::unique_ptr<VMXMLElement>> &members, QStringView name, Segments rest)
{
    for (const auto &member : members) {
        if (VMXMLElement *found = find(*member, name, rest))
            return found;
    }
    return nullptr;
}

/// A valuable looks at one segment behind its own and ignores the others.
VMXMLElement *findIn(VMValuable &valuable, Segments rest)
{
    const auto isNamed = [&](const auto &field) { return field->getName() == rest.front(); };
    const auto found = std::ranges::find_if(valuable.bitFields, isNamed);
    return found == valuable.bitFields.end() ? nullptr : found->get();
}

/// Behind a pointer ">" is what it points to, ">[3]" a member of that. No path leads to the bitfields of a pointer.
VMXMLElement *findBehind(VMPointer &pointer, Segments rest)
{
    const QStringView step = rest.front();
    const bool isElement = step == u'>';
    if (!isElement && !step.startsWith(">["_L1))
        return nullptr;
    pointer.allocatePointedElement();
    VMXMLElement *pointed = pointer.pointedElement.get();
    if (!pointed || (isElement && rest.size() == 1))
        return pointed;
    // The pointed element knows itself by its own name, and its members by that name and an index.
    const QString name = pointed->getName() + step.sliced(1).toString();
    return find(*pointed, name, rest.subspan(1));
}

/// The answer of \a element to a path that goes on with \a name and \a rest.
VMXMLElement *find(VMXMLElement &element, QStringView name, Segments rest)
{
    if (auto *array = elementCast<VMArray>(&element)) // which looks no further when it knows its name
        return array->getName() == name ? array : findAmong(array->memberList, name, rest);
    const bool hasInside = element.isValuable() || element.isStruct();
    if ((!rest.empty() && !hasInside) || element.getName() != name)
        return nullptr;
    if (rest.empty())
        return &element;
    if (auto *structure = elementCast<VMStruct>(&element))
        return findAmong(structure->memberList, rest.front(), rest.subspan(1));
    if (auto *pointer = elementCast<VMPointer>(&element))
        return findBehind(*pointer, rest);
    return findIn(static_cast<VMValuable &>(element), rest);
}

VMXMLElement *find(VMXMLElement &element, const QStringList &tokens)
{
    if (tokens.isEmpty())
        return nullptr;
    const QList<QStringView> segments = veldmap::segmentsOf(tokens);
    return find(element, segments.front(), Segments(segments).subspan(1));
}

} // namespace

VMXMLElement *VMMemoryMap::getElementFromPath(const QString &path) const
{
    const QList<QStringView> segments = veldmap::segmentsOf(path);
    if (segments.isEmpty() || !segments.front().startsWith(u'$'))
        return nullptr;
    const QStringView name = segments.front().sliced(1);
    const Segments rest = Segments(segments).subspan(1);
    for (const VMRootArchive *root : {chipRootArchive, softRootArchive}) {
        if (!root)
            continue;
        for (const auto &instance : root->getInstanciatedTemplates()) {
            // A path of one segment is that of an instance itself.
            VMXMLElement *found =
                rest.empty() ? (instance->getPath() == path ? instance.get() : nullptr) : find(*instance, name, rest);
            if (found)
                return found;
        }
    }
    return nullptr;
}

VMXMLElement *VMXMLElement::getElementFromPathTokens(const QStringList &tokens)
{
    return find(*this, tokens);
}

VMXMLElement *VMValuable::getElementFromPathTokens(const QStringList &tokens)
{
    return find(*this, tokens);
}

VMXMLElement *VMArray::getElementFromPathTokens(const QStringList &tokens)
{
    return find(*this, tokens);
}

VMXMLElement *VMStruct::getElementFromPathTokens(const QStringList &tokens)
{
    return find(*this, tokens);
}

VMXMLElement *VMPointer::getElementFromPathTokens(const QStringList &tokens)
{
    return find(*this, tokens);
}

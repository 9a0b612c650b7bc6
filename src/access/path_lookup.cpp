#include "access/path_segments.h"
#include "model/aggregates.h"
#include "model/memory_map.h"
#include "model/pointer.h"
#include "model/root_archive.h"

#include <algorithm>

using namespace Qt::StringLiterals;

// $top.table[3].val: a path is what getPath writes. Each element answers for its own name, the first token, and passes
// what follows to those inside it; the first that answers wins.

namespace {

/// The first answer of \a members to \a tokens, or null.
VMXMLElement *firstAnswer(const std::vector<std::unique_ptr<VMXMLElement>> &members, const QStringList &tokens)
{
    for (const auto &member : members) {
        if (VMXMLElement *found = member->getElementFromPathTokens(tokens))
            return found;
    }
    return nullptr;
}

/// The first of the top-level instances of the chip, then of the software, that \a find makes an element of.
template <typename Find>
VMXMLElement *findAmongInstances(const VMMemoryMap &map, const Find &find)
{
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (!root)
            continue;
        for (const auto &instance : root->getInstanciatedTemplates()) {
            if (VMXMLElement *found = find(*instance))
                return found;
        }
    }
    return nullptr;
}

} // namespace

VMXMLElement *VMMemoryMap::getElementFromPath(const QString &path) const
{
    QStringList tokens = veldmap::pathSegments(path);
    if (tokens.isEmpty())
        return nullptr;
    if (tokens.size() == 1)
        return findAmongInstances(
            *this, [&](VMXMLElement &instance) { return instance.getPath() == path ? &instance : nullptr; });
    if (!tokens.first().startsWith(u'$'))
        return nullptr;
    tokens.first().remove(0, 1);
    return findAmongInstances(*this, [&](VMXMLElement &instance) { return instance.getElementFromPathTokens(tokens); });
}

VMXMLElement *VMXMLElement::getElementFromPathTokens(const QStringList &tokens)
{
    return tokens.size() == 1 && getName() == tokens.first() ? this : nullptr;
}

VMXMLElement *VMValuable::getElementFromPathTokens(const QStringList &tokens)
{
    if (tokens.isEmpty() || getName() != tokens.first())
        return nullptr;
    return tokens.size() == 1 ? this : static_cast<VMXMLElement *>(getBitFieldByName(tokens.at(1)));
}

VMXMLElement *VMArray::getElementFromPathTokens(const QStringList &tokens)
{
    if (tokens.isEmpty())
        return nullptr;
    return getName() == tokens.first() ? this : firstAnswer(memberList, tokens);
}

VMXMLElement *VMStruct::getElementFromPathTokens(const QStringList &tokens)
{
    if (tokens.isEmpty() || getName() != tokens.first())
        return nullptr;
    return tokens.size() == 1 ? this : firstAnswer(memberList, tokens.sliced(1));
}

VMXMLElement *VMPointer::getElementFromPathTokens(const QStringList &tokens)
{
    if (tokens.isEmpty() || getName() != tokens.first())
        return nullptr;
    if (tokens.size() == 1)
        return this;
    const QString &step = tokens.at(1); // ">" or ">[3]"
    const bool isElement = step == u'>';
    if (!isElement && !step.startsWith(">["_L1))
        return nullptr;
    allocatePointedElement();
    if (!pointedElement)
        return nullptr;
    if (isElement && tokens.size() == 2)
        return pointedElement.get();
    // The pointed element knows itself by its own name, and its members by that name and an index.
    QStringList rest = tokens.sliced(1);
    rest.first() = pointedElement->getName() + step.sliced(1);
    return pointedElement->getElementFromPathTokens(rest);
}

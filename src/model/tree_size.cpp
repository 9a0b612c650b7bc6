#include "model/tree_size.h"

#include "model/visit.h"

namespace veldmap {

namespace {

struct SizeOf {
    TreeSize operator()(const VMValuable &valuable) const
    {
        TreeSize size;
        size.elements += static_cast<qint64>(valuable.bitFields.size());
        for (const auto &group : valuable.bitGroups)
            size.elements += 1 + group->size();
        return size;
    }

    TreeSize operator()(const VMArray &array) const
    {
        TreeSize size;
        const TreeSize member = treeSizeOf(*array.prototype);
        size.elements += member.elements * (1 + qint64(array.count()));
        size.depth += member.depth;
        size.path = member.path;
        return size;
    }

    TreeSize operator()(const VMStruct &structure) const
    {
        TreeSize size;
        int deepest = 0;
        for (const auto &child : structure.memberList) {
            const TreeSize member = treeSizeOf(*child);
            size.elements += member.elements;
            deepest = qMax(deepest, member.depth);
            size.path = qMax(size.path, member.path + child->getName().size());
        }
        size.depth += deepest;
        return size;
    }

    TreeSize operator()(const VMXMLElement &) const { return {}; }
};

} // namespace

TreeSize treeSizeOf(const VMXMLElement &element)
{
    return visit(element, SizeOf());
}

} // namespace veldmap

#include "model/tree_size.h"

#include "model/aggregates.h"
#include "model/valuable.h"

namespace veldmap {

TreeSize treeSizeOf(const VMXMLElement &element)
{
    TreeSize size;
    if (const auto *valuable = elementCast<VMValuable>(&element)) {
        size.elements += static_cast<qint64>(valuable->bitFields.size());
        for (const auto &group : valuable->bitGroups)
            size.elements += group->size();
    } else if (const auto *array = elementCast<VMArray>(&element)) {
        const TreeSize member = treeSizeOf(*array->prototype);
        size.elements += member.elements * (1 + qint64(array->count()));
        size.depth += member.depth;
    } else if (const auto *structure = elementCast<VMStruct>(&element)) {
        int deepest = 0;
        for (const auto &child : structure->memberList) {
            const TreeSize member = treeSizeOf(*child);
            size.elements += member.elements;
            deepest = qMax(deepest, member.depth);
        }
        size.depth += deepest;
    }
    return size;
}

} // namespace veldmap

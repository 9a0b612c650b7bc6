#include "model/scalars.h"

#include "model/kinds.h"

QString scalarTypeWord(VMXMLElement::XMLElementType type)
{
    const veldmap::ScalarKind *kind = veldmap::scalarKindOf(type);
    if (!kind)
        return {};
    // The words of the table last as long as the library: no copy is needed.
    return QString::fromRawData(kind->typeWord.data(), kind->typeWord.size());
}

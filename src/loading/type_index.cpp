#include "loading/type_index.h"

namespace veldmap {

void TypeIndex::add(Place place, VMXMLElement &element)
{
    const QString word = element.getTypeString();
    addRow({place, &element}, word);
    if (element.typedefName != word)
        addRow({place, &element}, element.typedefName);
}

VMXMLElement *TypeIndex::find(const QString &name) const
{
    const auto row = m_first.constFind(name);
    return row == m_first.cend() ? nullptr : row->element;
}

// An archive that includes others adds types in front of theirs.
void TypeIndex::addRow(const Row &row, const QString &name)
{
    const auto known = m_first.find(name);
    if (known == m_first.end())
        m_first.insert(name, row);
    else if (row.place < known->place)
        *known = row;
}

} // namespace veldmap

#include "model/type_index.h"

#include "model/aggregates.h"

#include <algorithm>

namespace veldmap {

namespace {

/// Whether the type word of \a element depends on what a pointer points to. An alias gives a name to the pointer or
/// array itself, which doesn't change its type word.
bool hasChangeableWord(const VMXMLElement *element)
{
    while (const auto *array = elementCast<VMArray>(element))
        element = array->prototype.get();
    return element->isPointer();
}

} // namespace

void TypeIndex::add(Place place, VMXMLElement *element, bool byTypedefName)
{
    const Row row = {place, element};
    const bool changeable = hasChangeableWord(element);
    const QString word = changeable ? QString() : element->getTypeString();
    if (changeable)
        m_changeable.push_back(row);
    else
        m_rows[word].push_back(row);
    if (byTypedefName && (changeable || element->typedefName != word))
        m_rows[element->typedefName].push_back(row);
}

VMXMLElement *TypeIndex::findFirst(const QString &word) const
{
    const std::vector<Row> rows = rowsOf(word);
    return rows.empty() ? nullptr : rows.front().element;
}

QList<VMXMLElement *> TypeIndex::findAll(const QString &word) const
{
    QList<VMXMLElement *> elements;
    for (const Row &row : rowsOf(word))
        elements += row.element;
    return elements;
}

void TypeIndex::clear()
{
    m_rows.clear();
    m_changeable.clear();
}

std::vector<TypeIndex::Row> TypeIndex::rowsOf(const QString &word) const
{
    std::vector<Row> rows = m_rows.value(word);
    std::ranges::copy_if(m_changeable, std::back_inserter(rows),
                         [&](const Row &row) { return row.element->getTypeString() == word; });
    std::ranges::sort(rows);
    return rows;
}

} // namespace veldmap

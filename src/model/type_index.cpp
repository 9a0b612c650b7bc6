#include "model/type_index.h"

#include <algorithm>
#include <utility>

namespace veldmap {

void TypeIndex::add(Place place, VMXMLElement *element, bool byTypedefName)
{
    m_added.push_back({place, element, byTypedefName});
    if (!m_isStale)
        addWords(m_added.back());
}

VMXMLElement *TypeIndex::findFirst(const QString &word) const
{
    refresh();
    const auto rows = m_rows.constFind(word);
    return rows == m_rows.cend() || rows->empty() ? nullptr : rows->front().element;
}

QList<VMXMLElement *> TypeIndex::findAll(const QString &word) const
{
    refresh();
    QList<VMXMLElement *> elements;
    const auto rows = m_rows.constFind(word);
    if (rows == m_rows.cend())
        return elements;
    for (const Row &row : *rows)
        elements += row.element;
    return elements;
}

void TypeIndex::removeArchive(std::size_t archive)
{
    std::erase_if(m_added, [archive](const Row &row) { return row.place.archive == archive; });
    m_isStale = true;
}

void TypeIndex::clear()
{
    m_added.clear();
    m_rows.clear();
    m_isStale = false;
}

void TypeIndex::addRow(const Row &row, const QString &word) const
{
    std::vector<Row> &rows = m_rows[word];
    // Nearly always at the end: only an archive that includes others adds types in front of theirs.
    const auto place = std::ranges::upper_bound(rows, row.place, {}, &Row::place);
    rows.insert(place, row);
}

void TypeIndex::addWords(const Row &row) const
{
    const QString word = row.element->getTypeString();
    addRow(row, word);
    if (row.byTypedefName && row.element->typedefName != word)
        addRow(row, row.element->typedefName);
}

void TypeIndex::refresh() const
{
    if (!std::exchange(m_isStale, false))
        return;
    m_rows.clear();
    for (const Row &row : m_added)
        addWords(row);
}

} // namespace veldmap

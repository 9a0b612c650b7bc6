#include "loading/visibility.h"

namespace veldmap {

void Visibility::add(std::size_t number)
{
    if (number >= m_rows.size())
        m_rows.resize(number + 1);
    m_rows[number].isThere = true;
}

void Visibility::close(std::size_t number)
{
    if (number < m_rows.size())
        m_rows[number].isOpen = false;
}

void Visibility::addInclude(std::size_t archive, std::size_t included)
{
    if (!isKnown(archive))
        return;
    Row &row = m_rows[archive];
    row.isSure = isKnown(included) && !m_rows[included].isOpen;
    if (!row.isSure)
        return;
    const std::vector<quint64> &others = m_rows[included].seen;
    const std::size_t words = qMax(others.size(), included / kBits + 1);
    if (row.seen.size() < words)
        row.seen.resize(words);
    for (std::size_t word = 0; word < others.size(); ++word)
        row.seen[word] |= others[word];
    row.seen[included / kBits] |= quint64(1) << included % kBits;
}

bool Visibility::isKnown(std::size_t archive) const
{
    return archive < m_rows.size() && m_rows[archive].isThere && m_rows[archive].isSure;
}

bool Visibility::sees(std::size_t archive, std::size_t other) const
{
    const std::vector<quint64> &seen = m_rows[archive].seen;
    return other / kBits < seen.size() && (seen[other / kBits] >> other % kBits & 1u) != 0;
}

} // namespace veldmap

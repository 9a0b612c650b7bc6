#include "model/visibility.h"

#include <algorithm>
#include <utility>

namespace veldmap {

namespace {

void addOnce(std::vector<std::size_t> &numbers, std::size_t number)
{
    if (std::ranges::find(numbers, number) == numbers.end())
        numbers.push_back(number);
}

void addBits(std::vector<quint64> &bits, const std::vector<quint64> &others)
{
    if (bits.size() < others.size())
        bits.resize(others.size());
    for (std::size_t word = 0; word < others.size(); ++word)
        bits[word] |= others[word];
}

} // namespace

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

void Visibility::mark(Row &row, std::size_t number)
{
    if (row.seen.size() <= number / kBits)
        row.seen.resize(number / kBits + 1);
    row.seen[number / kBits] |= quint64(1) << number % kBits;
}

void Visibility::addInclude(std::size_t archive, std::size_t included)
{
    m_isSure = m_isSure && isKnown(archive) && isKnown(included);
    if (!m_isSure)
        return;
    Row &row = m_rows[archive];
    mark(row, included);
    if (included == archive)
        return;
    if (m_rows[included].isOpen) {
        addOnce(row.opens, included);
        return;
    }
    settle(included);
    addBits(row.seen, m_rows[included].seen);
    for (const std::size_t open : m_rows[included].opens) {
        if (open != archive)
            addOnce(row.opens, open);
    }
}

/// Takes over what archives see that were open and have been closed since.
void Visibility::settle(std::size_t archive)
{
    Row &row = m_rows[archive];
    std::vector<std::size_t> met = std::exchange(row.opens, {});
    for (std::size_t at = 0; at < met.size(); ++at) {
        const Row &other = m_rows[met[at]];
        if (other.isOpen) {
            row.opens.push_back(met[at]);
            continue;
        }
        addBits(row.seen, other.seen);
        for (const std::size_t further : other.opens) {
            if (further != archive)
                addOnce(met, further);
        }
    }
}

bool Visibility::isKnown(std::size_t archive) const
{
    return m_isSure && archive < m_rows.size() && m_rows[archive].isThere;
}

/// Whether \a visit holds for \a archive, or else for one that was open when it was seen from there.
template <typename Visit>
bool Visibility::visitRows(std::size_t archive, const Visit &visit) const
{
    if (m_rows[archive].opens.empty())
        return visit(m_rows[archive]);
    std::vector<std::size_t> met = {archive};
    for (std::size_t at = 0; at < met.size(); ++at) {
        if (visit(m_rows[met[at]]))
            return true;
        for (const std::size_t open : m_rows[met[at]].opens)
            addOnce(met, open);
    }
    return false;
}

bool Visibility::sees(std::size_t archive, std::size_t other) const
{
    return visitRows(archive, [other](const Row &row) {
        return other / kBits < row.seen.size() && (row.seen[other / kBits] >> other % kBits & 1u) != 0;
    });
}

bool Visibility::isFinal(std::size_t archive) const
{
    return !sees(archive, archive) && !visitRows(archive, [](const Row &row) { return row.isOpen; });
}

} // namespace veldmap

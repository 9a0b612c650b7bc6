#pragma once

#include <QHash>
#include <QVarLengthArray>

#include <algorithm>

namespace veldmap {

/// Finds what is repeated in one list, most of which are short: these are compared one by one, which needs no memory.
template <typename Key>
class Repeats {
public:
    /// Takes the next entry; the place of the first equal one in front of it, counted from 0, or -1.
    qsizetype add(const Key &key)
    {
        const qsizetype place = m_size++;
        if (place < kShort) {
            const auto same = std::ranges::find(m_first, key);
            const qsizetype first = same == m_first.end() ? -1 : same - m_first.begin();
            m_first.append(key);
            return first;
        }
        if (m_all.isEmpty()) {
            for (qsizetype at = kShort - 1; at >= 0; --at)
                m_all.insert(m_first[at], at); // of equal ones the first stays
        }
        const auto same = m_all.constFind(key);
        if (same != m_all.cend())
            return *same;
        m_all.insert(key, place);
        return -1;
    }

private:
    static constexpr qsizetype kShort = 8;

    qsizetype m_size = 0;
    QVarLengthArray<Key, kShort> m_first;
    QHash<Key, qsizetype> m_all; // from the ninth entry on
};

} // namespace veldmap

#include "text/nearest_name.h"

#include <algorithm>
#include <vector>

namespace veldmap {

int spellingDistance(QStringView one, QStringView other, int most)
{
    if (qAbs(one.size() - other.size()) > most)
        return most + 1;
    const auto columns = static_cast<std::size_t>(other.size()) + 1;
    std::vector<int> beforeLast(columns);
    std::vector<int> last(columns);
    std::vector<int> row(columns);
    for (std::size_t at = 0; at < columns; ++at)
        last[at] = static_cast<int>(at);
    const auto letter = [](QStringView text, std::size_t at) {
        return text[static_cast<qsizetype>(at)].toCaseFolded();
    };
    for (std::size_t i = 1; i <= static_cast<std::size_t>(one.size()); ++i) {
        row[0] = static_cast<int>(i);
        for (std::size_t j = 1; j < columns; ++j) {
            const bool isSame = letter(one, i - 1) == letter(other, j - 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && letter(one, i - 1) == letter(other, j - 2) &&
                letter(one, i - 2) == letter(other, j - 1))
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        std::swap(beforeLast, last);
        std::swap(last, row);
    }
    return std::min(last.back(), most + 1);
}

void NearestName::offer(const QString &name)
{
    const int distance = spellingDistance(m_word, name, m_distance);
    if (distance >= m_distance)
        return;
    m_distance = distance;
    m_name = name;
}

} // namespace veldmap

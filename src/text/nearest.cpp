#include "text/nearest.h"

#include <algorithm>
#include <vector>

namespace veldmap {

namespace {

constexpr qsizetype kLongestWord = 64;

/// How many single changes lead from \a from to \a to. Neither is longer than kLongestWord.
int editDistance(QStringView from, QStringView to)
{
    // Three rows of the table of distances between beginnings: this one, the one above, and the one above that, which a
    // swap of neighbours comes from.
    std::vector<int> row(static_cast<std::size_t>(to.size()) + 1);
    for (std::size_t column = 0; column < row.size(); ++column)
        row[column] = static_cast<int>(column);
    std::vector<int> above = row;
    std::vector<int> twoAbove = row;
    for (qsizetype i = 0; i < from.size(); ++i) {
        twoAbove.swap(above);
        above.swap(row);
        row[0] = static_cast<int>(i) + 1;
        for (qsizetype j = 0; j < to.size(); ++j) {
            const auto column = static_cast<std::size_t>(j);
            const int replaced = above[column] + (from[i] == to[j] ? 0 : 1);
            row[column + 1] = std::min({replaced, row[column] + 1, above[column + 1] + 1});
            if (i > 0 && j > 0 && from[i] == to[j - 1] && from[i - 1] == to[j])
                row[column + 1] = std::min(row[column + 1], twoAbove[column - 1] + 1);
        }
    }
    return row.back();
}

} // namespace

QString nearestName(QStringView word, const QStringList &names)
{
    if (word.size() > kLongestWord)
        return {};
    const QString lower = word.toString().toLower();
    const int most = qMax(1, static_cast<int>(word.size()) / 3);
    int leastDistance = most + 1;
    QString nearest;
    for (const QString &name : names) {
        if (qAbs(name.size() - word.size()) > most)
            continue;
        const QString lowerName = name.toLower();
        // A word of one or two letters is near to every other one.
        const int distance = lowerName == lower                   ? 0
                             : qMin(word.size(), name.size()) < 3 ? most + 1
                                                                  : editDistance(lower, lowerName);
        if (distance < leastDistance) {
            leastDistance = distance;
            nearest = name;
        }
    }
    return nearest;
}

} // namespace veldmap

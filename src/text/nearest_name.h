#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

namespace veldmap {

/// How many letters have to be put in, left out, changed or swapped with their neighbour to make \a one of \a other,
/// whatever their case; more than \a most is \a most + 1. Names are short: the time grows with the product of lengths.
int spellingDistance(QStringView one, QStringView other, int most);

/// Keeps the name that is spelt most like a word. Of equally near ones the first stays.
class NearestName {
public:
    explicit NearestName(QStringView word)
        : m_word(word.first(qMin<qsizetype>(word.size(), 64))), m_distance(word.size() < 2   ? 1
                                                                           : word.size() < 4 ? 2
                                                                                             : 3)
    {
    }

    VELDMAP_EXPORT void offer(const QString &name);
    /// Null when none is near enough to be meant.
    const QString &name() const { return m_name; }

private:
    QStringView m_word;
    int m_distance; // what is nearer is taken
    QString m_name;
};

} // namespace veldmap

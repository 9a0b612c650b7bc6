#pragma once

#include <QString>

#include <vector>

namespace veldmap {

/// Lets equal texts of a load be one: a description repeats most of its names, positions and comments.
///
/// It knows a bounded number of texts, in places that their hashes choose; a text takes the place of another one. So it
/// is no slower for a description of any size, and keeps at most some hundred kilobytes besides what the tree has.
class SharedTexts {
public:
    /// A text that is equal to \a text: one that is known, or a new one without spare room.
    QString of(QStringView text);
    QString of(QString text);
    /// The same of the legal identifier that \a text is made.
    QString ofName(QStringView text);

    /// The characters of all texts that were new.
    qint64 characters() const { return m_characters; }

private:
    QString &placeOf(QStringView text);
    void grow();

    std::vector<QString> m_places; // their number is a power of two, or 0
    std::size_t m_misses = 0;      // since it has this size
    qint64 m_characters = 0;
};

} // namespace veldmap

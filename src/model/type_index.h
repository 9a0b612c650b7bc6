#pragma once

#include "model/element.h"

#include <QHash>

#include <compare>
#include <vector>

namespace veldmap {

/// Finds the elements of a list by their type word, with the answer that walking the list would give.
///
/// Owns nothing. The type word of a pointer, and so of an array of pointers, changes when it gets or loses its pointed
/// element; the index is then built anew from invalidate() on.
class TypeIndex {
public:
    /// Where an element stands: the number of its archive, and its place there.
    struct Place {
        std::size_t archive;
        std::size_t position;
        auto operator<=>(const Place &) const = default;
    };

    /// Adds \a element, to be found under its type word and, if \a byTypedefName, under its typedef name too.
    void add(Place place, VMXMLElement *element, bool byTypedefName);
    /// The first element with the type word \a word, or null.
    VMXMLElement *findFirst(const QString &word) const;
    /// All elements with the type word \a word, in order.
    QList<VMXMLElement *> findAll(const QString &word) const;
    /// Forgets the elements of the archive of that number.
    void removeArchive(std::size_t archive);
    /// The type words are no longer those that the elements were added with.
    void invalidate() { m_isStale = true; }
    void clear();

private:
    struct Row {
        Place place;
        VMXMLElement *element;
        bool byTypedefName;
    };
    void addRow(const Row &row, const QString &word) const;
    void addWords(const Row &row) const;
    void refresh() const;

    std::vector<Row> m_added;                        // in the order of adding
    mutable QHash<QString, std::vector<Row>> m_rows; // each list in the order of the places
    mutable bool m_isStale = false;
};

} // namespace veldmap

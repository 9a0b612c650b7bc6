#pragma once

#include "model/element.h"

#include <QHash>

#include <compare>
#include <vector>

namespace veldmap {

/// Finds the elements of a list by their type word, with the answer that walking the list would give.
///
/// Owns nothing. The type word of a pointer, and so of an array of pointers, can change when the pointed element is
/// made; such elements are asked anew on every search.
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
    void clear();

private:
    struct Row {
        Place place;
        VMXMLElement *element;
        auto operator<=>(const Row &other) const { return place <=> other.place; }
        bool operator==(const Row &other) const { return place == other.place; }
    };
    std::vector<Row> rowsOf(const QString &word) const;

    QHash<QString, std::vector<Row>> m_rows;
    std::vector<Row> m_changeable;
};

} // namespace veldmap

#pragma once

#include "model/element.h"

#include <QHash>

#include <compare>
#include <vector>

namespace veldmap {

/// Finds the templates of a load by their type word or typedef name, with the answer that walking the archives gives:
/// the earliest archive wins, and in it the earliest template.
///
/// Owns nothing. The words of an element are those that it is added with.
class TypeIndex {
public:
    /// Where a template stands: the number of its archive, in the order of creation, and its place there.
    struct Place {
        std::size_t archive;
        std::size_t position;
        auto operator<=>(const Place &) const = default;
    };

    void add(Place place, VMXMLElement &element);
    /// The first element of that name, or null.
    VMXMLElement *find(const QString &name) const;

private:
    struct Row {
        Place place;
        VMXMLElement *element;
    };
    void addRow(const Row &row, const QString &name);

    QHash<QString, Row> m_first; // of each name
};

} // namespace veldmap

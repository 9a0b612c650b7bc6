#pragma once

#include "model/root_archive.h"

#include <QHash>

namespace veldmap {

/// The types of one root by name; of equal names the one that the root's getTemplate() gives.
class TypeNames {
public:
    explicit TypeNames(const VMRootArchive &root);

    /// The template of that name, or null.
    const VMXMLElement *find(const QString &name) const { return m_types.value(name); }
    /// The template that \a element, a copy of a type, was copied from.
    const VMXMLElement *typeOf(const VMXMLElement &element) const;

private:
    QHash<QString, const VMXMLElement *> m_types;
};

} // namespace veldmap

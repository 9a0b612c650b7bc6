#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

class VMRootArchive;
class VMXMLElement;

namespace veldmap {

using Instances = QList<const VMXMLElement *>;

/// The instances of one root by their type word, each list in load order. Who makes the headers of a whole root makes
/// one of these first; it holds while nothing in the root changes, and any number of threads may ask it.
class InstanceIndex {
public:
    explicit InstanceIndex(const VMRootArchive &root);

    /// The instances of the template \a element.
    Instances of(const VMXMLElement &element) const;

private:
    QHash<QString, Instances> m_byType;
};

/// As InstanceIndex(\a root).of(\a element), for a single question: it walks the instances.
Instances instancesOf(const VMRootArchive &root, const VMXMLElement &element);

// What a header says of the instances of one template.

/// The macros of their base addresses.
QString baseAddressMacros(const Instances &instances);
/// The macros of all addresses in them, for assembly code.
QString addressMacros(const Instances &instances, const VMXMLElement &element);
/// Their typed pointers. Their type words are appended to \a pointedTypes, one for each pointer.
QString pointerMacros(const Instances &instances, const VMXMLElement &element, QStringList &pointedTypes);

/// Writes \a pointedTypes to the standard output, one in each line: the trace of making typed pointers.
void tracePointedTypes(const QStringList &pointedTypes);

} // namespace veldmap

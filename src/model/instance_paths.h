#pragma once

#include "model/element.h"

#include <QHash>

namespace veldmap {

/// The paths by which a user knows what templates declare: those in the first instance of a type,
/// "$UART0.chan[0].ctrl", or where it has none those from its name on, "uart.chan[0].ctrl". The first element of an
/// array stands for all.
///
/// It looks at the root when it is made; any number of threads may ask it.
class InstancePaths {
public:
    explicit InstancePaths(const VMRootArchive &root);

    /// What the path of the template \a element is.
    QString ofTemplate(const VMXMLElement &element) const;
    /// The path of what a template holds, also of a field; what is behind a pointer is in no template.
    QString of(const VMXMLElement &element) const;

private:
    QHash<QString, QString> m_firstNames; // of instances, by type word
};

} // namespace veldmap

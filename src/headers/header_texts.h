#pragma once

#include "headers/instance_macros.h"
#include <veldmap/veldmap_export.h>

#include <QString>
#include <QStringList>

class VMRootArchive;
class VMXMLArchive;

namespace veldmap {

/// The texts of all headers of one root.
///
/// Looks at the root, which must outlive it and stay as it is meanwhile. Any number of threads may ask for texts at the
/// same time. Nothing fails here, nothing is written and nothing is traced: who makes a header learns which pointers
/// the trace tells of.
class VELDMAP_EXPORT HeaderTexts {
public:
    /// What belongs to one archive.
    struct Headers {
        QString c;
        QString assembly;         ///< empty for an archive without assembly header
        QStringList pointedTypes; ///< the type word of each instance pointer in the C header, in the header's order
    };

    explicit HeaderTexts(const VMRootArchive &root);

    /// The headers of \a archive, one of the root's. The macros that both carry are made once.
    Headers headersOf(const VMXMLArchive &archive) const;
    /// The C header alone, in `c`.
    Headers cHeaderOf(const VMXMLArchive &archive) const;
    /// The assembly header alone, whether or not the archive asks for one.
    QString assemblyHeaderOf(const VMXMLArchive &archive) const;

private:
    InstanceIndex m_instances;
};

} // namespace veldmap

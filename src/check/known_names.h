#pragma once

#include "findings/finding.h"
#include "xml/document_listener.h"

#include <QSet>

namespace veldmap {

/// Knows what may stand where a load found something unknown: the tags of each place, and the types and enums that the
/// documents of a load declare. Only these names are kept, and no document.
class VELDMAP_EXPORT KnownNames final : public DocumentListener {
public:
    void onDocument(const TagDocument &document, const QString &file) override;

    /// The known name that is most likely meant by the unknown one of \a finding; empty when the finding is of another
    /// kind or none is near.
    QString nearestFor(const Finding &finding) const;

private:
    QSet<QString> m_types;
    QSet<QString> m_enums;
};

} // namespace veldmap

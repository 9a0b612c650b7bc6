#pragma once

#include "findings/finding.h"
#include "xml/document_listener.h"

#include <QHash>

namespace veldmap {

/// Knows what may stand where a load found something unknown: the tags of each place, and the types, enums and
/// variables that the documents of a load declare; and by which tags each file came in. Only this is kept, and no
/// document.
class VELDMAP_EXPORT KnownNames final : public DocumentListener {
public:
    void onDocument(const TagDocument &document, const QString &file, const DocumentStudy *) override;
    void onInclude(const Place &include, const QString &file) override;

    /// Adds to \a finding the tags that included its file, and for an unknown name the one that is most likely meant,
    /// or where it is declared out of its sight.
    void explain(Finding &finding);

    /// The known name that is most likely meant by the unknown one of \a finding; empty when the finding is of another
    /// kind or none is near.
    QString nearestFor(const Finding &finding) const;

private:
    using Declarations = QHash<QString, Place>; ///< the first of each name

    struct Unknown {
        QString name;
        QList<const Declarations *> among;
    };
    Unknown unknownOf(const Finding &finding) const;

    Declarations m_types;
    Declarations m_enums;
    Declarations m_variables;
    QHash<QString, Place> m_includes; ///< the first of each file; null for a root
    int m_searches = 0;
};

} // namespace veldmap

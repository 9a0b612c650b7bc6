#pragma once

#include "findings/finding.h"
#include "xml/tag_document.h"

#include <QHash>
#include <QSet>

namespace veldmap {

/// What one document declares and uses. Places have no file.
struct DocumentNames {
    struct Declared {
        QString name;
        Place place;
        QStringList entries = {}; ///< of an enum
    };

    QList<Declared> variables;
    QList<Declared> enums;
    QStringList declared;   ///< names of all kinds
    QSet<QStringView> used; ///< names, in the document or in texts
    QStringList texts;      ///< of C, that stand otherwise in the document
    bool isOfUse = false;   ///< whoever uses its names
};

/// The names in \a document, which has to outlive them.
DocumentNames namesIn(const TagDocument &document);

/// Finds variables, enums and files that nothing in a load uses. It goes by names alone, in all values of attributes
/// and in C text, so what it tells of is used nowhere, while of two things of one name it may miss one.
class UnusedNames {
public:
    /// Takes up \a names, which are those of \a file.
    void add(const DocumentNames &names, const QString &file);
    /// The tag at \a include includes \a file.
    void readInclude(const Place &include, const QString &file);
    void report(Sink &sink) const;

private:
    struct File {
        QStringList names;    ///< that it declares
        bool isOfUse = false; ///< whoever uses its names
        Place include = {};   ///< the first; null for a root
    };

    QList<DocumentNames::Declared> m_variables;
    QList<DocumentNames::Declared> m_enums;
    QHash<QString, QString> m_users; ///< by name, the file that uses it; empty for several files
    QHash<QString, File> m_files;
    QStringList m_fileOrder;
};

} // namespace veldmap

#pragma once

#include "findings/finding.h"
#include "xml/tag_document.h"

#include <QHash>

namespace veldmap {

/// Finds variables, enums and files that nothing in a load uses. It goes by names alone, in all values of attributes
/// and in C text, so what it tells of is used nowhere, while of two things of one name it may miss one.
class UnusedNames {
public:
    /// Takes up what \a document, which is that of \a file, declares and uses.
    void read(const TagDocument &document, const QString &file);
    /// The tag at \a include includes \a file.
    void readInclude(const Place &include, const QString &file);
    void report(Sink &sink) const;

private:
    struct Declared {
        QString name;
        Place place;
        QStringList entries = {}; ///< of an enum
    };
    struct File {
        QStringList names;    ///< that it declares
        bool isOfUse = false; ///< whoever uses its names
        Place include = {};   ///< the first; null for a root
    };

    void readTag(const Tag &tag, const QString &file);
    void declare(const Tag &tag, const QString &file);
    void use(QStringView text, const QString &file);

    QList<Declared> m_variables;
    QList<Declared> m_enums;
    QHash<QString, QString> m_users; ///< by name, the file that uses it; empty for several files
    QHash<QString, File> m_files;
    QStringList m_fileOrder;
};

} // namespace veldmap

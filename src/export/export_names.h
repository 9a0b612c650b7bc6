#pragma once

#include "export/export_findings.h"

#include <QHash>
#include <QString>

namespace veldmap {

/// The names in one scope of a format that takes those of C alone, each once. What a description may call otherwise is
/// changed: other characters become "_", a name that begins with a digit gets a "_" in front, and one that stands there
/// already a number behind. So equal descriptions give equal names.
class NameScope {
public:
    NameScope(QLatin1StringView format, ExportFindings &findings) : m_format(format), m_findings(&findings) {}

    /// What \a name, of what is declared at \a source, becomes here. With \a mayBeNumber it may begin with a digit.
    QString take(const QString &name, const SourcePlace &source, bool mayBeNumber = false);
    /// Whether \a name stands here already.
    bool contains(const QString &name) const { return m_taken.contains(name); }

private:
    QLatin1StringView m_format;
    ExportFindings *m_findings;
    QHash<QString, int> m_taken; // names, and the number to try next
};

/// \a name as far as C takes it.
QString legalName(const QString &name);

} // namespace veldmap

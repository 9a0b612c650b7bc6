#pragma once

#include <veldmap/findings/place.h>

#include <QExplicitlySharedDataPointer>
#include <QSharedData>

namespace veldmap {

/// The name of one description file, which all places in it share.
class SourceFile {
public:
    SourceFile() = default;
    explicit SourceFile(const QString &name) : m_name(new Name(name)) {}

    /// As messages name it, empty for no file.
    QString name() const { return m_name ? m_name->text : QString(); }

private:
    struct Name : QSharedData {
        explicit Name(const QString &text) : text(text) {}
        QString text;
    };
    QExplicitlySharedDataPointer<const Name> m_name;
};

/// Where a description declares something: the file, and line and column behind the ">" of the start tag. It has 16
/// bytes, since everything in a tree has one.
struct SourcePlace {
    SourceFile file;
    quint32 line = 0;
    quint32 column = 0;

    /// The same for a finding; null for what no description declares.
    Place place() const { return {file.name(), line, column, 0}; }
};

} // namespace veldmap

#pragma once

#include "findings/place.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace veldmap {

/// The text of a description with its lines, for showing what a finding speaks of.
class VELDMAP_EXPORT SourceText {
public:
    explicit SourceText(const QString &text);
    /// The text in the \a bytes of a file, in the encoding that its first bytes tell; nothing when that is none that is
    /// known, or when the bytes are wrong in it, as those of an encrypted container are.
    static std::optional<SourceText> ofBytes(const QByteArray &bytes);
    /// The text in \a bytes as UTF-8, in which wrong bytes are the character U+FFFD.
    static SourceText ofUtf8(const QByteArray &bytes) { return SourceText(QString::fromUtf8(bytes)); }

    QStringView text() const { return m_text; }
    /// Where the character in \a line and \a column stands, both from 1; -1 when there is no such line. A column behind
    /// the end of its line is the end.
    qsizetype offsetOf(qint64 line, qint64 column) const;
    /// The line, from 1, in which \a offset lies.
    qint64 lineAt(qsizetype offset) const;
    /// Where \a line begins, and where it ends, in front of what ends it.
    qsizetype beginOf(qint64 line) const { return m_begins.at(line - 1); }
    qsizetype endOf(qint64 line) const;

private:
    QString m_text;
    QList<qsizetype> m_begins;
};

} // namespace veldmap

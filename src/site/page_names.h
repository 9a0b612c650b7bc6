#pragma once

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QString>

namespace veldmap {

/// Gives each page a file name that every file system takes and no other page has, however it is written: letters A to
/// Z, digits, "_", "-" and "."; of names that differ in other characters or in their case alone, the later ones get
/// "~2", "~3", ... behind them. The same names asked for in the same order give the same files.
class PageNames {
public:
    /// The file, with ".html" behind it. \a wanted may be any text.
    QString take(const QString &wanted);

private:
    QSet<QString> m_taken;        ///< in lower case
    QHash<QString, int> m_copies; ///< the last number given behind a name
};

/// Gives each element of a page an id of its own: its path of names, in which blanks, quotes and signs that mean
/// something in HTML or in the address of a value are "_". Equal ones are told apart by "~2", "~3", ...
class PageIds {
public:
    /// The id of \a name inside of the element with the id \a parent, which may be empty.
    QByteArray take(QByteArrayView parent, const QString &name);

private:
    QSet<QByteArray> m_taken;
    QHash<QByteArray, int> m_copies; ///< the last number given behind an id
};

/// \a id as the fragment of an address: what has a meaning there is "%" and two digits.
QByteArray fragmentOf(const QByteArray &id);

} // namespace veldmap

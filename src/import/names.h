#pragma once

#include <veldmap/veldmap_export.h>

#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

/// Names and comments of a vendor's file as a person writes them.
namespace veldmap {

/// \a name as an identifier: other characters are underscores, of which none stand at its ends or in a row. Never
/// empty.
VELDMAP_EXPORT QString cleanName(const QString &name);

/// \a text on one line, with its first letter in upper case; "\n\n" in it is "<br/>", and a text of several sentences
/// ends like one. The result is markup.
VELDMAP_EXPORT QString cleanComment(const QString &text);

/// Names that were given, as headers and packages tell them apart: in upper case.
class UsedNames {
public:
    /// \a name, or the same with a number that makes it one that was not given before.
    QString unique(const QString &name);
    bool contains(const QString &name) const { return m_names.contains(name.toUpper()); }

private:
    QSet<QString> m_names;
};

/// A name with a number in it: "CH0_CSR" is "CH", 0, "_CSR".
struct NumberedName {
    QString prefix;
    uint number = 0;
    QString suffix;
};
/// The parts of \a name around its first number, or with \a isLast its last one; nothing without one that counts.
std::optional<NumberedName> numberedName(const QString &name, bool isLast);

/// Texts that are the same but for the number of what they tell of: "Enables channel 3".
class VELDMAP_EXPORT NumberedText {
public:
    /// Begins with the text of the one with number \a number.
    NumberedText(const QString &text, uint number);
    /// Whether \a text is the same for the one with \a number; what differs by its number then stands for any.
    bool accepts(const QString &text, uint number);
    /// The text for all of them, with \a any for the number.
    QString general(QStringView any) const;
    bool hasNumber() const { return m_isAny.contains(true); }

private:
    QStringList m_words; // runs of digits and what is between them
    uint m_number;
    QList<bool> m_isAny;
    bool m_isFirst = true; // nothing was compared yet
};

} // namespace veldmap

#pragma once

#include "model/scope_index.h"

#include <QSet>
#include <QString>
#include <QStringList>

class VMArray;
class VMBitField;
class VMBitGroup;
class VMStruct;
class VMValuable;
class VMXMLArchive;
class VMXMLElement;

namespace veldmap {

/// A number of a package.
struct PackageNumber {
    QString text;
    qint64 number = 0; ///< what the tree says that it is
};

/// Hears of each declaration that a package gets, so that it can tell what VHDL will not take. Names come with their
/// prefix, numbers as the texts that stand in the package and as the tree has them. \a cause is the register or array
/// that a declaration is for.
///
/// Each gives the reason for which the line becomes a comment; an empty text leaves it as it is.
class DeclarationListener {
public:
    virtual ~DeclarationListener() = default;
    virtual QString onConstant(const QString &name, const PackageNumber &value, const VMXMLElement &cause) = 0;
    /// A subtype of a range of integers, downwards. \a left has no text for a register without bitfields.
    virtual QString onRange(const QString &name, const PackageNumber &left, const PackageNumber &right,
                            const VMXMLElement &cause) = 0;
    /// An array type, of vectors of the subtype \a range.
    virtual QString onType(const QString &name, const QString &range, const VMXMLElement &cause) = 0;
    /// A position of the field or group \a name did not evaluate: the text of the error stands in the package.
    virtual QString onUnevaluated(const QString &name, const VMXMLElement &cause) = 0;
};

/// Writes the registers of a module: addresses, logical maps, physical maps and ranges. A definition line that stands
/// in \a seen is commented out, a new one is appended to it.
class MapWriter {
public:
    /// \a find, if given, finds the variables of positions in the archive of what is written, as its manager would.
    explicit MapWriter(QStringList &seen, DeclarationListener *listener = nullptr, const FindVariable &find = {});

    void write(const VMXMLElement &element, int level);
    /// The line of a field or group in one of the maps.
    void writeLogical(const VMBitField &field, int level);
    void writePhysical(const VMBitField &field, int level);
    void writeLogical(const VMBitGroup &group, int level);
    void writePhysical(const VMBitGroup &group, int level);

    QString takeText() { return std::move(m_text); }

private:
    struct Definition;
    struct Span;

    void writeKind(const VMStruct &structure, int level);
    void writeKind(const VMArray &array, int level);
    void writeKind(const VMValuable &valuable, int level);
    void writeKind(const VMXMLElement &, int) {} // gaps and memories have no words
    void writeAddress(const VMXMLElement &element, const QString &name, int level);
    Evaluated evaluate(const QString &expression, const VMXMLArchive &archive) const;
    void writeDefinition(const Definition &definition, int level);

    QString m_text;
    QStringList &m_seen;
    /// The listener of the line that begins now, null if there is none. The text of an error has no line feed, so the
    /// line behind it is no declaration any more.
    DeclarationListener *beginLine();

    QSet<QString> m_known; // what m_seen holds
    DeclarationListener *m_listener;
    FindVariable m_find;
    bool m_isBehindError = false;
};

} // namespace veldmap

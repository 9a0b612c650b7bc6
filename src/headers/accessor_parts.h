#pragma once

#include "model/valuable.h"
#include "text/bit_arithmetic.h"

#include <QList>
#include <QString>

/// What the functions of accessor headers work on, as C has it. Looks at the tree, which must outlive it.
namespace veldmap::accessors {

/// \a value as C writes it.
QString hexLiteral(quint32 value);
/// Whether writing a 1 acts, and nothing keeps what is written.
bool setsOrClears(const VMBitField &field);

/// The way from a type to one of its members.
struct Way {
    QString name;       ///< what the names of its functions begin with
    QString shown;      ///< as a comment names it: fifo.data[]
    QString expression; ///< the member in C
    QList<int> counts;  ///< of the arrays on the way

    /// From a structure on to the member of that name. What has no name is a part of what holds it.
    Way member(const QString &memberName) const;
    /// From an array of \a count on to its members.
    Way at(int count) const;
    /// The parameters of the places in the arrays, each behind a comma.
    QString indexes() const;
    static QString indexName(qsizetype at);
};

/// A register in its type.
class Register {
public:
    /// \a pointer is the type that \a way begins with, as it stands in front of "*". \a way must outlive it.
    Register(const VMValuable &valuable, const Way &way, const QString &pointer);

    const VMValuable &valuable() const { return m_valuable; }
    const QString &name() const { return m_way.name; }
    /// In comments.
    QString shown() const;
    int bits() const { return m_bits; }
    /// The C type of its values.
    const QString &type() const { return m_type; }
    /// Those of \a mask that it has.
    quint32 cut(quint32 mask) const { return mask & lowBits(m_bits); }
    const QList<int> &counts() const { return m_way.counts; }

    /// A value of its type, which is the expression \a value, as a word without sign; and back.
    QString asWord(const QString &value) const;
    QString fromWord(const QString &word) const;

    /// Whether a load or a store reaches it; registers behind another bus have an offset that is no address.
    bool isInMemory() const { return m_valuable.getType() != VMXMLElement::XML_INTERNAL_REGISTER8; }
    bool isReadable() const { return m_valuable.readable; }
    bool isWritable() const;
    bool isReadable(const VMBitField &field) const { return isReadable() && field.readable; }
    bool isWritable(const VMBitField &field) const { return isWritable() && field.writeMode != 0; }

    /// The bits that set or clear when they are written as 1.
    quint32 actionBits() const;
    /// Those that keep what is written.
    quint32 keptBits() const;

    QString readParameters() const;
    QString writeParameters() const;
    QString readExpression() const;
    QString writeExpression() const;

private:
    bool isWord() const;
    QString lvalue(QLatin1StringView qualifiers) const;

    const VMValuable &m_valuable;
    const Way &m_way;
    int m_bits;
    QString m_pointer;
    QString m_type;
};

/// A field or a group of fields, in terms of a register's bits.
struct Part {
    QString name;
    QString comment;
    QString shownBits; ///< "bits 3:1, rw"
    quint32 mask = 0;  ///< in place, within the register
    int shift = 0;
    bool isReadable = false;
    bool isWritable = false;
    bool hasSignedView = false;
    const VMBitField *field = nullptr; ///< null for a group
};

Part partOf(const VMBitField &field, const Register &of);
/// A group is read where all its fields can be, and composed where all can be written. Gaps between its fields stay
/// gaps of its value, as in its macros.
Part partOf(const VMBitGroup &group, const Register &of);

} // namespace veldmap::accessors

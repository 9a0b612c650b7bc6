#pragma once

#include "site/page_rows.h"

#include <QByteArray>
#include <QHash>

class VMBitField;
class VMBitGroup;
struct VMBitFieldOption;

namespace veldmap {

/// The C macros of the fields of one page, as the header of the page's type defines them: in a header the first field
/// of a name has the macro, and a later one stands commented out.
class FieldMacros {
public:
    /// \a typeWord is what the macros of a header begin with.
    explicit FieldMacros(const QString &typeWord) : m_prefix(typeWord.toUpper().toUtf8() + '_') {}

    /// The macros of one field. An empty name means that the macro stands for something else or that there is none.
    struct OfField {
        QByteArray value; ///< UART_SPEED(n), or UART_ENABLE for a single bit
        QByteArray mask;
        QByteArray shift;
        std::vector<QByteArray> options; ///< in order
    };

    /// The macros of \a field, or of a group of fields. They are to be asked for in the order of the page, the groups
    /// of a register behind its fields.
    OfField take(const VMBitField &field);
    OfField take(const VMBitGroup &group);

private:
    /// What a macro stands for. Two of a name are as good as one when they are equal.
    struct Meaning {
        quint32 value;
        int shift;
        bool hasParameter;
        bool operator==(const Meaning &) const = default;
    };

    QByteArray define(const QByteArray &name, Meaning meaning);
    QByteArray defineValue(const QByteArray &name, int width, quint32 mask, int shift);

    QByteArray m_prefix;
    QHash<QByteArray, Meaning> m_known;
};

} // namespace veldmap

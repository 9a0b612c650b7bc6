#pragma once

#include "console/state.h"
#include "export/tree_text.h"

#include <QString>

class VMBitField;
class VMValuable;
class VMXMLElement;

namespace veldmap {

/// What a console shows of values and elements.

/// \a value in hexadecimal with all digits of \a bits bits.
QString hexText(quint32 value, int bits);
/// A number that an expression gave, in \a base. Hexadecimal where that is as described.
QString numberText(const variant::Variant &value, ConsoleSettings::Base base);

/// The values of elements, which have been read, in one notation.
class ValueTexts final : public ElementNotes {
public:
    explicit ValueTexts(const ConsoleSettings &settings) : m_base(settings.base), m_isForced(settings.force) {}

    /// "read error" where the last reading failed, "?" where it can't be read.
    QString of(const VMValuable &valuable) const;
    QString of(const VMBitField &field) const;

    QString ofElement(const VMXMLElement &element) const override;
    QString ofField(const VMBitField &field) const override;

private:
    ConsoleSettings::Base m_base;
    bool m_isForced; // what is not readable has a value all the same
};

/// How \a valuable differs in two states: its line, and those of the fields that differ, each line behind \a margin.
/// Nothing stands for a value that could not be read.
QString differenceText(const VMValuable &valuable, std::optional<quint32> before, std::optional<quint32> after,
                       const QString &margin = {});

/// What the description tells of \a element in words: its comment, for a field also its options. Lines, none without a
/// comment.
QString documentationOf(const VMXMLElement &element);

} // namespace veldmap

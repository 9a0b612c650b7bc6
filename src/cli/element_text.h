#pragma once

#include <QString>

class VMBitField;
class VMXMLElement;

/// Elements as an engineer reads them, one a line: name, place, type and access.
namespace veldmap::cli {

/// What stands behind the type of an element or the reset value of a field; empty for nothing.
struct ElementNotes {
    virtual ~ElementNotes() = default;
    virtual QString ofElement(const VMXMLElement &element) const = 0;
    virtual QString ofField(const VMBitField &field) const = 0;
};

/// The options of fields, and nothing else: fast=1 slow=2.
struct OptionNotes : ElementNotes {
    QString ofElement(const VMXMLElement &element) const override;
    QString ofField(const VMBitField &field) const override;
};

/// Appends the line of \a field, indented for nesting level \a level of its register.
void appendField(QString &text, const VMBitField &field, int level, const ElementNotes &notes);

/// Appends the line of \a field without its register, with its path, address and size.
void appendFieldAlone(QString &text, const VMBitField &field, const ElementNotes &notes);

/// Appends the line of \a element, called \a name, and those of what it holds, \a depth levels down. Bitfields are a
/// level of their own.
void appendElement(QString &text, const VMXMLElement &element, const QString &name, int level, int depth,
                   const ElementNotes &notes);

/// A depth that no description reaches.
constexpr int kAllLevels = 1'000'000;

} // namespace veldmap::cli

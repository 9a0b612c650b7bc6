#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

class VMBitField;
class VMMemoryMap;
class VMXMLElement;

/// Elements as an engineer reads them, one a line: name, place, type and access.
namespace veldmap {

class TextSink;

/// Gives \a sink all that is loaded in \a map, in pieces: global variables, then for each root its files, types and
/// instances. False when the sink has not taken all of it.
VELDMAP_EXPORT bool writeTreeText(const VMMemoryMap &map, TextSink &sink);

/// What stands behind the type of an element or the reset value of a field; empty for nothing.
struct VELDMAP_EXPORT ElementNotes {
    virtual ~ElementNotes() = default;
    virtual QString ofElement(const VMXMLElement &element) const = 0;
    virtual QString ofField(const VMBitField &field) const = 0;
};

/// The options of fields, and nothing else: fast=1 slow=2.
struct VELDMAP_EXPORT OptionNotes : ElementNotes {
    QString ofElement(const VMXMLElement &element) const override;
    QString ofField(const VMBitField &field) const override;
};

/// Appends the line of \a field, indented for nesting level \a level of its register.
VELDMAP_EXPORT void appendField(QString &text, const VMBitField &field, int level, const ElementNotes &notes);

/// Appends the line of \a field without its register, with its path, address and size.
VELDMAP_EXPORT void appendFieldAlone(QString &text, const VMBitField &field, const ElementNotes &notes);

/// Appends the line of \a element, called \a name, and those of what it holds, \a depth levels down. Bitfields are a
/// level of their own.
VELDMAP_EXPORT void appendElement(QString &text, const VMXMLElement &element, const QString &name, int level, int depth,
                                  const ElementNotes &notes);

/// A depth that no description reaches.
constexpr int kAllLevels = 1'000'000;

} // namespace veldmap

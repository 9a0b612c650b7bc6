#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>

#include <optional>

class VMBitField;
class VMValuable;

/// What values of registers, integers and fields are as text, and what a text means as a value of one.
namespace veldmap {

class Sink;

/// Whether the value can be read and the last reading of it succeeded.
VELDMAP_EXPORT bool canBeRead(const VMValuable &valuable);
VELDMAP_EXPORT bool canBeRead(const VMBitField &field);

/// The value in hexadecimal with all digits of its width; behind it the value as the description wants it displayed, if
/// that is another notation. "?" where it can't be read.
VELDMAP_EXPORT QString valueText(const VMValuable &valuable);
/// The value as the description wants it displayed, with the name of its option. "?" where it can't be read.
VELDMAP_EXPORT QString valueText(const VMBitField &field);

/// What somebody asks to be written.
struct Assignment {
    QString path;       ///< as messages name what is written
    QString value;      ///< a number, for a field also the name of an option
    bool force = false; ///< also where the description says that it can't be written
};

/// The value that \a valuable gets. Nothing when it can't get that; \a sink then hears why.
VELDMAP_EXPORT std::optional<quint32> valueToWrite(const VMValuable &valuable, const Assignment &assignment,
                                                   Sink &sink);
/// The value that \a valuable, which holds \a before, gets when its \a field is set. Nothing when the field can't be
/// set to that; \a sink then hears why. A set or clear field takes 1 alone.
VELDMAP_EXPORT std::optional<quint32> valueToWrite(const VMBitField &field, const VMValuable &valuable, quint32 before,
                                                   const Assignment &assignment, Sink &sink);

} // namespace veldmap

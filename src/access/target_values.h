#pragma once

#include "target/target.h"
#include <veldmap/veldmap_export.h>

class VMValuable;
class VMXMLElement;

/// Values of the tree that come from a target, and go there.
///
/// What was read stands in the tree afterwards, as value and readError. Each access has the width of its register, and
/// its address is the register's own.
namespace veldmap {

/// Reads the pointers by which \a element is reached, the outermost first, so that it gets its address. Unless it is
/// done, nobody knows where the element is.
VELDMAP_EXPORT TargetAnswer followPointers(Target &target, const VMXMLElement &element);

/// Reads \a valuable in one access, also where the description says that it can't be read. The way there is not looked
/// at: see followPointers().
VELDMAP_EXPORT TargetAnswer readValue(Target &target, VMValuable &valuable);

/// Writes \a value to \a valuable in one access, also where the description says that it can't be written. The tree has
/// the value then, as it would be read.
VELDMAP_EXPORT TargetAnswer writeValue(Target &target, VMValuable &valuable, quint32 value);

/// Reads all values of \a element, a field's register or what a structure or array holds, behind the pointers that lead
/// to it. Registers of one width that lie side by side are one block. What the description says is not readable is
/// never read, and keeps its value.
///
/// What could not be read has its read error set. The answer is that of the first access that failed; where the target
/// did not answer, it is not asked again.
VELDMAP_EXPORT TargetAnswer readValues(Target &target, VMXMLElement &element);

/// The bits of \a valuable that read back as they were written: all of a register without fields, otherwise those of
/// fields that can be read and plainly written. None where the register can't be read and written.
VELDMAP_EXPORT quint32 bitsToVerify(const VMValuable &valuable);

} // namespace veldmap

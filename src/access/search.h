#pragma once

#include <veldmap/veldmap_export.h>

#include <QList>
#include <QString>

class VMMemoryMap;
class VMXMLElement;

namespace veldmap {

/// The elements of \a map that lie at the absolute \a address, the chip's first, in load order: registers, integers,
/// pointers and memories, or the structure or array in a gap of which it lies. None when no instance has the address.
/// Elements behind pointers are not looked at.
VELDMAP_EXPORT QList<VMXMLElement *> elementsAt(const VMMemoryMap &map, quint32 address);

/// The elements below the instances of \a map, and their bitfields, whose name is \a pattern, where each "*" stands for
/// any text, or whose comment has \a pattern as a word; case makes no difference. In load order; of an array its
/// members are left out where the array itself is found.
VELDMAP_EXPORT QList<VMXMLElement *> findElements(const VMMemoryMap &map, const QString &pattern);

} // namespace veldmap

#pragma once

#include <QString>

class VMRootArchive;

namespace veldmap {

/// The C file that compiles when a compiler makes of the headers of \a root what the tree says: it asserts the offset
/// and size of each member, and the value of each macro and entry of an enum. It reads the tree, not the headers. What
/// it can't assert is counted in its comment. Text: headers/self_check.cpp.
QString selfCheckOf(const VMRootArchive &root);

/// Its name, from that of the root's own header: soc.h gives soc_self_check.c.
QString selfCheckNameOf(const VMRootArchive &root);

} // namespace veldmap

#pragma once

#include <QString>

class VMRootArchive;

namespace veldmap {

class PackageTexts;

/// The VHDL file whose simulation fails when a package of \a root, of which \a packages are the texts, has another
/// number than the tree: it asserts every constant and every range that VHDL takes. What it can't assert is counted in
/// its comment. Text: vhdl/self_check.cpp.
QString vhdlSelfCheckOf(const VMRootArchive &root, const PackageTexts &packages);

/// The name of its entity, from that of the root's file: soc_self_check. The file is called like it.
QString vhdlSelfCheckNameOf(const VMRootArchive &root);

} // namespace veldmap

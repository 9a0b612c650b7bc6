#pragma once

#include "findings/finding.h"
#include <veldmap/veldmap_export.h>

#include <QString>

#include <memory>

class VMRootArchive;
class VMXMLArchive;

namespace veldmap {

class ChipPackages;
class ScopeIndex;

/// The VHDL packages of one chip. It reads the root, which must outlive it and stay as it is; any number of threads may
/// ask for texts at a time.
class PackageTexts {
public:
    explicit PackageTexts(const VMRootArchive &root);
    ~PackageTexts();

    /// The package of \a archive, which is one of the root's. What VHDL will not take of it is appended to \a findings,
    /// by the rules of vhdl/rules.h.
    QString textOf(const VMXMLArchive &archive, QList<Finding> &findings) const;

private:
    std::unique_ptr<const ChipPackages> m_packages;
    std::unique_ptr<const ScopeIndex> m_names;
};

} // namespace veldmap

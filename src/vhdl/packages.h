#pragma once

#include "findings/finding.h"
#include <veldmap/veldmap_export.h>

#include <QString>

#include <memory>
#include <vector>

class VMRootArchive;
class VMXMLArchive;

namespace veldmap {

/// What becomes of the lines that VHDL refuses.
enum class RefusedLines {
    Stay,    ///< as the description says
    Comments ///< with the reason, so that VHDL takes the package
};

class ChipPackages;
class PackageChecks;
class ScopeIndex;
struct PackageLine;

/// The VHDL packages of one chip. It reads the root, which must outlive it and stay as it is; any number of threads may
/// ask for texts at a time.
class PackageTexts {
public:
    explicit PackageTexts(const VMRootArchive &root, RefusedLines refusedLines = RefusedLines::Stay);
    ~PackageTexts();

    /// The package of \a archive, which is one of the root's. What VHDL will not take of it is appended to \a findings,
    /// by the rules of vhdl/rules.h.
    QString textOf(const VMXMLArchive &archive, QList<Finding> &findings) const;

    /// What a package declares.
    struct Lines {
        std::vector<PackageLine> taken; ///< constants and ranges that VHDL takes
        int refused = 0;                ///< lines of any kind that it does not take
        int types = 0;                  ///< that it takes
    };
    Lines linesOf(const VMXMLArchive &archive) const;

private:
    QString textOf(const VMXMLArchive &archive, PackageChecks &checks) const;

    std::unique_ptr<ChipPackages> m_packages;
    std::unique_ptr<const ScopeIndex> m_names;
    const RefusedLines m_refusedLines;
};

} // namespace veldmap

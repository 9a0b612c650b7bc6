#pragma once

#include "findings/finding.h"

#include <QSet>

#include <memory>

class VMMemoryMap;
class VMRootArchive;
class VMXMLArchive;
class VMXMLElement;

/// The groups of rules of checkTree(); rows in tree_rules.h. Each takes time in proportion to what the description
/// declares: what a template holds is checked there, not in each copy.
namespace veldmap {

/// Rules that look at one type after the other. All groups look at a type before the next one, as long as it is in the
/// processor's cache.
class TypeChecks {
public:
    virtual ~TypeChecks() = default;
    /// Looks at the template \a type of \a archive.
    virtual void check(const VMXMLArchive &archive, const VMXMLElement &type) = 0;
};

/// What is generated has one name for several things. Tells of what stands beside the types too, when it is made.
class GeneratedNameChecks : public TypeChecks {
public:
    /// The same for other types alone, which may be looked at on another thread.
    virtual std::unique_ptr<TypeChecks> another(Sink &sink) const = 0;
};

// Each tells \a sink, which must outlive it, as \a root and all in it.
std::unique_ptr<TypeChecks> registerChecks(Sink &sink);
std::unique_ptr<TypeChecks> structureChecks(const VMRootArchive &root, Sink &sink);
std::unique_ptr<GeneratedNameChecks> generatedNameChecks(const VMRootArchive &root, Sink &sink);

/// Tells nothing, but adds the names of the types that other types use to \a names, which must outlive it.
std::unique_ptr<TypeChecks> usedTypes(QSet<QString> &names);
/// Tells of the types of \a root that are not among \a used, those that anything in a memory map uses.
void tellUnusedTypes(const VMRootArchive &root, const QSet<QString> &used, Sink &sink);

void checkIncludes(const VMRootArchive &root, Sink &sink);
void checkMemoryMap(const VMMemoryMap &map, Sink &sink);

} // namespace veldmap

#pragma once

#include "findings/finding.h"
#include "support/loaded.h"
#include "target/target.h"

namespace veldmap {

/// How many single registers a second a server on this machine gives at least.
#ifdef __SANITIZE_ADDRESS__
constexpr int kReadsASecond = 200; // everything takes its time
#else
constexpr int kReadsASecond = 2000;
#endif

/// What \a target answers to the line "r ADDRESS WIDTH [SIZE]" or "w ADDRESS WIDTH VALUE": the numbers read, "ok", or
/// the outcome and its reason.
QString ask(Target &target, const QString &line);

/// The target of \a words, or null; what was told goes to \a told.
std::unique_ptr<Target> open(const QStringList &words, const VMMemoryMap &map, QStringList &told,
                             const TargetSettings &settings = {});

} // namespace veldmap

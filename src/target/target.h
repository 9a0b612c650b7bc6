#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>

class VMMemoryMap;

namespace veldmap {

class Sink;

/// What became of an access.
struct TargetAnswer {
    enum Outcome {
        Done,
        NotHere,  ///< the target answered: nothing can be accessed there, or not so
        NoAnswer, ///< the target did not answer, or the connection is gone
    };

    Outcome outcome = Done;
    QString reason; ///< in words, empty when it is done

    explicit operator bool() const { return outcome == Done; }
};

/// How patient a target is.
struct TargetSettings {
    std::chrono::milliseconds timeout{2000};       ///< for one answer
    const std::atomic_bool *interrupted = nullptr; ///< an access that waits ends with NoAnswer once it is true
};

/// Memory and registers of a chip that somebody can access: a probe's, a simulator's, a file's.
class VELDMAP_EXPORT Target {
public:
    virtual ~Target() = default;

    /// Reads \a bytes from \a address on, in accesses of \a width bytes (1, 2 or 4) and no others. Address and size are
    /// multiples of the width, and all bytes lie below 2^32. What \a bytes hold is undefined when it fails.
    [[nodiscard]] virtual TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) = 0;
    /// Writes \a bytes from \a address on, under the same terms.
    [[nodiscard]] virtual TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) = 0;
    /// Makes the connection, or makes it again. Targets without one have nothing to do.
    [[nodiscard]] virtual TargetAnswer connect() { return {}; }
    /// What the target keeps back until it is told, as a file does. Others have nothing to do.
    [[nodiscard]] virtual TargetAnswer flush() { return {}; }
    /// The target as messages name it.
    virtual QString description() const = 0;

    TargetSettings settings;
};

/// The target that the words of a command line name, each as KIND:DETAILS; several are one target, and the first that
/// holds an address is asked for it. Nothing, with a finding, when a word names none or the target can't be reached.
/// \a map, which must outlive the target, tells a simulator of the registers.
VELDMAP_EXPORT std::unique_ptr<Target> openTarget(const QStringList &words, const VMMemoryMap &map,
                                                  const TargetSettings &settings, Sink &sink);

/// What the words of targets begin with: "image:", ..., "sim".
VELDMAP_EXPORT QStringList targetKinds();

} // namespace veldmap

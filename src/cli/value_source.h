#pragma once

#include "target/image.h"
#include "target/target.h"

#include <memory>

namespace veldmap::cli {

struct Options;
struct Session;

/// The targets that \a options name, as one; null, with an error told, when they can't be reached. From now on a
/// request to end, as Ctrl-C makes it, ends the access that is going on.
std::unique_ptr<Target> openTarget(const Options &options, Session &session);

/// Where the values of elements come from: the image or the target that the command line names, if it does.
class ValueSource {
public:
    /// False, with an error told, when what \a options name can't be opened.
    [[nodiscard]] bool open(const Options &options, Session &session);
    bool isGiven() const { return m_image || m_target; }
    /// Reads all values of \a element, called \a path. False, with an error told, when a target fails at that; in an
    /// image much is missing as a rule, and nothing is told.
    [[nodiscard]] bool read(VMXMLElement &element, const QString &path, Session &session);

private:
    std::optional<TargetImage> m_image;
    std::unique_ptr<Target> m_target;
    bool m_isSilent = false; ///< the target did not answer, and is not asked again
};

} // namespace veldmap::cli

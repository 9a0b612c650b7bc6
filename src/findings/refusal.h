#pragma once

#include "findings/rule.h"

#include <QStringList>

namespace veldmap {

/// Why something is not done, from who knows the rule but not the place. False where nothing is against it.
struct Refusal {
    const Rule *rule = nullptr;
    QStringList arguments = {};

    explicit operator bool() const { return rule != nullptr; }
};

} // namespace veldmap

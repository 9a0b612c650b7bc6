#pragma once

#include "findings/finding.h"

#include <QList>

#include <algorithm>

namespace veldmap {

/// Collects findings without the rest of arguments that nobody would read, so that many faults in a place of long names
/// don't take gigabytes.
class ReadableFindings final : public Sink {
public:
    void take(const Finding &finding) override
    {
        findings.append(finding);
        for (QString &argument : findings.last().arguments) {
            if (argument.size() > kLongest)
                argument = argument.first(kLongest) + QStringLiteral("...");
        }
    }

    QList<Finding> findings;

private:
    static constexpr qsizetype kLongest = 1000;
};

} // namespace veldmap

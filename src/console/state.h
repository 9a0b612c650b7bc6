#pragma once

#include "console/session.h"
#include "expression/variant.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <atomic>

namespace veldmap {

/// What lines set, beside the target's own settings.
struct ConsoleSettings {
    enum Base { AsDescribed, Hexadecimal, Decimal, Binary };

    bool force = false;  ///< what is protected is accessed as what is not
    bool verify = true;  ///< what was written is read back
    bool dryRun = false; ///< accesses are told and not made
    Base base = AsDescribed;
};

/// What the lines of a session share.
class ConsoleState final : public Sink {
public:
    ConsoleState(const VMMemoryMap &map, ConsoleHost &host) : map(map), host(host)
    {
        targetSettings.interrupted = &isInterrupted;
    }

    /// Tells a finding at the place of the line that runs.
    void take(const Finding &finding) override
    {
        Finding placed = finding;
        if (placed.place.isNull())
            placed.place = place;
        host.take(placed);
    }

    /// Tells a finding of \a rule, with \a hint if it is not empty. False, for who returns that.
    bool fail(const Rule &rule, const QStringList &arguments = {}, const QString &hint = {})
    {
        Finding finding(rule, {}, arguments);
        finding.hint = hint;
        take(finding);
        return false;
    }

    /// False, with a finding, once the user has asked for an end.
    bool goesOn() { return !isInterrupted || reportInterruption(); }

    const VMMemoryMap &map;
    ConsoleHost &host;
    std::unique_ptr<Target> target; ///< null before one could be opened
    QStringList targetWords;
    TargetSettings targetSettings;
    std::atomic_bool isInterrupted = false;
    ConsoleSettings settings;
    QMap<QString, variant::Variant> kept; ///< values by the names that lines gave them
    Place place;                          ///< of the line that runs
    QString recordFile;                   ///< that lines are written to, empty for none
    int recordDepth = 0;                  ///< the depth of the line that has asked for that
    int sourceDepth = 0;                  ///< how many files run one another
    bool isOver = false;

private:
    bool reportInterruption();
};

/// How many files may run one another.
constexpr int kMostSources = 16;

} // namespace veldmap

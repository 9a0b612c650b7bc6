#include "cli/value_source.h"

#include "access/access_rules.h"
#include "access/target_values.h"
#include "cli/options.h"
#include "cli/session.h"
#include "model/bitfield.h"

#include <csignal>

namespace veldmap::cli {

namespace {

std::atomic_bool isInterrupted = false;

/// The first request to end lets a target be left in order; another one ends the process.
void interrupt(int signal)
{
    isInterrupted = true;
    std::signal(signal, SIG_DFL);
}

void takeInterruptions()
{
    for (const int signal : {SIGINT, SIGTERM}) {
        struct sigaction present = {};
        if (::sigaction(signal, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            std::signal(signal, interrupt);
    }
}

} // namespace

std::unique_ptr<Target> openTarget(const Options &options, Session &session)
{
    takeInterruptions();
    TargetSettings settings;
    settings.interrupted = &isInterrupted;
    settings.timeout = options.timeout.value_or(settings.timeout);
    return veldmap::openTarget(options.targets, session.map, settings, session.messages);
}

bool ValueSource::open(const Options &options, Session &session)
{
    if (options.image)
        m_image = TargetImage::open(options.image->file, options.image->address, session.messages);
    else if (!options.targets.isEmpty())
        m_target = openTarget(options, session);
    return isGiven() || !options.namesTarget();
}

bool ValueSource::read(VMXMLElement &element, const QString &path, Session &session)
{
    if (m_image)
        m_image->readAll(element);
    if (!m_target)
        return true;
    if (m_isSilent) {
        (elementCast<VMBitField>(&element) ? *element.parent : element).setReadError(true);
        return false;
    }
    const TargetAnswer answer = readValues(*m_target, element);
    m_isSilent = answer.outcome == TargetAnswer::NoAnswer;
    if (!answer)
        session.messages.tell(access_rules::kNotRead, {path, answer.reason});
    return bool(answer);
}

} // namespace veldmap::cli

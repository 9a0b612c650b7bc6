#include "console/session.h"

#include "console/commands.h"
#include "console/console_rules.h"
#include "console/interpreter.h"
#include "console/scripts.h"
#include "console/state.h"

namespace veldmap {

ConsoleSession::ConsoleSession(const VMMemoryMap &map, ConsoleHost &host)
    : m_state(std::make_unique<ConsoleState>(map, host))
{
}

ConsoleSession::~ConsoleSession() = default;

bool ConsoleSession::open(const QStringList &words)
{
    Interpreter interpreter(*m_state);
    return openTargetOf(interpreter, words);
}

void ConsoleSession::use(std::unique_ptr<Target> target)
{
    m_state->targetWords.clear();
    m_state->target = std::move(target);
    if (m_state->target)
        m_state->target->settings = m_state->targetSettings;
}

bool ConsoleSession::run(const QString &line, const Place &place)
{
    return runLine(*m_state, line, place);
}

bool ConsoleSession::runScript(const QString &text, const QString &file, bool keepsGoing)
{
    return runLines(*m_state, text, file, keepsGoing);
}

std::optional<quint32> ConsoleSession::valueOf(const QString &expression)
{
    m_state->isInterrupted = false;
    return Interpreter(*m_state).number(expression);
}

bool ConsoleSession::flush()
{
    const TargetAnswer answer = m_state->target ? m_state->target->flush() : TargetAnswer();
    return answer || m_state->fail(console_rules::kCantFlush, {answer.reason});
}

bool ConsoleSession::isOver() const
{
    return m_state->isOver;
}

void ConsoleSession::interrupt() noexcept
{
    m_state->isInterrupted = true;
}

} // namespace veldmap

#include "cli/endings.h"

#include "cli/options.h"
#include "files/file_writer.h"

#include <csignal>
#include <cstdlib>
#include <exception>
#include <new>
#include <unistd.h>

namespace veldmap::cli {

namespace {

constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGTERM, SIGPIPE, SIGXCPU};

/// Ends the process as \a signal would have done without us.
void endBySignal(int signal)
{
    removeBegunFiles();
    std::signal(signal, SIG_DFL);
    std::raise(signal); // which takes its effect when this returns
}

[[noreturn]] void endWithoutMemory()
{
    constexpr char kText[] = "error: Not enough memory.\n";
    removeBegunFiles();
    if (::write(STDERR_FILENO, kText, sizeof kText - 1) < 0)
        ::_exit(kFailed); // nobody hears it
    ::_exit(kFailed);
}

/// Qt asks for memory in other ways than `new`, and throws where there is none.
[[noreturn]] void endByException()
{
    try {
        if (const std::exception_ptr thrown = std::current_exception())
            std::rethrow_exception(thrown);
    } catch (const std::bad_alloc &) {
        endWithoutMemory();
    } catch (...) {
        removeBegunFiles();
    }
    std::abort();
}

} // namespace

void prepareForEndings()
{
    for (const int signal : kEndingSignals) {
        // Who calls us with a signal ignored, as nohup does, means it.
        struct sigaction present = {};
        if (::sigaction(signal, nullptr, &present) == 0 && present.sa_handler != SIG_IGN)
            std::signal(signal, endBySignal);
    }
    std::signal(SIGXFSZ, SIG_IGN);
    std::set_new_handler(endWithoutMemory);
    std::set_terminate(endByException);
}

} // namespace veldmap::cli

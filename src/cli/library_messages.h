#pragma once

#include "cli/messages.h"

namespace veldmap::cli {

/// Passes what the library tells its callbacks on to messages, as long as it lives. The callbacks carry no context, so
/// that there is one of these at a time.
class LibraryMessages {
public:
    explicit LibraryMessages(Messages &messages);
    LibraryMessages(const LibraryMessages &) = delete;
    LibraryMessages &operator=(const LibraryMessages &) = delete;
    ~LibraryMessages();

    static void onLog(const char *text);
    static void onError(const char *text);
    static void onWarning(const char *text);
};

} // namespace veldmap::cli

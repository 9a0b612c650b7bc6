#pragma once

/// Receives one message as NUL-terminated UTF-8 text, which lives only during the call. May be null.
using VMMessageCallback = void (*)(const char *text);

namespace veldmap {

/// The three callbacks of a load, which always travel together.
struct Callbacks {
    VMMessageCallback log = nullptr;
    VMMessageCallback error = nullptr;
    VMMessageCallback warning = nullptr;
};

} // namespace veldmap

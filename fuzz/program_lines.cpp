// Any bytes as the answer of a program that makes accesses: it is a value, done, or an error, and never two of them.

#include "target/program_lines.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView line(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const auto answer = veldmap::programAnswerOf(line);
    if (answer && int(answer->value.has_value()) + int(answer->isOk) + int(!answer->error.isEmpty()) != 1)
        std::abort();
    return 0;
}

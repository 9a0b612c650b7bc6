// Evaluates any text as an expression of a description.

#include "model/variables.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    VMIntVar variable;
    variable.name = QStringLiteral("BASE");
    variable.leftValue = -7;
    QString message;
    bool error = false;
    evaluateExpressionWithVariables({variable}, QStringLiteral("input"),
                                    QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size)), message,
                                    error);
    return 0;
}

#include "target/program_lines.h"

#include "text/lines.h"
#include "text/literals.h"

using namespace Qt::StringLiterals;

namespace veldmap {

QByteArray readLineOf(quint32 address, int width)
{
    return u"r 0x%1 %2\n"_s.arg(hex8(address), QString::number(width)).toLatin1();
}

QByteArray writeLineOf(quint32 address, int width, quint32 value)
{
    return u"w 0x%1 %2 0x%3\n"_s.arg(hex8(address), QString::number(width), hex8(value).right(2 * width)).toLatin1();
}

std::optional<ProgramAnswer> programAnswerOf(QByteArrayView line)
{
    const QString text = QString::fromUtf8(line).trimmed();
    if (text == "ok"_L1)
        return ProgramAnswer{{}, true};
    if (text == "error"_L1 || text.startsWith("error "_L1)) {
        const QString words = text.sliced(5).trimmed();
        return ProgramAnswer{{}, false, words.isEmpty() ? u"error"_s : words};
    }
    const std::optional<qint64> number = numberOf(text);
    if (!number || *number < 0 || *number > 0xFFFFFFFF)
        return {};
    return ProgramAnswer{static_cast<quint32>(*number)};
}

} // namespace veldmap

#include "target/asking.h"

#include "text/lines.h"
#include "text/literals.h"

using namespace Qt::StringLiterals;

namespace veldmap {

QString ask(Target &target, const QString &line)
{
    const QStringList words = line.split(u' ');
    const auto number = [&](qsizetype at) { return static_cast<quint32>(numberOf(words.value(at)).value_or(0)); };
    const int width = static_cast<int>(number(2));
    const bool writes = words.front() == "w"_L1;
    std::vector<std::byte> bytes(writes || words.size() < 4 ? std::size_t(width) : number(3));
    quint32 value = number(3);
    if (writes)
        std::memcpy(bytes.data(), &value, bytes.size());
    const TargetAnswer answer = writes ? target.write(number(1), bytes, width) : target.read(number(1), bytes, width);
    if (!answer)
        return (answer.outcome == TargetAnswer::NotHere ? u"not here: "_s : u"no answer: "_s) + answer.reason;
    if (writes)
        return u"ok"_s;
    QStringList values;
    for (std::size_t at = 0; at < bytes.size(); at += std::size_t(width)) {
        value = 0;
        std::memcpy(&value, &bytes[at], std::size_t(width));
        values += hex8(value).right(2 * width);
    }
    return values.join(u' ');
}

std::unique_ptr<Target> open(const QStringList &words, const VMMemoryMap &map, QStringList &told,
                             const TargetSettings &settings)
{
    FindingList findings;
    auto target = openTarget(words, map, settings, findings);
    for (const Finding &finding : findings.findings)
        told += finding.text();
    return target;
}

} // namespace veldmap

// What lint says of trees. A case of the golden files has a fault of each kind beside what is just none.

#include "check/lint.h"
#include "support/loaded.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// What lint says of \a map, as "LINE:COLUMN text [id]" with the line in its file, line by line.
QString findingsOf(const VMMemoryMap &map)
{
    veldmap::FindingList found;
    veldmap::Lint().report(map, found);
    QStringList lines;
    for (const veldmap::Finding &finding : std::as_const(found.findings))
        lines += u"%1:%2 %3 [%4]"_s.arg(QString::number(finding.place.line), QString::number(finding.place.column),
                                        finding.text(), finding.rule->id);
    return lines.join(u'\n');
}

} // namespace

TEST(TreeChecks, Cases)
{
    const Answer answer = [](const Loaded &soc, const QStringList &) { return findingsOf(*soc.map); };
    expectCases(u"check/registers.txt"_s, answer, u"<module name=\"uart\">%1\n</module>"_s);
    expectCases(u"check/memory_map.txt"_s, answer);
    expectCases(u"check/structures.txt"_s, answer);
}

TEST(TreeChecks, ChipAndSoftwareShareTheMemory)
{
    const QString types = u"<module name='uart'><reg name='a' protect='r'/></module>"_s;
    const Loaded chip = Loaded::archive(types + u"<instance name='U0' type='uart' address='0x100'/>"_s);
    const Loaded soft = Loaded::archive(types + u"<instance name='U0' type='uart' address='0x100'/>\n"
                                                u"<instance name='heap' type='uart' address='0x102'/>"_s);
    chip.map->softRootArchive = std::exchange(soft.map->chipRootArchive, nullptr);
    EXPECT_EQ(findingsOf(*chip.map),
              u"2:51 instance 'heap' lies at 0x00000102, which is no multiple of 4 as the alignment of its type 'uart' "
              "asks for [instance-unaligned]\n"
              "2:51 members of instance 'heap' (0x00000102 to 0x00000105) overlap those of 'U0' (0x00000100 to "
              "0x00000103) [instance-overlap]"_s);
}

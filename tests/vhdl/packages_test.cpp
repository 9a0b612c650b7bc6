#include "findings/finding.h"
#include "model/aggregates.h"
#include "outputs/outputs.h"
#include "support/loaded.h"
#include "vhdl/notation.h"
#include "vhdl/static_expression.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {

veldmap::OutputFiles writePackages(const Loaded &soc, const QString &directory, veldmap::Sink &sink)
{
    veldmap::OutputOptions options;
    options.directory = directory;
    return veldmap::writeOutput(*soc.map, veldmap::Output::Vhdl, options, sink);
}

/// What is said of the packages of a description, without the names of its files.
QString findingsOf(const Loaded &soc)
{
    QStringList texts;
    veldmap::FindingList told;
    EXPECT_TRUE(writePackages(soc, soc.directory->path(), told).failed.isEmpty());
    for (const veldmap::Finding &finding : told.findings)
        texts += finding.text();
    return texts.join(u'\n');
}

} // namespace

TEST(VhdlMaps, OfEachKindOfElement)
{
    expectCases(u"vhdl/maps.txt"_s, [](const Loaded &soc, const QStringList &words) {
        QStringList seen;
        const VMXMLElement &element =
            words.first() == u"maps"_s ? *soc.archiveAt(0).templates.front() : *soc.root().instances.front();
        return element.vhdl_serialize(0, seen);
    });
}

TEST(VhdlMaps, LinesOfOneModuleAreKnownAcrossCalls)
{
    const Loaded soc = Loaded::archive(u"<module name='m'><reg name='a'><bits name='f' pos='0'/></reg></module>"_s);
    QStringList seen;
    const auto &module = soc.type<VMStruct>(u"m"_s);
    EXPECT_FALSE(module.vhdl_serialize(0, seen).contains(u"--        constant"_s));
    EXPECT_EQ(seen.size(), 2);
    EXPECT_EQ(module.vhdl_serialize(0, seen).count(u"--        constant"_s), 2);
}

TEST(VhdlPackages, WholePackage)
{
    const Loaded soc(Files{{u"soc.xml"_s, u"<archive vhdlpkg='soc_regs'><include file='sub/lib.xml'/>"
                                          "<typedef name='t'><reg name='unseen'/></typedef>"
                                          "<alias name='al'><reg name='unseen'/></alias>"
                                          "<module name='m'><reg name='r'><bits name='f' pos='BUS_TOP:0'/></reg>"
                                          "<reg name='q'><bits name='f' pos='1'/></reg></module>"
                                          "<module name='n'><struct name='s'><reg name='r2'><bits name='f' pos='1'/>"
                                          "</reg></struct></module></archive>"_s},
                           {u"sub/lib.xml"_s, u"<archive><var name='bus_top' value='0x1F'><comment>a<br/>b</comment>"
                                              "</var><var name='BUS_TOP' value='exp2(4)+0xf'/><spacer/>"
                                              "<var name='VeldmapSpacer_own' value='1'/>"
                                              "<range name='Bus' left='BUS_TOP' right='exp2(1)-0x1' dir='up'/>"
                                              "<enum name='e'><entry name='Off'/></enum></archive>"_s}});
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    soc.map->generateVHDL(soc.directory->path());
    expectGolden(u"vhdl/soc_regs.vhd"_s, readFile(soc.path(u"soc_regs.vhd"_s)));
    expectGolden(u"vhdl/lib_reg_pkg.vhd"_s, readFile(soc.path(u"sub/lib_reg_pkg.vhd"_s)));
}

TEST(VhdlPackages, FilesThatCanNotBeWritten)
{
    const Loaded soc(Files{{u"dir/soc.xml"_s, u"<archive><include file='a.xml'/><include file='b.xml'/>"
                                              "<include file='../c.xml'/></archive>"_s},
                           {u"dir/a.xml"_s, u"<archive vhdlpkg='../a'/>"_s},
                           {u"dir/b.xml"_s, u"<archive vhdlpkg='b/b'/>"_s},
                           {u"c.xml"_s, u"<archive/>"_s}});
    const QString out = soc.path(u"x/out"_s);
    writeFile(out + u"/c_reg_pkg.vhd"_s, "of another"); // makes the directory
    veldmap::FindingList told;
    const veldmap::OutputFiles report = writePackages(soc, out, told);
    EXPECT_EQ(report.written, QStringList({out + u"/soc_reg_pkg.vhd"_s, out + u"/../c_reg_pkg.vhd"_s}));
    EXPECT_EQ(report.outside, QStringList(soc.path(u"x/c_reg_pkg.vhd"_s)));
    ASSERT_EQ(report.failed.size(), 2);
    EXPECT_EQ(report.failed.first().path, out + u"/../a.vhd"_s);
    EXPECT_FALSE(QFile::exists(soc.path(u"x/a.vhd"_s)));
    EXPECT_EQ(readFile(out + u"/c_reg_pkg.vhd"_s), u"of another"_s);
}

TEST(VhdlPackages, AddressBits)
{
    const int rows[][2] = {{0, 1}, {8, 0}, {16, 1}, {32, 2}, {40, 3}, {64, 3}, {65, 4}, {12, 1}, {0x7FFFFFFF, 28}};
    for (const auto &[bits, number] : rows)
        EXPECT_EQ(vhdl_log2(bits), number) << bits;
}

TEST(VhdlFindings, EachKindOnceForEachModule)
{
    expectCases(u"vhdl/findings.txt"_s, [](const Loaded &soc, const QStringList &) { return findingsOf(soc); });
}

TEST(VhdlFindings, NamesOfIncludedPackages)
{
    // A package sees what it includes itself, and of two that declare one name neither.
    const Files files = {
        {u"soc.xml"_s, u"<archive><include file='a.xml'/><include file='b.xml'/><var name='D' value='A+DEEP'/>"
                       "<var name='E' value='BOTH'/><var name='F' value='A+B'/></archive>"_s},
        {u"a.xml"_s, u"<archive><include file='deep.xml'/><var name='A' value='1'/><var name='BOTH' value='1'/>"
                     "</archive>"_s},
        {u"b.xml"_s, u"<archive><var name='B' value='1'/><var name='BOTH' value='1'/></archive>"_s},
        {u"deep.xml"_s, u"<archive vhdlpkg='entity'><var name='DEEP' value='1'/></archive>"_s}};
    EXPECT_EQ(findingsOf(Loaded(files)),
              uR"(Package 'soc_reg_pkg': VHDL refuses 2 lines, expressions that it can't read; the first is D
Package 'a_reg_pkg': VHDL refuses 1 line, names that are reserved or no identifiers; the first is entity
Package 'entity': VHDL refuses 2 lines, names that are reserved or no identifiers; the first is entity)"_s);
}

TEST(VhdlFindings, StaticExpressions)
{
    using veldmap::StaticResult;
    const auto constants = [](const QString &name) { return name == u"W"_s ? std::optional<qint64>(8) : std::nullopt; };
    const std::pair<StaticResult, QStringList> rows[] = {
        {StaticResult::Value,
         {u"-W+2*(3-1)"_s, u"2**(W)-1"_s, u" 16#7fFFFFFF# "_s, u"w"_s, u"(-1)**1000000001"_s,
          u"4294967296-4294967295"_s, u"-2147483648"_s, u"1E3"_s}},
        {StaticResult::TooLarge,
         {u"2147483648"_s, u"2**31"_s, u"2**31-1"_s, u"65536*65536/65536"_s, u"-2147483648/(-1)"_s,
          u"99999999999999999999"_s, u"W*2**28"_s, u"9223372036854775807+1"_s}},
        {StaticResult::Unreadable,
         {u"1E"_s, u""_s, u"2*-1"_s, u"1--1"_s, u"2**2**2"_s, u"2**(-1)"_s, u"1/0"_s, u"(1"_s, u"1)"_s, u"1 2"_s,
          u"0B11"_s, u"16##"_s, u"X"_s, u"1.5"_s, u"1<<2"_s, QString(100'000, u'(')}},
    };
    for (const auto &[result, texts] : rows) {
        for (const QString &text : texts)
            EXPECT_EQ(veldmap::evaluateStatic(text, constants), result) << text.left(40).toStdString();
    }
}

#include "model/aggregates.h"
#include "support/loaded.h"
#include "vhdl/notation.h"
#include "vhdl/packages.h"
#include "vhdl/static_expression.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace {

/// The text of the members of the only module of a description, without that of the module around them.
QString mapsOf(const QString &members, const QString &before = {})
{
    const Loaded soc = Loaded::archive(before + u"<module name='m'>"_s + members + u"</module>"_s);
    QStringList seen;
    return soc.type<VMStruct>(u"m"_s).vhdl_serialize(0, seen);
}

/// The lines of \a text with \a word in them.
QString linesWith(const QString &text, const QString &word)
{
    QString found;
    for (const QString &line : text.split(u'\n')) {
        if (line.contains(word))
            found += line + u'\n';
    }
    return found;
}

/// What is said of the packages of a description, without the names of its files.
QStringList findingsOf(const Files &files)
{
    const Loaded soc(files);
    QStringList texts;
    const veldmap::VhdlReport report = veldmap::writeVhdlPackages(*soc.map, soc.directory->path());
    EXPECT_TRUE(report.failed.isEmpty());
    for (const veldmap::VhdlFinding &finding : report.findings)
        texts += finding.text;
    return texts;
}

QStringList findingsOf(const QString &content)
{
    return findingsOf({{u"soc.xml"_s, u"<archive>"_s + content + u"</archive>"_s}});
}

} // namespace

TEST(VhdlMaps, RegisterBlock)
{
    const QString block = mapsOf(u"<hole size='64'/><reg name='ctrl'><bits name='Enable' pos='0'/>"
                                 "<bits name='Mode' pos='5:4'/></reg>"_s);
    EXPECT_EQ(block, uR"(    constant at_CTRL:                           integer := 2;
        -- logical map
        constant l_Enable:                              integer := 0;
        subtype  l_Mode is                              integer range 5 downto 4;
        -- physical map
        constant p_Enable:                              integer := 0;
        subtype  p_Mode is                              integer range 2 downto 1;
        subtype range_ctrl is                   integer range 2 downto 0;

)"_s);
}

TEST(VhdlMaps, RepeatedLinesAreCommentedOut)
{
    const QString twice = mapsOf(u"<reg name='a'><bits name='f' pos='0'/><bits name='g' pos='3:2'/></reg>"
                                 "<reg name='b'><bits name='f' pos='0'/><bits name='g' pos='4:2'/></reg>"_s);
    EXPECT_EQ(linesWith(twice, u"_f:"_s), uR"(        constant l_f:                                   integer := 0;
        constant p_f:                                   integer := 0;
--        constant l_f:                                   integer := 0;
--        constant p_f:                                   integer := 0;
)"_s);
    EXPECT_EQ(linesWith(twice, u"l_g"_s),
              uR"(        subtype  l_g is                                 integer range 3 downto 2;
        subtype  l_g is                                 integer range 4 downto 2;
)"_s);
}

TEST(VhdlMaps, GroupsAndSymbolicPositions)
{
    const QString text = mapsOf(u"<reg name='r'><bits name='a' pos='1:0'/><bits name='mid' pos='W-1:4'/>"
                                "<bits name='b' pos='2'/><bits name='one' pos='W+1:9'/>"
                                "<bitgroup name='ab'><entry ref='a'/><entry ref='b'/></bitgroup>"
                                "<bitgroup name='ends'><entry ref='a'/><entry ref='mid'/></bitgroup>"
                                "<bitgroup name='top'><entry ref='b'/><entry ref='mid'/></bitgroup></reg>"_s,
                                u"<var name='W' value='8'/>"_s);
    EXPECT_EQ(linesWith(text, u"l_"_s),
              uR"(        subtype  l_a is                                 integer range 1 downto 0;
        subtype  l_mid is                               integer range W-1 downto 4;
        constant l_b:                                   integer := 2;
        constant l_one:                                 integer := W+1;
        subtype  l_ab is                                integer range 2 downto 0;
        -- Not Contiguous BitGroup: subtype  l_ends is  integer range W-1 downto 0;
        -- Not Contiguous BitGroup: subtype  l_top is   integer range W-1 downto 2;
)"_s);
    EXPECT_EQ(linesWith(text, u"p_"_s),
              uR"(        subtype  p_a is                                 integer range 1 downto 0;
        subtype  p_mid is                               integer range 2+W-1-4 downto 2;
        constant p_b:                                   integer := 2+W-1-4+1;
        constant p_one:                                 integer := 2+W-1-4+1+1+W+1-9;
        -- Not Contiguous BitGroup: subtype  p_ab is    integer range 2+W-1-4+1 downto 0;
        subtype  p_ends is                              integer range 2+W-1-4 downto 0;
        subtype  p_top is                               integer range 2+W-1-4+1 downto 2;
)"_s);
}

TEST(VhdlMaps, PositionsThatTheEvaluatorCanNotReadLeaveTheErrorInTheText)
{
    const QString text = mapsOf(u"<reg name='r'><bits name='h' pos='0x4'/><bits name='x' pos='exp2(1)'/>"
                                "<bits name='ok' pos='7'/></reg>"_s);
    EXPECT_TRUE(text.contains(u"-- logical map\nERROR while evaluating expressions when generating vhdl"_s));
    EXPECT_EQ(text.count(u"ERROR while"_s), 2);
    EXPECT_TRUE(text.contains(u"constant l_ok:                                  integer := 7;\n"_s));
    const Loaded soc = Loaded::archive(u"<module name='m'><reg name='r'><bits name='f' pos='0'/></reg></module>"
                                       "<instance name='I' type='m'/>"_s);
    QStringList seen;
    EXPECT_TRUE(soc.root().instances.front()->vhdl_serialize(0, seen).contains(u"ERROR : contact developper"_s))
        << "an instance hangs on no archive";
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

TEST(VhdlMaps, Arrays)
{
    EXPECT_EQ(
        linesWith(mapsOf(u"<hole size='64'/><reg8 name='b' count='5'><bits name='f' pos='0'/></reg8>"_s), u"at_B"_s)
            .count(u":= 2;"_s),
        5)
        << "four bytes share a word, and the prototype stands for the first";
    const Loaded high = Loaded::archive(u"<module name='m'><reg name='r'/></module><instance name='I' type='m' "
                                        "address='0xFFFFFFFC'/>"_s);
    QStringList none;
    EXPECT_TRUE(high.root().instances.front()->vhdl_serialize(0, none).contains(u"integer := 1073741823;"_s));
    EXPECT_EQ(mapsOf(u"<reg8 name='before'><bits name='z' pos='0'/></reg8>"
                     "<reg16 name='r' count='3'><bits name='f' pos='0'/></reg16>"_s)
                  .section(u"\n\n"_s, 1),
              uR"(    constant at_R:                              integer := 0;
        -- logical map
        constant l_f:                                   integer := 0;
        -- physical map
        constant p_f:                                   integer := 0;
        subtype range_r is                      integer range 0 downto 0;

    constant at_R_0:                            integer := 0;
    constant at_R_1:                            integer := 1;
    constant at_R_2:                            integer := 1;

        constant tabsize_r:                     integer := 3;
        type tab_r is array (NATURAL range <>) of std_logic_vector(range_r);

)"_s);
    const QString ofStructs = mapsOf(u"<struct name='s' count='2'><reg name='r'/></struct>"_s);
    EXPECT_EQ(linesWith(ofStructs, u"at_"_s), u"        constant at_R:                          integer := 0;\n"_s);
    EXPECT_EQ(mapsOf(u"<uint8 name='u' count='2'/>"_s).count(u"at_U"_s), 1);
    EXPECT_EQ(mapsOf(u"<reg name='none' count='0'/><hole size='8'/><memory name='m' size='4'/>"_s), QString());
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
    const veldmap::VhdlReport report = veldmap::writeVhdlPackages(*soc.map, out);
    EXPECT_EQ(report.written, 1);
    ASSERT_EQ(report.failed.size(), 3);
    EXPECT_EQ(report.failed.first().path, out + u"/../a.vhd"_s);
    EXPECT_FALSE(QFile::exists(soc.path(u"x/a.vhd"_s)));
    EXPECT_FALSE(QFile::exists(soc.path(u"x/c_reg_pkg.vhd"_s)));
}

TEST(VhdlPackages, AddressBits)
{
    const int rows[][2] = {{0, 1}, {8, 0}, {16, 1}, {32, 2}, {40, 3}, {64, 3}, {65, 4}, {12, 1}, {0x7FFFFFFF, 28}};
    for (const auto &[bits, number] : rows)
        EXPECT_EQ(vhdl_log2(bits), number) << bits;
}

TEST(VhdlFindings, EachKindOnceForEachModule)
{
    const QString fine = u"<reg name='c'><bits name='c' pos='0'/></reg><hole size='32'/>"_s;
    const struct {
        QString content;
        QStringList findings;
    } rows[] = {
        {u"<module name='m'>"_s + fine + u"</module>"_s, {}},
        {u"<module name='m'>"_s + fine + u"<reg name='r'/><reg name='s' count='2'/></module>"_s,
         {u"Module 'm': VHDL refuses 3 lines, ranges of registers without bitfields; the first is m.r"_s}},
        {u"<module name='m'>"_s + fine + u"<reg name='C'><bits name='C' pos='1'/></reg></module><module name='n'>"_s +
             fine + u"</module>"_s,
         {u"Module 'm': VHDL refuses 4 lines, names that are declared already; the first is m.C: at_C"_s,
          u"Module 'n': VHDL refuses 4 lines, names that are declared already; the first is n.c: at_C"_s}},
        {u"<var name='Range' value='1'/><var name='a__b' value='1'/><range name='_c' left='1' right='0'/>"
         "<module name='0m'>"_s +
             fine + u"<reg name='d_'><bits name='d' pos='0'/></reg></module>"_s,
         {u"Package 'soc_reg_pkg': VHDL refuses 3 lines, names that are reserved or no identifiers; the first is RANGE"_s,
          u"Module '0m': VHDL refuses 3 lines, names that are reserved or no identifiers; the first is 0M_REG_NBA"_s}},
        {u"<module name='m'><reg name='c'><bits name='c' pos='0'/></reg></module>"_s,
         {u"Module 'm': VHDL refuses 1 line, _REG_NBA outside 1 to 12; the first is M_REG_NBA"_s}},
        {u"<var name='A' value='0x80000000'/><var name='B' value='exp2(31)'/><var name='C' value='1+A'/>"_s,
         {u"Package 'soc_reg_pkg': VHDL refuses 2 lines, numbers beyond its integers; the first is A"_s}},
        {u"<var name='A' value='1&lt;&lt;4'/><var name='B' value='0b11'/><var name='G' value='1' global='yes'/>"
         "<var name='C' value='G+1'/>"_s,
         {u"Package 'soc_reg_pkg': VHDL refuses 3 lines, expressions that it can't read; the first is A"_s}},
        {u"<var name='low' value='1'/><module name='m'>"_s + fine +
             u"<struct name='s'><reg name='r'><bits name='f' pos='low'/><bits name='g' pos='0x2:0'/></reg></struct>"
             "</module>"_s,
         {u"Module 'm': VHDL refuses 2 lines, positions that have no value; the first is m.s.r: f"_s}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(findingsOf(row.content), row.findings) << row.content.toStdString();
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
    EXPECT_EQ(findingsOf(files).join(u'\n'),
              uR"(Package 'soc_reg_pkg': VHDL refuses 2 lines, expressions that it can't read; the first is D
Package 'a_reg_pkg': VHDL refuses 1 line, names that are reserved or no identifiers; the first is entity
Package 'entity': VHDL refuses 2 lines, names that are reserved or no identifiers; the first is entity)"_s);
}

TEST(VhdlFindings, StaticExpressions)
{
    using veldmap::StaticResult;
    const auto constants = [](const QString &name) { return name == u"W"_s ? std::optional<qint64>(8) : std::nullopt; };
    const struct {
        QString text;
        StaticResult result;
    } rows[] = {
        {u"-W+2*(3-1)"_s, StaticResult::Value},
        {u"2**(W)-1"_s, StaticResult::Value},
        {u" 16#7fFFFFFF# "_s, StaticResult::Value},
        {u"w"_s, StaticResult::Value},
        {u"(-1)**1000000001"_s, StaticResult::Value},
        {u"2147483648"_s, StaticResult::TooLarge},
        {u"2**31"_s, StaticResult::TooLarge},
        {u"99999999999999999999"_s, StaticResult::TooLarge},
        {u"65536*65536/65536"_s, StaticResult::Value}, // literals end nowhere
        {u"W*2**28"_s, StaticResult::TooLarge},
        {u"-2147483648"_s, StaticResult::Value},
        {u"9223372036854775807+1"_s, StaticResult::TooLarge},
        {u"1E3"_s, StaticResult::Value},
        {u"1E"_s, StaticResult::Unreadable},
        {u""_s, StaticResult::Unreadable},
        {u"2*-1"_s, StaticResult::Unreadable},
        {u"1--1"_s, StaticResult::Unreadable},
        {u"2**2**2"_s, StaticResult::Unreadable},
        {u"2**(-1)"_s, StaticResult::Unreadable},
        {u"1/0"_s, StaticResult::Unreadable},
        {u"(1"_s, StaticResult::Unreadable},
        {u"1)"_s, StaticResult::Unreadable},
        {u"1 2"_s, StaticResult::Unreadable},
        {u"0B11"_s, StaticResult::Unreadable},
        {u"16##"_s, StaticResult::Unreadable},
        {u"X"_s, StaticResult::Unreadable},
        {u"1.5"_s, StaticResult::Unreadable},
        {u"1<<2"_s, StaticResult::Unreadable},
        {QString(100'000, u'('), StaticResult::Unreadable},
    };
    for (const auto &row : rows)
        EXPECT_EQ(veldmap::evaluateStatic(row.text, constants), row.result) << row.text.left(40).toStdString();
}

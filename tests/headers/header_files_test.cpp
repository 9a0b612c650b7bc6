// Whole header files, and which of them are written.

#include "support/loaded.h"

#include "headers/header_texts.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

const QString kUart = uR"xml(<archive>
  <comment>UART file</comment>
  <include file="regdef.xml"/>
  <var name="UART_NB_CHAN" value="2"><comment>Number of channels</comment></var>
  <enum name="uart_mode"><entry name="UART_MODE_OFF"/><entry name="UART_MODE_ON"/></enum>
  <module name="uart">
    <comment>UART registers</comment>
    <reg32 name="ctrl">
      <comment>Control</comment>
      <bits name="enable" pos="0"/>
      <bits name="speed" pos="3:1">
        <options><default/><option name="slow"/><option name="fast" value="5"/></options>
      </bits>
    </reg32>
    <hole size="32"/>
    <reg32 name="chan" count="UART_NB_CHAN"/>
    <struct name="fifo"><uint8 name="data"/><uint8 name="level"/></struct>
  </module>
  <instance name="UART0" type="uart" address="0x01A00000"/>
</archive>)xml"_s;

void setTime(const QString &path, int secondsAgo)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(QDateTime(QDate(2026, 1, 1), QTime(12, 0)).addSecs(-secondsAgo),
                                 QFileDevice::FileModificationTime));
}

} // namespace

TEST(HeaderFiles, WholeHeaders)
{
    const Loaded soc({{u"uart.xml"_s, kUart}, {u"regdef.xml"_s, u"<archive/>"_s}});
    testing::internal::CaptureStdout();
    soc.map->generateCHeaders(soc.path(u"out"_s), true); // there is no such directory
    EXPECT_FALSE(QFileInfo::exists(soc.path(u"out/uart.h"_s)));
    soc.map->generateCHeaders(soc.directory->path(), true);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "uart\nuart\n");
    expectGolden(u"headers/uart.h"_s, readFile(soc.path(u"uart.h"_s)));
    expectGolden(u"headers/uart_asm.h"_s, readFile(soc.path(u"uart_asm.h"_s)));
    for (const QString &line : soc.archiveAt(0).c_header().split(u'\n').first(17))
        EXPECT_EQ(line.size(), line.contains(u'\t') ? 79 : 80) << line.toStdString();
}

TEST(HeaderTexts, AreThoseOfTheFilesAndTraceNothing)
{
    const Loaded soc({{u"uart.xml"_s, kUart}, {u"regdef.xml"_s, u"<archive asm='no'/>"_s}});
    const VMXMLArchive &uart = soc.archiveAt(0);
    testing::internal::CaptureStdout();
    const veldmap::HeaderTexts texts(soc.root());
    const veldmap::HeaderTexts::Headers headers = texts.headersOf(uart);
    EXPECT_EQ(texts.cHeaderOf(uart).c, headers.c);
    EXPECT_EQ(texts.assemblyHeaderOf(uart), headers.assembly);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(headers.pointedTypes, QStringList({u"uart"_s}));
    EXPECT_EQ(texts.headersOf(soc.archiveAt(1)).assembly, QString());

    testing::internal::CaptureStdout();
    EXPECT_EQ(headers.c, uart.c_content());
    EXPECT_EQ(headers.assembly, uart.asm_content());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "uart\n");
}

TEST(HeaderFiles, ConditionalIncludesCodeAndNoAssembly)
{
    const Loaded soc(u"<archive asm='no'><include><case cond='A == 1' file='a.xml'/><case cond='0' file='x/b.h.h'/>"_s
                     "<default file='sub/c.xmd'/></include><include load='no' file='plain.h'/>"
                     "<var name='N' value='1'/><cjoker>int code;</cjoker></archive>"_s);
    EXPECT_FALSE(soc.isLoaded()); // A is not known
    const Loaded known(u"<archive asm='no'><var name='A' value='0'/><include><case cond='A == 1' file='a.xml'/>"_s
                       "<case cond='0' file='x/b.h.h'/><default file='sub/c.xmd' optional='yes'/></include>"
                       "<include load='no' file='plain.h'/><cjoker>int code;</cjoker></archive>"_s);
    const VMXMLArchive &archive = known.archiveAt(0);
    expectGolden(u"headers/conditional.h"_s, archive.c_content());
    expectGolden(u"headers/conditional_asm.h"_s, archive.asm_content());
}

TEST(HeaderFiles, LinksAreFollowedAndStay)
{
    const Loaded soc(u"<archive asm='no'/>"_s);
    writeFile(soc.path(u"kept/real.h"_s), "old");
    ASSERT_TRUE(QFile::link(u"kept/real.h"_s, soc.path(u"middle.h"_s)));
    ASSERT_TRUE(QFile::link(u"middle.h"_s, soc.path(u"soc.h"_s)));
    soc.map->generateCHeaders(soc.directory->path(), true);
    EXPECT_EQ(readFile(soc.path(u"kept/real.h"_s)), soc.archiveAt(0).c_content());
    ASSERT_TRUE(QFile::remove(soc.path(u"kept/real.h"_s)));
    soc.map->generateCHeaders(soc.directory->path(), true);
    EXPECT_EQ(readFile(soc.path(u"kept/real.h"_s)), soc.archiveAt(0).c_content()) << "what is not there yet";
    EXPECT_TRUE(QFileInfo(soc.path(u"soc.h"_s)).isSymLink() && QFileInfo(soc.path(u"middle.h"_s)).isSymLink());
}

TEST(HeaderFiles, UpToDateOnesAreLeftAlone)
{
    const Loaded soc({{u"soc.xml"_s, u"<archive><include file='sub/deep/a.xml'/></archive>"_s},
                      {u"sub/deep/a.xml"_s, u"<archive/>"_s}});
    const QString target = soc.path(u"out"_s);
    const QString header = target + u"/sub/deep/a.h"_s;
    const auto generate = [&](bool skip) {
        writeFile(target + u"/keep"_s, {});
        soc.map->skipUpToDate = skip;
        testing::internal::CaptureStdout();
        soc.map->generateCHeaders(target, true);
        return QString::fromStdString(testing::internal::GetCapturedStdout());
    };
    EXPECT_EQ(generate(true), QString()); // what is missing is written
    const QString complete = readFile(header);
    const auto spoil = [&](int secondsAgo) {
        writeFile(header, "old");
        writeFile(target + u"/sub/deep/a_asm.h"_s, "old");
        setTime(header, secondsAgo);
    };
    setTime(soc.path(u"sub/deep/a.xml"_s), 10);
    setTime(soc.path(u"soc.xml"_s), 0);
    const auto makeStale = [&] { setTime(target + u"/soc.h"_s, 5); };
    makeStale();
    spoil(9);
    EXPECT_EQ(generate(true), u"Skipping %1\n"_s.arg(header));
    EXPECT_EQ(readFile(header) + readFile(target + u"/sub/deep/a_asm.h"_s), u"oldold"_s);
    makeStale();
    spoil(10); // equal times
    EXPECT_EQ(generate(true), QString());
    EXPECT_EQ(readFile(header), complete);
    spoil(0);
    EXPECT_EQ(generate(false), QString());
    EXPECT_EQ(readFile(header), complete);
}

// The kinds of targets that need nobody at the other end, and several targets as one.

#include "target/asking.h"

#include "target/uio_maps.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace veldmap;

namespace {

const QString kChip =
    u"<archive>"
    "<module name='block'><reg32 name='ctrl' protect='rw'><bits name='plain' pos='3:0' access='rw' rst='5'/>"
    "<bits name='set' pos='5:4' access='rs'/><bits name='clear' pos='9:8' access='rc' rst='3'/>"
    "<bits name='busy' pos='16' access='r' rst='1'/><bits name='key' pos='31:24' access='w' rst='9'/></reg32>"
    "<reg16 name='bare' protect='rw'/><reg8 name='secret' protect='w'/><reg8 name='ro' protect='r'>"
    "<bits name='id' pos='7:0' access='r' rst='0x42'/></reg8><hole size='32'/><memory name='ram' size='8'/>"
    "<uint8 name='a'/><uint8 name='b'/><uint16 name='c'/></module>"
    "<module name='in'><reg8 name='data' protect='r'><bits name='d' pos='7:0' access='r' rst='1'/></reg8></module>"
    "<module name='out'><reg8 name='data' protect='w'><bits name='d' pos='7:0' access='w'/></reg8></module>"
    "<instance name='B' type='block' address='0x1000'/><instance name='OUT' type='out' address='0x2000'/>"
    "<instance name='IN' type='in' address='0x2000'/></archive>"_s;

class Targets : public testing::Test {
protected:
    /// Asks one line after the other; each row holds a line and its answer.
    void expect(Target *target, const std::vector<std::pair<QString, QString>> &rows)
    {
        ASSERT_TRUE(target) << told.join(u'\n').toStdString();
        for (const auto &[line, answer] : rows)
            EXPECT_EQ(ask(*target, line), answer) << line.toStdString();
    }
    QString image(const QString &name, const QByteArray &bytes)
    {
        QFile file(soc.path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    QByteArray content(const QString &name)
    {
        QFile file(soc.path(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }

    Loaded soc{kChip};
    QStringList told;
};

TEST_F(Targets, SimulatorDoesWhatAccessWordsSay)
{
    const auto target = open({u"sim"_s}, *soc.map, told);
    expect(target.get(), {
                             {u"r 0x1000 4"_s, u"00010305"_s}, // reset values; the key can't be read
                             {u"w 0x1000 4 0xFFFFFFFF"_s, u"ok"_s},
                             {u"r 0x1000 4"_s, u"0001003F"_s}, // set, cleared, and busy as it was
                             {u"w 0x1000 4 0x2"_s, u"ok"_s},
                             {u"r 0x1000 4"_s, u"00010032"_s}, // 0 neither sets nor clears
                             {u"w 0x1004 2 0xABCD"_s, u"ok"_s},
                             {u"r 0x1004 2"_s, u"ABCD"_s},
                             {u"w 0x1006 1 7"_s, u"ok"_s},
                             {u"r 0x1006 1"_s, u"00"_s},
                             {u"w 0x1007 1 7"_s, u"ok"_s},
                             {u"r 0x1007 1"_s, u"42"_s},
                             {u"r 0x1006 1 2"_s, u"00 42"_s},
                             {u"w 0x1010 4 0x11223344"_s, u"ok"_s},
                             {u"w 0x1012 1 0xAA"_s, u"ok"_s},
                             {u"r 0x100C 4 12"_s, u"00000000 11AA3344 00000000"_s},
                             {u"w 0x1014 4 0x030201"_s, u"ok"_s}, // three integers, which are plain memory
                             {u"r 0x1015 1"_s, u"02"_s},
                             {u"r 0x2000 1"_s, u"01"_s}, // two registers at one address
                             {u"w 0x2000 1 9"_s, u"ok"_s},
                             {u"r 0x2000 1"_s, u"01"_s},
                         });
    for (const QString &line : {u"r 0x1000 2"_s, u"r 0x1002 2"_s, u"r 0x1004 4"_s, u"r 0x1008 4"_s, u"w 0x1018 1 1"_s,
                                u"r 0x100C 4 16"_s, u"r 0xFFFFFFFC 4"_s, u"r 0 1"_s})
        EXPECT_TRUE(ask(*target, line).startsWith("not here: the description has nothing of "_L1))
            << line.toStdString();
}

TEST_F(Targets, SimulatorKeepsALog)
{
    const auto target = open({u"sim:log="_s + soc.path(u"log"_s)}, *soc.map, told);
    expect(target.get(), {{u"w 0x1004 2 1"_s, u"ok"_s}, {u"r 0x1000 4"_s, u"00010305"_s}});
    EXPECT_TRUE(target->flush());
    EXPECT_EQ(content(u"log"_s), "w 0x00001004 2 0x0001\nr 0x00001000 4 0x00010305\n");
}

TEST_F(Targets, ImageIsAFile)
{
    const QString path = image(u"a@b"_s, QByteArray::fromHex("0102030405"));
    const auto target = open({u"image:%1@0xFFFFFFFC"_s.arg(path)}, *soc.map, told);
    expect(
        target.get(),
        {{u"r 0xFFFFFFFC 4"_s, u"04030201"_s},
         {u"w 0xFFFFFFFE 2 0xBEEF"_s, u"ok"_s},
         {u"r 0xFFFFFFFC 1 4"_s, u"01 02 EF BE"_s},
         {u"r 0 1"_s, u"not here: 0x00000000 does not lie in %1, which has 5 bytes from 0xFFFFFFFC on"_s.arg(path)}});
    EXPECT_EQ(content(u"a@b"_s).toHex(), "0102030405");
    EXPECT_TRUE(target->flush());
    EXPECT_EQ(content(u"a@b"_s).toHex(), "0102efbe05");
}

TEST_F(Targets, SeveralAreOne)
{
    const QString first = image(u"first"_s, QByteArray::fromHex("11111111"));
    const QString second = image(u"second"_s, QByteArray::fromHex("222222222222222222"));
    const auto target =
        open({u"image:%1@0x1004"_s.arg(first), u"image:%1@0x1000"_s.arg(second), u"sim"_s}, *soc.map, told);
    expect(target.get(), {{u"r 0x1000 4 8"_s, u"22222222 11111111"_s}, // the first that holds it
                          {u"w 0x1004 4 0x33333333"_s, u"ok"_s},
                          {u"r 0x1000 4 20"_s, u"not here: the description has nothing of 32 bits at 0x00001008"_s},
                          {u"r 0x1000 1 9"_s, u"22 22 22 22 33 33 33 33 22"_s},
                          {u"r 0x100C 4 8"_s, u"00000000 00000000"_s},
                          {u"r 0x5000 4"_s, u"not here: the description has nothing of 32 bits at 0x00005000"_s}});
    EXPECT_TRUE(target->flush());
    EXPECT_EQ(content(u"first"_s).toHex(), "33333333");
    EXPECT_EQ(content(u"second"_s).toHex(), "222222222222222222");
}

TEST_F(Targets, MemoryIsMapped)
{
    QByteArray bytes(8192, '\0');
    for (qsizetype at = 0; at < bytes.size(); ++at)
        bytes[at] = static_cast<char>(at * 7);
    const QString path = image(u"memory"_s, bytes);
    const auto target = open({u"mem:%1@0x40000000"_s.arg(path)}, *soc.map, told);
    const QString outside = u"not here: 0x%1 does not lie in "_s + path;
    expect(target.get(), {{u"r 0x40000000 4"_s, u"150E0700"_s},
                          {u"r 0x40000FFE 2 4"_s, u"F9F2 0700"_s}, // over the border of a page
                          {u"w 0x40001001 1 0xAA"_s, u"ok"_s},
                          {u"w 0x40001002 2 0xBBCC"_s, u"ok"_s},
                          {u"r 0x40001000 4"_s, u"BBCCAA00"_s},
                          {u"r 0x40001FFC 4 8"_s, outside.arg(u"40002000"_s)},
                          {u"r 0x3FFFFFFC 4"_s, outside.arg(u"3FFFFFFC"_s)}});
    EXPECT_EQ(content(u"memory"_s).sliced(4096, 4).toHex(), "00aaccbb");
    EXPECT_TRUE(QFile::resize(path, 4096));
    EXPECT_EQ(ask(*target, u"r 0x40001000 4"_s), outside.arg(u"40001000"_s));
    EXPECT_TRUE(QFile::resize(path, 8192) && QFile::setPermissions(path, QFile::ReadOwner));
    EXPECT_TRUE(target->connect());
    EXPECT_EQ(ask(*target, u"r 0x40000000 4"_s), u"150E0700"_s);
    EXPECT_FALSE(open({u"mem:/none/x"_s}, *soc.map, told));
    EXPECT_EQ(told, QStringList(u"/none/x can't be reached: No such file or directory."_s));
}

TEST_F(Targets, ABusErrorIsNoEnd)
{
    QFile file(image(u"memory"_s, QByteArray(4096, '\x11')));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    // By this name it counts as a device, of which nobody knows where it ends.
    const auto target = open({u"mem:/dev/fd/%1"_s.arg(file.handle())}, *soc.map, told);
    expect(target.get(), {{u"r 0x0 4"_s, u"11111111"_s},
                          {u"r 0x2000 4"_s, u"not here: the bus refuses 0x00002000"_s},
                          {u"w 0x2004 2 1"_s, u"not here: the bus refuses 0x00002004"_s},
                          {u"w 0x4 4 1"_s, u"ok"_s},
                          {u"r 0x0 4 8"_s, u"11111111 00000001"_s}});
}

TEST_F(Targets, MapsOfDevices)
{
    const auto lay = [&](const QString &name, const QByteArray &text) {
        QDir(soc.path({})).mkpath(QFileInfo(name).path());
        image(name, text + '\n');
    };
    const auto maps = [&](std::optional<quint32> address) {
        QStringList found;
        for (const UioMap &map : uioMapsOf(soc.path(u"uio0"_s), address))
            found += u"%1+%2 at %3+%4"_s.arg(QString::number(map.address, 16), QString::number(map.size, 16),
                                             QString::number(map.fileOffset / ::sysconf(_SC_PAGESIZE)),
                                             QString::number(map.displacement, 16));
        return found.join(u", "_s);
    };
    EXPECT_EQ(maps({}), u""_s);
    lay(u"uio0/maps/map0/addr"_s, "0x40001000");
    lay(u"uio0/maps/map0/size"_s, "0x1000");
    lay(u"uio0/maps/map0/offset"_s, "0x10");
    lay(u"uio0/maps/map1/addr"_s, "0x50000020");
    lay(u"uio0/maps/map1/size"_s, "0x40");
    lay(u"uio0/maps/map2/addr"_s, "0x100000000");
    lay(u"uio0/maps/map2/size"_s, "0x1000");
    EXPECT_EQ(maps({}), u"40001010+ff0 at 0+10, 50000020+40 at 1+20"_s);
    EXPECT_EQ(maps(0x80000000), u"80000000+ff0 at 0+10, 50000020+40 at 1+20"_s);
}

TEST_F(Targets, AProgramMakesTheAccesses)
{
    const QString path = image(u"memory"_s, QByteArray::fromHex("0102030405060708"));
    const QString command = u"python3 %1/target.py %2 0x1000"_s.arg(QStringLiteral(EXAMPLES_DIRECTORY), path);
    const auto target = open({u"exec:"_s + command}, *soc.map, told, {std::chrono::seconds(20)});
    expect(target.get(), {{u"r 0x1000 4 8"_s, u"04030201 08070605"_s},
                          {u"w 0x1002 2 0xBEEF"_s, u"ok"_s},
                          {u"w 0x1007 1 0xAA"_s, u"ok"_s},
                          {u"r 0x1000 1 8"_s, u"01 02 EF BE 05 06 07 AA"_s},
                          {u"r 0x1008 1"_s, u"not here: nothing lies there"_s},
                          {u"r 0x1004 2"_s, u"0605"_s}});
    EXPECT_EQ(content(u"memory"_s).toHex(), "0102efbe050607aa");
}

TEST_F(Targets, ProgramsThatDoNotAnswer)
{
    const TargetSettings settings{std::chrono::milliseconds(300)};
    const std::vector<std::pair<QString, QString>> rows = {
        {u"exit 3"_s, u"it has ended with status 3"_s},
        {u"none-such-program 2>/dev/null"_s, u"it has ended with status 127"_s},
        {u"kill -9 $$"_s, u"it was ended"_s},
        {u"exec sleep 60"_s, u"no answer within 0.3 s"_s},
        {u"read line; echo hello"_s, u"it answers 'hello', which is no answer"_s},
        {u"read line; echo ok; sleep 9"_s, u"it answers 'ok', which is no answer"_s},
        {u"read line; echo 0x100; sleep 9"_s, u"it answers '0x100', which is no answer"_s},
        {u"read line; printf 12; sleep 9"_s, u"no answer within 0.3 s"_s},
        {u"exec cat /dev/zero"_s, u"it says more than a line"_s},
        {u"trap '' TERM; while :; do sleep 1; done"_s, u"no answer within 0.3 s"_s}, // it has to be killed
    };
    for (const auto &[command, said] : rows) {
        const auto begin = std::chrono::steady_clock::now();
        const auto target = open({u"exec:"_s + command}, *soc.map, told, settings);
        ASSERT_TRUE(target);
        EXPECT_EQ(ask(*target, u"r 0x1000 1"_s), u"no answer: the program '%1': %2"_s.arg(command, said));
        EXPECT_EQ(ask(*target, u"r 0x1000 1"_s), u"no answer: the program '%1' does not run"_s.arg(command));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4)) << command.toStdString();
    }
    const auto target = open({u"exec:read line; echo error; read line; echo 255"_s}, *soc.map, told, settings);
    expect(target.get(), {{u"r 0 1"_s, u"not here: error"_s}, {u"r 0 1"_s, u"FF"_s}});
    EXPECT_TRUE(target->connect());
    expect(target.get(), {{u"w 0 1 1"_s, u"not here: error"_s}});
}

TEST_F(Targets, WordsThatNameNone)
{
    const QString kinds = u"its kind is none of image, gdb, mem, sim or exec, as in image:dump.bin@0x40000000"_s;
    const std::vector<std::pair<QString, QString>> rows = {
        {u""_s, kinds},
        {u"soc.bin"_s, kinds},
        {u"Image:x@0"_s, kinds},
        {u"image"_s, u"an image is image:FILE@ADDRESS, with the address of its first byte"_s},
        {u"image:dump.bin"_s, u"an image is image:FILE@ADDRESS, with the address of its first byte"_s},
        {u"image:@0"_s, u"an image is image:FILE@ADDRESS, with the address of its first byte"_s},
        {u"image:dump.bin@0x100000000"_s, u"an image is image:FILE@ADDRESS, with the address of its first byte"_s},
        {u"mem:x@1"_s, u"memory is mem:PATH or mem:PATH@ADDRESS, a multiple of 4"_s},
        {u"mem:/dev/uio999"_s, u"the system knows no memory of /dev/uio999"_s},
        {u"exec: "_s, u"a program is exec:COMMAND"_s},
        {u"sim:x"_s, u"a simulator is sim, or sim:log=FILE"_s},
        {u"sim:log="_s, u"a simulator is sim, or sim:log=FILE"_s},
        {u"sim:log=/none/x"_s, u"its log can't be written: No such file or directory"_s},
    };
    for (const auto &[word, reason] : rows) {
        QStringList told;
        EXPECT_FALSE(open({u"sim"_s, word}, *soc.map, told));
        EXPECT_EQ(told, QStringList(u"'%1' is no target: %2."_s.arg(word, reason)));
    }
    EXPECT_FALSE(open({u"image:/none/x@0"_s}, *soc.map, told));
    EXPECT_EQ(told, QStringList(u"/none/x can't be read: No such file or directory"_s));
}

} // namespace

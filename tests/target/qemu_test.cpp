// The client of gdb's protocol with an emulated board, whose registers hold what they do after a reset.

#include "target/asking.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QStandardPaths>
#include <QThread>

using namespace Qt::StringLiterals;
using namespace veldmap;

namespace {

class Qemu : public testing::Test {
protected:
    void SetUp() override
    {
        const QString program = QStandardPaths::findExecutable(u"qemu-system-arm"_s);
        if (program.isEmpty())
            GTEST_SKIP() << "qemu-system-arm is not installed";
        const QString path = m_directory.filePath(u"gdb"_s);
        m_board.setProcessChannelMode(QProcess::ForwardedChannels);
        m_board.start(program, {u"-M"_s, u"mps2-an385"_s, u"-S"_s, u"-display"_s, u"none"_s, u"-monitor"_s, u"none"_s,
                                u"-serial"_s, u"none"_s, u"-gdb"_s, u"unix:%1,server=on,wait=off"_s.arg(path)});
        const QDeadlineTimer end(20000);
        while (!(target = open({u"gdb:"_s + path}, m_map, told)) && !end.hasExpired())
            QThread::msleep(20); // it is not there yet
        ASSERT_TRUE(target) << told.join(u'|').toStdString();
    }
    void TearDown() override
    {
        target.reset();
        if (m_board.state() != QProcess::NotRunning) {
            m_board.terminate();
            m_board.waitForFinished();
        }
    }

    QStringList told;
    std::unique_ptr<Target> target;

private:
    QTemporaryDir m_directory;
    VMMemoryMap m_map;
    QProcess m_board;
};

TEST_F(Qemu, RegistersAfterAReset)
{
    EXPECT_EQ(ask(*target, u"r 0x40008004 4"_s), u"FFFFFFFF"_s);
    EXPECT_EQ(ask(*target, u"r 0x40002008 4"_s), u"00000020"_s);
    EXPECT_EQ(ask(*target, u"r 0x40004FE0 4"_s), u"00000021"_s);
    EXPECT_EQ(ask(*target, u"r 0x40004FF0 4 16"_s), u"0000000D 000000F0 00000005 000000B1"_s);
    EXPECT_EQ(ask(*target, u"w 0x40004010 4 20"_s), u"ok"_s);
    EXPECT_EQ(ask(*target, u"r 0x40004010 4"_s), u"00000014"_s);
}

TEST_F(Qemu, Figures)
{
    constexpr int kReads = 4000;
    auto begin = std::chrono::steady_clock::now();
    for (int at = 0; at < kReads; ++at)
        ASSERT_EQ(ask(*target, u"r 0x40002008 4"_s), u"00000020"_s);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(kReads / seconds.count(), kReadsASecond);

    std::vector<std::byte> written(4096);
    for (std::size_t at = 0; at < written.size(); ++at)
        written[at] = std::byte(at * 7 + at / 256);
    EXPECT_TRUE(target->write(0x20000000, written, 4));
    std::vector<std::byte> read(written.size());
    begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(target->read(0x20000000, read, 4));
    const std::chrono::duration<double> block = std::chrono::steady_clock::now() - begin;
    EXPECT_EQ(read, written);
    std::printf("%.0f reads a second, 4 KB in %.0f us\n", kReads / seconds.count(), block.count() * 1e6);
    EXPECT_EQ(ask(*target, u"w 0x20000001 1 0xAA"_s), u"ok"_s);
    EXPECT_EQ(ask(*target, u"r 0x20000000 1 4"_s), u"00 AA 0E 15"_s);
}

} // namespace

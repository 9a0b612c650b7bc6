// The client of gdb's protocol: what it makes of bytes, and of servers good and bad.

#include "target/asking.h"
#include "target/gdb_packets.h"
#include "target/gdb_server.h"

#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace veldmap;

namespace {

/// What a parser makes of \a bytes: payloads, and "!" for a damaged packet.
QByteArrayList parsed(const QByteArray &bytes, qsizetype pieces)
{
    GdbPacketParser parser;
    QByteArrayList found;
    for (qsizetype at = 0; at < bytes.size(); at += pieces) {
        parser.feed(QByteArrayView(bytes).sliced(at, qMin(pieces, bytes.size() - at)));
        while (const std::optional<GdbEvent> event = parser.next())
            found += event->kind == GdbEvent::Packet    ? event->payload
                     : event->kind == GdbEvent::Damaged ? "!"
                     : event->kind == GdbEvent::Taken   ? "+"
                                                        : "-";
    }
    return found;
}

TEST(GdbPackets, EventsOfBytes)
{
    const std::vector<std::pair<QByteArray, QByteArrayList>> rows = {
        {"$OK#9a", {"OK"}},
        {"+$OK#9A-", {"+", "OK", "-"}},
        {"$#00", {""}},
        {"noise$OK#9a\r\n$E01#a6", {"OK", "E01"}},
        {"$OK#9b$OK#zz", {"!", "!"}},
        {"$OK#$OK#9a", {"OK"}},    // cut off in its checksum,
        {"$O$OK#9a$OK#9", {"OK"}}, // in its payload, at the end
        {"%Stop:T05#f3$OK#9a", {"OK"}},
        {"$0* #7a", {"0000"}},
        {GdbServer::packet("a*~"), {QByteArray(98, 'a')}},
        {GdbServer::packet("}\x03}\x04}]}\x0a"), {"#$}*"}},
        {GdbServer::packet("}\x0a* "), {"****"}},
        {GdbServer::packet("*a"), {"!"}},
        {GdbServer::packet("a*"), {"!"}},
        {GdbServer::packet("a*\x1f"), {"!"}},
        {GdbServer::packet("a}"), {"!"}},
        {GdbServer::packet(QByteArray(GdbPacketParser::kMostBytes + 1, 'a')) + "$OK#9a", {"!", "OK"}},
        {GdbServer::packet("a" + QByteArray("*~").repeated(12000)), {"!"}},
    };
    for (const auto &[bytes, events] : rows) {
        for (const qsizetype pieces : {qsizetype(1), qsizetype(3), bytes.size()})
            EXPECT_EQ(parsed(bytes, pieces), events) << bytes.first(qMin<qsizetype>(bytes.size(), 40)).toStdString();
    }
    const QByteArray all = "a#b$c}d*e";
    EXPECT_EQ(parsed(gdbPacket(all), 2), QByteArrayList{all});
    EXPECT_EQ(gdbPacket("m40004000,4"), QByteArray("$m40004000,4#55"));
    EXPECT_EQ(bytesOfHex("0aFf"), QByteArray("\x0a\xff"));
    for (const QByteArray &digits : {QByteArray("0"), QByteArray("0g"), QByteArray("E01")})
        EXPECT_FALSE(bytesOfHex(digits));
}

const QByteArray kFeatures = "PacketSize=1000;QStartNoAckMode+";

class Gdb : public testing::Test {
protected:
    std::unique_ptr<Target> connect(const GdbServer &server, const QString &options = {})
    {
        return open({u"gdb:"_s + server.path() + options}, map, told, settings);
    }
    /// The words of \a answer behind the name of the server.
    static QString reason(const GdbServer &server, QString answer)
    {
        return answer.replace("the gdb server "_L1 + server.path(), "it"_L1);
    }

    VMMemoryMap map;
    TargetSettings settings{std::chrono::milliseconds(300)};
    QStringList told;
};

TEST_F(Gdb, ReadsAndWrites)
{
    GdbServer server(kFeatures, GdbServer::memory);
    const auto target = connect(server);
    ASSERT_TRUE(target) << told.join(u'|').toStdString();
    EXPECT_EQ(server.taken(), QStringList({u"qSupported"_s, u"QStartNoAckMode"_s, u"qqemu.PhyMemMode"_s}));
    EXPECT_EQ(ask(*target, u"r 0x40004000 4"_s), u"03020100"_s);
    EXPECT_EQ(ask(*target, u"w 0x40004004 4 0x11223344"_s), u"ok"_s);
    EXPECT_EQ(ask(*target, u"r 0xFFFFFFFE 2"_s), u"FFFE"_s);
    EXPECT_EQ(ask(*target, u"r 0x10 1 3"_s), u"10 11 12"_s);
    EXPECT_EQ(server.taken(), QStringList({u"m40004000,4"_s, u"M40004004,4:44332211"_s, u"mfffffffe,2"_s,
                                           u"m10,1 m11,1 m12,1"_s})); // no access wider than asked for
}

TEST_F(Gdb, ABlockIsOneRoundTrip)
{
    for (const auto &[features, requests] : std::initializer_list<std::pair<QByteArray, qsizetype>>{
             {"PacketSize=1000;QStartNoAckMode+", 3}, {"PacketSize=4000;QStartNoAckMode+", 1}}) {
        GdbServer server(features, GdbServer::memory);
        const auto target = connect(server);
        ASSERT_TRUE(target);
        server.taken();
        std::vector<std::byte> bytes(4096);
        EXPECT_TRUE(target->read(0x1000, bytes, 4));
        for (std::size_t at = 0; at < bytes.size(); ++at)
            ASSERT_EQ(bytes[at], std::byte(at)) << at;
        const QStringList turns = server.taken();
        ASSERT_EQ(turns.size(), 1);
        EXPECT_EQ(turns[0].count(u'm'), requests);
    }
}

TEST_F(Gdb, ServersThatKnowLittle)
{
    GdbServer server("", [&](const QByteArray &request) -> GdbServer::Reply {
        if (!request.startsWith('X'))
            return request.startsWith('M') ? GdbServer::Reply{GdbServer::packet("")} : GdbServer::memory(request);
        return {GdbServer::packet("OK")};
    });
    const auto target = connect(server); // acknowledgements, small packets, binary writes
    ASSERT_TRUE(target) << told.join(u'|').toStdString();
    server.taken();
    EXPECT_EQ(ask(*target, u"r 0x10 4 400"_s).right(8), u"9F9E9D9C"_s);
    EXPECT_EQ(ask(*target, u"w 0x10 4 0x232A7D24"_s), u"ok"_s);
    EXPECT_EQ(ask(*target, u"w 0x10 2 1"_s), u"ok"_s);
    const QStringList taken = server.taken();
    EXPECT_EQ(taken.size(), 6) << taken.join(u'|').toStdString(); // three parts, then M, X, X
    EXPECT_EQ(taken[0], u"m10,c4"_s);
    EXPECT_EQ(taken[4], u"X10,4:}\x04}]}\x0a}\x03"_s);
    EXPECT_TRUE(taken[5].startsWith(u"X10,2:"_s));
}

TEST_F(Gdb, HostileServers)
{
    const QByteArray good = GdbServer::packet("00010203");
    struct Row {
        const char *name;
        QByteArray features;
        GdbServer::Reply reply; // to a request for memory
        QString answer;         // a flood ends with its size or its time, whichever is first: empty
    };
    const QString silent = u"no answer: it: no answer within 0.3 s"_s;
    const Row rows[] = {
        {"wrong checksum", kFeatures, {"$00010203#00"}, u"no answer: it: it sent a damaged packet"_s},
        {"wrong checksum each time",
         "",
         {"$00010203#00$00010203#00$00010203#00$00010203#00"},
         u"no answer: it: it sent a damaged packet"_s},
        {"wrong checksum once", "", {"$00010203#00" + good}, u"03020100"_s},
        {"refused each time", "", {"----"}, u"no answer: it: it takes no packet"_s},
        {"cut packet", kFeatures, {good.chopped(5)}, silent},
        {"cut packet, then whole", kFeatures, {good.chopped(5) + good}, u"03020100"_s},
        {"silence", kFeatures, {""}, silent},
        {"silence with acknowledgement", "", {"+"}, silent},
        {"close", kFeatures, {"", GdbServer::Reply::Closes}, u"no answer: it: the connection was closed"_s},
        {"close in the middle",
         kFeatures,
         {good.first(4), GdbServer::Reply::Closes},
         u"no answer: it: the connection was closed"_s},
        {"flood of noise", kFeatures, {QByteArray(65536, 'x'), GdbServer::Reply::Floods}, {}},
        {"flood of acknowledgements", kFeatures, {QByteArray(65536, '+'), GdbServer::Reply::Floods}, {}},
        {"flood of stops", kFeatures, {GdbServer::packet("T05").repeated(5000), GdbServer::Reply::Floods}, {}},
        {"packet without end", kFeatures, {'$' + QByteArray(65536, 'a'), GdbServer::Reply::Floods}, {}},
        {"error", kFeatures, {GdbServer::packet("E14")}, u"not here: it answers E14"_s},
        {"error in words", kFeatures, {GdbServer::packet("E.no bus")}, u"not here: it answers E.no bus"_s},
        {"nothing", kFeatures, {GdbServer::packet("")}, u"not here: it does not let memory be read"_s},
        {"too little", kFeatures, {GdbServer::packet("0302")}, u"not here: it gives 2 bytes of 4"_s},
        {"too much",
         kFeatures,
         {GdbServer::packet("0302010000")},
         u"no answer: it: it answers '0302010000', which is no answer"_s},
        {"half a byte",
         kFeatures,
         {GdbServer::packet("0302010")},
         u"no answer: it: it answers '0302010', which is no answer"_s},
        {"no digits",
         kFeatures,
         {GdbServer::packet("hello\n\xff")},
         u"no answer: it: it answers 'hello%0A%FF', which is no answer"_s},
        {"repetitions without end",
         kFeatures,
         {GdbServer::packet("0*~*~*~")},
         u"no answer: it: it answers '00000000000000000000', which is no answer"_s},
        {"stop and print first",
         kFeatures,
         {GdbServer::packet("T05thread:01;") + GdbServer::packet("O48690a") + "%Stop:T05#00" + good},
         u"03020100"_s},
        {"end of the program", kFeatures, {GdbServer::packet("W00")}, u"no answer: it: what ran there has ended"_s},
        {"packets of no size", "PacketSize=0;QStartNoAckMode+", {good}, u"03020100"_s},
        {"packets of any size", "PacketSize=ffffffffffffffffff;QStartNoAckMode+", {good}, u"03020100"_s},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        GdbServer server(row.features, [&](const QByteArray &request) {
            return request.startsWith('m') ? row.reply : GdbServer::Reply{GdbServer::packet("")};
        });
        const auto target = connect(server);
        ASSERT_TRUE(target) << told.join(u'|').toStdString();
        rusage before = {};
        rusage after = {};
        ::getrusage(RUSAGE_THREAD, &before);
        const auto begin = std::chrono::steady_clock::now();
        const QString answer = reason(server, ask(*target, u"r 0x1000 4"_s));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
        ::getrusage(RUSAGE_THREAD, &after);
        if (row.answer.isEmpty()) {
            EXPECT_TRUE(answer.startsWith("no answer: "_L1)) << answer.toStdString();
        } else {
            EXPECT_EQ(answer, row.answer);
        }
        if (row.answer == silent) {
            EXPECT_LT(after.ru_utime.tv_sec * 1000000 + after.ru_utime.tv_usec - before.ru_utime.tv_sec * 1000000 -
                          before.ru_utime.tv_usec,
                      100000); // it waits, and does not work
        }
        if (answer.startsWith("no answer"_L1)) {
            EXPECT_EQ(reason(server, ask(*target, u"r 0x1000 4"_s)), u"no answer: it is not connected"_s);
        }
    }
}

TEST_F(Gdb, ServersThatSayNoHello)
{
    for (const auto &[reply, said] : std::initializer_list<std::pair<GdbServer::Reply, QString>>{
             {{""}, u"no answer within 0.3 s"_s},
             {{"", GdbServer::Reply::Closes}, u"the connection was closed"_s},
             {{"$E01#00"}, u"it sent a damaged packet"_s}}) {
        GdbServer server(kFeatures, [answer = reply](const QByteArray &) { return answer; });
        told.clear();
        EXPECT_FALSE(connect(server));
        EXPECT_EQ(told, QStringList(u"the gdb server %1 can't be reached: %2."_s.arg(server.path(), said)));
    }
    told.clear();
    EXPECT_FALSE(open({u"gdb:/none/gdb"_s}, map, told));
    EXPECT_FALSE(open({u"gdb:localhost:1"_s}, map, told));
    EXPECT_EQ(told, QStringList({u"the gdb server /none/gdb can't be reached: No such file or directory."_s,
                                 u"the gdb server localhost:1 can't be reached: Connection refused."_s}));
    for (const QString &details : {u""_s, u"localhost"_s, u"localhost:"_s, u":x"_s, u"localhost:70000"_s,
                                   u"localhost:1,phys=yes"_s, u"localhost:1,run"_s, u"localhost:1,"_s}) {
        told.clear();
        EXPECT_FALSE(open({u"gdb:"_s + details}, map, told));
        EXPECT_TRUE(told.value(0).contains("is no target"_L1)) << details.toStdString();
    }
}

TEST_F(Gdb, ConnectsAgain)
{
    std::atomic_int requests = 0;
    GdbServer server(kFeatures, [&](const QByteArray &request) {
        if (request.startsWith('m') && requests++ == 0)
            return GdbServer::Reply{"$03", GdbServer::Reply::Closes};
        return GdbServer::memory(request);
    });
    const auto target = connect(server);
    ASSERT_TRUE(target);
    EXPECT_EQ(reason(server, ask(*target, u"r 0x1000 4"_s)), u"no answer: it: the connection was closed"_s);
    EXPECT_EQ(reason(server, ask(*target, u"r 0x1000 4"_s)), u"no answer: it is not connected"_s);
    EXPECT_TRUE(target->connect());
    EXPECT_EQ(ask(*target, u"r 0x1000 4"_s), u"03020100"_s);
}

TEST_F(Gdb, AnInterruptionEndsAnAccess)
{
    std::atomic_bool interrupted = false;
    std::atomic_int requests = 0;
    GdbServer server(kFeatures, [&](const QByteArray &request) -> GdbServer::Reply {
        if (request.startsWith('m') && requests++ == 0) {
            interrupted = true;
            return {};
        }
        return GdbServer::memory(request);
    });
    settings = {std::chrono::seconds(30), &interrupted};
    const auto target = connect(server);
    ASSERT_TRUE(target);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(reason(server, ask(*target, u"r 0x1000 4"_s)), u"no answer: it: interrupted"_s);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    EXPECT_EQ(ask(*target, u"r 0x1000 4"_s), u"no answer: interrupted"_s);
    interrupted = false;
    EXPECT_EQ(ask(*target, u"r 0x1000 4"_s), u"03020100"_s); // over a connection of its own
}

TEST_F(Gdb, PhysicalAddresses)
{
    GdbServer server(kFeatures, [](const QByteArray &request) -> GdbServer::Reply {
        return {GdbServer::packet(request.startsWith("qqemu") ? "0" : "OK")};
    });
    for (const auto &[options, requests] : std::initializer_list<std::pair<QString, QStringList>>{
             {u""_s, {u"qqemu.PhyMemMode"_s, u"Qqemu.PhyMemMode:1"_s, u"Qqemu.PhyMemMode:0"_s}},
             {u",phys=on"_s, {u"qqemu.PhyMemMode"_s, u"Qqemu.PhyMemMode:1"_s, u"Qqemu.PhyMemMode:0"_s}},
             {u",phys=off"_s, {}}}) {
        EXPECT_TRUE(connect(server, options));
        EXPECT_EQ(server.taken().sliced(2), requests);
    }
    GdbServer other(kFeatures, GdbServer::memory);
    EXPECT_TRUE(connect(other, u",phys=auto"_s));
    EXPECT_FALSE(connect(other, u",phys=on"_s));
    EXPECT_TRUE(told.value(0).endsWith("it knows no physical addresses, which phys=on asks for."_L1));
}

TEST_F(Gdb, AChipThatRunsIsHaltedForAnAccess)
{
    GdbServer server(kFeatures, [](const QByteArray &request) -> GdbServer::Reply {
        if (request == "c")
            return {};
        return request == "\x03" ? GdbServer::Reply{GdbServer::packet("T02thread:01;")} : GdbServer::memory(request);
    });
    {
        const auto target = connect(server, u",run=on"_s);
        ASSERT_TRUE(target);
        EXPECT_EQ(ask(*target, u"r 0x1000 4"_s), u"03020100"_s);
        EXPECT_EQ(ask(*target, u"r 0x1004 4"_s), u"07060504"_s);
    }
    const QString taken = server.taken().join(u' ').replace(u'\x03', u'!');
    EXPECT_EQ(taken, u"qSupported QStartNoAckMode qqemu.PhyMemMode c ! m1000,4 c ! m1004,4 c ! D"_s);
}

TEST_F(Gdb, SingleReadsAreQuick)
{
    GdbServer server(kFeatures, GdbServer::memory);
    const auto target = connect(server);
    ASSERT_TRUE(target);
    constexpr int kReads = 4000;
    const auto begin = std::chrono::steady_clock::now();
    for (int at = 0; at < kReads; ++at)
        ASSERT_EQ(ask(*target, u"r 0x1000 4"_s), u"03020100"_s);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(kReads / seconds.count(), kReadsASecond);
    std::printf("%.0f reads a second\n", kReads / seconds.count());
}

} // namespace

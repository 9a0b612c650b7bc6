#include "access/target_values.h"

#include "access/target_writer.h"
#include "findings/finding.h"
#include "model/pointer.h"
#include "support/loaded.h"
#include "text/lines.h"

#include <QMap>

using namespace Qt::StringLiterals;
using namespace veldmap;

namespace {

/// Notes each access. An address that is in `refused` is not there, one in `silent` is not answered; a write to one of
/// `stuck` changes nothing. All else is memory.
class NotingTarget final : public Target {
public:
    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) override
    {
        const TargetAnswer answer = note(u"r"_s, address, bytes.size(), width);
        for (std::size_t at = 0; answer && at < bytes.size(); ++at)
            bytes[at] = memory.value(address + quint32(at));
        return answer;
    }
    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) override
    {
        const TargetAnswer answer = note(u"w"_s, address, bytes.size(), width);
        for (std::size_t at = 0; answer && at < bytes.size() && !stuck.contains(address); ++at)
            memory[address + quint32(at)] = bytes[at];
        return answer;
    }
    QString description() const override { return u"the test"_s; }

    void set(quint32 address, quint32 value)
    {
        for (int at = 0; at < 4; ++at)
            memory[address + quint32(at)] = std::byte(value >> 8 * at);
    }
    QStringList taken() { return std::exchange(accesses, {}); }

    QMap<quint32, std::byte> memory;
    QList<quint32> refused;
    QList<quint32> silent;
    QList<quint32> stuck;
    QStringList accesses;

private:
    TargetAnswer note(const QString &way, quint32 address, std::size_t size, int width)
    {
        accesses += u"%1 %2 %3/%4"_s.arg(way, hexDigits(address), QString::number(size), QString::number(width));
        const auto isHit = [&](quint32 place) { return place >= address && place < address + size; };
        if (std::ranges::any_of(silent, isHit))
            return {TargetAnswer::NoAnswer, u"silence"_s};
        if (std::ranges::any_of(refused, isHit))
            return {TargetAnswer::NotHere, u"a hole"_s};
        return {};
    }
};

const QString kChip =
    u"<archive><typedef name='node'><ptr name='next' type='node'/><uint8 name='data'/></typedef>"
    "<module name='port'><reg32 name='ctrl' protect='rw'><bits name='speed' pos='3:1' access='rw'/>"
    "<bits name='go' pos='8' access='s'/><bits name='busy' pos='31' access='r'/></reg32>"
    "<reg32 name='chan' protect='rw' count='3'/><reg32 name='fifo' protect='w'><bits name='a' pos='0' "
    "access='w'/><bits name='all' pos='31:0' access='w'/></reg32><reg32 name='last' protect='r'>"
    "<bits name='b' pos='0' access='rw'/></reg32>"
    "<reg16 name='low' protect='rw'/><reg16 name='high' protect='rw'/><hole size='32'/>"
    "<reg32 name='far' protect='rw'/><ptr name='head' type='node'/></module>"
    "<instance name='P' type='port' address='0x1000'/><instance name='ODD' type='port' address='0x2002'/>"
    "<instance name='TOP' type='port' address='0xFFFFFFF8'/></archive>"_s;

class TargetValues : public testing::Test {
protected:
    VMXMLElement &at(const QString &path) { return *soc.map->getElementFromPath(path); }
    VMValuable &valueAt(const QString &path) { return static_cast<VMValuable &>(at(path)); }

    Loaded soc{kChip};
    NotingTarget target;
};

TEST_F(TargetValues, BlocksOfOneWidthAndNothingThatCantBeRead)
{
    target.set(0x1000, 0x80000007);
    target.set(0x100C, 0xCAFE);
    target.set(0x1018, 0xFFFF1234);
    EXPECT_TRUE(readValues(target, at(u"$P"_s)));
    EXPECT_EQ(target.taken(), QStringList({u"r 1000 16/4"_s, u"r 1014 4/4"_s, u"r 1018 4/2"_s, u"r 1020 8/4"_s}));
    EXPECT_EQ(valueAt(u"$P.ctrl"_s).getValue(), 0x80000007);
    EXPECT_EQ(valueAt(u"$P.chan[2]"_s).getValue(), 0xCAFEu);
    EXPECT_EQ(valueAt(u"$P.high"_s).getValue(), 0xFFFFu);
    EXPECT_TRUE(readValues(target, at(u"$P.ctrl.speed"_s)));
    EXPECT_TRUE(readValues(target, at(u"$P.fifo"_s)));
    EXPECT_EQ(target.taken(), QStringList(u"r 1000 4/4"_s));
    EXPECT_TRUE(readValue(target, valueAt(u"$P.fifo"_s))); // asked for by itself
    EXPECT_EQ(target.taken(), QStringList(u"r 1010 4/4"_s));
}

TEST_F(TargetValues, WhatFailsIsMarked)
{
    const auto errors = [&] {
        QString marks;
        for (const QString &name : {u"ctrl"_s, u"chan[0]"_s, u"chan[1]"_s, u"chan[2]"_s, u"last"_s, u"low"_s, u"far"_s})
            marks += valueAt(u"$P."_s + name).readError ? u'E' : u'.';
        return marks;
    };
    target.refused = {0x1008};
    const TargetAnswer hole = readValues(target, at(u"$P"_s));
    EXPECT_EQ(hole.outcome, TargetAnswer::NotHere);
    EXPECT_EQ(hole.reason, u"a hole"_s);
    EXPECT_EQ(errors(), u"..E...."_s);
    target.silent = {0x1014};
    target.taken();
    EXPECT_EQ(readValues(target, at(u"$P"_s)).outcome, TargetAnswer::NoAnswer);
    EXPECT_EQ(errors(), u"..E.EEE"_s);
    EXPECT_EQ(target.taken().last(), u"r 1014 4/4"_s); // not asked again
    target.silent = target.refused = {};
    EXPECT_TRUE(readValues(target, at(u"$P"_s)));
    EXPECT_EQ(errors(), u"......."_s);
}

TEST_F(TargetValues, PointersAreFollowed)
{
    target.set(0x1024, 0x5000);
    target.set(0x5000, 0x6000);
    target.memory[0x6004] = std::byte(9);
    VMValuable &data = valueAt(u"$P.head.>.next.>.data"_s);
    EXPECT_TRUE(readValues(target, data));
    EXPECT_EQ(data.getValue(), 9u);
    EXPECT_EQ(target.taken(), QStringList({u"r 1024 4/4"_s, u"r 5000 4/4"_s, u"r 6004 1/1"_s}));
    target.refused = {0x5000};
    EXPECT_FALSE(readValues(target, data));
    EXPECT_TRUE(data.readError);
    EXPECT_EQ(target.taken().size(), 2);
}

TEST_F(TargetValues, AddressesThatNoAccessOfTheWidthHas)
{
    EXPECT_EQ(readValues(target, at(u"$ODD.ctrl"_s)).reason, u"no access of 32 bits is possible at 0x00002002"_s);
    EXPECT_TRUE(readValues(target, at(u"$ODD.low"_s)));
    EXPECT_TRUE(readValues(target, at(u"$ODD.head"_s))); // a pointer is no register
    EXPECT_EQ(target.taken(), QStringList({u"r 201A 2/2"_s, u"r 2026 4/2"_s}));
    EXPECT_TRUE(readValues(target, at(u"$TOP.chan"_s))); // around the end of the address space
    EXPECT_EQ(target.taken(), QStringList({u"r FFFFFFFC 4/4"_s, u"r 0 8/4"_s}));
}

TEST_F(TargetValues, WritesReadBack)
{
    struct Row {
        QStringList assignments;
        QStringList accesses;
        QStringList told;
    };
    const Row rows[] = {
        {{u"$P.ctrl=7"_s}, {u"w 1000 4/4"_s, u"r 1000 4/4"_s}, {}},
        {{u"$P.ctrl.speed=5"_s, u"$P.ctrl.go=1"_s}, {u"r 1000 4/4"_s, u"w 1000 4/4"_s, u"r 1000 4/4"_s}, {}},
        {{u"$P.fifo=7"_s, u"$P.fifo.all=8"_s}, {u"w 1010 4/4"_s}, {}},
        {{u"$P.low=7"_s, u"$P.high=8"_s}, {u"w 1018 2/2"_s, u"r 1018 2/2"_s, u"w 101A 2/2"_s, u"r 101A 2/2"_s}, {}},
        {{u"$P.low=7"_s, u"$P.fifo.a=1"_s},
         {},
         {u"$P.fifo.a can't be written: its register can't be read, so what stands beside it is not known; write the "
          "register."_s}},
        {{u"$P.low=7"_s, u"$P.last.b=1"_s},
         {},
         {u"$P.last.b can't be written: it is not writable; --force writes it all the same."_s}},
        {{u"$P.far=1"_s},
         {u"w 1020 4/4"_s, u"r 1020 4/4"_s},
         {u"$P.far did not take what was written: 0x00000001 reads back as 0x00000000."_s}},
        {{u"$P.chan[0]=1"_s, u"$P.low=0"_s}, {u"w 1004 4/4"_s}, {u"$P.chan[0] can't be written: a hole."_s}},
    };
    target.stuck = {0x1020};
    target.refused = {0x1004};
    for (const Row &row : rows) {
        FindingList findings;
        QList<Assignment> assignments;
        for (const QString &text : row.assignments)
            assignments += {text.section(u'=', 0, 0), text.section(u'=', 1)};
        EXPECT_EQ(TargetWriter(*soc.map, target, findings).write(assignments), row.told.isEmpty());
        QStringList told;
        for (const Finding &finding : findings.findings)
            told += finding.text();
        EXPECT_EQ(told, row.told);
        EXPECT_EQ(target.taken(), row.accesses) << row.assignments.join(u' ').toStdString();
    }
    EXPECT_EQ(target.memory[0x1000], std::byte(0x0B));
    EXPECT_EQ(target.memory[0x1001], std::byte(1));
    EXPECT_EQ(target.memory[0x1010], std::byte(8));
}

} // namespace

// Lines of a console, what they print and which accesses they make, against a memory that tells of each access.

#include "console/session.h"
#include "support/loaded.h"

#include <QTemporaryDir>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;
using namespace veldmap;

namespace {

/// Bytes from 0x1000 on. The word at 0x1010 takes no writes; an access to 0x10F0 and behind is one that is not there.
class Memory final : public Target {
public:
    explicit Memory(QString &log) : m_log(log) {}

    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) override
    {
        const TargetAnswer answer = begin(u'r', address, bytes.size(), width);
        if (answer)
            std::ranges::copy(std::span(m_bytes).subspan(address - kBegin, bytes.size()), bytes.begin());
        return answer;
    }
    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) override
    {
        const TargetAnswer answer = begin(u'w', address, bytes.size(), width);
        if (answer && address != kStubborn)
            std::ranges::copy(bytes, m_bytes.begin() + (address - kBegin));
        return answer;
    }
    TargetAnswer connect() override
    {
        isDead = staysDead;
        return isDead ? TargetAnswer{TargetAnswer::NoAnswer, u"nobody there"_s} : TargetAnswer();
    }
    QString description() const override { return u"memory"_s; }

    bool isDead = false;
    bool staysDead = false;
    ConsoleSession *interrupts = nullptr; ///< at the next access

private:
    static constexpr quint32 kBegin = 0x1000;
    static constexpr quint32 kStubborn = 0x1010;
    static constexpr quint32 kEnd = 0x10F0;

    TargetAnswer begin(QChar verb, quint32 address, std::size_t size, int width)
    {
        m_log += u" %1 %2:%3"_s.arg(verb).arg(address, 0, 16).arg(size);
        if (int(size) != width)
            m_log += u'/' + QString::number(width);
        m_log += u'\n';
        if (address % quint32(width) != 0 || size % std::size_t(width) != 0)
            return {TargetAnswer::NotHere, u"a wrong access"_s};
        if (interrupts)
            interrupts->interrupt();
        if (isDead || interrupts)
            return {TargetAnswer::NoAnswer, u"it hung up"_s};
        return address < kBegin || address + size > kEnd ? TargetAnswer{TargetAnswer::NotHere, u"nothing is there"_s}
                                                         : TargetAnswer();
    }

    QString &m_log;
    std::array<std::byte, kEnd - kBegin> m_bytes = {};
};

class Log final : public ConsoleHost {
public:
    void take(const Finding &finding) override
    {
        if (!finding.place.isNull())
            text += finding.place.file + u':' + QString::number(finding.place.line) + u": "_s;
        text += wordOf(finding.severity) + u": "_s + finding.text() + u'\n';
        if (!finding.hint.isEmpty())
            text += u"hint: "_s + finding.hint + u'\n';
    }
    void print(const QString &printed) override { text += printed; }
    bool confirm(const QString &question) override
    {
        text += question + u'\n';
        return answersYes;
    }
    bool isInteractive() const override { return isTerminal; }

    QString text;
    bool isTerminal = false;
    bool answersYes = false;
};

/// What the lines of a question, with ";" between them, come to in a session of their own. "%" is a folder, and what
/// begins with "!" happens to the session.
QString transcript(const Loaded &soc, const QStringList &words)
{
    QTemporaryDir folder;
    Log log;
    ConsoleSession session(*soc.map, log);
    auto owned = std::make_unique<Memory>(log.text);
    Memory &memory = *owned;
    session.use(std::move(owned));
    for (QString line : words.join(u' ').split(u';')) {
        line = line.trimmed().replace(u"%/"_s, folder.path() + u'/');
        if (line == "!dead"_L1)
            memory.isDead = memory.staysDead = true;
        else if (line == "!alive"_L1)
            memory.staysDead = false;
        else if (line == "!interrupt"_L1)
            memory.interrupts = &session;
        else if (line == "!on"_L1)
            memory.interrupts = nullptr;
        else if (line == "!terminal"_L1)
            log.isTerminal = true;
        else if (line == "!yes"_L1)
            log.answersYes = true;
        else if (line.startsWith("!cat "_L1))
            log.text += readFile(line.sliced(5));
        else if (!session.run(line))
            log.text += u"(failed)\n"_s;
    }
    return log.text.replace(folder.path(), u"%"_s).trimmed();
}

QString candidates(const Loaded &soc, const QStringList &words)
{
    Log log;
    ConsoleSession session(*soc.map, log);
    session.run(u"mine = 3"_s);
    const QString line = words.join(u' ').replace(u'_', u' ');
    const ConsoleCandidates found = session.candidatesFor(line);
    QStringList texts;
    for (const ConsoleCandidate &candidate : found.list)
        texts += candidate.text + (candidate.arguments.isEmpty() ? u""_s : u" "_s + candidate.arguments) +
                 (candidate.help.isEmpty() ? u""_s : u"  "_s + candidate.help);
    if (found.areFiles)
        texts += u"FILES"_s;
    return u"%1: %2"_s.arg(QString::number(found.begin), texts.join(u" | "_s));
}

const QString kFrame = uR"(<typedef name="node"><ptr name="next" type="node"/><uint32 name="data"/></typedef>
<var name="STEP" value="4"/>
<module name="port"><comment>A port</comment>
  <reg32 name="ctrl" protect="rw"><comment>Control &lt;b>it&lt;/b></comment>
    <bits name="speed" pos="3:1" access="rw" rst="2"><comment>How fast</comment>
      <options><option name="slow" value="0"/><option name="fast" value="5"><comment>1 Mbaud</comment></option></options></bits>
    <bits name="go" pos="8" access="s"/><bits name="ack" pos="10:9" access="rc"/><bits name="busy" pos="31" access="r"/></reg32>
  <reg32 name="hidden" protect="w"><bits name="key" pos="7:0" access="rw"/></reg32>
  <reg32 name="ro" protect="r"><bits name="f" pos="3:0" access="rw"/></reg32>
  <reg32 name="flags" protect="rw"><bits name="a" pos="0" access="rs"/><bits name="b" pos="2:1" access="rc"/></reg32>
  <reg32 name="stuck" protect="rw"/>
  <reg16 name="half" protect="rw"/><reg8 name="byte" protect="rw"/><int8 name="level"/>
  <reg32 name="chan" protect="rw" count="3"/>
  <ptr name="head" type="node"/>
</module><instance name="P" type="port" address="0x1000"/><instance name="GONE" type="port" address="0x2000"/>%1)"_s;

} // namespace

TEST(Console, Lines)
{
    expectCases(u"console/lines.txt"_s, transcript, kFrame);
}

TEST(Console, Candidates)
{
    expectCases(u"console/candidates.txt"_s, candidates, kFrame);
}

TEST(Console, FilesThatRunThemselvesEnd)
{
    const Loaded soc = Loaded::archive(kFrame.arg(QString()));
    const QString file = soc.path(u"loop.txt"_s);
    writeFile(file, "source \"" + file.toUtf8() + "\"\n");
    Log log;
    ConsoleSession session(*soc.map, log);
    EXPECT_FALSE(session.run(u"source \"%1\""_s.arg(file)));
    EXPECT_EQ(log.text.count(u'\n'), 1);
    EXPECT_TRUE(log.text.contains(u"files run one another 16 deep already"_s));
}

TEST(Console, HostsAskForValues)
{
    const Loaded soc = Loaded::archive(kFrame.arg(QString()));
    Log log;
    ConsoleSession session(*soc.map, log);
    EXPECT_EQ(session.valueOf(u"$P.half.R"_s), std::nullopt); // there is no target
    session.use(std::make_unique<Memory>(log.text));
    EXPECT_TRUE(session.run(u"P.half = 0x1234"_s));
    EXPECT_EQ(session.valueOf(u"$P.half.R + 1"_s), 0x1235u);
    log.text.clear();
    EXPECT_FALSE(session.runScript(u"1+1\n\n1+\n2+2\n"_s, u"file"_s));
    EXPECT_FALSE(session.runScript(u"1+\n3+3\n"_s, u"file"_s, true));
    EXPECT_EQ(log.text, u"0x2\nfile:3: error: '1+' has no value: a number, a name or '(' is expected, at its end\n"
                        "file:1: error: '1+' has no value: a number, a name or '(' is expected, at its end\n0x6\n"_s);
    EXPECT_FALSE(session.open({u"image"_s}));
    EXPECT_EQ(session.valueOf(u"P.half"_s), 0x1234u); // the target that was there goes on
    EXPECT_FALSE(session.isOver());
    EXPECT_TRUE(session.runScript(u"quit\n1+\n"_s, u"file"_s));
    EXPECT_TRUE(session.isOver());
}

// Whatever is typed is told or done, and nothing is read beyond its end.
TEST(Console, AnyText)
{
    const Loaded soc = Loaded::archive(kFrame.arg(QString()));
    const QStringList pieces = {u"P"_s,    u"$"_s,    u"."_s,     u"chan"_s,   u"["_s,    u"]"_s,    u"("_s,
                                u")"_s,    u"ctrl"_s, u"speed"_s, u"="_s,      u"w"_s,    u" "_s,    u">"_s,
                                u"\""_s,   u"'"_s,    u"0x1"_s,   u","_s,      u"#"_s,    u"help"_s, u"dump"_s,
                                u"wait"_s, u"head"_s, u"~"_s,     u"\u00e4"_s, u"\x01"_s, u"rl"_s,   u"doc"_s};
    Log log;
    ConsoleSession session(*soc.map, log);
    session.use(std::make_unique<Memory>(log.text));
    quint32 random = 1;
    for (int round = 0; round < 20000; ++round) {
        QString line;
        for (int piece = 0; piece < 8; ++piece) {
            random = random * 1664525 + 1013904223;
            line += pieces[(random >> 16) % pieces.size()];
        }
        log.text.clear();
        const bool isDone = session.run(line);
        EXPECT_EQ(isDone, !log.text.contains(u"error: "_s)) << line.toStdString() << log.text.toStdString();
        EXPECT_LE(session.candidatesFor(line).begin, line.size()) << line.toStdString();
    }
}

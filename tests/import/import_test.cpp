// A vendor's file becomes the description that a person would write of it, and no file does any harm.

#include "findings/limits.h"
#include "import/import.h"
#include "import/kept_additions.h"
#include "import/names.h"
#include "import/svd_reader.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include "support/loaded.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace veldmap;

namespace {

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

const QString kGolden = QStringLiteral(GOLDEN_DIRECTORY) + u"/import/"_s;

/// All that comes of \a import: its files, and what it has to say.
QByteArray textOf(const Import &import)
{
    QByteArray text;
    for (const WrittenFile &file : import.files) {
        EXPECT_EQ(file.text.count('\n'), file.sources.size()) << file.path.toStdString();
        text += "==== " + file.path.toUtf8() + "\n" + file.text;
    }
    text += "==== findings\n";
    for (const Finding &finding : import.findings)
        text += (placedText(finding) + u" ["_s + QString(finding.rule->id) + u"]\n"_s).toUtf8();
    return text;
}

/// A device with one peripheral, P, that holds \a registers.
QByteArray deviceWith(const QByteArray &registers)
{
    return "<device><name>D</name><peripherals><peripheral><name>P</name><baseAddress>0x1000</"
           "baseAddress><registers>\n" +
           registers + "</registers></peripheral></peripherals></device>";
}

struct Outcome {
    std::optional<Import> import;
    FindingList refused;
    FindingList loaded;
    bool isLoaded = false;
};

/// Imports \a bytes and loads what comes of it.
Outcome outcomeOf(const QByteArray &bytes)
{
    Outcome outcome;
    outcome.import = importDescription(bytes, u"chip.svd"_s, outcome.refused);
    if (!outcome.import)
        return outcome;
    const MadeDescription made = madeDescription(*outcome.import);
    VMMemoryMap map;
    LoadOptions options;
    options.made = &made;
    map.chipRootArchive = loadRoot(map, u"chip.svd"_s, true, outcome.loaded, options).release();
    outcome.isLoaded = map.chipRootArchive != nullptr;
    return outcome;
}

QStringList textsOf(const FindingList &list)
{
    QStringList texts;
    for (const Finding &finding : list.findings) {
        if (finding.severity != Severity::Note)
            texts += placedText(finding);
    }
    return texts;
}

} // namespace

TEST(Import, WritesAllThatTheFormatHas)
{
    const Outcome outcome = outcomeOf(contentOf(kGolden + u"small.svd"_s));
    ASSERT_TRUE(outcome.import);
    EXPECT_TRUE(outcome.isLoaded);
    EXPECT_EQ(textsOf(outcome.loaded), QStringList());
    const QByteArray text = textOf(*outcome.import);
    QFile golden(kGolden + u"small.txt"_s);
    if (qEnvironmentVariableIsSet("UPDATE_GOLDEN")) {
        ASSERT_TRUE(golden.open(QIODevice::WriteOnly));
        golden.write(text);
        golden.close();
    }
    EXPECT_EQ(text.toStdString(), contentOf(golden.fileName()).toStdString());
    EXPECT_EQ(textOf(*outcomeOf(contentOf(kGolden + u"small.svd"_s)).import), text) << "the same every time";
}

TEST(Import, ChangesOnlyTheLinesThatChanged)
{
    const QByteArray before = contentOf(kGolden + u"small.svd"_s);
    QByteArray after = before;
    after.replace("<name>SPEED</name>", "<name>RATE</name>");
    const std::vector<WrittenFile> one = outcomeOf(before).import->files;
    const std::vector<WrittenFile> two = outcomeOf(after).import->files;
    ASSERT_EQ(one.size(), two.size());
    int changed = 0;
    for (std::size_t file = 0; file < one.size(); ++file) {
        const QList<QByteArray> lines = one[file].text.split('\n');
        const QList<QByteArray> others = two[file].text.split('\n');
        ASSERT_EQ(lines.size(), others.size());
        for (qsizetype at = 0; at < lines.size(); ++at)
            changed += lines[at] != others[at];
    }
    EXPECT_EQ(changed, 2); // the register, and the one that is derived from it
}

TEST(Import, TellsWhatItCannotRead)
{
    const QByteArray name = "<name>R</name><addressOffset>";
    const struct {
        QByteArray bytes;
        QStringList told;
    } rows[] = {
        {"", {u"chip.svd:1:0:unexpected end of file"_s}},
        {"<archive/>",
         {u"chip.svd:1:10:'archive' is no format that descriptions are made of: the root is to be <device> "
          "(CMSIS-SVD) or <component> (IP-XACT)."_s}},
        {"<device><name>D</name></device>", {u"chip.svd:1:8:D: it has no peripherals, so nothing is made of it."_s}},
        {deviceWith("<register>" + name + "zero</addressOffset></register>"),
         {u"chip.svd:2:39:P.R: addressOffset is 'zero', which is no number."_s}},
        {deviceWith("<register>" + name +
                    "0</addressOffset><dim>1000000000</dim><dimIncrement>4</dimIncrement></register>"),
         {u"chip.svd:2:61:P.R: dim is 1000000000, and may be 262144 at most."_s}},
        {deviceWith("<register derivedFrom='S'>" + name +
                    "0</addressOffset></register>\n"
                    "<register derivedFrom='R'><name>S</name><addressOffset>4</addressOffset></register>"),
         {u"chip.svd:3:26:P.R: it is derived from 'R', which is derived from it."_s,
          u"chip.svd:2:26:P.S: it is derived from 'S', which is derived from it."_s}},
        {deviceWith("<cluster><name>C</name><addressOffset>0</addressOffset><cluster derivedFrom='P.C'><name>D</name>"
                    "<addressOffset>0</addressOffset></cluster></cluster>"),
         {u"chip.svd:2:82:P.C.D: it is derived from 'P.C', which is derived from it."_s}},
        {deviceWith("<register>" + name + "0</addressOffset><fields><field><name>F</name></field></fields></register>"),
         {u"chip.svd:2:71:P.R.F: it has no position: bitOffset, lsb or bitRange."_s}},
    };
    for (const auto &row : rows) {
        const Outcome outcome = outcomeOf(row.bytes);
        EXPECT_FALSE(outcome.import);
        if (row.bytes.isEmpty())
            EXPECT_EQ(outcome.refused.findings.size(), 1);
        else
            EXPECT_EQ(textsOf(outcome.refused), row.told) << row.bytes.toStdString();
    }
}

/// Clusters that each hold ten of the one before would make ten billion registers.
TEST(Import, RefusesWhatGrowsBeyondTheLimits)
{
    QByteArray registers = "<cluster><name>C0</name><addressOffset>0</addressOffset>"
                           "<register><name>R</name><addressOffset>0</addressOffset></register></cluster>";
    for (int level = 1; level < 10; ++level) {
        registers += "<cluster><name>C" + QByteArray::number(level) + "</name><addressOffset>0</addressOffset>";
        for (int one = 0; one < 10; ++one)
            registers += "<cluster derivedFrom='P.C" + QByteArray::number(level - 1) + "'><name>I" +
                         QByteArray::number(one) + "</name><addressOffset>0</addressOffset></cluster>";
        registers += "</cluster>";
    }
    const Outcome outcome = outcomeOf(deviceWith(registers));
    EXPECT_FALSE(outcome.import);
    ASSERT_EQ(outcome.refused.findings.size(), 1);
    EXPECT_EQ(outcome.refused.findings.front().rule->id, "import-too-many"_L1);
}

/// Comments, waivers and numbers of a person stay where they can.
TEST(Import, KeepsWhatWasAdded)
{
    const QTemporaryDir directory;
    Import import = *outcomeOf(contentOf(kGolden + u"small.svd"_s)).import;
    const auto write = [&](const QString &name, const QByteArray &content) {
        const QString path = directory.filePath(name);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    const auto fileOf = [](Import &of, const QString &path) -> WrittenFile & {
        return *std::ranges::find(of.files, path, &WrittenFile::path);
    };
    for (const WrittenFile &file : import.files)
        write(file.path, file.text);
    write(u"IMPORT.md"_s, importReport(import).toUtf8());
    QByteArray edited = fileOf(import, u"periph/uart.xml"_s).text;
    edited.replace("    <reg8 name=\"DATA\" protect=\"rw\"/>\n",
                   "    <!-- the one that matters -->\n"
                   "    <reg8 name=\"DATA\" protect=\"rw\"><comment>What comes in</comment></reg8>\n");
    edited.replace("      <bits name=\"HALF\"",
                   "      <!-- veldmap: allow field-no-access -->\n      <bits name=\"HALF\"");
    edited.replace("  <module ", "  <var name=\"UART_FIFO\" value=\"16\"><comment>mine</comment></var>\n  <module ");
    write(u"periph/uart.xml"_s, edited);

    FindingList told;
    Import again = *outcomeOf(contentOf(kGolden + u"small.svd"_s)).import;
    keepAdditions(directory.path(), again, told);
    EXPECT_EQ(fileOf(again, u"periph/uart.xml"_s).text.toStdString(), edited.toStdString());
    EXPECT_EQ(fileOf(again, u"soc.xml"_s).text, fileOf(import, u"soc.xml"_s).text);
    EXPECT_EQ(textsOf(told), QStringList());

    QByteArray changed = contentOf(kGolden + u"small.svd"_s);
    changed.replace("<name>HALF</name>", "<name>WHOLE</name>");
    again = *outcomeOf(changed).import;
    keepAdditions(directory.path(), again, told);
    EXPECT_EQ(textsOf(told),
              QStringList{directory.filePath(u"periph/uart.xml"_s) +
                          u":23:45:What stood at 'module uart/reg32 CTRL/bits HALF' has no place any more: veldmap: "
                          "allow field-no-access"_s});
}

/// Cut and damaged files are refused, or make a description that loads.
TEST(Import, SurvivesDamage)
{
    const QByteArray whole = contentOf(kGolden + u"small.svd"_s);
    int made = 0;
    int refused = 0;
    const auto check = [&](const QByteArray &bytes, qsizetype at) {
        const Outcome outcome = outcomeOf(bytes);
        ++(outcome.import ? made : refused);
        ASSERT_TRUE(outcome.import ? outcome.isLoaded : !outcome.refused.findings.isEmpty()) << at;
    };
    for (qsizetype at = 0; at < whole.size(); at += 97)
        check(whole.first(at), at);
    constexpr QByteArrayView kDigits = "0123456789ABCDEFx#-.";
    for (qsizetype at = 0; at < whole.size(); at += 3) {
        QByteArray damaged = whole;
        damaged[at] = kDigits[at % kDigits.size()];
        check(damaged, at);
        // A tag that is gone takes its end with it.
        const qsizetype begin = whole.indexOf("<register>", at);
        const qsizetype end = whole.indexOf("</register>", begin);
        if (at % 31 == 0 && begin >= 0 && end >= 0)
            check(whole.first(begin) + whole.sliced(end + 11), at);
    }
    EXPECT_GT(made, 100);
    EXPECT_GT(refused, 100);
}

TEST(Import, TakesTimeInProportion)
{
    const auto secondsFor = [](int count) {
        QByteArray registers;
        for (int at = 0; at < count; ++at) {
            const QByteArray number = QByteArray::number(at);
            registers += "<register><name>R" + number + "_X</name><description>of " + number +
                         "</description><addressOffset>" + QByteArray::number(4 * at) +
                         "</addressOffset></register>\n<register><name>ALL" + number +
                         "</name><addressOffset>0</addressOffset></register>\n";
        }
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(outcomeOf(deviceWith(registers)).import);
        return double(timer.elapsed()) / 1000;
    };
    const double few = secondsFor(2'000);
    const double many = secondsFor(16'000);
    EXPECT_LT(many, 40 * (few + 0.02)); // eight times as many, and some for a busy machine
}

TEST(SvdNumbers, AreReadInAllForms)
{
    const struct {
        QStringView text;
        std::optional<quint64> number;
    } rows[] = {
        {u"0", 0},
        {u" +12 ", 12},
        {u"0x1F", 31},
        {u"0X1f", 31},
        {u"#101", 5},
        {u"0b11", 3},
        {u"2k", 2048},
        {u"1M", 1 << 20},
        {u"", std::nullopt},
        {u"-1", std::nullopt},
        {u"0x", std::nullopt},
        {u"12a", std::nullopt},
        {u"#12", std::nullopt},
        {u"#1x", std::nullopt},
        {u"0xFFFFFFFFFFFFFFFF", ~quint64(0)},
        {u"0x10000000000000000", std::nullopt},
        {u"99999999999999999999", std::nullopt},
        {u"0xFFFFFFFFFFFFFFFFk", std::nullopt},
    };
    for (const auto &row : rows)
        EXPECT_EQ(svdNumber(row.text), row.number) << row.text.toString().toStdString();
    quint64 any = 0;
    EXPECT_EQ(svdNumber(u"#1x0X", &any), 8);
    EXPECT_EQ(any, 5);
}

TEST(ImportedNames, AreThoseOfAPerson)
{
    EXPECT_EQ(cleanName(u"A__B-c "_s), u"A_B_c"_s);
    EXPECT_EQ(cleanName(u"2ND"_s), u"N2ND"_s);
    EXPECT_EQ(cleanName(u"%"_s), u"unnamed"_s);
    const std::pair<QString, QString> comments[] = {
        {u"  clock\n  of\tit "_s, u"Clock of it"_s},
        {u"First\\n  line.\\n\\nSecond"_s, u"First line.<br/>Second."_s},
        {u"Description cluster: Channel n"_s, u"Channel n"_s},
        {u"Description collection[%s]: x < 3"_s, u"X &lt; 3"_s},
        {u"nRESET of it"_s, u"nRESET of it"_s},
        {u"ends a comment */ with \\"_s, u"Ends a comment * / with"_s},
        {u"One. Two"_s, u"One. Two."_s},
    };
    for (const auto &[given, expected] : comments)
        EXPECT_EQ(cleanComment(given), expected);
    NumberedText text(u"Bits 0 to 3 of channel 0"_s, 0);
    EXPECT_TRUE(text.accepts(u"Bits 0 to 3 of channel 1"_s, 1));
    EXPECT_FALSE(text.accepts(u"Bits 0 to 3 of channel 1"_s, 2));
    EXPECT_EQ(text.general(u"n"), u"Bits 0 to 3 of channel n"_s);
}

// What is written and told is the same for every number of threads.

#include "outputs/outputs.h"

#include "findings/finding.h"
#include "support/loaded.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// All that a run leaves behind, one line for each thing in its order.
struct Result {
    QStringList told;
    QStringList heard; ///< progress and traces
    QStringList files; ///< written, then skipped, failed, missing, unreached
    QStringList content;
};

Result resultOf(const Loaded &soc, veldmap::Output output, const QString &directory, int threads,
                bool asPublished = false, qint64 mostBytes = std::numeric_limits<qint64>::max())
{
    Result result;
    const QString site = soc.path(directory);
    QDir().mkpath(site);
    const auto shortened = [&](QString text) { return text.replace(site + u'/', u""_s); };
    veldmap::OutputOptions options;
    options.directory = site;
    options.pool = soc.path(u"pool"_s);
    options.threads = threads;
    options.asPublished = asPublished;
    options.mostBytes = mostBytes;
    options.progress = [&](const QString &path) { result.heard += shortened(path); };
    options.trace = [&](const QString &text) { result.heard += u"trace "_s + shortened(text); };
    veldmap::FindingList list;
    const veldmap::OutputFiles files = veldmap::writeOutput(*soc.map, output, options, list);
    for (const veldmap::Finding &finding : list.findings)
        result.told += shortened(placedText(finding)).replace(site, u"DIR"_s).replace(soc.directory->path(), u"."_s);
    result.files = files.written + files.unchanged + files.skipped + files.missing + files.unreached + files.beyond;
    for (const veldmap::FailedFile &file : files.failed)
        result.files += file.path + u' ' + file.reason;
    for (QString &file : result.files)
        file = shortened(file);
    QDirIterator all(site, QDir::Files, QDirIterator::Subdirectories);
    while (all.hasNext()) {
        const QString path = all.next();
        result.content += shortened(path) + u'\n' + readFile(path);
    }
    result.content.sort();
    bool hasError = false;
    for (const veldmap::Finding &finding : list.findings)
        hasError = hasError || finding.severity == veldmap::Severity::Error;
    EXPECT_EQ(hasError, !files.isComplete());
    return result;
}

/// The result of one thread, which those of more threads must equal.
Result sameForAllThreads(const Loaded &soc, veldmap::Output output,
                         const std::function<void(const QString &directory)> &prepare = {}, bool asPublished = false,
                         qint64 mostBytes = std::numeric_limits<qint64>::max())
{
    Result first;
    for (const int threads : {1, 2, 4, 16}) {
        const QString directory = u"out"_s + QString::number(threads);
        if (prepare)
            prepare(soc.path(directory));
        const Result result = resultOf(soc, output, directory, threads, asPublished, mostBytes);
        if (threads == 1)
            first = result;
        EXPECT_EQ(result.told, first.told) << threads;
        EXPECT_EQ(result.heard, first.heard) << threads;
        EXPECT_EQ(result.files, first.files) << threads;
        EXPECT_EQ(result.content, first.content) << threads;
    }
    return first;
}

/// A root that includes \a count files, each with a module of some registers.
Files manyFiles(int count)
{
    Files files = {{u"soc.xml"_s, {}}};
    QString root;
    for (int at = 0; at < count; ++at) {
        const QString number = QString::number(at);
        root += u"<include file='sub/a%1.xml'/>"_s.arg(number);
        QString registers;
        for (int place = 0; place < 10 * (count - at); ++place) // the first are the longest to make
            registers += u"<reg name='r%1'><bits name='f' pos='3:1'/></reg>"_s.arg(place);
        files.push_back({u"sub/a%1.xml"_s.arg(number),
                         u"<archive><module name='m%1'>%2<reg name='bare'/></module>"
                         "<instance name='I%1' type='m%1' address='256*%1'/></archive>"_s.arg(number, registers)});
    }
    files.front().second = u"<archive>"_s + root + u"</archive>"_s;
    return files;
}

} // namespace

TEST(Outputs, OrderOfFilesAndMessages)
{
    const Loaded soc(manyFiles(12));
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    const Result headers = sameForAllThreads(soc, veldmap::Output::Headers, [](const QString &directory) {
        QDir().mkpath(directory + u"/sub/a3.h"_s);     // no C header, so no assembly header
        QDir().mkpath(directory + u"/sub/a7_asm.h"_s); // but the other way round
    });
    EXPECT_EQ(headers.files.filter(u"a3"_s).size(), 1);
    EXPECT_EQ(headers.files.filter(u"a7"_s).size(), 2);
    EXPECT_EQ(headers.files.first(3), QStringList({u"soc.h"_s, u"soc_asm.h"_s, u"sub/a0.h"_s}));
    EXPECT_EQ(headers.told.size(), 2);

    const Result accessors = sameForAllThreads(soc, veldmap::Output::Accessors, [](const QString &directory) {
        QDir().mkpath(directory + u"/sub/a5_accessors.h"_s);
    });
    EXPECT_EQ(accessors.files.first(2), QStringList({u"soc_accessors.h"_s, u"sub/a0_accessors.h"_s}));
    EXPECT_EQ(accessors.told.size(), 1);
    EXPECT_EQ(sameForAllThreads(soc, veldmap::Output::Globals).files,
              QStringList({u"globals.h"_s, u"globals_asm.h"_s}));

    const Result packages = sameForAllThreads(soc, veldmap::Output::Vhdl, [](const QString &directory) {
        QDir().mkpath(directory + u"/sub/a2_reg_pkg.vhd"_s);
    });
    ASSERT_EQ(packages.told.size(), 13);
    EXPECT_TRUE(packages.told[2].contains(u"Module 'm2'"_s)) << "also of a package that can't be written";
    EXPECT_TRUE(packages.told[12].startsWith(u"sub/a2_reg_pkg.vhd can't be written: "_s));

    const Result site = sameForAllThreads(soc, veldmap::Output::Docs,
                                          [](const QString &directory) { QDir().mkpath(directory + u"/I8.html"_s); });
    EXPECT_EQ(site.told.last(), u"The pages behind it are not written: I9, I10, I11"_s);
    EXPECT_EQ(site.files.filter(u".html"_s).first(10).last(), u"I7.html"_s) << "behind the start page and the frames";
}

TEST(Outputs, LaterFilesTakeThePlaceOfEarlierOnes)
{
    // A header is named up to the first dot, a page after its instance.
    const Loaded soc({{u"soc.xml"_s, u"<archive><include file='a.old.xml'/><include file='a.new.xml'/></archive>"_s},
                      {u"a.old.xml"_s, u"<archive asm='no'><module name='m'><reg name='r' count='500'/></module>"
                                       "<instance name='I' type='m'/></archive>"_s},
                      {u"a.new.xml"_s, u"<archive asm='no'><module name='n'><reg name='last'/></module>"
                                       "<instance name='I' type='n'/></archive>"_s}});
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    for (const bool asPublished : {false, true}) {
        const Result headers = sameForAllThreads(soc, veldmap::Output::Headers, {}, asPublished);
        EXPECT_EQ(headers.files.filter(u"a.h"_s).size(), asPublished ? 2 : 1);
        EXPECT_TRUE(headers.content.first().contains(u"last"_s));
    }
    const Result site = sameForAllThreads(soc, veldmap::Output::Docs);
    EXPECT_EQ(site.told.first(), u"I.html shows the last of several instances of that name."_s);
    EXPECT_TRUE(site.content.filter(u"I.html"_s).first().contains(u"last"_s));

    // The first makes the file newer than the description of the second, which is then left alone.
    soc.map->skipUpToDate = true;
    const Result skipped = sameForAllThreads(soc, veldmap::Output::Headers, {}, true);
    EXPECT_EQ(skipped.heard.filter(u"trace Skipping a.h"_s).size(), 2) << "from the run before";
    const Result fresh = sameForAllThreads(
        soc, veldmap::Output::Headers, [](const QString &directory) { QDir(directory).removeRecursively(); }, true);
    EXPECT_EQ(fresh.heard.filter(u"trace Skipping a.h"_s).size(), 1);
    EXPECT_TRUE(fresh.content.filter(u"a.h"_s).first().contains(u"500"_s));
}

TEST(Outputs, OnlyWhatDiffersIsWritten)
{
    const Loaded soc(manyFiles(3));
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    QDir().mkpath(soc.path(u"out"_s));
    QDir().mkpath(soc.path(u"elsewhere"_s));
    veldmap::OutputOptions options;
    options.directory = soc.path(u"out"_s);
    const auto write = [&] {
        veldmap::FindingList list;
        return veldmap::writeOutput(*soc.map, veldmap::Output::Headers, options, list);
    };
    const veldmap::OutputFiles first = write();
    EXPECT_EQ(first.written, veldmap::pathsOf(*soc.map, veldmap::Output::Headers, options));
    EXPECT_EQ(first.written.size(), 8);
    EXPECT_EQ(write().unchanged, first.written);

    // Of the same size; longer; shorter; a link out of the directory, to what would be right; one that stays inside.
    const auto header = [&](const QString &name) { return options.directory + u"/sub/"_s + name; };
    const auto spoil = [&](const QString &name, const QString &content) { writeFile(header(name), content.toUtf8()); };
    const QString right = readFile(header(u"a0.h"_s));
    spoil(u"a0.h"_s, u'#' + right.sliced(1));
    spoil(u"a0_asm.h"_s, readFile(header(u"a0_asm.h"_s)) + u' ');
    spoil(u"a1.h"_s, {});
    const auto moveBehindLink = [&](const QString &name, const QString &target) {
        ASSERT_TRUE(QFile::rename(header(name), target));
        ASSERT_TRUE(QFile::link(target, header(name)));
    };
    const QString outside = soc.path(u"elsewhere/a2.h"_s);
    moveBehindLink(u"a2.h"_s, outside);
    moveBehindLink(u"a2_asm.h"_s, options.directory + u"/kept.h"_s);
    writeFile(options.directory + u"/.veldmap-1-0.tmp"_s, "of a process that was killed");
    const veldmap::OutputFiles again = write();
    EXPECT_EQ(again.written,
              QStringList({header(u"a0.h"_s), header(u"a0_asm.h"_s), header(u"a1.h"_s), header(u"a2.h"_s)}));
    EXPECT_EQ(readFile(header(u"a0.h"_s)), right);
    EXPECT_FALSE(QFileInfo(header(u"a2.h"_s)).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(outside));
    EXPECT_TRUE(QFileInfo(header(u"a2_asm.h"_s)).isSymLink());
    EXPECT_EQ(QDir(options.directory).entryList(QDir::Files | QDir::Hidden),
              QStringList({u"kept.h"_s, u"soc.h"_s, u"soc_asm.h"_s}));

    options.asPublished = true;
    EXPECT_EQ(write().written, first.written);
}

TEST(Outputs, HeadersAreUpToDateOnlyIfAllThatIsReadIsOlder)
{
    const Loaded soc(
        {{u"soc.xml"_s, u"<archive><include file='a.xml'/><include file='b/c.xml' optional='yes'/></archive>"_s},
         {u"a.xml"_s, u"<archive><var name='A' value='1'/></archive>"_s}});
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    soc.map->skipUpToDate = true;
    const QDateTime noon(QDate(2026, 1, 1), QTime(12, 0));
    const auto setTime = [&](const QString &name, int seconds) {
        QFile file(soc.path(name));
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(noon.addSecs(seconds), QFileDevice::FileModificationTime));
    };
    const QStringList headers = {u"out/soc.h"_s, u"out/soc_asm.h"_s, u"out/a.h"_s, u"out/a_asm.h"_s};
    const auto skipped = [&](const QStringList &sources = {}) {
        QDir().mkpath(soc.path(u"out"_s));
        veldmap::OutputOptions options;
        options.directory = soc.path(u"out"_s);
        options.sources = sources;
        veldmap::FindingList list;
        return veldmap::writeOutput(*soc.map, veldmap::Output::Headers, options, list).skipped.size();
    };
    EXPECT_EQ(skipped(), 0);
    for (const QString &header : headers)
        setTime(header, 10);
    setTime(u"soc.xml"_s, 0);
    setTime(u"a.xml"_s, 9);
    EXPECT_EQ(skipped(), 4);
    setTime(u"a.xml"_s, 10); // which counts for soc.h too
    EXPECT_EQ(skipped(), 0);
    setTime(u"a.xml"_s, 9);
    setTime(headers[1], 5); // an assembly header alone
    EXPECT_EQ(skipped(), 2);
    EXPECT_EQ(skipped({soc.path(u"soc.xml"_s)}), 4);
    // The directory of a file that is not there is younger than all.
    EXPECT_EQ(skipped({soc.path(u"soc.xml"_s), soc.path(u"b/c.xml"_s)}), 0);
}

TEST(Outputs, WhatIsBeyondTheMostBytesIsNotWritten)
{
    const Loaded soc(manyFiles(6));
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    const Result all = sameForAllThreads(soc, veldmap::Output::Headers);
    qint64 bytes = 0;
    for (const QString &file : all.files)
        bytes += QFileInfo(soc.path(u"out1/"_s + file)).size();
    for (const qint64 most : {bytes, bytes - 1, bytes / 2, qint64(1)}) {
        const Result some = sameForAllThreads(
            soc, veldmap::Output::Headers,
            [](const QString &directory) { ASSERT_TRUE(QDir(directory).removeRecursively()); }, false, most);
        EXPECT_EQ(some.files, all.files) << "written, then left out, in one order";
        for (const QString &content : some.content)
            EXPECT_TRUE(all.content.contains(content)) << "whole files alone";
        const auto written = some.content.size();
        if (most == bytes) {
            EXPECT_EQ(written, all.files.size());
            continue;
        }
        EXPECT_LT(written, all.files.size());
        EXPECT_EQ(some.told,
                  QStringList(
                      u"%1 and %2 files behind it are not written, since it would be more than %3 bytes "
                      "in all; --max-output SIZE allows more."_s.arg(
                          all.files[written], QString::number(all.files.size() - written - 1), QString::number(most))));
    }
}

TEST(Outputs, LargePagesAreThoseThatStandInMemory)
{
    const Loaded soc(u"<archive><module name='m'><comment>m</comment><reg name='r' count='90000'/></module>"
                     "<instance name='A' type='m' address='0'/><module name='n'><reg name='r' count='90000'/>"
                     "<reg name='last'><comment>Größe</comment></reg></module>"
                     "<instance name='B' type='n' address='0x10000000'/></archive>"_s);
    ASSERT_TRUE(soc.isLoaded()) << soc.errors.join(u'|').toStdString();
    resultOf(soc, veldmap::Output::Docs, u"out1"_s, 2);
    for (const auto &instance : soc.root().instances) {
        const QString page = readFile(soc.path(u"out1/%1.html"_s.arg(instance->getName())));
        EXPECT_GT(page.size(), 16 * 1024 * 1024);
        const qsizetype body = page.indexOf("<body>"_L1) + 6;
        EXPECT_TRUE(page.mid(body) == instance->html_serialize(0) + "</body></html>"_L1);
        QFile file(soc.path(u"out1/%1.html"_s.arg(instance->getName())));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.read(3) == "\xEF\xBB\xBF", instance->getName() == u"B"_s) << "what is not ASCII is marked";
    }
    const QString menu = readFile(soc.path(u"out1/menu.js"_s));
    EXPECT_TRUE(menu == soc.root().treenode_serialize());
}

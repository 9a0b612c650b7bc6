// Which files a documentation site has, and what becomes of those that can't be written.

#include "findings/finding.h"
#include "outputs/outputs.h"
#include "support/loaded.h"

#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

namespace {

constexpr int kPoolFiles = 23;

/// A description with one module and instances of the \a names.
Loaded instances(const QStringList &names)
{
    QString content = u"<module name='m'><reg8 name='r'/></module>"_s;
    for (const QString &name : names)
        content += u"<instance name='%1' type='m'/>"_s.arg(name);
    return Loaded::archive(content);
}

QStringList filesIn(const QString &directory)
{
    return QDir(directory).entryList(QDir::Files);
}

/// What became of the site of a description, and what is said of it.
struct SiteResult {
    veldmap::OutputFiles files;
    veldmap::FindingList told;
};
SiteResult writeSite(const Loaded &soc, const QString &site, const QString &pool)
{
    veldmap::OutputOptions options;
    options.directory = site;
    options.pool = soc.path(pool);
    SiteResult result;
    result.files = veldmap::writeOutput(*soc.map, veldmap::Output::Docs, options, result.told);
    return result;
}

/// The current directory for as long as it lives.
class CurrentDirectory {
public:
    explicit CurrentDirectory(const QString &path) : m_before(QDir::currentPath()) { QDir::setCurrent(path); }
    ~CurrentDirectory() { QDir::setCurrent(m_before); }

private:
    QString m_before;
};

} // namespace

TEST(Site, WholeSiteAndAgain)
{
    const Loaded soc = instances({u"A"_s, u"B c"_s});
    writeFile(soc.path(u"work/docpool/style.css"_s), "body {}");
    writeFile(soc.path(u"work/docpool/menu.html"_s), "<html>");
    writeFile(soc.path(u"work/docpool/more.css"_s), "no file of a site");
    const QString site = soc.path(u"site"_s);
    writeFile(site + u"/style.css"_s, "from an earlier, longer one");
    writeFile(site + u"/index.html"_s, "old");
    const CurrentDirectory current(soc.path(u"work"_s));
    soc.map->generateDocumentation(site, true);

    EXPECT_EQ(filesIn(site), QStringList({u"A.html"_s, u"B c.html"_s, u"chip.html"_s, u"index.html"_s, u"menu.html"_s,
                                          u"menu.js"_s, u"style.css"_s}));
    EXPECT_EQ(readFile(site + u"/style.css"_s), u"body {}"_s);
    EXPECT_EQ(readFile(site + u"/menu.js"_s), soc.root().treenode_serialize());
    EXPECT_EQ(readFile(site + u"/chip.html"_s),
              u"<html><head><title>soc</title></head><body><center><img src='veldcorplogo.png' border='0'><br>"_s
              "<font style='font-size:100px;font-family:verdana'>soc</font></center></body></html>");
    EXPECT_EQ(readFile(site + u"/index.html"_s),
              u"<html><head><title>soc</title><script>function op() {}</script></head>"_s
              "<FRAMESET cols=\"250,*\" frameborder=\"1\" onResize=\"if (navigator.family == 'nn4')"
              "window.location.reload()\"><FRAME src=\"menu.html\" name=\"treeframe\">"
              "<FRAME src=\"chip.html\" name=\"basefrm\"></FRAMESET></html>");
    EXPECT_EQ(readFile(site + u"/B c.html"_s),
              u"<html><head><link type='text/css' rel='stylesheet' href='style.css'>"_s
              "<link type='text/css' rel='stylesheet' href='print.css' media='print'/><title>B c</title>"
              "</head><body>"_s +
                  soc.root().instances.back()->html_serialize(0) + u"</body></html>"_s);

    for (const QString &file : filesIn(site))
        writeFile(site + u'/' + file, "spoilt");
    soc.map->generateDocumentation(site, true);
    for (const QString &file : filesIn(site))
        EXPECT_NE(readFile(site + u'/' + file), u"spoilt"_s) << file.toStdString();
}

TEST(Site, SingleSteps)
{
    const Loaded soc = instances({});
    const QString site = soc.path(u"site"_s);
    soc.map->generateDocumentation(site, true); // there is no such directory
    EXPECT_FALSE(QFileInfo::exists(site));
    soc.map->generateDocumentation(site, false); // and no software

    QDir().mkpath(site);
    writeFile(soc.path(u"docpool/ua.js"_s), "script");
    const CurrentDirectory current(soc.directory->path());
    soc.map->copyDocumentationFiles(site);
    EXPECT_EQ(filesIn(site), QStringList({u"ua.js"_s}));
    soc.map->generateChipHtml(site, &soc.root());
    soc.map->generateIndexHtml(site, &soc.root());
    soc.map->generateChipJSMenu(site, &soc.root());
    EXPECT_EQ(filesIn(site), QStringList({u"chip.html"_s, u"index.html"_s, u"menu.js"_s, u"ua.js"_s}));
    EXPECT_TRUE(soc.map->copyFile(site + u"/ua.js"_s, site + u"/menu.js"_s));
    EXPECT_EQ(readFile(site + u"/menu.js"_s), u"script"_s);
    EXPECT_FALSE(soc.map->copyFile(site + u"/missing"_s, site + u"/menu.js"_s));
    EXPECT_EQ(readFile(site + u"/menu.js"_s), u"script"_s);
}

TEST(Site, FirstPageThatFailsEndsThePages)
{
    for (const QString &name : {u"stopped"_s, u"sub/page"_s, u"../up"_s, u"a..b"_s, u"index"_s, u"chip"_s, u"menu"_s}) {
        const Loaded soc = instances({u"A"_s, name, u"C"_s, u"D"_s});
        const QString site = soc.path(u"out/site"_s);
        writeFile(site + u"/stopped.html/file"_s, {}); // a directory in the place of the page
        QDir(site).mkpath(u"sub"_s);
        const veldmap::OutputFiles report = writeSite(soc, site, u"no pool"_s).files;

        ASSERT_EQ(report.failed.size(), 1) << name.toStdString();
        EXPECT_EQ(report.failed.first().path, site + u'/' + name + u".html"_s);
        EXPECT_FALSE(report.failed.first().reason.isEmpty());
        EXPECT_EQ(report.unreached, QStringList({u"C"_s, u"D"_s}));
        EXPECT_EQ(report.missing.size(), kPoolFiles);
        EXPECT_EQ(report.written.size(), 4);
        EXPECT_EQ(filesIn(site), QStringList({u"A.html"_s, u"chip.html"_s, u"index.html"_s, u"menu.js"_s}));
        EXPECT_TRUE(readFile(site + u"/index.html"_s).contains(u"FRAMESET"_s));
        EXPECT_EQ(filesIn(site + u"/sub"_s) + filesIn(soc.path(u"out"_s)), QStringList());
    }
}

TEST(Site, FilesInTheWayAreNamedAndPassedOver)
{
    const Loaded soc = instances({u"A"_s, u"B"_s, u"A"_s});
    const QString site = soc.path(u"site"_s);
    writeFile(soc.path(u"pool/ua.js"_s), "script");
    for (const QString &file : {u"ua.js"_s, u"menu.js"_s, u"chip.html"_s, u"index.html"_s})
        QDir().mkpath(site + u'/' + file + u"/taken"_s);
    const auto &[report, told] = writeSite(soc, site, u"pool"_s);
    QStringList failed;
    for (const veldmap::FailedFile &file : report.failed)
        failed += QFileInfo(file.path).fileName();
    EXPECT_EQ(failed, QStringList({u"ua.js"_s, u"menu.js"_s, u"chip.html"_s, u"index.html"_s}));
    EXPECT_EQ(report.missing.size(), kPoolFiles - 1);
    EXPECT_EQ(filesIn(site), QStringList({u"A.html"_s, u"B.html"_s}));
    EXPECT_EQ(told.findings.first().text(), site + u"/A.html shows the last of several instances of that name."_s);
    EXPECT_EQ(report.unreached, QStringList());
}

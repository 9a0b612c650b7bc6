#include "docsite/site.h"

#include "files/file_writer.h"
#include "text/lines.h"
#include "docsite/site_text.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QFile>
#include <QSet>

#include <algorithm>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

using namespace Qt::StringLiterals;
using veldmap::expand;
using veldmap::SiteReport;
using veldmap::SiteText;

namespace {

/// The fixed files of a site. They lie in docsite/pool, and beside the program as docpool.
constexpr QLatin1StringView kPoolFiles[] = {
    // style sheets
    "style.css"_L1,
    "print.css"_L1,
    // pictures of the tree
    "ftv2blank.gif"_L1,
    "ftv2folderclosed.gif"_L1,
    "ftv2folderopen.gif"_L1,
    "ftv2lastnode.gif"_L1,
    "ftv2mlastnode.gif"_L1,
    "ftv2mnode.gif"_L1,
    "ftv2node.gif"_L1,
    "ftv2plastnode.gif"_L1,
    "ftv2pnode.gif"_L1,
    "ftv2vertline.gif"_L1,
    // icons of nodes
    "memory.png"_L1,
    "module.png"_L1,
    "reg16.png"_L1,
    "reg32.png"_L1,
    "reg8.png"_L1,
    "bitfield.png"_L1,
    "hole.png"_L1,
    // logo
    "veldcorplogo.png"_L1,
    // scripts and the page of the menu
    "ftiens4.js"_L1,
    "ua.js"_L1,
    "menu.html"_L1,
};

/// Where a process finds the pool that is told of none: in its current directory.
constexpr QLatin1StringView kDefaultPool = "./docpool"_L1;

constexpr QLatin1StringView kMenuScript = "menu.js"_L1;
constexpr QLatin1StringView kStartPage = "chip.html"_L1;
constexpr QLatin1StringView kFrames = "index.html"_L1;
constexpr QLatin1StringView kMenuPage = "menu.html"_L1;

// The forms have no line feeds: a file is one line.
constexpr QStringView kStartPageForm =
    u"<html><head><title>@name@</title></head><body><center><img src='veldcorplogo.png' border='0'><br>"
    u"<font style='font-size:100px;font-family:verdana'>@name@</font></center></body></html>";

constexpr QStringView kFramesForm =
    u"<html><head><title>@name@</title><script>function op() {}</script></head>"
    u"<FRAMESET cols=\"250,*\" frameborder=\"1\" onResize=\"if (navigator.family == 'nn4')"
    u"window.location.reload()\">"
    u"<FRAME src=\"menu.html\" name=\"treeframe\">"
    u"<FRAME src=\"chip.html\" name=\"basefrm\">"
    u"</FRAMESET></html>";

constexpr QLatin1StringView kPageBegin = "<html><head><link type='text/css' rel='stylesheet' href='style.css'>"
                                         "<link type='text/css' rel='stylesheet' href='print.css' media='print'/>"
                                         "<title>"_L1;
constexpr QLatin1StringView kBodyBegin = "</title></head><body>"_L1;
constexpr QLatin1StringView kPageEnd = "</body></html>"_L1;

QByteArray startPageOf(const VMRootArchive &root)
{
    return expand(kStartPageForm, {{u"name"_s, root.getName()}}).toUtf8();
}

QByteArray framesOf(const VMRootArchive &root)
{
    return expand(kFramesForm, {{u"name"_s, root.getName()}}).toUtf8();
}

void appendPage(SiteText &text, const VMXMLElement &instance)
{
    text.append(kPageBegin, instance.getName(), kBodyBegin);
    veldmap::appendPageText(text, instance, 0);
    text.append(kPageEnd);
}

/// Why an instance of that name can have no page; empty when it can. The name becomes that of a file as it stands.
QString refusalOf(const QString &name)
{
    if (name.contains(u'/') || name.contains(".."_L1))
        return u"the name of the instance leads out of the directory"_s;
    const QString file = name + ".html"_L1;
    if (file == kFrames || file == kStartPage || file == kMenuPage)
        return u"the site has another file of that name"_s;
    return {};
}

/// Puts a copy of \a source in the place of \a target. False when that is not possible; \a reason then tells why.
bool copyWholeFile(const QString &source, const QString &target, QString &reason)
{
#ifdef Q_OS_WIN
    if (CopyFileW(reinterpret_cast<LPCWSTR>(source.utf16()), reinterpret_cast<LPCWSTR>(target.utf16()), 0))
        return true;
    reason = qt_error_string();
    return false;
#else
    QFile file(source);
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray content = file.readAll();
        if (file.error() == QFile::NoError)
            return veldmap::writeWholeFile(target, content, reason);
    }
    reason = u"%1 can't be read: %2"_s.arg(source, file.errorString());
    return false;
#endif
}

/// Writes the files of one site into the directory \a path.
class SiteRun {
public:
    explicit SiteRun(const QString &path, const std::function<void(const QString &)> &progress = {})
        : m_path(path + u'/'), m_progress(progress)
    {
    }

    void copyPool(const QString &pool)
    {
        for (const QLatin1StringView file : kPoolFiles) {
            const QString source = pool + u'/' + file;
            QString reason;
            if (copyWholeFile(source, m_path + file, reason))
                ++report.written;
            else if (!QFile::exists(source))
                report.missing += file;
            else
                report.failed.append({m_path + file, reason});
        }
    }

    bool write(const QString &file, const QByteArray &content)
    {
        if (m_progress)
            m_progress(m_path + file);
        QString reason;
        if (!veldmap::writeWholeFile(m_path + file, content, reason)) {
            report.failed.append({m_path + file, reason});
            return false;
        }
        ++report.written;
        return true;
    }

    void writeMenu(const VMRootArchive &root)
    {
        m_text.clear();
        veldmap::appendMenuScript(m_text, root);
        write(kMenuScript, m_text.bytes());
    }

    /// The first page that can't be written ends the walk.
    void writePages(const VMRootArchive &root)
    {
        QSet<QString> names;
        const auto &instances = root.getInstanciatedTemplates();
        const auto end = std::ranges::find_if_not(instances, [&](const auto &instance) {
            if (!writePage(*instance))
                return false;
            if (names.contains(instance->getName()))
                report.overwritten += instance->getName();
            names += instance->getName();
            return true;
        });
        for (auto instance = end == instances.end() ? end : end + 1; instance != instances.end(); ++instance)
            report.unreached += (*instance)->getName();
    }

    SiteReport report;

private:
    bool writePage(const VMXMLElement &instance)
    {
        const QString file = instance.getName() + ".html"_L1;
        const QString refusal = refusalOf(instance.getName());
        if (!refusal.isEmpty()) {
            report.failed.append({m_path + file, refusal});
            return false;
        }
        m_text.clear();
        appendPage(m_text, instance);
        return write(file, m_text.bytes());
    }

    QString m_path;
    std::function<void(const QString &)> m_progress;
    SiteText m_text; ///< of the file that is being made
};

} // namespace

namespace veldmap {

SiteReport writeDocumentation(const VMMemoryMap &map, const QString &path, bool chip, const QString &pool,
                              const std::function<void(const QString &)> &progress)
{
    SiteRun run(path, progress);
    if (const VMRootArchive *root = chip ? map.chipRootArchive : map.softRootArchive) {
        run.copyPool(pool);
        run.writeMenu(*root);
        run.write(kStartPage, startPageOf(*root));
        run.write(kFrames, framesOf(*root));
        run.writePages(*root);
    }
    return run.report;
}

} // namespace veldmap

void VMMemoryMap::generateDocumentation(const QString &path, bool chip)
{
    veldmap::writeDocumentation(*this, path, chip, kDefaultPool);
}

void VMMemoryMap::copyDocumentationFiles(const QString &path)
{
    SiteRun(path).copyPool(kDefaultPool);
}

bool VMMemoryMap::copyFile(const QString &source, const QString &target)
{
    QString reason;
    return copyWholeFile(source, target, reason);
}

void VMMemoryMap::generateChipHtml(const QString &path, VMRootArchive *root)
{
    SiteRun(path).write(kStartPage, startPageOf(*root));
}

void VMMemoryMap::generateIndexHtml(const QString &path, VMRootArchive *root)
{
    SiteRun(path).write(kFrames, framesOf(*root));
}

void VMMemoryMap::generateChipJSMenu(const QString &path, VMRootArchive *root)
{
    SiteRun(path).writeMenu(*root);
}

#include "docsite/site.h"

#include "docsite/site_text.h"
#include "model/root_archive.h"
#include "text/lines.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

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

} // namespace

std::span<const QLatin1StringView> poolFiles()
{
    return kPoolFiles;
}

bool isSiteFile(const QString &file)
{
    return file == kFrames || file == kStartPage || file == kMenuPage;
}

void appendStartPage(SiteText &text, const VMRootArchive &root)
{
    text.append(expand(kStartPageForm, {{u"name"_s, root.getName()}}));
}

void appendFrames(SiteText &text, const VMRootArchive &root)
{
    text.append(expand(kFramesForm, {{u"name"_s, root.getName()}}));
}

void appendPage(SiteText &text, const VMXMLElement &instance)
{
    text.append(kPageBegin, instance.getName(), kBodyBegin);
    appendPageText(text, instance, 0);
    text.append(kPageEnd);
}

} // namespace veldmap

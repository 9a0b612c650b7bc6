#pragma once

#include <QLatin1StringView>
#include <QString>

#include <span>

class VMRootArchive;
class VMXMLElement;

/// The files of a documentation site and their text; nothing here writes one.
namespace veldmap {

class SiteText;

constexpr QLatin1StringView kMenuScript = QLatin1StringView("menu.js");
constexpr QLatin1StringView kStartPage = QLatin1StringView("chip.html");
constexpr QLatin1StringView kFrames = QLatin1StringView("index.html");

/// The names of the files that are the same in every site. They lie in docsite/pool, and beside the program as docpool.
std::span<const QLatin1StringView> poolFiles();

/// Whether every site has a page called \a file, so that no instance can have it.
bool isSiteFile(const QString &file);

/// Appends what a site shows at first.
void appendStartPage(SiteText &text, const VMRootArchive &root);
/// Appends the frames of a site, its menu beside a page.
void appendFrames(SiteText &text, const VMRootArchive &root);
/// Appends the page of \a instance.
void appendPage(SiteText &text, const VMXMLElement &instance);

} // namespace veldmap

#pragma once

#include "site/page_names.h"

#include <QByteArray>

class VMXMLElement;

namespace veldmap {

class HtmlText;
class SitePlan;
struct SiteInstance;
struct SiteType;

/// One instance or type with all that it holds: its head, the table of its registers, and a section for each.
struct Chapter {
    const SitePlan &plan;
    const VMXMLElement &element;
    const SiteInstance *instance; ///< null for a type, whose addresses are offsets
    const SiteType *type;         ///< null for an instance of a type that the headers don't know
    bool isAlone;                 ///< a page of its own, not one of many chapters of a page
};

/// Appends \a chapter. Its ids are unique among those of \a ids.
void appendChapter(HtmlText &text, const Chapter &chapter, PageIds &ids);

/// The address that leads to an instance or a type: a file, or where one page holds all a chapter.
void appendLink(HtmlText &text, const SiteInstance &instance, bool isAlone);
void appendLink(HtmlText &text, const SiteType &type, bool isAlone);

/// Appends where \a element was declared: the file and line, if it is known.
void appendSource(HtmlText &text, const SitePlan &plan, const struct SourcePlace &place);

} // namespace veldmap

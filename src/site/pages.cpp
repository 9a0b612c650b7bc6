#include "site/pages.h"

#include "model/aggregates.h"
#include "model/archive.h"
#include "site/bit_diagram.h"
#include "site/chapter.h"
#include "site/comment_html.h"
#include "site/html_text.h"
#include "site/memory_map_drawing.h"
#include "site/page_frame.h"
#include "site/site_plan.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kSummaryLength = 120;

constexpr QLatin1StringView kIndex = "index"_L1;
constexpr QLatin1StringView kTypes = "types"_L1;
constexpr QLatin1StringView kEnums = "enums"_L1;
constexpr QLatin1StringView kVariables = "variables"_L1;

qsizetype pagesFor(qsizetype rows)
{
    return qMax<qsizetype>(1, (rows + kRowsOfPage - 1) / kRowsOfPage);
}

QString fileOfPage(const QString &stem, qsizetype page)
{
    // No page of an instance or a type has a name with "~0".
    return page == 0 ? stem + ".html"_L1 : stem + "~0"_L1 + QString::number(page + 1) + ".html"_L1;
}

void appendSize(HtmlText &text, const VMXMLElement &element)
{
    text.put("0x"_L1, Hex{static_cast<quint32>(element.sizeOf())});
}

/// Links to the other pages of a list, where there are several.
void appendPager(HtmlText &text, QLatin1StringView stem, qsizetype page, qsizetype pages)
{
    if (pages < 2)
        return;
    text.put("<nav class=\"pager\" aria-label=\"Parts of the list\"><ul>"_L1);
    for (qsizetype at = 0; at < pages; ++at) {
        text.put("<li><a href=\""_L1, fileOfPage(stem, at), at == page ? "\" aria-current=\"page\">"_L1 : "\">"_L1,
                 at + 1, "</a></li>"_L1);
    }
    text.put("</ul></nav>\n"_L1);
}

void openTable(HtmlText &text, QLatin1StringView tableClass, std::initializer_list<QLatin1StringView> heads)
{
    text.put("<div class=\"wide\"><table class=\""_L1, tableClass, "\">\n<thead><tr>"_L1);
    for (const QLatin1StringView head : heads)
        text.put("<th scope=\"col\">"_L1, head, "</th>"_L1);
    text.put("</tr></thead>\n<tbody>\n"_L1);
}

void closeTable(HtmlText &text)
{
    text.put("</tbody></table></div>\n"_L1);
}

// The instances -------------------------------------------------------------------------------------------------------

void appendInstances(HtmlText &text, const SitePlan &plan, qsizetype begin, qsizetype end, bool isAlone)
{
    openTable(text, "list"_L1, {"Address"_L1, "Name"_L1, "Size"_L1, "Type"_L1, "Description"_L1});
    for (qsizetype at = begin; at < end; ++at) {
        const SiteInstance &instance = plan.instances()[static_cast<std::size_t>(at)];
        const VMXMLElement &element = *instance.element;
        text.put("<tr><td><code>0x"_L1, Hex{element.getBaseAddress(), 8},
                 "</code></td><th scope=\"row\"><a href=\""_L1);
        appendLink(text, instance, isAlone);
        text.put("\">"_L1, element.getName(), "</a></th><td>"_L1);
        appendSize(text, element);
        text.put("</td><td>"_L1);
        if (instance.type >= 0) {
            const SiteType &type = plan.types()[static_cast<std::size_t>(instance.type)];
            text.put("<a href=\""_L1);
            appendLink(text, type, isAlone);
            text.put("\">"_L1, element.typedefName, "</a>"_L1);
        }
        text.put("</td><td>"_L1, summaryOf(element.getComment(), kSummaryLength), "</td></tr>\n"_L1);
    }
    closeTable(text);
}

void appendStart(HtmlText &text, const SitePlan &plan)
{
    text.put("<h1>"_L1, plan.title(), "</h1>\n<div class=\"text lead\">"_L1);
    appendComment(text, plan.comment());
    text.put("</div>\n"_L1);
}

void appendMapOf(HtmlText &text, const SitePlan &plan, bool isAlone)
{
    text.put("<section class=\"mapped\">\n<h2>Memory map</h2>\n"_L1);
    if (plan.hasBothRoots())
        text.put("<p class=\"legend\"><span class=\"chip\">chip</span> <span class=\"soft\">software</span></p>\n"_L1);
    appendMemoryMap(text, plan, isAlone);
    text.put("</section>\n"_L1);
}

void appendIndexPage(HtmlText &text, const SitePlan &plan, qsizetype page)
{
    const auto count = static_cast<qsizetype>(plan.instances().size());
    openFrame(text, plan, Frame::Page, page == 0 ? QString() : "Instances, part "_L1 + QString::number(page + 1),
              kIndex);
    text.put("<main id=\"-main\" class=\"start\">\n"_L1);
    if (page == 0) {
        appendStart(text, plan);
        if (count > 0)
            appendMapOf(text, plan, true);
    } else {
        text.put("<h1>Instances, part "_L1, page + 1, "</h1>\n"_L1);
    }
    text.put("<section class=\"listed\">\n"_L1);
    if (page == 0)
        text.put("<h2>Instances</h2>\n"_L1);
    appendPager(text, kIndex, page, pagesFor(count));
    if (count > 0)
        appendInstances(text, plan, page * kRowsOfPage, qMin(count, (page + 1) * kRowsOfPage), true);
    else
        text.put("<p>The description has none.</p>\n"_L1);
    text.put("</section>\n</main>"_L1);
    closeFrame(text, Frame::Page);
}

// The types -----------------------------------------------------------------------------------------------------------

void appendTypes(HtmlText &text, const SitePlan &plan, qsizetype begin, qsizetype end)
{
    openTable(text, "list"_L1, {"Name"_L1, "Kind"_L1, "Size"_L1, "Instances"_L1, "Description"_L1, "Source"_L1});
    for (qsizetype at = begin; at < end; ++at) {
        const SiteType &type = plan.types()[static_cast<std::size_t>(at)];
        const auto *structure = elementCast<VMStruct>(type.element);
        text.put("<tr><th scope=\"row\"><a href=\""_L1, type.file, "\">"_L1, type.element->typedefName,
                 "</a></th><td>"_L1,
                 !structure             ? "register or value"_L1
                 : structure->isTypedef ? "structure"_L1
                                        : "module"_L1,
                 "</td><td>"_L1);
        appendSize(text, *type.element);
        text.put("</td><td>"_L1, type.instances.size(), "</td><td>"_L1,
                 summaryOf(type.element->getComment(), kSummaryLength), "</td><td>"_L1);
        appendSource(text, plan, type.element->source);
        text.put("</td></tr>\n"_L1);
    }
    closeTable(text);
}

void appendTypesPage(HtmlText &text, const SitePlan &plan, qsizetype page)
{
    const auto count = static_cast<qsizetype>(plan.types().size());
    openFrame(text, plan, Frame::Page, u"Types"_s, kTypes);
    text.put("<main id=\"-main\" class=\"plain\">\n<h1>Types</h1>\n"_L1);
    appendPager(text, kTypes, page, pagesFor(count));
    appendTypes(text, plan, page * kRowsOfPage, qMin(count, (page + 1) * kRowsOfPage));
    text.put("</main>"_L1);
    closeFrame(text, Frame::Page);
}

// Constants -----------------------------------------------------------------------------------------------------------

void appendNumber(HtmlText &text, int value)
{
    text.put("<td class=\"number\">"_L1, value, "</td><td><code>0x"_L1, Hex{static_cast<quint32>(value)},
             "</code></td>"_L1);
}

void appendEnum(HtmlText &text, const SitePlan &plan, const VMEnum &enumeration, PageIds &ids, int level)
{
    const QByteArray id = ids.take({}, enumeration.name);
    text.put("<section id=\""_L1, id, "\" class=\"constants\">\n<h"_L1, level, "><a href=\"#"_L1, fragmentOf(id),
             "\">"_L1, enumeration.name, "</a></h"_L1, level, ">\n<p class=\"facts\">"_L1);
    appendSource(text, plan, enumeration.source);
    text.put("</p>\n"_L1);
    if (!enumeration.comment.isEmpty()) {
        text.put("<div class=\"text\">"_L1);
        appendComment(text, enumeration.comment);
        text.put("</div>\n"_L1);
    }
    if (!enumeration.isEmpty()) {
        openTable(text, "values"_L1, {"Name"_L1, "Value"_L1, "Hexadecimal"_L1, "Description"_L1, "Source"_L1});
        for (const VMIntVar &entry : enumeration) {
            const QByteArray entryId = ids.take(id, entry.name);
            text.put("<tr id=\""_L1, entryId, "\"><th scope=\"row\"><a href=\"#"_L1, fragmentOf(entryId), "\">"_L1,
                     entry.name, "</a></th>"_L1);
            appendNumber(text, entry.leftValue);
            text.put("<td>"_L1);
            appendComment(text, entry.comment);
            text.put("</td><td>"_L1);
            appendSource(text, plan, entry.source);
            text.put("</td></tr>\n"_L1);
        }
        closeTable(text);
    }
    text.put("</section>\n"_L1);
}

QList<const VMEnum *> enumsOf(const SitePlan &plan)
{
    QList<const VMEnum *> enums;
    for (const SiteArchive &archive : plan.archives()) {
        for (const auto &enumeration : archive.archive->variables->enums)
            enums += enumeration.get();
    }
    return enums;
}

/// Enums have several rows each.
constexpr qsizetype kEnumsOfPage = kRowsOfPage / 4;

qsizetype enumPages(const SitePlan &plan)
{
    return (enumsOf(plan).size() + kEnumsOfPage - 1) / kEnumsOfPage;
}

void appendEnumsPage(HtmlText &text, const SitePlan &plan, qsizetype page)
{
    const QList<const VMEnum *> enums = enumsOf(plan);
    PageIds ids;
    openFrame(text, plan, Frame::Page, u"Enums"_s, kEnums);
    text.put("<main id=\"-main\" class=\"plain\">\n<h1>Enums</h1>\n"_L1);
    appendPager(text, kEnums, page, enumPages(plan));
    for (qsizetype at = page * kEnumsOfPage; at < qMin(enums.size(), (page + 1) * kEnumsOfPage); ++at)
        appendEnum(text, plan, *enums[at], ids, 2);
    text.put("</main>"_L1);
    closeFrame(text, Frame::Page);
}

struct Variable {
    const SiteArchive *archive;
    const VMIntVar *variable;
};

/// The variables and ranges of the files, which are no entries of enums.
QList<Variable> variablesOf(const SitePlan &plan)
{
    QList<Variable> variables;
    for (const SiteArchive &archive : plan.archives()) {
        for (const VMIntVar &variable : *archive.archive->variables) {
            if (!variable.ownerEnum && !isSpacer(variable))
                variables.append({&archive, &variable});
        }
    }
    return variables;
}

void appendVariable(HtmlText &text, const SitePlan &plan, const VMIntVar &variable, PageIds &ids)
{
    const QByteArray id = ids.take({}, variable.name);
    text.put("<tr id=\""_L1, id, "\"><th scope=\"row\"><a href=\"#"_L1, fragmentOf(id), "\">"_L1, variable.name,
             "</a></th>"_L1);
    if (variable.isRange)
        text.put("<td class=\"number\">"_L1, variable.leftValue,
                 variable.dir == VMIntVar::up ? " to "_L1 : " down to "_L1, variable.rightValue,
                 "</td><td></td><td><code>"_L1, variable.leftExpression, " : "_L1, variable.rightExpression,
                 "</code></td>"_L1);
    else {
        appendNumber(text, variable.leftValue);
        text.put("<td><code>"_L1, variable.leftExpression, "</code></td>"_L1);
    }
    text.put("<td>"_L1);
    appendComment(text, variable.comment);
    text.put("</td><td>"_L1);
    appendSource(text, plan, variable.source);
    text.put("</td></tr>\n"_L1);
}

void appendVariables(HtmlText &text, const SitePlan &plan, const QList<Variable> &variables, qsizetype begin,
                     qsizetype end, PageIds &ids, int level)
{
    for (qsizetype at = begin; at < end;) {
        const SiteArchive *archive = variables[at].archive;
        text.put("<section class=\"constants\">\n<h"_L1, level, ">"_L1, archive->archive->relativeFileName, "</h"_L1,
                 level, ">\n"_L1);
        openTable(text, "values"_L1,
                  {"Name"_L1, "Value"_L1, "Hexadecimal"_L1, "Expression"_L1, "Description"_L1, "Source"_L1});
        for (; at < end && variables[at].archive == archive; ++at)
            appendVariable(text, plan, *variables[at].variable, ids);
        closeTable(text);
        text.put("</section>\n"_L1);
    }
}

void appendVariablesPage(HtmlText &text, const SitePlan &plan, qsizetype page)
{
    const QList<Variable> variables = variablesOf(plan);
    PageIds ids;
    openFrame(text, plan, Frame::Page, u"Variables"_s, kVariables);
    text.put("<main id=\"-main\" class=\"plain\">\n<h1>Variables</h1>\n"_L1);
    appendPager(text, kVariables, page, pagesFor(variables.size()));
    appendVariables(text, plan, variables, page * kRowsOfPage, qMin(variables.size(), (page + 1) * kRowsOfPage), ids,
                    2);
    text.put("</main>"_L1);
    closeFrame(text, Frame::Page);
}

Chapter chapterOf(const SitePlan &plan, const SiteInstance &instance, bool isAlone)
{
    const SiteType *type = instance.type < 0 ? nullptr : &plan.types()[static_cast<std::size_t>(instance.type)];
    return {plan, *instance.element, &instance, type, isAlone};
}

} // namespace

void appendInstancePage(HtmlText &text, const SitePlan &plan, qsizetype at)
{
    const SiteInstance &instance = plan.instances()[static_cast<std::size_t>(at)];
    PageIds ids;
    openFrame(text, plan, Frame::Page, instance.element->getName(), {});
    appendChapter(text, chapterOf(plan, instance, true), ids);
    closeFrame(text, Frame::Page);
}

void appendTypePage(HtmlText &text, const SitePlan &plan, qsizetype at)
{
    const SiteType &type = plan.types()[static_cast<std::size_t>(at)];
    PageIds ids;
    openFrame(text, plan, Frame::Page, type.element->typedefName, {});
    appendChapter(text, {plan, *type.element, nullptr, &type, true}, ids);
    closeFrame(text, Frame::Page);
}

void appendManual(HtmlText &text, const SitePlan &plan)
{
    openFrame(text, plan, Frame::Manual, QString(), {});
    text.put("<main id=\"-main\" class=\"start\">\n"_L1);
    appendDiagramParts(text);
    appendStart(text, plan);
    appendMapOf(text, plan, false);
    text.put("<section class=\"listed\">\n<h2>Instances</h2>\n"_L1);
    appendInstances(text, plan, 0, static_cast<qsizetype>(plan.instances().size()), false);
    text.put("</section>\n"_L1);
    // Ids of chapters are those of the plan, and all others begin with one of them.
    PageIds ids;
    for (const SiteInstance &instance : plan.instances()) {
        if (text.isEnded())
            return;
        appendChapter(text, chapterOf(plan, instance, false), ids);
    }
    for (const SiteType &type : plan.types()) {
        if (type.hasPage)
            appendChapter(text, {plan, *type.element, nullptr, &type, false}, ids);
    }
    if (plan.hasEnums()) {
        text.put("<section>\n<h2>Enums</h2>\n"_L1);
        for (const VMEnum *enumeration : enumsOf(plan))
            appendEnum(text, plan, *enumeration, ids, 3);
        text.put("</section>\n"_L1);
    }
    if (plan.hasVariables()) {
        text.put("<section>\n<h2>Variables</h2>\n"_L1);
        const QList<Variable> variables = variablesOf(plan);
        appendVariables(text, plan, variables, 0, variables.size(), ids, 3);
        text.put("</section>\n"_L1);
    }
    text.put("</main>"_L1);
    closeFrame(text, Frame::Manual);
}

QList<Constant> constantsOf(const SitePlan &plan)
{
    QList<Constant> constants;
    const auto add = [&](const QString &name, const QString &file, const QByteArray &id) {
        constants.append({name, file.chopped(5).toUtf8() + '#' + fragmentOf(id)});
    };
    PageIds ids;
    for (qsizetype at = 0; const VMEnum *enumeration : enumsOf(plan)) {
        if (at % kEnumsOfPage == 0)
            ids = {};
        const QString file = fileOfPage(kEnums, at++ / kEnumsOfPage);
        const QByteArray id = ids.take({}, enumeration->name);
        add(enumeration->name, file, id);
        for (const VMIntVar &entry : *enumeration)
            add(entry.name, file, ids.take(id, entry.name));
    }
    for (qsizetype at = 0; const Variable &variable : variablesOf(plan)) {
        if (at % kRowsOfPage == 0)
            ids = {};
        add(variable.variable->name, fileOfPage(kVariables, at++ / kRowsOfPage), ids.take({}, variable.variable->name));
    }
    return constants;
}

QString ListPages::fileOf(qsizetype page) const
{
    return fileOfPage(stem, page);
}

QList<ListPages> listPagesOf(const SitePlan &plan)
{
    QList<ListPages> lists = {{kIndex, pagesFor(static_cast<qsizetype>(plan.instances().size())), appendIndexPage}};
    if (!plan.types().empty())
        lists += {kTypes, pagesFor(static_cast<qsizetype>(plan.types().size())), appendTypesPage};
    if (plan.hasEnums())
        lists += {kEnums, enumPages(plan), appendEnumsPage};
    if (plan.hasVariables())
        lists += {kVariables, pagesFor(variablesOf(plan).size()), appendVariablesPage};
    return lists;
}

} // namespace veldmap

#include "site/page_frame.h"

#include "site/html_text.h"
#include "site/site_plan.h"
#include "site/templates.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr QLatin1StringView kTextHole = "@text@"_L1;

QLatin1StringView templateOf(Frame frame)
{
    return frame == Frame::Page ? templates::kPage : templates::kManual;
}

struct ListLink {
    QLatin1StringView stem;
    QLatin1StringView word;
    bool isThere;
};

void appendLinks(HtmlText &text, const SitePlan &plan, QLatin1StringView current)
{
    const ListLink links[] = {{"index"_L1, "Memory map"_L1, true},
                              {"types"_L1, "Types"_L1, !plan.types().empty()},
                              {"enums"_L1, "Enums"_L1, plan.hasEnums()},
                              {"variables"_L1, "Variables"_L1, plan.hasVariables()}};
    for (const ListLink &link : links) {
        if (link.isThere)
            text.put("<li><a href=\""_L1, link.stem, ".html\""_L1,
                     link.stem == current ? " aria-current=\"page\">"_L1 : ">"_L1, link.word, "</a></li>"_L1);
    }
}

} // namespace

void openFrame(HtmlText &text, const SitePlan &plan, Frame frame, const QString &title, QLatin1StringView current)
{
    QLatin1StringView rest = templateOf(frame);
    while (true) {
        const qsizetype begin = rest.indexOf(u'@');
        const qsizetype end = rest.indexOf(u'@', begin + 1);
        Q_ASSERT(begin >= 0 && end >= 0);
        const QLatin1StringView hole = rest.sliced(begin, end - begin + 1);
        text.put(rest.first(begin));
        if (hole == kTextHole)
            return;
        if (hole == "@title@"_L1)
            text.put(title, title.isEmpty() ? ""_L1 : " · "_L1, plan.title());
        else if (hole == "@site@"_L1)
            text.put(plan.title());
        else if (hole == "@links@"_L1)
            appendLinks(text, plan, current);
        rest = rest.sliced(end + 1);
    }
}

void closeFrame(HtmlText &text, Frame frame)
{
    const QLatin1StringView whole = templateOf(frame);
    text.put(whole.sliced(whole.indexOf(kTextHole) + kTextHole.size()));
}

} // namespace veldmap

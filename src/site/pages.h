#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace veldmap {

class HtmlText;
class SitePlan;

// The pages of a reference manual, each appended to an empty text. All that they say is there without a script.

/// How many instances stand in the table of one page, and how many enums or variables. A browser shows that many at
/// once without delay.
inline constexpr qsizetype kRowsOfPage = 500;

/// The page of the instance at \a at of the plan.
void appendInstancePage(HtmlText &text, const SitePlan &plan, qsizetype at);
/// The page of the type at \a at of the plan.
void appendTypePage(HtmlText &text, const SitePlan &plan, qsizetype at);
/// One page that holds all: the start page, then each instance and each type as a chapter, then constants.
void appendManual(HtmlText &text, const SitePlan &plan);

/// A page that lists much, in as many files as it takes: index.html, index-2.html, ...
struct ListPages {
    QString stem;
    qsizetype count; ///< of files
    void (*append)(HtmlText &text, const SitePlan &plan, qsizetype page);

    /// The file of \a page, from 0.
    QString fileOf(qsizetype page) const;
};

/// The lists of \a plan: the start page with the instances, the types, the enums, the variables. Those that would be
/// empty are left out, but for the start page.
QList<ListPages> listPagesOf(const SitePlan &plan);

/// An enum, an entry of one, or a variable, and where it stands.
struct Constant {
    QString name;
    QByteArray link; ///< enums.html#level.LOW, without the file's ending: enums#level.LOW
};

/// All constants of \a plan, in the order of their pages.
QList<Constant> constantsOf(const SitePlan &plan);

} // namespace veldmap

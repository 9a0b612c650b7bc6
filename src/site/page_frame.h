#pragma once

#include <QByteArrayView>
#include <QString>

namespace veldmap {

class HtmlText;
class SitePlan;

/// What stands around the text of a page: templates/page.html, or templates/manual.html for the page that holds all.
enum class Frame { Page, Manual };

/// Appends the frame up to the text. \a current is the stem of the list that the page belongs to. \a title is the
/// page's, with the site's behind it.
void openFrame(HtmlText &text, const SitePlan &plan, Frame frame, const QString &title, QLatin1StringView current);
/// Appends the frame behind the text.
void closeFrame(HtmlText &text, Frame frame);

} // namespace veldmap

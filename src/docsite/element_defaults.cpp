#include "common/lines.h"
#include "model/element.h"

using namespace Qt::StringLiterals;

// What stands in the documentation site for an element that has no form of its own.

QString VMXMLElement::getHrefName() const
{
    return veldmap::hex8(getBaseAddress());
}

QString VMXMLElement::html_serialize(int) const
{
    return {};
}

QString VMXMLElement::html_comment_serialize(int level) const
{
    constexpr int kLevelMargin = 25; // pixels
    return "<table class='bf' style='margin-left:"_L1 + QString::number(kLevelMargin * level) +
           "px'><tr><td class='rc'>"_L1 + comment + "</td></tr></table><br/>"_L1;
}

QString VMXMLElement::treenode_serialize(int, const QString &) const
{
    return {};
}

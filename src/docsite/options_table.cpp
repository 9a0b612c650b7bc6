#include "model/bitfield.h"
#include "text/text_buffer.h"

using namespace Qt::StringLiterals;

// The options of a field, which a load puts behind its comment:
//
//     <table><tr><td>0</td><td>slow</td></tr><tr><td>5</td><td>fast</td><td>only behind the PLL</td></tr></table>

QString VMBitField::generateOptionsComment() const
{
    if (options.optionList.isEmpty())
        return {};
    veldmap::TextBuffer table;
    table.append("<table>"_L1);
    for (const VMBitFieldOption &option : options.optionList) {
        table.append("<tr><td>"_L1);
        table.append(QStringView(
            convertValueToValueString(static_cast<unsigned int>(option.value), DISPLAY_DEFAULT, false, true)));
        table.append("</td><td>"_L1);
        table.append(QStringView(option.name));
        table.append("</td>"_L1);
        if (!option.comment.isEmpty()) {
            table.append("<td>"_L1);
            table.append(QStringView(option.comment));
            table.append("</td>"_L1);
        }
        table.append("</tr>"_L1);
    }
    table.append("</table>"_L1);
    return table.text();
}

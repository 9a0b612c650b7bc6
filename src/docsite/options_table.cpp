#include "model/bitfield.h"

using namespace Qt::StringLiterals;

// The options of a field, which a load puts behind its comment:
//
//     <table><tr><td>0</td><td>slow</td></tr><tr><td>5</td><td>fast</td><td>only behind the PLL</td></tr></table>

QString VMBitField::generateOptionsComment() const
{
    if (options.optionList.isEmpty())
        return {};
    QString table = u"<table>"_s;
    for (const VMBitFieldOption &option : options.optionList) {
        table += "<tr><td>"_L1;
        table += convertValueToValueString(static_cast<unsigned int>(option.value), DISPLAY_DEFAULT, false, true);
        table += "</td><td>"_L1;
        table += option.name;
        table += "</td>"_L1;
        if (!option.comment.isEmpty()) {
            table += "<td>"_L1;
            table += option.comment;
            table += "</td>"_L1;
        }
        table += "</tr>"_L1;
    }
    return table + "</table>"_L1;
}

#include "export/json_text.h"

using namespace Qt::StringLiterals;

namespace veldmap {

void JsonText::appendQuoted(QStringView text)
{
    QString shown;
    shown.reserve(text.size() + 2);
    shown += u'"';
    for (const QChar c : text) {
        if (c == u'"' || c == u'\\') {
            shown += u'\\';
            shown += c;
        } else if (c == u'\n') {
            shown += "\\n"_L1;
        } else if (c.unicode() < 0x20) {
            shown += "\\u"_L1 + QString::number(c.unicode(), 16).rightJustified(4, u'0');
        } else {
            shown += c;
        }
    }
    shown += u'"';
    m_text += shown.toUtf8();
}

} // namespace veldmap

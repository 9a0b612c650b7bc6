#include "export/export_names.h"

#include "export/export_rules.h"
#include "text/names.h"

using namespace Qt::StringLiterals;

namespace veldmap {

QString legalName(const QString &name)
{
    const QString legal = regularizeVariableName(name);
    if (legal.isEmpty())
        return u"unnamed"_s;
    return legal[0].isDigit() ? u'_' + legal : legal;
}

QString NameScope::take(const QString &name, const SourcePlace &source, bool mayBeNumber)
{
    const QString legal = mayBeNumber && !name.isEmpty() ? regularizeVariableName(name) : legalName(name);
    QString free = legal;
    int &next = m_taken[legal];
    while (next > 0 && m_taken.contains(free))
        free = legal + u'_' + QString::number(++next);
    if (next == 0)
        next = 1;
    else
        m_taken.insert(free, 1);
    if (free != legal)
        m_findings->add(rules::exportNameTwice, source, {name, m_format, free});
    else if (legal != name)
        m_findings->add(rules::exportNameChanged, source, {name, m_format, legal});
    return free;
}

} // namespace veldmap

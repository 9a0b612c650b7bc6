#include "access/search.h"

#include "model/memory_map.h"
#include "model/visit.h"
#include "text/names.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

using Found = QList<VMXMLElement *>;

template <typename Take>
void forEachInstance(const VMMemoryMap &map, const Take &take)
{
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (!root)
            continue;
        for (const auto &instance : root->instances)
            take(*instance);
    }
}

/// Appends what lies at \a address in \a element; false when that is elsewhere.
bool appendAt(VMXMLElement &element, quint32 address, Found &found)
{
    const qint64 offset = qint64(address) - element.getBaseAddress();
    if (offset < 0 || offset >= element.sizeOf())
        return false;
    const auto descend = [&](const auto &members) {
        bool isInMember = false;
        for (const auto &member : members)
            isInMember =
                (member->getType() != VMXMLElement::XML_HOLE && appendAt(*member, address, found)) || isInMember;
        if (!isInMember)
            found += &element;
    };
    visit(element, Overloads{[&](const VMStruct &structure) { descend(structure.memberList); },
                             [&](const VMArray &array) { descend(array.memberList); },
                             [&](const VMXMLElement &) { found += &element; }});
    return true;
}

/// What is looked for, in a form that is quick to compare.
class Wanted {
public:
    explicit Wanted(const QString &pattern)
        : m_pattern(pattern),
          m_names(QRegularExpression::anchoredPattern(QRegularExpression::escape(pattern).replace("\\*"_L1, ".*"_L1)),
                  QRegularExpression::CaseInsensitiveOption),
          m_isPattern(pattern.contains(u'*'))
    {
    }

    bool matches(const VMXMLElement &element) const
    {
        const QString &name = element.getName();
        const bool isNamed =
            m_isPattern ? m_names.match(name).hasMatch() : name.compare(m_pattern, Qt::CaseInsensitive) == 0;
        return isNamed || hasWord(element.comment);
    }

private:
    bool hasWord(QStringView text) const
    {
        if (m_isPattern || m_pattern.isEmpty())
            return false;
        const auto isPart = [&](qsizetype at) { return at >= 0 && at < text.size() && isNameCharacter(text[at]); };
        for (qsizetype at = text.indexOf(m_pattern, 0, Qt::CaseInsensitive); at >= 0;
             at = text.indexOf(m_pattern, at + 1, Qt::CaseInsensitive)) {
            if (!isPart(at - 1) && !isPart(at + m_pattern.size()))
                return true;
        }
        return false;
    }

    const QString m_pattern;
    const QRegularExpression m_names;
    const bool m_isPattern;
};

void appendMatching(VMXMLElement &element, const Wanted &wanted, Found &found)
{
    const bool isWanted = element.getType() != VMXMLElement::XML_HOLE && wanted.matches(element);
    if (isWanted)
        found += &element;
    visit(element, Overloads{[&](const VMStruct &structure) {
                                 for (const auto &member : structure.memberList)
                                     appendMatching(*member, wanted, found);
                             },
                             [&](const VMArray &array) {
                                 if (isWanted)
                                     return;
                                 for (const auto &member : array.memberList)
                                     appendMatching(*member, wanted, found);
                             },
                             [&](const VMValuable &valuable) {
                                 for (const auto &field : valuable.bitFields) {
                                     if (wanted.matches(*field))
                                         found += field.get();
                                 }
                             },
                             [](const VMXMLElement &) {}});
}

} // namespace

QList<VMXMLElement *> elementsAt(const VMMemoryMap &map, quint32 address)
{
    Found found;
    forEachInstance(map, [&](VMXMLElement &instance) { appendAt(instance, address, found); });
    return found;
}

QList<VMXMLElement *> findElements(const VMMemoryMap &map, const QString &pattern)
{
    Found found;
    const Wanted wanted(pattern);
    forEachInstance(map, [&](VMXMLElement &instance) { appendMatching(instance, wanted, found); });
    return found;
}

} // namespace veldmap

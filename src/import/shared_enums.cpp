#include "import/shared_enums.h"

#include "import/rules.h"

#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

using namespace plan;

namespace {

/// Fields of one type with the same list; with fewer each has its options.
constexpr int kFewestUses = 3;

/// A list of options, and the fields that have it.
struct List {
    std::vector<Field *> fields;
    std::vector<std::size_t> types; ///< of the fields, ascending
};

/// Whether the names say all there is to say: no and yes.
bool isSwitch(const std::vector<Option> &options)
{
    return options.size() == 2 && options[0].value + options[1].value == 1;
}

QString keyOf(const Field &field)
{
    QString key;
    for (const Option &option : field.options) {
        key += option.name + u'=' + QString::number(option.value) + u';';
        if (!isSwitch(field.options))
            key += option.comment.toLower() + u'\n';
    }
    return key;
}

class Sharing {
public:
    Sharing(std::vector<Type> &types, Told &told) : m_types(types), m_told(told) {}

    SharedEnums run()
    {
        for (std::size_t type = 0; type < m_types.size(); ++type) {
            m_used.unique(m_types[type].name);
            collect(m_types[type].members, type);
        }
        SharedEnums enums;
        enums.ofType.resize(m_types.size());
        for (List &list : m_lists) {
            const bool isCommon = list.types.size() > 1;
            if (!isCommon && list.fields.size() < kFewestUses)
                continue;
            SharedEnum made = enumOf(list, isCommon);
            (isCommon ? enums.common : enums.ofType[list.types.front()]).push_back(std::move(made));
        }
        return enums;
    }

private:
    void collect(std::vector<Member> &members, std::size_t type)
    {
        for (Member &member : members) {
            for (Field &field : member.fields) {
                if (field.options.size() < 2)
                    continue;
                const QString key = keyOf(field);
                auto known = m_listOf.constFind(key);
                if (known == m_listOf.constEnd()) {
                    known = m_listOf.insert(key, m_lists.size());
                    m_lists.emplace_back();
                }
                List &list = m_lists[*known];
                list.fields.push_back(&field);
                if (list.types.empty() || list.types.back() != type)
                    list.types.push_back(type);
            }
            collect(member.members, type);
        }
    }

    SharedEnum enumOf(List &list, bool isCommon)
    {
        const Field &first = *list.fields.front();
        SharedEnum made;
        made.at = first.at;
        made.entries = first.options;
        made.name = m_used.unique(nameOf(list, isCommon));
        const QString prefix = made.name.toUpper() + u'_';
        for (std::size_t at = 0; at < made.entries.size(); ++at) {
            Option &entry = made.entries[at];
            const auto saysOther = [&](const Field *field) { return field->options[at].comment != entry.comment; };
            if (std::ranges::any_of(list.fields, saysOther))
                entry.comment.clear();
            if (!entry.name.toUpper().startsWith(prefix))
                entry.name = prefix + entry.name.toUpper();
        }
        for (Field *field : list.fields) {
            const auto isLost = [&](const Option &option) {
                return !option.comment.isEmpty() &&
                       made.entries[std::size_t(&option - field->options.data())].comment.isEmpty();
            };
            if (std::ranges::any_of(field->options, isLost))
                m_told(rules::importSharedComments, field->at, {field->path, made.name});
            field->linkedEnum = made.name;
        }
        return made;
    }

    /// What the source or the fields call it, or else what its values are called.
    QString nameOf(const List &list, bool isCommon) const
    {
        const Field &first = *list.fields.front();
        const auto isSame = [&](QString Field::*name) {
            const auto has = [&](const Field *field) { return field->*name == first.*name; };
            return !(first.*name).isEmpty() && std::ranges::all_of(list.fields, has);
        };
        QString name;
        if (isSame(&Field::enumSource)) {
            name = first.enumSource;
            if (name.compare(first.name + "Select"_L1, Qt::CaseInsensitive) == 0)
                name = first.name; // as some tools call the values of a field
        } else if (isSame(&Field::name) || first.options.front().name.front().isDigit()) {
            name = first.name;
        } else {
            constexpr std::size_t kMostInName = 3;
            for (std::size_t at = 0; at < std::min(first.options.size(), kMostInName); ++at)
                name += (at > 0 ? "_"_L1 : ""_L1) + first.options[at].name;
        }
        name = cleanName(name).toLower();
        const QString type = typeOf(list);
        if (type.isEmpty() && isCommon && !m_used.contains(name))
            return name;
        // Entries are names of C, where the macros of fields begin with their module.
        const QString owner = type.isEmpty() ? m_types[list.types.front()].name.toLower() : type;
        if (!name.startsWith(owner + u'_'))
            name = owner + u'_' + name;
        return name.endsWith("_e"_L1) ? name : name + "_e"_L1;
    }

    /// What the names of all types of \a list begin with, such as that of a peripheral with several views.
    QString typeOf(const List &list) const
    {
        QString common = m_types[list.types.front()].name.toLower();
        for (const std::size_t type : list.types) {
            const QString name = m_types[type].name.toLower();
            while (!common.isEmpty() && name != common && !name.startsWith(common + u'_'))
                common = common.contains(u'_') ? common.section(u'_', 0, -2) : QString();
        }
        return common;
    }

    std::vector<Type> &m_types;
    Told &m_told;
    std::vector<List> m_lists;
    QHash<QString, std::size_t> m_listOf;
    UsedNames m_used;
};

} // namespace

SharedEnums shareEnums(std::vector<Type> &types, Told &told)
{
    return Sharing(types, told).run();
}

} // namespace veldmap

#include "import/arrangement.h"

#include "import/names.h"
#include "import/rules.h"

#include <QHash>

#include <algorithm>
#include <map>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

using namespace plan;

namespace {

using Members = std::vector<Member>;

/// Views of one structure. Each costs a look at every member behind it.
constexpr std::size_t kMostViews = 64;
/// Members that are looked at to see whether they lie between those of one array.
constexpr std::size_t kMostBetween = 4096;

// Arrays of what is numbered

/// What numbered registers have in common but for their numbers.
class Make {
public:
    Make(const Member &first, uint number) : m_first(&first), m_comment(first.comment, number)
    {
        for (const Field &field : first.fields) {
            FieldTexts texts = {NumberedText(field.name, number), NumberedText(field.comment, number), {}};
            for (const Option &option : field.options)
                texts.options.emplace_back(option.comment, number);
            m_fields.push_back(std::move(texts));
        }
        for (const Member &member : first.members)
            m_members.emplace_back(member, number);
    }

    bool accepts(const Member &other, uint number)
    {
        const Member &first = *m_first;
        if (other.kind != first.kind || other.count != first.count || other.step != first.step ||
            other.bytes != first.bytes || other.protect != first.protect ||
            other.fields.size() != first.fields.size() || other.members.size() != first.members.size() ||
            !m_comment.accepts(other.comment, number))
            return false;
        for (std::size_t at = 0; at < m_fields.size(); ++at) {
            if (!acceptsField(at, other.fields[at], number))
                return false;
        }
        for (std::size_t at = 0; at < m_members.size(); ++at) {
            const Member &inner = other.members[at];
            if (inner.name != first.members[at].name || inner.offset != first.members[at].offset ||
                !m_members[at].accepts(inner, number))
                return false;
        }
        return true;
    }

    /// Gives \a member, a copy of the first, the texts for all; false when its fields then share a name. Their names
    /// lose \a prefix, which all members of the array have.
    bool generalize(Member &member, const QString &prefix) const
    {
        member.comment = m_comment.general(u"n");
        UsedNames names;
        for (std::size_t at = 0; at < m_fields.size(); ++at) {
            Field &field = member.fields[at];
            if (m_fields[at].name.hasNumber()) {
                field.name = cleanName(m_fields[at].name.general(u""));
                if (prefix.size() > 1 && field.name.startsWith(prefix + u'_'))
                    field.name = cleanName(field.name.sliced(prefix.size() + 1));
            }
            field.comment = m_fields[at].comment.general(u"n");
            for (std::size_t option = 0; option < field.options.size(); ++option)
                field.options[option].comment = m_fields[at].options[option].general(u"n");
            if (names.contains(field.name))
                return false;
            names.unique(field.name);
        }
        for (std::size_t at = 0; at < m_members.size(); ++at) {
            if (!m_members[at].generalize(member.members[at], QString()))
                return false;
        }
        return true;
    }

private:
    struct FieldTexts {
        NumberedText name;
        NumberedText comment;
        std::vector<NumberedText> options;
    };

    bool acceptsField(std::size_t at, const Field &other, uint number)
    {
        const Field &first = m_first->fields[at];
        if (other.lowest != first.lowest || other.width != first.width || other.access != first.access ||
            other.reset != first.reset || other.cut != first.cut || other.options.size() != first.options.size())
            return false;
        FieldTexts &texts = m_fields[at];
        if (!texts.name.accepts(other.name, number) || !texts.comment.accepts(other.comment, number))
            return false;
        for (std::size_t option = 0; option < first.options.size(); ++option) {
            if (other.options[option].name != first.options[option].name ||
                other.options[option].value != first.options[option].value ||
                !texts.options[option].accepts(other.options[option].comment, number))
                return false;
        }
        return true;
    }

    const Member *m_first;
    NumberedText m_comment;
    std::vector<FieldTexts> m_fields;
    std::vector<Make> m_members;
};

class Gatherer {
public:
    explicit Gatherer(Members members) : m_members(std::move(members)) {}

    Members run()
    {
        for (const bool isLast : {false, true})
            gather(isLast);
        Members result;
        for (std::size_t at = 0; at < m_members.size(); ++at) {
            if (const auto array = m_arrays.find(at); array != m_arrays.end())
                result.push_back(std::move(array->second));
            else if (!m_isTaken[at])
                result.push_back(std::move(m_members[at]));
        }
        return result;
    }

private:
    /// Those that are numbered between the same two texts, in the order of their numbers.
    struct Row {
        QString prefix;
        QString suffix;
        std::vector<std::pair<uint, std::size_t>> members;
    };
    /// An array that a row may become.
    struct Candidate {
        std::size_t first; ///< member
        std::size_t row;
        Member array;
    };

    void gather(bool isLast)
    {
        m_isTaken.resize(m_members.size());
        std::vector<Row> rows;
        std::vector<std::vector<std::size_t>> ofPrefix; // rows
        QHash<std::pair<QString, QString>, std::size_t> rowOf;
        QHash<QString, std::size_t> prefixes;
        m_names = UsedNames();
        for (std::size_t at = 0; at < m_members.size(); ++at) {
            const Member &member = m_members[at];
            if (m_isTaken[at])
                continue;
            m_names.unique(member.name);
            const std::optional<NumberedName> name = numberedName(member.name, isLast);
            if (member.count > 0 || !name || name->prefix.isEmpty())
                continue;
            const auto known = rowOf.constFind({name->prefix, name->suffix});
            if (known != rowOf.constEnd()) {
                rows[*known].members.emplace_back(name->number, at);
                continue;
            }
            rowOf.insert({name->prefix, name->suffix}, rows.size());
            if (!prefixes.contains(name->prefix)) {
                prefixes.insert(name->prefix, ofPrefix.size());
                ofPrefix.emplace_back();
            }
            ofPrefix[prefixes[name->prefix]].push_back(rows.size());
            rows.push_back({name->prefix, name->suffix, {{name->number, at}}});
        }
        for (const std::vector<std::size_t> &group : ofPrefix)
            gatherGroup(rows, group);
    }

    /// Gathers the rows of one prefix: those that make as many, as far from each other, as most of them.
    void gatherGroup(std::vector<Row> &rows, const std::vector<std::size_t> &group)
    {
        std::vector<Candidate> candidates;
        std::map<std::pair<quint32, quint64>, int> votes;
        for (const std::size_t at : group) {
            if (std::optional<Candidate> candidate = candidateOf(rows[at], at)) {
                ++votes[{candidate->array.count, candidate->array.step}];
                candidates.push_back(*std::move(candidate));
            }
        }
        if (candidates.empty())
            return;
        const auto best =
            std::ranges::max_element(votes, {}, [](const auto &vote) { return std::pair(vote.second, vote.first); });
        quint64 lowest = candidates.front().array.offset;
        quint64 highest = 0;
        for (const Candidate &candidate : candidates) {
            lowest = std::min(lowest, candidate.array.offset);
            highest = std::max(highest, candidate.array.offset + candidate.array.bytes);
        }
        const bool isInterleaved = candidates.size() > 1 && highest - lowest <= best->first.second;
        for (Candidate &candidate : candidates) {
            const bool isDense = candidate.array.step == candidate.array.bytes;
            const bool isBest = std::pair(candidate.array.count, candidate.array.step) == best->first;
            if ((!isDense && candidates.size() > 1 && !(isBest && isInterleaved)) ||
                m_names.contains(candidate.array.name))
                continue;
            m_names.unique(candidate.array.name);
            for (const auto &[number, member] : rows[candidate.row].members) {
                if (number < candidate.array.count)
                    m_isTaken[member] = true;
            }
            m_arrays.insert({candidate.first, std::move(candidate.array)});
        }
    }

    /// The array of a row from 0 on, as far as it is evenly spaced.
    std::optional<Candidate> candidateOf(Row &row, std::size_t rowNumber)
    {
        std::ranges::sort(row.members);
        if (row.members.size() < 2 || row.members[0].first != 0 || row.members[1].first != 1)
            return std::nullopt;
        const Member &first = m_members[row.members[0].second];
        const quint64 step = m_members[row.members[1].second].offset - first.offset;
        if (m_members[row.members[1].second].offset < first.offset + first.bytes)
            return std::nullopt;
        Make make(first, 0);
        Member array = first;
        array.parts.push_back(first);
        uint count = 1;
        for (; count < row.members.size(); ++count) {
            const Member &member = m_members[row.members[count].second];
            if (row.members[count].first != count || member.offset != first.offset + count * step)
                break;
            if (!make.accepts(member, count))
                return std::nullopt;
            array.parts.push_back(member);
        }
        const QString prefix = cleanName(row.prefix);
        if (count < 2 || !make.generalize(array, prefix))
            return std::nullopt;
        array.name = cleanName(row.prefix + row.suffix);
        array.count = count;
        array.step = step;
        array.prefix = row.prefix;
        array.suffix = row.suffix;
        return Candidate{row.members[0].second, rowNumber, std::move(array)};
    }

    Members m_members;
    std::vector<bool> m_isTaken;
    std::map<std::size_t, Member> m_arrays; // by the first of their members
    UsedNames m_names;
};

// Members one behind the other

quint64 roundedUp(quint64 bytes, int alignment)
{
    const quint64 unit = quint64(alignment);
    return (bytes + unit - 1) / unit * unit;
}

class Arranger {
public:
    Arranger(Told &told, qint64 &budget) : m_told(told), m_budget(budget) {}

    Arrangement run(Members members)
    {
        Members settled = settle(std::move(members));
        Arrangement arrangement;
        arrangement.views = viewsOf(std::move(settled));
        for (Members &view : arrangement.views)
            nameApart(view);
        for (const Member &member : arrangement.views.front()) {
            arrangement.bytes = std::max(arrangement.bytes, extentOf(member));
            arrangement.alignment = std::max(arrangement.alignment, member.alignment);
        }
        return arrangement;
    }

private:
    /// Where the last of \a member ends, with what follows it inside its structure.
    static quint64 extentOf(const Member &member)
    {
        return member.offset + (member.count > 0 ? member.count * member.step : member.bytes);
    }

    /// Members of which none is an array with gaps, and all of which begin where they may.
    Members settle(Members members)
    {
        Members result;
        for (int round = 0; !members.empty(); ++round) {
            std::ranges::stable_sort(members, {}, &Member::offset);
            Members apart; // to be looked at again
            Members kept;
            settleOnce(members, kept, apart);
            if (apart.empty() || round > 8) {
                result = std::move(kept);
                break;
            }
            members = std::move(kept);
            for (Member &member : apart)
                members.push_back(std::move(member));
        }
        return result;
    }

    void settleOnce(Members &members, Members &kept, Members &apart)
    {
        std::vector<bool> isDone(members.size());
        for (std::size_t at = 0; at < members.size(); ++at) {
            if (isDone[at])
                continue;
            Member &member = members[at];
            isDone[at] = true;
            if (member.count > 0 && member.step < member.bytes) {
                takeApart(member, apart);
            } else if (member.count > 0 && (member.step > member.bytes || isUneven(member))) {
                std::vector<std::size_t> group = groupAt(members, at, isDone);
                const bool canStay = !liesBetween(members, group);
                Member made = canStay ? structureOf(members, group) : Member();
                if (canStay && made.offset % quint64(made.alignment) == 0 && made.step % quint64(made.alignment) == 0) {
                    kept.push_back(std::move(made));
                } else {
                    for (const std::size_t one : group)
                        takeApart(members[one], apart);
                }
                for (const std::size_t one : group)
                    isDone[one] = true;
            } else if (member.kind == Member::Kind::Structure && !settleStructure(members, at)) {
                takeApart(member, apart);
            } else if (member.offset % quint64(member.alignment) != 0) {
                if (member.count > 0)
                    takeApart(member, apart);
                else
                    m_told(rules::importUnaligned, member.at,
                           {member.path, "0x"_L1 + QString::number(member.offset, 16)});
            } else {
                kept.push_back(std::move(member));
            }
        }
    }

    /// Whether the size of a structure is none that its array can have.
    static bool isUneven(const Member &member)
    {
        return member.kind == Member::Kind::Structure && member.bytes % quint64(member.alignment) != 0;
    }

    /// Gives the single structure \a at its full size; false when it can't have that there.
    static bool settleStructure(Members &members, std::size_t at)
    {
        Member &member = members[at];
        if (member.offset % quint64(member.alignment) != 0)
            return false;
        if (member.count > 0)
            return true;
        const quint64 full = roundedUp(member.bytes, member.alignment);
        for (std::size_t next = at + 1; next < members.size() && next - at < kMostBetween; ++next) {
            if (members[next].offset >= member.offset + full)
                break;
            if (members[next].offset >= member.offset + member.bytes)
                return false;
        }
        member.bytes = full;
        return true;
    }

    /// The array at \a at and those that interleave with it.
    static std::vector<std::size_t> groupAt(const Members &members, std::size_t at, const std::vector<bool> &isDone)
    {
        const Member &first = members[at];
        std::vector<std::size_t> group = {at};
        quint64 end = first.offset + first.bytes;
        for (std::size_t next = at + 1; next < members.size() && next - at < kMostBetween; ++next) {
            const Member &member = members[next];
            if (member.offset >= first.offset + first.step)
                break;
            if (isDone[next] || member.count != first.count || member.step != first.step || member.offset < end ||
                member.offset + member.bytes > first.offset + first.step)
                continue;
            group.push_back(next);
            end = member.offset + member.bytes;
        }
        return group;
    }

    /// Whether any other member lies in the gaps of a group, and over none of its members.
    static bool liesBetween(const Members &members, const std::vector<std::size_t> &group)
    {
        const Member &first = members[group.front()];
        const quint64 end = first.offset + first.count * first.step;
        std::size_t seen = 0;
        const auto isOther = [&](std::size_t at) { return !std::ranges::binary_search(group, at); };
        for (std::size_t at = group.front() + 1; at < members.size() && members[at].offset < end; ++at) {
            if (!isOther(at))
                continue;
            if (++seen > kMostBetween)
                return true;
            const quint64 begin = (members[at].offset - first.offset) % first.step;
            const auto isHit = [&](std::size_t one) {
                const quint64 from = members[one].offset - first.offset;
                return begin < from + members[one].bytes && from < begin + members[at].bytes;
            };
            if (begin + members[at].bytes <= first.step && std::ranges::none_of(group, isHit))
                return true;
        }
        return false;
    }

    /// The structure of the arrays in \a group, or the one that it is already.
    Member structureOf(const Members &members, const std::vector<std::size_t> &group)
    {
        const Member &first = members[group.front()];
        if (group.size() == 1 && first.kind == Member::Kind::Structure) {
            Member structure = first;
            structure.bytes = structure.step;
            return structure;
        }
        Member structure;
        structure.kind = Member::Kind::Structure;
        structure.offset = first.offset;
        structure.count = first.count;
        structure.step = first.step;
        structure.bytes = first.step;
        structure.alignment = 1;
        structure.at = first.at;
        structure.path = first.path;
        structure.isAlternate = first.isAlternate;
        structure.prefix = u"%"_s; // that it is made here
        for (const std::size_t at : group) {
            Member inner = members[at];
            inner.offset -= first.offset;
            inner.count = 0;
            inner.step = 0;
            structure.alignment = std::max(structure.alignment, inner.alignment);
            structure.parts.push_back(members[at]);
            structure.members.push_back(std::move(inner));
        }
        nameStructure(structure);
        if (group.size() > 1) {
            std::vector<Member> inner = gathered(std::move(structure.members));
            Arrangement arrangement = Arranger(m_told, m_budget).run(std::move(inner));
            structure.members = std::move(arrangement.views.front()); // nothing in it overlaps
        }
        return structure;
    }

    static QString withoutBar(const QString &name)
    {
        qsizetype from = 0;
        while (from < name.size() && name[from] == u'_')
            ++from;
        return name.sliced(from);
    }

    /// Names a structure after what the names of its members begin with, which they lose.
    static void nameStructure(Member &structure)
    {
        Members &members = structure.members;
        if (members.size() == 1) {
            structure.name = members[0].name;
            structure.comment = members[0].comment;
            members[0].name = u"VALUE"_s;
            return;
        }
        QString common = members[0].prefix;
        for (const Member &member : members) {
            if (member.prefix != common || member.suffix.isEmpty())
                common.clear();
        }
        if (!common.isEmpty()) {
            for (Member &member : members)
                member.name = cleanName(member.suffix);
            structure.name = cleanName(common);
            return;
        }
        common = members[0].name;
        for (const Member &member : members) {
            qsizetype same = 0;
            while (same < common.size() && same < member.name.size() && common[same] == member.name[same])
                ++same;
            common.truncate(same);
        }
        const auto isNameBehind = [&](const Member &member) {
            const QString rest = withoutBar(member.name.sliced(common.size()));
            return !rest.isEmpty() && rest[0].isLetter();
        };
        constexpr qsizetype kShortestName = 2;
        if (common.size() < kShortestName || !std::ranges::all_of(members, isNameBehind)) {
            structure.name = u"GROUP"_s;
            return;
        }
        for (Member &member : members)
            member.name = withoutBar(member.name.sliced(common.size()));
        structure.name = cleanName(common);
    }

    /// Puts what \a member consists of to \a to: what it was gathered from, the members of an array one by one, or the
    /// members of a structure.
    void takeApart(const Member &member, Members &to)
    {
        if (!member.parts.empty()) {
            for (const Member &part : member.parts)
                to.push_back(part);
            return;
        }
        m_told(rules::importTakenApart, member.at, {member.path});
        if (member.count > 0) {
            for (quint32 at = 0; at < member.count; ++at) {
                if (!spend(member))
                    return;
                Member one = member;
                one.count = 0;
                one.step = 0;
                const QString number = QString::number(at);
                one.name =
                    one.prefix.isEmpty() ? one.name + u'_' + number : cleanName(one.prefix + number + one.suffix);
                one.prefix.clear();
                one.offset += at * member.step;
                to.push_back(std::move(one));
            }
            return;
        }
        for (const Member &inner : member.members) {
            if (!spend(member))
                return;
            Member one = inner;
            one.name = member.name + u'_' + inner.name;
            one.offset += member.offset;
            one.isAlternate = member.isAlternate;
            to.push_back(std::move(one));
        }
    }

    /// Gives the structures that were made other names than those that were there.
    static void nameApart(Members &members)
    {
        const auto isMade = [](const Member &member) { return member.prefix == "%"_L1; };
        UsedNames names;
        for (const Member &member : members) {
            if (!isMade(member))
                names.unique(member.name);
        }
        for (Member &member : members) {
            if (isMade(member))
                member.name = names.unique(names.contains(member.name) ? member.name + "_SET"_L1 : member.name);
        }
    }

    bool spend(const Member &member)
    {
        if (--m_budget >= 0)
            return true;
        if (m_budget == -1)
            m_told(rules::importBeyond, member.at, {member.path, u"what one description may hold"_s});
        return false;
    }

    /// Deals the members out to views in the order of the source, those that are called alternates behind the others.
    std::vector<Members> viewsOf(Members members)
    {
        std::ranges::stable_sort(members, {}, [](const Member &member) {
            return std::tuple(member.isAlternate, member.at.line, member.at.column, member.offset);
        });
        struct View {
            std::map<quint64, quint64> used; // begin and end
            Members members;
        };
        std::vector<View> views(1);
        for (Member &member : members) {
            const quint64 end = extentOf(member);
            const auto hasRoom = [&](const View &view) {
                const auto next = view.used.lower_bound(end);
                return next == view.used.begin() || std::prev(next)->second <= member.offset;
            };
            auto view = std::ranges::find_if(views, hasRoom);
            if (view == views.end()) {
                if (views.size() == kMostViews) {
                    m_told(rules::importBeyond, member.at, {member.path, u"64 others at one place"_s});
                    continue;
                }
                view = views.emplace(views.end());
            }
            view->used.insert({member.offset, end});
            view->members.push_back(std::move(member));
        }
        std::vector<Members> result;
        for (View &view : views) {
            std::ranges::stable_sort(view.members, {}, &Member::offset);
            result.push_back(std::move(view.members));
        }
        return result;
    }

    Told &m_told;
    qint64 &m_budget;
};

} // namespace

std::vector<Member> gathered(std::vector<Member> members)
{
    return Gatherer(std::move(members)).run();
}

Arrangement arranged(std::vector<Member> members, Told &told, qint64 &budget)
{
    return Arranger(told, budget).run(std::move(members));
}

void tellGathered(const std::vector<Member> &members, Told &told)
{
    for (const Member &member : members) {
        const bool isMade = member.prefix == "%"_L1;
        if (isMade && member.members.size() > 0)
            told(rules::importInterleaved, member.at, {member.path, member.name});
        else if (!member.parts.empty())
            told(rules::importGathered, member.parts.front().at,
                 {member.parts.front().path, QString::number(member.parts.size() - 1), member.name});
        tellGathered(member.members, told);
    }
}

} // namespace veldmap

#include "import/member_planner.h"

#include "findings/limits.h"
#include "import/names.h"
#include "import/rules.h"
#include "text/bit_arithmetic.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

using namespace plan;

namespace {

using Members = std::vector<Member>;

/// The \a width low bits set; \a width from 0 to 64.
constexpr quint64 onesOf(int width)
{
    return width >= 64 ? ~quint64(0) : (quint64(1) << width) - 1;
}

bool isReadable(chip::Access access)
{
    return access == chip::Access::ReadWrite || access == chip::Access::ReadOnly ||
           access == chip::Access::ReadWriteOnce;
}

bool isWritable(chip::Access access)
{
    return access != chip::Access::ReadOnly && access != chip::Access::None;
}

QString wordOf(chip::OnWrite onWrite)
{
    static const QString kWords[] = {u"modify"_s,       u"oneToClear"_s,  u"oneToSet"_s,
                                     u"oneToToggle"_s,  u"zeroToClear"_s, u"zeroToSet"_s,
                                     u"zeroToToggle"_s, u"clear"_s,       u"set"_s};
    return kWords[int(onWrite)];
}

QString wordOf(chip::OnRead onRead)
{
    static const QString kWords[] = {u""_s, u"clear"_s, u"set"_s, u"modify"_s, u"modifyExternal"_s};
    return kWords[int(onRead)];
}

/// The letter of a description for \a onWrite.
QChar letterOf(chip::OnWrite onWrite)
{
    switch (onWrite) {
    case chip::OnWrite::OneToClear:
    case chip::OnWrite::Clear:
        return u'c';
    case chip::OnWrite::OneToSet:
    case chip::OnWrite::Set:
        return u's';
    case chip::OnWrite::Modify:
    case chip::OnWrite::OneToToggle:
    case chip::OnWrite::ZeroToClear:
    case chip::OnWrite::ZeroToSet:
    case chip::OnWrite::ZeroToToggle:
        return u'w';
    }
    Q_UNREACHABLE();
}

bool isExact(chip::OnWrite onWrite)
{
    return onWrite == chip::OnWrite::Modify || onWrite == chip::OnWrite::OneToClear ||
           onWrite == chip::OnWrite::OneToSet;
}

QString numberText(quint64 value)
{
    constexpr quint64 kDecimal = 10; // numbers that are the same in hexadecimal
    return value < kDecimal ? QString::number(value) : "0x"_L1 + QString::number(value, 16).toUpper();
}

class MemberPlanner {
public:
    MemberPlanner(Told &told, qint64 &budget) : m_told(told), m_budget(budget) {}

    PlannedRegisters run(const std::vector<chip::Part> &parts, const QString &path)
    {
        Members members = membersOf(parts, path);
        stripPrefix(members, path);
        for (Member &member : m_over) // of what is inside clusters
            members.push_back(std::move(member));
        Arrangement arrangement = arranged(gathered(std::move(members)), m_told, m_budget);
        PlannedRegisters planned;
        for (Members &view : arrangement.views) {
            if (view.empty())
                continue;
            tellGathered(view, m_told);
            planned.views.push_back({{}, std::move(view), {}, {}, {}, {}});
        }
        nameViews(planned);
        return planned;
    }

private:
    // Registers

    Members membersOf(const std::vector<chip::Part> &parts, const QString &outer)
    {
        Members members;
        UsedNames names;
        for (const chip::Part &part : parts) {
            const QString path = outer + u'.' + part.name;
            const bool isCounted = isArray(part, names);
            if (part.repeat.indices.isEmpty() || isCounted) {
                Member member;
                if (!spend(part, path) || !makeMember(part, path, member))
                    continue;
                if (part.repeat.count > 1) {
                    member.count = part.repeat.count;
                    member.step = part.repeat.step;
                }
                add(std::move(member), isCounted ? cleanName(QString(part.name).remove("%s"_L1)) : part.name, names,
                    members);
                if (isCounted) {
                    members.back().prefix = part.name.section("%s"_L1, 0, 0);
                    members.back().suffix = part.name.section("%s"_L1, 1);
                }
                continue;
            }
            for (qsizetype at = 0; at < part.repeat.indices.size(); ++at) {
                Member member;
                if (!spend(part, path) || !makeMember(part, path, member))
                    break;
                member.offset += quint64(at) * part.repeat.step;
                add(std::move(member), QString(part.name).replace("%s"_L1, part.repeat.indices[at]), names, members);
            }
        }
        return members;
    }

    /// Whether \a part, whose name has an index, is numbered from 0 and may lose it.
    static bool isArray(const chip::Part &part, const UsedNames &names)
    {
        const QStringList &indices = part.repeat.indices;
        if (indices.size() < 2 || part.name.count("%s"_L1) != 1 || part.repeat.step == 0 ||
            names.contains(cleanName(QString(part.name).remove("%s"_L1))))
            return false;
        for (qsizetype at = 0; at < indices.size(); ++at) {
            if (indices[at] != QString::number(at))
                return false;
        }
        return true;
    }

    bool spend(const chip::Part &part, const QString &path)
    {
        if (--m_budget >= 0)
            return true;
        if (m_budget == -1)
            m_told(rules::importBeyond, part.at, {path, u"what one description may hold"_s});
        return false;
    }

    void add(Member member, const QString &name, UsedNames &names, Members &members)
    {
        member.name = cleanName(name);
        // Headers call the address of an instance so; those of an array's members have a number.
        if (member.count == 0 &&
            (member.name == "BASE"_L1 || member.name == "BASE_HI"_L1 || member.name == "BASE_LO"_L1))
            member.name += "_REG"_L1;
        member.name = names.unique(member.name);
        if (member.name != name)
            m_told(rules::importName, member.at, {member.path, member.name});
        const bool isHalves = member.kind == Member::Kind::Structure && member.prefix == "64"_L1;
        if (!isHalves || member.count > 0) {
            member.prefix.clear();
            members.push_back(std::move(member));
            return;
        }
        for (Member &half : member.members) {
            half.name = names.unique(member.name + (half.offset == 0 ? "_LO"_L1 : "_HI"_L1));
            half.offset += member.offset;
            half.isAlternate = member.isAlternate;
            members.push_back(std::move(half));
        }
    }

    /// False when nothing can be made of \a part, which is told.
    bool makeMember(const chip::Part &part, const QString &path, Member &member)
    {
        member.path = path;
        member.at = part.at;
        member.comment = cleanComment(part.comment);
        member.offset = part.offset;
        member.isAlternate = !part.alternateOf.isEmpty();
        if (part.isCluster)
            return makeStructure(part, path, member);
        if (part.memoryBytes) {
            member.kind = Member::Kind::Memory;
            member.bytes = *part.memoryBytes;
            return true;
        }
        if (part.size > 64) {
            m_told(rules::importBeyond, part.at, {path, u"64 bits"_s});
            return false;
        }
        if (part.size > 32) {
            makeHalves(part, path, member);
            return true;
        }
        makeRegister(part, path, part.size, 0, fieldsOf(part, path), member);
        return true;
    }

    bool makeStructure(const chip::Part &part, const QString &path, Member &member)
    {
        member.kind = Member::Kind::Structure;
        Arrangement inside = arranged(gathered(membersOf(part.parts, path)), m_told, m_budget);
        if (inside.views.front().empty()) {
            m_told(rules::importNoRegisters, part.at, {path});
            return false;
        }
        member.members = std::move(inside.views.front());
        member.bytes = inside.bytes;
        member.alignment = inside.alignment;
        for (std::size_t view = 1; view < inside.views.size(); ++view) {
            for (Member &over : inside.views[view])
                liftOut(part, std::move(over));
        }
        return true;
    }

    /// Keeps \a over, which can't stand inside \a cluster, for the structure around.
    void liftOut(const chip::Part &cluster, Member over)
    {
        for (quint32 at = 0; at < cluster.repeat.count && m_budget-- > 0; ++at) {
            Member one = over;
            const QString index = cluster.repeat.indices.isEmpty() ? QString::number(at) : cluster.repeat.indices[at];
            QString outer = cluster.name;
            if (outer.contains("%s"_L1))
                outer.replace("%s"_L1, index);
            else if (cluster.repeat.count > 1)
                outer += index;
            one.name = cleanName(outer + u'_' + over.name);
            one.offset += cluster.offset + at * cluster.repeat.step;
            one.isAlternate = true;
            m_over.push_back(std::move(one));
        }
    }

    void makeRegister(const chip::Part &part, const QString &path, int size, int lowest, std::vector<Field> fields,
                      Member &member)
    {
        const int bits = size <= 8 ? 8 : size <= 16 ? 16 : 32;
        if (bits != size)
            m_told(rules::importSize, part.at, {path, QString::number(size), QString::number(bits)});
        member.kind = Member::Kind::Register;
        member.bytes = quint64(bits) / 8;
        member.alignment = bits / 8;
        if (isReadable(part.access))
            member.protect += u'r';
        if (isWritable(part.access))
            member.protect += u'w';
        if (part.access == chip::Access::WriteOnce || part.access == chip::Access::ReadWriteOnce)
            m_told(
                rules::importAccess, part.at,
                {path, part.access == chip::Access::WriteOnce ? u"writeOnce"_s : u"read-writeOnce"_s, member.protect});
        if (part.onRead != chip::OnRead::Nothing)
            m_told(rules::importOnRead, part.at, {path, wordOf(part.onRead)});
        for (Field &field : fields) {
            // Of a half, the fields that lie in it, or the part of one that does.
            const int from = std::max(field.lowest, lowest);
            const int to = std::min(field.lowest + field.width, lowest + bits);
            if (from >= to)
                continue;
            Field cut = field;
            cut.lowest = from - lowest;
            cut.width = to - from;
            if (cut.width != field.width)
                halve(field, from - field.lowest, lowest, cut);
            member.fields.push_back(std::move(cut));
        }
        if (member.fields.empty())
            addWholeField(part, path, size, lowest, member);
    }

    /// Makes \a part of \a whole, a field that lies across the middle of a register.
    void halve(const Field &whole, int from, int lowest, Field &part)
    {
        part.name += lowest == 0 ? "_LO"_L1 : "_HI"_L1;
        part.options.clear();
        if (!whole.reset.isEmpty()) {
            const quint64 reset = whole.reset.toULongLong(nullptr, 0);
            part.reset = numberText((reset >> from) & onesOf(part.width));
        }
    }

    /// A register of which more is to be said than it has fields for.
    void addWholeField(const chip::Part &part, const QString &path, int size, int lowest, Member &member)
    {
        const int width = std::min(size, 32);
        const quint64 mask = onesOf(width);
        const bool isKnown = part.reset && ((part.resetMask >> lowest) & mask) == mask;
        const quint64 reset = part.reset ? (*part.reset >> lowest) & mask : 0;
        const bool saysWriting = isWritable(part.access) && part.onWrite != chip::OnWrite::Modify;
        if (!(isKnown && reset != 0) && !saysWriting)
            return;
        m_told(rules::importWholeField, part.at, {path});
        Field field;
        field.name = cleanName(QString(part.name).remove("%s"_L1));
        field.lowest = 0;
        field.width = width;
        field.access = accessOf(part.access, part.onWrite, path, part.at);
        if (isKnown)
            field.reset = numberText(reset);
        field.path = path;
        field.at = part.at;
        member.fields.push_back(std::move(field));
    }

    void makeHalves(const chip::Part &part, const QString &path, Member &member)
    {
        m_told(rules::importHalves, part.at, {path, QString::number(part.size)});
        member.kind = Member::Kind::Structure;
        member.bytes = 8;
        member.alignment = 4;
        member.prefix = u"64"_s;
        const std::vector<Field> fields = fieldsOf(part, path);
        for (const int lowest : {0, 32}) {
            Member half;
            half.path = path;
            half.at = part.at;
            half.name = lowest == 0 ? u"LO"_s : u"HI"_s;
            half.comment = member.comment + (lowest == 0 ? ", bits 31 to 0"_L1 : ", bits 63 to 32"_L1);
            half.offset = quint64(lowest) / 8;
            chip::Part told = part;
            if (lowest > 0) {
                told.onRead = chip::OnRead::Nothing; // it was told
                half.comment.replace(u"63"_s, QString::number(part.size - 1));
            }
            makeRegister(told, path, 32, lowest, fields, half);
            member.members.push_back(std::move(half));
        }
    }

    // Fields

    std::vector<Field> fieldsOf(const chip::Part &part, const QString &path)
    {
        std::vector<Field> fields;
        UsedNames names;
        for (const chip::Field &source : part.fields) {
            const quint32 count = source.repeat.count;
            for (quint32 at = 0; at < count; ++at) {
                if (--m_budget < 0 || fields.size() >= limits::kBitFields) {
                    m_told(rules::importBeyond, source.at,
                           {path + u'.' + source.name, u"what one register may hold"_s});
                    return fields;
                }
                QString name = source.name;
                if (count > 1 && source.repeat.indices.isEmpty())
                    name += QString::number(at);
                else if (!source.repeat.indices.isEmpty())
                    name.replace("%s"_L1, source.repeat.indices[at]);
                addField(source, name, quint64(source.lowest) + at * source.repeat.step, part, path, names, fields);
            }
        }
        return withPieces(std::move(fields));
    }

    void addField(const chip::Field &source, const QString &name, quint64 lowest, const chip::Part &part,
                  const QString &outer, UsedNames &names, std::vector<Field> &fields)
    {
        Field field;
        field.path = outer + u'.' + name;
        field.at = source.at;
        if (lowest + quint64(source.width) > quint64(part.size)) {
            m_told(rules::importBeyond, source.at, {field.path, u"the last bit of its register"_s});
            return;
        }
        field.lowest = int(lowest);
        field.width = source.width;
        field.name = names.unique(cleanName(name));
        if (field.name != name)
            m_told(rules::importName, source.at, {field.path, field.name});
        field.comment = cleanComment(source.comment);
        field.access = accessOf(source.access, source.onWrite, field.path, source.at);
        if (source.onRead != chip::OnRead::Nothing)
            m_told(rules::importOnRead, source.at, {field.path, wordOf(source.onRead)});
        readReset(source, part, field);
        addOptions(source, field);
        fields.push_back(std::move(field));
    }

    QString accessOf(chip::Access access, chip::OnWrite onWrite, const QString &path, const chip::At &at)
    {
        QString letters;
        if (isReadable(access))
            letters += u'r';
        if (!isWritable(access))
            return letters;
        letters += letterOf(onWrite);
        if (!isExact(onWrite))
            m_told(rules::importOnWrite, at, {path, wordOf(onWrite), letters});
        return letters;
    }

    void readReset(const chip::Field &source, const chip::Part &part, Field &field)
    {
        if (source.reset) {
            field.reset = numberText(*source.reset & onesOf(field.width));
            return;
        }
        if (!part.reset)
            return;
        const quint64 mask = onesOf(field.width);
        const quint64 known = (part.resetMask >> field.lowest) & mask;
        if (known == mask)
            field.reset = numberText((*part.reset >> field.lowest) & mask);
        else if (known != 0)
            m_told(rules::importPartlyReset, source.at, {field.path});
    }

    void addOptions(const chip::Field &source, Field &field)
    {
        using Use = chip::Enumeration::Use;
        const chip::Enumeration *chosen = nullptr;
        for (const auto &enumeration : source.enumerations) {
            const bool isWriting = enumeration->use == Use::Write;
            if (!chosen || (chosen->use == Use::Write && !isWriting && isReadable(source.access)))
                chosen = enumeration.get();
        }
        if (!chosen)
            return;
        field.enumSource = chosen->name;
        UsedNames names;
        for (const chip::Option &option : chosen->options)
            addOption(option, names, field);
        for (const auto &enumeration : source.enumerations) {
            if (enumeration.get() == chosen)
                continue;
            // What the other list adds: values that have no name yet.
            bool isComplete = true;
            for (const chip::Option &option : enumeration->options) {
                const auto known = std::ranges::find(field.options, option.value, &Option::value);
                if (known == field.options.end() && !option.isDefault)
                    addOption(option, names, field);
                else if (known == field.options.end() || known->name != cleanName(option.name))
                    isComplete = false;
            }
            if (!isComplete)
                m_told(rules::importWriteValues, enumeration->at, {field.path});
        }
    }

    void addOption(const chip::Option &source, UsedNames &names, Field &field)
    {
        const QString path = field.path + u'.' + source.name;
        if (source.isDefault) {
            m_told(rules::importDefault, source.at, {path});
            const QString what = source.comment.isEmpty() ? QString() : ", "_L1 + source.comment;
            field.comment += (field.comment.isEmpty() ? ""_L1 : "<br/>"_L1) +
                             cleanComment(u"Any other value: "_s + cleanName(source.name) + what);
            return;
        }
        if (source.value > onesOf(field.width)) {
            m_told(rules::importBeyond, source.at, {path, u"what its field holds"_s});
            return;
        }
        if (source.dontCare != 0)
            m_told(rules::importDontCare, source.at, {path, numberText(source.value)});
        Option option;
        QString name = source.name;
        // Names of options stand behind another one, so they may begin with a digit.
        name = cleanName(name.front().isDigit() ? u'x' + name : name);
        option.name = names.unique(source.name.front().isDigit() ? name.sliced(1) : name);
        if (option.name != source.name)
            m_told(rules::importName, source.at, {path, option.name});
        option.comment = cleanComment(source.comment);
        option.value = source.value;
        option.at = source.at;
        field.options.push_back(std::move(option));
    }

    /// Makes one cut field of those of equal make that are numbered side by side.
    std::vector<Field> withPieces(std::vector<Field> fields)
    {
        constexpr std::size_t kFewest = 3;
        if (fields.size() < kFewest)
            return fields;
        const bool isDown = fields.front().lowest > fields.back().lowest;
        std::vector<Field> result;
        UsedNames taken;
        for (const Field &field : fields)
            taken.unique(field.name);
        for (std::size_t at = 0; at < fields.size();) {
            const std::size_t count = piecesAt(fields, at, isDown);
            if (count < kFewest) {
                result.push_back(fields[at++]);
                continue;
            }
            const std::size_t first = isDown ? at + count - 1 : at;
            Field whole = fields[first];
            const NumberedName name = *numberedName(whole.name, true);
            NumberedText comment(whole.comment, name.number);
            for (std::size_t piece = 1; piece < count; ++piece)
                comment.accepts(fields[isDown ? first - piece : first + piece].comment, uint(name.number + piece));
            whole.name = cleanName(name.prefix);
            whole.comment = comment.general(u"n");
            for (std::size_t option = 0; option < whole.options.size(); ++option) {
                NumberedText text(whole.options[option].comment, name.number);
                for (std::size_t piece = 1; piece < count; ++piece)
                    text.accepts(fields[isDown ? first - piece : first + piece].options[option].comment,
                                 uint(name.number + piece));
                whole.options[option].comment = text.general(u"n");
            }
            whole.cut = whole.width;
            whole.cutStart = name.number;
            whole.width *= int(count);
            whole.cutPrefix = whole.name;
            // Rows of pieces that go on elsewhere have one prefix.
            if (taken.contains(whole.name))
                whole.name += "_FROM_"_L1 + QString::number(name.number);
            if (taken.contains(whole.name)) {
                result.insert(result.end(), fields.begin() + qsizetype(at), fields.begin() + qsizetype(at + count));
            } else {
                taken.unique(whole.name);
                m_told(rules::importCut, whole.at, {whole.path, QString::number(count - 1), whole.name});
                result.push_back(std::move(whole));
            }
            at += count;
        }
        return result;
    }

    /// How many fields from \a at on, which may go down, are pieces of one.
    static std::size_t piecesAt(const std::vector<Field> &fields, std::size_t at, bool isDown)
    {
        const Field &first = fields[at];
        const std::optional<NumberedName> name = numberedName(first.name, true);
        if (!name || !name->suffix.isEmpty() || name->prefix.isEmpty())
            return 1;
        NumberedText comment(first.comment, name->number);
        std::vector<NumberedText> options;
        for (const Option &option : first.options)
            options.emplace_back(option.comment, name->number);
        std::size_t count = 1;
        for (; at + count < fields.size(); ++count) {
            const Field &field = fields[at + count];
            if (isDown && name->number < count)
                break;
            const uint number = isDown ? name->number - uint(count) : name->number + uint(count);
            const int distance = int(count) * first.width;
            if (field.name != name->prefix + QString::number(number) ||
                field.lowest != first.lowest + (isDown ? -distance : distance) || field.width != first.width ||
                field.access != first.access || field.reset != first.reset || !comment.accepts(field.comment, number) ||
                !areAlike(first.options, field.options, options, number))
                break;
        }
        return count;
    }

    /// Whether options have the same names and values, and comments that differ in the number of their field at most.
    static bool areAlike(const std::vector<Option> &first, const std::vector<Option> &other,
                         std::vector<NumberedText> &comments, uint number)
    {
        if (first.size() != other.size())
            return false;
        for (std::size_t at = 0; at < first.size(); ++at) {
            if (first[at].name != other[at].name || first[at].value != other[at].value ||
                !comments[at].accepts(other[at].comment, number))
                return false;
        }
        return true;
    }

    // Names

    /// Takes the peripheral's name off those of its registers, when all of them begin with it.
    void stripPrefix(Members &members, const QString &path)
    {
        if (members.size() < 2)
            return;
        QString name = path;
        while (!name.isEmpty() && name.back().isDigit())
            name.chop(1);
        for (const QString &prefix : {path + u'_', name + u'_', name}) {
            const auto loses = [&](const Member &member) {
                const QStringView rest = QStringView(member.name).mid(prefix.size());
                return member.name.startsWith(prefix, Qt::CaseInsensitive) && !rest.isEmpty() && rest[0].isLetter();
            };
            constexpr qsizetype kShortest = 3;
            if (prefix.size() < kShortest || !std::ranges::all_of(members, loses))
                continue;
            m_told(rules::importPrefix, members.front().at, {path, members.front().name.first(prefix.size())});
            for (Member &member : members) {
                const QString rest = member.name.sliced(prefix.size());
                for (Field &field : member.fields) {
                    if (field.name == member.name) // over all its bits
                        field.name = rest;
                }
                member.name = rest;
            }
            return;
        }
    }

    // Views

    void nameViews(PlannedRegisters &planned)
    {
        auto &views = planned.views;
        if (views.size() < 2)
            return;
        const auto isCluster = [](const PlannedRegisters::View &view) {
            return view.members.size() == 1 && view.members[0].kind == Member::Kind::Structure &&
                   view.members[0].count == 0;
        };
        const bool areClusters = isCluster(views[0]) && isCluster(views[1]);
        const QString over = views[0].members[0].path;
        UsedNames names;
        for (std::size_t at = 0; at < views.size(); ++at) {
            PlannedRegisters::View &view = views[at];
            view.at = view.members[0].at;
            view.path = view.members[0].path;
            view.over = overlapped(views[0].members, view.members[0], over);
            if (at == 0 && !areClusters)
                continue;
            view.comment = view.members[0].comment;
            view.name = names.unique(nameOfView(view.members));
            if (isCluster(view))
                unwrap(view.members);
        }
    }

    static QString overlapped(const Members &members, const Member &view, const QString &otherwise)
    {
        for (const Member &member : members) {
            if (member.offset < view.end() && view.offset < member.end())
                return member.path;
        }
        return otherwise;
    }

    /// Puts what is in the only structure in its place.
    static void unwrap(Members &members)
    {
        Member cluster = std::move(members[0]);
        members = std::move(cluster.members);
        for (Member &member : members)
            member.offset += cluster.offset;
    }

    /// What a view is called: after its only member, after the word that all their names end or begin with, or after
    /// what a program can do with it.
    static QString nameOfView(Members &members)
    {
        if (members.size() == 1)
            return members[0].name.toLower();
        const QString last = members[0].name.section(u'_', -1);
        const auto ends = [&](const Member &member) {
            return member.name.size() > last.size() + 1 && member.name.endsWith(u'_' + last);
        };
        if (last != members[0].name && last[0].isLetter() && std::ranges::all_of(members, ends)) {
            for (Member &member : members)
                member.name.chop(last.size() + 1);
            return last.toLower();
        }
        const auto isOf = [](QStringView protect) {
            return [protect](const Member &member) { return member.protect == protect; };
        };
        if (std::ranges::all_of(members, isOf(u"w")))
            return u"write"_s;
        return std::ranges::all_of(members, isOf(u"r")) ? u"read"_s : u"alternate"_s;
    }

    Told &m_told;
    qint64 &m_budget;
    Members m_over;
};

} // namespace

PlannedRegisters planRegisters(const std::vector<chip::Part> &parts, const QString &path, Told &told, qint64 &budget)
{
    return MemberPlanner(told, budget).run(parts, path);
}

} // namespace veldmap

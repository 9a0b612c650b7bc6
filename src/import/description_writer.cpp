#include "import/description_writer.h"

#include "findings/limits.h"
#include "import/description_text.h"
#include "import/member_planner.h"
#include "import/rules.h"
#include "import/shared_enums.h"

#include <QCryptographicHash>
#include <QHash>

#include <algorithm>
#include <map>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

using namespace plan;

namespace {

const QString kEnumsFile = u"common/enums.xml"_s;

QString withoutNumber(QString name)
{
    while (!name.isEmpty() && (name.back().isDigit() || name.back() == u'_'))
        name.chop(1);
    return name;
}

QString addressText(quint64 address)
{
    return "0x"_L1 + QString::number(address, 16).toUpper().rightJustified(8, u'0');
}

/// Peripherals with the same registers.
struct Kind {
    std::vector<const chip::Peripheral *> peripherals;
    PlannedRegisters registers;
    bool isMerged = false; ///< some of them only look the same
};

class DescriptionWriter {
public:
    DescriptionWriter(const chip::Device &device, Sink &sink) : m_device(device), m_told(device.file, sink) {}

    std::vector<WrittenFile> run()
    {
        planKinds();
        planTypes();
        SharedEnums enums = shareEnums(m_types, m_told);
        std::vector<WrittenFile> files;
        files.push_back({}); // of the root, which names the others
        if (!enums.common.empty())
            files.push_back(enumsFile(enums.common));
        if (std::optional<WrittenFile> interrupts = interruptsFile())
            files.push_back(*std::move(interrupts));
        for (std::size_t at = 0; at < m_types.size(); ++at)
            files.push_back(typeFile(m_types[at], enums.ofType[at], !enums.common.empty()));
        files.front() = rootFile(files);
        return files;
    }

private:
    // Types

    /// Plans the registers of all peripherals, those that several share once.
    void planKinds()
    {
        QHash<const void *, std::size_t> kinds;
        for (const chip::Peripheral &peripheral : m_device.peripherals) {
            const auto known = kinds.constFind(peripheral.parts.get());
            if (known != kinds.constEnd()) {
                m_kinds[*known].peripherals.push_back(&peripheral);
                continue;
            }
            kinds.insert(peripheral.parts.get(), m_kinds.size());
            Kind kind = {{&peripheral}, planRegisters(*peripheral.parts, peripheral.name, m_told, m_budget)};
            m_kinds.push_back(std::move(kind));
        }
        mergeKinds();
    }

    /// A number that is the same for kinds that are written the same.
    static quint64 sizeOf(const Kind &kind)
    {
        quint64 size = kind.registers.views.size();
        for (const PlannedRegisters::View &view : kind.registers.views) {
            for (const Member &member : view.members)
                size = size * 31 + member.end() * 7 + member.fields.size();
        }
        return size;
    }

    /// Makes one of kinds whose registers are written the same.
    void mergeKinds()
    {
        // Most can't be the same, since they hold more or less.
        QHash<quint64, int> sizes;
        for (const Kind &kind : m_kinds)
            ++sizes[sizeOf(kind)];
        QHash<QByteArray, std::size_t> texts;
        std::vector<Kind> merged;
        for (Kind &kind : m_kinds) {
            if (sizes.value(sizeOf(kind)) == 1) {
                merged.push_back(std::move(kind));
                continue;
            }
            DescriptionText text({});
            for (const PlannedRegisters::View &view : kind.registers.views)
                text.module(Type{view.name, {}, {}, false, view.members, {}, {}}, {});
            const QByteArray key = QCryptographicHash::hash(text.finish().text, QCryptographicHash::Sha256);
            const auto known = texts.constFind(key);
            if (kind.registers.views.empty() || known == texts.constEnd()) {
                texts.insert(key, merged.size());
                merged.push_back(std::move(kind));
                continue;
            }
            Kind &first = merged[*known];
            for (const chip::Peripheral *peripheral : kind.peripherals) {
                m_told(rules::importSameType, peripheral->at, {peripheral->name, first.peripherals.front()->name});
                first.peripherals.push_back(peripheral);
            }
        }
        m_kinds = std::move(merged);
    }

    void planTypes()
    {
        for (const Kind &kind : m_kinds) {
            for (const chip::Peripheral *peripheral : kind.peripherals)
                m_instanceNames.unique(cleanName(peripheral->name));
        }
        for (Kind &kind : m_kinds) {
            if (kind.registers.views.empty()) {
                for (const chip::Peripheral *peripheral : kind.peripherals)
                    placeMemory(*peripheral);
                continue;
            }
            const QString name = typeNameOf(kind);
            for (std::size_t at = 0; at < kind.registers.views.size(); ++at) {
                PlannedRegisters::View &view = kind.registers.views[at];
                addType(kind, view, name, at);
            }
        }
    }

    void addType(const Kind &kind, PlannedRegisters::View &view, const QString &name, std::size_t at)
    {
        const chip::Peripheral &first = *kind.peripherals.front();
        Type type;
        type.name = m_typeNames.unique(view.name.isEmpty() ? name : name + u'_' + view.name);
        type.at = at == 0 ? first.at : view.at;
        type.category = cleanName(first.group.isEmpty() ? u"Peripheral"_s : first.group);
        if (first.group.isEmpty())
            type.category.clear();
        type.comment = at == 0 && view.name.isEmpty() ? commentOf(kind) : view.comment;
        if (type.comment.isEmpty())
            type.comment = commentOf(kind);
        type.members = std::move(view.members);
        if (at > 0)
            m_told(rules::importView, view.at, {view.path, view.over, type.name});
        for (const chip::Peripheral *peripheral : kind.peripherals) {
            const QString own = cleanName(peripheral->name);
            const QString instance =
                view.name.isEmpty() ? own : m_instanceNames.unique(own + u'_' + view.name.toUpper());
            if (at == 0 && instance != peripheral->name && view.name.isEmpty())
                m_told(rules::importName, peripheral->at, {peripheral->name, instance});
            type.instances.push_back({instance, peripheral->address, peripheral->name, peripheral->at});
        }
        m_types.push_back(std::move(type));
    }

    /// What the type of \a kind is called: as the source calls it, or as its peripherals are called but for their
    /// numbers.
    QString typeNameOf(const Kind &kind) const
    {
        const chip::Peripheral &first = *kind.peripherals.front();
        if (!first.typeName.isEmpty())
            return cleanName(first.typeName).toLower();
        if (kind.peripherals.size() == 1)
            return cleanName(first.name).toLower();
        QString common = first.name;
        for (const chip::Peripheral *peripheral : kind.peripherals) {
            qsizetype same = 0;
            while (same < common.size() && same < peripheral->name.size() && common[same] == peripheral->name[same])
                ++same;
            common.truncate(same);
        }
        common = withoutNumber(common);
        constexpr qsizetype kShortest = 2;
        if (common.size() < kShortest)
            common = first.group.isEmpty() ? withoutNumber(first.name) : first.group;
        return cleanName(common.isEmpty() ? first.name : common).toLower();
    }

    /// The comment of the first one, without the number that it has among several.
    static QString commentOf(const Kind &kind)
    {
        const chip::Peripheral &first = *kind.peripherals.front();
        QString comment = first.comment.trimmed();
        const std::optional<NumberedName> name = numberedName(first.name, true);
        if (kind.peripherals.size() > 1 && name && comment.endsWith(u' ' + QString::number(name->number)))
            comment.chop(QString::number(name->number).size() + 1);
        return cleanComment(comment);
    }

    /// A peripheral without registers may be a region of memory.
    void placeMemory(const chip::Peripheral &peripheral)
    {
        const auto isMemory = [](const chip::AddressBlock &block) {
            return (block.usage == "buffer"_L1 || block.usage == "memory"_L1) && block.size > 0;
        };
        const auto block = std::ranges::find_if(peripheral.blocks, isMemory);
        constexpr quint64 kMost = 0x7FFFFFFF;
        if (block == peripheral.blocks.end() || block->size > kMost) {
            m_told(rules::importNoRegisters, peripheral.at, {peripheral.name});
            return;
        }
        Member bytes;
        bytes.kind = Member::Kind::Memory;
        bytes.name = u"bytes"_s;
        bytes.bytes = block->size;
        bytes.at = block->at;
        Type type;
        type.name = m_typeNames.unique(cleanName(peripheral.name).toLower());
        type.comment = cleanComment(peripheral.comment);
        type.at = peripheral.at;
        type.isMemory = true;
        type.members = {bytes};
        type.instances = {{cleanName(peripheral.name), (peripheral.address + block->offset) & 0xFFFFFFFF,
                           peripheral.name, peripheral.at}};
        m_types.push_back(std::move(type));
    }

    // Files

    WrittenFile enumsFile(const std::vector<SharedEnum> &enums)
    {
        DescriptionText text(kEnumsFile);
        text.comment(1, u"Values that fields of several peripherals have"_s);
        for (const SharedEnum &shared : enums)
            text.enumeration(shared);
        return text.finish();
    }

    std::optional<WrittenFile> interruptsFile()
    {
        SharedEnum numbers;
        numbers.name = u"interrupt"_s;
        numbers.at = m_device.at;
        std::map<std::pair<qint64, QString>, Option> entries;
        for (const chip::Peripheral &peripheral : m_device.peripherals) {
            for (const chip::Interrupt &interrupt : peripheral.interrupts) {
                QString name = cleanName(interrupt.name).toUpper();
                if (!name.contains("IRQ"_L1))
                    name += "_IRQ"_L1;
                entries.try_emplace({interrupt.number, name}, Option{name, cleanComment(interrupt.comment),
                                                                     quint64(interrupt.number), interrupt.at});
            }
        }
        if (entries.empty())
            return std::nullopt;
        UsedNames names;
        for (auto &[key, entry] : entries) {
            entry.name = names.unique(entry.name);
            numbers.entries.push_back(entry);
        }
        DescriptionText text(kInterruptsFile, u"unused-enum"_s);
        text.comment(1, u"Numbers of the interrupts"_s);
        text.enumeration(numbers);
        return text.finish();
    }

    /// Arrays of a type by their counts, in the order of the type.
    static void collectArrays(const std::vector<Member> &members, std::vector<std::pair<quint32, QString>> &arrays)
    {
        for (const Member &member : members) {
            if (member.count > 1)
                arrays.emplace_back(member.count, member.name);
            collectArrays(member.members, arrays);
        }
    }

    WrittenFile typeFile(const Type &type, const std::vector<SharedEnum> &enums, bool hasCommon)
    {
        DescriptionText text("periph/"_L1 + type.name + ".xml"_L1);
        text.comment(1, type.comment.isEmpty() ? type.name.toUpper() : type.comment, type.at);
        if (hasCommon && usesCommon(type.members, enums))
            text.includes({"../"_L1 + kEnumsFile});
        for (const SharedEnum &shared : enums)
            text.enumeration(shared);
        std::vector<std::pair<quint32, QString>> arrays;
        collectArrays(type.members, arrays);
        constexpr qsizetype kMostNamed = 5;
        QHash<quint32, QStringList> named; // as many as are shown, and one more
        for (const auto &[count, name] : arrays) {
            if (QStringList &names = named[count]; names.size() <= kMostNamed && !names.contains(name))
                names += name;
        }
        QHash<quint32, QString> counts;
        for (const auto &[count, name] : arrays) {
            const QStringList of = named.value(count);
            if (counts.contains(count) || of.size() < 2)
                continue;
            const QString variable = m_variables.unique(type.name.toUpper() + "_NB_"_L1 + name.toUpper());
            counts.insert(count, variable);
            const QString more = of.size() > kMostNamed ? u" and others"_s : QString();
            text.variable(variable, QString::number(count),
                          "number of "_L1 + of.mid(0, kMostNamed).join(", "_L1) + more, type.at);
        }
        text.module(type, counts);
        return text.finish();
    }

    /// Whether a field has an enum that is not one of \a own.
    static bool usesCommon(const std::vector<Member> &members, const std::vector<SharedEnum> &own)
    {
        const auto isCommon = [&](const Field &field) {
            return !field.linkedEnum.isEmpty() &&
                   std::ranges::none_of(own, [&](const SharedEnum &e) { return e.name == field.linkedEnum; });
        };
        return std::ranges::any_of(members, [&](const Member &member) {
            return std::ranges::any_of(member.fields, isCommon) || usesCommon(member.members, own);
        });
    }

    WrittenFile rootFile(const std::vector<WrittenFile> &others)
    {
        DescriptionText text(u"soc.xml"_s);
        const QString comment = cleanComment(m_device.comment);
        const QString name = cleanComment(m_device.name);
        text.comment(1, comment.isEmpty() ? name : name.isEmpty() ? comment : name + ": "_L1 + comment, m_device.at);
        QStringList files;
        for (const WrittenFile &file : others) {
            if (!file.path.isEmpty())
                files += file.path;
        }
        text.includes(files);
        writeInstances(text);
        return text.finish();
    }

    /// The words, with "_" between them, that both names begin with.
    static QString commonWords(const QString &one, const QString &other)
    {
        qsizetype size = 0;
        while (size < one.size() && size < other.size() && one[size] == other[size])
            ++size;
        const auto endsWord = [&](const QString &name) { return size == name.size() || name[size] == u'_'; };
        while (size > 0 && !(endsWord(one) && endsWord(other)))
            --size;
        return one.first(size);
    }

    /// Instances in the order of the source; an address that several have is a variable.
    void writeInstances(DescriptionText &text)
    {
        struct Placed {
            const Type *type;
            const Instance *instance;
        };
        std::vector<Placed> all;
        QHash<quint64, int> uses;
        for (const Type &type : m_types) {
            for (const Instance &instance : type.instances) {
                all.push_back({&type, &instance});
                ++uses[instance.address];
            }
        }
        std::ranges::stable_sort(all, {}, [](const Placed &placed) {
            return std::pair(placed.instance->at.line, placed.instance->at.column);
        });
        QHash<quint64, QString> commonNames;
        for (const auto &[type, instance] : all) {
            const auto known = commonNames.find(instance->address);
            if (known == commonNames.end())
                commonNames.insert(instance->address, instance->name);
            else
                *known = commonWords(*known, instance->name);
        }
        QHash<quint64, QString> variables;
        for (const auto &[type, instance] : all) {
            const quint64 address = instance->address;
            if (uses[address] < 2 || variables.contains(address))
                continue;
            const QString common = commonNames.value(address);
            const QString name = common.isEmpty() ? cleanName(instance->path) : common;
            const QString variable = m_variables.unique(name.toUpper() + "_ADDRESS"_L1);
            variables.insert(address, variable);
            text.variable(variable, addressText(address), {}, instance->at);
        }
        for (const auto &[type, instance] : all) {
            const QString address = variables.value(instance->address, addressText(instance->address));
            text.line(1,
                      u"<instance name=\"%1\" type=\"%2\" address=\"%3\"/>"_s.arg(instance->name, type->name, address),
                      instance->at);
        }
    }

    const chip::Device &m_device;
    Told m_told;
    qint64 m_budget = limits::kImportedParts;
    std::vector<Kind> m_kinds;
    std::vector<Type> m_types;
    UsedNames m_typeNames;
    UsedNames m_instanceNames;
    UsedNames m_variables;
};

} // namespace

std::vector<WrittenFile> writeDescription(const chip::Device &device, Sink &sink)
{
    return DescriptionWriter(device, sink).run();
}

} // namespace veldmap

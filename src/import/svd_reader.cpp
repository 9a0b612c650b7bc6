#include "import/svd_reader.h"

#include "findings/finding.h"
#include "findings/limits.h"
#include "import/rules.h"
#include "xml/tag_attributes.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <limits>
#include <utility>

// A peripheral of such a file:
//
//     <peripheral derivedFrom="UART0">
//       <name>UART1</name>
//       <baseAddress>0x40001000</baseAddress>
//       <registers>
//         <register>
//           <name>CTRL</name> <addressOffset>0x4</addressOffset> <size>32</size> <resetValue>0</resetValue>
//           <fields>
//             <field><name>EN</name> <bitRange>[0:0]</bitRange> <access>read-only</access></field>
//
// Size, access, reset value and its mask come from the nearest element around that says them.

using namespace Qt::StringLiterals;

namespace veldmap {

using namespace chip;

namespace {

/// Enough errors to mend before the next try.
constexpr int kMostErrors = 100;

template <typename Value>
struct Word {
    QLatin1StringView word;
    Value value;
};

template <typename Value, std::size_t kCount>
std::optional<Value> valueOf(const Word<Value> (&words)[kCount], QStringView word)
{
    const auto *const row = std::ranges::find_if(words, [&](const Word<Value> &one) { return word == one.word; });
    return row == std::end(words) ? std::nullopt : std::optional(row->value);
}

constexpr Word<Access> kAccessWords[] = {
    {"read-write"_L1, Access::ReadWrite},         {"read-only"_L1, Access::ReadOnly},
    {"write-only"_L1, Access::WriteOnly},         {"writeOnce"_L1, Access::WriteOnce},
    {"read-writeOnce"_L1, Access::ReadWriteOnce},
};
constexpr Word<OnWrite> kWriteWords[] = {
    {"modify"_L1, OnWrite::Modify},
    {"oneToClear"_L1, OnWrite::OneToClear},
    {"oneToSet"_L1, OnWrite::OneToSet},
    {"oneToToggle"_L1, OnWrite::OneToToggle},
    {"zeroToClear"_L1, OnWrite::ZeroToClear},
    {"zeroToSet"_L1, OnWrite::ZeroToSet},
    {"zeroToToggle"_L1, OnWrite::ZeroToToggle},
    {"clear"_L1, OnWrite::Clear},
    {"set"_L1, OnWrite::Set},
};
constexpr Word<OnRead> kReadWords[] = {
    {"clear"_L1, OnRead::Clear},
    {"set"_L1, OnRead::Set},
    {"modify"_L1, OnRead::Modify},
    {"modifyExternal"_L1, OnRead::ModifyExternal},
};
constexpr Word<Enumeration::Use> kUseWords[] = {
    {"read"_L1, Enumeration::Use::Read},
    {"write"_L1, Enumeration::Use::Write},
    {"read-write"_L1, Enumeration::Use::Both},
};

/// What registers and fields have no place for, but a reader of the source may look for.
constexpr QLatin1StringView kLeftOut[] = {
    "writeConstraint"_L1, "protection"_L1, "dimArrayIndex"_L1,
    "alternateGroup"_L1,  "dataType"_L1,   "disableCondition"_L1,
};

/// The digits of \a base in \a text; nothing when it has others or none.
std::optional<quint64> digits(QStringView text, unsigned int base)
{
    if (text.isEmpty())
        return std::nullopt;
    quint64 number = 0;
    for (const QChar c : text) {
        const char16_t folded = c.unicode() | 0x20;
        const unsigned int digit = c >= u'0' && c <= u'9'             ? unsigned(c.unicode()) - u'0'
                                   : folded >= u'a' && folded <= u'f' ? unsigned(folded) - u'a' + 10
                                                                      : base;
        if (digit >= base || number > (std::numeric_limits<quint64>::max() - digit) / base)
            return std::nullopt;
        number = number * base + digit;
    }
    return number;
}

/// The bits of \a text, in which an 'x' may be any.
std::optional<quint64> bitsOf(QStringView text, quint64 *dontCare)
{
    if (text.isEmpty() || text.size() > 64)
        return std::nullopt;
    quint64 number = 0;
    quint64 any = 0;
    for (const QChar c : text) {
        const bool isAny = c == u'x' || c == u'X';
        if (c != u'0' && c != u'1' && !(isAny && dontCare))
            return std::nullopt;
        number = number << 1 | (c == u'1' ? 1 : 0);
        any = any << 1 | (isAny ? 1 : 0);
    }
    if (dontCare)
        *dontCare = any;
    return number;
}

/// Names of one scope of the document: what is inside an element of this number.
using ScopedName = std::pair<int, QStringView>;

/// Finds the elements that others are derived from.
class NamedElements {
public:
    explicit NamedElements(const Tag &root) { addBelow(root, -1); }

    /// The element of the kind of \a tag that \a path names, as seen from there; none without any.
    std::optional<Tag> find(const Tag &tag, QStringView path) const
    {
        const int own = m_entryOf.value(tag.number(), -1);
        if (own < 0)
            return std::nullopt;
        const QList<QStringView> names = path.split(u'.');
        for (int scope = m_entries[std::size_t(own)].parent;; scope = m_entries[std::size_t(scope)].parent) {
            if (const std::optional<Tag> found = findIn(scope, names, tag))
                return found;
            if (scope < 0)
                break;
        }
        // Lists of values are often named alone, wherever in the file they stand.
        if (tag.name() == "enumeratedvalues"_L1) {
            const auto named = m_values.constFind(names.last());
            if (named != m_values.constEnd() && *named != own)
                return m_entries[std::size_t(*named)].tag;
        }
        return std::nullopt;
    }

private:
    struct Entry {
        Tag tag;
        int parent;
    };

    static bool isNamed(QStringView name)
    {
        return name == "peripheral"_L1 || name == "register"_L1 || name == "cluster"_L1 || name == "field"_L1 ||
               name == "enumeratedvalues"_L1;
    }

    void addBelow(const Tag &parent, int scope)
    {
        for (const Tag &child : ChildTags(parent)) {
            const QStringView name = child.name();
            if (isNamed(name))
                addBelow(child, add(child, scope));
            else if (name == "peripherals"_L1 || name == "registers"_L1 || name == "fields"_L1)
                addBelow(child, scope);
        }
    }

    int add(const Tag &tag, int scope)
    {
        const int entry = int(m_entries.size());
        m_entries.push_back({tag, scope});
        m_entryOf.insert(tag.number(), entry);
        for (const Tag &child : ChildTags(tag)) {
            if (child.name() != "name"_L1)
                continue;
            const QStringView name = child.plainText().trimmed();
            insert(scope, name, entry);
            for (const QStringView index : {QStringView(u"[%s]"), QStringView(u"%s")}) {
                if (name.endsWith(index))
                    insert(scope, name.chopped(index.size()), entry);
            }
            if (tag.name() == "enumeratedvalues"_L1 && !m_values.contains(name))
                m_values.insert(name, entry);
            break;
        }
        return entry;
    }

    void insert(int scope, QStringView name, int entry)
    {
        if (!m_names.contains({scope, name}))
            m_names.insert({scope, name}, entry);
    }

    std::optional<Tag> findIn(int scope, const QList<QStringView> &names, const Tag &like) const
    {
        int entry = scope;
        for (const QStringView name : names) {
            const auto found = m_names.constFind({entry, name});
            if (found == m_names.constEnd())
                return std::nullopt;
            entry = *found;
        }
        const Tag &tag = m_entries[std::size_t(entry)].tag;
        return tag.name() == like.name() && tag.number() != like.number() ? std::optional(tag) : std::nullopt;
    }

    std::vector<Entry> m_entries;
    QHash<int, int> m_entryOf; // by the number of the tag
    QHash<ScopedName, int> m_names;
    QHash<QStringView, int> m_values;
};

/// What inner elements take over from outer ones.
struct Inherited {
    int size = 32;
    Access access = Access::ReadWrite;
    std::optional<quint64> reset = {};
    quint64 resetMask = ~quint64(0);
};

class SvdReader {
public:
    SvdReader(const Tag &root, const QString &file, Sink &sink) : m_root(root), m_file(file), m_sink(sink) {}

    std::unique_ptr<Device> read()
    {
        auto device = std::make_unique<Device>();
        device->file = m_file;
        device->at = placeOf(m_root);
        const Chain chain = {m_root};
        device->name = text(chain, u"name");
        device->comment = text(chain, u"description");
        device->vendor = text(chain, u"vendor");
        device->version = text(chain, u"version");
        const QString path = device->name.isEmpty() ? u"device"_s : device->name;
        for (const QLatin1StringView left : {"cpu"_L1, "vendorExtensions"_L1}) {
            if (const std::optional<Tag> tag = child(chain, left.toString().toLower()))
                tell(rules::importLeftOut, *tag, {path, left});
        }
        if (const std::optional<quint64> unit = number(chain, u"addressunitbits", path, false); unit && *unit != 8)
            tell(rules::importTooMuch, m_root, {path, u"addressUnitBits"_s, QString::number(*unit), u"8"_s});
        Inherited inherited;
        inherit(chain, path, inherited);
        if (const std::optional<Tag> peripherals = child(chain, u"peripherals")) {
            for (const Tag &tag : ChildTags(*peripherals)) {
                const std::optional<Tag> name = child({tag}, u"name");
                if (name && tag.name() == "peripheral"_L1 && !m_peripherals.contains(name->plainText().trimmed()))
                    m_peripherals.insert(name->plainText().trimmed(), tag);
            }
            for (const Tag &tag : ChildTags(*peripherals)) {
                if (tag.name() == "peripheral"_L1 && !isOver())
                    readPeripheral(tag, inherited, *device);
            }
        }
        if (!m_errors && device->peripherals.empty())
            tell(rules::importEmpty, m_root, {path, u"peripherals"_s});
        return m_errors ? nullptr : std::move(device);
    }

private:
    /// A tag, and behind it what it is derived from.
    using Chain = std::vector<Tag>;
    enum class Need { Optional, Required };

    static At placeOf(const Tag &tag) { return {tag.lineNumber(), tag.columnNumber()}; }
    bool isOver() const { return m_errors >= kMostErrors || m_isFull; }

    void tell(const Rule &rule, const Tag &tag, const QStringList &arguments)
    {
        if (rule.severity == Severity::Error)
            ++m_errors;
        if (m_errors <= kMostErrors)
            m_sink.take(Finding(rule, {m_file, tag.lineNumber(), tag.columnNumber()}, arguments));
    }

    /// Counts a part; false, with an error told, when it is one too many.
    bool count(const Tag &tag, const QString &path)
    {
        if (m_isFull || ++m_parts <= limits::kImportedParts)
            return !m_isFull;
        m_isFull = true;
        tell(rules::importTooMany, tag, {path, QString::number(limits::kImportedParts)});
        return false;
    }

    // Reading a tag

    static std::optional<Tag> child(const Chain &chain, QStringView name)
    {
        for (const Tag &tag : chain) {
            for (const Tag &inner : ChildTags(tag)) {
                if (inner.name() == name)
                    return inner;
            }
        }
        return std::nullopt;
    }

    static QString text(const Chain &chain, QStringView name)
    {
        const std::optional<Tag> tag = child(chain, name);
        return tag ? tag->allText().trimmed().left(limits::kImportedTextCharacters) : QString();
    }

    /// The text of an own child, which what a tag is derived from does not lend.
    static QString ownText(const Chain &chain, QStringView name) { return text({chain.front()}, name); }

    std::optional<quint64> number(const Chain &chain, QStringView name, const QString &path, bool isRequired,
                                  quint64 most = std::numeric_limits<quint64>::max())
    {
        const std::optional<Tag> tag = child(chain, name);
        if (!tag) {
            if (isRequired)
                tell(rules::importNoNumber, chain.front(), {path, name.toString()});
            return std::nullopt;
        }
        const QString written = tag->allText().trimmed();
        const std::optional<quint64> value = svdNumber(written);
        const QString word = tag->nameAsWritten().toString();
        if (!value)
            tell(rules::importNumber, *tag, {path, word, written.left(40), u""_s});
        else if (*value > most)
            tell(rules::importTooMuch, *tag, {path, word, written, QString::number(most)});
        else
            return value;
        return std::nullopt;
    }

    template <typename Value, std::size_t kCount>
    std::optional<Value> word(const Chain &chain, QStringView name, const Word<Value> (&words)[kCount],
                              const QString &path)
    {
        const std::optional<Tag> tag = child(chain, name);
        if (!tag)
            return std::nullopt;
        const QString written = tag->allText().trimmed();
        const std::optional<Value> value = valueOf(words, written);
        if (!value)
            tell(rules::importLeftOut, *tag, {path, tag->nameAsWritten().toString() + u' ' + written.left(40)});
        return value;
    }

    void inherit(const Chain &chain, const QString &path, Inherited &inherited)
    {
        constexpr quint64 kMostBits = 1024;
        if (const auto size = number(chain, u"size", path, false, kMostBits); size && *size > 0)
            inherited.size = int(*size);
        if (const auto access = word(chain, u"access", kAccessWords, path))
            inherited.access = *access;
        if (const auto reset = number(chain, u"resetvalue", path, false))
            inherited.reset = reset;
        if (const auto mask = number(chain, u"resetmask", path, false))
            inherited.resetMask = *mask;
    }

    /// What \a tag is derived from. Names of peripherals need no look at what is inside them.
    std::optional<Tag> baseOf(const Tag &tag, QStringView name)
    {
        if (tag.name() == "peripheral"_L1) {
            const auto known = m_peripherals.constFind(name);
            return known == m_peripherals.constEnd() ? std::nullopt : std::optional(*known);
        }
        if (!m_named)
            m_named = std::make_unique<NamedElements>(m_root);
        return m_named->find(tag, name);
    }

    /// \a tag and what it is derived from, as far as that can be told.
    Chain chainOf(const Tag &tag, const QString &path)
    {
        Chain chain = {tag};
        for (Tag last = tag;;) {
            const QStringView name = last.attribute(u"derivedFrom").trimmed();
            if (name.isEmpty())
                return chain;
            const std::optional<Tag> base = baseOf(last, name);
            if (!base) {
                tell(rules::importNoBase, last, {path, name.toString()});
                return chain;
            }
            const auto isBase = [&](const Tag &other) { return other.number() == base->number(); };
            if (std::ranges::any_of(chain, isBase) || m_open.contains(base->number()) ||
                chain.size() >= std::size_t(limits::kImportedDepth)) {
                tell(rules::importCycle, last, {path, name.toString()});
                return chain;
            }
            chain.push_back(*base);
            last = *base;
        }
    }

    /// Reads how often what \a chain tells of stands there; false, with an error told, when that can't be.
    bool readRepeat(const Chain &chain, const QString &path, QString &name, Repeat &repeat, const Tag &tag)
    {
        const bool isBracketed = name.contains("[%s]"_L1);
        const std::optional<Tag> dim = child(chain, u"dim");
        if (!dim) {
            name.remove(isBracketed ? "[%s]"_L1 : "%s"_L1);
            return true;
        }
        const auto count = number(chain, u"dim", path, true, quint64(limits::kArrayElements));
        const auto step = number(chain, u"dimincrement", path, true);
        if (!count || !step)
            return false;
        if (*count == 0) {
            tell(rules::importNumber, *dim, {path, u"dim"_s, u"0"_s, u" of elements"_s});
            return false;
        }
        repeat.count = quint32(*count);
        repeat.step = *step;
        repeat.isArray = isBracketed;
        if (isBracketed) {
            name.remove("[%s]"_L1);
        } else if (!name.contains("%s"_L1)) {
            name += "%s"_L1;
        }
        if (isBracketed)
            return true;
        const QString given = text(chain, u"dimindex");
        if (!given.isEmpty()) {
            repeat.indices = indicesOf(given, repeat.count);
            if (repeat.indices.isEmpty())
                tell(rules::importDimIndex, tag, {path, given.left(80), QString::number(repeat.count)});
        }
        if (repeat.indices.isEmpty()) {
            for (quint32 at = 0; at < repeat.count; ++at)
                repeat.indices += QString::number(at);
        }
        return true;
    }

    /// "A,B,C", "2-5" or "A-D"; nothing when they are not \a count.
    static QStringList indicesOf(const QString &text, quint32 count)
    {
        QStringList indices;
        for (const QStringView item : QStringView(text).split(u',')) {
            const QStringView trimmed = item.trimmed();
            const qsizetype dash = trimmed.indexOf(u'-', 1);
            if (dash < 0) {
                indices += trimmed.toString();
                continue;
            }
            const QStringView from = trimmed.first(dash).trimmed();
            const QStringView to = trimmed.sliced(dash + 1).trimmed();
            bool isFirst = false;
            bool isLast = false;
            const uint first = from.toUInt(&isFirst);
            const uint last = to.toUInt(&isLast);
            if (isFirst && isLast && last >= first && last - first < count) {
                for (uint at = first; at <= last; ++at)
                    indices += QString::number(at);
            } else if (from.size() == 1 && to.size() == 1 && from[0] <= to[0] && from[0].isLetter()) {
                for (char16_t at = from[0].unicode(); at <= to[0].unicode(); ++at)
                    indices += QChar(at);
            } else {
                return {};
            }
        }
        return indices.size() == qsizetype(count) && !indices.contains(QString()) ? indices : QStringList();
    }

    void tellLeftOut(const Chain &chain, const QString &path)
    {
        for (const Tag &inner : ChildTags(chain.front())) {
            const QStringView name = inner.nameAsWritten();
            if (std::ranges::any_of(kLeftOut, [&](QLatin1StringView left) { return name == left; }))
                tell(rules::importLeftOut, inner, {path, inner.nameAsWritten().toString()});
        }
    }

    // Elements

    void readPeripheral(const Tag &tag, const Inherited &outer, Device &device)
    {
        Peripheral peripheral;
        peripheral.at = placeOf(tag);
        QString name = ownText({tag}, u"name");
        if (name.isEmpty()) {
            tell(rules::importEmpty, tag, {u"peripheral"_s, u"name"_s});
            return;
        }
        const Chain chain = chainOf(tag, name);
        if (!count(tag, name))
            return;
        peripheral.name = name;
        peripheral.comment = commentOf(chain);
        peripheral.group = text(chain, u"groupname");
        peripheral.typeName = text(chain, u"headerstructname");
        peripheral.alternateOf = ownText(chain, u"alternateperipheral");
        peripheral.prefix = text(chain, u"prependtoname");
        peripheral.suffix = text(chain, u"appendtoname");
        const auto address = number({tag}, u"baseaddress", name, true, 0xFFFFFFFF);
        if (!address)
            return;
        peripheral.address = *address;
        readBlocks(chain, name, peripheral);
        readInterrupts(tag, name, peripheral);
        tellLeftOut(chain, name);
        Inherited inherited = outer;
        inherit(chain, name, inherited);
        peripheral.parts = partsOf(chain, inherited, name);
        Repeat repeat;
        QString pattern = name;
        if (!readRepeat({tag}, name, pattern, repeat, tag))
            return;
        for (quint32 at = 0; at < repeat.count && !isOver(); ++at) {
            Peripheral one = peripheral;
            one.name = repeat.isArray ? pattern + QString::number(at) : pattern;
            if (!repeat.indices.isEmpty())
                one.name.replace("%s"_L1, repeat.indices[at]);
            one.address = (peripheral.address + at * repeat.step) & 0xFFFFFFFF;
            device.peripherals.push_back(std::move(one));
            if (at > 0 && !count(tag, name))
                return;
        }
    }

    static QString commentOf(const Chain &chain)
    {
        const QString comment = text(chain, u"description");
        return comment.isEmpty() ? text(chain, u"displayname") : comment;
    }

    void readBlocks(const Chain &chain, const QString &path, Peripheral &peripheral)
    {
        for (const Tag &holder : chain) {
            for (const Tag &tag : ChildTags(holder)) {
                if (tag.name() != "addressblock"_L1)
                    continue;
                const auto offset = number({tag}, u"offset", path, true);
                const auto size = number({tag}, u"size", path, true);
                if (offset && size)
                    peripheral.blocks.push_back({*offset, *size, text({tag}, u"usage"), placeOf(tag)});
            }
            if (!peripheral.blocks.empty())
                return;
        }
    }

    void readInterrupts(const Tag &peripheral, const QString &path, Peripheral &to)
    {
        for (const Tag &tag : ChildTags(peripheral)) {
            if (tag.name() != "interrupt"_L1)
                continue;
            const QString name = text({tag}, u"name");
            const auto value = number({tag}, u"value", path + u'.' + name, true, std::numeric_limits<qint32>::max());
            if (value && !name.isEmpty())
                to.interrupts.push_back({name, text({tag}, u"description"), qint64(*value), placeOf(tag)});
        }
    }

    /// The registers of a peripheral, shared by all that add nothing to those of another.
    std::shared_ptr<const std::vector<Part>> partsOf(const Chain &chain, const Inherited &inherited,
                                                     const QString &path)
    {
        const auto saysMore = [](const Tag &tag) {
            for (const QStringView name : {u"registers"_s, u"size"_s, u"access"_s, u"resetvalue"_s, u"resetmask"_s}) {
                if (child({tag}, name))
                    return true;
            }
            return false;
        };
        const auto first = std::ranges::find_if(chain, saysMore);
        const Tag &holder = first == chain.end() ? chain.back() : *first;
        if (const auto known = m_parts_of.constFind(holder.number()); known != m_parts_of.constEnd())
            return *known;
        auto parts = std::make_shared<std::vector<Part>>();
        QHash<QString, std::size_t> places;
        for (auto tag = chain.rbegin(); tag != chain.rend(); ++tag) {
            if (const std::optional<Tag> registers = child({*tag}, u"registers"))
                readParts(*registers, inherited, path, *parts, places);
        }
        m_parts_of.insert(holder.number(), parts);
        return parts;
    }

    /// Reads the registers and clusters in \a holder behind \a parts; one of a name that is there takes its place.
    void readParts(const Tag &holder, const Inherited &inherited, const QString &path, std::vector<Part> &parts,
                   QHash<QString, std::size_t> &places)
    {
        QSet<QString> here;
        for (const Tag &tag : ChildTags(holder)) {
            const bool isCluster = tag.name() == "cluster"_L1;
            if ((!isCluster && tag.name() != "register"_L1) || isOver())
                continue;
            std::optional<Part> part = readPart(tag, isCluster, inherited, path);
            if (!part)
                continue;
            const auto known = places.constFind(part->name);
            if (known != places.constEnd() && !here.contains(part->name)) {
                parts[*known] = *std::move(part);
                continue;
            }
            here.insert(part->name);
            places.insert(part->name, parts.size());
            parts.push_back(*std::move(part));
        }
    }

    std::optional<Part> readPart(const Tag &tag, bool isCluster, const Inherited &outer, const QString &outerPath)
    {
        QString name = ownText({tag}, u"name");
        if (name.isEmpty()) {
            tell(rules::importEmpty, tag, {outerPath + u'.' + tag.nameAsWritten().toString(), u"name"_s});
            return std::nullopt;
        }
        const QString path = outerPath + u'.' + name;
        if (!count(tag, path))
            return std::nullopt;
        if (m_open.size() >= limits::kImportedDepth) {
            tell(rules::importTooMuch, tag,
                 {path, u"its depth"_s, QString::number(m_open.size() + 1), QString::number(limits::kImportedDepth)});
            return std::nullopt;
        }
        const Chain chain = chainOf(tag, path);
        Part part;
        part.isCluster = isCluster;
        part.at = placeOf(tag);
        part.comment = commentOf(chain);
        part.alternateOf = ownText(chain, isCluster ? u"alternatecluster" : u"alternateregister");
        part.typeName = text(chain, u"headerstructname");
        const auto offset = number(chain, u"addressoffset", path, true, 0xFFFFFFFF);
        if (!offset || !readRepeat(chain, path, name, part.repeat, tag))
            return std::nullopt;
        part.name = name;
        part.offset = *offset;
        tellLeftOut(chain, path);
        Inherited inherited = outer;
        inherit(chain, path, inherited);
        if (isCluster) {
            readInside(chain, inherited, path, part);
            return part;
        }
        part.size = inherited.size;
        part.access = inherited.access;
        part.reset = inherited.reset;
        part.resetMask = inherited.resetMask;
        part.onWrite = word(chain, u"modifiedwritevalues", kWriteWords, path).value_or(OnWrite::Modify);
        part.onRead = word(chain, u"readaction", kReadWords, path).value_or(OnRead::Nothing);
        readFields(chain, path, part);
        return part;
    }

    void readInside(const Chain &chain, const Inherited &inherited, const QString &path, Part &cluster)
    {
        for (const Tag &tag : chain)
            m_open.insert(tag.number());
        QHash<QString, std::size_t> places;
        for (auto tag = chain.rbegin(); tag != chain.rend(); ++tag)
            readParts(*tag, inherited, path, cluster.parts, places);
        for (const Tag &tag : chain)
            m_open.remove(tag.number());
    }

    void readFields(const Chain &chain, const QString &path, Part &part)
    {
        QHash<QString, std::size_t> places;
        for (auto holder = chain.rbegin(); holder != chain.rend(); ++holder) {
            const std::optional<Tag> fields = child({*holder}, u"fields");
            if (!fields)
                continue;
            QSet<QString> here;
            for (const Tag &tag : ChildTags(*fields)) {
                if (tag.name() != "field"_L1 || isOver())
                    continue;
                std::optional<Field> field = readField(tag, part, path);
                if (!field)
                    continue;
                const auto known = places.constFind(field->name);
                if (known != places.constEnd() && !here.contains(field->name)) {
                    part.fields[*known] = *std::move(field);
                    continue;
                }
                here.insert(field->name);
                places.insert(field->name, part.fields.size());
                part.fields.push_back(*std::move(field));
            }
        }
    }

    std::optional<Field> readField(const Tag &tag, const Part &part, const QString &outerPath)
    {
        QString name = ownText({tag}, u"name");
        if (name.isEmpty()) {
            tell(rules::importEmpty, tag, {outerPath + ".field"_L1, u"name"_s});
            return std::nullopt;
        }
        const QString path = outerPath + u'.' + name;
        if (!count(tag, path))
            return std::nullopt;
        const Chain chain = chainOf(tag, path);
        Field field;
        field.at = placeOf(tag);
        field.comment = text(chain, u"description");
        if (!readBits(chain, path, field) || !readRepeat(chain, path, name, field.repeat, tag))
            return std::nullopt;
        field.name = name;
        field.access = word(chain, u"access", kAccessWords, path).value_or(part.access);
        field.onWrite = word(chain, u"modifiedwritevalues", kWriteWords, path).value_or(part.onWrite);
        field.onRead = word(chain, u"readaction", kReadWords, path).value_or(OnRead::Nothing);
        tellLeftOut(chain, path);
        for (const Tag &holder : chain) {
            for (const Tag &inner : ChildTags(holder)) {
                if (inner.name() == "enumeratedvalues"_L1)
                    field.enumerations.push_back(readEnumeration(inner, path));
            }
            if (!field.enumerations.empty())
                break;
        }
        return field;
    }

    /// Reads the position in any of its three forms; false, with an error told, when there is none.
    bool readBits(const Chain &chain, const QString &path, Field &field)
    {
        constexpr quint64 kLastBit = 1023;
        quint64 lowest = 0;
        quint64 highest = 0;
        const auto says = [&](QStringView name) {
            return [name](const Tag &tag) { return child({tag}, name).has_value(); };
        };
        // The nearest tag that says it in any form, since one may say it in another form than what it is derived from.
        const auto holder = std::ranges::find_if(chain, [&](const Tag &tag) {
            return says(u"bitrange")(tag) || says(u"lsb")(tag) || says(u"bitoffset")(tag);
        });
        if (holder == chain.end()) {
            tell(rules::importNoNumber, chain.front(), {path, u"position: bitOffset, lsb or bitRange"_s});
            return false;
        }
        const Chain from(holder, chain.end());
        if (const std::optional<Tag> range = child({*holder}, u"bitrange")) {
            const QString written = range->allText().trimmed();
            const qsizetype colon = written.indexOf(u':');
            const bool isRange = written.startsWith(u'[') && written.endsWith(u']') && colon > 0;
            const auto upper = isRange ? svdNumber(QStringView(written).sliced(1, colon - 1).trimmed()) : std::nullopt;
            const auto lower =
                isRange ? svdNumber(QStringView(written).sliced(colon + 1).chopped(1).trimmed()) : std::nullopt;
            if (!upper || !lower || *upper > kLastBit || *lower > kLastBit) {
                tell(rules::importNumber, *range, {path, u"bitRange"_s, written.left(40), u" of bits like [7:4]"_s});
                return false;
            }
            std::tie(lowest, highest) = std::minmax(*lower, *upper);
        } else if (says(u"lsb")(*holder)) {
            const auto lower = number({*holder}, u"lsb", path, true, kLastBit);
            const auto upper = number(from, u"msb", path, true, kLastBit);
            if (!lower || !upper)
                return false;
            std::tie(lowest, highest) = std::minmax(*lower, *upper);
        } else {
            const auto offset = number({*holder}, u"bitoffset", path, true, kLastBit);
            const auto width = number(from, u"bitwidth", path, false, kLastBit + 1);
            if (!offset || (!width && child(from, u"bitwidth")))
                return false;
            if (width && *width == 0) {
                tell(rules::importNumber, chain.front(), {path, u"bitWidth"_s, u"0"_s, u" of bits"_s});
                return false;
            }
            lowest = *offset;
            highest = *offset + width.value_or(1) - 1;
        }
        field.lowest = int(lowest);
        field.width = int(highest - lowest + 1);
        return true;
    }

    std::shared_ptr<const Enumeration> readEnumeration(const Tag &tag, const QString &path)
    {
        if (const auto known = m_enumerations.constFind(tag.number()); known != m_enumerations.constEnd())
            return *known;
        const Chain chain = chainOf(tag, path);
        auto enumeration = std::make_shared<Enumeration>();
        enumeration->at = placeOf(tag);
        enumeration->name = text(chain, u"name");
        enumeration->use = word(chain, u"usage", kUseWords, path).value_or(Enumeration::Use::Both);
        const auto hasValues = [](const Tag &holder) { return child({holder}, u"enumeratedvalue").has_value(); };
        const auto holder = std::ranges::find_if(chain, hasValues);
        if (holder != chain.end()) {
            for (const Tag &inner : ChildTags(*holder)) {
                if (inner.name() == "enumeratedvalue"_L1 && count(inner, path))
                    readOption(inner, path, *enumeration);
            }
        }
        m_enumerations.insert(tag.number(), enumeration);
        return enumeration;
    }

    void readOption(const Tag &tag, const QString &outerPath, Enumeration &enumeration)
    {
        Option option;
        option.at = placeOf(tag);
        option.name = text({tag}, u"name");
        option.comment = text({tag}, u"description");
        option.isDefault = text({tag}, u"isdefault") == "true"_L1;
        const QString path = outerPath + u'.' + (option.name.isEmpty() ? u"enumeratedValue"_s : option.name);
        const std::optional<Tag> value = child({tag}, u"value");
        if (!value && !option.isDefault) {
            tell(rules::importNoNumber, tag, {path, u"value"_s});
            return;
        }
        if (value && !option.isDefault) {
            const QString written = value->allText().trimmed();
            const auto number = svdNumber(written, &option.dontCare);
            if (!number) {
                tell(rules::importNumber, *value, {path, u"value"_s, written.left(40), u""_s});
                return;
            }
            option.value = *number;
        }
        if (option.name.isEmpty())
            option.name = option.isDefault ? u"default"_s : u"value_"_s + QString::number(option.value);
        enumeration.options.push_back(std::move(option));
    }

    Tag m_root;
    QString m_file;
    Sink &m_sink;
    QHash<QStringView, Tag> m_peripherals;  // by name, the first of each
    std::unique_ptr<NamedElements> m_named; // made when something is derived
    QSet<int> m_open;                       // numbers of the clusters around
    QHash<int, std::shared_ptr<const Enumeration>> m_enumerations;
    QHash<int, std::shared_ptr<const std::vector<Part>>> m_parts_of;
    qint64 m_parts = 0;
    int m_errors = 0;
    bool m_isFull = false;
};

} // namespace

std::optional<quint64> svdNumber(QStringView text, quint64 *dontCare)
{
    text = text.trimmed();
    if (text.startsWith(u'+'))
        text = text.sliced(1);
    if (text.startsWith(u'#'))
        return bitsOf(text.sliced(1), dontCare);
    if (text.startsWith("0b"_L1, Qt::CaseInsensitive))
        return bitsOf(text.sliced(2), dontCare);
    int shift = 0;
    constexpr QStringView kUnits = u"kmgt";
    const qsizetype unit = text.isEmpty() ? -1 : kUnits.indexOf(text.back().toLower());
    if (unit >= 0) {
        shift = 10 * int(unit + 1);
        text = text.chopped(1);
    }
    const bool isHexadecimal = text.startsWith("0x"_L1, Qt::CaseInsensitive);
    const std::optional<quint64> number = isHexadecimal ? digits(text.sliced(2), 16) : digits(text, 10);
    if (!number || (*number << shift) >> shift != *number)
        return std::nullopt;
    return *number << shift;
}

std::unique_ptr<Device> readSvd(const Tag &root, const QString &file, Sink &sink)
{
    return SvdReader(root, file, sink).read();
}

} // namespace veldmap

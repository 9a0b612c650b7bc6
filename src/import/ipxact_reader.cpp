#include "import/ipxact_reader.h"

#include "findings/finding.h"
#include "findings/limits.h"
#include "import/ipxact_expression.h"
#include "import/rules.h"
#include "xml/tag_attributes.h"

#include <QRegularExpression>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

// An address block of such a file. In documents of 2009 the prefix is "spirit" and a register has the reset value:
//
//     <ipxact:memoryMaps><ipxact:memoryMap><ipxact:name>regs</ipxact:name>
//       <ipxact:addressBlock>
//         <ipxact:name>uart</ipxact:name> <ipxact:baseAddress>BASE*2</ipxact:baseAddress>
//         <ipxact:range>'h20</ipxact:range> <ipxact:register>
//           <ipxact:name>ctrl</ipxact:name> <ipxact:addressOffset>0</ipxact:addressOffset>
//           <ipxact:size>32</ipxact:size> <ipxact:field><ipxact:name>en</ipxact:name>
//           <ipxact:bitOffset>0</ipxact:bitOffset>
//             <ipxact:resets><ipxact:reset><ipxact:value>1</ipxact:value></ipxact:reset></ipxact:resets>
//             <ipxact:bitWidth>1</ipxact:bitWidth></ipxact:field>
//
// Access comes from the nearest element around that says it. Numbers are expressions in the component's parameters.

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

constexpr Word<Access> kAccessWords[] = {
    {"read-write"_L1, Access::ReadWrite},         {"read-only"_L1, Access::ReadOnly},
    {"write-only"_L1, Access::WriteOnly},         {"writeOnce"_L1, Access::WriteOnce},
    {"read-writeOnce"_L1, Access::ReadWriteOnce}, {"no-access"_L1, Access::None},
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
};
constexpr Word<Enumeration::Use> kUseWords[] = {
    {"read"_L1, Enumeration::Use::Read},
    {"write"_L1, Enumeration::Use::Write},
    {"read-write"_L1, Enumeration::Use::Both},
};

/// What of a component is read. All else in it is about other things than registers.
constexpr QLatin1StringView kReadOfComponent[] = {
    "vendor"_L1,        "library"_L1,    "name"_L1,        "version"_L1,    "displayname"_L1,
    "addressspaces"_L1, "memorymaps"_L1, "description"_L1, "parameters"_L1,
};
/// What registers and fields have no place for, but a reader of the source may look for.
constexpr QLatin1StringView kLeftOut[] = {
    "writevalueconstraint"_L1, "memoryremap"_L1, "subspacemap"_L1, "dependency"_L1, "accesspolicies"_L1,
};

/// The name of \a tag in lower case without its prefix.
QStringView localName(const Tag &tag)
{
    const QStringView name = tag.name();
    return name.sliced(name.lastIndexOf(u':') + 1);
}

std::optional<Tag> child(const Tag &tag, QStringView name)
{
    for (const Tag &inner : ChildTags(tag)) {
        if (localName(inner) == name)
            return inner;
    }
    return std::nullopt;
}

QString textOf(const Tag &tag)
{
    return tag.allText().trimmed().left(limits::kImportedTextCharacters);
}

QString text(const Tag &tag, QStringView name)
{
    const std::optional<Tag> inner = child(tag, name);
    return inner ? textOf(*inner) : QString();
}

/// The attribute of that local name, whatever its prefix.
QString attribute(const Tag &tag, QLatin1StringView name)
{
    for (const TagDocument::Attribute &each : tag.attributes()) {
        if (each.name.sliced(each.name.lastIndexOf(u':') + 1) == name)
            return each.value.toString();
    }
    return {};
}

template <std::size_t kCount>
bool isAmong(const QLatin1StringView (&words)[kCount], QStringView word)
{
    return std::ranges::any_of(words, [&](QLatin1StringView one) { return word == one; });
}

class IpxactReader {
public:
    IpxactReader(const Tag &root, const QString &file, Sink &sink) : m_root(root), m_file(file), m_sink(sink) {}

    std::unique_ptr<Device> read()
    {
        auto device = std::make_unique<Device>();
        device->file = m_file;
        device->at = placeOf(m_root);
        device->name = text(m_root, u"name");
        device->comment = commentOf(m_root);
        device->vendor = text(m_root, u"vendor");
        device->version = text(m_root, u"version");
        const QString path = device->name.isEmpty() ? u"component"_s : device->name;
        collectParameters(m_root);
        tellUnread(path);
        for (const Tag &tag : ChildTags(m_root)) {
            if (localName(tag) == "memorymaps"_L1)
                readMaps(tag, u"memorymap", *device);
            else if (localName(tag) == "addressspaces"_L1)
                readSpaces(tag, *device);
        }
        if (!m_errors && device->peripherals.empty())
            tell(rules::importEmpty, m_root, {path, u"address blocks"_s});
        return m_errors ? nullptr : std::move(device);
    }

private:
    /// What inner elements take over from outer ones.
    struct Outer {
        Access access = Access::ReadWrite;
        quint64 unitBits = 8;
        QString path;
    };

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

    // Parameters

    void collectParameters(const Tag &tag)
    {
        for (const Tag &inner : ChildTags(tag)) {
            if (const std::optional<Tag> value = child(inner, u"value")) {
                // A parameter has its id itself, or, in older documents, its value has it.
                for (const QString &id : {attribute(inner, "parameterId"_L1), attribute(*value, "id"_L1)}) {
                    if (!id.isEmpty())
                        m_parameters.add(id, textOf(*value));
                }
            }
            collectParameters(inner);
        }
    }

    void tellUnread(const QString &path)
    {
        for (const Tag &tag : ChildTags(m_root)) {
            if (!isAmong(kReadOfComponent, localName(tag)))
                tell(rules::importLeftOut, tag, {path, tag.nameAsWritten().toString()});
        }
    }

    void tellLeftOut(const Tag &tag, const QString &path)
    {
        for (const Tag &inner : ChildTags(tag)) {
            if (isAmong(kLeftOut, localName(inner)))
                tell(rules::importLeftOut, inner, {path, inner.nameAsWritten().toString()});
        }
    }

    // Numbers and words

    std::optional<quint64> numberIn(const Tag &tag, const QString &path, quint64 most)
    {
        const QString written = textOf(tag);
        const QString word = tag.nameAsWritten().toString();
        const std::optional<qint64> value = m_parameters.valueOf(written);
        if (!value)
            tell(rules::importNumber, tag, {path, word, written.left(80), u" or expression"_s});
        else if (static_cast<quint64>(*value) > most)
            tell(rules::importTooMuch, tag, {path, word, QString::number(*value), QString::number(most)});
        else
            return static_cast<quint64>(*value);
        return std::nullopt;
    }

    /// The number in the child \a name; an error is told where it has to be and is not.
    std::optional<quint64> number(const Tag &tag, QStringView name, const QString &path,
                                  quint64 most = std::numeric_limits<quint64>::max())
    {
        if (const std::optional<Tag> inner = child(tag, name))
            return numberIn(*inner, path, most);
        tell(rules::importNoNumber, tag, {path, name.toString()});
        return std::nullopt;
    }

    template <typename Value, std::size_t kCount>
    Value word(const Tag &tag, QStringView name, const Word<Value> (&words)[kCount], const QString &path, Value missing)
    {
        const std::optional<Tag> inner = child(tag, name);
        if (!inner)
            return missing;
        const QString written = textOf(*inner);
        const auto *const row = std::ranges::find(words, written, &Word<Value>::word);
        if (row != std::end(words))
            return row->value;
        tell(rules::importLeftOut, *inner, {path, inner->nameAsWritten().toString() + u' ' + written.left(40)});
        return missing;
    }

    /// \a units of the address as bytes, with an error told when they are none.
    std::optional<quint64> bytes(std::optional<quint64> units, const Tag &tag, const Outer &outer, const QString &path)
    {
        if (!units)
            return std::nullopt;
        if (outer.unitBits % 8 == 0)
            return *units * (outer.unitBits / 8);
        const quint64 bits = *units * outer.unitBits;
        if (bits % 8 == 0)
            return bits / 8;
        tell(rules::importNumber, tag, {path, u"its place"_s, QString::number(*units), u" of whole bytes"_s});
        return std::nullopt;
    }

    /// Whether an element is there at all, which a condition may decide.
    bool isPresent(const Tag &tag, const QString &path)
    {
        const std::optional<Tag> condition = child(tag, u"ispresent");
        if (!condition)
            return true;
        const std::optional<qint64> value = m_parameters.valueOf(textOf(*condition));
        if (!value)
            tell(rules::importNumber, *condition,
                 {path, u"isPresent"_s, textOf(*condition).left(80), u" or expression"_s});
        else if (*value == 0)
            tell(rules::importNotPresent, tag, {path});
        return value && *value != 0;
    }

    // Maps and blocks

    void readSpaces(const Tag &spaces, Device &device)
    {
        for (const Tag &space : ChildTags(spaces)) {
            if (localName(space) == "addressspace"_L1)
                readMaps(space, u"localmemorymap", device, unitBitsOf(space));
        }
    }

    /// 8 unless \a holder says otherwise.
    quint64 unitBitsOf(const Tag &holder)
    {
        constexpr quint64 kMost = 1024;
        const std::optional<Tag> unit = child(holder, u"addressunitbits");
        const std::optional<quint64> bits = unit ? numberIn(*unit, text(holder, u"name"), kMost) : std::nullopt;
        return bits && *bits > 0 ? *bits : 8;
    }

    void readMaps(const Tag &maps, QStringView name, Device &device, quint64 unitBits = 8)
    {
        for (const Tag &map : ChildTags(maps)) {
            if (localName(map) != name || isOver())
                continue;
            Outer outer;
            outer.path = text(map, u"name");
            outer.unitBits = child(map, u"addressunitbits") ? unitBitsOf(map) : unitBits;
            tellLeftOut(map, outer.path);
            readBlocks(map, outer, 0, device);
        }
    }

    /// Reads the blocks and banks in \a holder, from the address \a begin on; the address behind the last.
    quint64 readBlocks(const Tag &holder, const Outer &outer, quint64 begin, Device &device)
    {
        quint64 end = begin;
        const bool isBank = localName(holder) == "bank"_L1;
        const bool isParallel = isBank && attribute(holder, "bankAlignment"_L1) == "parallel"_L1;
        for (const Tag &tag : ChildTags(holder)) {
            const QStringView name = localName(tag);
            if ((name != "addressblock"_L1 && name != "bank"_L1) || isOver())
                continue;
            const QString path = outer.path + u'.' + text(tag, u"name");
            if (!isPresent(tag, path))
                continue;
            const quint64 inBank = isParallel ? begin : end;
            std::optional<quint64> address = inBank;
            if (!isBank)
                address = bytes(number(tag, u"baseaddress", path, 0xFFFFFFFF), tag, outer, path);
            if (!address)
                continue;
            if (name == "bank"_L1)
                end = readBank(tag, outer, path, *address, device);
            else
                end = readBlock(tag, outer, path, *address, device);
        }
        return end;
    }

    quint64 readBank(const Tag &tag, const Outer &outer, const QString &path, quint64 address, Device &device)
    {
        Outer inner = outer;
        inner.path = path;
        inner.access = word(tag, u"access", kAccessWords, path, outer.access);
        if (m_depth >= limits::kImportedDepth) {
            tellDepth(tag, path);
            return address;
        }
        ++m_depth;
        const quint64 end = readBlocks(tag, inner, address, device);
        --m_depth;
        return end;
    }

    void tellDepth(const Tag &tag, const QString &path)
    {
        tell(rules::importTooMuch, tag,
             {path, u"its depth"_s, QString::number(m_depth + 1), QString::number(limits::kImportedDepth)});
    }

    /// Reads one block; the address behind it.
    quint64 readBlock(const Tag &tag, const Outer &outer, const QString &path, quint64 address, Device &device)
    {
        Peripheral peripheral;
        peripheral.at = placeOf(tag);
        peripheral.name = text(tag, u"name");
        peripheral.comment = commentOf(tag);
        peripheral.typeName = text(tag, u"typeidentifier");
        peripheral.address = address;
        const std::optional<quint64> range = bytes(number(tag, u"range", path), tag, outer, path);
        if (!range || !count(tag, path))
            return address;
        if (peripheral.name.isEmpty()) {
            tell(rules::importEmpty, tag, {outer.path + ".addressBlock"_L1, u"name"_s});
            return address;
        }
        if (address > 0xFFFFFFFF) {
            tell(rules::importTooMuch, tag, {path, u"its address"_s, QString::number(address), u"4294967295"_s});
            return address;
        }
        const QString usage = text(tag, u"usage");
        peripheral.blocks.push_back({0, *range, usage, placeOf(tag)});
        Outer inner = outer;
        inner.path = path;
        inner.access = word(tag, u"access", kAccessWords, path, outer.access);
        tellLeftOut(tag, path);
        auto parts = std::make_shared<std::vector<Part>>();
        readParts(tag, inner, *parts);
        peripheral.parts = std::move(parts);
        device.peripherals.push_back(std::move(peripheral));
        return address + *range;
    }

    static QString commentOf(const Tag &tag)
    {
        static const QRegularExpression paragraph(u"\\n[ \\t\\r]*\\n\\s*"_s);
        QString comment = text(tag, u"description");
        // Texts of vendors' files say "\\n" twice where a paragraph ends.
        comment.replace(paragraph, u"\\n\\n"_s);
        return comment.isEmpty() ? text(tag, u"displayname") : comment;
    }

    // Registers

    void readParts(const Tag &holder, const Outer &outer, std::vector<Part> &parts)
    {
        for (const Tag &tag : ChildTags(holder)) {
            const QStringView name = localName(tag);
            const bool isFile = name == "registerfile"_L1;
            if ((!isFile && name != "register"_L1) || isOver())
                continue;
            const QString ownName = text(tag, u"name");
            Outer inner = outer;
            inner.path = outer.path + u'.' + ownName;
            if (ownName.isEmpty()) {
                tell(rules::importEmpty, tag, {outer.path + u'.' + tag.nameAsWritten().toString(), u"name"_s});
                continue;
            }
            if (!count(tag, inner.path) || !isPresent(tag, inner.path))
                continue;
            const std::optional<quint64> offset =
                bytes(number(tag, u"addressoffset", inner.path, 0xFFFFFFFF), tag, outer, inner.path);
            if (!offset)
                continue;
            Part part;
            part.at = placeOf(tag);
            part.name = ownName;
            part.comment = commentOf(tag);
            part.offset = *offset;
            part.typeName = text(tag, u"typeidentifier");
            tellLeftOut(tag, inner.path);
            if (isFile ? readFile(tag, inner, part) : readRegister(tag, inner, part)) {
                parts.push_back(std::move(part));
                if (!isFile)
                    readAlternates(tag, inner, parts);
            }
        }
    }

    /// Reads how often what \a tag tells of stands there, each \a step bytes from the one before.
    bool readRepeat(const Tag &tag, const QString &path, quint64 step, Repeat &repeat)
    {
        int dimensions = 0;
        quint64 count = 1;
        for (const Tag &inner : ChildTags(tag)) {
            if (localName(inner) != "dim"_L1)
                continue;
            const auto most = static_cast<quint64>(limits::kArrayElements);
            const std::optional<quint64> dim = numberIn(inner, path, most);
            if (!dim)
                return false;
            if (*dim == 0) // as some editors write for what is no array
                continue;
            ++dimensions;
            count *= *dim;
            if (count > most) {
                tell(rules::importTooMuch, inner, {path, u"dim"_s, QString::number(count), QString::number(most)});
                return false;
            }
            if (dimensions > 1)
                tell(rules::importFlattened, inner, {path});
        }
        if (dimensions > 0)
            repeat = {static_cast<quint32>(count), step, {}, true};
        return true;
    }

    bool readFile(const Tag &tag, const Outer &outer, Part &file)
    {
        file.isCluster = true;
        if (m_depth >= limits::kImportedDepth) {
            tellDepth(tag, outer.path);
            return false;
        }
        const std::optional<quint64> range = bytes(number(tag, u"range", outer.path), tag, outer, outer.path);
        if (!range || !readRepeat(tag, outer.path, *range, file.repeat))
            return false;
        Outer inner = outer;
        inner.access = word(tag, u"access", kAccessWords, outer.path, outer.access);
        ++m_depth;
        readParts(tag, inner, file.parts);
        --m_depth;
        return true;
    }

    bool readRegister(const Tag &tag, const Outer &outer, Part &part)
    {
        constexpr quint64 kMostBits = 1024;
        const std::optional<quint64> size = number(tag, u"size", outer.path, kMostBits);
        if (!size)
            return false;
        if (*size == 0) {
            tell(rules::importNumber, tag, {outer.path, u"size"_s, u"0"_s, u" of bits"_s});
            return false;
        }
        part.size = static_cast<int>(*size);
        // Members of an array follow one another in whole units of the address.
        const quint64 units = (*size + outer.unitBits - 1) / outer.unitBits;
        return readRepeat(tag, outer.path, (units * outer.unitBits + 7) / 8, part.repeat) &&
               readInside(tag, outer, part);
    }

    /// Reads what a register and another view of it have alike.
    bool readInside(const Tag &tag, const Outer &outer, Part &part)
    {
        part.access = word(tag, u"access", kAccessWords, outer.path, outer.access);
        if (const std::optional<Tag> reset = child(tag, u"reset")) {
            part.reset = number(*reset, u"value", outer.path);
            if (const std::optional<Tag> mask = child(*reset, u"mask"))
                part.resetMask = numberIn(*mask, outer.path, ~quint64(0)).value_or(~quint64(0));
        }
        for (const Tag &inner : ChildTags(tag)) {
            if (localName(inner) != "field"_L1 || isOver())
                continue;
            if (std::optional<Field> field = readField(inner, outer, part))
                part.fields.push_back(*std::move(field));
        }
        return true;
    }

    void readAlternates(const Tag &tag, const Outer &outer, std::vector<Part> &parts)
    {
        const std::optional<Tag> alternates = child(tag, u"alternateregisters");
        if (!alternates)
            return;
        const Part main = parts.back();
        for (const Tag &inner : ChildTags(*alternates)) {
            if (localName(inner) != "alternateregister"_L1 || isOver())
                continue;
            Outer own = outer;
            own.path = outer.path + u'.' + text(inner, u"name");
            if (!count(inner, own.path) || !isPresent(inner, own.path))
                continue;
            Part part;
            part.at = placeOf(inner);
            part.name = text(inner, u"name");
            part.comment = commentOf(inner);
            part.offset = main.offset;
            part.repeat = main.repeat;
            part.size = main.size;
            part.alternateOf = main.name;
            if (part.name.isEmpty())
                tell(rules::importEmpty, inner, {outer.path + ".alternateRegister"_L1, u"name"_s});
            else if (readInside(inner, own, part))
                parts.push_back(std::move(part));
        }
    }

    // Fields

    /// Whether an export has made the field for a register that has none.
    static bool isWholeRegister(const Tag &field)
    {
        const std::optional<Tag> extensions = child(field, u"vendorextensions");
        return extensions && child(*extensions, u"wholeregister");
    }

    std::optional<Field> readField(const Tag &tag, const Outer &outer, const Part &part)
    {
        constexpr quint64 kLastBit = 1023;
        if (isWholeRegister(tag))
            return std::nullopt;
        Field field;
        field.at = placeOf(tag);
        field.name = text(tag, u"name");
        const QString path = outer.path + u'.' + field.name;
        if (field.name.isEmpty()) {
            tell(rules::importEmpty, tag, {outer.path + ".field"_L1, u"name"_s});
            return std::nullopt;
        }
        if (!count(tag, path) || !isPresent(tag, path))
            return std::nullopt;
        field.comment = commentOf(tag);
        const std::optional<quint64> lowest = number(tag, u"bitoffset", path, kLastBit);
        const std::optional<quint64> width = number(tag, u"bitwidth", path, kLastBit + 1);
        if (!lowest || !width)
            return std::nullopt;
        if (*width == 0) {
            tell(rules::importNumber, tag, {path, u"bitWidth"_s, u"0"_s, u" of bits"_s});
            return std::nullopt;
        }
        field.lowest = static_cast<int>(*lowest);
        field.width = static_cast<int>(*width);
        field.access = word(tag, u"access", kAccessWords, path, part.access);
        field.onWrite = word(tag, u"modifiedwritevalue", kWriteWords, path, OnWrite::Modify);
        field.onRead = word(tag, u"readaction", kReadWords, path, OnRead::Nothing);
        field.reset = resetOf(tag, path, field.width);
        tellLeftOut(tag, path);
        if (const std::optional<Tag> values = child(tag, u"enumeratedvalues"))
            readOptions(*values, path, field);
        return field;
    }

    /// The reset value that all bits of a field have, where it has one.
    std::optional<quint64> resetOf(const Tag &field, const QString &path, int width)
    {
        const std::optional<Tag> resets = child(field, u"resets");
        if (!resets)
            return std::nullopt;
        std::optional<Tag> taken;
        for (const Tag &tag : ChildTags(*resets)) {
            if (localName(tag) != "reset"_L1)
                continue;
            // That of no type in particular is the one of power on.
            const bool isPowerOn = attribute(tag, "resetTypeRef"_L1).isEmpty();
            if (!taken)
                taken = tag;
            else
                tell(rules::importLeftOut, isPowerOn ? *taken : tag, {path, u"reset of another type"_s});
            if (isPowerOn)
                taken = tag;
        }
        if (!taken)
            return std::nullopt;
        const std::optional<quint64> value = number(*taken, u"value", path);
        const std::optional<Tag> mask = child(*taken, u"mask");
        const quint64 all = width >= 64 ? ~quint64(0) : (quint64(1) << width) - 1;
        if (!value || !mask)
            return value;
        const std::optional<quint64> known = numberIn(*mask, path, ~quint64(0));
        if (known && (*known & all) == all)
            return value;
        if (known && (*known & all) != 0)
            tell(rules::importPartlyReset, *taken, {path});
        return std::nullopt;
    }

    void readOptions(const Tag &values, const QString &path, Field &field)
    {
        // Values for reading and for writing alone are sets of their own.
        for (const auto &[usage, use] : kUseWords) {
            auto enumeration = std::make_shared<Enumeration>();
            enumeration->at = placeOf(values);
            enumeration->use = use;
            for (const Tag &tag : ChildTags(values)) {
                const QString given = attribute(tag, "usage"_L1);
                if (localName(tag) == "enumeratedvalue"_L1 && (given.isEmpty() ? u"read-write"_s : given) == usage)
                    readOption(tag, path, *enumeration);
            }
            if (!enumeration->options.empty())
                field.enumerations.push_back(std::move(enumeration));
        }
    }

    void readOption(const Tag &tag, const QString &outerPath, Enumeration &enumeration)
    {
        Option option;
        option.at = placeOf(tag);
        option.name = text(tag, u"name");
        option.comment = commentOf(tag);
        const QString path = outerPath + u'.' + (option.name.isEmpty() ? u"enumeratedValue"_s : option.name);
        if (!count(tag, path))
            return;
        const std::optional<quint64> value = number(tag, u"value", path);
        if (!value)
            return;
        option.value = *value;
        if (option.name.isEmpty())
            option.name = u"value_"_s + QString::number(*value);
        enumeration.options.push_back(std::move(option));
    }

    Tag m_root;
    QString m_file;
    Sink &m_sink;
    IpxactParameters m_parameters;
    qint64 m_parts = 0;
    int m_depth = 0; // of banks, or of register files
    int m_errors = 0;
    bool m_isFull = false;
};

} // namespace

std::unique_ptr<Device> readIpxact(const Tag &root, const QString &file, Sink &sink)
{
    return IpxactReader(root, file, sink).read();
}

} // namespace veldmap

#include "loading/archive_reader.h"

#include "loading/rules.h"
#include "model/scalars.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

template <typename Register>
std::unique_ptr<VMValuable> makeRegister(const QString &name, bool readable, bool writable)
{
    return std::make_unique<Register>(name, readable, writable);
}

/// Software can always read and write its own integers.
template <typename Integer>
std::unique_ptr<VMValuable> makeInteger(const QString &name, bool, bool)
{
    return std::make_unique<Integer>(name);
}

struct ValuableRow {
    QLatin1StringView tag;
    std::unique_ptr<VMValuable> (*create)(const QString &name, bool readable, bool writable);
};
constexpr ValuableRow kValuables[] = {
    {"reg"_L1, makeRegister<VMRegister32>},
    {"reg32"_L1, makeRegister<VMRegister32>},
    {"reg16"_L1, makeRegister<VMRegister16>},
    {"reg8"_L1, makeRegister<VMRegister8>},
    {"ireg"_L1, makeRegister<VMInternalRegister8>},
    {"uint"_L1, makeInteger<VMUnsignedInt32>},
    {"uint32"_L1, makeInteger<VMUnsignedInt32>},
    {"uint16"_L1, makeInteger<VMUnsignedInt16>},
    {"uint8"_L1, makeInteger<VMUnsignedInt8>},
    {"int"_L1, makeInteger<VMInt32>},
    {"int32"_L1, makeInteger<VMInt32>},
    {"int16"_L1, makeInteger<VMInt16>},
    {"int8"_L1, makeInteger<VMInt8>},
    {"bool"_L1, makeInteger<VMBoolean>},
    {"void"_L1, makeInteger<VMVoid>}, // no tag of a description leads here
};

/// The row of a tag, or null.
const ValuableRow *findValuable(QStringView tagName)
{
    const auto row = std::ranges::find_if(kValuables, [&](const ValuableRow &r) { return r.tag == tagName; });
    return row == std::end(kValuables) ? nullptr : row;
}

} // namespace

const ArchiveReader::MemberTag *ArchiveReader::findMemberTag(QStringView tagName)
{
    static constexpr MemberTag kValuableMember = {{}, nullptr, true, true};
    static constexpr MemberTag kMembers[] = {
        {"hole"_L1, &ArchiveReader::readHole, true, false},
        {"struct"_L1, &ArchiveReader::readStruct, true, true},
        {"instance"_L1, &ArchiveReader::readInnerInstance, true, true},
        {"ptr"_L1, &ArchiveReader::readPointer, true, true},
        {"memory"_L1, &ArchiveReader::readMemory, true, false},
    };
    const auto row = std::ranges::find_if(kMembers, [&](const MemberTag &r) { return r.tag == tagName; });
    if (row != std::end(kMembers))
        return row;
    return tagName != "void"_L1 && findValuable(tagName) ? &kValuableMember : nullptr;
}

ArchiveReader::Element ArchiveReader::readMember(const MemberTag &row, const Tag &tag, VMXMLArchive &archive,
                                                 const QString &parentName)
{
    m_builder.countDeclared();
    return row.read ? (this->*row.read)(tag, archive, parentName)
                    : readValuable(tag, archive, parentName, tag.name().toString());
}

ArchiveReader::Element ArchiveReader::readValuable(const Tag &tag, VMXMLArchive &archive, const QString &parentName,
                                                   const QString &tagName)
{
    const QString name = readName(tag, u"name");
    const QString protect = readText(tag, u"protect");
    Count count = readCount(tag);
    if (!evaluateArrayCount(count, tag, archive, parentName, tagName, name))
        return nullptr;
    if (name.isEmpty()) {
        fail(tag, archive, rules::valuableWithoutName, {tagName});
        return nullptr;
    }
    const ValuableRow *row = findValuable(tagName);
    if (!row) {
        fail(tag, archive, rules::foreignTagInModule, {tagName});
        return nullptr;
    }
    auto valuable = row->create(name, protect.contains(u'r'), protect.contains(u'w'));
    valuable->source = sourceOf(tag);
    valuable->cKeywords += readKeywords(tag);
    if (const QString display = readText(tag, u"display", u"notdef"_s); display != "notdef"_L1)
        valuable->displayType = displayOf(display);
    for (const Tag &child : ChildTags(tag)) {
        if (!readValuableChild(child, *valuable, archive, tagName))
            return nullptr;
    }
    valuable->buildPhysicalMap();
    qint64 positionCharacters = 0;
    for (const auto &field : valuable->bitFields)
        positionCharacters += field->physicalUpPosExpression.size() + field->physicalDownPosExpression.size();
    if (const Refusal refused = m_builder.countText(positionCharacters)) {
        fail(tag, archive, refused);
        return nullptr;
    }
    if (count.isArray)
        valuable->declaredType = tagName;
    return arrayOf(std::move(valuable), count, name, tag, archive);
}

bool ArchiveReader::readValuableChild(const Tag &child, VMValuable &valuable, VMXMLArchive &archive,
                                      const QString &tagName)
{
    const QStringView childName = child.name();
    if (childName == "bits"_L1)
        return readBits(child, valuable, archive);
    if (childName == "bitgroup"_L1)
        return readBitgroup(child, valuable, archive);
    if (childName == "l"_L1)
        valuable.lowName = readText(child, u"name");
    else if (childName == "h"_L1)
        valuable.highName = readText(child, u"name");
    else if (!takeComment(child, valuable.comment))
        return fail(child, archive, rules::foreignTagInValuable, {tagName, valuable.getName(), childName.toString()});
    return true;
}

} // namespace veldmap

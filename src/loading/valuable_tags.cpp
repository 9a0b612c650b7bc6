#include "loading/load_budget.h"
#include "loading/member_tags.h"
#include "xml/tag_attributes.h"
#include "model/scalars.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;
using veldmap::readName;
using veldmap::readText;
using veldmap::Tag;

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

} // namespace

const VMArchiveLoader::MemberTagRow *VMArchiveLoader::findMemberTag(QStringView tagName)
{
    using Inner = MemberTagRow::Read;
    static constexpr MemberTagRow kValuableMember = {{}, nullptr, true, true, true};
    static const MemberTagRow kMembers[] = {
        {"hole"_L1, &VMArchiveLoader::manageHoleTag, false, true, false},
        {"struct"_L1, &VMArchiveLoader::manageStructTag, false, true, true},
        {"instance"_L1, static_cast<Inner>(&VMArchiveLoader::manageInstanceTag), false, true, true},
        {"ptr"_L1, &VMArchiveLoader::managePtrTag, false, true, true},
        {"memory"_L1, &VMArchiveLoader::manageMemoryTag, false, true, false},
    };
    const auto row = std::ranges::find_if(kMembers, [&](const MemberTagRow &r) { return r.tag == tagName; });
    if (row != std::end(kMembers))
        return row;
    const bool isValuable =
        tagName != "void"_L1 && std::ranges::any_of(kValuables, [&](const ValuableRow &r) { return r.tag == tagName; });
    return isValuable ? &kValuableMember : nullptr;
}

std::unique_ptr<VMXMLElement> VMArchiveLoader::readMember(const MemberTagRow &row, const Tag &tag,
                                                          VMXMLArchive *archive, const QString &parentName,
                                                          QStringView tagName)
{
    ++m_budget->declaredElements;
    return std::unique_ptr<VMXMLElement>(row.isValuable
                                             ? manageValuableTag(tag, archive, parentName, tagName.toString())
                                             : (this->*row.read)(tag, archive, parentName));
}

VMXMLElement *VMArchiveLoader::manageValuableTag(const Tag &tag, VMXMLArchive *archive, const QString &parentName,
                                                 const QString &tagName)
{
    const QString name = readName(tag, u"name");
    const QString protect = readText(tag, u"protect");
    veldmap::Count count = veldmap::readCount(tag);
    if (!readArrayCount(count, tag, *archive, parentName, tagName, name))
        return nullptr;
    if (name.isEmpty()) {
        fail(tag, *archive, u"Module contains an unamed %1\n"_s.arg(tagName));
        return nullptr;
    }
    const auto row = std::ranges::find_if(kValuables, [&](const ValuableRow &r) { return r.tag == tagName; });
    if (row == std::end(kValuables)) {
        fail(tag, *archive, u"Module contains an unvalid %1 tag.\n"_s.arg(tagName));
        return nullptr;
    }
    auto valuable = row->create(name, protect.contains(u'r'), protect.contains(u'w'));
    valuable->cKeywords += veldmap::readKeywords(tag);
    if (const QString display = readText(tag, u"display", u"notdef"_s); display != "notdef"_L1)
        valuable->displayType = veldmap::displayOf(display);
    for (const Tag &child : veldmap::ChildTags(tag)) {
        if (!readValuableChild(child, *valuable, archive, tagName))
            return nullptr;
    }
    valuable->buildPhysicalMap();
    qint64 positionCharacters = 0;
    for (const auto &field : valuable->bitFields)
        positionCharacters += field->physicalUpPosExpression.size() + field->physicalDownPosExpression.size();
    if (!mayKeepText(positionCharacters, tag, *archive))
        return nullptr;
    if (count.isArray)
        valuable->declaredType = tagName;
    return arrayOf(std::move(valuable), count, name, tag, *archive);
}

bool VMArchiveLoader::readValuableChild(const Tag &child, VMValuable &valuable, VMXMLArchive *archive,
                                        QStringView tagName)
{
    const QStringView childName = child.name();
    if (childName == "bits"_L1)
        return manageBitsTag(child, &valuable, archive);
    if (childName == "bitgroup"_L1)
        return manageBitgroupTag(child, &valuable, archive);
    if (childName == "l"_L1)
        valuable.lowName = readText(child, u"name");
    else if (childName == "h"_L1)
        valuable.highName = readText(child, u"name");
    else if (!veldmap::takeComment(child, valuable.comment))
        return fail(child, *archive,
                    u"%1 %2 contains an unvalid %3 tag.\n"_s.arg(tagName, valuable.getName(), childName));
    return true;
}

bool VMArchiveLoader::readArrayCount(veldmap::Count &count, const Tag &tag, const VMXMLArchive &archive,
                                     const QString &parentName, QStringView type, const QString &name)
{
    if (!count.isArray)
        return true;
    const Evaluated number = evaluate(count.expression, archive);
    if (number.failed)
        return fail(tag, archive,
                    u"Tag defining '%1' contains %2 array '%3' with an error in its count expression !"_s.arg(
                        parentName, type, name));
    if (number.value < 0)
        return fail(
            tag, archive,
            u"Invalid '%1' array count of type '%2' for array '%3'\n"_s.arg(QString::number(number.value), type, name));
    count.value = number.value;
    return true;
}

#include "loading/archive_reader.h"

#include "loading/rules.h"
#include "model/kinds.h"
#include "model/valuable.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap {

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
    return scalarKindNamed(tagName, kMemberTag) ? &kValuableMember : nullptr;
}

ArchiveReader::Element ArchiveReader::readMember(const MemberTag &row, const Tag &tag, VMXMLArchive &archive,
                                                 const QString &parentName)
{
    m_builder.countDeclared();
    if (!checkName(tag, archive))
        return nullptr;
    return row.read ? (this->*row.read)(tag, archive, parentName)
                    : readValuable(tag, archive, parentName, m_builder.texts().of(tag.name()));
}

ArchiveReader::Element ArchiveReader::readValuable(const Tag &tag, VMXMLArchive &archive, const QString &parentName,
                                                   const QString &tagName)
{
    const QString name = sharedName(tag, u"name");
    const QString protect = readText(tag, u"protect");
    Count count = readCount(tag);
    if (!evaluateArrayCount(count, tag, archive, parentName, tagName, name))
        return nullptr;
    if (name.isEmpty()) {
        fail(tag, archive, rules::valuableWithoutName, {tagName});
        return nullptr;
    }
    const ScalarKind *kind = scalarKindNamed(tagName, kAnyUse); // a host may ask for a void too
    if (!kind) {
        fail(tag, archive, rules::foreignTagInModule, {tagName});
        return nullptr;
    }
    auto valuable = kind->make(name, protect.contains(u'r'), protect.contains(u'w'));
    valuable->source = sourceOf(tag);
    valuable->cKeywords += readKeywords(tag);
    if (const QString display = readText(tag, u"display", u"notdef"_s); display != "notdef"_L1)
        valuable->displayType = displayOf(display);
    m_lostFields.clear();
    m_groups.clear();
    m_knownGroups = 0;
    for (const Tag &child : ChildTags(tag)) {
        if (!readValuableChild(child, *valuable, archive, tagName) && !m_goesOn)
            return nullptr;
    }
    valuable->bitFields.shrink_to_fit();
    valuable->bitGroups.shrink_to_fit();
    valuable->buildPhysicalMap();
    qint64 positionCharacters = 0;
    for (const auto &field : valuable->bitFields) {
        for (QString *text : {&field->physicalUpPosExpression, &field->physicalDownPosExpression}) {
            positionCharacters += text->size();
            if (text->size() > 2) // numbers of bits are shared already
                *text = m_builder.texts().of(*text);
        }
    }
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
        valuable.lowName = sharedText(child, u"name");
    else if (childName == "h"_L1)
        valuable.highName = sharedText(child, u"name");
    else if (!takeSharedComment(child, valuable.comment))
        return fail(child, archive, rules::foreignTagInValuable, {tagName, valuable.getName(), childName.toString()});
    return true;
}

} // namespace veldmap

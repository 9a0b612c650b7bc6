#include "loading/archive_reader.h"

#include "loading/rules.h"
#include "model/valuable.h"
#include "text/nearest_name.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

bool ArchiveReader::readBitgroup(const Tag &tag, VMValuable &valuable, VMXMLArchive &archive)
{
    if (!checkName(tag, archive))
        return false;
    auto group = std::make_unique<VMBitGroup>(sharedName(tag, u"name"), &valuable);
    group->source = sourceOf(tag);
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        const bool isEntry = childName == "entry"_L1;
        if (!isEntry)
            fail(tag, archive, rules::foreignTagInGroup, {group->name, childName.toString()});
        if ((!isEntry || !readBitgroupEntry(child, *group, archive)) && !m_goesOn)
            return false;
    }
    valuable.addBitGroup(group.release());
    return true;
}

const VMBitGroup *ArchiveReader::findGroup(const VMValuable &valuable, const QString &name)
{
    for (; m_knownGroups < valuable.bitGroups.size(); ++m_knownGroups) {
        const VMBitGroup *group = valuable.bitGroups[m_knownGroups].get();
        if (!m_groups.contains(group->name))
            m_groups.insert(group->name, group);
    }
    return m_groups.value(name);
}

bool ArchiveReader::readBitgroupEntry(const Tag &tag, VMBitGroup &group, VMXMLArchive &archive)
{
    const QString reference = readName(tag, u"ref");
    VMBitField *field = group.valuable->getBitFieldByName(reference);
    const VMBitGroup *other = findGroup(*group.valuable, reference);
    if (!field && !other)
        return failReference(reference, tag, group, archive);
    if (const Refusal refused = m_builder.countCopies((field ? 1 : 0) + (other ? other->size() : 0)))
        return fail(tag, archive, refused);
    if (field)
        group.addBitField(field);
    if (other)
        group.addBitGroup(other);
    return true;
}

bool ArchiveReader::failReference(const QString &reference, const Tag &tag, const VMBitGroup &group,
                                  const VMXMLArchive &archive)
{
    m_hasFailed = true;
    if (m_lostFields.contains(reference)) // which is why it is not there
        return false;
    Finding finding(rules::groupReference, {archive.getTotalPath(), tag.lineNumber(), tag.columnNumber()},
                    {group.name, reference});
    NearestName nearest(reference);
    for (const auto &field : group.valuable->bitFields)
        nearest.offer(field->getName());
    for (const auto &known : group.valuable->bitGroups)
        nearest.offer(known->name);
    if (!nearest.name().isEmpty())
        finding.hint = u"did you mean '%1'?"_s.arg(nearest.name());
    tell(finding);
    return false;
}

bool ArchiveReader::readOptions(const Tag &tag, VMBitField &field, VMXMLArchive &archive)
{
    const QString linkedName = readText(tag, u"linkenum");
    const VMEnum *linked = nullptr;
    if (!linkedName.isEmpty()) {
        linked = m_builder.findEnum(linkedName, archive);
        if (!linked)
            return failUnknown(linkedName, tag, archive, rules::optionsEnum, {field.getName(), linkedName});
    }
    VMBitFieldOptions &options = field.options;
    bool isToldBeside = false;
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (childName == "option"_L1 && linked) {
            if (!std::exchange(isToldBeside, true))
                fail(child, archive, rules::optionBesideEnum, {field.getName(), linkedName});
            if (!m_goesOn)
                return false;
        } else if (childName == "option"_L1) {
            if (!readOption(child, options, archive) && !m_goesOn)
                return false;
        } else if (childName == "default"_L1) {
            options.hasDefault = true;
        } else if (childName == "mask"_L1) {
            options.hasMask = true;
        } else if (childName == "shift"_L1) {
            options.hasShift = true;
        } else {
            fail(child, archive, rules::foreignTagInOptions, {field.getName(), childName.toString()});
            if (!m_goesOn)
                return false;
        }
    }
    if (!linked) {
        options.optionList.squeeze();
        return true;
    }
    if (const Refusal refused = m_builder.countCopies(linked->size()))
        return fail(tag, archive, refused);
    if (options.optionList.isEmpty())
        options.optionList = m_builder.optionsOf(*linked);
    else
        options.optionList += m_builder.optionsOf(*linked);
    return true;
}

bool ArchiveReader::readOption(const Tag &tag, VMBitFieldOptions &options, VMXMLArchive &archive)
{
    if (!checkName(tag, archive))
        return false;
    VMBitFieldOption option;
    option.name = sharedName(tag, u"name");
    option.source = sourceOf(tag);
    const QString expression = readText(tag, u"value", u"0"_s);
    const Evaluated value = evaluate(expression, archive);
    if (value.failed)
        return failEvaluation(tag, archive, rules::optionExpression, {expression, value.message}, value);
    option.value = value.value;
    for (const Tag &child : ChildTags(tag)) {
        if (takeSharedComment(child, option.comment))
            continue;
        fail(child, archive, rules::foreignTagInOption, {option.name, child.name().toString()});
        if (!m_goesOn)
            return false;
    }
    options.optionList.append(option);
    return true;
}

} // namespace veldmap

#include "loading/archive_loader.h"

#include "xml/tag_attributes.h"
#include "model/valuable.h"

using namespace Qt::StringLiterals;
using veldmap::ChildTags;
using veldmap::readName;
using veldmap::readText;
using veldmap::Tag;

bool VMArchiveLoader::manageBitgroupTag(const Tag &tag, VMValuable *valuable, VMXMLArchive *archive)
{
    auto group = std::make_unique<VMBitGroup>(readName(tag, u"name"), valuable);
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (childName != "entry"_L1)
            return fail(tag, *archive, u"Bitgroup %1 contains an unvalid %2 tag.\n"_s.arg(group->name, childName));
        if (!manageBitgroupEntryTag(child, group.get(), archive))
            return false;
    }
    valuable->addBitGroup(group.release());
    return true;
}

bool VMArchiveLoader::manageBitgroupEntryTag(const Tag &tag, VMBitGroup *group, VMXMLArchive *archive)
{
    const QString reference = readName(tag, u"ref");
    VMBitField *field = group->valuable->getBitFieldByName(reference);
    const VMBitGroup *other = group->valuable->getBitGroupByName(reference);
    if (!field && !other)
        return fail(tag, *archive,
                    u"Bitgroup '%1' contains an undefined bitfield or bitgroup '%2'.\n"_s.arg(group->name, reference));
    if (!mayCopy((field ? 1 : 0) + (other ? other->size() : 0), tag, *archive))
        return false;
    if (field)
        group->addBitField(field);
    if (other)
        group->addBitGroup(other);
    return true;
}

bool VMArchiveLoader::manageOptionsTag(const Tag &tag, VMBitField *field, VMXMLArchive *archive)
{
    const QString linkedName = readText(tag, u"linkenum");
    const VMEnum *linked = nullptr;
    if (!linkedName.isEmpty()) {
        linked = archive->variables->getEnumByName(linkedName);
        if (!linked)
            return fail(
                tag, *archive,
                u"Options of bitfield '%1' is linked to an undefined enum '%2'.\n"_s.arg(field->getName(), linkedName));
    }
    VMBitFieldOptions &options = field->options;
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (childName == "option"_L1 && linked)
            return fail(child, *archive,
                        u"Options of bitfield '%1' is linked to enum '%2' but tries to define an other option.\n"_s.arg(
                            field->getName(), linkedName));
        if (childName == "option"_L1) {
            if (!manageOptionsOptionTag(child, &options, archive))
                return false;
        } else if (childName == "default"_L1) {
            options.hasDefault = true;
        } else if (childName == "mask"_L1) {
            options.hasMask = true;
        } else if (childName == "shift"_L1) {
            options.hasShift = true;
        } else {
            return fail(child, *archive,
                        u"Options of bitfield '%1' contains an unvalid '%2' tag.\n"_s.arg(field->getName(), childName));
        }
    }
    if (!linked)
        return true;
    if (!mayCopy(linked->size(), tag, *archive))
        return false;
    for (const VMIntVar &entry : *linked)
        options.optionList.append({entry.name, entry.leftValue, entry.comment});
    return true;
}

bool VMArchiveLoader::manageOptionsOptionTag(const Tag &tag, VMBitFieldOptions *options, VMXMLArchive *archive)
{
    VMBitFieldOption option;
    option.name = readName(tag, u"name");
    const QString expression = readText(tag, u"value", u"0"_s);
    const Evaluated value = evaluate(expression, *archive);
    if (value.failed)
        return fail(tag, *archive, u"Option expression %1 : %2\n"_s.arg(expression, value.message));
    option.value = value.value;
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (!veldmap::takeComment(child, option.comment))
            return fail(child, *archive,
                        u"Bitfield options '%1' contains an unvalid '%2' tag.\n"_s.arg(option.name, childName));
    }
    options->optionList.append(option);
    return true;
}

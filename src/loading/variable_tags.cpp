#include "loading/archive_loader.h"

#include "text/bit_arithmetic.h"
#include "xml/tag_attributes.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/scalars.h"

using namespace Qt::StringLiterals;
using veldmap::readFlag;
using veldmap::readName;
using veldmap::readOnlyComment;
using veldmap::readText;
using veldmap::Tag;

namespace {

/// The template that lets an enum serve as a type: an integer whose one bitfield has the entries as options.
std::unique_ptr<VMInt32> enumTemplateOf(const VMEnum &source)
{
    auto valuable = std::make_unique<VMInt32>(u"unused"_s);
    valuable->typedefName = source.name;
    auto field = std::make_unique<VMBitField>(u"enum"_s, true, 1, u"31"_s, 31, u"0"_s, 0, 0, true, DISPLAY_HEX);
    for (const VMIntVar &entry : source)
        field->options.optionList.append({entry.name, entry.leftValue, entry.comment});
    valuable->addBitField(field.release());
    valuable->enumTemplate = true;
    return valuable;
}

/// Cuts the entries of \a owner, which failed to load, loose from it; they stay in the table of the archive.
void disownEntries(VMXMLArchive &archive, const VMEnum *owner)
{
    for (VMIntVar &variable : *archive.variables) {
        if (variable.ownerEnum == owner)
            variable.ownerEnum = nullptr;
    }
}

/// The manager of the global variables, or, for an archive outside a memory map, its own.
VMVariableManager &globalManagerOf(VMXMLArchive &archive)
{
    const VMRootArchive *root = archive.getRootArchive();
    return root && root->memoryMap ? *root->memoryMap->globalVariables : *archive.variables;
}

} // namespace

bool VMArchiveLoader::manageVarTag(const Tag &tag, VMXMLArchive *archive)
{
    const QString name = readName(tag, u"name");
    const QString value = readText(tag, u"value");
    const bool global = readFlag(tag, u"global");
    if (name.isEmpty())
        return fail(tag, *archive, u"A variable of the archive '%1' has no name!"_s.arg(archive->getBaseName()));
    if (value.isEmpty())
        return fail(tag, *archive,
                    u"The variable '%1' of the archive '%2' has no value!"_s.arg(name, archive->getBaseName()));

    VMVariableManager &manager = global ? globalManagerOf(*archive) : *archive->variables;
    QString message;
    bool error = false;
    manager.evalExpressionAndAddVar(name, value, readOnlyComment(tag), nullptr, message, error);
    if (error)
        return fail(tag, *archive,
                    u"In archive '%1', variable '%2' declaration : %3"_s.arg(archive->getBaseName(), name, message));
    return true;
}

bool VMArchiveLoader::manageRangeTag(const Tag &tag, VMXMLArchive *archive)
{
    const QString name = readName(tag, u"name");
    const QString left = readText(tag, u"left");
    const QString right = readText(tag, u"right");
    const QString direction = readText(tag, u"dir", u"down"_s);
    if (name.isEmpty())
        return fail(tag, *archive, u"Range has no name!"_s);
    if (left.isEmpty() || right.isEmpty())
        return fail(tag, *archive, u"The range '%1' misses left or right value!"_s.arg(name));
    if (direction != "up"_L1 && direction != "down"_L1)
        return fail(tag, *archive, u"Invalid direction '%1' for range '%2' ."_s.arg(direction, name));

    QString message;
    bool error = false;
    archive->variables->evalExpressionAndAddRange(
        name, left, right, direction == "up"_L1 ? VMIntVar::up : VMIntVar::down, readOnlyComment(tag), message, error);
    if (error)
        return fail(tag, *archive, u"In range '%1' declaration : %2"_s.arg(name, message));
    return true;
}

bool VMArchiveLoader::manageEnumTag(const Tag &tag, VMXMLArchive *archive)
{
    auto created = std::make_unique<VMEnum>();
    created->name = readName(tag, u"name");
    for (const Tag &child : veldmap::ChildTags(tag)) {
        const QStringView childName = child.name();
        bool read = true;
        if (childName == "entry"_L1)
            read = manageEnumEntryTag(child, created.get(), archive);
        else if (childName == "bound"_L1)
            read = manageEnumBoundTag(child, created.get(), archive);
        else if (!veldmap::takeComment(child, created->comment))
            read = fail(child, *archive, u"Enum '%1' contains an unvalid '%2' tag."_s.arg(created->name, childName));
        if (!read) {
            disownEntries(*archive, created.get());
            return false;
        }
    }
    const VMEnum &finished = *created;
    archive->variables->addEnum(created.release());
    auto typeTemplate = enumTemplateOf(finished);
    typeTemplate->reparent(archive);
    archive->templates.addTemplate(typeTemplate.release(), finished.name);
    return true;
}

bool VMArchiveLoader::manageEnumEntryTag(const Tag &tag, VMEnum *owner, VMXMLArchive *archive)
{
    const QString name = readName(tag, u"name");
    QString value = readText(tag, u"value");
    const QString comment = readOnlyComment(tag);
    if (name.isEmpty())
        return fail(tag, *archive, u"This entry has no name!"_s);
    if (value.isEmpty())
        value = QString::number(veldmap::wrappingAdd(owner->lastValue, 1));

    QString message;
    bool error = false;
    const int number = archive->variables->evalExpressionAndAddVar(name, value, comment, owner, message, error);
    if (error)
        return fail(tag, *archive, u"Enum '%1', expression '%3' : %4\n"_s.arg(owner->name, value, message));
    owner->lastValue = number;
    owner->addVar(archive->variables->last());
    return true;
}

bool VMArchiveLoader::manageEnumBoundTag(const Tag &tag, VMEnum *owner, VMXMLArchive *archive)
{
    const QString name = readName(tag, u"name");
    if (name.isEmpty())
        return fail(tag, *archive, u"A bound of the enum '%1' has no name!"_s.arg(owner->name));

    const QString value = QString::number(veldmap::wrappingAdd(owner->lastValue, 1));
    QString message;
    bool error = false;
    archive->variables->evalExpressionAndAddVar(name, value, readOnlyComment(tag), nullptr, message, error);
    if (error)
        return fail(tag, *archive, u"Enum '%1', expression '%3' : %4\n"_s.arg(owner->name, value, message));
    return true;
}

bool VMArchiveLoader::manageSpacerTag(const Tag &tag, VMXMLArchive *archive)
{
    VMIntVar spacer = generateSpacer();
    spacer.comment = readOnlyComment(tag);
    archive->variables->addVar(spacer);
    return true;
}

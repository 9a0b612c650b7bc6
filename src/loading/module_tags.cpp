#include "loading/archive_loader.h"

#include "loading/member_tags.h"
#include "xml/tag_attributes.h"
#include "model/aggregates.h"
#include "model/root_archive.h"

using namespace Qt::StringLiterals;
using veldmap::ChildTags;
using veldmap::readFlag;
using veldmap::readKeywords;
using veldmap::readName;
using veldmap::readText;
using veldmap::Tag;

VMXMLElement *VMArchiveLoader::manageModuleOrTypedefTag(const Tag &tag, VMXMLArchive *archive)
{
    const QStringView tagName = tag.name();
    if (tagName != "module"_L1 && tagName != "typedef"_L1) {
        fail(tag, *archive, u"\"module\" or \"typedef\" tag not found."_s);
        return nullptr;
    }
    const QString name = readText(tag, u"name");
    const QString category = readText(tag, u"category");
    if (name.isEmpty()) {
        fail(tag, *archive, u"module has no name !"_s);
        return nullptr;
    }
    auto module = std::make_unique<VMStruct>(name, QString());
    module->category = category.isEmpty() ? u"Unclassified"_s : category;
    module->typedefName = name;
    module->reparent(archive);
    module->isTypedef = tagName == "typedef"_L1 ? 1 : 0;
    if (!module->isTypedef)
        module->cKeywords += u"volatile"_s;
    module->cKeywords += readKeywords(tag);
    if (!manageModuleOrTypedefTag(tag, module.get()))
        return nullptr;

    if (VMXMLElement *known = archive->getRootArchive()->getTemplate(name)) {
        WarningMessage(archive->getTotalPath(), tag.lineNumber(), tag.columnNumber(),
                       u"Type '%1' already exists or already loaded ! (discarding this one)"_s.arg(name));
        return known;
    }
    archive->templates.addTemplate(module.release(), name);
    return archive->templates.back().get();
}

bool VMArchiveLoader::manageModuleOrTypedefTag(const Tag &tag, VMStruct *module)
{
    auto *archive = elementCast<VMXMLArchive>(module->parent);
    const bool rubyConstants = readFlag(tag, u"rubyconstants");
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (const MemberTagRow *row = findMemberTag(childName); row && row->inModule) {
            auto member = readMember(*row, child, archive, module->getName(), childName);
            if (!member)
                return false;
            module->addElement(member.release());
            continue;
        }
        bool read = true;
        if (childName == "spacer"_L1)
            read = manageSpacerTag(child, archive);
        else if (childName == "var"_L1)
            read = manageVarTag(child, archive);
        else if (childName == "range"_L1)
            read = manageRangeTag(child, archive);
        else if (childName == "enum"_L1)
            read = manageEnumTag(child, archive);
        else if (!veldmap::takeComment(child, module->comment))
            read = fail(child, *archive, u"Module contains an unvalid %1 tag.\n"_s.arg(childName));
        if (!read)
            return false;
    }
    module->rubyConstants = rubyConstants;
    return true;
}

VMXMLElement *VMArchiveLoader::manageStructTag(const Tag &tag, VMXMLArchive *archive, const QString &parentName)
{
    const QString name = readName(tag, u"name");
    veldmap::Count count = veldmap::readCount(tag);
    if (name.isEmpty()) {
        fail(tag, *archive, u"Tag defining '%1' contains struct with no name !"_s.arg(parentName));
        return nullptr;
    }
    if (count.isArray) {
        const Evaluated number = evaluate(count.expression, *archive);
        if (number.failed) {
            fail(tag, *archive,
                 u"Tag defining '%1' contains struct '%2' with an error in its count expression !"_s.arg(parentName,
                                                                                                         name));
            return nullptr;
        }
        count.value = number.value;
    }
    auto structure = std::make_unique<VMStruct>(QString(), name);
    structure->cKeywords += readKeywords(tag);
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (const MemberTagRow *row = findMemberTag(childName)) {
            auto member = readMember(*row, child, archive, name, childName);
            if (!member)
                return nullptr;
            structure->addElement(member.release());
        } else if (!veldmap::takeComment(child, structure->comment)) {
            fail(child, *archive, u"Struct '%1' contains an unvalid '%2' tag.\n"_s.arg(name, childName));
            return nullptr;
        }
    }
    return arrayOf(std::move(structure), count, name, tag, *archive);
}

VMXMLElement *VMArchiveLoader::manageHoleTag(const Tag &tag, VMXMLArchive *archive, const QString &)
{
    const QString size = readText(tag, u"size", u"32"_s);
    const Evaluated bits = evaluate(size, *archive);
    if (bits.failed) {
        fail(tag, *archive, u"Hole expression %1 : %2\n"_s.arg(size, bits.message));
        return nullptr;
    }
    return std::make_unique<VMHole>(bits.value).release();
}

bool VMArchiveLoader::manageAliasTag(const Tag &tag, VMXMLArchive *archive)
{
    const QString name = readText(tag, u"name");
    QString comment;
    std::unique_ptr<VMXMLElement> element;
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        const MemberTagRow *row = findMemberTag(childName);
        if (row && row->inAlias) {
            element = readMember(*row, child, archive, name, childName);
            if (row->isValuable) {
                if (!element)
                    return false;
                element->declaredType = childName.toString();
            }
        } else if (!veldmap::takeComment(child, comment)) {
            // Told, and passed over: only the lack of an element fails an alias.
            fail(tag, *archive, u"Alias '%1' contains an unvalid '%2' tag.\n"_s.arg(name, childName));
        }
    }
    if (!element)
        return false;
    element->comment = comment;
    element->reparent(archive);
    archive->templates.addTemplate(element.release(), name);
    return true;
}

#include "loading/archive_loader.h"

#include "xml/tag_attributes.h"
#include "model/aggregates.h"
#include "model/pointer.h"
#include "model/root_archive.h"

using namespace Qt::StringLiterals;
using veldmap::readKeywords;
using veldmap::readName;
using veldmap::readText;
using veldmap::Tag;

VMXMLElement *VMArchiveLoader::manageInstanceTag(const Tag &tag, VMXMLArchive *archive)
{
    const auto failInstance = [&](const QString &text) -> VMXMLElement * {
        fail(tag, *archive, text);
        return nullptr;
    };
    const QString name = readText(tag, u"name");
    const QString type = readText(tag, u"type");
    const QString category = readText(tag, u"category", u"Unclassified"_s);
    const Evaluated address = evaluate(readText(tag, u"address", u"0"_s), *archive);
    if (address.failed)
        return failInstance(
            u"Address of instance '%1' of type '%2' contains an error in its expression !"_s.arg(name, type));
    if (name.isEmpty())
        return failInstance(u"Instance of '%1' has no name!"_s.arg(type));
    if (type.isEmpty())
        return failInstance(u"Could not instanciate instance '%1'! (missing module or typedef name)"_s.arg(name));

    VMRootArchive *root = archive->getRootArchive();
    const VMXMLElement *known = root->getTemplate(type);
    if (known && !mayCopyType(*known, tag, *archive))
        return nullptr;
    VMXMLElement *instance = root->instanciateTemplate(type, name, static_cast<unsigned int>(address.value));
    if (!instance)
        return failInstance(
            u"Could not instanciate instance '%1' of type '%2'! (missing include or include not valid?)"_s.arg(name,
                                                                                                               type));
    if (instance->category.isEmpty() || instance->category == "Unclassified"_L1)
        instance->category = category;
    return instance;
}

VMXMLElement *VMArchiveLoader::manageInstanceTag(const Tag &tag, VMXMLArchive *archive, const QString &parentName)
{
    const auto failInstance = [&](const QString &text) -> VMXMLElement * {
        fail(tag, *archive, text);
        return nullptr;
    };
    const QString type = readName(tag, u"type");
    const QString name = readName(tag, u"name");
    veldmap::Count count = veldmap::readCount(tag);
    if (name.isEmpty())
        return failInstance(u"Found instance with no name!.\n"_s);
    if (type.isEmpty())
        return failInstance(u"Instance '%1' has no type!.\n"_s.arg(name));
    if (count.isArray) {
        const Evaluated number = evaluate(count.expression, *archive);
        if (number.failed)
            return failInstance(
                u"Tag defining '%1' contains instance '%2' with an error in its count expression !"_s.arg(parentName,
                                                                                                          name));
        count.value = number.value;
    }
    const VMXMLElement *known = archive->getRootArchive()->getTemplate(type);
    if (!known)
        known = archive->contains(type);
    if (!known)
        return failInstance(
            u"Instance '%1' uses type '%2' which does not exist (or which must be declared before) !.\n"_s.arg(name,
                                                                                                               type));
    if (!mayCopyType(*known, tag, *archive))
        return nullptr;
    std::unique_ptr<VMXMLElement> copy(VMXMLElement::anonymousCopy(known));
    copy->setName(name);
    copy->declaredType = type;
    copy->cKeywords += readKeywords(tag);
    return arrayOf(std::move(copy), count, name, tag, *archive);
}

VMXMLElement *VMArchiveLoader::manageMemoryTag(const Tag &tag, VMXMLArchive *archive, const QString &)
{
    const QString name = readName(tag, u"name");
    const Evaluated size = evaluate(readText(tag, u"size", u"0"_s), *archive);
    if (size.failed) {
        fail(tag, *archive, u"Memory '%1' : error in the size expression !"_s.arg(name));
        return nullptr;
    }
    auto memory = std::make_unique<VMMemory>(name, size.value);
    memory->cKeywords += readKeywords(tag);
    for (const Tag &child : veldmap::ChildTags(tag)) {
        const QStringView childName = child.name();
        if (!veldmap::takeComment(child, memory->comment)) {
            fail(child, *archive, u"Memory '%1' contains an unvalid '%2' tag.\n"_s.arg(name, childName));
            return nullptr;
        }
    }
    return memory.release();
}

VMXMLElement *VMArchiveLoader::managePtrTag(const Tag &tag, VMXMLArchive *archive, const QString &parentName)
{
    static const QStringList builtInWords = {u"void"_s,  u"int8"_s,   u"uint8"_s, u"int16"_s, u"uint16"_s,
                                             u"int32"_s, u"uint32"_s, u"bool"_s,  u"memory"_s};
    QString type = readName(tag, u"type");
    if (builtInWords.contains(type.toLower()))
        type = type.toLower();
    const QString name = readName(tag, u"name");
    veldmap::Count count = veldmap::readCount(tag);
    auto pointer = std::make_unique<VMPointer>(name, type);
    pointer->cKeywords += readKeywords(tag);
    if (!readArrayCount(count, tag, *archive, parentName, type, name))
        return nullptr;
    for (const Tag &child : veldmap::ChildTags(tag)) {
        const QStringView childName = child.name();
        if (!veldmap::takeComment(child, pointer->comment)) {
            fail(child, *archive, u"Pointer '%1' contains an unvalid '%2' tag.\n"_s.arg(name, childName));
            return nullptr;
        }
    }
    pointer->declaredType = type;
    return arrayOf(std::move(pointer), count, name, tag, *archive);
}

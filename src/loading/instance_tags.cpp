#include "loading/archive_reader.h"

#include "loading/rules.h"
#include "model/aggregates.h"
#include "model/kinds.h"
#include "model/pointer.h"
#include "model/root_archive.h"

using namespace Qt::StringLiterals;

namespace veldmap {

VMXMLElement *ArchiveReader::readInstance(const Tag &tag, VMXMLArchive &archive)
{
    const auto refuse = [&](const Rule &rule, const QStringList &arguments) -> VMXMLElement * {
        fail(tag, archive, rule, arguments);
        return nullptr;
    };
    const QString name = sharedText(tag, u"name");
    const QString type = sharedText(tag, u"type");
    const QString category = readText(tag, u"category", u"Unclassified"_s);
    const Evaluated address = evaluate(readText(tag, u"address", u"0"_s), archive);
    if (address.failed) {
        failEvaluation(tag, archive, rules::instanceAddress, {name, type}, address);
        return nullptr;
    }
    if (name.isEmpty())
        return refuse(rules::instanceWithoutName, {type});
    if (type.isEmpty())
        return refuse(rules::instanceWithoutType, {name});

    VMRootArchive *root = archive.getRootArchive();
    const VMXMLElement *known = m_builder.findType(type);
    if (!root || !known) {
        failUnknown(type, tag, archive, rules::instanceOfUnknownType, {name, type});
        return nullptr;
    }
    if (const Refusal refused = m_builder.countCopyOf(*known, name)) {
        fail(tag, archive, refused);
        return nullptr;
    }
    const auto place = static_cast<unsigned int>(address.value);
    VMXMLElement *instance =
        m_outlines ? root->addOutline(*known, name, place) : root->addInstance(*known, name, place);
    instance->source = sourceOf(tag);
    if (instance->category.isEmpty() || instance->category == "Unclassified"_L1)
        instance->category = category;
    return instance;
}

ArchiveReader::Element ArchiveReader::readInnerInstance(const Tag &tag, VMXMLArchive &archive,
                                                        const QString &parentName)
{
    const auto refuse = [&](const Rule &rule, const QStringList &arguments = {}) -> Element {
        fail(tag, archive, rule, arguments);
        return nullptr;
    };
    const QString type = sharedName(tag, u"type");
    const QString name = sharedName(tag, u"name");
    Count count = readCount(tag);
    if (name.isEmpty())
        return refuse(rules::memberWithoutName);
    if (type.isEmpty())
        return refuse(rules::memberWithoutType, {name});
    if (count.isArray &&
        !evaluateSize(count.expression, count.value, tag, archive, rules::memberCount, {parentName, name}))
        return nullptr;
    const VMXMLElement *known = m_builder.findType(type);
    if (!known) // an archive of a host may hang on no root
        known = archive.contains(type);
    if (!known) {
        failUnknown(type, tag, archive, rules::memberOfUnknownType, {name, type});
        return nullptr;
    }
    if (const Refusal refused = m_builder.countCopyOf(*known, name)) {
        fail(tag, archive, refused);
        return nullptr;
    }
    Element copy(VMXMLElement::anonymousCopy(known));
    copy->source = sourceOf(tag);
    copy->setName(name);
    copy->declaredType = type;
    copy->cKeywords += readKeywords(tag);
    return arrayOf(std::move(copy), count, name, tag, archive);
}

ArchiveReader::Element ArchiveReader::readMemory(const Tag &tag, VMXMLArchive &archive, const QString &)
{
    const QString name = sharedName(tag, u"name");
    int size = 0;
    if (!evaluateSize(readText(tag, u"size", u"0"_s), size, tag, archive, rules::memorySize, {name}))
        return nullptr;
    auto memory = std::make_unique<VMMemory>(name, size);
    memory->source = sourceOf(tag);
    memory->cKeywords += readKeywords(tag);
    for (const Tag &child : ChildTags(tag)) {
        if (takeSharedComment(child, memory->comment))
            continue;
        fail(child, archive, rules::foreignTagInMemory, {name, child.name().toString()});
        if (!m_goesOn)
            return nullptr;
    }
    return memory;
}

ArchiveReader::Element ArchiveReader::readPointer(const Tag &tag, VMXMLArchive &archive, const QString &parentName)
{
    QString type = sharedName(tag, u"type");
    if (const QString folded = type.toLower(); folded == kMemoryWord || scalarKindNamed(folded, kFoldedType))
        type = folded;
    const QString name = sharedName(tag, u"name");
    Count count = readCount(tag);
    auto pointer = std::make_unique<VMPointer>(name, type);
    pointer->source = sourceOf(tag);
    pointer->cKeywords += readKeywords(tag);
    if (!evaluateArrayCount(count, tag, archive, parentName, type, name))
        return nullptr;
    for (const Tag &child : ChildTags(tag)) {
        if (takeSharedComment(child, pointer->comment))
            continue;
        fail(child, archive, rules::foreignTagInPointer, {name, child.name().toString()});
        if (!m_goesOn)
            return nullptr;
    }
    pointer->declaredType = type;
    return arrayOf(std::move(pointer), count, name, tag, archive);
}

} // namespace veldmap

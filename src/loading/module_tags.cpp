#include "loading/archive_reader.h"

#include "loading/rules.h"
#include "model/aggregates.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

VMXMLElement *ArchiveReader::readType(const Tag &tag, VMXMLArchive &archive)
{
    const QStringView tagName = tag.name();
    if (tagName != "module"_L1 && tagName != "typedef"_L1) {
        fail(tag, archive, rules::noModule);
        return nullptr;
    }
    const QString name = sharedText(tag, u"name");
    const QString category = sharedText(tag, u"category");
    if (name.isEmpty()) {
        fail(tag, archive, rules::moduleWithoutName);
        return nullptr;
    }
    auto module = std::make_unique<VMStruct>(name, QString());
    module->source = sourceOf(tag);
    module->category = category.isEmpty() ? u"Unclassified"_s : category;
    module->typedefName = name;
    module->reparent(&archive);
    module->isTypedef = tagName == "typedef"_L1 ? 1 : 0;
    if (!module->isTypedef)
        module->cKeywords += u"volatile"_s;
    module->cKeywords += readKeywords(tag);
    if (!readTypeChildren(tag, *module, archive))
        return nullptr;
    module->memberList.shrink_to_fit();

    if (VMXMLElement *known = m_builder.findType(name)) {
        tell(Finding(rules::typeAlreadyKnown, {archive.getTotalPath(), tag.lineNumber(), tag.columnNumber()}, {name})
                 .withPlace(known->source.place(), u"first declared here"_s));
        return known;
    }
    return &m_builder.addTemplate(archive, std::move(module), name);
}

bool ArchiveReader::readTypeChildren(const Tag &tag, VMStruct &module, VMXMLArchive &archive)
{
    const bool rubyConstants = readFlag(tag, u"rubyconstants");
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (const MemberTag *row = findMemberTag(childName); row && row->inModule) {
            Element member = readMember(*row, child, archive, module.getName());
            if (!member && !m_goesOn)
                return false;
            if (member)
                module.addElement(member.release());
            continue;
        }
        bool isRead = true;
        if (childName == "spacer"_L1)
            isRead = readSpacer(child, archive);
        else if (childName == "var"_L1)
            isRead = readVariable(child, archive);
        else if (childName == "range"_L1)
            isRead = readRange(child, archive);
        else if (childName == "enum"_L1)
            isRead = readEnum(child, archive);
        else if (!takeSharedComment(child, module.comment))
            isRead = fail(child, archive, rules::foreignTagInModule, {childName.toString()});
        if (!isRead && !m_goesOn)
            return false;
    }
    module.rubyConstants = rubyConstants;
    return true;
}

ArchiveReader::Element ArchiveReader::readStruct(const Tag &tag, VMXMLArchive &archive, const QString &parentName)
{
    const QString name = sharedName(tag, u"name");
    Count count = readCount(tag);
    if (name.isEmpty()) {
        fail(tag, archive, rules::structWithoutName, {parentName});
        return nullptr;
    }
    if (count.isArray &&
        !evaluateSize(count.expression, count.value, tag, archive, rules::structCount, {parentName, name}))
        return nullptr;
    auto structure = std::make_unique<VMStruct>(QString(), name);
    structure->source = sourceOf(tag);
    structure->cKeywords += readKeywords(tag);
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (const MemberTag *row = findMemberTag(childName)) {
            Element member = readMember(*row, child, archive, name);
            if (!member && !m_goesOn)
                return nullptr;
            if (member)
                structure->addElement(member.release());
        } else if (!takeSharedComment(child, structure->comment)) {
            fail(child, archive, rules::foreignTagInStruct, {name, childName.toString()});
            if (!m_goesOn)
                return nullptr;
        }
    }
    structure->memberList.shrink_to_fit();
    return arrayOf(std::move(structure), count, name, tag, archive);
}

ArchiveReader::Element ArchiveReader::readHole(const Tag &tag, VMXMLArchive &archive, const QString &)
{
    const QString size = readText(tag, u"size", u"32"_s);
    const Evaluated bits = evaluate(size, archive);
    if (bits.failed) {
        failEvaluation(tag, archive, rules::holeExpression, {size, bits.message}, bits);
        return nullptr;
    }
    auto hole = std::make_unique<VMHole>(bits.value);
    hole->source = sourceOf(tag);
    return hole;
}

bool ArchiveReader::readAlias(const Tag &tag, VMXMLArchive &archive)
{
    const QString name = readText(tag, u"name");
    QString comment;
    Element element;
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        const MemberTag *row = findMemberTag(childName);
        if (row && row->inAlias) {
            const bool hadFailed = std::exchange(m_hasFailed, false);
            element = readMember(*row, child, archive, name);
            if (std::exchange(m_hasFailed, hadFailed)) // a part of it was refused
                element.reset();
            const bool isValuable = !row->read;
            if (isValuable && !element) {
                m_hasFailed = true;
                return lose(name);
            }
            if (isValuable)
                element->declaredType = m_builder.texts().of(childName);
        } else if (!takeComment(child, comment)) {
            // Told, and passed over: only the lack of an element fails an alias.
            tell(rules::foreignTagInAlias, {archive.getTotalPath(), tag.lineNumber(), tag.columnNumber()},
                 {name, childName.toString()});
        }
    }
    if (!element) {
        m_hasFailed = true;
        return lose(name);
    }
    element->comment = comment;
    element->source = sourceOf(tag);
    m_builder.addTemplate(archive, std::move(element), name);
    return true;
}

} // namespace veldmap

#include "loading/tree_builder.h"

#include "findings/limits.h"
#include "loading/rules.h"
#include "model/aggregates.h"
#include "model/include_walk.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/tree_size.h"
#include "model/valuable.h"
#include "text/plain_number.h"

namespace veldmap {

namespace {

/// The elements that bear the name of \a element and what follows it, as members of an array do.
qint64 membersNamedAfter(const VMXMLElement &element)
{
    const auto *array = elementCast<VMArray>(&element);
    return array ? array->count() * (1 + membersNamedAfter(*array->prototype)) : 0;
}

/// Takes the fields out of the registers in \a element.
void dropFields(VMXMLElement &element)
{
    if (auto *valuable = elementCast<VMValuable>(&element)) {
        valuable->bitFields.clear();
        valuable->bitGroups.clear();
    } else if (const auto *array = elementCast<VMArray>(&element)) {
        dropFields(*array->prototype);
        for (const auto &member : array->memberList)
            dropFields(*member);
    } else if (const auto *structure = elementCast<VMStruct>(&element)) {
        for (const auto &member : structure->memberList)
            dropFields(*member);
    }
}

} // namespace

VMXMLArchive &TreeBuilder::addArchive(const QString &relativeFile, const QString &basePath)
{
    learnTree();
    auto created = std::make_unique<VMXMLArchive>(m_root);
    VMXMLArchive &archive = *created;
    archive.relativeFileName = relativeFile;
    archive.basePath = basePath;
    m_root->addXMLArchive(created.release());
    m_names.addArchive(archive);
    m_numbers.insert(&archive, m_numbers.size());
    const Identity identity = {basePath, relativeFile};
    if (!m_files.contains(identity))
        m_files.insert(identity, &archive);
    return archive;
}

void TreeBuilder::closeArchive(const VMXMLArchive &archive)
{
    m_names.closeArchive(archive);
}

/// A failed archive fails its load, so what was known is not worth keeping.
void TreeBuilder::discardArchive(VMXMLArchive &archive)
{
    m_root->discardXMLArchive(&archive);
    m_knowsTree = false;
    m_numbers.clear();
    m_files.clear();
    m_types = {};
    m_names = {};
    m_options.clear();
    m_scopeArchive = nullptr;
    m_foundVariables.clear();
}

VMXMLArchive *TreeBuilder::findArchive(const QString &basePath, const QString &relativeFile)
{
    learnTree();
    return m_files.value({basePath, relativeFile});
}

void TreeBuilder::addInclude(VMXMLArchive &archive, VMXMLArchive &included)
{
    archive.includedArchives.append(&included);
    m_scopeArchive = nullptr;
    m_names.addInclude(archive, included);
}

VMXMLElement *TreeBuilder::findType(const QString &name)
{
    learnTree();
    return m_types.find(name);
}

VMXMLElement &TreeBuilder::addTemplate(VMXMLArchive &archive, std::unique_ptr<VMXMLElement> element,
                                       const QString &name)
{
    learnTree();
    VMXMLElement &added = *element;
    added.reparent(&archive);
    archive.templates.addTemplate(element.release(), name);
    const auto number = m_numbers.constFind(&archive);
    if (number != m_numbers.cend())
        m_types.add({*number, archive.templates.size() - 1}, added);
    return added;
}

Evaluated TreeBuilder::evaluate(const QString &expression, const VMVariableManager &manager, const QString &name)
{
    if (const std::optional<int> number = plainNumber(expression))
        return {*number, false, {}, {}, {}};
    const auto find = [this, &manager](const QString &variable) {
        if (manager.archive)
            return findVariable(*manager.archive, variable);
        m_names.update(manager);
        return m_names.findIn(manager, variable);
    };
    return evaluateExpression(expression, find, name);
}

/// Takes up the tables that \a archive sees, where nobody else has: it is one that a host has made.
void TreeBuilder::learnScopeOf(const VMXMLArchive &archive)
{
    if (const VMVariableManager *globals = globalVariablesOf(archive))
        m_names.update(*globals);
    if (m_scopeArchive == &archive)
        return;
    m_scopeArchive = &archive;
    m_foundVariables.clear();
    if (m_names.isKnown(archive))
        return;
    walkIncludes(archive, true, [this](const VMXMLArchive &included) {
        m_names.update(*included.variables);
        return false;
    });
}

/// The variable that \a archive sees under that name, or null.
const VMIntVar *TreeBuilder::findVariable(const VMXMLArchive &archive, const QString &name)
{
    learnScopeOf(archive);
    if (const VMIntVar *known = m_foundVariables.value(name))
        return known;
    const VMIntVar *found = m_names.findVariable(archive, name);
    if (found && m_names.isVariableOfMany(name))
        m_foundVariables.insert(name, found);
    return found;
}

const VMEnum *TreeBuilder::findEnum(const QString &name, const VMXMLArchive &archive)
{
    learnScopeOf(archive);
    return m_names.findEnum(archive, name);
}

void TreeBuilder::addVariable(VMVariableManager &manager, const VMIntVar &variable)
{
    m_foundVariables.clear();
    manager.addVar(variable);
    m_names.update(manager);
}

const VMEnum &TreeBuilder::addEnum(VMVariableManager &manager, std::unique_ptr<VMEnum> newEnum)
{
    const VMEnum &added = *newEnum;
    manager.addEnum(newEnum.release());
    m_names.update(manager);
    return added;
}

QList<VMBitFieldOption> TreeBuilder::optionsOf(const VMEnum &linked)
{
    QList<VMBitFieldOption> &options = m_options[&linked];
    if (options.isEmpty()) {
        options.reserve(linked.size());
        for (const VMIntVar &entry : linked)
            options.append({entry.name, entry.leftValue, entry.comment, entry.source});
    }
    return options;
}

VMVariableManager &TreeBuilder::globalManagerOf(VMXMLArchive &archive)
{
    const VMRootArchive *root = archive.getRootArchive();
    return root && root->memoryMap ? *root->memoryMap->globalVariables : *archive.variables;
}

Refusal TreeBuilder::countCopies(qint64 elements)
{
    m_copiedElements += elements;
    if (m_copiedElements <= copiesAllowed())
        return {};
    return {&rules::tooManyCopies, {QString::number(copiesAllowed())}};
}

Refusal TreeBuilder::countText(qint64 characters)
{
    m_madeCharacters += characters;
    const qint64 allowed = copiesAllowed() * limits::kCharactersPerCopy;
    if (m_madeCharacters <= allowed)
        return {};
    return {&rules::tooMuchText, {QString::number(allowed)}};
}

Refusal TreeBuilder::checkTexts() const
{
    // But for entities, a text has no more characters than its file has bytes.
    if (m_readBytes == 0 || m_texts.characters() - m_madeCharacters - m_readBytes <= limits::kEntityCharacters)
        return {};
    return {&rules::entityTexts, {QString::number(limits::kEntityCharacters)}};
}

void TreeBuilder::countFile(qint64 bytes)
{
    m_fileBytes += bytes;
    m_readBytes += bytes;
}

Refusal TreeBuilder::countFileReadAgain(qint64 bytes)
{
    m_readBytes += bytes;
    if (!countCopies(bytes / limits::kBytesPerElementReadAgain))
        return {};
    return {&rules::filesReadAgain, {QString::number(copiesAllowed())}};
}

Refusal TreeBuilder::countCopyOf(const VMXMLElement &element, const QString &name)
{
    const TreeSize size = treeSizeOf(element);
    if (size.depth > limits::kTypeDepth)
        return {&rules::typesTooDeep, {QString::number(limits::kTypeDepth)}};
    if (size.path > limits::kPathCharacters)
        return {&rules::pathTooLong, {QString::number(limits::kPathCharacters)}};
    if (Refusal refused = countText(membersNamedAfter(element) * name.size()))
        return refused;
    return countCopies(size.elements);
}

Refusal TreeBuilder::makeArray(std::unique_ptr<VMXMLElement> &element, const QString &name, int count,
                               const QString &countExpression)
{
    const qint64 elements = treeSizeOf(*element).elements * qMax(count, 0);
    if (elements > limits::kArrayElements)
        return {&rules::arrayTooLarge, {name, QString::number(elements), QString::number(limits::kArrayElements)}};
    if (Refusal refused = countCopies(elements))
        return refused;
    if (Refusal refused = countText((1 + membersNamedAfter(*element)) * qMax(count, 0) * name.size()))
        return refused;
    std::unique_ptr<VMXMLElement> prototype;
    if (m_outlinesArrays) {
        prototype.reset(VMXMLElement::anonymousCopy(element.get())); // as an array has it
        dropFields(*element);
    }
    auto array = std::make_unique<VMArray>(name, element.get(), count, countExpression);
    if (prototype) {
        prototype->arrayNumber = 0;
        prototype->remap(0);
        prototype->reparent(array.get());
        array->prototype = std::move(prototype);
    }
    array->source = element->source;
    element = std::move(array);
    return {};
}

/// Takes up what the root holds already, as it does when a host adds to a tree of its own.
void TreeBuilder::learnTree()
{
    if (std::exchange(m_knowsTree, true) || !m_root)
        return;
    for (VMXMLArchive *archive : std::as_const(m_root->xmlArchives)) {
        const std::size_t number = m_numbers.size();
        m_numbers.insert(archive, number);
        const Identity identity = {archive->basePath, archive->relativeFileName};
        if (!m_files.contains(identity))
            m_files.insert(identity, archive);
        for (std::size_t position = 0; position < archive->templates.size(); ++position)
            m_types.add({number, position}, *archive->templates[position]);
    }
}

qint64 TreeBuilder::copiesAllowed() const
{
    const qint64 more =
        m_fileBytes > 0 ? m_fileBytes / limits::kBytesPerCopy : limits::kCopiesPerElement * m_declaredElements;
    return limits::kCopiedElements + more;
}

} // namespace veldmap

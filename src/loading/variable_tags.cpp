#include "loading/archive_reader.h"

#include "loading/rules.h"
#include "model/scalars.h"
#include "text/bit_arithmetic.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The template that lets an enum serve as a type: an integer whose one bitfield has the entries as options.
std::unique_ptr<VMInt32> enumTemplateOf(const VMEnum &source)
{
    auto valuable = std::make_unique<VMInt32>(u"unused"_s);
    valuable->source = source.source;
    auto field = std::make_unique<VMBitField>(u"enum"_s, true, 1, u"31"_s, 31, u"0"_s, 0, 0, true, DISPLAY_HEX);
    field->source = source.source;
    field->options.optionList.reserve(source.size());
    for (const VMIntVar &entry : source)
        field->options.optionList.append({entry.name, entry.leftValue, entry.comment, entry.source});
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

} // namespace

bool ArchiveReader::readVariable(const Tag &tag, VMXMLArchive &archive)
{
    VMIntVar variable;
    variable.name = sharedName(tag, u"name");
    variable.leftExpression = sharedText(tag, u"value");
    const bool isGlobal = readFlag(tag, u"global");
    if (variable.name.isEmpty())
        return fail(tag, archive, rules::variableWithoutName, {archive.getBaseName()});
    if (variable.leftExpression.isEmpty()) {
        lose(variable.name);
        return fail(tag, archive, rules::variableWithoutValue, {variable.name, archive.getBaseName()});
    }

    VMVariableManager &manager = isGlobal ? TreeBuilder::globalManagerOf(archive) : *archive.variables;
    variable.comment = sharedOnlyComment(tag);
    const Evaluated value = m_builder.evaluate(variable.leftExpression, manager, variable.name);
    if (value.failed) {
        failEvaluation(tag, archive, rules::variableExpression, {archive.getBaseName(), variable.name, value.message},
                       value);
        return lose(variable.name);
    }
    variable.leftValue = value.value;
    variable.source = sourceOf(tag);
    m_builder.addVariable(manager, variable);
    return true;
}

bool ArchiveReader::readRange(const Tag &tag, VMXMLArchive &archive)
{
    VMIntVar range;
    range.name = sharedName(tag, u"name");
    range.leftExpression = sharedText(tag, u"left");
    range.rightExpression = sharedText(tag, u"right");
    const QString direction = readText(tag, u"dir", u"down"_s);
    if (range.name.isEmpty())
        return fail(tag, archive, rules::rangeWithoutName);
    if (range.leftExpression.isEmpty() || range.rightExpression.isEmpty()) {
        lose(range.name);
        return fail(tag, archive, rules::rangeWithoutBound, {range.name});
    }
    if (direction != "up"_L1 && direction != "down"_L1) {
        lose(range.name);
        return fail(tag, archive, rules::rangeDirection, {direction, range.name});
    }

    Evaluated bound;
    for (const auto &[expression, number] : {std::pair(&VMIntVar::leftExpression, &VMIntVar::leftValue),
                                             std::pair(&VMIntVar::rightExpression, &VMIntVar::rightValue)}) {
        bound = m_builder.evaluate(range.*expression, *archive.variables, range.name);
        if (bound.failed) {
            failEvaluation(tag, archive, rules::rangeExpression, {range.name, bound.message}, bound);
            return lose(range.name);
        }
        range.*number = bound.value;
    }
    range.dir = direction == "up"_L1 ? VMIntVar::up : VMIntVar::down;
    range.isRange = 1;
    range.comment = sharedOnlyComment(tag);
    range.source = sourceOf(tag);
    m_builder.addVariable(*archive.variables, range);
    return true;
}

bool ArchiveReader::readEnum(const Tag &tag, VMXMLArchive &archive)
{
    auto created = std::make_unique<VMEnum>();
    created->name = sharedName(tag, u"name");
    created->source = sourceOf(tag);
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        bool isRead = true;
        if (childName == "entry"_L1)
            isRead = readEnumEntry(child, *created, archive);
        else if (childName == "bound"_L1)
            isRead = readEnumBound(child, *created, archive);
        else if (!takeComment(child, created->comment))
            isRead = fail(child, archive, rules::foreignTagInEnum, {created->name, childName.toString()});
        if (!isRead && !m_goesOn) {
            disownEntries(archive, created.get());
            return false;
        }
    }
    const VMEnum &finished = m_builder.addEnum(*archive.variables, std::move(created));
    m_builder.addTemplate(archive, enumTemplateOf(finished), finished.name);
    return true;
}

bool ArchiveReader::readEnumEntry(const Tag &tag, VMEnum &owner, VMXMLArchive &archive)
{
    if (!checkName(tag, archive))
        return false;
    VMIntVar entry;
    entry.name = sharedName(tag, u"name");
    entry.leftExpression = sharedText(tag, u"value");
    entry.comment = sharedOnlyComment(tag);
    if (entry.name.isEmpty())
        return fail(tag, archive, rules::entryWithoutName);
    if (entry.leftExpression.isEmpty())
        entry.leftExpression = QString::number(wrappingAdd(owner.lastValue, 1));

    const Evaluated value = m_builder.evaluate(entry.leftExpression, *archive.variables, entry.name);
    if (value.failed) {
        failEvaluation(tag, archive, rules::enumExpression, {owner.name, entry.leftExpression, value.message}, value);
        return lose(entry.name);
    }
    entry.leftValue = value.value;
    entry.ownerEnum = &owner;
    entry.source = sourceOf(tag);
    m_builder.addVariable(*archive.variables, entry);
    owner.lastValue = value.value;
    owner.addVar(entry);
    return true;
}

bool ArchiveReader::readEnumBound(const Tag &tag, const VMEnum &owner, VMXMLArchive &archive)
{
    VMIntVar bound;
    bound.name = sharedName(tag, u"name");
    if (bound.name.isEmpty())
        return fail(tag, archive, rules::boundWithoutName, {owner.name});

    bound.leftExpression = QString::number(wrappingAdd(owner.lastValue, 1));
    bound.comment = sharedOnlyComment(tag);
    const Evaluated value = m_builder.evaluate(bound.leftExpression, *archive.variables, bound.name);
    if (value.failed)
        return failEvaluation(tag, archive, rules::enumExpression, {owner.name, bound.leftExpression, value.message},
                              value);
    bound.leftValue = value.value;
    bound.source = sourceOf(tag);
    m_builder.addVariable(*archive.variables, bound);
    return true;
}

bool ArchiveReader::readSpacer(const Tag &tag, VMXMLArchive &archive)
{
    VMIntVar spacer = generateSpacer();
    spacer.comment = sharedOnlyComment(tag);
    spacer.source = sourceOf(tag);
    m_builder.addVariable(*archive.variables, spacer);
    return true;
}

} // namespace veldmap

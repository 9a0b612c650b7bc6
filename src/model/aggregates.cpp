#include "model/aggregates.h"

#include "text/bit_arithmetic.h"
#include "text/lines.h"

using namespace Qt::StringLiterals;
using veldmap::wrappingAdd;
using veldmap::wrappingMultiply;

namespace {

/// \a offset moved up to the next multiple of \a align, modulo 2 to the 32nd power; 0 asks for no alignment.
int alignedUp(int offset, int align)
{
    if (align <= 0)
        return offset;
    const auto unit = static_cast<quint32>(align);
    const quint32 beyond = static_cast<quint32>(offset) % unit;
    return beyond == 0 ? offset : wrappingAdd(offset, static_cast<int>(unit - beyond));
}

QStringList namesOf(const std::vector<std::unique_ptr<VMXMLElement>> &members)
{
    QStringList names;
    for (const auto &member : members)
        names += member->getName();
    return names;
}

} // namespace

VMStruct::VMStruct(const QString &, const QString &name) : VMXMLElement(name, XML_STRUCT) {}

VMStruct::VMStruct(const VMStruct &source)
    : VMXMLElement(source), rubyConstants(source.rubyConstants), isTypedef(source.isTypedef),
      structSize(source.structSize), structAlign(source.structAlign)
{
    memberList.reserve(source.memberList.size());
    for (const auto &member : source.memberList) {
        memberList.emplace_back(anonymousCopy(member.get()));
        memberList.back()->reparent(this);
    }
}

VMStruct::~VMStruct() = default;

int VMStruct::sizeOf() const
{
    return structAlign == 0 ? 0 : alignedUp(structSize, structAlign);
}

int VMStruct::getAlignConstraint() const
{
    return structAlign;
}

bool VMStruct::isStruct() const
{
    return true;
}

QString VMStruct::getTypeString() const
{
    return typedefName;
}

void VMStruct::setReadError(bool failed)
{
    readError = failed;
    for (const auto &member : memberList)
        member->setReadError(failed);
}

int VMStruct::dumpInfo(int level) const
{
    int size = dumpLine(level, sizeof(*this));
    for (const auto &member : memberList)
        size += member->dumpInfo(level + 1);
    return size;
}

void VMStruct::addElement(VMXMLElement *element)
{
    Q_ASSERT_X(element, "VMStruct::addElement", "a structure takes elements, not null");
    memberList.emplace_back(element);
    const int place = alignedUp(structSize, qMin(element->getAlignConstraint(), 4));
    element->remap(static_cast<unsigned int>(place));
    element->reparent(this);
    structSize = wrappingAdd(place, element->sizeOf());
    structAlign = qMax(structAlign, element->getAlignConstraint());
}

QStringList VMStruct::getMemberList() const
{
    return namesOf(memberList);
}

bool VMStruct::isRootStruct() const
{
    return isRootElement();
}

bool VMStruct::hasInternalRegisters() const
{
    return !memberList.empty() && memberList.front()->getType() == XML_INTERNAL_REGISTER8;
}

VMArray::VMArray(const QString &name, VMXMLElement *element, int count, const QString &countExpression)
    : VMXMLElement(name, XML_ARRAY),
      countExpression(countExpression.isEmpty() ? QString::number(count) : countExpression), declaredCount(count)
{
    takePrototype(anonymousCopy(element));
    memberList.reserve(static_cast<std::size_t>(qMax(count, 0)));
    for (int index = 0; index < count; ++index)
        appendMember(anonymousCopy(prototype.get()));
    VMArray::setName(name);
}

VMArray::VMArray(const VMArray &source)
    : VMXMLElement(source), countExpression(source.countExpression), declaredCount(source.declaredCount)
{
    takePrototype(anonymousCopy(source.prototype.get()));
    memberList.reserve(source.memberList.size());
    for (const auto &member : source.memberList)
        appendMember(anonymousCopy(member.get()));
    VMArray::setName(source.name);
}

VMArray::~VMArray() = default;

void VMArray::takePrototype(VMXMLElement *copy)
{
    prototype.reset(copy);
    prototype->arrayNumber = 0;
    prototype->remap(0);
    prototype->reparent(this);
}

void VMArray::appendMember(VMXMLElement *copy)
{
    const int index = count();
    memberList.emplace_back(copy);
    copy->arrayNumber = index;
    copy->remap(static_cast<unsigned int>(wrappingMultiply(copy->sizeOf(), index)));
    copy->reparent(this);
}

int VMArray::sizeOf() const
{
    return wrappingMultiply(count(), prototype->sizeOf());
}

int VMArray::getAlignConstraint() const
{
    return prototype->getAlignConstraint();
}

bool VMArray::isArray() const
{
    return true;
}

QString VMArray::getTypeString() const
{
    return memberList.empty() ? u"Array"_s : prototype->getTypeString() + "[]"_L1;
}

void VMArray::setName(const QString &newName)
{
    name = newName;
    for (qsizetype index = 0; const auto &member : memberList)
        member->setName(newName + u'[' + QString::number(index++) + u']');
}

void VMArray::setReadError(bool failed)
{
    readError = failed;
    for (const auto &member : memberList)
        member->setReadError(failed);
}

int VMArray::dumpInfo(int level) const
{
    int size = dumpLine(level, sizeof(*this));
    for (const auto &member : memberList)
        size += member->dumpInfo(level + 1);
    return size;
}

int VMArray::count() const
{
    return static_cast<int>(memberList.size());
}

QStringList VMArray::getMemberList() const
{
    return namesOf(memberList);
}

VMHole::VMHole(int bits) : VMXMLElement(QString(), XML_HOLE), holeBits(bits)
{
    VMHole::remap(0);
}

int VMHole::sizeOf() const
{
    return holeBits / 8;
}

int VMHole::getAlignConstraint() const
{
    return 1;
}

void VMHole::remap(unsigned int newOffset)
{
    VMXMLElement::remap(newOffset);
    name = "Reserved_"_L1 + veldmap::hex8(offset) + u'_' + QString::number(holeBits);
}

void VMHole::setName(const QString &) {}

QString VMHole::getPath() const
{
    return {};
}

QString VMHole::getTypeString() const
{
    return u"Hole"_s;
}

VMMemory::VMMemory(const QString &name, int size) : VMXMLElement(name, XML_MEMORY), memorySize(size) {}

int VMMemory::sizeOf() const
{
    return memorySize;
}

int VMMemory::getAlignConstraint() const
{
    return 4;
}

QString VMMemory::getTypeString() const
{
    return u"memory"_s;
}

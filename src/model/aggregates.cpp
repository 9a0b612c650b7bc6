#include "model/aggregates.h"

#include "text/bit_arithmetic.h"
#include "text/lines.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

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

/// What the name of an array's member ends with: "[7]".
class Subscript {
public:
    explicit Subscript(int index)
    {
        m_text[--m_begin] = u']';
        auto digits = static_cast<quint32>(index);
        do {
            m_text[--m_begin] = static_cast<char16_t>(u'0' + digits % 10);
            digits /= 10;
        } while (digits != 0);
        m_text[--m_begin] = u'[';
    }

    bool isOf(const QString &name, const QString &array) const
    {
        return name.size() == array.size() + text().size() && name.endsWith(text()) && name.startsWith(array);
    }

    /// The name of the member, without spare room: an array may have many.
    QString nameIn(const QString &array) const
    {
        QString name;
        name.reserve(array.size() + text().size());
        name += array;
        name += text();
        return name;
    }

private:
    static constexpr std::size_t kLongest = 12; // "[4294967295]"
    QStringView text() const
    {
        return QStringView(m_text.data() + m_begin, static_cast<qsizetype>(kLongest - m_begin));
    }

    std::array<char16_t, kLongest> m_text;
    std::size_t m_begin = kLongest;
};

QStringList namesOf(const std::vector<std::unique_ptr<VMXMLElement>> &members)
{
    QStringList names;
    for (const auto &member : members)
        names += member->getName();
    return names;
}

} // namespace

VMStruct::VMStruct(const QString &, const QString &name) : VMXMLElement(name, XML_STRUCT) {}

VMStruct::VMStruct(const VMStruct &source, Outline)
    : VMXMLElement(source), rubyConstants(source.rubyConstants), isTypedef(source.isTypedef),
      structSize(source.structSize), structAlign(source.structAlign)
{
}

VMStruct::VMStruct(const VMStruct &source) : VMStruct(source, Outline())
{
    memberList.reserve(source.memberList.size());
    for (const auto &member : source.memberList) {
        memberList.emplace_back(anonymousCopy(member.get()));
        memberList.back()->reparent(this);
    }
}

VMStruct::~VMStruct() = default;

std::unique_ptr<VMStruct> VMStruct::outlineOf(const VMStruct &source)
{
    std::unique_ptr<VMStruct> outline(new VMStruct(source, Outline()));
    const auto isMember = [](const auto &member) { return member->getType() != XML_HOLE; };
    const auto &members = source.memberList;
    const auto first = std::ranges::find_if(members, isMember);
    if (first == members.end())
        return outline;
    const auto last = std::prev(std::find_if(members.rbegin(), members.rend(), isMember).base());
    outline->memberList.reserve(2);
    for (const auto member : {first, last}) {
        auto memory = std::make_unique<VMMemory>(QString(), (*member)->sizeOf());
        memory->remap((*member)->offset);
        memory->reparent(outline.get());
        outline->memberList.push_back(std::move(memory));
    }
    return outline;
}

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
    : VMXMLElement(name, XML_ARRAY), declaredCount(count),
      countExpression(countExpression.isEmpty() ? QString::number(count) : countExpression)
{
    takePrototype(anonymousCopy(element));
    memberList.reserve(static_cast<std::size_t>(qMax(count, 0)));
    for (int index = 0; index < count; ++index)
        appendMember(anonymousCopy(prototype.get()));
    VMArray::setName(name);
}

VMArray::VMArray(const VMArray &source)
    : VMXMLElement(source), declaredCount(source.declaredCount), countExpression(source.countExpression)
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
    for (int index = 0; const auto &member : memberList) {
        const Subscript subscript(index++);
        // The members of a copy have their names already, and share them; those of an array in it may have others.
        if (!subscript.isOf(member->name, newName))
            member->setName(subscript.nameIn(newName));
        else if (member->isArray())
            member->setName(QString(member->name));
    }
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
    name.squeeze();
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

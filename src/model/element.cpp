#include "model/element.h"

#include "text/lines.h"
#include "model/aggregates.h"
#include "model/archive.h"
#include "model/bitfield.h"
#include "model/pointer.h"
#include "model/root_archive.h"
#include "model/scalars.h"

#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

VMXMLElement::VMXMLElement(const QString &name, XMLElementType type) : type(type), name(name) {}

VMXMLElement::~VMXMLElement() = default;

void VMXMLElement::reparent(VMXMLElement *newParent)
{
    parent = newParent;
}

void VMXMLElement::remap(unsigned int newOffset)
{
    offset = newOffset;
}

int VMXMLElement::getBitSize() const
{
    return static_cast<int>(static_cast<quint32>(sizeOf()) * 8u);
}

const QString &VMXMLElement::getName() const
{
    return name;
}

const QString &VMXMLElement::getComment() const
{
    return comment;
}

int VMXMLElement::getArrayNumber() const
{
    return arrayNumber;
}

unsigned int VMXMLElement::getBaseAddress() const
{
    if (!parent)
        return offset;
    if (parent->isPointer())
        return static_cast<const VMPointer *>(parent)->getValue();
    return parent->getBaseAddress() + offset;
}

bool VMXMLElement::isValuable() const
{
    return false;
}

bool VMXMLElement::isStruct() const
{
    return false;
}

bool VMXMLElement::isArray() const
{
    return false;
}

bool VMXMLElement::isPointer() const
{
    return false;
}

QString VMXMLElement::getRubyClassName() const
{
    if (!typedefName.isEmpty())
        return "CH__"_L1 + typedefName;
    if (!parent)
        return "__"_L1 + getName();
    if (parent->isArray())
        return parent->getRubyPrefix() + "__content"_L1;
    if (const auto *pointer = elementCast<VMPointer>(std::as_const(parent)))
        return pointer->getRubyBasicType();
    return parent->getRubyPrefix() + "__"_L1 + getName();
}

QString VMXMLElement::getRubyPrefix() const
{
    return getRubyClassName();
}

QString VMXMLElement::getPath() const
{
    if (!parent || parent->getType() == XML_ROOT_ARCHIVE)
        return u'$' + getName();
    if (arrayNumber != -1)
        return parent->getPath() + u'[' + QString::number(arrayNumber) + u']';
    if (parent->getType() == XML_POINTER)
        return parent->getPath() + ".>"_L1;
    return parent->getPath() + u'.' + getName();
}

VMXMLElement::XMLElementType VMXMLElement::getType() const
{
    return type;
}

void VMXMLElement::setName(const QString &newName)
{
    name = newName;
}

QString VMXMLElement::getAddressString() const
{
    return "0x"_L1 + veldmap::hex8(getBaseAddress());
}

void VMXMLElement::setReadError(bool failed)
{
    readError = failed;
}

int VMXMLElement::dumpInfo(int) const
{
    std::printf("NO INFO\n");
    return 0;
}

VMXMLElement *VMXMLElement::getTopParent() const
{
    VMXMLElement *top = parent;
    while (top && top->parent)
        top = top->parent;
    return top;
}

VMRootArchive *VMXMLElement::getRootArchive() const
{
    return elementCast<VMRootArchive>(getTopParent());
}

VMXMLArchive *VMXMLElement::getTopArchive() const
{
    for (VMXMLElement *holder = parent; holder; holder = holder->parent) {
        if (auto *archive = elementCast<VMXMLArchive>(holder))
            return archive;
    }
    return nullptr;
}

bool VMXMLElement::isRootElement() const
{
    return !parent || parent->getType() == XML_ROOT_ARCHIVE || parent->getType() == XML_ARCHIVE;
}

bool VMXMLElement::isInstance() const
{
    return parent && parent->getType() == XML_ROOT_ARCHIVE;
}

unsigned int VMXMLElement::offsetOf(const VMXMLElement *other) const
{
    return other->getBaseAddress() - getBaseAddress();
}

void VMXMLElement::dumpIndent(int level)
{
    if (level > 0)
        std::printf("%*s|_", level, "");
}

int VMXMLElement::dumpLine(int level, std::size_t objectSize) const
{
    dumpIndent(level);
    std::printf("%d %s\n", static_cast<int>(objectSize), getName().toUtf8().constData());
    return static_cast<int>(objectSize);
}

VMXMLElement *VMXMLElement::anonymousCopy(const VMXMLElement *source)
{
    const auto copyAs = [source]<typename T>(std::type_identity<T>) -> VMXMLElement * {
        return std::make_unique<T>(static_cast<const T &>(*source)).release();
    };
    switch (source->getType()) {
    case XML_HOLE:
        return copyAs(std::type_identity<VMHole>());
    case XML_REGISTER32:
        return copyAs(std::type_identity<VMRegister32>());
    case XML_REGISTER16:
        return copyAs(std::type_identity<VMRegister16>());
    case XML_REGISTER8:
        return copyAs(std::type_identity<VMRegister8>());
    case XML_INTERNAL_REGISTER8:
        return copyAs(std::type_identity<VMInternalRegister8>());
    case XML_BITFIELD:
        return copyAs(std::type_identity<VMBitField>());
    case XML_POINTER:
        return copyAs(std::type_identity<VMPointer>());
    case XML_INT32:
        return copyAs(std::type_identity<VMInt32>());
    case XML_INT16:
        return copyAs(std::type_identity<VMInt16>());
    case XML_INT8:
        return copyAs(std::type_identity<VMInt8>());
    case XML_UNSIGNED_INT32:
        return copyAs(std::type_identity<VMUnsignedInt32>());
    case XML_UNSIGNED_INT16:
        return copyAs(std::type_identity<VMUnsignedInt16>());
    case XML_UNSIGNED_INT8:
        return copyAs(std::type_identity<VMUnsignedInt8>());
    case XML_BOOLEAN:
        return copyAs(std::type_identity<VMBoolean>());
    case XML_STRUCT:
        return copyAs(std::type_identity<VMStruct>());
    case XML_ARRAY:
        return copyAs(std::type_identity<VMArray>());
    case XML_MEMORY:
        return copyAs(std::type_identity<VMMemory>());
    case XML_VOID:
        return copyAs(std::type_identity<VMVoid>());
    case XML_VALUABLE:
    case XML_ARCHIVE:
    case XML_ROOT_ARCHIVE:
        break;
    }
    return nullptr;
}

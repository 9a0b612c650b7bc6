#include "model/element.h"

#include "model/visit.h"
#include "text/lines.h"

#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

VMXMLElement::VMXMLElement(const QString &name, XMLElementType type) : name(name), type(type) {}

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
    Q_ASSERT_X(other, "VMXMLElement::offsetOf", "a distance leads to an element, not to null");
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
    Q_ASSERT_X(source, "VMXMLElement::anonymousCopy", "there is no copy of null");
    return veldmap::visit(*source, [](const auto &element) -> VMXMLElement * {
        using Kind = std::remove_cvref_t<decltype(element)>;
        if constexpr (std::is_copy_constructible_v<Kind>)
            return std::make_unique<Kind>(element).release();
        else
            return nullptr; // an archive
    });
}

#include "model/pointer.h"

#include "model/root_archive.h"
#include "model/tree_size.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

// An element behind a pointer to its own type could be followed without end, by copies of any size. Lists and trees of
// real software are followed a few steps at a time.

/// Levels of elements that may lie behind pointers, one behind the other. They are walked and freed by recursion.
constexpr int kPointedLevels = 4096;
/// Elements that they may have together before the last one is made: a load has had room for one element of each type,
/// so one more is no danger. An element takes about 400 bytes.
constexpr qint64 kPointedElements = 256 * 1024;

} // namespace

VMPointer::VMPointer(const QString &name, const QString &pointedType)
    : VMValuable(name, true, true), pointedType(pointedType)
{
    type = XML_POINTER;
}

VMPointer::VMPointer(const VMPointer &source)
    : VMValuable(source), pointerValue(source.pointerValue), pointedType(source.pointedType)
{
    if (source.pointedElement) {
        pointedElement.reset(anonymousCopy(source.pointedElement.get()));
        pointedElement->reparent(this);
    }
}

VMPointer::~VMPointer() = default;

int VMPointer::sizeOf() const
{
    return 4;
}

int VMPointer::getAlignConstraint() const
{
    return 4;
}

bool VMPointer::isPointer() const
{
    return true;
}

QString VMPointer::getTypeString() const
{
    return (pointedElement ? pointedElement->getTypeString() : pointedType) + u'*';
}

void VMPointer::setReadError(bool failed)
{
    readError = failed;
    if (pointedElement)
        pointedElement->setReadError(failed);
}

int VMPointer::dumpInfo(int level) const
{
    const int size = dumpLine(level, sizeof(*this));
    return pointedElement ? size + pointedElement->dumpInfo(level + 1) : size;
}

unsigned int VMPointer::getValue() const
{
    return pointerValue;
}

void VMPointer::setValue(unsigned int value)
{
    pointerValue = value;
}

void VMPointer::allocatePointedElement()
{
    VMRootArchive *root = getRootArchive();
    const VMXMLElement *type = root ? root->getTemplate(pointedType) : nullptr;
    const veldmap::TreeSize size = type ? veldmap::treeSizeOf(*type) : veldmap::TreeSize();
    if (pointedElement || !root || !hasRoomBehindFor(size.depth))
        return;
    std::unique_ptr<VMXMLElement> element(root->allocateElementFromTypeName(pointedType, "*("_L1 + getName() + u')'));
    if (!element)
        return;
    element->reparent(this);
    element->remap(getValue());
    pointedElement = std::move(element);
    m_pointedElements = size.elements;
    m_pointedLevels = size.depth;
}

bool VMPointer::hasRoomBehindFor(qint64 levels) const
{
    qint64 elements = 0; // behind the pointers in front of this one
    for (const VMXMLElement *holder = parent; holder; holder = holder->parent) {
        if (const auto *pointer = elementCast<VMPointer>(holder)) {
            elements += pointer->m_pointedElements;
            levels += pointer->m_pointedLevels;
        }
    }
    return levels <= kPointedLevels && elements < kPointedElements;
}

void VMPointer::deletePointedElement()
{
    pointedElement.reset();
    m_pointedElements = 0;
    m_pointedLevels = 0;
}

void VMPointer::pointTo(VMXMLElement *element)
{
    if (element != pointedElement.get()) {
        deletePointedElement();
        pointedElement.reset(element);
    }
    pointerValue = element ? element->getBaseAddress() : 0;
    if (element)
        element->reparent(this);
}

void VMPointer::setInnerData(const unsigned char *data, int length)
{
    const unsigned char *end = data + qMax(length, 0);
    const unsigned char *zero = std::find(data, end, '\0');
    innerData = QString::fromLatin1(reinterpret_cast<const char *>(data), zero - data);
    if (zero == end)
        innerData += "..."_L1;
}

#include "check/c_layout.h"

#include "check/declared.h"

namespace veldmap {

namespace {

qint64 alignedUp(qint64 offset, qint64 align)
{
    return (offset + align - 1) / align * align;
}

/// What the tree says of an element that C declares as it is.
CLayout::Size asInTree(const VMXMLElement &element)
{
    return {qMax(element.sizeOf(), 0), qMax(element.getAlignConstraint(), 1)};
}

/// The registers that the header fills a gap with: the widest that lie aligned in it.
CLayout::Size sizeOfHole(const VMHole &hole)
{
    for (const int unit : {4, 2}) {
        if (hole.holeBits % (8 * unit) == 0 && hole.offset % static_cast<quint32>(unit) == 0)
            return {qMax(hole.holeBits, 0) / 8, hole.holeBits > 0 ? unit : 1};
    }
    return {qMax(hole.holeBits, 0) / 8, 1};
}

/// An alias of a register with fields is a structure of C bitfields, which lie one behind the other whatever their
/// positions; none crosses the border of a word.
CLayout::Size sizeOfFieldStructure(const VMValuable &valuable)
{
    const qint64 word = valuable.getBitSize();
    qint64 bits = 0;
    for (const auto &field : valuable.bitFields) {
        const qint64 width = field->getBitSize();
        if (width < 1 || width > word)
            return asInTree(valuable); // no compiler takes it
        if (bits / word != (bits + width - 1) / word)
            bits = alignedUp(bits, word);
        bits += width;
    }
    return {alignedUp(bits, word) / 8, word / 8};
}

} // namespace

TypeNames::TypeNames(const VMRootArchive &root)
{
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const auto &element : archive->templates) {
            const VMXMLElement *&known = m_types[element->typedefName];
            known = known ? known : element.get();
        }
    }
}

const VMXMLElement *TypeNames::typeOf(const VMXMLElement &element) const
{
    const bool isAlias = element.parent && element.parent->getType() == VMXMLElement::XML_ARCHIVE;
    return find(isAlias ? element.declaredType : element.typedefName);
}

CLayout::Size CLayout::sizeOf(const VMXMLElement &element)
{
    if (isCopyOfType(element)) {
        const VMXMLElement *type = m_types.typeOf(element);
        return type ? sizeOfTemplate(*type) : asInTree(element);
    }
    return visit(element, Overloads{[&](const VMStruct &structure) {
                                        return walk(structure, [](const VMXMLElement &, qint64) {});
                                    },
                                    [&](const VMArray &array) {
                                        const Size one = sizeOf(*array.prototype);
                                        return Size{one.bytes * array.count(), array.count() > 0 ? one.align : 1};
                                    },
                                    [](const VMHole &hole) { return sizeOfHole(hole); },
                                    [](const VMMemory &memory) {
                                        return Size{qMax(memory.memorySize, 0), 1};
                                    },
                                    [](const VMXMLElement &other) { return asInTree(other); }});
}

CLayout::Size CLayout::sizeOfTemplate(const VMXMLElement &element)
{
    const auto known = m_templates.constFind(&element);
    if (known != m_templates.cend())
        return *known;
    // Two types of one name can seem to hold each other.
    m_templates.insert(&element, asInTree(element));
    const auto *valuable = elementCast<VMValuable>(&element);
    const bool isFieldStructure =
        valuable && !valuable->enumTemplate && !valuable->isPointer() && !valuable->bitFields.empty();
    const Size size = isFieldStructure ? sizeOfFieldStructure(*valuable) : sizeOf(element);
    m_templates.insert(&element, size);
    return size;
}

CLayout::Size CLayout::walk(const VMStruct &structure,
                            const std::function<void(const VMXMLElement &, qint64 offset)> &onMember)
{
    Size all;
    for (const auto &member : structure.memberList) {
        const Size size = sizeOf(*member);
        all.bytes = alignedUp(all.bytes, size.align);
        if (size.bytes > 0)
            onMember(*member, all.bytes);
        all.bytes += size.bytes;
        all.align = qMax(all.align, size.align);
    }
    all.bytes = alignedUp(all.bytes, all.align);
    return all;
}

} // namespace veldmap

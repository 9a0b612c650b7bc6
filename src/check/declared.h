#pragma once

#include "model/kinds.h"
#include "model/visit.h"

namespace veldmap {

/// Whether \a element repeats what another template declares: an instance of a type inside a structure, or an alias of
/// such an instance.
inline bool isCopyOfType(const VMXMLElement &element)
{
    if (!element.parent || element.parent->getType() != VMXMLElement::XML_ARCHIVE)
        return !element.typedefName.isEmpty();
    return !element.declaredType.isEmpty() && !element.isPointer() &&
           !scalarKindNamed(element.declaredType, kMemberTag);
}

/// The path of \a element from its template on, as an author would write it: "uart.chan.ctrl". In an array it is that
/// of the array.
inline QString declaredPath(const VMXMLElement &element)
{
    const VMXMLElement *parent = element.parent;
    if (!parent || parent->getType() == VMXMLElement::XML_ARCHIVE)
        return element.typedefName;
    if (element.arrayNumber != -1 && parent->isArray())
        return declaredPath(*parent);
    return declaredPath(*parent) + u'.' + element.getName();
}

/// Calls \a visitor, as visit() does, with all that a template declares, holders before what they hold: the template
/// itself and its members, of an array the prototype. Copies of other types are visited too, but not what is in them.
template <typename Visitor>
void visitDeclared(const VMXMLElement &element, const Visitor &visitor)
{
    visit(element, visitor);
    if (isCopyOfType(element))
        return;
    visit(element, Overloads{[&](const VMStruct &structure) {
                                 for (const auto &member : structure.memberList)
                                     visitDeclared(*member, visitor);
                             },
                             [&](const VMArray &array) { visitDeclared(*array.prototype, visitor); },
                             [](const VMXMLElement &) {}});
}

/// The same for all templates of \a root.
template <typename Visitor>
void visitDeclared(const VMRootArchive &root, const Visitor &visitor)
{
    for (const VMXMLArchive *archive : root.xmlArchives) {
        for (const auto &element : archive->templates)
            visitDeclared(*element, visitor);
    }
}

} // namespace veldmap

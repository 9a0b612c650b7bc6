#pragma once

#include <veldmap/model/aggregates.h>
#include <veldmap/model/archive.h>
#include <veldmap/model/pointer.h>
#include <veldmap/model/root_archive.h>
#include <veldmap/model/scalars.h>

#include <type_traits>
#include <utility>

/// The one place where code asks an element for its kind. Everything that walks the tree calls visit() with an overload
/// for each class that it treats alike:
///
///     struct SizeOf {
///         int operator()(const VMStruct &structure) const;
///         int operator()(const VMValuable &valuable) const;     // all registers, integers and pointers
///         int operator()(const VMXMLElement &) const;           // all that is left
///     };
///
/// A kind that is added makes the switch incomplete, which the compiler reports.
namespace veldmap {

/// What visit() makes of an element of the dynamic class T: T as constant as the element.
template <typename Element, typename T>
using AsConstAs = std::conditional_t<std::is_const_v<Element>, const T, T>;

/// Calls \a visitor with \a element as the class of its kind.
template <typename Element, typename Visitor>
requires std::is_same_v<std::remove_const_t<Element>, VMXMLElement>
decltype(auto) visit(Element &element, Visitor &&visitor)
{
    const auto as = [&]<typename T>(std::type_identity<T>) -> decltype(auto) {
        return std::forward<Visitor>(visitor)(static_cast<AsConstAs<Element, T> &>(element));
    };
    switch (element.getType()) {
    case VMXMLElement::XML_HOLE:
        return as(std::type_identity<VMHole>());
    case VMXMLElement::XML_REGISTER32:
        return as(std::type_identity<VMRegister32>());
    case VMXMLElement::XML_REGISTER16:
        return as(std::type_identity<VMRegister16>());
    case VMXMLElement::XML_REGISTER8:
        return as(std::type_identity<VMRegister8>());
    case VMXMLElement::XML_INTERNAL_REGISTER8:
        return as(std::type_identity<VMInternalRegister8>());
    case VMXMLElement::XML_BITFIELD:
        return as(std::type_identity<VMBitField>());
    case VMXMLElement::XML_POINTER:
        return as(std::type_identity<VMPointer>());
    case VMXMLElement::XML_INT32:
        return as(std::type_identity<VMInt32>());
    case VMXMLElement::XML_INT16:
        return as(std::type_identity<VMInt16>());
    case VMXMLElement::XML_INT8:
        return as(std::type_identity<VMInt8>());
    case VMXMLElement::XML_UNSIGNED_INT32:
        return as(std::type_identity<VMUnsignedInt32>());
    case VMXMLElement::XML_UNSIGNED_INT16:
        return as(std::type_identity<VMUnsignedInt16>());
    case VMXMLElement::XML_UNSIGNED_INT8:
        return as(std::type_identity<VMUnsignedInt8>());
    case VMXMLElement::XML_BOOLEAN:
        return as(std::type_identity<VMBoolean>());
    case VMXMLElement::XML_STRUCT:
        return as(std::type_identity<VMStruct>());
    case VMXMLElement::XML_ARRAY:
        return as(std::type_identity<VMArray>());
    case VMXMLElement::XML_MEMORY:
        return as(std::type_identity<VMMemory>());
    case VMXMLElement::XML_ARCHIVE:
        return as(std::type_identity<VMXMLArchive>());
    case VMXMLElement::XML_ROOT_ARCHIVE:
        return as(std::type_identity<VMRootArchive>());
    case VMXMLElement::XML_VOID:
        return as(std::type_identity<VMVoid>());
    case VMXMLElement::XML_VALUABLE:
        break; // the base of a valuable under construction, which nobody can visit
    }
    return as(std::type_identity<VMValuable>());
}

/// Overloads given one by one: visit(element, Overloads{[](const VMStruct &) {...}, [](const VMXMLElement &) {...}}).
template <typename... Functions>
struct Overloads : Functions... {
    using Functions::operator()...;
};
template <typename... Functions>
Overloads(Functions...) -> Overloads<Functions...>;

} // namespace veldmap

#include "model/scalars.h"

using namespace Qt::StringLiterals;

QString scalarTypeWord(VMXMLElement::XMLElementType type)
{
    switch (type) {
    case VMXMLElement::XML_REGISTER32:
        return u"Reg32"_s;
    case VMXMLElement::XML_REGISTER16:
        return u"Reg16"_s;
    case VMXMLElement::XML_REGISTER8:
    case VMXMLElement::XML_INTERNAL_REGISTER8:
        return u"Reg8"_s;
    case VMXMLElement::XML_INT32:
        return u"int32"_s;
    case VMXMLElement::XML_INT16:
        return u"int16"_s;
    case VMXMLElement::XML_INT8:
        return u"int8"_s;
    case VMXMLElement::XML_UNSIGNED_INT32:
        return u"uint32"_s;
    case VMXMLElement::XML_UNSIGNED_INT16:
        return u"uint16"_s;
    case VMXMLElement::XML_UNSIGNED_INT8:
        return u"uint8"_s;
    case VMXMLElement::XML_BOOLEAN:
        return u"bool"_s;
    case VMXMLElement::XML_VOID:
        return u"void"_s;
    case VMXMLElement::XML_HOLE:
    case VMXMLElement::XML_VALUABLE:
    case VMXMLElement::XML_BITFIELD:
    case VMXMLElement::XML_POINTER:
    case VMXMLElement::XML_STRUCT:
    case VMXMLElement::XML_ARRAY:
    case VMXMLElement::XML_MEMORY:
    case VMXMLElement::XML_ARCHIVE:
    case VMXMLElement::XML_ROOT_ARCHIVE:
        break;
    }
    return {};
}

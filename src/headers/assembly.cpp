#include "text/lines.h"
#include "headers/c_names.h"
#include "headers/template_macros.h"
#include "headers/trace.h"
#include "model/aggregates.h"
#include "model/root_archive.h"
#include "model/valuable.h"

using namespace Qt::StringLiterals;
using veldmap::Column;
using veldmap::lineOf;

// What stands in the headers for the instances of a template:
//
//     #define REG_UART0_BASE              0x01A00000
//     #define REG_UART0_BASE_HI           BASE_HI(REG_UART0_BASE)
//     #define REG_UART0_CHAN_1            REG_UART0_BASE_LO + 0x0000000C
//     #define hwp_uart0                   ((HWP_UART_T*) KSEG1(REG_UART0_BASE))
//                                         ^ 36

namespace {

constexpr int kValueColumn = 36;

QString baseMacroOf(const VMXMLElement &instance)
{
    return "REG_"_L1 + instance.getName().toUpper() + "_BASE"_L1;
}

/// The element's name as a piece of a macro's name: chan[3] gives CHAN_3.
QString macroName(const VMXMLElement &element)
{
    QString name = element.getName().toUpper();
    name.replace(u'[', u'_');
    name.remove(u']');
    return name;
}

/// A module, or a structure that an alias names: hardware, to which instances are pointers of another kind.
bool isHardware(const VMXMLElement &element)
{
    const auto *structure = elementCast<VMStruct>(&element);
    return structure && !structure->isTypedef;
}

} // namespace

QString VMRootArchive::c_getMatchingInstancesBaseAddresses(const VMXMLElement *element) const
{
    QString text;
    for (const VMXMLElement *instance : matchingInstances(element))
        text += lineOf("#define "_L1, baseMacroOf(*instance), Column{kValueColumn}, instance->getAddressString());
    return text;
}

QString VMRootArchive::c_getMatchingInstancesAsmDescription(const VMXMLElement *element) const
{
    QString text;
    for (const VMXMLElement *instance : matchingInstances(element)) {
        const QString base = baseMacroOf(*instance);
        text += lineOf("#define "_L1, base, "_HI"_L1, Column{kValueColumn}, "BASE_HI("_L1, base, u")");
        text += lineOf("#define "_L1, base, "_LO"_L1, Column{kValueColumn}, "BASE_LO("_L1, base, u")\n");
        // The template lies at 0, so its addresses are the offsets to add to the instance's base.
        text += element->asm_serialize(instance->getName().toUpper(), base + "_LO"_L1);
        text += u'\n';
    }
    return text;
}

QString VMRootArchive::c_getMatchingInstancesInstanciation(const VMXMLElement *element) const
{
    const bool hardware = isHardware(*element);
    QString text;
    for (const VMXMLElement *instance : matchingInstances(element)) {
        veldmap::trace(instance->getTypeString());
        text += lineOf("#define "_L1, hardware ? "hwp_"_L1 : "p_"_L1, instance->getCInstanceName(),
                       Column{kValueColumn}, hardware ? "((HWP_"_L1 : "(("_L1, instance->getTypeString().toUpper(),
                       "_T*) KSEG1("_L1, baseMacroOf(*instance), u"))");
    }
    return text + u'\n';
}

QString VMXMLElement::getCInstanceName() const
{
    return ESDRConvert(getName());
}

QString VMXMLElement::asm_content() const
{
    QString text;
    const VMRootArchive *root = getRootArchive();
    if (root)
        text += root->c_getMatchingInstancesBaseAddresses(this);
    text += u'\n';
    if (root)
        text += root->c_getMatchingInstancesAsmDescription(this);
    text += veldmap::templateMacros(*this);
    return text;
}

QString VMXMLElement::asm_serialize(const QString &, const QString &) const
{
    return {};
}

QString VMBitField::asm_serialize(const QString &, const QString &) const
{
    return {};
}

QString VMValuable::asm_serialize(const QString &prefix, const QString &base) const
{
    return lineOf("#define REG_"_L1, prefix, u"_", macroName(*this), Column{kValueColumn}, base, " + "_L1,
                  getAddressString());
}

QString VMStruct::asm_serialize(const QString &prefix, const QString &base) const
{
    const QString memberPrefix = prefix + macroName(*this);
    QString text;
    for (const auto &member : memberList)
        text += member->asm_serialize(memberPrefix, base);
    return text;
}

QString VMArray::asm_serialize(const QString &prefix, const QString &base) const
{
    const QString structPrefix = prefix.endsWith(u'_') ? prefix : prefix + u'_';
    QString text;
    for (const auto &member : memberList)
        text += member->asm_serialize(member->isStruct() ? structPrefix : prefix, base);
    return text;
}

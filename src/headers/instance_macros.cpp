#include "headers/instance_macros.h"

#include "headers/c_names.h"
#include "model/aggregates.h"
#include "model/root_archive.h"
#include "text/lines.h"

#include <cstdio>

using namespace Qt::StringLiterals;
using veldmap::appendLine;
using veldmap::Column;

// What stands in the headers for the instances of a template:
//
//     #define REG_UART0_BASE              0x01A00000
//     #define REG_UART0_BASE_HI           BASE_HI(REG_UART0_BASE)
//     #define hwp_uart0                   ((HWP_UART_T*) KSEG1(REG_UART0_BASE))
//                                         ^ 36

namespace veldmap {

namespace {

constexpr int kValueColumn = 36;

QString baseMacroOf(const VMXMLElement &instance)
{
    return "REG_"_L1 + instance.getName().toUpper() + "_BASE"_L1;
}

/// A module, or a structure that an alias names: hardware, to which instances are pointers of another kind.
bool isHardware(const VMXMLElement &element)
{
    const auto *structure = elementCast<VMStruct>(&element);
    return structure && !structure->isTypedef;
}

} // namespace

InstanceIndex::InstanceIndex(const VMRootArchive &root)
{
    for (const auto &instance : root.instances)
        m_byType[instance->getTypeString()] += instance.get();
}

Instances InstanceIndex::of(const VMXMLElement &element) const
{
    return m_byType.value(element.getTypeString());
}

Instances instancesOf(const VMRootArchive &root, const VMXMLElement &element)
{
    const QString word = element.getTypeString();
    Instances instances;
    for (const auto &instance : root.instances) {
        if (instance->getTypeString() == word)
            instances += instance.get();
    }
    return instances;
}

QString baseAddressMacros(const Instances &instances)
{
    QString text;
    for (const VMXMLElement *instance : instances)
        appendLine(text, "#define "_L1, baseMacroOf(*instance), Column{kValueColumn}, instance->getAddressString());
    return text;
}

QString addressMacros(const Instances &instances, const VMXMLElement &element)
{
    QString text;
    for (const VMXMLElement *instance : instances) {
        const QString base = baseMacroOf(*instance);
        appendLine(text, "#define "_L1, base, "_HI"_L1, Column{kValueColumn}, "BASE_HI("_L1, base, u")");
        appendLine(text, "#define "_L1, base, "_LO"_L1, Column{kValueColumn}, "BASE_LO("_L1, base, u")\n");
        // The template lies at 0, so its addresses are the offsets to add to the instance's base.
        text += element.asm_serialize(instance->getName().toUpper(), base + "_LO"_L1);
        text += u'\n';
    }
    return text;
}

QString pointerMacros(const Instances &instances, const VMXMLElement &element, QStringList &pointedTypes)
{
    const bool hardware = isHardware(element);
    QString text;
    for (const VMXMLElement *instance : instances) {
        const QString type = instance->getTypeString();
        pointedTypes += type;
        appendLine(text, "#define "_L1, hardware ? "hwp_"_L1 : "p_"_L1, instance->getCInstanceName(),
                   Column{kValueColumn}, hardware ? "((HWP_"_L1 : "(("_L1, type.toUpper(), "_T*) KSEG1("_L1,
                   baseMacroOf(*instance), u"))");
    }
    return text + u'\n';
}

void tracePointedTypes(const QStringList &pointedTypes)
{
    for (const QString &type : pointedTypes)
        std::printf("%s\n", type.toUtf8().constData());
}

} // namespace veldmap

QString VMRootArchive::c_getMatchingInstancesBaseAddresses(const VMXMLElement *element) const
{
    return veldmap::baseAddressMacros(veldmap::instancesOf(*this, *element));
}

QString VMRootArchive::c_getMatchingInstancesAsmDescription(const VMXMLElement *element) const
{
    return veldmap::addressMacros(veldmap::instancesOf(*this, *element), *element);
}

QString VMRootArchive::c_getMatchingInstancesInstanciation(const VMXMLElement *element) const
{
    QStringList pointedTypes;
    const QString text = veldmap::pointerMacros(veldmap::instancesOf(*this, *element), *element, pointedTypes);
    veldmap::tracePointedTypes(pointedTypes);
    return text;
}

QString VMXMLElement::getCInstanceName() const
{
    return ESDRConvert(getName());
}

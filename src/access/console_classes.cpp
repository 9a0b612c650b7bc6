#include "model/kinds.h"
#include "model/visit.h"

using namespace Qt::StringLiterals;

// A Ruby console has a class for each type of a description, and some of its own for what has none:
//
//     CH__uart             the template uart
//     CH__uart__fifo       its member fifo
//     CH__uart__chan       its member chan, an array
//     CH__uart__chan__content    a member of that
//     CHUnsignedInt        a uint8 behind a pointer

namespace {

/// The class of an element that no class of the console stands for by its kind.
QString classByPlace(const VMXMLElement &element)
{
    if (!element.typedefName.isEmpty())
        return "CH__"_L1 + element.typedefName;
    const VMXMLElement *parent = element.parent;
    if (!parent)
        return "__"_L1 + element.getName();
    if (parent->isArray())
        return parent->getRubyPrefix() + "__content"_L1;
    if (const auto *pointer = elementCast<VMPointer>(parent))
        return pointer->getRubyBasicType();
    return parent->getRubyPrefix() + "__"_L1 + element.getName();
}

struct ClassOf {
    QString operator()(const VMHole &) const { return u"CRHole"_s; }
    QString operator()(const VMMemory &) const { return u"CRMemory"_s; }
    QString operator()(const VMPointer &) const { return u"CHPointer"_s; }
    QString operator()(const VMXMLArchive &) const { return {}; }
    QString operator()(const VMRootArchive &) const { return {}; }
    QString operator()(const VMXMLElement &element) const { return classByPlace(element); }
};

/// Nothing lies in a gap or a memory, and archives are no part of a class's name.
struct PrefixOf {
    QString operator()(const VMHole &) const { return {}; }
    QString operator()(const VMMemory &) const { return {}; }
    QString operator()(const VMXMLElement &element) const { return element.getRubyClassName(); }
};

} // namespace

QString VMXMLElement::getRubyClassName() const
{
    return veldmap::visit(*this, ClassOf());
}

QString VMXMLElement::getRubyPrefix() const
{
    return veldmap::visit(*this, PrefixOf());
}

QString VMPointer::getRubyBasicType() const
{
    if (pointedType == veldmap::kMemoryWord)
        return u"CHMemory"_s;
    const veldmap::ScalarKind *kind = veldmap::scalarKindNamed(pointedType, veldmap::kPointedType);
    return kind ? QString(kind->rubyClass) : u"VMPOINTER_BASIC_RUBY_TYPE_ERROR"_s;
}

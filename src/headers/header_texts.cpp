#include "headers/header_texts.h"

#include "headers/c_names.h"
#include "headers/template_macros.h"
#include "model/aggregates.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "model/valuable.h"
#include "text/lines.h"

#include <optional>
#include <utility>

using namespace Qt::StringLiterals;
using veldmap::HeaderTexts;
using veldmap::Instances;
using veldmap::lineOf;

// The headers of one archive. The C header:
//
//     banner, include guard, includes
//     MACROS      the variables and enums
//     TYPES       a block for each template: base addresses, typedef, typed pointers, bitfield macros
//     the archive's own C text
//
// and the assembly header, whose blocks are base addresses, address macros and the same bitfield macros.

namespace {

constexpr int kBannerWidth = 80;
constexpr int kCommentWidth = 80;

constexpr QLatin1StringView kRule =
    "// ============================================================================="_L1;
constexpr QLatin1StringView kTypeRule =
    "// ============================================================================"_L1;
constexpr QLatin1StringView kTypeUnderline =
    "// -----------------------------------------------------------------------------"_L1;
constexpr QLatin1StringView kWideRule =
    "//=============================================================================="_L1;
constexpr QLatin1StringView kWideUnderline =
    "//------------------------------------------------------------------------------"_L1;

/// The banner's lines behind the two slashes. A rule stands for an empty text; the words between dollar signs are for a
/// version control system to fill in.
constexpr QLatin1StringView kNoticeLines[] = {
    "  This file was made by a program from the description of a chip or of"_L1,
    "  software. It describes that chip or software as its description does,"_L1,
    "  and claims nothing beyond it."_L1,
    "  It comes without any warranty, neither that it is free of faults nor that"_L1,
    "  it is fit for a particular purpose. Who uses it checks it for that use."_L1,
    "  The rights in the description, and the terms on which it was given,"_L1,
    "  extend to this file."_L1,
};

QString bannerLine(QLatin1StringView text)
{
    return ("//"_L1 + QString(text)).leftJustified(kBannerWidth) + u'\n';
}

/// A line of the banner with a tab, which counts as one character of a line one shorter.
QString tabbedBannerLine(QLatin1StringView text)
{
    return ("//\t"_L1 + QString(text)).leftJustified(kBannerWidth - 1) + u'\n';
}

QString sectionHead(QLatin1StringView title)
{
    return lineOf(kRule) + lineOf("//  "_L1, title) + lineOf(kRule);
}

/// What stands in front of a type: its name and comment between rules.
QString typeHead(QLatin1StringView rule, QLatin1StringView underline, QLatin1StringView endRule, const QString &name,
                 const QString &comment)
{
    return lineOf(rule) + lineOf("// "_L1, name) + lineOf(underline) +
           lineOf(convertCommentToCComment(comment, kCommentWidth, 0)) + lineOf(endRule);
}

QString guardOf(const VMXMLArchive &archive, QLatin1StringView suffix)
{
    return u'_' + archive.getBaseName().toUpper() + suffix;
}

QString cInclude(const VMXMLInclude &include)
{
    if (include.conditions.isEmpty())
        return lineOf("#include \""_L1, include.headerName, u"\"");
    QString text;
    for (const VMXMLIncludeCondition &alternative : include.conditions) {
        text += lineOf(text.isEmpty() ? "#if "_L1 : "#elif "_L1, alternative.condition);
        text += lineOf("    #include \""_L1, alternative.headerName, u"\"");
    }
    return text + lineOf("#else"_L1) + lineOf("    #include \""_L1, include.headerName, u"\"") + lineOf("#endif"_L1);
}

/// The assembly header has no #else: code that fits none of the conditions has nothing to include.
QString asmInclude(const VMXMLInclude &include)
{
    const auto asmHeader = [](QString name) { return name.remove(".h"_L1) + "_asm.h"_L1; };
    if (include.conditions.isEmpty())
        return lineOf("#include \""_L1, asmHeader(include.headerName), u"\"");
    QString text;
    for (const VMXMLIncludeCondition &alternative : include.conditions) {
        text += lineOf(text.isEmpty() ? "#if "_L1 : "#elif "_L1, alternative.condition);
        text += lineOf("    #include \""_L1, asmHeader(alternative.headerName), u"\"");
    }
    return text + lineOf("#endif"_L1);
}

/// The variables of a C header. An enum stands whole in the place of its first entry.
QString cVariables(const VMVariableManager &variables)
{
    QString text;
    const VMEnum *last = nullptr;
    for (const VMIntVar &variable : variables) {
        if (!variable.ownerEnum) {
            text += variable.c_serialize(false);
        } else if (variable.ownerEnum != last) {
            last = variable.ownerEnum;
            text += u'\n' + last->c_serialize(0) + "\n\n"_L1;
        }
    }
    return text;
}

bool isEnumTemplate(const VMXMLElement &element)
{
    const auto *valuable = elementCast<VMValuable>(&element);
    return valuable && valuable->enumTemplate;
}

/// A module, whose instances get typed pointers.
bool isModule(const VMXMLElement &element)
{
    const auto *structure = elementCast<VMStruct>(&element);
    return structure && !structure->isTypedef;
}

/// What a header says of the template \a element. Without \a instances, of an element that hangs on no root, it says
/// nothing of any.
QString cBlockOf(const VMXMLElement &element, const Instances *instances, const QString &macros,
                 QStringList &pointedTypes)
{
    QString text;
    if (instances)
        text += veldmap::baseAddressMacros(*instances);
    text += "\n\n"_L1;
    text += element.c_typedefSerialize();
    text += u'\n';
    if (isModule(element)) {
        if (instances)
            text += veldmap::pointerMacros(*instances, element, pointedTypes);
        text += u'\n';
    }
    text += macros;
    return text;
}

QString assemblyBlockOf(const VMXMLElement &element, const Instances *instances, const QString &macros)
{
    QString text;
    if (instances)
        text += veldmap::baseAddressMacros(*instances);
    text += u'\n';
    if (instances)
        text += veldmap::addressMacros(*instances, element);
    text += macros;
    return text;
}

/// Builds the C header of one archive block by block.
class CHeader {
public:
    explicit CHeader(const VMXMLArchive &archive);

    void append(const VMXMLElement &element, const Instances *instances, const QString &macros)
    {
        m_text += typeHead(kTypeRule, kTypeUnderline, kRule, element.getCTypeString(), element.getComment());
        m_text += cBlockOf(element, instances, macros, m_pointedTypes);
        m_text += "\n\n"_L1;
    }

    QString take();
    const QStringList &pointedTypes() const { return m_pointedTypes; }

private:
    const VMXMLArchive &m_archive;
    QString m_text;
    QStringList m_pointedTypes;
};

CHeader::CHeader(const VMXMLArchive &archive) : m_archive(archive)
{
    const QString guard = guardOf(archive, "_H_"_L1);
    m_text = archive.c_header() + u'\n' + lineOf("#ifndef "_L1, guard) + lineOf("#define "_L1, guard) + u'\n';
    if (archive.generateAsm)
        m_text += lineOf("#ifdef VC_ASM"_L1) +
                  lineOf("#error \"You are trying to use in an assembly code the normal H description of '"_L1,
                         archive.getBaseName(), "'.\""_L1) +
                  lineOf("#endif"_L1) + u'\n';
    m_text += u'\n';
    for (const VMXMLInclude &include : archive.includes)
        m_text += cInclude(include);
    m_text += u'\n' + sectionHead("MACROS"_L1) + cVariables(*archive.variables) + u'\n' + sectionHead("TYPES"_L1);
}

QString CHeader::take()
{
    m_text += u'\n' + m_archive.cJoker + u'\n' + lineOf("#endif"_L1);
    return std::move(m_text);
}

/// Builds the assembly header of one archive block by block.
class AssemblyHeader {
public:
    explicit AssemblyHeader(const VMXMLArchive &archive);

    void append(const VMXMLElement &element, const Instances *instances, const QString &macros)
    {
        m_text += typeHead(kWideRule, kWideUnderline, kWideRule, element.getTypeString(), element.getComment());
        m_text += assemblyBlockOf(element, instances, macros);
        m_text += "\n\n"_L1;
    }

    QString take()
    {
        m_text += u'\n' + lineOf("#endif"_L1);
        return std::move(m_text);
    }

private:
    QString m_text;
};

AssemblyHeader::AssemblyHeader(const VMXMLArchive &archive)
{
    const QString guard = guardOf(archive, "_ASM_H_"_L1);
    m_text = lineOf("#ifndef "_L1, guard) + lineOf("#define "_L1, guard) + u'\n' +
             lineOf("//THIS FILE HAS BEEN GENERATED WITH VELDSPECTOR. PLEASE EDIT WITH CARE !\n"_L1) +
             lineOf("#ifndef VC_ASM"_L1) +
             lineOf("#error \"You are trying to use in a normal C code the assembly H description of '"_L1,
                    archive.getBaseName(), "'.\""_L1) +
             lineOf("#endif\n"_L1);
    for (const VMXMLInclude &include : archive.includes)
        m_text += asmInclude(include);
    m_text += u'\n';
    for (const VMIntVar &variable : *archive.variables)
        m_text += variable.c_serialize(false);
    m_text += u'\n';
}

/// Which of the headers of an archive are asked for.
enum class Wanted { C, Assembly, Both };

/// The headers of \a archive that are \a wanted. Without \a index, of an archive without root, they know no instances.
HeaderTexts::Headers makeHeaders(const VMXMLArchive &archive, const veldmap::InstanceIndex *index, Wanted wanted)
{
    std::optional<CHeader> c;
    std::optional<AssemblyHeader> assembly;
    if (wanted != Wanted::Assembly)
        c.emplace(archive);
    if (wanted != Wanted::C)
        assembly.emplace(archive);
    for (const auto &element : archive.templates) {
        const bool standsInC = c && !isEnumTemplate(*element);
        if (!standsInC && !assembly)
            continue;
        const Instances instances = index ? index->of(*element) : Instances();
        const QString macros = veldmap::templateMacros(*element);
        if (standsInC)
            c->append(*element, index ? &instances : nullptr, macros);
        if (assembly)
            assembly->append(*element, index ? &instances : nullptr, macros);
    }
    return {c ? c->take() : QString(), assembly ? assembly->take() : QString(), c ? c->pointedTypes() : QStringList()};
}

/// The headers of an archive that nobody has made an index for.
HeaderTexts::Headers makeHeaders(const VMXMLArchive &archive, Wanted wanted)
{
    const VMRootArchive *root = archive.getRootArchive();
    if (!root)
        return makeHeaders(archive, nullptr, wanted);
    const veldmap::InstanceIndex index(*root);
    return makeHeaders(archive, &index, wanted);
}

} // namespace

QString VMXMLArchive::c_header() const
{
    const QString rule = lineOf(kWideRule);
    const QString empty = bannerLine(""_L1);
    QString text = rule + empty;
    for (const QLatin1StringView line : kNoticeLines)
        text += bannerLine(line);
    text += empty + rule + empty;
    text += bannerLine("    THIS FILE WAS GENERATED FROM ITS CORRESPONDING XML VERSION WITH VELDMAP."_L1) + empty;
    text += bannerLine("                       !!! PLEASE DO NOT EDIT !!!"_L1) + empty;
    text += bannerLine("  $HeadURL$"_L1);
    for (const QLatin1StringView word : {"$Author$"_L1, "$Date$"_L1, "$Revision$"_L1})
        text += tabbedBannerLine(word);
    text += empty + rule + lineOf("//"_L1) + lineOf("/// @file"_L1);
    if (!archiveComment.isEmpty())
        text += lineOf(convertCommentToCComment(archiveComment, kCommentWidth, 0));
    return text + lineOf("//"_L1) + rule;
}

QString VMXMLArchive::c_content() const
{
    const HeaderTexts::Headers headers = makeHeaders(*this, Wanted::C);
    veldmap::tracePointedTypes(headers.pointedTypes);
    return headers.c;
}

QString VMXMLArchive::asm_content() const
{
    return makeHeaders(*this, Wanted::Assembly).assembly;
}

QString VMXMLElement::c_content() const
{
    const VMRootArchive *root = getRootArchive();
    const Instances instances = root ? veldmap::instancesOf(*root, *this) : Instances();
    QStringList pointedTypes;
    const QString text = cBlockOf(*this, root ? &instances : nullptr, veldmap::templateMacros(*this), pointedTypes);
    veldmap::tracePointedTypes(pointedTypes);
    return text;
}

QString VMXMLElement::asm_content() const
{
    const VMRootArchive *root = getRootArchive();
    const Instances instances = root ? veldmap::instancesOf(*root, *this) : Instances();
    return assemblyBlockOf(*this, root ? &instances : nullptr, veldmap::templateMacros(*this));
}

namespace veldmap {

HeaderTexts::HeaderTexts(const VMRootArchive &root) : m_instances(root) {}

HeaderTexts::Headers HeaderTexts::headersOf(const VMXMLArchive &archive) const
{
    return makeHeaders(archive, &m_instances, archive.generateAsm ? Wanted::Both : Wanted::C);
}

HeaderTexts::Headers HeaderTexts::cHeaderOf(const VMXMLArchive &archive) const
{
    return makeHeaders(archive, &m_instances, Wanted::C);
}

QString HeaderTexts::assemblyHeaderOf(const VMXMLArchive &archive) const
{
    return makeHeaders(archive, &m_instances, Wanted::Assembly).assembly;
}

} // namespace veldmap

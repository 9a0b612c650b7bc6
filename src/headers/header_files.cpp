#include "headers/header_files.h"

#include "files/directories.h"
#include "files/file_writer.h"
#include "text/lines.h"
#include "headers/c_names.h"
#include "headers/template_macros.h"
#include "headers/trace.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/valuable.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;
using veldmap::lineOf;

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

/// Whether the header at \a target is newer than the description. One whose time is not known is no reason to write.
bool isUpToDate(const VMXMLArchive &archive, const QString &target)
{
    const QDateTime written = QFileInfo(target).lastModified();
    const QDateTime described = QFileInfo(archive.getTotalPath()).lastModified();
    return written.isValid() && (!described.isValid() || described < written);
}

/// Writes the headers of one root.
class HeaderRun {
public:
    HeaderRun(const QString &path, bool skipUpToDate, const std::function<void(const QString &)> &progress)
        : m_path(path), m_skipUpToDate(skipUpToDate), m_progress(progress)
    {
    }

    void write(const VMXMLArchive &archive)
    {
        recursiveMkdir(m_path, archive.getRelativePath(false));
        const QString target = m_path + u'/' + archive.getHFileRelativeName();
        if (m_skipUpToDate && isUpToDate(archive, target)) {
            veldmap::trace("Skipping "_L1 + target);
            ++report.skipped;
            return;
        }
        if (!veldmap::liesBelow(m_path, target))
            report.outside.append(QDir::cleanPath(target));
        const veldmap::TemplateMacrosCache macros;
        if (writeFile(target, archive.c_content()) && archive.generateAsm)
            writeFile(m_path + u'/' + archive.getASMFileRelativeName(), archive.asm_content());
    }

    veldmap::GenerationReport report;

private:
    bool writeFile(const QString &path, const QString &content)
    {
        if (m_progress)
            m_progress(path);
        QString reason;
        if (!veldmap::writeWholeFile(path, content.toUtf8(), reason)) {
            report.failed.append({path, reason});
            return false;
        }
        ++report.written;
        return true;
    }

    QString m_path;
    bool m_skipUpToDate;
    const std::function<void(const QString &)> &m_progress;
};

} // namespace

namespace veldmap {

GenerationReport writeCHeaders(const VMMemoryMap &map, const QString &path, bool chip,
                               const std::function<void(const QString &)> &progress)
{
    HeaderRun run(path, map.skipUpToDate, progress);
    if (const VMRootArchive *root = chip ? map.chipRootArchive : map.softRootArchive) {
        for (const VMXMLArchive *archive : root->xmlArchives)
            run.write(*archive);
    }
    return run.report;
}

} // namespace veldmap

void VMMemoryMap::generateCHeaders(const QString &path, bool chip)
{
    veldmap::writeCHeaders(*this, path, chip);
}

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
    const QString guard = guardOf(*this, "_H_"_L1);
    QString text = c_header() + u'\n' + lineOf("#ifndef "_L1, guard) + lineOf("#define "_L1, guard) + u'\n';
    if (generateAsm)
        text += lineOf("#ifdef VC_ASM"_L1) +
                lineOf("#error \"You are trying to use in an assembly code the normal H description of '"_L1,
                       getBaseName(), "'.\""_L1) +
                lineOf("#endif"_L1) + u'\n';
    text += u'\n';
    for (const VMXMLInclude &include : includes)
        text += cInclude(include);
    text += u'\n' + sectionHead("MACROS"_L1) + cVariables(*variables) + u'\n' + sectionHead("TYPES"_L1);
    for (const auto &element : templates) {
        if (isEnumTemplate(*element))
            continue;
        text += typeHead(kTypeRule, kTypeUnderline, kRule, element->getCTypeString(), element->getComment());
        text += element->c_content();
        text += "\n\n"_L1;
    }
    text += u'\n' + cJoker + u'\n' + lineOf("#endif"_L1);
    return text;
}

QString VMXMLArchive::asm_content() const
{
    const QString guard = guardOf(*this, "_ASM_H_"_L1);
    QString text = lineOf("#ifndef "_L1, guard) + lineOf("#define "_L1, guard) + u'\n' +
                   lineOf("//THIS FILE HAS BEEN GENERATED WITH VELDSPECTOR. PLEASE EDIT WITH CARE !\n"_L1) +
                   lineOf("#ifndef VC_ASM"_L1) +
                   lineOf("#error \"You are trying to use in a normal C code the assembly H description of '"_L1,
                          getBaseName(), "'.\""_L1) +
                   lineOf("#endif\n"_L1);
    for (const VMXMLInclude &include : includes)
        text += asmInclude(include);
    text += u'\n';
    for (const VMIntVar &variable : *variables)
        text += variable.c_serialize(false);
    text += u'\n';
    for (const auto &element : templates) {
        text += typeHead(kWideRule, kWideUnderline, kWideRule, element->getTypeString(), element->getComment());
        text += element->asm_content();
        text += "\n\n"_L1;
    }
    text += u'\n' + lineOf("#endif"_L1);
    return text;
}

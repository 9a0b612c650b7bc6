#include "loading/archive_reader.h"

#include "findings/limits.h"
#include "loading/rules.h"

#include <QFileInfo>
#include <QScopedValueRollback>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The header that is made from the description \a file: dma_regs.xml gives dma_regs.h. Another ending stays, so that
/// an include can name a plain header.
QString headerNameOf(const QString &file)
{
    QString name = QFileInfo(file).fileName();
    name.replace(".xml"_L1, ".h"_L1);
    name.replace(".xmd"_L1, ".h"_L1);
    return name;
}

} // namespace

ArchiveReader::IncludedFile ArchiveReader::includedFileOf(const Tag &tag) const
{
    return {readText(tag, u"file"), QString(), readFlag(tag, u"optional"), sourceOf(tag)};
}

XMDOpenError ArchiveReader::readInclude(const Tag &tag, VMXMLArchive &archive)
{
    const QScopedValueRollback depth(m_includeDepth, m_includeDepth + 1);
    if (m_includeDepth > limits::kIncludeDepth) {
        fail(tag, archive, Refusal{&rules::includesTooDeep, {QString::number(limits::kIncludeDepth)}});
        return XMDOpenInvalid;
    }
    const bool load = readFlag(tag, u"load", true);
    IncludedFile unconditional = includedFileOf(tag);
    VMXMLInclude include;
    include.source = unconditional.source;
    bool isCaseTaken = false;
    XMDOpenError result = XMDOpenSuccess;
    for (const Tag &child : ChildTags(tag)) {
        const QStringView childName = child.name();
        if (childName == "case"_L1) {
            IncludedFile alternative = includedFileOf(child);
            alternative.condition = readText(child, u"cond", u"0"_s);
            const Evaluated holds = evaluate(alternative.condition, archive);
            if (holds.failed) {
                failEvaluation(child, archive, rules::includeCondition, {alternative.condition, alternative.file},
                               holds);
                m_lacksFile = true; // which one is to be read, nobody knows
                return XMDOpenInvalid;
            }
            const bool isTaken = load && holds.value != 0 && !isCaseTaken;
            result = readIncludedFile(archive, include, alternative, isTaken);
            isCaseTaken = isCaseTaken || isTaken;
            if (result == XMDOpenInvalid)
                return XMDOpenInvalid;
        } else if (childName == "default"_L1) {
            unconditional = includedFileOf(child);
        } else if (!takeComment(child, include.comment)) {
            fail(child, archive, rules::foreignTagInInclude, {childName.toString()});
            if (!m_goesOn)
                return XMDOpenInvalid;
        }
    }
    if (!isCaseTaken)
        result = readIncludedFile(archive, include, unconditional, load);
    include.headerName = headerNameOf(unconditional.file);
    archive.includes.append(include);
    return result;
}

XMDOpenError ArchiveReader::readIncludedFile(VMXMLArchive &archive, VMXMLInclude &include, const IncludedFile &included,
                                             bool load)
{
    const FileName name = FileName::included(archive.basePath, archive.relativeFileName, included.file);
    // Without a file the name would be that of a directory of this machine.
    const QString headerName = included.file.isEmpty() ? QString() : headerNameOf(name.path);
    if (included.condition.isEmpty())
        include.headerName = headerName;
    else
        include.conditions.append({headerName, included.condition, included.source});
    if (!load)
        return XMDOpenSuccess;

    const QScopedValueRollback byTag(m_include, included.source);
    if (m_listener)
        m_listener->onInclude(included.source.place(), name.path);
    XMDOpenError status = XMDOpenSuccess;
    if (VMXMLArchive *loaded = readFile(name, !included.isOptional, status)) {
        m_builder.addInclude(archive, *loaded);
        return XMDOpenSuccess;
    }
    return status == XMDOpenUnreadable && included.isOptional ? XMDOpenSuccess : status;
}

} // namespace veldmap

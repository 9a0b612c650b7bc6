#include "loading/archive_loader.h"

#include "loading/load_budget.h"
#include "xml/tag_attributes.h"
#include "model/root_archive.h"

#include <QDir>
#include <QFileInfo>
#include <QScopedValueRollback>

using namespace Qt::StringLiterals;
using veldmap::readFlag;
using veldmap::readText;
using veldmap::Tag;

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

/// A file to include, as a tag names it.
struct IncludedFile {
    explicit IncludedFile(const Tag &tag) : file(readText(tag, u"file")), optional(readFlag(tag, u"optional")) {}
    QString file;
    bool optional;
};

} // namespace

XMDOpenError VMArchiveLoader::manageIncludeTag(const Tag &tag, VMXMLArchive *archive)
{
    const QScopedValueRollback depth(m_budget->includeDepth, m_budget->includeDepth + 1);
    if (m_budget->includeDepth > veldmap::limits::kIncludeDepth) {
        fail(tag, *archive, u"Files are included more than %1 deep."_s.arg(veldmap::limits::kIncludeDepth));
        return XMDOpenInvalid;
    }
    const bool load = readFlag(tag, u"load", true);
    IncludedFile unconditional(tag);
    VMXMLInclude include;
    bool caseTaken = false;
    XMDOpenError result = XMDOpenSuccess;
    for (const Tag &child : veldmap::ChildTags(tag)) {
        const QStringView childName = child.name();
        if (childName == "case"_L1) {
            const IncludedFile alternative(child);
            const QString condition = readText(child, u"cond", u"0"_s);
            const Evaluated holds = evaluate(condition, *archive);
            if (holds.failed) {
                fail(child, *archive,
                     u"Condition '%1' of include '%2' contains an error in its expression !"_s.arg(condition,
                                                                                                   alternative.file));
                return XMDOpenInvalid;
            }
            const bool taken = load && holds.value != 0 && !caseTaken;
            result = manageIncludeEntry(archive, include, alternative.file, condition, taken, alternative.optional);
            caseTaken = caseTaken || taken;
            if (result == XMDOpenInvalid)
                return XMDOpenInvalid;
        } else if (childName == "default"_L1) {
            unconditional = IncludedFile(child);
        } else if (!veldmap::takeComment(child, include.comment)) {
            fail(child, *archive, u"Include contains an unvalid '%2' tag.\n"_s.arg(childName));
            return XMDOpenInvalid;
        }
    }
    if (!caseTaken)
        result = manageIncludeEntry(archive, include, unconditional.file, QString(), load, unconditional.optional);
    include.headerName = headerNameOf(unconditional.file);
    archive->includes.append(include);
    return result;
}

XMDOpenError VMArchiveLoader::manageIncludeEntry(VMXMLArchive *archive, VMXMLInclude &include, const QString &file,
                                                 const QString &condition, bool load, bool optional)
{
    const QString directory = archive->getRelativePath(false);
    const QString relativeFile = QDir::cleanPath(directory.isEmpty() ? file : directory + u'/' + file);
    const QString fullFile = QDir::cleanPath(archive->basePath + u'/' + relativeFile);
    // Without a file the name would be that of a directory of this machine.
    const QString headerName = file.isEmpty() ? QString() : headerNameOf(fullFile);
    if (condition.isEmpty())
        include.headerName = headerName;
    else
        include.conditions.append({headerName, condition});
    if (!load)
        return XMDOpenSuccess;

    XMDOpenError status = XMDOpenSuccess;
    VMArchiveLoader loader;
    loader.m_budget = m_budget;
    VMXMLArchive *included =
        loader.loadArchiveFromFile(fullFile, relativeFile, archive->basePath, archive->getRootArchive(),
                                   m_callbacks.log, m_callbacks.error, m_callbacks.warning, !optional, status);
    if (included) {
        archive->includedArchives.append(included);
        return XMDOpenSuccess;
    }
    return status == XMDOpenUnreadable && optional ? XMDOpenSuccess : status;
}

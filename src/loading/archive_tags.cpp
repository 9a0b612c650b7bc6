#include "loading/archive_loader.h"

#include "loading/document_loading.h"
#include "findings/limits.h"
#include "loading/load_budget.h"
#include "xml/tag_attributes.h"
#include "model/root_archive.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;
using veldmap::ChildTags;
using veldmap::readText;
using veldmap::Tag;
namespace limits = veldmap::limits;

VMArchiveLoader::VMArchiveLoader() : m_budget(std::make_shared<veldmap::LoadBudget>()) {}

VMXMLArchive *VMArchiveLoader::loadArchiveFromFile(const QString &filePath, const QString &relativeFile,
                                                   const QString &basePath, VMRootArchive *root, VMMessageCallback log,
                                                   VMMessageCallback error, VMMessageCallback warning, bool mandatory,
                                                   XMDOpenError &status)
{
    status = XMDOpenSuccess;
    m_callbacks = {log, error, warning};
    if (VMXMLArchive *known = root->hasArchive(basePath, relativeFile)) {
        status = XMDOpenAlreadyLoaded;
        return known;
    }
    veldmap::TagDocument document;
    status = veldmap::loadTags(filePath, document, {log, error, mandatory ? warning : nullptr}, false);
    if (status != XMDOpenSuccess)
        return nullptr;

    status = XMDOpenInvalid;
    const Tag tag = document.root();
    if (tag.name() == "bigarchive"_L1)
        return loadBigArchive(tag, filePath, relativeFile, basePath, root, status);
    if (tag.name() == "archive"_L1) {
        VMXMLArchive *archive = manageArchiveTag(tag, relativeFile, basePath, root);
        status = archive ? XMDOpenSuccess : XMDOpenInvalid;
        return archive;
    }
    // The old formats go by the name as written.
    if (tag.nameAsWritten() == "module"_L1)
        return loadBareModule(tag, filePath, relativeFile, basePath, root, status);
    if (tag.nameAsWritten() == "chip"_L1 || tag.nameAsWritten() == "soft"_L1)
        ErrorMessage(filePath, 0, 0, u"Old archive format! Please edit your xml files to conform to the new norm."_s);
    else
        ErrorMessage(filePath, 0, 0, u"Bad archive format!"_s);
    return nullptr;
}

VMXMLArchive *VMArchiveLoader::loadBigArchive(const Tag &tag, const QString &filePath, const QString &relativeFile,
                                              const QString &basePath, VMRootArchive *root, XMDOpenError &status)
{
    VMXMLArchive *last = nullptr;
    for (const Tag &child : ChildTags(tag)) {
        if (child.name() != "archive"_L1) {
            ErrorMessage(filePath, child.lineNumber(), child.columnNumber(),
                         u"Unvalid '%2' tag.\n"_s.arg(child.name()));
            return nullptr;
        }
        last = manageArchiveTag(child, relativeFile, basePath, root);
        if (!last)
            return nullptr;
    }
    status = XMDOpenSuccess;
    return last;
}

VMXMLArchive *VMArchiveLoader::loadBareModule(const Tag &tag, const QString &filePath, const QString &relativeFile,
                                              const QString &basePath, VMRootArchive *root, XMDOpenError &status)
{
    WarningMessage(
        filePath, 0, 0,
        u"You are using an old archive format! Please enclose the content of your file into an <archive> tag!"_s);
    auto created = std::make_unique<VMXMLArchive>(root);
    VMXMLArchive *archive = created.get();
    archive->relativeFileName = relativeFile;
    archive->basePath = basePath;
    root->addXMLArchive(created.release());
    if (!manageModuleOrTypedefTag(tag, archive)) {
        root->discardXMLArchive(archive);
        return nullptr;
    }
    status = XMDOpenSuccess;
    return archive;
}

VMXMLArchive *VMArchiveLoader::manageArchiveTag(const Tag &tag, const QString &relativeFile, const QString &basePath,
                                                VMRootArchive *root)
{
    const QString relative = readText(tag, u"relative");
    auto created = std::make_unique<VMXMLArchive>(root);
    VMXMLArchive *archive = created.get();
    archive->relativeFileName = relative.isEmpty() ? relativeFile : relative;
    archive->basePath = basePath;
    archive->generateAsm = veldmap::readFlag(tag, u"asm", true);
    archive->vhdlPackage = readText(tag, u"vhdlpkg");
    // The root knows the archive before its children run, so that an include of it from below finds it.
    root->addXMLArchive(created.release());

    bool complete = !isTooManyArchives(tag, *archive, *root);
    for (const Tag &child : ChildTags(tag)) {
        complete = complete && readArchiveChild(child, archive);
        if (!complete)
            break;
    }
    if (!complete) {
        root->discardXMLArchive(archive);
        return nullptr;
    }
    return archive;
}

bool VMArchiveLoader::isTooManyArchives(const Tag &tag, const VMXMLArchive &archive, const VMRootArchive &root)
{
    if (root.xmlArchives.size() <= limits::kArchives)
        return false;
    return !fail(tag, archive, u"The description has more than %1 archives."_s.arg(limits::kArchives));
}

/// A tag that may stand in an archive; true when the load may go on behind it.
struct VMArchiveLoader::ArchiveTagRow {
    QLatin1StringView tag;
    bool (*read)(VMArchiveLoader &loader, const Tag &tag, VMXMLArchive *archive);
};

bool VMArchiveLoader::readArchiveChild(const Tag &child, VMXMLArchive *archive)
{
    using Loader = VMArchiveLoader;
    constexpr auto readModule = [](Loader &loader, const Tag &tag, VMXMLArchive *to) {
        return loader.manageModuleOrTypedefTag(tag, to) != nullptr;
    };
    constexpr auto readInclude = [](Loader &loader, const Tag &tag, VMXMLArchive *to) {
        const XMDOpenError result = loader.manageIncludeTag(tag, to);
        if (result == XMDOpenUnreadable)
            loader.WarningMessage(to->getTotalPath(), 0, 0, u"Skipped."_s);
        return result != XMDOpenInvalid;
    };
    constexpr auto readComment = [](Loader &, const Tag &tag, VMXMLArchive *to) {
        to->archiveComment = veldmap::readComment(tag);
        return true;
    };
    constexpr auto readCJoker = [](Loader &, const Tag &tag, VMXMLArchive *to) {
        to->cJoker = veldmap::readCJoker(tag);
        return true;
    };
    static constexpr ArchiveTagRow kArchiveTags[] = {
        {"module"_L1, readModule},
        {"typedef"_L1, readModule},
        {"include"_L1, readInclude},
        {"spacer"_L1, [](Loader &loader, const Tag &tag, VMXMLArchive *to) { return loader.manageSpacerTag(tag, to); }},
        {"var"_L1, [](Loader &loader, const Tag &tag, VMXMLArchive *to) { return loader.manageVarTag(tag, to); }},
        {"range"_L1, [](Loader &loader, const Tag &tag, VMXMLArchive *to) { return loader.manageRangeTag(tag, to); }},
        {"enum"_L1, [](Loader &loader, const Tag &tag, VMXMLArchive *to) { return loader.manageEnumTag(tag, to); }},
        {"instance"_L1,
         [](Loader &loader, const Tag &tag, VMXMLArchive *to) { return loader.manageInstanceTag(tag, to) != nullptr; }},
        {"comment"_L1, readComment},
        {"cjoker"_L1, readCJoker},
        {"alias"_L1, [](Loader &loader, const Tag &tag, VMXMLArchive *to) { return loader.manageAliasTag(tag, to); }},
    };
    const QStringView tagName = child.name();
    const auto row = std::ranges::find_if(kArchiveTags, [&](const auto &r) { return r.tag == tagName; });
    if (row == std::end(kArchiveTags))
        return fail(child, *archive, u"Unvalid tag : '%1'"_s.arg(tagName));
    return row->read(*this, child, archive);
}

void VMArchiveLoader::ErrorMessage(const QString &file, int line, int column, const QString &message) const
{
    veldmap::sendMessage(m_callbacks.error, veldmap::placedMessage(file, line, column, message));
}

void VMArchiveLoader::WarningMessage(const QString &file, int line, int column, const QString &message) const
{
    veldmap::sendMessage(m_callbacks.warning, veldmap::placedMessage(file, line, column, message));
}

void VMArchiveLoader::LogMessage(const QString &file, int line, int column, const QString &message) const
{
    veldmap::sendMessage(m_callbacks.log, veldmap::placedMessage(file, line, column, message));
}

bool VMArchiveLoader::fail(const Tag &tag, const VMXMLArchive &archive, const QString &text) const
{
    ErrorMessage(archive.getTotalPath(), tag.lineNumber(), tag.columnNumber(), text);
    return false;
}

VMArchiveLoader::Evaluated VMArchiveLoader::evaluate(const QString &expression, const VMXMLArchive &archive)
{
    Evaluated result;
    result.value = archive.variables->evalExpression(expression, result.message, result.failed);
    return result;
}

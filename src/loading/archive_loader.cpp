#include "loading/archive_loader.h"

#include "findings/callback_sink.h"
#include "loading/archive_reader.h"
#include "model/aggregates.h"
#include "model/root_archive.h"
#include "model/valuable.h"

using namespace Qt::StringLiterals;

// The handlers as a host calls them, on elements of a QDomDocument. Each call has a reader of its own: whatever the
// host did to the tree in between, and to the limits in an earlier call, is as if it had always been so.

namespace {

using veldmap::Tag;

struct HostCall {
    HostCall(VMRootArchive *root, const veldmap::Callbacks &callbacks) : sink(callbacks), builder(root) {}
    HostCall(const VMXMLElement *holder, const veldmap::Callbacks &callbacks)
        : HostCall(holder ? holder->getRootArchive() : nullptr, callbacks)
    {
    }

    veldmap::CallbackSink sink;
    veldmap::TreeBuilder builder;
    veldmap::DescriptionFiles files;
    veldmap::ArchiveReader reader = {builder, files, sink};
};

/// Calls \a read with the tags of \a element and the reader of a new call.
template <typename Read>
auto onTags(const QDomElement &element, const VMXMLElement *holder, const veldmap::Callbacks &callbacks,
            const Read &read)
{
    const veldmap::TagDocument document(element);
    HostCall call(holder, callbacks);
    return read(call.reader, document.root());
}

QString placed(const QString &file, int line, int column, const QString &message)
{
    return u"%1:%2:%3:%4"_s.arg(file, QString::number(line), QString::number(column), message);
}

} // namespace

VMXMLArchive *VMArchiveLoader::loadArchiveFromFile(const QString &filePath, const QString &relativeFile,
                                                   const QString &basePath, VMRootArchive *root, VMMessageCallback log,
                                                   VMMessageCallback error, VMMessageCallback warning, bool mandatory,
                                                   XMDOpenError &status)
{
    m_callbacks = {log, error, warning};
    HostCall call(root, m_callbacks);
    return call.reader.readFile({filePath, relativeFile, basePath}, mandatory, status);
}

VMXMLArchive *VMArchiveLoader::manageArchiveTag(QDomElement &tag, const QString &relativeFile, const QString &basePath,
                                                VMRootArchive *root, VMMessageCallback, VMMessageCallback,
                                                VMMessageCallback)
{
    const veldmap::TagDocument document(tag);
    HostCall call(root, m_callbacks);
    return call.reader.readArchive(document.root(), relativeFile, basePath);
}

void VMArchiveLoader::ErrorMessage(const QString &file, int line, int column, const QString &message) const
{
    veldmap::sendText(m_callbacks.error, placed(file, line, column, message));
}

void VMArchiveLoader::WarningMessage(const QString &file, int line, int column, const QString &message) const
{
    veldmap::sendText(m_callbacks.warning, placed(file, line, column, message));
}

void VMArchiveLoader::LogMessage(const QString &file, int line, int column, const QString &message) const
{
    veldmap::sendText(m_callbacks.log, placed(file, line, column, message));
}

XMDOpenError VMArchiveLoader::manageIncludeTag(QDomElement &tag, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &include) { return reader.readInclude(include, *archive); });
}

XMDOpenError VMArchiveLoader::manageIncludeEntry(VMXMLArchive *archive, VMXMLInclude &include, const QString &file,
                                                 const QString &condition, bool load, bool optional)
{
    HostCall call(archive, m_callbacks);
    return call.reader.readIncludedFile(*archive, include, {file, condition, optional}, load);
}

bool VMArchiveLoader::manageVarTag(QDomElement &tag, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &variable) { return reader.readVariable(variable, *archive); });
}

bool VMArchiveLoader::manageRangeTag(QDomElement &tag, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &range) { return reader.readRange(range, *archive); });
}

bool VMArchiveLoader::manageEnumTag(QDomElement &tag, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &newEnum) { return reader.readEnum(newEnum, *archive); });
}

bool VMArchiveLoader::manageEnumEntryTag(QDomElement &tag, VMEnum *owner, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &entry) { return reader.readEnumEntry(entry, *owner, *archive); });
}

bool VMArchiveLoader::manageEnumBoundTag(QDomElement &tag, VMEnum *owner, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &bound) { return reader.readEnumBound(bound, *owner, *archive); });
}

bool VMArchiveLoader::manageSpacerTag(QDomElement &tag, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &spacer) { return reader.readSpacer(spacer, *archive); });
}

VMXMLElement *VMArchiveLoader::manageModuleOrTypedefTag(QDomElement &tag, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &module) { return reader.readType(module, *archive); });
}

bool VMArchiveLoader::manageModuleOrTypedefTag(QDomElement &tag, VMStruct *module)
{
    auto *archive = elementCast<VMXMLArchive>(module->parent);
    return onTags(tag, archive, m_callbacks, [&](auto &reader, const Tag &children) {
        return reader.readTypeChildren(children, *module, *archive);
    });
}

VMXMLElement *VMArchiveLoader::manageStructTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return onTags(tag, archive, m_callbacks, [&](auto &reader, const Tag &structure) {
        return reader.readStruct(structure, *archive, parentName).release();
    });
}

VMXMLElement *VMArchiveLoader::manageHoleTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &hole) { return reader.readHole(hole, *archive, parentName).release(); });
}

bool VMArchiveLoader::manageAliasTag(QDomElement &tag, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &alias) { return reader.readAlias(alias, *archive); });
}

VMXMLElement *VMArchiveLoader::manageInstanceTag(QDomElement &tag, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &instance) { return reader.readInstance(instance, *archive); });
}

VMXMLElement *VMArchiveLoader::manageInstanceTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return onTags(tag, archive, m_callbacks, [&](auto &reader, const Tag &instance) {
        return reader.readInnerInstance(instance, *archive, parentName).release();
    });
}

VMXMLElement *VMArchiveLoader::manageMemoryTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return onTags(tag, archive, m_callbacks, [&](auto &reader, const Tag &memory) {
        return reader.readMemory(memory, *archive, parentName).release();
    });
}

VMXMLElement *VMArchiveLoader::managePtrTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName)
{
    return onTags(tag, archive, m_callbacks, [&](auto &reader, const Tag &pointer) {
        return reader.readPointer(pointer, *archive, parentName).release();
    });
}

VMXMLElement *VMArchiveLoader::manageValuableTag(QDomElement &tag, VMXMLArchive *archive, const QString &parentName,
                                                 const QString &tagName)
{
    return onTags(tag, archive, m_callbacks, [&](auto &reader, const Tag &valuable) {
        return reader.readValuable(valuable, *archive, parentName, tagName).release();
    });
}

bool VMArchiveLoader::manageBitsTag(QDomElement &tag, VMValuable *valuable, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &bits) { return reader.readBits(bits, *valuable, *archive); });
}

bool VMArchiveLoader::manageBitgroupTag(QDomElement &tag, VMValuable *valuable, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &group) { return reader.readBitgroup(group, *valuable, *archive); });
}

bool VMArchiveLoader::manageBitgroupEntryTag(QDomElement &tag, VMBitGroup *group, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &entry) { return reader.readBitgroupEntry(entry, *group, *archive); });
}

bool VMArchiveLoader::manageOptionsTag(QDomElement &tag, VMBitField *field, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &options) { return reader.readOptions(options, *field, *archive); });
}

bool VMArchiveLoader::manageOptionsOptionTag(QDomElement &tag, VMBitFieldOptions *options, VMXMLArchive *archive)
{
    return onTags(tag, archive, m_callbacks,
                  [&](auto &reader, const Tag &option) { return reader.readOption(option, *options, *archive); });
}

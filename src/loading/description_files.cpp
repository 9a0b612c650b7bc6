#include "loading/description_files.h"

#include "container/container_format.h"
#include "container/document_digest.h"
#include "files/file_reader.h"
#include "findings/limits.h"
#include "loading/rules.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The first tag in \a bytes that is one too many, as an error. What looks like a tag in a comment counts as one.
TagDocument::Error findTagTooMany(const QByteArray &bytes)
{
    constexpr qsizetype kShortestTag = 4; // <a/>
    if (bytes.size() / kShortestTag < limits::kDocumentTags)
        return {};
    qint64 tags = 0;
    for (qsizetype at = bytes.indexOf('<'); at >= 0; at = bytes.indexOf('<', at + 1)) {
        const qsizetype wide = at + 1 < bytes.size() && bytes[at + 1] == '\0' ? 1 : 0; // characters of two bytes
        const char next = at + 1 + wide < bytes.size() ? bytes[at + 1 + wide] : '\0';
        if (next == '/' || next == '!' || next == '?' || ++tags <= limits::kDocumentTags)
            continue;
        const QByteArrayView before = QByteArrayView(bytes).first(at);
        return {Refusal{&rules::tooManyTags, {QString::number(limits::kDocumentTags)}}, 1 + before.count('\n'),
                at - (before.lastIndexOf('\n') + 1)};
    }
    return {};
}

} // namespace

FileName FileName::included(const QString &basePath, const QString &relativeFile, const QString &file)
{
    const QString directory = QFileInfo(relativeFile).path();
    const QString relative = QDir::cleanPath(directory.isEmpty() || directory == u"." ? file : directory + u'/' + file);
    return {QDir::cleanPath(basePath + u'/' + relative), relative, basePath};
}

namespace {

constexpr qint64 kLargestContainer = limits::kDocumentBytes + kLargestDigest + kContainerOverhead;

FileContent refused(const QString &path, Sink &sink, const Refusal &why, bool isEncrypted = false)
{
    sink.take(Finding(*why.rule, {path}, why.arguments));
    return {XMDOpenInvalid, {}, isEncrypted};
}

/// The document in \a bytes, which are no more than the largest container and one byte.
FileContent contentOf(const QString &path, const QByteArray &bytes, Sink &sink)
{
    FileContent content = {XMDOpenSuccess, bytes, isContainer(bytes)};
    if (content.encrypted && content.bytes.size() <= kLargestContainer) {
        Deciphered result = deciphered(content.bytes);
        if (result.error)
            return refused(path, sink, result.error, true);
        content.bytes = std::move(result.document);
        content.mayBeDamaged = !result.hasDigest;
    }
    if (content.bytes.size() > limits::kDocumentBytes)
        return refused(path, sink, {&rules::fileTooLarge, {QString::number(limits::kDocumentBytes)}},
                       content.encrypted);
    return content;
}

void cut(DescriptionFile &file, const QString &path, const FileContent &content)
{
    file.status = content.status;
    if (file.status != XMDOpenSuccess)
        return;
    file.bytes = content.bytes.size();
    TagDocument::Error error = findTagTooMany(content.bytes);
    if (!error)
        error = file.document.read(content.bytes);
    if (error) {
        Finding fault(*error.refusal.rule, {path, error.line, error.column}, error.refusal.arguments);
        if (content.mayBeDamaged)
            fault.note = u"the file is an encrypted container without a digest: it may be damaged, or was written with "
                         "another key"_s;
        file.told.take(fault);
        file.status = XMDOpenInvalid;
    }
}

} // namespace

FileContent readFileContent(const QString &path, Sink &sink, bool openFailureIsError)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        Finding notOpened(rules::fileNotOpened, {}, {path});
        if (openFailureIsError)
            notOpened.severity = Severity::Error;
        notOpened.note = file.errorString();
        sink.take(notOpened);
        return {XMDOpenUnreadable, {}, false};
    }
    sink.take(Finding(rules::loadingFile, {}, {path}));
    const QByteArray bytes = readAtMost(file, kLargestContainer);
    if (file.error() != QFile::NoError)
        return refused(path, sink, {&rules::fileNotRead, {file.errorString()}});
    return contentOf(path, bytes, sink);
}

std::unique_ptr<DescriptionFile> readDescription(const QString &path, const QByteArray &bytes)
{
    auto file = std::make_unique<DescriptionFile>();
    file->told.take(Finding(rules::loadingFile, {}, {path}));
    cut(*file, path, contentOf(path, bytes, file->told));
    return file;
}

std::unique_ptr<DescriptionFile> readDescriptionFile(const QString &path)
{
    auto file = std::make_unique<DescriptionFile>();
    file->stamp = stampOf(path);
    cut(*file, path, readFileContent(path, file->told, false));
    return file;
}

} // namespace veldmap

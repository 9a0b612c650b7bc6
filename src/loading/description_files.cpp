#include "loading/description_files.h"

#include "container/container_format.h"
#include "files/file_reader.h"
#include "findings/limits.h"
#include "loading/rules.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <utility>

namespace veldmap {

FileName FileName::included(const QString &basePath, const QString &relativeFile, const QString &file)
{
    const QString directory = QFileInfo(relativeFile).path();
    const QString relative = QDir::cleanPath(directory.isEmpty() || directory == u"." ? file : directory + u'/' + file);
    return {QDir::cleanPath(basePath + u'/' + relative), relative, basePath};
}

FileContent readFileContent(const QString &path, Sink &sink, bool openFailureIsError)
{
    const auto refuse = [&](const Refusal &refused, bool isEncrypted = false) -> FileContent {
        sink.take(Finding(*refused.rule, {path}, refused.arguments));
        return {XMDOpenInvalid, {}, isEncrypted};
    };
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
    constexpr qint64 kLargestContainer = limits::kDocumentBytes + kContainerOverhead;
    FileContent content = {XMDOpenSuccess, readAtMost(file, kLargestContainer), false};
    if (file.error() != QFile::NoError)
        return refuse({&rules::fileNotRead, {file.errorString()}});
    content.encrypted = isContainer(content.bytes);
    if (content.encrypted && content.bytes.size() <= kLargestContainer) {
        Deciphered result = deciphered(content.bytes);
        if (result.error)
            return refuse(result.error, true);
        content.bytes = std::move(result.document);
    }
    if (content.bytes.size() > limits::kDocumentBytes)
        return refuse({&rules::fileTooLarge, {QString::number(limits::kDocumentBytes)}}, content.encrypted);
    return content;
}

std::unique_ptr<DescriptionFile> readDescriptionFile(const QString &path)
{
    auto file = std::make_unique<DescriptionFile>();
    const FileContent content = readFileContent(path, file->told, false);
    file->status = content.status;
    if (file->status != XMDOpenSuccess)
        return file;
    file->bytes = content.bytes.size();
    if (const TagDocument::Error error = file->document.read(content.bytes)) {
        file->told.take(Finding(*error.refusal.rule, {path, error.line, error.column}, error.refusal.arguments));
        file->status = XMDOpenInvalid;
    }
    return file;
}

} // namespace veldmap

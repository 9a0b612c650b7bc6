#include "outputs/copy_job.h"

#include "outputs/outputs.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// The file \a source as it is.
JobTexts copyOf(const QString &source, const QString &path)
{
    JobTexts texts;
    QFile file(source);
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray content = file.readAll();
        if (file.error() == QFile::NoError) {
            texts.files.push_back({path, content, {}});
            return texts;
        }
    }
    texts.isMissing = !QFile::exists(source);
    texts.failure = u"%1 can't be read: %2"_s.arg(source, file.errorString());
    return texts;
}

} // namespace

OutputJob copyJob(const OutputOptions &options, const QString &file)
{
    OutputJob job;
    job.path = options.directory + u'/' + file;
    job.name = file;
    job.waits = true; // what was written before may be what is copied
    job.copied = options.pool + u'/' + file;
    job.make = [path = job.path, source = job.copied](const QByteArray &) { return copyOf(source, path); };
    return job;
}

} // namespace veldmap

// The published operations that write files. They take the road of all outputs, on one thread, and report nothing.

#include "files/file_writer.h"
#include "findings/finding.h"
#include "model/memory_map.h"
#include "outputs/output_jobs.h"
#include "outputs/output_run.h"

#include <cstdio>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <QFile>
#endif

using namespace Qt::StringLiterals;

namespace {

/// Where a process finds the pool that is told of none: in its current directory.
constexpr QLatin1StringView kDefaultPool = "./docpool"_L1;

struct NoSink final : veldmap::Sink {
    void take(const veldmap::Finding &) override {}
};

veldmap::OutputOptions inDirectory(const QString &directory)
{
    veldmap::OutputOptions options;
    options.directory = directory;
    options.asPublished = true;
    options.pool = kDefaultPool;
    return options;
}

void writeSilently(const veldmap::OutputJobs &jobs, const veldmap::OutputOptions &options)
{
    NoSink sink;
    veldmap::runJobs(jobs, options, sink);
}

void writeSilently(const VMMemoryMap &map, veldmap::Output output, const veldmap::OutputOptions &options)
{
    NoSink sink;
    veldmap::writeOutput(map, output, options, sink);
}

} // namespace

void VMMemoryMap::generateCHeaders(const QString &path, bool chip)
{
    veldmap::OutputOptions options = inDirectory(path);
    options.chip = chip;
    options.trace = [](const QString &text) { std::printf("%s\n", text.toUtf8().constData()); };
    writeSilently(*this, veldmap::Output::Headers, options);
}

void VMMemoryMap::generateVHDL(const QString &outputDirectory)
{
    writeSilently(*this, veldmap::Output::Vhdl, inDirectory(outputDirectory));
}

void VMMemoryMap::generateDocumentation(const QString &path, bool chip)
{
    veldmap::OutputOptions options = inDirectory(path);
    options.chip = chip;
    writeSilently(*this, veldmap::Output::Docs, options);
}

void VMMemoryMap::copyDocumentationFiles(const QString &path)
{
    const veldmap::OutputOptions options = inDirectory(path);
    writeSilently(veldmap::poolJobs(options), options);
}

bool VMMemoryMap::copyFile(const QString &source, const QString &target)
{
#ifdef Q_OS_WIN
    return CopyFileW(reinterpret_cast<LPCWSTR>(source.utf16()), reinterpret_cast<LPCWSTR>(target.utf16()), 0);
#else
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray content = file.readAll();
    return file.error() == QFile::NoError &&
           veldmap::writeWholeFile(target, content).outcome != veldmap::WriteResult::Failed;
#endif
}

void VMMemoryMap::generateChipHtml(const QString &path, VMRootArchive *root)
{
    const veldmap::OutputOptions options = inDirectory(path);
    writeSilently({veldmap::startPageJob(*root, options)}, options);
}

void VMMemoryMap::generateIndexHtml(const QString &path, VMRootArchive *root)
{
    const veldmap::OutputOptions options = inDirectory(path);
    writeSilently({veldmap::framesJob(*root, options)}, options);
}

void VMMemoryMap::generateChipJSMenu(const QString &path, VMRootArchive *root)
{
    const veldmap::OutputOptions options = inDirectory(path);
    writeSilently({veldmap::menuJob(*root, options)}, options);
}

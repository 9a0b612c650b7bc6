#include "headers/header_files.h"

#include "files/directories.h"
#include "files/file_writer.h"
#include "headers/header_texts.h"
#include "headers/instance_macros.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

using namespace Qt::StringLiterals;
using veldmap::HeaderTrace;

namespace {

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
    HeaderRun(const VMRootArchive &root, const QString &path, bool skipUpToDate, HeaderTrace trace,
              const std::function<void(const QString &)> &progress)
        : m_texts(root), m_path(path), m_skipUpToDate(skipUpToDate), m_trace(trace), m_progress(progress)
    {
    }

    void write(const VMXMLArchive &archive)
    {
        recursiveMkdir(m_path, archive.getRelativePath(false));
        const QString target = m_path + u'/' + archive.getHFileRelativeName();
        if (m_skipUpToDate && isUpToDate(archive, target)) {
            if (m_trace == HeaderTrace::StandardOutput)
                std::printf("Skipping %s\n", target.toUtf8().constData());
            ++report.skipped;
            return;
        }
        if (!veldmap::liesBelow(m_path, target))
            report.outside.append(QDir::cleanPath(target));
        const veldmap::HeaderTexts::Headers headers = m_texts.headersOf(archive);
        if (m_trace == HeaderTrace::StandardOutput)
            veldmap::tracePointedTypes(headers.pointedTypes);
        if (writeFile(target, headers.c) && archive.generateAsm)
            writeFile(m_path + u'/' + archive.getASMFileRelativeName(), headers.assembly);
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

    veldmap::HeaderTexts m_texts;
    QString m_path;
    bool m_skipUpToDate;
    HeaderTrace m_trace;
    const std::function<void(const QString &)> &m_progress;
};

} // namespace

namespace veldmap {

GenerationReport writeCHeaders(const VMMemoryMap &map, const QString &path, bool chip, HeaderTrace trace,
                               const std::function<void(const QString &)> &progress)
{
    const VMRootArchive *root = chip ? map.chipRootArchive : map.softRootArchive;
    if (!root)
        return {};
    HeaderRun run(*root, path, map.skipUpToDate, trace, progress);
    for (const VMXMLArchive *archive : root->xmlArchives)
        run.write(*archive);
    return run.report;
}

} // namespace veldmap

void VMMemoryMap::generateCHeaders(const QString &path, bool chip)
{
    veldmap::writeCHeaders(*this, path, chip, HeaderTrace::StandardOutput);
}

#include "loading/read_ahead.h"

#include "xml/tag_attributes.h"

#include <QFileInfo>

#include <algorithm>
#include <system_error>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kMostThreads = 3; // so many read as fast as the tree is made
// A document takes several times as much memory as its file has bytes. A few ahead keep the other threads at work.
constexpr std::size_t kMostReady = 8;
constexpr qint64 kMostReadyBytes = 2 * 1024 * 1024;
constexpr qint64 kLargestFile = 4 * 1024 * 1024; // a larger one is read when the load asks for it

/// The file of an `include` tag that is followed whatever the variables are; empty where it depends on them.
QString certainFile(const Tag &include)
{
    if (!readFlag(include, u"load", true))
        return {};
    QString file = readText(include, u"file");
    for (const Tag &child : ChildTags(include)) {
        if (child.name() == "case"_L1)
            return {};
        if (child.name() == "default"_L1)
            file = readText(child, u"file");
    }
    return file;
}

/// Appends the files that an `archive` tag includes for certain, of the description \a name.
void appendIncludes(const Tag &archive, const FileName &name, std::vector<FileName> &included)
{
    const QString relative = readText(archive, u"relative");
    for (const Tag &child : ChildTags(archive)) {
        const QString file = child.name() == "include"_L1 ? certainFile(child) : QString();
        if (!file.isEmpty())
            included.push_back(
                FileName::included(name.basePath, relative.isEmpty() ? name.relativeFile : relative, file));
    }
}

} // namespace

ReadAhead::ReadAhead(int threads, const DocumentListener *listener) : m_listener(listener)
{
    try {
        while (static_cast<int>(m_threads.size()) < std::min(threads, kMostThreads))
            m_threads.emplace_back([this] { work(); });
    } catch (const std::system_error &) {
        // The threads that there are will do, and the caller without any.
    }
}

ReadAhead::~ReadAhead()
{
    const std::lock_guard lock(m_mutex);
    m_isOver = true;
    m_changed.notify_all();
}

std::unique_ptr<DescriptionFile> ReadAhead::read(const FileName &name)
{
    std::unique_lock lock(m_mutex);
    const bool isExpected = m_known.contains(name.path);
    m_known.insert(name.path);
    m_changed.wait(lock, [&] { return !m_running.contains(name.path); });
    const auto ready = std::ranges::find(m_ready, name.path, [](const auto &entry) { return entry.first; });
    if (ready != m_ready.end()) {
        File file = std::move(ready->second);
        m_ready.erase(ready);
        m_readyBytes -= file->bytes;
        m_changed.notify_all();
        return file;
    }
    // As a rule it is the first.
    const auto expected = isExpected ? std::ranges::find(m_expected, name.path, &FileName::path) : m_expected.end();
    if (expected != m_expected.end())
        m_expected.erase(expected);
    lock.unlock();
    File file = readDescriptionFile(name.path);
    lock.lock();
    expectIncludesOf(*file, name);
    return file;
}

bool ReadAhead::canBegin() const
{
    return !m_expected.empty() && m_ready.size() + static_cast<std::size_t>(m_running.size()) < kMostReady &&
           m_readyBytes < kMostReadyBytes;
}

void ReadAhead::work()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_isOver || canBegin(); });
        if (m_isOver)
            return;
        const FileName name = m_expected.front();
        m_expected.pop_front();
        m_running.insert(name.path);
        lock.unlock();
        // Another reader could wait at a pipe, or take what only one can have.
        const QFileInfo info(name.path);
        File file = info.isFile() && info.size() <= kLargestFile ? readDescriptionFile(name.path) : nullptr;
        if (m_listener && file && file->status == XMDOpenSuccess)
            file->study = m_listener->study(file->document);
        lock.lock();
        m_running.remove(name.path);
        if (file) {
            expectIncludesOf(*file, name);
            m_readyBytes += file->bytes;
            m_ready.emplace_back(name.path, std::move(file));
        }
        m_changed.notify_all();
    }
}

/// The load goes into an include at once, so what a file includes comes before what was expected until now.
void ReadAhead::expectIncludesOf(const DescriptionFile &file, const FileName &name)
{
    if (file.status != XMDOpenSuccess || m_threads.empty())
        return;
    std::vector<FileName> included;
    const Tag root = file.document.root();
    if (root.name() == "archive"_L1)
        appendIncludes(root, name, included);
    if (root.name() == "bigarchive"_L1) {
        for (const Tag &archive : ChildTags(root))
            appendIncludes(archive, name, included);
    }
    for (auto next = included.rbegin(); next != included.rend(); ++next) {
        if (m_known.contains(next->path))
            continue;
        m_known.insert(next->path);
        m_expected.push_front(*next);
    }
    m_changed.notify_all();
}

} // namespace veldmap

#pragma once

#include <QtGlobal>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace veldmap {

/// Makes things on several threads, and takes them one after the other in their order.
///
/// Whoever finishes the thing whose turn it is takes it and those that wait behind it, while the others go on making.
/// What is made ahead of its turn is bounded, in number and in bytes, so that a run needs no more memory for more
/// things. One thread makes and takes each thing in turn, without any other being started.
///
/// A Work has three operations: Made make(qsizetype), which runs on any thread; void take(qsizetype, Made), which runs
/// on one thread at a time; and qint64 bytesOf(const Made &).
template <typename Work>
class OrderedWork {
public:
    OrderedWork(Work &work, qsizetype count) : m_work(work), m_count(count) {}

    /// Does all the work on \a threads threads, this one among them; on fewer where the system gives no more.
    void run(int threads)
    {
        const auto most = static_cast<int>(std::min<qsizetype>(m_count, kMostThreads));
        m_threads = std::clamp(threads, 1, std::max(most, 1));
        std::vector<std::jthread> others;
        try {
            while (static_cast<int>(others.size()) < m_threads - 1)
                others.emplace_back([this] { workOn(); });
        } catch (const std::system_error &) {
        }
        workOn();
    }

private:
    using Made = decltype(std::declval<Work &>().make(0));

    static constexpr int kMostThreads = 256;
    static constexpr qsizetype kAheadOfThread = 4;
    static constexpr qint64 kBytesAhead = 64 * 1024 * 1024;

    /// Works until nothing is left to begin. What others have begun they take themselves. Memory that runs out ends the
    /// process, as it does elsewhere.
    void workOn() noexcept
    {
        std::unique_lock lock(m_mutex);
        while (m_next < m_count || canTake()) {
            if (canTake())
                takeReady(lock);
            else if (hasRoom())
                makeNext(lock);
            else
                m_roomChanged.wait(lock);
        }
    }

    bool canTake() const { return !m_isTaking && m_ready.contains(m_taken); }

    /// The thing whose turn it is may always be made.
    bool hasRoom() const
    {
        const qsizetype ahead = m_next - m_taken;
        return m_next < m_count && (ahead == 0 || (ahead < kAheadOfThread * m_threads && m_readyBytes < kBytesAhead));
    }

    void makeNext(std::unique_lock<std::mutex> &lock)
    {
        const qsizetype at = m_next++;
        lock.unlock();
        Made made = m_work.make(at);
        const qint64 bytes = m_work.bytesOf(made);
        lock.lock();
        m_ready.emplace(at, std::pair(std::move(made), bytes));
        m_readyBytes += bytes;
    }

    void takeReady(std::unique_lock<std::mutex> &lock)
    {
        m_isTaking = true;
        for (auto ready = m_ready.extract(m_taken); !ready.empty(); ready = m_ready.extract(m_taken)) {
            lock.unlock();
            m_work.take(ready.key(), std::move(ready.mapped().first));
            lock.lock();
            m_readyBytes -= ready.mapped().second;
            ++m_taken;
            m_roomChanged.notify_all();
        }
        m_isTaking = false;
    }

    Work &m_work;
    const qsizetype m_count;
    int m_threads = 1;
    std::mutex m_mutex; ///< of all below
    std::condition_variable m_roomChanged;
    qsizetype m_next = 0;  ///< to be begun
    qsizetype m_taken = 0; ///< how many are
    bool m_isTaking = false;
    std::map<qsizetype, std::pair<Made, qint64>> m_ready; ///< made and not yet taken
    qint64 m_readyBytes = 0;
};

} // namespace veldmap

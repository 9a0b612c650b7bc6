// Things are made on several threads and taken in their order.

#include "outputs/ordered_work.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <set>

namespace {

/// Makes the squares of numbers, the earlier of four the slower, and notes how it went.
struct Squares {
    qsizetype make(qsizetype at)
    {
        const qsizetype nowAhead = at - taken.load();
        for (qsizetype most = mostAhead; nowAhead > most && !mostAhead.compare_exchange_weak(most, nowAhead);)
            ;
        std::this_thread::sleep_for(std::chrono::microseconds(50 * (3 - at % 4)));
        {
            const std::lock_guard lock(mutex);
            makers.insert(std::this_thread::get_id());
        }
        return at * at;
    }
    void take(qsizetype at, qsizetype square)
    {
        EXPECT_FALSE(isTaking.exchange(true)) << "two at a time";
        EXPECT_EQ(square, at * at);
        order.push_back(at);
        ++taken;
        isTaking = false;
    }
    qint64 bytesOf(qsizetype) { return bytesOfOne; }

    qint64 bytesOfOne = 1;
    std::atomic<qsizetype> taken = 0;
    std::atomic<qsizetype> mostAhead = 0;
    std::atomic<bool> isTaking = false;
    std::vector<qsizetype> order;
    std::mutex mutex;
    std::set<std::thread::id> makers;
};

std::vector<qsizetype> upTo(qsizetype count)
{
    std::vector<qsizetype> numbers;
    for (qsizetype number = 0; number < count; ++number)
        numbers.push_back(number);
    return numbers;
}

} // namespace

TEST(OrderedWork, TakesInOrderAndKeepsFewAhead)
{
    for (const int threads : {1, 2, 3, 8, 1000}) {
        for (const qsizetype count : {0, 1, 2, 5, 400}) {
            Squares squares;
            veldmap::OrderedWork(squares, count).run(threads);
            EXPECT_EQ(squares.order, upTo(count)) << threads << " threads, " << count << " things";
            EXPECT_LE(squares.makers.size(), static_cast<std::size_t>(qMin<qsizetype>(threads, count)));
            EXPECT_LE(squares.mostAhead, 4 * qMin<qsizetype>(threads, 256));
        }
    }
}

TEST(OrderedWork, OneThreadIsTheCaller)
{
    Squares squares;
    veldmap::OrderedWork(squares, 20).run(1);
    EXPECT_EQ(squares.makers, std::set{std::this_thread::get_id()});
    EXPECT_EQ(squares.mostAhead, 0);
}

TEST(OrderedWork, LargeThingsWait)
{
    Squares squares;
    squares.bytesOfOne = qint64(1) << 40;
    veldmap::OrderedWork(squares, 100).run(4);
    EXPECT_EQ(squares.order, upTo(100));
    // Each of the four may have begun before the first that came out too large.
    EXPECT_LE(squares.mostAhead, 4);
}

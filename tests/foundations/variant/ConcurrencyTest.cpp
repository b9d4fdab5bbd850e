// Copies of one array made, read, written to and dropped on several threads at once: run under the thread sanitizer.
#include "foundations/variant/Variant.h"

#include "tests/support/ElementTypes.h"
#include "tests/support/HostPayload.h"
#include "tests/support/Variants.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace Brindle::Quay {
using namespace TestSupport;
using ::testing::Each;

namespace {
constexpr int threadCount = 4;
constexpr int rounds = 2000;

// Runs `work(thread)` on several threads that start together, each with its result, and gives these.
template <class Work>
std::vector<bool> onSeveralThreads(Work work)
{
    std::atomic<int> waiting{threadCount};
    std::vector<char> good(threadCount, 0);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting.load() != 0)
                std::this_thread::yield();
            good[static_cast<std::size_t>(i)] = work(i) ? 1 : 0;
        });
    for (std::thread& thread : threads)
        thread.join();
    return std::vector<bool>(good.begin(), good.end());
}
} // namespace

TEST(ConcurrentCopies, ReadTheSharedArray)
{
    const BVariant array = MakeVector({1.0, 2.0, 3.0});
    const auto good = onSeveralThreads([&array](int) {
        double sum = 0;
        for (int i = 0; i < rounds; ++i) {
            const BVariant copy(array);
            const BVariant second(copy);
            for (double element : IterableContainer<double>(second))
                sum += element;
        }
        return sum == 6.0 * rounds;
    });
    EXPECT_THAT(good, Each(true));
    EXPECT_EQ(ToDoubles(array), (Doubles{1, 2, 3}));
}

TEST(ConcurrentCopies, AreWrittenToIndependently)
{
    const BVariant array = MakeVector({1.0, 2.0, 3.0});
    const auto good = onSeveralThreads([&array](int thread) {
        bool kept = true;
        for (int i = 0; i < rounds; ++i) {
            BVariant copy(array);
            setElement<double>(copy, {1}, BVariant(100 + thread));
            kept = kept && getScalar<double>(elementAt(copy, {1})) == 100 + thread &&
                   getScalar<double>(elementAt(array, {1})) == 2.0;
        }
        return kept;
    });
    EXPECT_THAT(good, Each(true));
    EXPECT_EQ(ToDoubles(array), (Doubles{1, 2, 3}));
}

TEST(ConcurrentCopies, ReleaseTheArrayOnce)
{
    for (int i = 0; i < rounds / 10; ++i) {
        HostPayload::Log log;
        {
            // each thread owns one copy and drops it; whoever is last destroys the payload
            std::vector<BVariant> copies(threadCount, HostPayload::make(&log, {1, 2}, {2}));
            const auto good = onSeveralThreads([&copies](int thread) {
                BVariant mine(std::move(copies[static_cast<std::size_t>(thread)]));
                const std::uint64_t count = mine.elementCount();
                mine = BVariant();
                return count == 2 && mine.isNull();
            });
            ASSERT_THAT(good, Each(true));
        }
        ASSERT_EQ(log.destroyed, 1);
    }
}

TEST(ConcurrentCopies, DetachWhileOthersLetGo)
{
    // The last two owners race: one writes, which copies unless the other is gone; the other drops its copy.
    for (int i = 0; i < rounds / 10; ++i) {
        std::vector<BVariant> copies(threadCount, MakeVector({1.0, 2.0}));
        const auto good = onSeveralThreads([&copies](int thread) {
            BVariant& mine = copies[static_cast<std::size_t>(thread)];
            if (thread % 2) {
                mine = BVariant();
                return mine.isNull();
            }
            setElement<double>(mine, {0}, BVariant(100 + thread));
            return ToDoubles(mine) == std::vector<double>{100.0 + thread, 2.0};
        });
        ASSERT_THAT(good, Each(true));
    }
}

TEST(ConcurrentCopies, ShareReshapedReorderedAndSlicedData)
{
    const BVariant array = MakeCounting({2, 3});
    const auto good = onSeveralThreads([&array](int) {
        bool kept = true;
        for (int i = 0; i < rounds / 10; ++i) {
            BVariant flat = BVariant::fromPayload(
                array.payload()->reshaped(array.payload(), {6}, DataOrdering::RowMajor));
            const BVariant columns = flat.reordered(DataOrdering::ColumnMajor);
            setElement<double>(flat, {0}, BVariant(-1.0));
            kept = kept && ToDoubles(columns)[0] == 0.0 && ToDoubles(flat)[0] == -1.0 &&
                   ToDoubles(slice(array, {IndexSet(IndexValue(1))})) == std::vector<double>{3, 4, 5};
        }
        return kept;
    });
    EXPECT_THAT(good, Each(true));
    EXPECT_EQ(ToDoubles(array), (Doubles{0, 1, 2, 3, 4, 5}));
}

TEST(ConcurrentCopies, OfNullScalarsAndTextsAreIndependent)
{
    const BVariant null, number(2.5), text(Samples<std::string>::other());
    const auto good = onSeveralThreads([&](int) {
        bool kept = true;
        for (int i = 0; i < rounds; ++i) {
            const BVariant a(null), b(number), c(text);
            kept = kept && a.isNull() && getScalar<double>(b) == 2.5 && exactlyEqual(c, text);
        }
        return kept;
    });
    EXPECT_THAT(good, Each(true));
}
} // namespace Brindle::Quay

#include <VF/SharedVideoFrameCache.h>
#include <VF/VideoFrames.h>

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <thread>
#include <vector>

namespace {

using kiocore::Guid;
using VF::SharedVideoFrameCache;

Guid Key(int inNumber)
{
    return Guid::FromHash(std::as_bytes(std::span(&inNumber, 1)));
}

/// A frame of inRows * 64 bytes.
MF::IVideoFrameRef Frame(std::uint32_t inRows)
{
    MF::IVideoFrameRef frame;
    VF::CreateVideoFrame(frame, kiomediatypes::kPixelFormat_BGRA_4444_8u, 16, inRows,
                         kiomediatypes::kPixelAspectRatio_Square, false, false);
    frame->PrepareForSharing();
    return frame;
}

class SharedVideoFrameCacheTest : public testing::Test {
protected:
    void SetUp() override
    {
        mUsualBudget = SharedVideoFrameCache::GetStatistics().budgetBytes;
        SharedVideoFrameCache::Clear();
    }
    void TearDown() override
    {
        SharedVideoFrameCache::Clear();
        SharedVideoFrameCache::SetByteBudget(mUsualBudget);
    }
    std::uint64_t mUsualBudget = 0;
};

TEST_F(SharedVideoFrameCacheTest, WhatWasUsedLongestAgoGoesFirstWithinTheLowestRetention)
{
    struct Step {
        char what; // '+' add, '?' use
        int key;
        std::uint32_t rows = 1;
        int retention = 10;
    };
    const struct {
        const char* name;
        std::uint64_t budgetRows;
        std::vector<Step> steps;
        std::vector<int> kept;
    } kCases[] = {
        {"all fit exactly", 3, {{'+', 1}, {'+', 2}, {'+', 3}}, {1, 2, 3}},
        {"the oldest goes", 3, {{'+', 1}, {'+', 2}, {'+', 3}, {'+', 4}}, {2, 3, 4}},
        {"a use renews", 3, {{'+', 1}, {'+', 2}, {'+', 3}, {'?', 1}, {'+', 4}}, {1, 3, 4}},
        {"only as many go as must", 4, {{'+', 1, 2}, {'+', 2}, {'+', 3}, {'+', 4}}, {2, 3, 4}},
        {"low retention goes before old",
         3,
         {{'+', 1, 1, 10}, {'+', 2, 1, 5}, {'+', 3, 1, 10}, {'+', 4}},
         {1, 3, 4}},
        {"also when it is the new one", 2, {{'+', 1}, {'+', 2}, {'+', 3, 1, 5}}, {1, 2}},
        {"a frame larger than all pushes none out", 2, {{'+', 1}, {'+', 2}, {'+', 3, 3}}, {1, 2}},
        {"a key is kept once", 3, {{'+', 1}, {'+', 1, 2}, {'+', 2}}, {1, 2}},
        {"a frame too large removes the one it replaces", 2, {{'+', 1}, {'+', 1, 3}}, {}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        SharedVideoFrameCache::Clear();
        SharedVideoFrameCache::SetByteBudget(test.budgetRows * 64);
        for (const Step& step : test.steps) {
            if (step.what == '+') {
                SharedVideoFrameCache::AddToCache(Key(step.key), Frame(step.rows), step.retention);
            } else {
                EXPECT_TRUE(SharedVideoFrameCache::RetrieveFromCache(Key(step.key)));
            }
        }
        std::vector<int> kept;
        for (int key = 1; key <= 4; ++key) {
            if (SharedVideoFrameCache::RetrieveFromCache(Key(key))) {
                kept.push_back(key);
            }
        }
        EXPECT_EQ(kept, test.kept);
        const auto statistics = SharedVideoFrameCache::GetStatistics();
        EXPECT_EQ(statistics.frames, test.kept.size());
        EXPECT_LE(statistics.bytes, statistics.budgetBytes);
    }
}

TEST_F(SharedVideoFrameCacheTest, ASmallerBudgetTakesEffectAtOnceAndFramesInUseLiveOn)
{
    const auto frame = Frame(4);
    SharedVideoFrameCache::AddToCache(Key(1), frame, 10);
    SharedVideoFrameCache::AddToCache(Key(2), Frame(1), 10);
    SharedVideoFrameCache::SetByteBudget(4 * 64);
    EXPECT_FALSE(SharedVideoFrameCache::RetrieveFromCache(Key(1)));
    EXPECT_TRUE(SharedVideoFrameCache::RetrieveFromCache(Key(2)));
    EXPECT_EQ(frame->GetHeight(), 4u);
    SharedVideoFrameCache::RemoveFromCache(Key(2));
    SharedVideoFrameCache::AddToCache(Key(3), nullptr, 10);
    EXPECT_EQ(SharedVideoFrameCache::GetStatistics().bytes, 0u);
}

TEST_F(SharedVideoFrameCacheTest, KeepsItsBooksUnderTwoThreads)
{
    constexpr std::uint64_t kBudget = 40 * 64;
    SharedVideoFrameCache::SetByteBudget(kBudget);
    std::array<std::thread, 2> threads;
    for (unsigned seed = 0; seed < threads.size(); ++seed) {
        threads[seed] = std::thread([seed] {
            std::mt19937 random(seed);
            for (int step = 0; step < 20000; ++step) {
                const int key = static_cast<int>(random() % 60);
                const auto frame = SharedVideoFrameCache::RetrieveFromCache(Key(key));
                if (frame) {
                    EXPECT_EQ(frame->GetHeight(), static_cast<std::uint32_t>(key % 7 + 1));
                } else {
                    SharedVideoFrameCache::AddToCache(Key(key),
                                                      Frame(static_cast<std::uint32_t>(key % 7 + 1)),
                                                      static_cast<int>(random() % 3));
                }
                if (random() % 16 == 0) {
                    SharedVideoFrameCache::RemoveFromCache(Key(static_cast<int>(random() % 60)));
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::uint64_t bytes = 0;
    std::uint64_t frames = 0;
    for (int key = 0; key < 60; ++key) {
        if (const auto frame = SharedVideoFrameCache::RetrieveFromCache(Key(key))) {
            bytes += frame->GetSizeBytes();
            ++frames;
        }
    }
    const auto statistics = SharedVideoFrameCache::GetStatistics();
    EXPECT_EQ(statistics.bytes, bytes);
    EXPECT_EQ(statistics.frames, frames);
    EXPECT_LE(bytes, kBudget);
    SharedVideoFrameCache::Clear();
    EXPECT_EQ(SharedVideoFrameCache::GetStatistics().bytes, 0u);
}

} // namespace

#include <kiocore/debug/CrashContext.h>

#include "support/AllocationCount.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <thread>

namespace {

using kiocore::ImmutableString;
using kiocore::debug::PopCrashContextForCurrentThread;
using kiocore::debug::PushCrashContextForCurrentThread;
using kiocore::debug::detail::CrashContextStack;
using kiocore::debug::detail::InspectCrashContextForCurrentThread;
using kiocore::debug::detail::UnwindCrashContextForCurrentThread;
using kiocore::utility::Dictionary;

/// Innermost first.
std::string Shown()
{
    std::string shown;
    const CrashContextStack stack = InspectCrashContextForCurrentThread();
    for (std::size_t i = 0; i < stack.Depth(); ++i) {
        shown += stack.At(i).AsJSON();
    }
    return shown;
}

TEST(CrashContext, NestsAndUnwinds)
{
    std::thread([] {
        EXPECT_EQ(Shown(), "");
        PopCrashContextForCurrentThread(); // of nothing
        PushCrashContextForCurrentThread(Dictionary("plug-in", "A"));
        PushCrashContextForCurrentThread("plug-in", "B");
        EXPECT_EQ(Shown(), R"({"plug-in":"B"}{"plug-in":"A"})");
        PopCrashContextForCurrentThread();
        EXPECT_EQ(Shown(), R"({"plug-in":"A"})");
        PushCrashContextForCurrentThread({{"more", 1}, {"and", 2}});
        PushCrashContextForCurrentThread("plug-in", "C");
        UnwindCrashContextForCurrentThread(5); // deeper than it is
        EXPECT_EQ(InspectCrashContextForCurrentThread().Depth(), 3u);
        UnwindCrashContextForCurrentThread(1);
        EXPECT_EQ(Shown(), R"({"plug-in":"A"})");
        PushCrashContextForCurrentThread("plug-in", "D"); // where a larger one was
        EXPECT_EQ(Shown(), R"({"plug-in":"D"}{"plug-in":"A"})");
        std::thread([] { EXPECT_EQ(Shown(), ""); }).join();
    }).join();
}

TEST(CrashContext, EntriesStayWhereTheyAreHoweverDeepItGrows)
{
    std::thread([] {
        PushCrashContextForCurrentThread("depth", "0");
        const Dictionary* first = &InspectCrashContextForCurrentThread().At(0);
        constexpr std::size_t kDepth = 10000;
        for (std::size_t i = 1; i < kDepth; ++i) {
            PushCrashContextForCurrentThread("depth", std::to_string(i));
        }
        const CrashContextStack stack = InspectCrashContextForCurrentThread();
        ASSERT_EQ(stack.Depth(), kDepth);
        EXPECT_EQ(&stack.At(kDepth - 1), first);
        for (std::size_t i = 0; i < kDepth; ++i) {
            const auto* text = boost::get<ImmutableString>(stack.At(i).Find("depth"));
            ASSERT_NE(text, nullptr);
            ASSERT_EQ(text->View(), std::to_string(kDepth - 1 - i));
        }
    }).join();
}

TEST(CrashContext, PushingAgainTakesNoMemory)
{
    const ImmutableString key = ImmutableString::FromLiteral("a key that is too long to lie inline");
    const ImmutableString texts[] = {std::string(100, 'a'), std::string(100, 'b')};
    PushCrashContextForCurrentThread(key, texts[0]);
    PopCrashContextForCurrentThread();
    const support::AllocationCount count;
    for (int i = 0; i < 10; ++i) {
        PushCrashContextForCurrentThread(key, texts[i / 3 % 2]);
        PushCrashContextForCurrentThread(Dictionary(key, texts[i % 2]));
        PopCrashContextForCurrentThread();
        PopCrashContextForCurrentThread();
    }
    EXPECT_EQ(count.SinceThen(), 0u);
}

TEST(CrashContext, OwnsWhatItShows)
{
    auto text = std::make_unique<ImmutableString>(std::string(100, 'x'));
    PushCrashContextForCurrentThread("plug-in", *text);
    text.reset();
    EXPECT_EQ(Shown(), R"({"plug-in":")" + std::string(100, 'x') + "\"}");
    PopCrashContextForCurrentThread();
}

TEST(CrashContext, TheFirstPushGivesTheThreadASignalStack)
{
    std::thread([] {
        PushCrashContextForCurrentThread("plug-in", "A");
        stack_t stack{};
        ASSERT_EQ(sigaltstack(nullptr, &stack), 0);
        EXPECT_EQ(stack.ss_flags & SS_DISABLE, 0);
        EXPECT_GE(stack.ss_size, 16u * 1024);
    }).join();
}

TEST(CrashContext, AThreadKeepsASignalStackOfItsOwn)
{
    std::thread([] {
        std::vector<char> own(256 * 1024);
        stack_t before{};
        const stack_t mine{own.data(), 0, own.size()};
        ASSERT_EQ(sigaltstack(&mine, &before), 0);
        PushCrashContextForCurrentThread("plug-in", "A");
        stack_t now{};
        ASSERT_EQ(sigaltstack(&before, &now), 0);
        EXPECT_EQ(now.ss_sp, own.data());
    }).join();
}

} // namespace

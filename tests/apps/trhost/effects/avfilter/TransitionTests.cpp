#include "AvfilterStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace avfiltertests {
namespace {

using namespace kiomediatypes;
using namespace trhost::effects;
using support::FrameSamples;

const std::array<double, 4> kFirst{1, 0.2, 0, 1};
const std::array<double, 4> kSecond{0, 0.6, 1, 1};

std::array<double, 3> ColorAt(const MF::IVideoFrameRef& inFrame, std::uint32_t inX)
{
    const FrameSamples samples(inFrame);
    std::array<double, 3> color;
    for (int i = 0; i < 3; ++i) {
        color[std::size_t(i)] = samples.Get(i, inX, 20) / samples.Full();
    }
    return color;
}

void ExpectColor(const std::array<double, 3>& inFound, const std::array<double, 3>& inExpected)
{
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(inFound[i], inExpected[i], 1.01 / 255) << "component " << i;
    }
}

std::array<double, 3> Mixed(double inPosition)
{
    std::array<double, 3> color;
    for (std::size_t i = 0; i < 3; ++i) {
        color[i] = kFirst[i] * (1 - inPosition) + kSecond[i] * inPosition;
    }
    return color;
}

TEST(AvfilterTransition, LeadsFromTheFirstToTheSecond)
{
    const struct {
        const char* filter;
        PixelFormat format;
    } kCases[] = {
        {"xfade", kPixelFormat_BGRA_4444_8u},   {"xfade", kPixelFormat_ARGB_4444_8u},
        {"xfade", kPixelFormat_BGRA_4444_16u},  {"blend", kPixelFormat_BGRA_4444_8u},
        {"blend", kPixelFormat_BGRA_4444_32f},  {"mix", kPixelFormat_BGRA_4444_8u},
        {"mix", kPixelFormat_BGRA_4444_16u},    {"overlay", kPixelFormat_BGRA_4444_8u},
        {"overlay", kPixelFormat_ARGB_4444_8u},
    };
    for (const auto& test : kCases) {
        const Form form{test.format, 64, 48};
        const auto effect = Open(test.filter, form);
        ASSERT_EQ(effect->InputCount(), 2);
        const auto first = Plain(form, kFirst);
        const auto second = Plain(form, kSecond);
        // Backwards too: a picture depends on nothing that was before.
        for (const double position : {0.0, 0.25, 0.5, 1.0, 0.5, 0.0, -1.0, 2.0}) {
            SCOPED_TRACE(std::string(test.filter) + " " + NameOf(test.format) + " at " +
                         std::to_string(position));
            const auto output = effect->Render({first, second}, TickTime::FromSeconds(3), position);
            ASSERT_TRUE(output);
            ExpectColor(ColorAt(output, 30), Mixed(std::clamp(position, 0.0, 1.0)));
            EXPECT_EQ(FrameSamples(output).Get(3, 30, 20), FrameSamples(output).Full());
        }
    }
}

TEST(AvfilterTransition, AWipeStandsWhereThePositionIs)
{
    const Form form{kPixelFormat_BGRA_4444_8u, 64, 48};
    const auto effect = Open("xfade", form, {{"transition", "wiperight"}});
    const auto output = effect->Render({Plain(form, kFirst), Plain(form, kSecond)}, TickTime::Zero(), 0.75);
    ExpectColor(ColorAt(output, 46), Mixed(1));
    ExpectColor(ColorAt(output, 50), Mixed(0));
}

TEST(AvfilterTransition, AWayOfBlendingLeadsThroughItsResult)
{
    const Form form{kPixelFormat_BGRA_4444_8u, 64, 48};
    const auto effect = Open("blend", form, {{"all_mode", "multiply"}});
    const std::array<double, 3> product{kFirst[0] * kSecond[0], kFirst[1] * kSecond[1],
                                        kFirst[2] * kSecond[2]};
    for (const auto& [position, expected] : {std::pair(0.0, Mixed(0)), {0.5, product}, {1.0, Mixed(1)}}) {
        SCOPED_TRACE(position);
        const auto output =
            effect->Render({Plain(form, kFirst), Plain(form, kSecond)}, TickTime::Zero(), position);
        ExpectColor(ColorAt(output, 30), expected);
    }
}

TEST(AvfilterTransition, AlphaGoesFromOneToTheOtherHoweverColoursBlend)
{
    const Form form{kPixelFormat_BGRA_4444_8u, 64, 48};
    const auto effect = Open("blend", form, {{"all_mode", "difference"}});
    const std::array<double, 4> veil{0, 0.6, 1, 0.2};
    for (const auto& [position, alpha] : {std::pair(0.0, 1.0), {0.5, 0.6}, {0.75, 0.4}, {1.0, 0.2}}) {
        const auto output =
            effect->Render({Plain(form, kFirst), Plain(form, veil)}, TickTime::Zero(), position);
        EXPECT_NEAR(FrameSamples(output).Get(3, 30, 20), 255 * alpha, 1) << "at " << position;
    }
}

TEST(AvfilterTransition, ModulesSayWhatTheyAre)
{
    const EffectDescription description = Engine().Describe("", "xfade");
    const TR::ITransitionModuleRef module = Engine().OpenTransition(description);
    EXPECT_EQ(module->GetMetadata().matchName.AsString(), "avfilter.xfade");
    EXPECT_EQ(module->GetMetadata().technology, "avfilter");
    EXPECT_EQ(module->GetMetadata().categoryName, "Blend");
    EXPECT_FALSE(module->GetMetadata().isFirstParty);
    std::string text;
    EXPECT_EQ(FailureOf([&] { Engine().OpenFilter(description); }, text), kEffectError_NoPlugin);
    EXPECT_THAT(text, testing::HasSubstr("avfilter.xfade: is a transition"));
}

} // namespace
} // namespace avfiltertests

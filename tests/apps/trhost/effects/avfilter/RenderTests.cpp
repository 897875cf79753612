#include "AvfilterStage.h"

#include "support/TraceRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>

namespace avfiltertests {
namespace {

using namespace kiomediatypes;
using namespace trhost::effects;
using support::FrameSamples;
using testing::Each;
using testing::HasSubstr;

constexpr double kAnyPosition = 0;

TickTime FrameTime(int inFrame)
{
    return TickTime::FromCount(inFrame, {25, 1});
}

MF::IVideoFrameRef Once(const std::string& inFilter, const Form& inForm,
                        const support::GuardedFrameRef& inInput, const Parameters& inParameters = {})
{
    return Open(inFilter, inForm, inParameters)->Render({inInput}, FrameTime(0), kAnyPosition);
}

/// Compares all samples; says the first that differs.
void ExpectSamples(
    const MF::IVideoFrameRef& inFrame, double inTolerance,
    const std::function<double(int inComponent, std::uint32_t inX, std::uint32_t inY)>& inExpected)
{
    ASSERT_TRUE(inFrame);
    const FrameSamples samples(inFrame);
    for (int component = 0; component < samples.Count(); ++component) {
        for (std::uint32_t y = 0; y < samples.Height(component); ++y) {
            for (std::uint32_t x = 0; x < samples.Width(component); ++x) {
                const double found = samples.Get(component, x, y);
                const double expected = inExpected(component, x, y);
                ASSERT_NEAR(found, expected, inTolerance)
                    << "component " << component << " at " << x << ", " << y;
            }
        }
    }
}

TEST(AvfilterRender, MirrorsExactlyInEveryFormatAndSize)
{
    const struct {
        const char* name;
        std::uint32_t width;
        std::uint32_t height;
    } kSizes[] = {
        {"one pixel", 1, 1}, {"odd both ways", 719, 487}, {"one row of seven", 7, 1}, {"even", 64, 48}};
    for (const auto& [format, formatName] : kPixelFormats) {
        for (const auto& size : kSizes) {
            SCOPED_TRACE(std::string(formatName) + ", " + size.name);
            const Form form{format, size.width, size.height};
            const auto source = [format = format](int inComponent, double inX, double inY) {
                return Pattern(format, inComponent, inX, inY);
            };
            const auto input = Picture(form, source);
            const auto untouched = Picture(form, source);
            const auto output = Once("hflip", form, input);
            ASSERT_TRUE(output);
            EXPECT_EQ(output->GetPixelFormat(), format);
            const FrameSamples before(untouched);
            ExpectSamples(output, 0, [&](int inComponent, std::uint32_t inX, std::uint32_t inY) {
                return before.Get(inComponent, before.Width(inComponent) - 1 - inX, inY);
            });
            ExpectSamples(input, 0, [&](int inComponent, std::uint32_t inX, std::uint32_t inY) {
                return before.Get(inComponent, inX, inY);
            });
            EXPECT_TRUE(input->PaddingIsIntact());
        }
    }
}

TEST(AvfilterRender, ChangesColoursAndKeepsAlpha)
{
    constexpr int kAlpha = 3;
    const struct {
        const char* name;
        const char* filter;
        PixelFormat format;
        Parameters parameters;
        double scale; // of the colours
        double offset;
        bool isAlphaToo;
    } kCases[] = {
        {"negative", "negate", kPixelFormat_BGRA_4444_8u, {}, -1, 255, false},
        {"negative, alpha too",
         "negate",
         kPixelFormat_BGRA_4444_8u,
         {{"components", "r+g+b+a"}},
         -1,
         255,
         true},
        {"negative of ARGB", "negate", kPixelFormat_ARGB_4444_8u, {}, -1, 255, false},
        {"negative of 16 bits", "negate", kPixelFormat_BGRA_4444_16u, {}, -1, 65535, false},
        {"alpha round a filter that would spoil it", "fade", kPixelFormat_BGRA_4444_8u, {}, 0, 0, false},
        {"alpha round a filter without",
         "exposure",
         kPixelFormat_BGRA_4444_32f,
         {{"exposure", "1"}},
         2,
         0,
         false},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const Form form{test.format, 61, 43};
        const auto input = Picture(form, [&](int inComponent, double inX, double inY) {
            return Pattern(test.format, inComponent, inX, inY);
        });
        const FrameSamples before(input);
        ExpectSamples(Once(test.filter, form, input, test.parameters), 1e-6,
                      [&](int inComponent, std::uint32_t inX, std::uint32_t inY) {
                          const double code = before.Get(inComponent, inX, inY);
                          const bool isChanged = inComponent != kAlpha || test.isAlphaToo;
                          return isChanged ? code * test.scale + test.offset : code;
                      });
    }
}

TEST(AvfilterRender, FiltersMayChangeTheSize)
{
    const Form form{kPixelFormat_BGRA_4444_8u, 719, 487};
    const auto input = Picture(form, [](int inComponent, double inX, double inY) {
        return Pattern(kPixelFormat_BGRA_4444_8u, inComponent, inX, inY);
    });
    const FrameSamples before(input);
    const auto turned = Once("transpose", form, input, {{"dir", "clock"}});
    ASSERT_EQ(turned->GetWidth(), 487u);
    ExpectSamples(turned, 0, [&](int inComponent, std::uint32_t inX, std::uint32_t inY) {
        return before.Get(inComponent, inY, 486 - inX);
    });
    const auto cut = Once("crop", form, input, {{"out_w", "11"}, {"out_h", "5"}, {"x", "600"}, {"y", "480"}});
    ASSERT_EQ(cut->GetWidth(), 11u);
    ASSERT_EQ(cut->GetHeight(), 5u);
    ExpectSamples(cut, 0, [&](int inComponent, std::uint32_t inX, std::uint32_t inY) {
        return before.Get(inComponent, inX + 600, inY + 480);
    });
}

TEST(AvfilterRender, SomeFiltersWantMorePicturesFirst)
{
    const struct {
        const char* filter;
        PixelFormat format;
        Parameters parameters;
        const char* gives; // for each picture handed in
    } kCases[] = {
        {"tinterlace", kPixelFormat_YUV_420_8u_Planar, {}, "-+-+-+"},
        {"framestep", kPixelFormat_BGRA_4444_8u, {{"step", "3"}}, "+--+--"},
        {"yadif", kPixelFormat_BGRA_4444_8u, {}, "-+++++"},
        {"reverse", kPixelFormat_BGRA_4444_8u, {}, "------"},
        {"fps", kPixelFormat_BGRA_4444_8u, {{"fps", "100"}}, "-+++++"},
        {"tmix", kPixelFormat_BGRA_4444_32f, {}, "++++++"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.filter);
        const Form form{test.format, 64, 48};
        const auto effect = Open(test.filter, form, test.parameters);
        const auto input = Plain(form, {0.5, 0.25, 0.75, 1});
        std::string gives;
        for (int frame = 0; frame < 6; ++frame) {
            gives += effect->Render({input}, FrameTime(frame), kAnyPosition) ? '+' : '-';
        }
        EXPECT_EQ(gives, test.gives);
    }
}

TEST(AvfilterRender, RowsAreAsLongAsFiltersExpect)
{
    // This one copies alpha by the length of rows of a picture of its own, and asserts that ours are no
    // shorter.
    for (const std::uint32_t width : {1u, 8u, 33u, 65u, 719u}) {
        SCOPED_TRACE(width);
        const Form form{kPixelFormat_BGRA_4444_32f, width, 7};
        EXPECT_TRUE(Once("tonemap", form, Plain(form, {0.5, 0.25, 0.75, 1})));
    }
}

TEST(AvfilterRender, TimeIsThatOfThePicture)
{
    const Form form;
    const auto effect = Open("fade", form, {{"type", "in"}, {"start_time", "1"}, {"duration", "2"}});
    const auto input = Plain(form, {1, 1, 1, 1});
    for (const auto& [seconds, expected] : {std::pair(0.5, 0.0), {1.0, 0.0}, {2.0, 127.5}, {3.0, 255.0}}) {
        const auto output = effect->Render({input}, TickTime::FromSeconds(seconds), kAnyPosition);
        EXPECT_NEAR(FrameSamples(output).Get(0, 5, 5), expected, 1) << "at " << seconds;
    }
}

TEST(AvfilterRender, AFilterOfOtherFormatsRunsByConversion)
{
    const Form form{kPixelFormat_Any, 61, 43};
    const auto effect = Open("alphaextract", form);
    ASSERT_EQ(effect->Format(), kPixelFormat_BGRA_4444_8u);
    const auto input = Plain({effect->Format(), 61, 43}, {1, 0, 0, 0.4});
    ExpectSamples(effect->Render({input}, FrameTime(0), kAnyPosition), 1,
                  [](int inComponent, std::uint32_t, std::uint32_t) { return inComponent == 3 ? 255 : 102; });
}

TEST(AvfilterRender, SourcesMakePicturesOfTheFormsSizeAndRate)
{
    const Form form{kPixelFormat_BGRA_4444_16u, 101, 33};
    const auto plain = Open("color", form, {{"color", "#ff8000"}});
    ASSERT_EQ(plain->InputCount(), 0);
    const auto output = plain->Render({}, FrameTime(7), kAnyPosition);
    ASSERT_EQ(output->GetWidth(), 101u);
    ASSERT_EQ(output->GetHeight(), 33u);
    ExpectSamples(output, 0, [](int inComponent, std::uint32_t, std::uint32_t) {
        return inComponent == 1 ? 0x8080 : inComponent == 2 ? 0 : 65535;
    });

    // Skipping pictures comes to the same as asking for all of them.
    const Form small{kPixelFormat_BGRA_4444_8u, 64, 48};
    const auto all = Open("testsrc2", small);
    const auto some = Open("testsrc2", small);
    MF::IVideoFrameRef last;
    for (int frame = 0; frame <= 10; ++frame) {
        last = all->Render({}, FrameTime(frame), kAnyPosition);
    }
    const auto first = some->Render({}, FrameTime(100), kAnyPosition);
    const auto eleventh = some->Render({}, FrameTime(110), kAnyPosition);
    const FrameSamples expected(last);
    bool differs = false;
    ExpectSamples(eleventh, 0, [&](int inComponent, std::uint32_t inX, std::uint32_t inY) {
        const double code = expected.Get(inComponent, inX, inY);
        differs = differs || code != FrameSamples(first).Get(inComponent, inX, inY);
        return code;
    });
    EXPECT_TRUE(differs);
}

TEST(AvfilterRender, ParametersAreCheckedAndMovedIntoTheirRange)
{
    const struct {
        const char* name;
        const char* filter;
        const char* parameter;
        const char* value;
        const char* complaint; // empty when taken
    } kCases[] = {
        {"unknown", "hflip", "radius", "1", "avfilter.hflip: has no parameter \"radius\""},
        {"an alias", "boxblur", "lr", "1", "no parameter"},
        {"a file", "curves", "plot", "/dev/null", "no parameter"},
        {"of every filter", "hflip", "enable", "0", "no parameter"},
        {"no number", "gblur", "sigma", "wide", "expected a number, 0 to 1024"},
        {"number and more", "gblur", "sigma", "1px", "expected a number"},
        {"too large a number", "gblur", "sigma", "1e9", ""},
        {"no whole number", "gblur", "steps", "1.5", "expected a whole number, 1 to 6"},
        {"too large a whole number", "gblur", "steps", "99999999999999999999", ""},
        {"no choice", "xfade", "transition", "magic", "expected one of"},
        {"a choice by its number", "transpose", "dir", "2", ""},
        {"a choice of three", "lenscorrection", "i", "bilinear", ""},
        {"no switch", "negate", "negate_alpha", "maybe", "\"true\" or \"false\""},
        {"no colour", "color", "color", "orange", "\"#rrggbb\""},
        {"a colour with alpha", "color", "color", "#ff800080", ""},
        {"no size", "tile", "layout", "wide", "does not take \"wide\""},
        {"no flag", "negate", "components", "y+q", "does not take"},
        {"an expression is looked at later", "crop", "x", "(((", ""},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const auto effect = Open(test.filter, {kPixelFormat_Any, 64, 48});
        std::string text;
        const std::uint32_t code = FailureOf([&] { effect->SetParameter(test.parameter, test.value); }, text);
        EXPECT_EQ(code, *test.complaint ? kEffectError_BadParameter : 0u) << text;
        EXPECT_THAT(text, HasSubstr(test.complaint));
    }
}

TEST(AvfilterRender, FailuresNameThePluginAndItsComplaint)
{
    support::TraceRecorder recorder("avfilter");
    const Form form;
    const auto input = Plain(form, {0, 0, 0, 1});
    const auto effect = Open("crop", form, {{"out_w", "2*in_w"}});
    testing::internal::CaptureStderr();
    std::string text;
    EXPECT_EQ(FailureOf([&] { effect->Render({input}, FrameTime(0), kAnyPosition); }, text),
              kEffectError_PluginFailed);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(text, HasSubstr("avfilter.crop: could not be set up: Invalid argument: Invalid too big"));
    EXPECT_GT(recorder.CountContaining("Failed to configure"), 0);
}

TEST(AvfilterRender, PicturesMustBeOfTheFormThatWasOpened)
{
    const Form form;
    const auto effect = Open("hflip", form);
    const auto good = Plain(form, {0, 0, 0, 1});
    MF::IVideoFrameRef withoutMemory;
    ASSERT_TRUE(VF::CreateVideoFrame(withoutMemory, form.format, form.width, form.height, {}, false, false));
    const struct {
        const char* name;
        std::vector<MF::IVideoFrameRef> inputs;
        const char* complaint;
    } kCases[] = {
        {"too few", {}, "0 pictures, expected 1"},
        {"too many", {good, good}, "2 pictures, expected 1"},
        {"none", {{}}, "without memory"},
        {"no memory", {withoutMemory}, "without memory"},
        {"size", {Plain({form.format, 64, 49}, {})}, "64x49 bgra8, expected 64x48 bgra8"},
        {"format", {Plain({kPixelFormat_ARGB_4444_8u, 64, 48}, {})}, "64x48 argb8, expected 64x48 bgra8"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        std::string text;
        EXPECT_EQ(FailureOf([&] { effect->Render(test.inputs, FrameTime(0), kAnyPosition); }, text),
                  kEffectError_BadFrame);
        EXPECT_THAT(text, HasSubstr(test.complaint));
    }
    for (const Form& bad : {Form{kPixelFormat_Any, 0, 48}, Form{kPixelFormat_Any, 64, 65536},
                            Form{kPixelFormat_BGRA_4444_32f, 64, 48}}) {
        std::string text;
        EXPECT_EQ(FailureOf([&] { Open("negate", bad); }, text), kEffectError_BadFrame);
        EXPECT_THAT(text, HasSubstr("avfilter.negate"));
    }
}

TEST(AvfilterRenderDeathTest, AFilterThatAbortsTakesTheProcessWithIt)
{
    // Debian's says that it takes RGB. Whoever wants it may have it, in a format that it can do.
    const Form form{kPixelFormat_BGRA_4444_8u, 64, 48};
    EXPECT_EXIT(Once("vidstabdetect", form, Plain(form, {1, 0, 0, 1})), testing::KilledBySignal(SIGABRT),
                "planes==1");
    const Form works{kPixelFormat_YUV_420_8u_Planar, 64, 48};
    EXPECT_TRUE(Once("vidstabdetect", works, Plain(works, {1, 0, 0, 1})));
}

TEST(AvfilterRender, EveryCallNamesThePlugin)
{
    const Form form;
    const auto input = Plain(form, {0, 0, 0, 1});
    Calls().names.clear();
    auto effect = Open("gblur", form, {{"sigma", "2"}});
    const std::size_t atParameter = Calls().names.size();
    EXPECT_GT(atParameter, 0u);
    ASSERT_TRUE(effect->Render({input}, FrameTime(0), kAnyPosition));
    const std::size_t atRender = Calls().names.size();
    EXPECT_GT(atRender, atParameter);
    effect.reset();
    EXPECT_GT(Calls().names.size(), atRender);
    EXPECT_THAT(Calls().names, Each(std::string("avfilter.gblur")));
}

} // namespace
} // namespace avfiltertests

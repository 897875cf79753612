#include "AvfilterStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace avfiltertests {
namespace {

using namespace trhost::effects;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

const EffectParameter* Find(const EffectDescription& inDescription, const std::string& inName)
{
    for (const EffectParameter& parameter : inDescription.parameters) {
        if (parameter.name == inName) {
            return &parameter;
        }
    }
    return nullptr;
}

TEST(AvfilterDescribe, FormatsAreThoseThatAFilterTakesAsTheyAre)
{
    const struct {
        const char* name;
        const char* filter;
        EffectKind kind;
        const char* formats;
    } kCases[] = {
        {"moves pixels of any kind", "hflip", EffectKind::kVideoFilter,
         "bgra8 argb8 bgra16 bgra32f v210 uyvy yuv420"},
        {"whole numbers only", "negate", EffectKind::kVideoFilter, "bgra8 argb8 bgra16 v210 uyvy yuv420"},
        {"floats only", "exposure", EffectKind::kVideoFilter, "bgra32f"},
        {"YUV only", "hqdn3d", EffectKind::kVideoFilter, "v210 uyvy yuv420"},
        {"RGB in planes", "xfade", EffectKind::kTransition, "bgra8 argb8 bgra16"},
        {"RGB by what it is preset to", "overlay", EffectKind::kTransition, "bgra8 argb8"},
        {"of pixels without alpha", "mandelbrot", EffectKind::kGenerator, "bgra8 argb8"},
        {"by conversion only", "lumakey", EffectKind::kVideoFilter, ""},
        {"too small a picture is no reason", "pixscope", EffectKind::kVideoFilter,
         "bgra8 argb8 bgra16 v210 uyvy yuv420"},
        {"says floats and overruns its memory in them", "boxblur", EffectKind::kVideoFilter,
         "bgra8 argb8 bgra16 v210 uyvy yuv420"},
        {"aborts in RGB, and is only asked", "vidstabdetect", EffectKind::kVideoFilter,
         "bgra8 argb8 uyvy yuv420"},
        {"a source", "color", EffectKind::kGenerator, "bgra8 argb8 bgra16 v210 uyvy yuv420"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const EffectDescription description = Engine().Describe("", test.filter);
        EXPECT_EQ(NamesOf(description.formats), test.formats);
        EXPECT_EQ(description.refusal, "");
        EXPECT_STREQ(NameOf(description.kind), NameOf(test.kind));
        EXPECT_EQ(description.matchName, std::string("avfilter.") + test.filter);
        EXPECT_FALSE(description.isAccelerated);
        EXPECT_EQ(ToJSONText(FromJSONText(ToJSONText(description))), ToJSONText(description));
    }
}

TEST(AvfilterDescribe, WhatMustNotRunIsListedAndRefused)
{
    const struct {
        const char* filter;
        bool isAccelerated;
        const char* reason;
    } kCases[] = {
        {"movie", false, "opens files"},
        {"subtitles", false, "opens files"},
        {"lut3d", false, "opens files"},
        {"zmq", false, "network socket"},
        {"frei0r", false, "plug-ins of another kind"},
        {"frei0r_src", false, "plug-ins of another kind"},
        {"hwupload", false, "device"},
        {"avgblur_opencl", true, "device of kind opencl"},
        {"scale_vaapi", true, "device of kind vaapi"},
        {"xfade_opencl", true, "device of kind opencl"},
    };
    const std::vector<std::string> names = Engine().PluginNames("");
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.filter);
        EXPECT_THAT(names, Contains(test.filter));
        const EffectDescription description = Engine().Describe("", test.filter);
        EXPECT_THAT(trhost::ToldText(description.refusal), HasSubstr(test.reason));
        EXPECT_EQ(description.isAccelerated, test.isAccelerated);
        std::string text;
        EXPECT_EQ(FailureOf(
                      [&] {
                          description.kind == EffectKind::kTransition
                              ? void(Engine().OpenTransition(description))
                              : void(Engine().OpenFilter(description));
                      },
                      text),
                  kEffectError_Refused);
        EXPECT_THAT(text, HasSubstr(description.matchName + ": " + trhost::ToldText(description.refusal)));
    }
}

TEST(AvfilterDescribe, WhatHasNoPlaceIsNotListed)
{
    const std::vector<std::string> names = Engine().PluginNames("");
    for (const char* name :
         {"buffer", "anull", "split", "psnr", "hstack", "concat", "showwaves", "nullsink"}) {
        EXPECT_THAT(names, Not(Contains(name)));
        std::string text;
        EXPECT_EQ(FailureOf([&] { Engine().Describe("", name); }, text), kEffectError_NoPlugin) << name;
    }
    std::string text;
    EXPECT_EQ(FailureOf([] { Engine().Describe("", "no_such_filter"); }, text), kEffectError_NoPlugin);
    EXPECT_THAT(text, HasSubstr("avfilter.no_such_filter"));
}

TEST(AvfilterDescribe, ParametersComeFromOptions)
{
    const struct {
        const char* filter;
        const char* parameter;
        ParameterKind kind;
        const char* defaultValue;
        double minimum;
        double maximum;
    } kCases[] = {
        {"boxblur", "luma_radius", ParameterKind::kText, "2", 0, 0},
        {"boxblur", "luma_power", ParameterKind::kInteger, "2", 0, 2147483647},
        {"gblur", "sigma", ParameterKind::kNumber, "0.5", 0, 1024},
        {"xfade", "transition", ParameterKind::kChoice, "fade", 0, 0},
        {"negate", "negate_alpha", ParameterKind::kBool, "false", 0, 0},
        {"color", "color", ParameterKind::kColor, "#000000ff", 0, 0},
        {"fade", "duration", ParameterKind::kNumber, "0", 0, 9223372036854.7754},
        {"negate", "components", ParameterKind::kText, "y+u+v+r+g+b", 0, 0},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(std::string(test.filter) + " " + test.parameter);
        const EffectDescription description = Engine().Describe("", test.filter);
        const EffectParameter* const parameter = Find(description, test.parameter);
        ASSERT_NE(parameter, nullptr);
        EXPECT_STREQ(NameOf(parameter->kind), NameOf(test.kind));
        EXPECT_EQ(parameter->defaultValue, test.defaultValue);
        if (test.maximum != 0) {
            EXPECT_TRUE(parameter->hasRange);
            EXPECT_DOUBLE_EQ(parameter->minimum, test.minimum);
            EXPECT_DOUBLE_EQ(parameter->maximum, test.maximum);
        }
    }
    const auto choices = Find(Engine().Describe("", "xfade"), "transition")->choices;
    EXPECT_THAT(choices, Contains("wipeleft"));
}

TEST(AvfilterDescribe, FilesAliasesAndWhatIsDecidedElsewhereAreNoParameters)
{
    const struct {
        const char* filter;
        const char* option;
    } kCases[] = {
        {"curves", "psfile"}, {"curves", "plot"},       {"life", "filename"},     {"life", "f"},
        {"metadata", "file"}, {"drawtext", "fontfile"}, {"drawtext", "textfile"}, {"boxblur", "lr"},
        {"color", "size"},    {"color", "s"},           {"testsrc2", "r"},        {"xfade", "duration"},
        {"xfade", "offset"},  {"blend", "all_opacity"}, {"mix", "weights"},       {"vidstabdetect", "result"},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(Find(Engine().Describe("", test.filter), test.option), nullptr)
            << test.filter << " " << test.option;
    }
}

TEST(AvfilterDescribe, TheFileIsTheLibraryInUse)
{
    const std::vector<std::string> files = Engine().FilesBehind("");
    ASSERT_EQ(files.size(), 4u);
    for (const std::string& file : files) {
        EXPECT_TRUE(std::filesystem::is_regular_file(file)) << file;
        EXPECT_EQ(std::filesystem::canonical(file), file);
    }
    EXPECT_THAT(files[0], HasSubstr("libavfilter.so"));
    EXPECT_THAT(files[3], HasSubstr("trhost_avfilter.so"));
    EXPECT_EQ(Engine().Describe(files[0], "hflip").file, files[0]);
    std::string text;
    EXPECT_EQ(FailureOf([&] { Engine().PluginNames(files[1]); }, text), kEffectError_NoPlugin);
    EXPECT_THAT(text, HasSubstr(files[1]));
}

} // namespace
} // namespace avfiltertests

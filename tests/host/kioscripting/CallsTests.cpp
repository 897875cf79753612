#include "ScriptClasses.h"

#include <kiocore/config/Errors.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

using kioscripting::Convert;
using kioscripting::Value;
using kioscripting::Values;

class ScriptCalls : public testing::Test {
protected:
    ScriptCalls() : level(kioscripting::CreateScriptObject<script_classes::Level>(context)) {}
    ~ScriptCalls() override { kioscripting::CloseContext(context); }

    std::string Failure(const std::function<void()>& inCall)
    {
        try {
            inCall();
        } catch (const kiocore::kio_exception& error) {
            return error.what();
        }
        return "did not fail";
    }

    const int context = kioscripting::OpenContext();
    const script_classes::LevelPtr level;
};

TEST_F(ScriptCalls, CheckArgumentsAgainstTheDefinition)
{
    const auto definition = kioscripting::ClassRegistry::FindClass("Acme.Sound.Level");
    const struct {
        const char* method;
        Values arguments;
        std::string expected;
    } kCases[] = {
        {"above", {}, "Level.above: expected (other), found 0 arguments"},
        {"above", {1, 2}, "Level.above: expected (other), found 2 arguments"},
        {"above", {1}, "Level.above: argument other: expected Level, found number"},
        {"above", {kioscripting::Null()}, "Level.above: argument other: expected Level, found null"},
        {"set", {"5"}, "Level.set: argument decibels: expected a number, found string"},
        {"fail", {true}, "Level.fail: argument kind: expected a string, found boolean"},
        {"nothing", {}, "Acme.Sound.Level has no method nothing"},
        {"fail", {"kio"}, "Too loud"},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(Failure([&] { InvokeMethod(*level, test.method, test.arguments); }), test.expected);
    }
    EXPECT_EQ(Failure([&] { ReadProperty(*level, "loudness"); }),
              "Acme.Sound.Level has no property loudness");
    EXPECT_EQ(Failure([&] {
                  ConstructObject(*definition, context, {1, 2});
              }),
              "Level: expected (decibels?), found 2 arguments");
    EXPECT_EQ(Failure([&] { ConstructObject(*definition, 0); }),
              "Acme.Sound.Level: the context 0 is not open");
    EXPECT_EQ(Failure([&] {
                  ConstructObject(*kioscripting::ClassRegistry::FindClass("Acme.Sound.Meter"), context);
              }),
              "Acme.Sound.Meter cannot be constructed by scripts");
    EXPECT_EQ(Failure([&] { ReadProperty(script_classes::Stranger(), "x"); }),
              "The class Stranger is not registered");
}

TEST_F(ScriptCalls, RefuseAnObjectOfAnotherClass)
{
    const auto definition = kioscripting::ClassRegistry::FindClass("Acme.Sound.Level");
    const auto meter = kioscripting::CreateScriptObject<script_classes::Meter>(context);
    EXPECT_THROW(InvokeMethod(*definition, definition->methods.front(), *meter, {Value(level)}),
                 std::bad_cast);
}

TEST(ScriptConversions, TakeWholeNumbersInTheirRange)
{
    EXPECT_EQ(Convert<int>::From(-5), -5);
    EXPECT_EQ(Convert<std::uint8_t>::From(255), 255);
    EXPECT_EQ(Convert<std::int64_t>::From(9007199254740992.0), 9007199254740992);
    for (const double wrong : {256.0, -1.0, 0.5, std::nan(""), HUGE_VAL}) {
        EXPECT_THROW(Convert<std::uint8_t>::From(wrong), kiocore::kio_exception) << wrong;
    }
    EXPECT_THROW(Convert<std::int64_t>::From(9007199254740994.0), kiocore::kio_exception);
}

TEST(ScriptConversions, TakeGuidsAndTheirTexts)
{
    const char* const kText = "102bfb4c-1980-4e77-87df-17b03d5b09db";
    const int context = kioscripting::OpenContext();
    const kiocore::Guid guid{std::string(kText)};
    EXPECT_EQ(Convert<kiocore::Guid>::From(kText), guid);
    const Value object = Convert<kiocore::Guid>::To(guid, context);
    EXPECT_EQ(Convert<kiocore::Guid>::From(object), guid);
    EXPECT_EQ(ReadProperty(**object.As<kioscripting::ScriptObjectPtr>(), "text"), Value(kText));
    EXPECT_THROW(Convert<kiocore::Guid>::From("no guid"), kiocore::kio_exception);
    EXPECT_THROW(Convert<kiocore::Guid>::From(5), kiocore::kio_exception);
    kioscripting::CloseContext(context);
}

} // namespace

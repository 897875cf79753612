#include "ScriptRunner.h"

#include <cmath>

namespace {

using kioscripting::Bytes;
using kioscripting::Foreign;
using kioscripting::Value;

TEST(ScriptValues, GoBothWays)
{
    ScriptRunner scripts;
    const Value kMembers = Value::Members{{"b", 1}, {"a", Value::Array{true, kioscripting::Null()}}};
    const struct {
        const char* script;
        Value expected;
    } kCases[] = {
        {"undefined", {}},
        {"null", kioscripting::Null()},
        {"true", true},
        {"-0.5", -0.5},
        {"'caf\xC3\xA9'", "caf\xC3\xA9"},
        {"''", ""},
        {"'a\\0b'", std::string("a\0b", 3)},
        {"'\\ud83c\\udfb5'", "\xF0\x9F\x8E\xB5"},
        {"({ b: 1, a: [true, null] })", kMembers},
        {"[]", Value::Array{}},
        {"[1,,3]", Value::Array{1, kioscripting::Undefined(), 3}},
        {"new Uint8Array([1, 2, 255])", Bytes{{std::byte(1), std::byte(2), std::byte(255)}}},
        {"new Uint8Array()", Bytes{}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.script);
        EXPECT_EQ(scripts.Run(test.script), test.expected);
        EXPECT_EQ(scripts.Run("L.echo(" + std::string(test.script) + ")"), test.expected);
    }
    EXPECT_TRUE(std::isnan(*scripts.Run("L.echo(NaN)").As<double>()));
    EXPECT_EQ(scripts.Text("L.echo(new Uint8Array([7])) instanceof Uint8Array"), "true");
    EXPECT_EQ(scripts.Text("L.echo(L) === L"), "true");
}

TEST(ScriptValues, OfOtherKindsReachNatives)
{
    ScriptRunner scripts;
    const struct {
        const char* script;
        Value expected;
    } kCases[] = {
        {"'\\ud800x'", "\xEF\xBF\xBDx"},
        {"new Uint16Array([0x0201])", Bytes{{std::byte(1), std::byte(2)}}},
        {"new Uint8Array([1, 2, 3]).subarray(1)", Bytes{{std::byte(2), std::byte(3)}}},
        {"new DataView(new Uint8Array([1, 2]).buffer, 1)", Bytes{{std::byte(2)}}},
        {"new Uint8Array([9]).buffer", Bytes{{std::byte(9)}}},
        {"10n", Foreign{"bigint"}},
        {"Symbol()", Foreign{"symbol"}},
        {"() => 1", Foreign{"function"}},
        {"new Date(0)", "1970-01-01T00:00:00.000Z"},
        {"[new Promise(() => {})]", Value::Array{Foreign{"promise"}}},
        {"const shared = {}; [shared, shared]", Value::Array{Value::Members{}, Value::Members{}}},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.script);
        EXPECT_EQ(scripts.Run(test.script), test.expected);
    }
}

TEST(ScriptValues, ThatCannotGoSaySo)
{
    ScriptRunner scripts;
    const struct {
        const char* script;
        std::string expected;
    } kCases[] = {
        {"const a = []; a.push(a); L.echo(a)", "an object that contains itself cannot be given to a native"},
        {"let d = 1; for (let i = 0; i < 1e5; ++i) d = { d }; L.echo(d)",
         "objects nested deeper than 200 cannot be given to a native"},
        {"L.echo({ get x() { throw new Error('getter') } })", "getter"},
        {"L.echo(() => 1)", "a function cannot go back to a script through a native"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.script);
        EXPECT_EQ(scripts.Failure(test.script).what(), test.expected);
    }
    EXPECT_THROW(scripts.Run("const b = {}; b.b = b; b"), kiocore::kio_exception);
}

TEST(ScriptValues, OfTheHostAreGlobalsThatStay)
{
    ScriptRunner scripts;
    scripts.engine->SetGlobal("arguments_", Value::Array{"a", 1});
    EXPECT_EQ(scripts.Text("arguments_ = 5; arguments_"), "[ \"a\", 1 ]");
    EXPECT_THAT(scripts.Text("'use strict'; arguments_ = 5"), testing::HasSubstr("TypeError"));
    scripts.engine->SetGlobal("arguments_", 2);
    EXPECT_EQ(scripts.Text("arguments_"), "2");
}

} // namespace

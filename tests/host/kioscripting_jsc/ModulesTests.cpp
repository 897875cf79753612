#include "ScriptRunner.h"

#include <map>

namespace {

using kioscripting::ModuleSource;

class ScriptModules : public testing::Test {
protected:
    ScriptModules() : scripts(Settings()) {}

    kioscripting::EngineSettings Settings()
    {
        kioscripting::EngineSettings settings;
        settings.loadModule = [this](const std::string& inName, const std::string& inFromFile) {
            asked.push_back(inName + " from " + inFromFile);
            const auto found = files.find(inName);
            if (found == files.end()) {
                throw kiocore::kio_exception("There is no module " + inName, kiocore::kError_File);
            }
            return ModuleSource{"/scripts/" + found->first, found->second};
        };
        return settings;
    }

    std::map<std::string, std::string> files = {
        {"counter.js", "let n = 0;\nexports.next = () => ++n;\nexports.where = [__filename, __dirname];"},
        {"function.js", "#!/usr/bin/trhost\nmodule.exports = x => x * 2; // no line end"},
        {"user.js", "exports.value = require('counter.js').next();"},
        {"data.json", "{ \"a\": [1, 2] }"},
        {"bad.json", "{ a }"},
        {"a.js", "exports.early = 1; exports.b = require('b.js').seen; exports.late = 2;"},
        {"b.js", "exports.seen = Object.keys(require('a.js')).join();"},
        {"throws.js", "\nfunction f() {\n  throw new Error('in a module'); }\nf();"},
        {"syntax.js", "let a;\nlet a;"},
        {"native.js", "exports.x = 1;\n\n  new Acme.Sound.Level().fail('kio');"},
        {"escape.js", "}); globalThis.escaped = true; (function () {"},
        {"strict.js", "'use strict'; exports.isStrict = (function () { return this === undefined })()"},
    };
    std::vector<std::string> asked;
    ScriptRunner scripts;
};

TEST_F(ScriptModules, AreRunOnceAndOfferTheirExports)
{
    EXPECT_EQ(scripts.Text("require('counter.js').next()"), "1");
    EXPECT_EQ(scripts.Text("require('user.js').value"), "2");
    EXPECT_EQ(scripts.Text("require('counter.js').where"), "[ \"/scripts/counter.js\", \"/scripts\" ]");
    EXPECT_EQ(scripts.Text("require('function.js')(4)"), "8");
    EXPECT_EQ(scripts.Text("require('data.json').a"), "[ 1, 2 ]");
    EXPECT_EQ(scripts.Text("require('strict.js').isStrict"), "true");
    EXPECT_EQ(asked[0], "counter.js from test.js");
    EXPECT_EQ(asked[2], "counter.js from /scripts/user.js");
}

TEST_F(ScriptModules, MayNeedEachOther)
{
    EXPECT_EQ(scripts.Text("require('a.js')"), "{ early: 1, b: \"early\", late: 2 }");
}

TEST_F(ScriptModules, FailWithTheirOwnPlaces)
{
    const struct {
        const char* script;
        std::string full;
        std::uint32_t code;
    } kCases[] = {
        {"require('throws.js')", "/scripts/throws.js:3:18: in a module", kioscripting::kError_Script},
        {"require('native.js')", "/scripts/native.js:3:30: Too loud", 0x80770002},
        {"require('syntax.js')",
         "/scripts/syntax.js:2: SyntaxError: Cannot declare a let variable twice: 'a'.",
         kioscripting::kError_Script},
        {"require('missing.js')", "test.js:1:8: There is no module missing.js", kiocore::kError_File},
        {"require(5)", "test.js:1:8: TypeError: require: expected the name of a module",
         kioscripting::kError_Script},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.script);
        for (int i = 0; i < 2; ++i) { // asked for again, they fail again
            const kioscripting::script_exception error = scripts.Failure(test.script);
            EXPECT_EQ(error.Full(), test.full);
            EXPECT_EQ(error.Code(), test.code);
        }
    }
    EXPECT_THAT(scripts.Failure("require('bad.json')").Full(), testing::HasSubstr("/scripts/bad.json: "));
    EXPECT_THAT(scripts.Failure("require('escape.js')").Full(), testing::HasSubstr("SyntaxError"));
    EXPECT_EQ(scripts.Text("typeof escaped"), "\"undefined\"");
    EXPECT_EQ(scripts.Text("try { require('missing.js') } catch (e) { e.code.toString(16) }"),
              "\"80010005\"");
}

TEST(ScriptModulesOfNobody, AreNotAskedFor)
{
    ScriptRunner scripts;
    EXPECT_EQ(scripts.Text("typeof require"), "\"undefined\"");
}

} // namespace

#include "../ProgramRunner.h"
#include "../SmallMedia.h"
#include "../WrittenFrames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>

namespace trhosttest {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

/// Scripts in a folder of their own, which may be written.
class ScriptCommand : public testing::Test {
protected:
    void Put(const std::string& inName, const std::string& inText) const
    {
        std::filesystem::create_directories((mPlace.Root() / inName).parent_path());
        std::ofstream(mPlace.Root() / inName) << inText;
    }
    std::vector<std::string> Arguments(const std::vector<std::string>& inArguments) const
    {
        std::vector<std::string> arguments{"script", "--write", mPlace.Root()};
        arguments.insert(arguments.end(), inArguments.begin(), inArguments.end());
        return arguments;
    }
    RunResult Run(const std::vector<std::string>& inArguments) const
    {
        return mPlace.Run(Arguments(inArguments));
    }
    RunResult RunScript(const std::string& inText, const std::vector<std::string>& inArguments = {}) const
    {
        Put("script.js", inText);
        std::vector<std::string> arguments{mPlace.Root() / "script.js"};
        arguments.insert(arguments.end(), inArguments.begin(), inArguments.end());
        return Run(arguments);
    }
    std::string Quoted(const std::string& inName) const
    {
        return "'" + (mPlace.Root() / inName).native() + "'";
    }

    const Workplace mPlace;
};

} // namespace

TEST_F(ScriptCommand, EvaluatesAndSaysHowItEnded)
{
    Put("lib/helper.js",
        "exports.twice = (n) => 2 * n;\nexports.fail = () => { throw new Error('helper'); };\n");
    Put("data.json", R"({"frames": [1, 2]})");
    const struct {
        const char* name;
        std::string script;
        int status;
        const char* out;
        const char* err;
    } kCases[] = {
        {"prints", "console.log('a', 1, [2], {b: null});", 0, "a 1 ", ""},
        {"sets its status", "host.setExitStatus(7)", 7, "", ""},
        {"arguments", "console.log(host.arguments.join('|'))", 0, "--x|y z\n", ""},
        {"modern", "class A { #b = 2n ** 64n; get b() { return this.#b; } } console.log(String(new A().b))",
         0, "18446744073709551616\n", ""},
        {"promises are seen through", "(async () => { await null; console.log('later'); })()", 0, "later\n",
         ""},
        {"a rejection nobody looked at", "Promise.reject(new Error('lost'))", 3, "", "lost"},
        {"an error has a place", "\n\nnull.x", 3, "", "script.js:3:"},
        {"a syntax error has one", "let a = ;", 3, "", "script.js:1"},
        {"modules", "console.log(require('./lib/helper').twice(require('./data.json').frames[1]))", 0, "4\n",
         ""},
        {"places in modules", "require('./lib/helper.js').fail()", 3, "", "helper.js:2"},
        {"modules by bare names are none", "require('fs')", 3, "", "there is no module fs"},
        {"missing modules are named", "require('./nothing')", 3, "", "./nothing"},
        {"natives' failures have a code",
         "try { media.open('missing.mov') } catch (e) { console.log(typeof e.code, e instanceof Error) }", 0,
         "number true\n", ""},
        {"natives' failures are told", "media.open(" + Quoted("script.js") + ")", 3, "", "script.js"},
        {"read-only", "'use strict'; host.version = 1", 3, "", "TypeError"},
        {"too few arguments", "files.read()", 3, "", "Files.read: expected (path), found 0 arguments"},
        {"of the wrong type", "files.read(5)", 3, "", "expected a string, found number"},
        {"in the reader's words",
         "try { media.open(" + Quoted("script.js") + ") } catch (e) { console.log(e.message) }", 0,
         "script.js", ""},
        {"a last value that nobody else could hold", "const o = {}; o.o = o", 0, "", ""},
        {"descriptions", "console.log(describe('Halcyon.TRFoundation.FilterModule'))", 0,
         "Returns the display name for the filter", ""},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const RunResult run = RunScript(test.script, {"--", "--x", "y z"});
        EXPECT_EQ(run.status, test.status) << run.err;
        EXPECT_THAT(run.out, HasSubstr(test.out));
        EXPECT_THAT(run.err, HasSubstr(test.err));
        EXPECT_THAT(run.out + run.err, Not(HasSubstr("$$$"))) << "a text that was not told";
    }
    EXPECT_EQ(Run({"-e", "6 * 7"}).out, "42\n");
    EXPECT_EQ(mPlace.Run({"--json", "script", "-e", "console.log('a'); 'b'"}).out,
              "{\"level\":\"log\",\"text\":\"a\"}\n{\"value\":\"\\\"b\\\"\"}\n");
    EXPECT_EQ(Run({}).status, 2);
    EXPECT_EQ(Run({"-e", "1", "--repl"}).status, 2);
    EXPECT_EQ(Run({"-e", "1", "--time-limit", "0"}).status, 2);
    EXPECT_EQ(Run({mPlace.Root() / "none.js"}).status, 3);
}

TEST_F(ScriptCommand, EndsWhatRunsForEver)
{
    const RunResult limited = RunScript("for (;;) { try { for (;;); } catch {} }", {"--time-limit", "0.2"});
    EXPECT_EQ(limited.status, 3);
    EXPECT_THAT(limited.err, HasSubstr("0.2"));

    Put("endless.js", "console.error('running'); for (;;) { try { for (;;); } catch {} }");
    Child child(TRHOST_PROGRAM, mPlace.Arguments(Arguments({mPlace.Root() / "endless.js"})));
    ASSERT_TRUE(child.WaitForError("running"));
    kill(child.Pid(), SIGINT);
    const RunResult interrupted = child.Wait();
    EXPECT_EQ(interrupted.status, 3);
    EXPECT_THAT(interrupted.err, HasSubstr("interrupted"));
}

TEST_F(ScriptCommand, ReadsAndWritesBelowItsFoldersOnly)
{
    const support::TemporaryFolder elsewhere;
    std::ofstream(elsewhere / "secret") << "secret";
    std::filesystem::create_symlink(elsewhere.Path(), mPlace.Root() / "link");
    const std::string outside = "'" + (elsewhere / "secret").native() + "'";
    const struct {
        const char* name;
        std::string code;
        int status;
        const char* says;
    } kCases[] = {
        {"writes and reads text",
         "files.write(" + Quoted("a.txt") + ", 'h\\u00e9'); files.read(" + Quoted("a.txt") + ")", 0,
         "\"h\xC3\xA9\""},
        {"writes and reads bytes",
         "files.write(" + Quoted("b") + ", new Uint8Array([0, 255, 10])); [...files.readBytes(" +
             Quoted("b") + ")].join()",
         0, "\"0,255,10\""},
        {"base64",
         "files.writeBase64(" + Quoted("c") + ", 'AP8K'); [...files.readBytes(" + Quoted("c") + ")].join()",
         0, "\"0,255,10\""},
        {"padded base64",
         "files.writeBase64(" + Quoted("c") + ", 'AP8='); [...files.readBytes(" + Quoted("c") + ")].join()",
         0, "\"0,255\""},
        {"no base64", "files.writeBase64(" + Quoted("c") + ", 'AP8*')", 3, "at character 3"},
        {"folders", "files.makeFolder(" + Quoted("d/e") + "); files.list(" + Quoted("d") + ").join()", 0,
         "\"e\""},
        {"reads outside", "files.read(" + outside + ")", 3, "lies outside"},
        {"asks outside", "files.exists(" + outside + ")", 3, "lies outside"},
        {"writes outside", "files.write(" + outside + ", '')", 3, "lies outside"},
        {"through a link", "files.write(" + Quoted("link/secret") + ", '')", 3, "lies outside"},
        {"through dots", "files.write(" + Quoted("d/../../x") + ", '')", 3, "lies outside"},
        {"a picture outside", "media.picture(" + outside + ")", 3, "lies outside"},
        {"a module outside", "require(" + outside + ")", 3, "lies outside"},
        {"no text", "files.write(" + Quoted("a.txt") + ", {})", 3, "expected a string or bytes"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.name);
        const RunResult run = Run({"-e", test.code});
        EXPECT_EQ(run.status, test.status) << run.err;
        EXPECT_THAT(run.out + run.err, HasSubstr(test.says));
    }
    EXPECT_EQ(std::filesystem::file_size(elsewhere / "secret"), 6u);
    EXPECT_EQ(Run({"--read", elsewhere.Path(), "-e", "files.read(" + outside + ")"}).out, "\"secret\"\n");
    EXPECT_EQ(Run({"--read", elsewhere.Path(), "-e", "files.write(" + outside + ", '')"}).status, 3);
    EXPECT_EQ(Run({"--read", mPlace.Root() / "none", "-e", "1"}).status, 2);
}

TEST_F(ScriptCommand, ComparesAClipBeforeAndAfterAnEffect)
{
    const std::string clip = mPlace.Media("clip.mov");
    RunFFmpeg("-f lavfi -i testsrc2=r=25:d=1:s=64x48 -c:v qtrle '" + clip + "'");
    const RunResult run = RunScript(
        "'use strict';\n"
        "const [path, folder] = host.arguments;\n"
        "const clip = media.open(path);\n"
        "const before = clip.frameNumber(3), after = effects.run('avfilter.negate', before);\n"
        "before.save(folder + '/a.png'); after.converted('bgra8').save(folder + '/b.png');\n"
        "before.save(folder + '/a.raw');\n"
        "const c = new Halcyon.TRFoundation.PixelComparison();\n"
        "const r = c.pixelCompare(folder + '/a.png', folder + '/b.png', 5);\n"
        "console.log(r instanceof Halcyon.TRFoundation.PixelCompareTestResults, Object.keys(r).length,\n"
        "            r.result, r.numDiffPixels, r.variance > 1, clip.width, clip.framesPerSecond);\n"
        "const same = c.pixelCompare(folder + '/a.raw', folder + '/a.raw');\n"
        "console.log(same.result, same.numDiffPixels, same.variance);\n"
        "files.writeBase64(folder + '/d.png', r.diffData);\n"
        "for (const name in r) console.log(name);\n",
        {clip, mPlace.Root()});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, StartsWith("true "));
    EXPECT_THAT(run.out, HasSubstr(" 0 3072 true 64 25\n0 0 0\ndiffData\nresult\nnumDiffPixels\nvariance\n"));
    EXPECT_EQ(ReadWrittenFrame(mPlace.Root() / "d.png").width, 64u);
}

TEST_F(ScriptCommand, ShowsFiltersForAsLongAsTheyAreLoaded)
{
    const RunResult run = RunScript(
        "const e = effects.list().find(e => e.matchName === 'avfilter.hflip');\n"
        "console.log(e.kind, e.technology, e.isEnabled, effects.modules.length);\n"
        "const f = effects.load('avfilter.hflip');\n"
        "console.log(f.matchName, f.displayName, f.mediaType.text, effects.modules.length);\n"
        "console.log(f.mediaType.equals(f.mediaType), f instanceof Halcyon.TRFoundation.FilterModule);\n"
        "try { new Halcyon.TRFoundation.FilterModule() } catch (e) { console.log(e.name) }\n"
        "console.log(effects.unload('avfilter.hflip'), effects.unload('avfilter.hflip'));\n"
        "try { f.displayName } catch (e) { console.log(e.code === 0x80010001, e.message) }\n"
        "try { effects.run(f, null) } catch (e) { console.log('not run') }\n");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(
        run.out,
        AllOf(StartsWith("video filter avfilter true 0\navfilter.hflip "),
              HasSubstr(" 0f5c1b39-6a0e-4d3c-8e51-b7a2943dc610 1\ntrue true\nTypeError\ntrue false\n"),
              HasSubstr("TR::IFilterModule"), HasSubstr("not run")));
}

TEST_F(ScriptCommand, TalksAtAPrompt)
{
    Child child(TRHOST_PROGRAM, mPlace.Arguments(Arguments({"--repl"})), Child::Input::kTerminal);
    child.Type("const a = {\nb: 40 + 2 }\na.b\nconsole.error('ready'); null.x\n");
    ASSERT_TRUE(child.WaitForError("ready"));
    child.Type("'still ' + 'here'\n\x04");
    const RunResult run = child.Wait();
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_THAT(run.out, AllOf(HasSubstr("42"), HasSubstr("still here")));
    EXPECT_THAT(run.err, HasSubstr("TypeError"));
}

} // namespace trhosttest

#include <ui/script/UiScriptRun.h>

#include <kioui/controls/Checkbox.h>
#include <kioui/controls/MultiColumnTree.h>
#include <kioui/controls/SearchBox.h>
#include <kioui/controls/TextButton.h>
#include <kioui/dialogs/MessageBox.h>
#include <kioui/dialogs/ProgressDialog.h>

#include <support/TemporaryFolder.h>
#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

using namespace trhost::ui;
using namespace kioui::controls;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

/// A dialog with a list of effects, a search box, and a button that asks a question.
class UiScripts : public ::testing::Test {
protected:
    UiScripts()
        : dialog(new kioui::UI_Dialog(nullptr, u"Effects", nullptr)), search(new UI_SearchBox(true, false)),
          tree(new UI_MultiColumnTree), ask(new UI_TextButton(u"Ask")), cancel(new UI_TextButton(u"Cancel"))
    {
        dialog->SetNodeID("Effects");
        dialog->SetSize({500, 400});
        Add(search, "SearchText", {10, 10, 490, 40});
        Add(tree, "PluginTree", {10, 50, 490, 350});
        Add(ask, "Ask", {10, 360, 110, 390});
        Add(cancel, "Cancel", {380, 360, 490, 390});
        dialog->SetButtons(nullptr, cancel);
        tree->SetUserSelectableRows(true);
        tree->GetHeaderRow()->AppendColumn(1, u"Enabled", 80);
        tree->GetHeaderRow()->AppendColumn(2, u"Name", 200);
        tree->GetHeaderRow()->AppendColumn(3, u"File Path", 150);
        tree->SetCellTextFunction([this](UI_MultiColumnTreeRow* inRow, std::uint32_t inPosition) {
            return tree->GetHeaderRow()->GetColumnAt(inPosition) == 2 ? names[inRow] : kiocore::UTF16String();
        });
        for (int i = 0; i < 60; ++i) {
            AddRow(kiocore::utility::ToUTF16("Effect " + std::to_string(i)));
        }
        ask->SetChangedFunction([this](UI_ControlChangedMessage*) {
            kioui::dialogs::UI_MessageBox box(nullptr, u"Sure?", u"Really?", 1, {u"Yes", u"No"},
                                              kioui::dialogs::UI_MessageBox::Icon::kQuestion, dialog);
            answers.push_back(box.Show());
        });
    }
    void Add(const kioui::UI_NodePtr& inNode, const char* inID, const kioui::RectT<float>& inBounds)
    {
        inNode->SetNodeID(inID);
        dialog->AddChild(inNode);
        inNode->SetBounds(inBounds);
    }
    void AddRow(const kiocore::UTF16String& inName)
    {
        const UI_MultiColumnTreeRowPtr row(new UI_MultiColumnTreeRow(true, tree.get()));
        names[row.get()] = inName;
        const UI_CheckboxPtr box(new UI_Checkbox(u""));
        UI_CellView* const cell = row->GetCellView(0);
        cell->SetNode(box);
        cell->SetMouseEventFunction([](UI_CellView* inCell, kioui::ui::UI_MouseEvent& inEvent) {
            if (inEvent.type == kioui::ui::MouseEventType::kRelease) {
                kioui::ui::NodeCast<UI_Checkbox>(inCell->GetNode().get()).Click();
            }
            return true;
        });
    }
    UiScriptResult Run(const std::string& inScript)
    {
        UiScript script = ParseUiScript(inScript);
        EXPECT_TRUE(script.errors.empty())
            << script.errors.front().line << ": " << script.errors.front().text;
        UiScriptRun run(std::move(script), [this](const std::string& inText) { printed += inText; });
        run.Start();
        ended = dialog->RunModal();
        return run.Finish();
    }
    void ExpectRuns(const std::string& inScript)
    {
        const UiScriptResult result = Run(inScript);
        EXPECT_EQ(result.status, 0) << "line " << result.line << ": " << result.text;
        EXPECT_EQ(ended, kioui::UI_Dialog::kResult_Cancel);
    }

    support::ScTestApplication application;
    std::map<const UI_MultiColumnTreeRow*, kiocore::UTF16String> names;
    std::vector<int> answers;
    std::string printed;
    int ended = -1;
    boost::intrusive_ptr<kioui::UI_Dialog> dialog;
    boost::intrusive_ptr<UI_SearchBox> search;
    UI_MultiColumnTreePtr tree;
    kioui::ui::UI_TextButtonPtr ask;
    kioui::ui::UI_TextButtonPtr cancel;
};

} // namespace

TEST_F(UiScripts, DoWhatAPersonDoes)
{
    ExpectRuns("expect window Effects\n"
               "click SearchText\n"
               "type \"blur\"\n"
               "expect SearchText text \"blur\"\n"
               "expect focus SearchText\n"
               "key Ctrl+A\n"
               "type \"x\"\n"
               "expect SearchText text \"x\"\n"
               "expect PluginTree rows 60\n"
               "expect PluginTree row \"Effect 50\" column Enabled state unchecked\n"
               "click PluginTree row \"Effect 50\" column Enabled\n"
               "expect PluginTree row \"Effect 50\" column #1 state checked visible\n"
               "press PluginTree row 51 column Enabled at 2,2\n"
               "release PluginTree row 51 column Enabled at -2,-2\n"
               "expect PluginTree row 51 column Enabled state unchecked\n"
               "click PluginTree row \"Effect 50\" column Name\n"
               "expect PluginTree row 51 state selected\n"
               "key Down\n"
               "expect PluginTree row 51 state unselected\n"
               "wheel PluginTree 100\n"
               "expect PluginTree row 51 state hidden\n"
               "expect PluginTree row 1 column Name text \"Effect 0\"\n"
               "drag title \"File Path\" to title \"Enabled\" at 3,5\n"
               "expect PluginTree columns \"File Path\" \"Enabled\" \"Name\"\n"
               "drag title \"Name\" at -1,5 to title \"Name\" at -41,5\n"
               "expect title \"Name\" width 160\n"
               "expect Cancel state enabled\n");
}

TEST_F(UiScripts, GoOnInDialogsThatTheyOpen)
{
    ExpectRuns("click Ask\n"
               "expect window MessageBox\n"
               "expect Message text \"Really?\"\n"
               "expect Button1 state default focused\n"
               "key Return\n"
               "expect window Effects\n"
               "click Ask\n"
               "end # the question\n"
               "await window Effects\n"
               "click Ask\n"
               "click Button2\n"
               "end\n");
    EXPECT_THAT(answers, ElementsAre(1, 0, 2));
}

TEST_F(UiScripts, WaitForWhatOtherThreadsDo)
{
    std::thread worker([this] {
        for (const char16_t* text : {u"one", u"two", u"three"}) {
            application->Post([this, text] { search->SetValue(text); });
        }
    });
    ExpectRuns("await SearchText text \"three\"\n");
    worker.join();
}

TEST_F(UiScripts, SayWhatWasFoundInPlaceOfWhat)
{
    const struct {
        const char* line; // the second one; a third would be wrong too
        const char* text;
    } kCases[] = {
        {"expect SearchText text \"b\"", "SearchText text: found \"\", expected \"b\""},
        {"expect PluginTree rows 3", "PluginTree rows: found 60, expected 3"},
        {"expect focus Ask", "focus: found \"SearchText\", expected \"Ask\""},
        {"expect window Other", "window: found \"Effects\", expected \"Other\""},
        {"expect SearchText state enabled checked",
         "SearchText: found the state \"visible enabled focused keyboardTarget\", expected checked"},
        {"expect PluginTree columns \"Name\"",
         "PluginTree columns: found \"Enabled\" \"Name\" \"File Path\", expected \"Name\""},
        {"click Nothing",
         "found no node Nothing in the window \"Effects\", which has: SearchText, PluginTree"},
        {"click PluginTree row \"Blur\"",
         "found no PluginTree row \"Blur\" among 60 rows: \"Effect 0\", \"Effect 1\""},
        {"click PluginTree row 61", "found no PluginTree row 61 among 60 rows"},
        {"click title \"Size\"", "found no column \"Size\"; there are: \"Enabled\" (#1), \"Name\" (#2)"},
        {"click Ask row 1", "found a UI_TextButton as Ask, expected a UI_MultiColumnTree"},
        {"expect PluginTree row 1 column Name state checked", "found nothing there, expected a node"},
    };
    for (const auto& test : kCases) {
        SCOPED_TRACE(test.line);
        const UiScriptResult result =
            Run("click SearchText\n" + std::string(test.line) + "\nexpect window Never\n");
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.line, 2);
        EXPECT_THAT(result.text, HasSubstr(test.text));
        EXPECT_EQ(ended, kioui::UI_Dialog::kResult_Cancel) << "a failed script closes what it drives";
    }
}

TEST_F(UiScripts, AFailureInAnInnerDialogClosesAllOfThem)
{
    const UiScriptResult result = Run("click Ask\nexpect window Effects\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.line, 2);
    EXPECT_THAT(answers, ElementsAre(0));
}

TEST_F(UiScripts, WhatComesAfterTheLastDialogHasFailed)
{
    const UiScriptResult result = Run("end\nexpect PluginTree rows 60\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.line, 2);
    EXPECT_THAT(result.text, HasSubstr("all dialogs over before this line"));
}

TEST_F(UiScripts, ShowAndPictureWhatIsInFront)
{
    const support::TemporaryFolder folder;
    const std::string dump = (folder / "nodes.json").string();
    const std::string picture = (folder / "shot.png").string();
    ExpectRuns("dump\ndump \"" + dump + "\"\nscreenshot \"" + picture + "\"\n");
    EXPECT_THAT(printed, StartsWith("{\n  \"id\": \"Effects\""));
    EXPECT_EQ(support::ReadFile(dump), printed + "\n");
    EXPECT_THAT(support::ReadFile(picture), StartsWith("\x89PNG"));

    const UiScriptResult result = Run("dump \"" + (folder / "missing" / "x").string() + "\"\n");
    EXPECT_EQ(result.status, 3);
    EXPECT_THAT(result.text, HasSubstr("missing/x"));
}

TEST_F(UiScripts, EndWhatCannotBeCancelled)
{
    kioui::dialogs::UI_ProgressDialog progress(nullptr, u"Working", u"", nullptr, true, false, false);
    UiScriptRun run(ParseUiScript("expect ProgressBar state unknown\nkey Escape\n"), {});
    run.Start();
    EXPECT_FALSE(progress.RunModal());
    EXPECT_EQ(run.Finish().status, 0);
}

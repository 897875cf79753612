#include <kioui/controls/Checkbox.h>
#include <kioui/controls/ProgressBar.h>
#include <kioui/controls/TextButton.h>
#include <kioui/ui/Dialog.h>
#include <kioui/ui/SubView.h>
#include <kioui_testing/NodeTree.h>

#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

using namespace kioui;

TEST(NodeTree, IsDescribedAsItStands)
{
    const support::ScTestApplication application;
    ui::UI_DialogPtr dialog(new UI_Dialog(nullptr, u"T\u00e9st \"1\"\n", nullptr));
    dialog->SetNodeID("Dialog");
    dialog->SetSize({300, 200});
    boost::intrusive_ptr<ui::UI_SubView> area(new ui::UI_SubView);
    dialog->AddChild(area);
    area->SetBounds({10, 20, 110, 120});
    boost::intrusive_ptr<controls::UI_Checkbox> box(new controls::UI_Checkbox(u""));
    box->SetNodeID("Box");
    box->SetAccessibleName(u"Enabled");
    box->SetChecked(true);
    box->SetEnabled(false);
    area->AddChild(box);
    box->SetBounds({5, 6, 25, 26});
    controls::UI_ProgressBarPtr bar(new controls::UI_ProgressBar);
    bar->SetProgress(4294967295, 7);
    bar->SetUnknownProgress(true);
    dialog->AddChild(bar);
    bar->SetBounds({0, 150, 300, 170});
    bar->SetVisible(false);
    ui::UI_TextButtonPtr button(new controls::UI_TextButton(u"OK"));
    button->SetNodeID("OK");
    dialog->AddChild(button);
    button->SetBounds({200, 170, 300, 200});
    dialog->SetButtons(button, nullptr);
    dialog->UI_Show(true);
    button->SetKeyboardFocus(FocusChangeReason::kProgram);
    ui::ScApplication::RunPending();

    EXPECT_EQ(kioui::testing::DescribeNodes(*dialog), R"({
  "id": "Dialog",
  "class": "UI_Dialog",
  "text": "Tést \"1\"\n",
  "name": "Tést \"1\"\n",
  "bounds": [0, 0, 300, 200],
  "state": ["visible", "enabled"],
  "children": [
    {
      "id": "",
      "class": "UI_SubView",
      "text": "",
      "name": "",
      "bounds": [10, 20, 100, 100],
      "state": ["visible", "enabled"],
      "children": [
        {
          "id": "Box",
          "class": "UI_Checkbox",
          "text": "",
          "name": "Enabled",
          "bounds": [15, 26, 20, 20],
          "state": ["visible", "keyboardTarget", "checked"],
          "children": []
        }
      ]
    },
    {
      "id": "",
      "class": "UI_ProgressBar",
      "text": "",
      "name": "",
      "bounds": [0, 150, 300, 20],
      "state": ["enabled", "unknown"],
      "children": [],
      "done": 4294967295,
      "total": 7
    },
    {
      "id": "OK",
      "class": "UI_TextButton",
      "text": "OK",
      "name": "OK",
      "bounds": [200, 170, 100, 30],
      "state": ["visible", "enabled", "focused", "keyboardTarget", "default"],
      "children": []
    }
  ]
})");
}

TEST(NodeTree, ShownWindowsComeFrontFirst)
{
    const support::ScTestApplication application;
    boost::intrusive_ptr<ui::UI_OSWindow> first(new ui::UI_OSWindow(u"1", nullptr));
    boost::intrusive_ptr<ui::UI_OSWindow> hidden(new ui::UI_OSWindow(u"2", nullptr));
    boost::intrusive_ptr<ui::UI_OSWindow> last(new ui::UI_OSWindow(u"3", nullptr));
    using ::testing::ElementsAre;
    EXPECT_THAT(kioui::testing::ShownWindows(), ElementsAre());
    first->UI_Show(true);
    last->UI_Show(true);
    ui::ScApplication::RunPending();
    EXPECT_THAT(kioui::testing::ShownWindows(), ElementsAre(last.get(), first.get()));
    last->UI_Show(false);
    EXPECT_THAT(kioui::testing::ShownWindows(), ElementsAre(first.get()));
    first.reset();
    EXPECT_THAT(kioui::testing::ShownWindows(), ElementsAre());
}

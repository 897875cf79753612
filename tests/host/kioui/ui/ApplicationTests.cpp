#include <kioui/controls/Checkbox.h>
#include <kioui/ui/Dialog.h>

#include <support/ui/TestApplication.h>

#include <gmock/gmock.h>

#include <thread>

using namespace kioui;
using controls::UI_Checkbox;

TEST(Application, WithoutOneANodeSaysWhatIsMissing)
{
    try {
        boost::intrusive_ptr<UI_Checkbox> box(new UI_Checkbox(u"x"));
        FAIL() << "made";
    } catch (const kiocore::kio_exception& error) {
        EXPECT_EQ(error.Code(), kiocore::kError_BadArgument);
        EXPECT_THAT(error.what(), testing::HasSubstr("UI_Checkbox: there is no application object yet"));
    }
}

TEST(Application, PostedWorkRunsInModalDialogsThatPostedWorkOpened)
{
    support::ScTestApplication application;
    boost::intrusive_ptr<UI_Dialog> outer(new UI_Dialog(nullptr, u"outer", nullptr));
    std::vector<std::string> order;
    application->Post([&] {
        boost::intrusive_ptr<UI_Dialog> inner(new UI_Dialog(nullptr, u"inner", outer.get()));
        application->Post([&] { order.push_back("posted before"); });
        std::thread worker([&] {
            application->Post([&] {
                order.push_back("posted by a thread");
                inner->EndModal(7);
            });
        });
        EXPECT_EQ(inner->RunModal(), 7);
        worker.join();
        order.push_back("inner is over");
        outer->EndModal(UI_Dialog::kResult_OK);
    });
    EXPECT_EQ(outer->RunModal(), UI_Dialog::kResult_OK);
    EXPECT_THAT(order, testing::ElementsAre("posted before", "posted by a thread", "inner is over"));
}

#include "support/ScMainThread.h"
#include "support/TraceRecorder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/messaging/Messaging.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

using namespace kiocore::messaging;
using support::ScMainThread;

namespace {

struct Note : Message {
    explicit Note(std::string inText) : text(std::move(inText)) {}
    std::string text;
};

ScListener::Handler AppendTo(std::string& ioText)
{
    return [&ioText](const Message& message) { ioText += dynamic_cast<const Note&>(message).text; };
}

} // namespace

TEST(Messaging, DeliversInOrderToTheStationsListenersOnly)
{
    ScMainThread main;
    int wakeUps = 0;
    main->SetWakeUp([&] { ++wakeUps; });
    std::string heard, heardElsewhere;
    const StationID station = CreateUniqueStation();
    PostNewMessageToUIThread<Note>(station, "early");
    ScListener listener(station, AppendTo(heard));
    ScListener other(CreateUniqueStation(), AppendTo(heardElsewhere));
    EXPECT_EQ(PostNewMessageToUIThread<Note>(station, "a"), 0);
    EXPECT_EQ(PostNewMessageToUIThread<Note>(station, "b"), 0);
    EXPECT_EQ(heard, "") << "delivered while being posted";
    EXPECT_EQ(wakeUps, 1);
    main->RunPosted();
    EXPECT_EQ(heard, "ab") << "and nothing from before it listened";
    EXPECT_EQ(heardElsewhere, "");
}

TEST(Messaging, AHandlerMayEndItselfAndOthersAndStartNewOnes)
{
    ScMainThread main;
    const StationID station("tests.self");
    std::string heard;
    std::optional<ScListener> second;
    std::optional<ScListener> third;
    auto first = std::make_unique<std::optional<ScListener>>();
    first->emplace(station, [&](const Message&) {
        heard += '1';
        second.reset();
        third.emplace(station, AppendTo(heard));
        first->reset();
        heard += '!'; // what the handler holds is still there
        throw std::runtime_error("after all that");
    });
    second.emplace(station, [&](const Message&) { heard += '2'; });
    ScListener fourth(station, [&](const Message&) { heard += '4'; });
    PostNewMessageToUIThread<Note>(station, "x");
    main->RunPosted();
    EXPECT_EQ(heard, "1!4");
    PostNewMessageToUIThread<Note>(station, "y");
    main->RunPosted();
    EXPECT_EQ(heard, "1!44y");
}

TEST(Messaging, ADisposedStationDropsWhatIsOnItsWayAndCanBeUsedAgain)
{
    ScMainThread main;
    const StationID station("tests.disposed");
    std::string heard, heardAnew;
    RegisterStation(station, kObserveStation_Quiet);
    EXPECT_TRUE(IsStationRegistered(station));
    ScListener listener(station, AppendTo(heard));
    PostNewMessageToUIThread<Note>(station, "lost");
    DisposeStation(station);
    DisposeStation(station);
    EXPECT_FALSE(IsStationRegistered(station));
    ScListener anew(station, AppendTo(heardAnew));
    PostNewMessageToUIThread<Note>(station, "new");
    main->RunPosted();
    EXPECT_EQ(heard, "");
    EXPECT_EQ(heardAnew, "new");
}

TEST(Messaging, SaysWhenNobodyCanHear)
{
    EXPECT_LT(PostNewMessageToUIThread<Note>("tests.nobody", "x"), 0);
    EXPECT_THROW(PostMessageToUIThread("tests.nobody", nullptr), kiocore::null_reference_exception);
}

TEST(Messaging, TracesCallsAndTheMessagesOfTracedStations)
{
    const StationID station("tests.traced");
    {
        support::TraceRecorder trace("Host");
        RegisterStation(station, kObserveStation_Traced);
        RegisterStation(station, kObserveStation_Traced); // no error
        PostNewMessageToUIThread<Note>(station, "x");
        DisposeStation(station);
        EXPECT_EQ(trace.Lines(),
                  (std::vector<std::string>{"kiocore::messaging::RegisterStation(\"tests.traced\", 1)",
                                            "kiocore::messaging::RegisterStation(\"tests.traced\", 1)",
                                            "kiocore::messaging::PostMessageToUIThread(\"tests.traced\", "
                                            "\"(anonymous namespace)::Note\")",
                                            "kiocore::messaging::DisposeStation(\"tests.traced\")"}));
    }
    support::TraceRecorder trace("Messaging", 5);
    PostNewMessageToUIThread<Note>(station, "x");
    RegisterStation(station, kObserveStation_Traced);
    PostNewMessageToUIThread<Note>(station, "x");
    EXPECT_EQ(trace.Lines(), (std::vector<std::string>{"tests.traced: (anonymous namespace)::Note"}));
    DisposeStation(station);
}

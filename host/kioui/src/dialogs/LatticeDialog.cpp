#include "Answers.h"

#include <kiocore/config/Errors.h>
#include <kiocore/debug/Trace.h>
#include <kiocore/utility/UTF16String.h>

#include <utility>

namespace kioui::dialogs::messagebox {
namespace {

const ScAnswer::Answer* sInnermost = nullptr;

/// Button texts by their numbers, without those at the end that are no buttons.
std::vector<UTF16String> ButtonTexts(const UTF16String& inFirst, const UTF16String& inSecond,
                                     const UTF16String& inThird)
{
    std::vector<UTF16String> texts{inFirst, inSecond, inThird};
    while (!texts.empty() && texts.back().empty()) {
        texts.pop_back();
    }
    return texts;
}

} // namespace

ScAnswer::ScAnswer(Answer inAnswer)
    : mAnswer(std::move(inAnswer)), mBefore(std::exchange(sInnermost, &mAnswer))
{}

ScAnswer::~ScAnswer()
{
    sInnermost = mBefore;
}

std::optional<int> AnswerInTheUsersPlace(const Question& inQuestion)
{
    if (sInnermost == nullptr) {
        return std::nullopt;
    }
    const int number = (*sInnermost)(inQuestion);
    const auto count = inQuestion.buttons.size();
    if (number < 0 || std::size_t(number) > count ||
        (number > 0 && inQuestion.buttons[std::size_t(number) - 1].empty())) {
        throw kiocore::kio_exception(
            "the message box \"" + kiocore::utility::ToUTF8(inQuestion.title) +
                "\" was answered with button " + std::to_string(number) +
                "; expected 0 or the number of one of its buttons, of which the last is " +
                std::to_string(count),
            kiocore::kError_BadArgument);
    }
    return number;
}

int LatticeDialog(const SupplierInterface* inSupplier, const UTF16String& inTitle,
                  const UTF16String& inMessage, const UI_NodePtr& inParent, int inVariant,
                  const UTF16String& inFirst, const UTF16String& inSecond, const UTF16String& inThird)
{
    KIO_HOST_CALL("kioui::dialogs::messagebox::LatticeDialog", inTitle, inMessage, inVariant, inFirst,
                  inSecond, inThird);
    if (inVariant != 0) {
        throw kiocore::kio_exception("LatticeDialog: found variant " + std::to_string(inVariant) +
                                         ", expected 0, the only one there is",
                                     kiocore::kError_BadArgument);
    }
    const std::vector<UTF16String> buttons = ButtonTexts(inFirst, inSecond, inThird);
    // Before a window is made: what stands in the user's place needs no application object.
    if (const auto answer = AnswerInTheUsersPlace({inTitle, inMessage, buttons})) {
        return *answer;
    }
    return UI_MessageBox(inSupplier, inTitle, inMessage, 1, buttons, UI_MessageBox::Icon::kInformation,
                         inParent)
        .Show();
}

} // namespace kioui::dialogs::messagebox

#pragma once

#include "../UserInterface.h"

#include <memory>
#include <string>

namespace trhost::ui {

/// Attends to dialogs in a person's place, if that is asked for: describes them, takes their picture, or uses
/// them as a script says.
///
/// Threading: main thread.
class Attendant {
public:
    /// @throws kio_exception (kError_BadArgument) for a script that is wrong, file_exception for one that
    /// cannot
    ///     be read.
    explicit Attendant(const UserInterfaceSettings& inSettings);
    ~Attendant();
    Attendant(const Attendant&) = delete;
    Attendant& operator=(const Attendant&) = delete;

    /// A dialog is about to be shown.
    void ExpectDialog();
    /// @return the text of a dump. @throws what attending threw.
    std::string Finish();

private:
    struct State;
    std::shared_ptr<State> mState; // shared with what is posted
};

} // namespace trhost::ui

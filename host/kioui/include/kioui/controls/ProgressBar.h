#pragma once

#include <kioui/ui/Node.h>

#include <cstdint>

namespace kioui::controls {

/// Threading: UI thread only.
class KIO_EXPORT UI_ProgressBar : public ui::UI_Node {
public:
    /// @throws kio_exception (kError_BadArgument) without an application object.
    UI_ProgressBar();
    ~UI_ProgressBar() override;
    const char* GetClassName() const override { return "UI_ProgressBar"; }

    /// @param inDone  more than inTotal is kept, and shown as a full bar.
    void SetProgress(std::uint32_t inDone, std::uint32_t inTotal);
    std::uint32_t GetDone() const { return mDone; }
    std::uint32_t GetTotal() const { return mTotal; }
    /// Moves without saying how far; SetProgress ends it.
    void SetUnknownProgress(bool inUnknown);
    bool IsUnknownProgress() const;
    /// Whether it says in figures too how far; it does not until told to.
    void SetShowsPercentage(bool inShows);

private:
    std::uint32_t mDone = 0;
    std::uint32_t mTotal = 0;
};
using UI_ProgressBarPtr = boost::intrusive_ptr<UI_ProgressBar>;

} // namespace kioui::controls

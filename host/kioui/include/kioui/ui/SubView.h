#pragma once

#include <kioui/ui/Node.h>

namespace kioui::ui {

/// A plain area that holds other nodes.
///
/// Threading: UI thread only.
class KIO_EXPORT UI_SubView : public UI_Node {
public:
    /// @throws kio_exception (kError_BadArgument) without an application object.
    UI_SubView();
    ~UI_SubView() override;
    const char* GetClassName() const override { return "UI_SubView"; }
};
using UI_SubViewPtr = boost::intrusive_ptr<UI_SubView>;

} // namespace kioui::ui

#include <TR/TraceryModule.h>

namespace TR {
namespace {

NSWindow* sMainWindow = nullptr;

}

void SetMainWindow(NSWindow* inWindow)
{
    sMainWindow = inWindow;
}
NSWindow* GetMainWindow()
{
    return sMainWindow;
}

} // namespace TR

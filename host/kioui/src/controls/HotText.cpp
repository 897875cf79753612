#include <kioui/controls/HotText.h>

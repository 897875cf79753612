#include <kioui/controls/StaticText.h>

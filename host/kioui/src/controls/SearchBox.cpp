#include <kioui/controls/SearchBox.h>

#include <kioui_testing/UserEvents.h>

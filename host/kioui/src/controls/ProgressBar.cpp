#include <kioui/controls/ProgressBar.h>

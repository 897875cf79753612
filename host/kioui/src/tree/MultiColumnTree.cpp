#include <kioui/controls/MultiColumnTree.h>

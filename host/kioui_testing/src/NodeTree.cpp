#include <kioui_testing/NodeTree.h>

#include <kioui/dialogs/MessageBox.h>

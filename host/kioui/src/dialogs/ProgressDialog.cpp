#include <kioui/dialogs/ProgressDialog.h>

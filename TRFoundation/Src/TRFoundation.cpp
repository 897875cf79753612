#include <kiocore/Export.h>

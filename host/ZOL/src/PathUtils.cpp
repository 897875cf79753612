#include <ZOL/PathUtils.h>

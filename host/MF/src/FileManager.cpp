#include <MF/FileManager.h>

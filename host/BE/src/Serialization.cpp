#include <BE/Serialization.h>

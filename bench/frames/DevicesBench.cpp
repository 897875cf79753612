#include "FramesBench.h"

namespace bench {

void BenchDevices()
{}

} // namespace bench

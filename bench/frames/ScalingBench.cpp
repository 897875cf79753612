#include "FramesBench.h"

namespace bench {

void BenchScaling() {}

} // namespace bench

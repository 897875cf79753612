#include "FramesBench.h"

namespace bench {

void BenchConversion() {}

} // namespace bench

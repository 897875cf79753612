#include "FramesBench.h"

namespace bench {

void BenchStills()
{}

} // namespace bench

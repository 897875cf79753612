#include "EffectsBench.h"

namespace bench {
void BenchScan() {}
} // namespace bench

#pragma once

namespace bench {

// Each prints one table.
void BenchStills();
void BenchScaling();
void BenchConversion();
void BenchDevices();

} // namespace bench

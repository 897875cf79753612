#pragma once

/// The tables of bench_effects.
namespace bench {

void BenchSentinel();
/// What the sentinel costs in a process that has detection off; the state is read once for a process.
void BenchSentinelOff();
void BenchGuard();
void BenchCrash();
void BenchScan();

} // namespace bench

#pragma once

/// The tables of bench_ui.
namespace bench {

void BenchBestFit();

} // namespace bench

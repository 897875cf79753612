#pragma once

/// The tables of bench_ui.
namespace bench {

void BenchBestFit();
void BenchTree();
void BenchSearch();

} // namespace bench

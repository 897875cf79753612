#pragma once

namespace bench {

// Each prints one table.
void BenchDecode();
void BenchDifference();
void BenchEncode();
void BenchWholeProcess();
void BenchScript();

} // namespace bench

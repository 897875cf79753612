#include "CompareBench.h"

#include "support/Interleaved.h"

namespace bench {

void BenchDecode()
{
    PrintNote("Not measured yet.");
}

} // namespace bench

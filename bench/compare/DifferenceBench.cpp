#include "CompareBench.h"

#include "support/Interleaved.h"

namespace bench {

void BenchDifference()
{
    PrintNote("Not measured yet.");
}

} // namespace bench

#include "CompareBench.h"

#include "support/Interleaved.h"

namespace bench {

void BenchWholeProcess()
{
    PrintNote("Not measured yet.");
}

} // namespace bench

#include "CompareBench.h"

#include "support/Interleaved.h"

namespace bench {

void BenchScript()
{
    PrintNote("Not measured yet.");
}

} // namespace bench

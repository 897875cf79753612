#include "CompareBench.h"

#include "support/Interleaved.h"

namespace bench {

void BenchEncode()
{
    PrintNote("Not measured yet.");
}

} // namespace bench

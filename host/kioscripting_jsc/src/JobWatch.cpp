#include "JobWatch.h"

#include <algorithm>

namespace kioscripting_jsc {

double JobWatch::Median(std::size_t inWhich)
{
    auto& took = mTook[inWhich];
    std::nth_element(took.begin(), took.begin() + kRounds / 2, took.end());
    return took[kRounds / 2];
}

bool JobWatch::OnTick(std::size_t inWhich, double inNow)
{
    if (mCounts[inWhich] < kRounds) {
        mTook[inWhich][mCounts[inWhich]++] = inNow - mLast;
    }
    if (mCounts[0] == kRounds && mCounts[1] == kRounds) {
        mIsAlone = Median(0) < Median(1) * kAloneRatio;
        mCounts = {};
    }
    mLast = inNow;
    return !mIsAlone;
}

} // namespace kioscripting_jsc

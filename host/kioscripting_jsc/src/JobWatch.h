#pragma once

#include <array>
#include <cstddef>

namespace kioscripting_jsc {

/// Tells whether other jobs run between two of ours that follow each other. Ours must stop where they are
/// alone, else the jobs never come to an end; the engine has no way to ask for that. But where others run, it
/// takes longer from the second to the first than from the first to the second.
///
/// Threading: one thread.
class JobWatch {
public:
    /// @param inWhich  0 the first, 1 the second.
    /// @return whether to go on.
    bool OnTick(std::size_t inWhich, double inNow);

private:
    static constexpr std::size_t kRounds = 33;
    static constexpr double kAloneRatio = 1.4;
    double Median(std::size_t inWhich);

    std::array<std::array<double, kRounds>, 2> mTook{}; // up to each of the two
    std::array<std::size_t, 2> mCounts{};
    double mLast = 0;
    bool mIsAlone = false;
};

} // namespace kioscripting_jsc

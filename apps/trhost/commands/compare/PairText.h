#pragma once

#include "PairComparison.h"

#include "../../support/JsonLine.h"

namespace trhost::compare {

/// What files are called in an answer: two paths, or the one name that they have in two folders.
struct PairNames {
    UTF16String name; ///< empty for two files
    UTF16String a;    ///< empty when it is not there
    UTF16String b;
};

/// The outcome as programs read it: "same", "onlyInA".
const char* NameOf(Outcome inOutcome);

/// One line for people.
UTF16String Describe(const PairNames& inNames, const PairResult& inResult);
/// One object for programs.
JsonLine DescribeForPrograms(const PairNames& inNames, const PairResult& inResult);

} // namespace trhost::compare

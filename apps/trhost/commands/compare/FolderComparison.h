#pragma once

#include "PairText.h"
#include "Report.h"

#include "../../support/Context.h"

#include <cstddef>
#include <deque>
#include <string>

namespace trhost::compare {

/// What to compare in two folders, and what becomes of it.
struct FolderRequest {
    std::string a; ///< in the system's bytes, as are the others
    std::string b;
    std::string differenceFolder; ///< empty: no difference pictures are written
    float tolerance = 0;
    int jobs = 0;             ///< pairs at a time; 0 = as many as there are processors
    Report* report = nullptr; ///< may be null; borrowed
};

/// Compares the pairs of two folders, several at a time: what is held in memory at once does not grow with
/// their number. Tells each in the order of their names, as soon as all before it were told.
///
/// Threading: main thread.
class FolderComparison {
public:
    FolderComparison(Context& ioContext, const FolderRequest& inRequest);

    /// Returns when all is done; once the program is interrupted, when what was begun is done.
    /// @throws Failure (kExit_Failed) when a folder or the report failed.
    void Run();

    /// For people and programs.
    UTF16String Summary() const;
    JsonLine SummaryForPrograms() const;
    int ExitStatus() const;

private:
    struct Item {
        std::string nativeName;
        PairNames names;
        PairRequest request;
        PairResult result;
        bool isDone = false;
    };

    void FindItems();
    void Submit();
    void Take(std::size_t inItem);
    void TellDone();
    void Tell(const Item& inItem);
    std::size_t Count(Outcome inOutcome) const { return mCounts[std::size_t(inOutcome)]; }

    Context& mContext;
    const FolderRequest& mRequest;
    std::deque<Item> mItems;
    std::size_t mLeftOut = 0;
    std::size_t mDone = 0;
    std::size_t mTold = 0;
    std::size_t mCounts[6] = {};
    std::exception_ptr mReportError;
    double mSeconds = 0;
};

} // namespace trhost::compare

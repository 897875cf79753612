#include "CacheSetup.h"

#include "support/Allocations.h"

#include <pugixml.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <thread>

namespace bench {
namespace {

constexpr timespec kTouch[2] = {{0, UTIME_NOW}, {0, UTIME_OMIT}};

std::vector<std::size_t> RandomOrder(std::size_t inDocuments, std::size_t inVisits)
{
    std::mt19937 random(1);
    std::vector<std::size_t> order(inVisits);
    for (std::size_t& n : order) {
        n = random() % inDocuments;
    }
    return order;
}

/// What finding an entry in memory cannot avoid.
void FloorFind(const CacheSetup::Document& inDocument, std::size_t inItem)
{
    struct stat status {};
    if (stat(inDocument.record.c_str(), &status) != 0 ||
        utimensat(AT_FDCWD, inDocument.items[inItem].c_str(), kTouch, 0) != 0) {
        throw std::runtime_error("the floor cannot find " + inDocument.record);
    }
}

void OurFind(CacheSetup& ioSetup, const CacheSetup::Document& inDocument, const UTF16String& inStream,
             const UTF16String& inKey, UTF16String& ioPath)
{
    if (ioSetup.Database().Find(inDocument.id, CacheSetup::kState, inStream, inKey, ioPath) != 0) {
        throw std::runtime_error("not found: " + inDocument.record);
    }
}

Comparison CompareFind(CacheSetup& ioSetup, unsigned inStreams, unsigned inItems, clockid_t inClock)
{
    const auto order = RandomOrder(ioSetup.Documents().size(), 4000);
    const UTF16String stream = StreamID(inStreams / 2);
    const UTF16String key = ItemKey(inItems / 2);
    const std::size_t item = std::size_t(inStreams / 2) * inItems + inItems / 2;
    UTF16String path;
    path.reserve(1024);
    return Compare(
        [&] {
            return Timed(inClock, [&] {
                for (std::size_t n : order) {
                    FloorFind(ioSetup.Documents()[n], item);
                }
            });
        },
        [&] {
            return Timed(inClock, [&] {
                for (std::size_t n : order) {
                    OurFind(ioSetup, ioSetup.Documents()[n], stream, key, path);
                }
            });
        },
        21, order.size());
}

std::size_t AllocationsPerThousandFinds(CacheSetup& ioSetup)
{
    UTF16String path;
    const UTF16String stream = StreamID(0);
    const UTF16String key = ItemKey(0);
    OurFind(ioSetup, ioSetup.Documents()[0], stream, key, path);
    const std::size_t before = AllocationCount();
    for (int i = 0; i < 1000; ++i) {
        OurFind(ioSetup, ioSetup.Documents()[0], stream, key, path);
    }
    return AllocationCount() - before;
}

/// Time of the same work on each of inThreads threads.
template <typename Work>
double OnThreads(unsigned inThreads, Work inWork)
{
    return Timed(CLOCK_MONOTONIC, [&] {
        std::vector<std::thread> threads;
        for (unsigned t = 0; t < inThreads; ++t) {
            threads.emplace_back([&, t] { inWork(t); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
}

void BenchTwoThreads(CacheSetup& ioSetup)
{
    const auto order = RandomOrder(ioSetup.Documents().size(), 40000);
    const auto floor = [&](unsigned t) {
        for (std::size_t i = 0; i < order.size(); ++i) {
            FloorFind(ioSetup.Documents()[order[(i + t * 1777) % order.size()]], 0);
        }
    };
    const auto ours = [&](unsigned t) {
        UTF16String path;
        const UTF16String stream = StreamID(0);
        const UTF16String key = ItemKey(0);
        for (std::size_t i = 0; i < order.size(); ++i) {
            OurFind(ioSetup, ioSetup.Documents()[order[(i + t * 1777) % order.size()]], stream, key, path);
        }
    };
    std::vector<double> floorScaling, ourScaling;
    for (int round = 0; round < 9; ++round) {
        floorScaling.push_back(2 * OnThreads(1, floor) / OnThreads(2, floor));
        ourScaling.push_back(2 * OnThreads(1, ours) / OnThreads(2, ours));
    }
    const double floorMedian = Median(floorScaling);
    const double ourMedian = Median(ourScaling);
    std::printf("%-58s %10.2f x %10.2f x %8.3f %8.2f %s\n", "Find on 2 threads: throughput against 1 thread",
                floorMedian, ourMedian, ourMedian / floorMedian, 0.95,
                ourMedian / floorMedian >= 0.95 ? "met" : "NOT MET");
}

} // namespace

void BenchFind(CacheSetup& ioSetup)
{
    PrintHeader("Find, entry in memory (floor: stat + utimensat)");
    Comparison small;
    for (const unsigned documents : {10u, 1000u, 100000u}) {
        ioSetup.Clear();
        ioSetup.AddDocuments(documents, 1, 3, documents > 1000);
        const Comparison measured = CompareFind(ioSetup, 1, 3, CLOCK_THREAD_CPUTIME_ID);
        PrintRow("1 stream x 3 items, " + std::to_string(documents) + " documents", measured, 1.15);
        if (documents == 1000) {
            small = measured;
            PrintNote(std::to_string(AllocationsPerThousandFinds(ioSetup)) +
                      " allocations in 1000 finds with a reused string");
            BenchTwoThreads(ioSetup);
        }
    }
    ioSetup.Clear();
    ioSetup.AddDocuments(1000, 8, 16, true);
    const Comparison large = CompareFind(ioSetup, 8, 16, CLOCK_THREAD_CPUTIME_ID);
    PrintRow("8 streams x 16 items, 1000 documents", large, 0);
    PrintNumbers("8 x 16 against 1 x 3: ratio to the floor", small.ratio * 1000, large.ratio * 1000, "/k",
                 1.05);

    PrintHeader("Find, unknown document (floor: its failing stats)");
    std::vector<std::string> paths;
    const Guid unknown = Guid::CreateUnique();
    for (const int tag : TR::MediaAcceleratorDatabase::GetVersionTags()) {
        paths.push_back(ioSetup.DatabaseFolder() + unknown.AsUTF8() + std::to_string(tag) + ".mcdb");
    }
    paths.push_back(ioSetup.DatabaseFolder() + unknown.AsUTF8() + ".mcdb");
    constexpr int kLookUps = 500;
    const Comparison measured = Compare(
        [&] {
            return Timed(CLOCK_THREAD_CPUTIME_ID, [&] {
                for (int i = 0; i < kLookUps; ++i) {
                    for (const std::string& path : paths) {
                        struct stat status {};
                        if (stat(path.c_str(), &status) == 0) {
                            std::abort();
                        }
                    }
                }
            });
        },
        [&] {
            UTF16String path;
            const UTF16String stream = StreamID(0);
            const UTF16String key = ItemKey(0);
            return Timed(CLOCK_THREAD_CPUTIME_ID, [&] {
                for (int i = 0; i < kLookUps; ++i) {
                    if (ioSetup.Database().Find(unknown, CacheSetup::kState, stream, key, path) == 0) {
                        std::abort();
                    }
                }
            });
        },
        41, kLookUps);
    PrintRow("unknown document, " + std::to_string(paths.size()) + " names tried", measured, 1.05);
}

void BenchFindUncached(CacheSetup& ioSetup)
{
    PrintHeader("Find, not in memory (floor: stat, open, read, parse, a stat an item, utimensat)");
    ioSetup.SetMemoryBudget(0);
    const struct {
        const char* name;
        unsigned streams, items, documents;
    } kSizes[] = {{"1 stream x 3 items", 1, 3, 1000}, {"8 streams x 16 items", 8, 16, 200}};
    for (const auto& size : kSizes) {
        ioSetup.Clear();
        ioSetup.AddDocuments(size.documents, size.streams, size.items, false);
        std::vector<char> buffer(1 << 20);
        const Comparison measured = Compare(
            [&] {
                return Timed(CLOCK_THREAD_CPUTIME_ID, [&] {
                    for (const auto& document : ioSetup.Documents()) {
                        struct stat status {};
                        stat(document.record.c_str(), &status);
                        const int file = open(document.record.c_str(), O_RDONLY | O_CLOEXEC);
                        const ssize_t got = read(file, buffer.data(), buffer.size());
                        close(file);
                        pugi::xml_document parsed;
                        if (!parsed.load_buffer_inplace(buffer.data(), static_cast<std::size_t>(got))) {
                            std::abort();
                        }
                        for (const std::string& item : document.items) {
                            stat(item.c_str(), &status);
                        }
                        utimensat(AT_FDCWD, document.items[0].c_str(), kTouch, 0);
                    }
                });
            },
            [&] {
                UTF16String path;
                const UTF16String stream = StreamID(0);
                const UTF16String key = ItemKey(0);
                return Timed(CLOCK_THREAD_CPUTIME_ID, [&] {
                    for (const auto& document : ioSetup.Documents()) {
                        OurFind(ioSetup, document, stream, key, path);
                    }
                });
            },
            21, size.documents);
        PrintRow(size.name, measured, 1.2);
    }
    ioSetup.SetMemoryBudget(64 << 20);
}

} // namespace bench

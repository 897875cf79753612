#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace support {

/// Switches a trace channel on and keeps its lines for as long as it lives. One at a time.
class TraceRecorder {
public:
    explicit TraceRecorder(std::string_view inChannel, int inLevel = 10);
    ~TraceRecorder();
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    std::vector<std::string> Lines() const;
    /// Only the lines that start with one of the given texts, cut to the text: for asserting an order.
    std::vector<std::string> Order(const std::vector<std::string>& inBeginnings) const;
    int CountContaining(std::string_view inText) const;
    void Clear();

private:
    std::string mChannel;
    mutable std::mutex mLock;
    std::vector<std::string> mLines;
};

} // namespace support

#pragma once

#include "PluginFile.h"

#include <cstdint>
#include <string>

namespace trhost::effects::frei0r {

/// One instance of a plug-in for pictures of one size.
///
/// Threading: one thread at a time.
class Instance {
public:
    /// @param inWidth, inHeight  multiples of 8.
    /// @throws kio_exception (kEffectError_PluginFailed) when the plug-in makes none.
    Instance(PluginFile& inFile, PluginCaller inCaller, const std::string& inMatchName, std::uint32_t inWidth,
             std::uint32_t inHeight);
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    f0r_instance_t Get() const { return mInstance; }

private:
    PluginFile& mFile;
    const PluginCaller mCaller;
    f0r_instance_t mInstance = nullptr;
};

} // namespace trhost::effects::frei0r

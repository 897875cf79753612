#pragma once

#include "../support/Context.h"
#include "../support/EffectHost.h"
#include "../support/PictureQuantities.h"

#include <optional>
#include <string>
#include <vector>

/// The commands about effects; see Commands.h.
namespace trhost {

int EffectsList(Context& ioContext, const EffectSearch& inSearch);
int EffectsInfo(Context& ioContext, const EffectSearch& inSearch, const std::string& inName);

struct EffectTypesOptions {
    std::string name;                 ///< of an effect
    std::vector<std::string> formats; ///< or pixel formats
};
int EffectsTypes(Context& ioContext, const EffectSearch& inSearch, const EffectTypesOptions& inOptions);

struct EffectsEnableOptions {
    std::vector<std::string> names;
    bool all = false;
};
int EffectsEnable(Context& ioContext, const EffectSearch& inSearch, const EffectsEnableOptions& inOptions);
int EffectsDisable(Context& ioContext, const EffectSearch& inSearch, const EffectsEnableOptions& inOptions);

struct EffectTypeFileOptions {
    std::string file;
    bool write = false; ///< make the file of the rest
    bool force = false;
    std::string guid;
    std::string name;
    std::vector<std::string> descriptions; ///< "de_DE=Text"
    std::vector<std::string> matchNames;
};
int EffectsTypeFile(Context& ioContext, const EffectTypeFileOptions& inOptions);

struct EffectsRunOptions {
    std::string name;
    std::vector<std::string> files;      ///< one input and the output; for generators only that
    std::vector<std::string> parameters; ///< "NAME=VALUE"
    int frames = 1;
    std::optional<PictureSize> size; ///< of a generator's picture
    kiomediatypes::PixelFormat format = kiomediatypes::kPixelFormat_Any;
    bool force = false; ///< overwrite a sound file
};
int EffectsRun(Context& ioContext, const EffectSearch& inSearch, const EffectsRunOptions& inOptions);

struct EffectsTransitionOptions {
    std::string name;
    std::string from;
    std::string to;
    std::string output;
    std::optional<double> at; ///< 0 all of the first picture, 1 all of the second
    std::vector<std::string> parameters;
};
int EffectsTransition(Context& ioContext, const EffectSearch& inSearch,
                      const EffectsTransitionOptions& inOptions);

struct EffectsCheckOptions {
    std::vector<std::string> names; ///< all when empty
    bool disableBad = false;
    int secondsPerCase = 10;
};
int EffectsCheck(Context& ioContext, const EffectSearch& inSearch, const EffectsCheckOptions& inOptions);

struct CrashReportOptions {
    bool clear = false;
};
int EffectsCrashReport(Context& ioContext, const CrashReportOptions& inOptions);

} // namespace trhost

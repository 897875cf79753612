#pragma once

#include <string>
#include <vector>

namespace trhost::effects {

/// A file that may hold plug-ins, and the engine module that hosts them. Native paths.
struct PluginFile {
    std::string technology;
    std::string module;
    std::string file;
};

/// Where to look. A technology whose module is empty is left out.
struct PluginPlaces {
    std::string frei0rModule;
    std::string avfilterModule;
    std::string ladspaModule;
    /// Looked through before the usual ones.
    std::vector<std::string> moreFrei0rFolders;
    std::vector<std::string> moreLadspaFolders;
};

/// The files that may hold plug-ins, by their names alone: nothing is loaded or opened.
///
/// frei0r plug-ins lie in the folders that FREI0R_PATH names (divided by colons), or else in ~/.frei0r-1/lib,
/// /usr/local/lib/frei0r-1, /usr/lib/frei0r-1 and /usr/lib/<machine>/frei0r-1, and in folders right below
/// each of those (one for a maker); LADSPA plug-ins in those of LADSPA_PATH, or else in ~/.ladspa,
/// /usr/local/lib/ladspa, /usr/lib/ladspa and /usr/lib/<machine>/ladspa. Of files of one name the one in the
/// first folder counts, so that a user's own stands before the system's. The filters of libavfilter all lie
/// in one library, which the module knows: the module itself is their file.
/// @return in the order of folders, and of names within a folder. Folders that are not there are passed over.
///
/// Threading: any thread, as long as nobody changes the environment.
std::vector<PluginFile> FindPluginFiles(const PluginPlaces& inPlaces);

} // namespace trhost::effects

#include "PluginFolders.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>

namespace trhost::effects {

namespace {

namespace fs = std::filesystem;

struct UsualFolders {
    const char* variable;
    const char* belowHome;
    const char* belowLibraries;
    bool hasMakersFolders;
};
constexpr UsualFolders kFrei0r{"FREI0R_PATH", ".frei0r-1/lib", "frei0r-1", true};
constexpr UsualFolders kLadspa{"LADSPA_PATH", ".ladspa", "ladspa", false};

void AddDivided(std::string_view inFolders, std::vector<fs::path>& ioFolders)
{
    while (!inFolders.empty()) {
        const std::size_t end = std::min(inFolders.find(':'), inFolders.size());
        if (end > 0) {
            ioFolders.emplace_back(inFolders.substr(0, end));
        }
        inFolders.remove_prefix(std::min(end + 1, inFolders.size()));
    }
}

std::vector<fs::path> FoldersOf(const UsualFolders& inUsual, const std::vector<std::string>& inMore)
{
    std::vector<fs::path> folders(inMore.begin(), inMore.end());
    if (const char* named = std::getenv(inUsual.variable); named && *named) {
        AddDivided(named, folders);
        return folders;
    }
    if (const char* home = std::getenv("HOME"); home && home[0] == '/') {
        folders.push_back(fs::path(home) / inUsual.belowHome);
    }
    folders.push_back(fs::path("/usr/local/lib") / inUsual.belowLibraries);
    folders.push_back(fs::path("/usr/lib") / inUsual.belowLibraries);
    if (const fs::path machine = TRHOST_LIBRARY_ARCHITECTURE; !machine.empty()) {
        folders.push_back(fs::path("/usr/lib") / machine / inUsual.belowLibraries);
    }
    return folders;
}

/// What lies right in a folder and is wanted, by name.
template <typename Wanted>
std::vector<fs::path> EntriesOf(const fs::path& inFolder, const Wanted& inWanted)
{
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator entry(inFolder, error), end; !error && entry != end; entry.increment(error)) {
        if (inWanted(*entry)) {
            entries.push_back(entry->path());
        }
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

bool IsPluginFile(const fs::directory_entry& inEntry)
{
    std::error_code error;
    return inEntry.path().extension() == ".so" && inEntry.is_regular_file(error);
}

bool IsFolder(const fs::directory_entry& inEntry)
{
    std::error_code error;
    return inEntry.is_directory(error);
}

class PluginFiles {
public:
    PluginFiles(const char* inTechnology, const std::string& inModule)
        : mTechnology(inTechnology), mModule(inModule)
    {}
    void AddFolder(const fs::path& inFolder)
    {
        std::error_code error;
        const fs::path folder = fs::absolute(inFolder, error);
        for (const fs::path& file : EntriesOf(error ? inFolder : folder, IsPluginFile)) {
            if (mStems.insert(file.stem().native()).second) {
                mFiles.push_back({mTechnology, mModule, file.native()});
            }
        }
    }
    void MoveTo(std::vector<PluginFile>& ioFiles)
    {
        ioFiles.insert(ioFiles.end(), mFiles.begin(), mFiles.end());
    }

private:
    const std::string mTechnology;
    const std::string mModule;
    std::set<std::string> mStems;
    std::vector<PluginFile> mFiles;
};

void AddUsual(const char* inTechnology, const std::string& inModule, const UsualFolders& inUsual,
              const std::vector<std::string>& inMore, std::vector<PluginFile>& ioFiles)
{
    if (inModule.empty()) {
        return;
    }
    PluginFiles files(inTechnology, inModule);
    for (const fs::path& folder : FoldersOf(inUsual, inMore)) {
        files.AddFolder(folder);
        if (inUsual.hasMakersFolders) {
            for (const fs::path& maker : EntriesOf(folder, IsFolder)) {
                files.AddFolder(maker);
            }
        }
    }
    files.MoveTo(ioFiles);
}

} // namespace

std::vector<PluginFile> FindPluginFiles(const PluginPlaces& inPlaces)
{
    std::vector<PluginFile> files;
    AddUsual("frei0r", inPlaces.frei0rModule, kFrei0r, inPlaces.moreFrei0rFolders, files);
    if (!inPlaces.avfilterModule.empty()) {
        files.push_back({"avfilter", inPlaces.avfilterModule, inPlaces.avfilterModule});
    }
    AddUsual("ladspa", inPlaces.ladspaModule, kLadspa, inPlaces.moreLadspaFolders, files);
    return files;
}

} // namespace trhost::effects

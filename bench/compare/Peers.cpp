#include "Peers.h"

#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace bench {
namespace {

using Arguments = std::vector<std::string>;

void AddPicture(Arguments& ioArguments, const ComparedFiles& inFiles)
{
    if (!inFiles.difference.empty()) {
        ioArguments.push_back(inFiles.difference);
    }
}

Arguments ForOurs(const ComparedFiles& inFiles)
{
    Arguments arguments{"compare", inFiles.first, inFiles.second};
    if (!inFiles.difference.empty()) {
        arguments.insert(arguments.end(), {"--diff", inFiles.difference});
    }
    return arguments;
}

Arguments ForThresholdLast(const ComparedFiles& inFiles)
{
    Arguments arguments{inFiles.first, inFiles.second};
    AddPicture(arguments, inFiles);
    arguments.insert(arguments.end(), {"-t", "0"});
    return arguments;
}

Arguments ForPixelmatch(const ComparedFiles& inFiles)
{
    Arguments arguments{inFiles.first, inFiles.second};
    if (!inFiles.difference.empty()) {
        arguments.insert(arguments.end(), {inFiles.difference, "0", "true"});
    }
    return arguments;
}

Arguments ForIdiff(const ComparedFiles& inFiles)
{
    Arguments arguments{"-q", "-fail", "0", "-warn", "0"};
    if (!inFiles.difference.empty()) {
        arguments.insert(arguments.end(), {"-abs", "-od", "-o", inFiles.difference});
    }
    arguments.insert(arguments.end(), {inFiles.first, inFiles.second});
    return arguments;
}

Arguments ForImageMagick(const ComparedFiles& inFiles)
{
    return {"-metric", "AE", inFiles.first, inFiles.second,
            inFiles.difference.empty() ? "null:" : inFiles.difference};
}

Arguments ForGraphicsMagick(const ComparedFiles& inFiles)
{
    Arguments arguments{"compare", "-metric", "MAE"};
    if (!inFiles.difference.empty()) {
        arguments.insert(arguments.end(), {"-file", inFiles.difference});
    }
    arguments.insert(arguments.end(), {inFiles.first, inFiles.second});
    return arguments;
}

} // namespace

std::vector<std::string> Comparer::Command(const ComparedFiles& inFiles) const
{
    std::vector<std::string> command{program};
    const Arguments rest = arguments(inFiles);
    command.insert(command.end(), rest.begin(), rest.end());
    return command;
}

Comparer Ours()
{
    return {"trhost", TRHOST_PROGRAM, &ForOurs};
}

std::vector<Comparer> Peers()
{
    const struct {
        const char* name;
        const char* file;
        Arguments (*arguments)(const ComparedFiles&);
    } kPeers[] = {{"odiff", "odiff", &ForThresholdLast},
                  {"blazediff", "blazediff", &ForThresholdLast},
                  {"idiff", "idiff", &ForIdiff},
                  {"pixelmatch", "pixelmatch", &ForPixelmatch},
                  {"ImageMagick", "compare", &ForImageMagick},
                  {"GraphicsMagick", "gm", &ForGraphicsMagick}};
    const char* const wanted = std::getenv("BENCH_PEERS");
    std::vector<Comparer> found;
    for (const auto& peer : kPeers) {
        const std::string program = std::string(PEERS_FOLDER "/bin/") + peer.file;
        if ((!wanted || std::strstr(wanted, peer.name)) && access(program.c_str(), X_OK) == 0) {
            found.push_back({peer.name, program, peer.arguments});
        }
    }
    return found;
}

} // namespace bench

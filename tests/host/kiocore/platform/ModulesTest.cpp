#include "support/TemporaryFolder.h"

#include <kiocore/config/Errors.h>
#include <kiocore/platform/Modules.h>

#include <gtest/gtest.h>

namespace kiocore::platform {
namespace {

namespace fs = std::filesystem;
const int kSomethingOfThisProgram = 1;

TEST(Modules, FindsProgramAndLibrariesWhateverTheWorkingFolder)
{
    const fs::path program = fs::canonical("/proc/self/exe");
    support::TemporaryFolder elsewhere;
    const fs::path before = fs::current_path();
    fs::current_path(elsewhere.Path());
    const std::string programPath = ProgramPath();
    const std::string programFolder = FolderOfModule(&kSomethingOfThisProgram);
    const std::string libraryFolder = FolderOfModule(LoadModuleFunction("libm.so.6", "cos"));
    fs::current_path(before);

    EXPECT_EQ(programPath, program.native());
    EXPECT_EQ(programFolder, program.parent_path().native());
    EXPECT_TRUE(fs::exists(fs::path(libraryFolder) / "libm.so.6")) << libraryFolder;
    const int onTheStack = 0;
    EXPECT_THROW(FolderOfModule(&onTheStack), kio_exception);
}

TEST(Modules, ResourcesLieInTheTreeOfTheModule)
{
    const fs::path prefix = fs::path(FolderOfModule(&kSomethingOfThisProgram)).parent_path();
    EXPECT_EQ(ResourceFolder(&kSomethingOfThisProgram, "no such resources"),
              prefix / "share/no such resources");
}

TEST(Modules, LoadsAFunctionOrSaysWhyNot)
{
    auto* const cosine = reinterpret_cast<double (*)(double)>(LoadModuleFunction("libm.so.6", "cos"));
    EXPECT_EQ(cosine(0.0), 1.0);
    const auto textOf = [](const std::string& module, const char* function) {
        try {
            LoadModuleFunction(module, function);
        } catch (const kio_exception& error) {
            EXPECT_EQ(error.Code(), static_cast<std::uint32_t>(kError_File));
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_NE(textOf("/no/such/module.so", "f").find("/no/such/module.so"), std::string::npos);
    const std::string noFunction = textOf("libm.so.6", "kio_no_such_function");
    EXPECT_NE(noFunction.find("kio_no_such_function"), std::string::npos) << noFunction;
    EXPECT_NE(noFunction.find("libm.so.6"), std::string::npos) << noFunction;
}

} // namespace
} // namespace kiocore::platform

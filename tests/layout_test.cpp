// Checks on the source tree itself: the platform rule and the shape of the public headers.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace
{
const fs::path kRoot = QOR_SOURCE_DIR;

std::vector<fs::path> SourcesOutsidePlatformSdl2()
{
    std::vector<fs::path> files;
    for (const char* dir : {"core", "files", "pictures", "compositor", "audio", "framework", "animation",
                            "controls", "charts", "platform", "include", "tools", "examples"})
    {
        if (!fs::exists(kRoot / dir))
            continue;
        for (const auto& entry : fs::recursive_directory_iterator(kRoot / dir))
        {
            const fs::path& p = entry.path();
            if (p.string().find("platform/sdl2") != std::string::npos)
                continue;
            const auto ext = p.extension().string();
            if (ext == ".h" || ext == ".cpp")
                files.push_back(p);
        }
    }
    return files;
}
} // namespace

TEST(Layout, SdlAndOsWindowHeadersAppearOnlyInThePlatformSdl2Port)
{
    const std::regex forbidden(R"(#\s*include\s*[<"](SDL2?/|SDL[_.]|X11/|alsa/|pulse/|windows\.h))");
    const auto files = SourcesOutsidePlatformSdl2();
    ASSERT_FALSE(files.empty());
    for (const auto& p : files)
    {
        std::ifstream in(p);
        std::string line;
        int number = 0;
        while (std::getline(in, line))
        {
            ++number;
            EXPECT_FALSE(std::regex_search(line, forbidden)) << p << ":" << number << ": " << line;
        }
    }
}

TEST(Layout, UmbrellaHeaderIncludesEveryFamilyHeader)
{
    std::ifstream in(kRoot / "include/qor.h");
    const std::string umbrella((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    int families = 0;
    for (const auto& entry : fs::directory_iterator(kRoot / "include/qor"))
    {
        const std::string include = "#include \"qor/" + entry.path().filename().string() + "\"";
        EXPECT_NE(umbrella.find(include), std::string::npos) << "qor.h lacks " << include;
        ++families;
    }
    EXPECT_GE(families, 2);
}

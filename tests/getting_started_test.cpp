// The getting-started program (examples/getting_started.cpp) runs headless to its end, its screenshots
// match the goldens, and docs/getting-started.md shows that very program and those screenshots.
#include "compositor_probe.h"
#include "test_util.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace
{
const std::string kSource = QOR_SOURCE_DIR;

std::string Text(const std::string& path)
{
    const std::vector<std::uint8_t> bytes = qortest::ReadAll(path);
    return std::string(bytes.begin(), bytes.end());
}
} // namespace

TEST(QorGettingStarted, GoldenScreenshotsOfTheProgramRunHeadless)
{
    const std::string dir = "tmp/getting-started";
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    const std::string command = std::string(QOR_GETTING_STARTED) + " " + dir + " > " + dir + "/stdout.txt";
    ASSERT_EQ(std::system(command.c_str()), 0) << Text(dir + "/stdout.txt");
    EXPECT_EQ(Text(dir + "/stdout.txt"), "wrote " + dir + "/screen.png and " + dir + "/mosaic.png\n");

    for (const char* name : {"screen", "mosaic"})
    {
        QorPicBlock shot(QorPicBlock::Bit32);
        ASSERT_EQ(QorLoadPicture(shot, (dir + "/" + name + ".png").c_str(), QorPicBlock::Bit32), 1)
            << QorGetLastError();
        EXPECT_EQ(shot.GetWidth(), 320);
        EXPECT_EQ(shot.GetHeight(), 200);
        qortest::ExpectMatchesGolden(shot, "examples", std::string("getting-started-") + name);
    }
}

TEST(QorGettingStarted, TheDocumentShowsTheProgramAndItsScreenshots)
{
    const std::string doc = Text(kSource + "/docs/getting-started.md");
    const std::string program = Text(kSource + "/examples/getting_started.cpp");
    ASSERT_FALSE(program.empty());
    EXPECT_NE(doc.find(program), std::string::npos) << "docs/getting-started.md does not quote the program";
    long lines = 0;
    for (char c : program)
        lines += c == '\n';
    EXPECT_LT(lines, 60);
    for (const char* name : {"screen", "mosaic"})
    {
        const std::string picture = std::string("getting-started-") + name + ".png";
        EXPECT_NE(doc.find("](" + picture + ")"), std::string::npos) << "the document does not show " << picture;
        const std::vector<std::uint8_t> shown = qortest::ReadAll(kSource + "/docs/" + picture);
        EXPECT_FALSE(shown.empty()) << "docs/" << picture << " is missing";
        EXPECT_EQ(shown, qortest::ReadAll(kSource + "/tests/golden/examples/" + picture))
            << "docs/" << picture << " differs from its golden (tools/update-goldens.sh copies it)";
    }
}

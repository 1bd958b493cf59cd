#include "test_util.h"

#include "qor/files.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace
{
namespace fs = std::filesystem;

// "許" in Big5: its second byte is the backslash.
const std::string kXu = "\xB3\x5C";
// "功" in Big5: its second byte is the backslash too.
const std::string kGong = "\xA5\x5C";
// "中" in Big5, an ordinary pair.
const std::string kZhong = "\xA4\xA4";

std::string CurrentDirectory()
{
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) ? std::string(buffer) : std::string();
}

void Write(const std::string& path, const std::string& content)
{
    qortest::WriteAll(path, std::vector<std::uint8_t>(content.begin(), content.end()));
}

std::string Read(const std::string& path)
{
    const auto bytes = qortest::ReadAll(path);
    return std::string(bytes.begin(), bytes.end());
}

bool IsDirectory(const std::string& path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool IsRegular(const std::string& path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool IsLink(const std::string& path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode);
}

bool Exists(const std::string& path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0;
}

mode_t Mode(const std::string& path)
{
    struct stat st;
    return lstat(path.c_str(), &st) == 0 ? (st.st_mode & 07777) : 0;
}

std::vector<std::string> Names(const std::string& dir)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string Backslashed(std::string path)
{
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

// Every test works in a fresh absolute directory and checks that the current directory is the same
// afterwards, whatever the calls did.
class TreeTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_root = fs::absolute(qortest::TempPath("root")).lexically_normal().string();
        fs::remove_all(m_root);
        fs::create_directories(m_root);
        m_cwd = CurrentDirectory();
        ASSERT_FALSE(m_cwd.empty());
    }
    void TearDown() override
    {
        EXPECT_EQ(CurrentDirectory(), m_cwd);
        QorSetDataHome(nullptr);
        std::error_code ignored;
        fs::remove_all(m_root, ignored);
    }
    std::string P(const std::string& relative) const { return m_root + "/" + relative; }

    std::string m_root;
    std::string m_cwd;
};

// Runs in dir and comes back, for the calls given relative paths.
class InDirectory
{
public:
    explicit InDirectory(const std::string& dir) : m_saved(CurrentDirectory()) { EXPECT_EQ(chdir(dir.c_str()), 0); }
    ~InDirectory() { EXPECT_EQ(chdir(m_saved.c_str()), 0); }

private:
    std::string m_saved;
};

class CreateDirectoryTest : public TreeTest
{
};
class CopyDirectoryTest : public TreeTest
{
};
class DeleteDirectoryTest : public TreeTest
{
};
class DirectorySizeTest : public TreeTest
{
};
class FreeDiskSpaceTest : public TreeTest
{
};
class FreeDiskSpace64Test : public TreeTest
{
};
class ShortcutTest : public TreeTest
{
protected:
    void SetUp() override
    {
        TreeTest::SetUp();
        m_home = P("data");
        QorSetDataHome(m_home.c_str());
    }
    std::string m_home;
};
} // namespace

// ---- QorCreateDirectory

TEST_F(CreateDirectoryTest, CreatesEveryLevelOfASlashPath)
{
    QorCreateDirectory(P("a/b/c").c_str());
    EXPECT_TRUE(IsDirectory(P("a")));
    EXPECT_TRUE(IsDirectory(P("a/b")));
    EXPECT_TRUE(IsDirectory(P("a/b/c")));
    EXPECT_EQ(Names(P("a/b/c")), std::vector<std::string>{});
}

TEST_F(CreateDirectoryTest, BackslashesSeparateLevels)
{
    QorCreateDirectory(Backslashed(P("x/y/z")).c_str());
    EXPECT_TRUE(IsDirectory(P("x/y/z")));
    EXPECT_EQ(Names(m_root), std::vector<std::string>{"x"});
    EXPECT_EQ(Names(P("x")), std::vector<std::string>{"y"});
}

TEST_F(CreateDirectoryTest, MixedAndDoubledSeparatorsAndATrailingOneAreAccepted)
{
    QorCreateDirectory((m_root + "\\m//n\\\\o/").c_str());
    EXPECT_TRUE(IsDirectory(P("m/n/o")));
    EXPECT_EQ(Names(P("m")), std::vector<std::string>{"n"});
    EXPECT_EQ(Names(P("m/n")), std::vector<std::string>{"o"});
}

TEST_F(CreateDirectoryTest, Big5SecondByteBackslashDoesNotSplitALevel)
{
    QorCreateDirectory((m_root + "\\" + kXu + kZhong + "\\" + kGong).c_str());
    EXPECT_EQ(Names(m_root), std::vector<std::string>{kXu + kZhong});
    EXPECT_EQ(Names(P(kXu + kZhong)), std::vector<std::string>{kGong});
    EXPECT_FALSE(Exists(P("\xB3")));
}

TEST_F(CreateDirectoryTest, Big5NameEndingInBackslashByteBeforeASeparator)
{
    QorCreateDirectory((m_root + "/" + kXu + "/sub").c_str());
    EXPECT_TRUE(IsDirectory(P(kXu)));
    EXPECT_TRUE(IsDirectory(P(kXu + "/sub")));
    EXPECT_EQ(Names(m_root), std::vector<std::string>{kXu});
}

TEST_F(CreateDirectoryTest, LoneLeadByteAtTheEndIsKeptAsAName)
{
    QorCreateDirectory((m_root + "/k\xA4").c_str());
    EXPECT_EQ(Names(m_root), std::vector<std::string>{"k\xA4"});
}

TEST_F(CreateDirectoryTest, LeadByteFollowedBySlashRefusesTheWholePath)
{
    QorCreateDirectory((m_root + "/a/\xA4/b").c_str());
    EXPECT_EQ(Names(m_root), std::vector<std::string>{});
}

TEST_F(CreateDirectoryTest, ExistingLevelsAndTheirFilesAreKept)
{
    fs::create_directories(P("keep"));
    Write(P("keep/file.txt"), "data");
    QorCreateDirectory(P("keep/deeper/still").c_str());
    EXPECT_TRUE(IsDirectory(P("keep/deeper/still")));
    EXPECT_EQ(Read(P("keep/file.txt")), "data");
}

TEST_F(CreateDirectoryTest, RelativePathStartsAtTheCurrentDirectoryAndLeavesIt)
{
    InDirectory in(m_root);
    QorCreateDirectory("rel\\one/two");
    EXPECT_EQ(CurrentDirectory(), m_root);
    EXPECT_TRUE(IsDirectory(P("rel/one/two")));
}

TEST_F(CreateDirectoryTest, NullAndEmptyPathsCreateNothing)
{
    InDirectory in(m_root);
    QorCreateDirectory(nullptr);
    QorCreateDirectory("");
    EXPECT_EQ(Names(m_root), std::vector<std::string>{});
    EXPECT_EQ(CurrentDirectory(), m_root);
}

TEST_F(CreateDirectoryTest, AFileInThePathStopsCreationAndLeavesTheDirectoryAlone)
{
    Write(P("plain"), "x");
    QorCreateDirectory(P("plain/sub/deeper").c_str());
    EXPECT_TRUE(IsRegular(P("plain")));
    EXPECT_EQ(Read(P("plain")), "x");
    EXPECT_EQ(Names(m_root), std::vector<std::string>{"plain"});
}

// ---- QorCopyDirectory

TEST_F(CopyDirectoryTest, CopiesFilesAndReturnsTheirBytes)
{
    fs::create_directories(P("src"));
    Write(P("src/a.txt"), "0123456789");
    Write(P("src/empty"), "");
    Write(P("src/b.bin"), std::string(1234, 'b'));
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0), 1244u);
    EXPECT_EQ(Names(P("dst")), (std::vector<std::string>{"a.txt", "b.bin", "empty"}));
    EXPECT_EQ(Read(P("dst/a.txt")), "0123456789");
    EXPECT_EQ(Read(P("dst/b.bin")), std::string(1234, 'b'));
    EXPECT_EQ(Read(P("dst/empty")), "");
}

TEST_F(CopyDirectoryTest, CreatesEveryLevelOfTheTargetFromBackslashes)
{
    fs::create_directories(P("src"));
    Write(P("src/f"), "abc");
    EXPECT_EQ(QorCopyDirectory(Backslashed(P("src")).c_str(), Backslashed(P("out/x/y")).c_str(), 1), 3u);
    EXPECT_EQ(Read(P("out/x/y/f")), "abc");
}

TEST_F(CopyDirectoryTest, LargeFileIsCopiedWholeAcrossBufferBoundaries)
{
    fs::create_directories(P("src"));
    std::string big(200003, '\0');
    for (std::size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i * 7 + 3);
    Write(P("src/big"), big);
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0), 200003u);
    EXPECT_EQ(Read(P("dst/big")), big);
}

TEST_F(CopyDirectoryTest, NotRecursiveSkipsSubdirectories)
{
    fs::create_directories(P("src/sub"));
    Write(P("src/top"), "12345");
    Write(P("src/sub/inner"), "1234567");
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0), 5u);
    EXPECT_EQ(Names(P("dst")), std::vector<std::string>{"top"});
}

TEST_F(CopyDirectoryTest, RecursiveCopiesTheTreeAndCountsEveryFile)
{
    fs::create_directories(P("src/sub/deep"));
    fs::create_directories(P("src/emptydir"));
    Write(P("src/top"), "12345");
    Write(P("src/sub/inner"), "1234567");
    Write(P("src/sub/deep/leaf"), "12");
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 1), 14u);
    EXPECT_EQ(Names(P("dst")), (std::vector<std::string>{"emptydir", "sub", "top"}));
    EXPECT_EQ(Read(P("dst/sub/inner")), "1234567");
    EXPECT_EQ(Read(P("dst/sub/deep/leaf")), "12");
    EXPECT_TRUE(IsDirectory(P("dst/emptydir")));
}

TEST_F(CopyDirectoryTest, OverwritesAnExistingTargetFileCompletely)
{
    fs::create_directories(P("src"));
    fs::create_directories(P("dst"));
    Write(P("src/f"), "new");
    Write(P("dst/f"), "old and much longer");
    Write(P("dst/other"), "kept");
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0), 3u);
    EXPECT_EQ(Read(P("dst/f")), "new");
    EXPECT_EQ(Read(P("dst/other")), "kept");
}

TEST_F(CopyDirectoryTest, ReadOnlySourceGivesACopyTheOwnerCanWrite)
{
    fs::create_directories(P("src"));
    Write(P("src/ro"), "locked");
    ASSERT_EQ(chmod(P("src/ro").c_str(), 0444), 0);
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0), 6u);
    EXPECT_EQ(Mode(P("dst/ro")), 0644u);
    EXPECT_EQ(Mode(P("src/ro")), 0444u);
    EXPECT_EQ(Read(P("dst/ro")), "locked");
}

TEST_F(CopyDirectoryTest, ReadOnlyTargetFromAnEarlierCopyIsReplaced)
{
    fs::create_directories(P("src"));
    fs::create_directories(P("dst"));
    Write(P("src/f"), "fresh");
    Write(P("dst/f"), "stale");
    ASSERT_EQ(chmod(P("dst/f").c_str(), 0400), 0);
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0), 5u);
    EXPECT_EQ(Read(P("dst/f")), "fresh");
    EXPECT_EQ(Mode(P("dst/f")), Mode(P("src/f")) | 0600u);
}

TEST_F(CopyDirectoryTest, ExecutableBitsAreKeptAndSpecialBitsDropped)
{
    fs::create_directories(P("src"));
    Write(P("src/run"), "#!/bin/sh\n");
    ASSERT_EQ(chmod(P("src/run").c_str(), 04750), 0);
    QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0);
    EXPECT_EQ(Mode(P("dst/run")), 0750u);
}

TEST_F(CopyDirectoryTest, KeepsTheModificationTime)
{
    fs::create_directories(P("src"));
    Write(P("src/dated"), "x");
    const struct timespec times[2] = {{1000000000, 0}, {1000000000, 123456789}};
    ASSERT_EQ(utimensat(AT_FDCWD, P("src/dated").c_str(), times, 0), 0);
    QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0);
    struct stat st;
    ASSERT_EQ(stat(P("dst/dated").c_str(), &st), 0);
    EXPECT_EQ(st.st_mtim.tv_sec, 1000000000);
    EXPECT_EQ(st.st_mtim.tv_nsec, 123456789);
}

TEST_F(CopyDirectoryTest, HiddenFilesAreCopied)
{
    fs::create_directories(P("src/.hiddendir"));
    Write(P("src/.profile"), "1234");
    Write(P("src/.hiddendir/x"), "12");
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 1), 6u);
    EXPECT_EQ(Read(P("dst/.profile")), "1234");
    EXPECT_EQ(Read(P("dst/.hiddendir/x")), "12");
}

TEST_F(CopyDirectoryTest, MissingSourceReturnsZeroButTheTargetIsCreated)
{
    EXPECT_EQ(QorCopyDirectory(P("nowhere").c_str(), P("made/here").c_str(), 1), 0u);
    EXPECT_TRUE(IsDirectory(P("made/here")));
    EXPECT_EQ(Names(P("made/here")), std::vector<std::string>{});
}

TEST_F(CopyDirectoryTest, NullArgumentsCopyNothing)
{
    fs::create_directories(P("src"));
    Write(P("src/f"), "abc");
    EXPECT_EQ(QorCopyDirectory(nullptr, P("dst").c_str(), 1), 0u);
    EXPECT_TRUE(IsDirectory(P("dst")));
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), nullptr, 1), 0u);
    EXPECT_EQ(Names(P("dst")), std::vector<std::string>{});
}

TEST_F(CopyDirectoryTest, SymbolicLinksAreCopiedAsLinksNotFollowed)
{
    fs::create_directories(P("outside/secretdir"));
    Write(P("outside/secret"), "do not copy");
    Write(P("outside/secretdir/inner"), "nor this");
    fs::create_directories(P("src"));
    Write(P("src/real"), "ab");
    ASSERT_EQ(symlink(P("outside/secret").c_str(), P("src/filelink").c_str()), 0);
    ASSERT_EQ(symlink("../outside/secretdir", P("src/dirlink").c_str()), 0);
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 1), 2u);
    ASSERT_TRUE(IsLink(P("dst/filelink")));
    ASSERT_TRUE(IsLink(P("dst/dirlink")));
    EXPECT_EQ(fs::read_symlink(P("dst/filelink")).string(), P("outside/secret"));
    EXPECT_EQ(fs::read_symlink(P("dst/dirlink")).string(), "../outside/secretdir");
}

TEST_F(CopyDirectoryTest, ALinkAtTheTargetIsReplacedNotWrittenThrough)
{
    fs::create_directories(P("src"));
    fs::create_directories(P("dst"));
    Write(P("victim"), "untouched");
    Write(P("src/f"), "payload");
    ASSERT_EQ(symlink(P("victim").c_str(), P("dst/f").c_str()), 0);
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 0), 7u);
    EXPECT_EQ(Read(P("victim")), "untouched");
    EXPECT_TRUE(IsRegular(P("dst/f")));
    EXPECT_EQ(Read(P("dst/f")), "payload");
}

TEST_F(CopyDirectoryTest, ATargetDirectoryThatIsALinkIsNotEntered)
{
    fs::create_directories(P("src/sub"));
    fs::create_directories(P("dst"));
    fs::create_directories(P("elsewhere"));
    Write(P("src/sub/f"), "1234");
    ASSERT_EQ(symlink(P("elsewhere").c_str(), P("dst/sub").c_str()), 0);
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("dst").c_str(), 1), 0u);
    EXPECT_EQ(Names(P("elsewhere")), std::vector<std::string>{});
}

TEST_F(CopyDirectoryTest, TargetInsideTheSourceIsNotCopiedIntoItself)
{
    fs::create_directories(P("src/sub"));
    Write(P("src/a"), "123");
    Write(P("src/sub/b"), "4567");
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), P("src/backup").c_str(), 1), 7u);
    EXPECT_EQ(Names(P("src/backup")), (std::vector<std::string>{"a", "sub"}));
    EXPECT_EQ(Read(P("src/backup/sub/b")), "4567");
}

TEST_F(CopyDirectoryTest, CopyOntoItselfCopiesNothingAndKeepsTheFiles)
{
    fs::create_directories(P("src"));
    Write(P("src/a"), "precious");
    EXPECT_EQ(QorCopyDirectory(P("src").c_str(), (m_root + "\\src\\").c_str(), 1), 0u);
    EXPECT_EQ(Read(P("src/a")), "precious");
}

TEST_F(CopyDirectoryTest, Big5NamesWithBackslashSecondBytesCopy)
{
    fs::create_directories(P(kXu + "/" + kGong));
    Write(P(kXu + "/" + kGong + "/" + kZhong + ".txt"), "Big5");
    EXPECT_EQ(QorCopyDirectory((m_root + "\\" + kXu).c_str(), (m_root + "\\copy" + kXu).c_str(), 1), 4u);
    EXPECT_EQ(Read(P("copy" + kXu + "/" + kGong + "/" + kZhong + ".txt")), "Big5");
}

TEST_F(CopyDirectoryTest, RelativePathsUseAndKeepTheCurrentDirectory)
{
    fs::create_directories(P("src"));
    Write(P("src/f"), "relative");
    InDirectory in(m_root);
    EXPECT_EQ(QorCopyDirectory("src", "dst\\inner", 0), 8u);
    EXPECT_EQ(CurrentDirectory(), m_root);
    EXPECT_EQ(Read(P("dst/inner/f")), "relative");
}

TEST_F(CopyDirectoryTest, FailureLeavesTheCurrentDirectory)
{
    InDirectory in(m_root);
    EXPECT_EQ(QorCopyDirectory("missing", "target", 1), 0u);
    EXPECT_EQ(CurrentDirectory(), m_root);
}

// ---- QorDeleteDirectory

TEST_F(DeleteDirectoryTest, NotRecursiveRemovesOnlyTheFiles)
{
    fs::create_directories(P("d/sub"));
    fs::create_directories(P("d/emptysub"));
    Write(P("d/a"), "1");
    Write(P("d/.hidden"), "2");
    Write(P("d/sub/inner"), "3");
    QorDeleteDirectory(P("d").c_str(), 0);
    EXPECT_TRUE(IsDirectory(P("d")));
    EXPECT_EQ(Names(P("d")), (std::vector<std::string>{"emptysub", "sub"}));
    EXPECT_EQ(Read(P("d/sub/inner")), "3");
}

TEST_F(DeleteDirectoryTest, RecursiveRemovesTheTreeAndTheDirectoryItself)
{
    fs::create_directories(P("d/sub/deep"));
    Write(P("d/a"), "1");
    Write(P("d/sub/b"), "2");
    Write(P("d/sub/deep/.c"), "3");
    Write(P("sibling"), "stays");
    QorDeleteDirectory(P("d").c_str(), 1);
    EXPECT_FALSE(Exists(P("d")));
    EXPECT_EQ(Names(m_root), std::vector<std::string>{"sibling"});
}

TEST_F(DeleteDirectoryTest, ReadOnlyFilesAreRemoved)
{
    fs::create_directories(P("d"));
    Write(P("d/ro"), "locked");
    ASSERT_EQ(chmod(P("d/ro").c_str(), 0444), 0);
    QorDeleteDirectory(P("d").c_str(), 0);
    EXPECT_EQ(Names(P("d")), std::vector<std::string>{});
}

TEST_F(DeleteDirectoryTest, LinksInsideAreRemovedButTheirTargetsKept)
{
    fs::create_directories(P("outside/dir"));
    Write(P("outside/file"), "keep me");
    Write(P("outside/dir/inner"), "keep me too");
    fs::create_directories(P("d"));
    ASSERT_EQ(symlink(P("outside/file").c_str(), P("d/filelink").c_str()), 0);
    ASSERT_EQ(symlink(P("outside/dir").c_str(), P("d/dirlink").c_str()), 0);
    QorDeleteDirectory(P("d").c_str(), 1);
    EXPECT_FALSE(Exists(P("d")));
    EXPECT_EQ(Read(P("outside/file")), "keep me");
    EXPECT_EQ(Read(P("outside/dir/inner")), "keep me too");
}

TEST_F(DeleteDirectoryTest, NotRecursiveRemovesALinkToADirectoryButNotItsContents)
{
    fs::create_directories(P("outside"));
    Write(P("outside/inner"), "kept");
    fs::create_directories(P("d"));
    ASSERT_EQ(symlink(P("outside").c_str(), P("d/dirlink").c_str()), 0);
    QorDeleteDirectory(P("d").c_str(), 0);
    EXPECT_EQ(Names(P("d")), std::vector<std::string>{});
    EXPECT_EQ(Read(P("outside/inner")), "kept");
}

TEST_F(DeleteDirectoryTest, AStartingPathThatIsALinkDeletesNothing)
{
    fs::create_directories(P("real"));
    Write(P("real/f"), "safe");
    ASSERT_EQ(symlink(P("real").c_str(), P("alias").c_str()), 0);
    QorDeleteDirectory(P("alias").c_str(), 1);
    QorDeleteDirectory(P("alias").c_str(), 0);
    EXPECT_EQ(Read(P("real/f")), "safe");
    EXPECT_TRUE(IsLink(P("alias")));
}

TEST_F(DeleteDirectoryTest, MissingPathChangesNothing)
{
    Write(P("f"), "x");
    InDirectory in(m_root);
    QorDeleteDirectory("missing", 1);
    QorDeleteDirectory(nullptr, 1);
    QorDeleteDirectory("", 1);
    EXPECT_EQ(CurrentDirectory(), m_root);
    EXPECT_EQ(Names(m_root), std::vector<std::string>{"f"});
}

TEST_F(DeleteDirectoryTest, BackslashAndBig5PathsAreDeleted)
{
    fs::create_directories(P(kXu + "/" + kGong));
    Write(P(kXu + "/" + kGong + "/f"), "1");
    Write(P(kXu + "/g"), "2");
    QorDeleteDirectory((m_root + "\\" + kXu + "\\").c_str(), 1);
    EXPECT_EQ(Names(m_root), std::vector<std::string>{});
}

TEST_F(DeleteDirectoryTest, RelativePathKeepsTheCurrentDirectory)
{
    fs::create_directories(P("rel/sub"));
    Write(P("rel/sub/f"), "1");
    InDirectory in(m_root);
    QorDeleteDirectory("rel", 1);
    EXPECT_EQ(CurrentDirectory(), m_root);
    EXPECT_FALSE(Exists(P("rel")));
}

TEST_F(DeleteDirectoryTest, TheCurrentDirectoryItselfIsEmptiedButStays)
{
    fs::create_directories(P("here/sub"));
    Write(P("here/f"), "1");
    InDirectory in(P("here"));
    QorDeleteDirectory(".", 1);
    EXPECT_EQ(CurrentDirectory(), P("here"));
    EXPECT_TRUE(IsDirectory(P("here")));
    EXPECT_EQ(Names(P("here")), std::vector<std::string>{});
}

// ---- QorGetDirectorySize

TEST_F(DirectorySizeTest, SumsTheFilesOfTheDirectory)
{
    fs::create_directories(P("d/sub"));
    Write(P("d/a"), std::string(100, 'a'));
    Write(P("d/b"), std::string(23, 'b'));
    Write(P("d/sub/c"), std::string(1000, 'c'));
    EXPECT_EQ(QorGetDirectorySize(P("d").c_str(), 0), 123u);
}

TEST_F(DirectorySizeTest, RecursiveAddsTheSubdirectories)
{
    fs::create_directories(P("d/sub/deep"));
    Write(P("d/a"), std::string(100, 'a'));
    Write(P("d/sub/c"), std::string(1000, 'c'));
    Write(P("d/sub/deep/e"), std::string(7, 'e'));
    Write(P("d/sub/deep/.h"), std::string(3, 'h'));
    EXPECT_EQ(QorGetDirectorySize(P("d").c_str(), 1), 1110u);
    EXPECT_EQ(QorGetDirectorySize(Backslashed(P("d/sub")).c_str(), 1), 1010u);
}

TEST_F(DirectorySizeTest, EmptyMissingAndFilePathsGiveZero)
{
    fs::create_directories(P("empty"));
    Write(P("file"), "12345");
    EXPECT_EQ(QorGetDirectorySize(P("empty").c_str(), 1), 0u);
    EXPECT_EQ(QorGetDirectorySize(P("missing").c_str(), 1), 0u);
    EXPECT_EQ(QorGetDirectorySize(P("file").c_str(), 1), 0u);
    EXPECT_EQ(QorGetDirectorySize(nullptr, 1), 0u);
}

TEST_F(DirectorySizeTest, LinksAreNeitherCountedNorFollowed)
{
    fs::create_directories(P("outside"));
    Write(P("outside/big"), std::string(5000, 'x'));
    fs::create_directories(P("d"));
    Write(P("d/a"), std::string(10, 'a'));
    ASSERT_EQ(symlink(P("outside/big").c_str(), P("d/filelink").c_str()), 0);
    ASSERT_EQ(symlink(P("outside").c_str(), P("d/dirlink").c_str()), 0);
    EXPECT_EQ(QorGetDirectorySize(P("d").c_str(), 1), 10u);
}

TEST_F(DirectorySizeTest, RelativePathKeepsTheCurrentDirectory)
{
    fs::create_directories(P("rel"));
    Write(P("rel/f"), "1234");
    InDirectory in(m_root);
    EXPECT_EQ(QorGetDirectorySize("rel", 0), 4u);
    EXPECT_EQ(QorGetDirectorySize("nope", 0), 0u);
    EXPECT_EQ(CurrentDirectory(), m_root);
}

// ---- QorGetFreeDiskSpace

TEST_F(FreeDiskSpace64Test, MatchesTheFileSystemsFreeBytesForTheTempDirectory)
{
    const unsigned long long free = QorGetFreeDiskSpace64(m_root.c_str());
    struct statvfs info;
    ASSERT_EQ(statvfs(m_root.c_str(), &info), 0);
    const unsigned long long expected = static_cast<unsigned long long>(info.f_bavail) * info.f_frsize;
    EXPECT_GT(free, 0u);
    // Other tests may write meanwhile: allow 64 MiB of drift.
    const unsigned long long drift = free > expected ? free - expected : expected - free;
    EXPECT_LT(drift, 64ull << 20);
}

TEST_F(FreeDiskSpace64Test, IsNotWrappedAt4GiB)
{
    struct statvfs info;
    ASSERT_EQ(statvfs(m_root.c_str(), &info), 0);
    const unsigned long long expected = static_cast<unsigned long long>(info.f_bavail) * info.f_frsize;
    if (expected <= 0xFFFFFFFFull)
        GTEST_SKIP() << "the temp file system has under 4 GiB free";
    EXPECT_GT(QorGetFreeDiskSpace64(m_root.c_str()), 0xFFFFFFFFull);
}

// Free space moves while other tests write: retry until the true figure is the same before and after.
TEST_F(FreeDiskSpaceTest, IsTheTrueFigureWrappedTo32Bits)
{
    for (int attempt = 0; attempt < 20; ++attempt)
    {
        const unsigned long long before = QorGetFreeDiskSpace64(m_root.c_str());
        const unsigned long wrapped = QorGetFreeDiskSpace(m_root.c_str());
        if (QorGetFreeDiskSpace64(m_root.c_str()) != before)
            continue;
        ASSERT_GT(before, 0u);
        EXPECT_EQ(wrapped, before % (1ull << 32));
        EXPECT_LE(wrapped, 0xFFFFFFFFul);
        return;
    }
    FAIL() << "free space never held still across three queries";
}

TEST_F(FreeDiskSpaceTest, BackslashFormOfThePathGivesTheSameFileSystem)
{
    const unsigned long long slash = QorGetFreeDiskSpace64(m_root.c_str());
    const unsigned long long backslash = QorGetFreeDiskSpace64(Backslashed(m_root).c_str());
    const unsigned long long drift = slash > backslash ? slash - backslash : backslash - slash;
    EXPECT_GT(backslash, 0u);
    EXPECT_LT(drift, 64ull << 20);
}

TEST_F(FreeDiskSpaceTest, MissingOrEmptyPathGivesZero)
{
    EXPECT_EQ(QorGetFreeDiskSpace(P("no/such/dir").c_str()), 0u);
    EXPECT_EQ(QorGetFreeDiskSpace(""), 0u);
    EXPECT_EQ(QorGetFreeDiskSpace(nullptr), 0u);
    EXPECT_EQ(QorGetFreeDiskSpace64(P("no/such/dir").c_str()), 0u);
    EXPECT_EQ(QorGetFreeDiskSpace64(nullptr), 0u);
}

// ---- Data home and shortcuts

TEST_F(ShortcutTest, DataHomeIsTheSetPathInSlashForm)
{
    QorSetDataHome((Backslashed(m_root) + "\\share\\").c_str());
    EXPECT_TRUE(QorGetDataHome() == (m_root + "/share").c_str());
}

TEST_F(ShortcutTest, DefaultDataHomeComesFromThePasswordDatabase)
{
    QorSetDataHome(nullptr);
    const struct passwd* entry = getpwuid(getuid());
    ASSERT_NE(entry, nullptr);
    std::string home = entry->pw_dir;
    while (home.size() > 1 && home.back() == '/')
        home.pop_back();
    const std::string expected = (home == "/" ? "" : home) + "/.local/share";
    EXPECT_TRUE(QorGetDataHome() == expected.c_str()) << static_cast<char*>(QorGetDataHome());
    QorSetDataHome("");
    EXPECT_TRUE(QorGetDataHome() == expected.c_str());
}

TEST_F(ShortcutTest, ShortcutDirIsTheGroupUnderApplications)
{
    EXPECT_TRUE(QorGetShortcutDir("Games") == (m_home + "/applications/Games").c_str());
    EXPECT_FALSE(Exists(m_home));
}

TEST_F(ShortcutTest, ShortcutDirNestsTheGroupsLevels)
{
    EXPECT_TRUE(QorGetShortcutDir("Company\\Games/Math\\") == (m_home + "/applications/Company/Games/Math").c_str());
}

TEST_F(ShortcutTest, ShortcutDirWithoutAGroupIsTheApplicationsFolder)
{
    EXPECT_TRUE(QorGetShortcutDir(nullptr) == (m_home + "/applications").c_str());
    EXPECT_TRUE(QorGetShortcutDir("") == (m_home + "/applications").c_str());
}

TEST_F(ShortcutTest, ShortcutDirKeepsABig5GroupWithABackslashSecondByte)
{
    EXPECT_TRUE(QorGetShortcutDir((kXu + kGong).c_str()) == (m_home + "/applications/" + kXu + kGong).c_str());
}

TEST_F(ShortcutTest, ShortcutDirRefusesGroupsThatLeaveTheMenu)
{
    EXPECT_TRUE(QorGetShortcutDir("..\\..\\etc") == "");
    EXPECT_TRUE(QorGetShortcutDir("a/./b") == "");
    EXPECT_TRUE(QorGetShortcutDir("bad\xA4/x") == "");
}

TEST_F(ShortcutTest, CreatesTheGroupFolderAndTheEntryByteForByte)
{
    ASSERT_EQ(QorCreateShortcut("Games", "Math Quest", "/opt/mathquest/run", "/opt/mathquest", "Learn to add"), 1);
    const std::string file = m_home + "/applications/Games/Math Quest.desktop";
    EXPECT_EQ(Read(file), "[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Math Quest\n"
                          "Comment=Learn to add\n"
                          "Exec=/opt/mathquest/run\n"
                          "Path=/opt/mathquest\n");
    EXPECT_EQ(Names(m_home + "/applications/Games"), std::vector<std::string>{"Math Quest.desktop"});
}

TEST_F(ShortcutTest, NestedGroupFoldersAreCreated)
{
    ASSERT_EQ(QorCreateShortcut("Company\\Games", "g", "/bin/g", nullptr, nullptr), 1);
    EXPECT_EQ(Read(m_home + "/applications/Company/Games/g.desktop"),
              "[Desktop Entry]\nType=Application\nName=g\nExec=/bin/g\n");
}

TEST_F(ShortcutTest, EmptyDescriptionAndWorkingDirectoryAreLeftOut)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/true", "", ""), 1);
    EXPECT_EQ(Read(m_home + "/applications/G/n.desktop"),
              "[Desktop Entry]\nType=Application\nName=n\nExec=/bin/true\n");
}

TEST_F(ShortcutTest, TargetWithSpacesIsQuotedAsOneArgument)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/opt/My Game/run game", nullptr, nullptr), 1);
    EXPECT_EQ(Read(m_home + "/applications/G/n.desktop"),
              "[Desktop Entry]\nType=Application\nName=n\nExec=\"/opt/My Game/run game\"\n");
}

TEST_F(ShortcutTest, TargetQuotesDollarBacktickBackslashAndPercentAreEscaped)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/a\"b$c`d\\e%f", nullptr, nullptr), 1);
    // Quoting gives "/a\"b\$c\`d\\e%%f"; the value escape then doubles every backslash.
    EXPECT_EQ(Read(m_home + "/applications/G/n.desktop"),
              "[Desktop Entry]\nType=Application\nName=n\nExec=\"/a\\\\\"b\\\\$c\\\\`d\\\\\\\\e%%f\"\n");
}

TEST_F(ShortcutTest, PercentAloneIsDoubledWithoutQuoting)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/100%", nullptr, nullptr), 1);
    EXPECT_EQ(Read(m_home + "/applications/G/n.desktop"),
              "[Desktop Entry]\nType=Application\nName=n\nExec=/bin/100%%\n");
}

TEST_F(ShortcutTest, LineBreaksCannotInjectKeys)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/x\nTerminal=true", "/w\r\nHidden=true",
                                "text\n[Desktop Entry]\nExec=rm -rf ~"),
              1);
    const std::string content = Read(m_home + "/applications/G/n.desktop");
    EXPECT_EQ(content, "[Desktop Entry]\n"
                       "Type=Application\n"
                       "Name=n\n"
                       "Comment=text\\n[Desktop Entry]\\nExec=rm -rf ~\n"
                       "Exec=\"/bin/x\\nTerminal=true\"\n"
                       "Path=/w\\r\\nHidden=true\n");
    EXPECT_EQ(std::count(content.begin(), content.end(), '\n'), 6);
}

TEST_F(ShortcutTest, NameWithALineBreakIsEscapedInTheEntry)
{
    ASSERT_EQ(QorCreateShortcut("G", "a\nExec=evil", "/bin/x", nullptr, nullptr), 1);
    EXPECT_EQ(Read(m_home + "/applications/G/a\nExec=evil.desktop"),
              "[Desktop Entry]\nType=Application\nName=a\\nExec=evil\nExec=/bin/x\n");
}

TEST_F(ShortcutTest, BackslashesAndTabsInValuesAreEscaped)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/x", "C:\\Games", "a\\nb\tc"), 1);
    EXPECT_EQ(Read(m_home + "/applications/G/n.desktop"),
              "[Desktop Entry]\nType=Application\nName=n\nComment=a\\\\nb\\tc\nExec=/bin/x\nPath=C:\\\\Games\n");
}

// The file keeps the Big5 bytes of the name; inside, the shown texts are UTF-8 (許中), as desktop
// entries must be, so the backslash second byte disappears into the conversion.
TEST_F(ShortcutTest, Big5NameWithABackslashSecondByteNamesTheFileAndIsShownInUtf8)
{
    const std::string name = kXu + kZhong;
    ASSERT_EQ(QorCreateShortcut("G", name.c_str(), "/bin/x", nullptr, (kZhong + "\\x").c_str()), 1);
    EXPECT_EQ(Read(m_home + "/applications/G/" + name + ".desktop"),
              "[Desktop Entry]\nType=Application\nName=\xE8\xA8\xB1\xE4\xB8\xAD\nComment=\xE4\xB8\xAD\\\\x\n"
              "Exec=/bin/x\n");
}

TEST_F(ShortcutTest, SpacesAtTheEndsOfAValueAreKeptAsEscapes)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/x", nullptr, "  two inside  "), 1);
    EXPECT_EQ(Read(m_home + "/applications/G/n.desktop"),
              "[Desktop Entry]\nType=Application\nName=n\nComment=\\s\\stwo inside\\s\\s\nExec=/bin/x\n");
}

TEST_F(ShortcutTest, OtherControlBytesAreDropped)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/x", nullptr,
                                "a\x01"
                                "b\x7F"
                                "c\x1B"),
              1);
    EXPECT_EQ(Read(m_home + "/applications/G/n.desktop"),
              "[Desktop Entry]\nType=Application\nName=n\nComment=abc\nExec=/bin/x\n");
}

TEST_F(ShortcutTest, AnExistingEntryIsOverwritten)
{
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/first", nullptr, "a much longer first description"), 1);
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/second", nullptr, nullptr), 1);
    EXPECT_EQ(Read(m_home + "/applications/G/n.desktop"),
              "[Desktop Entry]\nType=Application\nName=n\nExec=/bin/second\n");
}

TEST_F(ShortcutTest, ALinkInPlaceOfTheEntryIsNotWrittenThrough)
{
    fs::create_directories(m_home + "/applications/G");
    Write(P("victim"), "untouched");
    ASSERT_EQ(symlink(P("victim").c_str(), (m_home + "/applications/G/n.desktop").c_str()), 0);
    EXPECT_EQ(QorCreateShortcut("G", "n", "/bin/x", nullptr, nullptr), 0);
    EXPECT_EQ(Read(P("victim")), "untouched");
}

TEST_F(ShortcutTest, BadNamesAndTargetsAreRefusedWithoutWriting)
{
    EXPECT_EQ(QorCreateShortcut("G", "a/b", "/bin/x", nullptr, nullptr), 0);
    EXPECT_EQ(QorCreateShortcut("G", "a\\b", "/bin/x", nullptr, nullptr), 0);
    EXPECT_EQ(QorCreateShortcut("G", "..", "/bin/x", nullptr, nullptr), 0);
    EXPECT_EQ(QorCreateShortcut("G", "", "/bin/x", nullptr, nullptr), 0);
    EXPECT_EQ(QorCreateShortcut("G", nullptr, "/bin/x", nullptr, nullptr), 0);
    EXPECT_EQ(QorCreateShortcut("G", "n", "", nullptr, nullptr), 0);
    EXPECT_EQ(QorCreateShortcut("G", "n", nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(QorCreateShortcut("..\\escape", "n", "/bin/x", nullptr, nullptr), 0);
    EXPECT_FALSE(Exists(m_home));
    EXPECT_EQ(Names(m_root), std::vector<std::string>{});
}

TEST_F(ShortcutTest, ARelativeDataHomeKeepsTheCurrentDirectory)
{
    InDirectory in(m_root);
    QorSetDataHome("rel\\share");
    ASSERT_EQ(QorCreateShortcut("G", "n", "/bin/x", nullptr, nullptr), 1);
    EXPECT_EQ(CurrentDirectory(), m_root);
    EXPECT_TRUE(IsRegular(P("rel/share/applications/G/n.desktop")));
}

#include "telvanix/platform/path_lookup.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "test_util.h"

using namespace telvanix;

namespace {

class PathLookupTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir.Write("Help/Topics/Intro.HTM", "intro");
    dir.Write("Help/images/Logo.gif", "GIF89a");
    dir.Write("Help/.hidden", "");
    dir.Write("Twins/a.txt", "lower");
    dir.Write("Twins/A.TXT", "upper");
  }
  std::string Resolve(const std::string& relative, int expected, decltype(&LookupPath) lookup = &LookupPath) {
    CString resolved;
    EXPECT_EQ(lookup((dir.path() + relative).c_str(), resolved), expected) << relative;
    return std::string(resolved);
  }
  test::TempDir dir;
};

}  // namespace

TEST_F(PathLookupTest, ReportsHowAPathWasFound) {
  EXPECT_EQ(Resolve("/Help/Topics/Intro.HTM", pathExact), dir / "Help/Topics/Intro.HTM");
  EXPECT_EQ(Resolve("\\Help\\Topics\\Intro.HTM", pathSlashed), dir / "Help/Topics/Intro.HTM");
  EXPECT_EQ(Resolve("/help/topics/intro.htm", pathCaseBlind), dir / "Help/Topics/Intro.HTM");
  EXPECT_EQ(Resolve("\\HELP\\IMAGES\\logo.GIF", pathCaseBlind), dir / "Help/images/Logo.gif");
  EXPECT_EQ(Resolve("/help/TOPICS/../Images/logo.gif", pathCaseBlind), dir / "Help/Topics/../images/Logo.gif");
  EXPECT_EQ(Resolve("//help//topics/", pathCaseBlind), dir / "Help/Topics");
  EXPECT_EQ(Resolve("/help", pathCaseBlind), dir / "Help");
}

TEST_F(PathLookupTest, MissingPathsKeepTheSlashedText) {
  EXPECT_EQ(Resolve("\\help\\topics\\none.htm", pathNotFound), dir / "help/topics/none.htm");
  Resolve("/Help/Topics/Intro.HTM/below", pathNotFound);  // a file used as a folder
  Resolve("/nothing/Intro.HTM", pathNotFound);

  CString resolved("stale");
  EXPECT_EQ(LookupPath(nullptr, resolved), pathNotFound);
  EXPECT_TRUE(resolved.IsEmpty());
  EXPECT_EQ(LookupPath("", resolved), pathNotFound);
  std::string longPath = dir.path() + "/" + std::string(5000, 'h');
  EXPECT_EQ(LookupPath(longPath.c_str(), resolved), pathNotFound);
  std::string longName = dir.path() + "/" + std::string(300, 'h') + "/x";
  EXPECT_EQ(LookupPath(longName.c_str(), resolved), pathNotFound);
}

TEST_F(PathLookupTest, SeveralCaseBlindMatchesPickTheSameOneEveryTime) {
  // Exact spellings win; otherwise the smallest name in byte order.
  EXPECT_EQ(Resolve("/Twins/a.txt", pathExact), dir / "Twins/a.txt");
  EXPECT_EQ(Resolve("/Twins/A.TXT", pathExact), dir / "Twins/A.TXT");
  EXPECT_EQ(Resolve("/twins/a.Txt", pathCaseBlind), dir / "Twins/A.TXT");
}

TEST_F(PathLookupTest, CreationResolvesFoldersAndExistingNames) {
  const auto create = &LookupPathForCreate;
  EXPECT_EQ(Resolve("\\help\\topics\\New.htm", pathCaseBlind, create), dir / "Help/Topics/New.htm");
  EXPECT_EQ(Resolve("/help/topics/INTRO.htm", pathCaseBlind, create), dir / "Help/Topics/Intro.HTM");
  EXPECT_EQ(Resolve("/Help/New.htm", pathExact, create), dir / "Help/New.htm");
  EXPECT_EQ(Resolve("\\Help\\New.htm", pathSlashed, create), dir / "Help/New.htm");
  Resolve("/nowhere/New.htm", pathNotFound, create);
  CString resolved;
  EXPECT_EQ(LookupPathForCreate(nullptr, resolved), pathNotFound);
}

TEST_F(PathLookupTest, ExistenceAttributesAndSize) {
  ASSERT_EQ(::chmod((dir / "Help/images/Logo.gif").c_str(), 0444), 0);
  const struct { const char* path; BOOL exists, folder, file; DWORD attributes; std::int64_t size; } cases[] = {
      {"\\help\\topics\\intro.htm", TRUE, FALSE, TRUE, FILE_ATTRIBUTE_NORMAL, 5},
      {"/HELP", TRUE, TRUE, FALSE, FILE_ATTRIBUTE_DIRECTORY, -1},
      {"/Help/.hidden", TRUE, FALSE, TRUE, FILE_ATTRIBUTE_HIDDEN, 0},
      {"\\HELP\\images\\LOGO.GIF", TRUE, FALSE, TRUE, FILE_ATTRIBUTE_READONLY, 6},
      {"/help/none", FALSE, FALSE, FALSE, INVALID_FILE_ATTRIBUTES, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    const std::string path = dir.path() + c.path;
    EXPECT_EQ(FileExists(path.c_str()), c.exists);
    EXPECT_EQ(IsDirectory(path.c_str()), c.folder);
    EXPECT_EQ(IsRegularFile(path.c_str()), c.file);
    EXPECT_EQ(GetFileAttributes(path.c_str()), c.attributes);
    EXPECT_EQ(GetFileSize(path.c_str()), c.size);
  }
  EXPECT_FALSE(FileExists(nullptr));
  EXPECT_FALSE(FileExists(""));
  EXPECT_EQ(GetFileAttributes(nullptr), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetFileSize(nullptr), -1);
}

TEST(PathSlashes, TurnsBackslashesOnly) {
  EXPECT_EQ(ToForwardSlashes("a\\b/c\\"), "a/b/c/");
  EXPECT_EQ(ToForwardSlashes("C:\\Help"), "C:/Help");
  EXPECT_TRUE(ToForwardSlashes(nullptr).IsEmpty());
}

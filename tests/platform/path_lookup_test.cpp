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
  std::string Resolve(const std::string& relative, int expected) {
    CString resolved;
    EXPECT_EQ(LookupPath((dir.path() + relative).c_str(), resolved), expected) << relative;
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
  CString resolved;
  EXPECT_EQ(LookupPathForCreate((dir.path() + "\\help\\topics\\New.htm").c_str(), resolved), pathCaseBlind);
  EXPECT_EQ(std::string(resolved), dir / "Help/Topics/New.htm");
  EXPECT_EQ(LookupPathForCreate((dir.path() + "/help/topics/INTRO.htm").c_str(), resolved), pathCaseBlind);
  EXPECT_EQ(std::string(resolved), dir / "Help/Topics/Intro.HTM");
  EXPECT_EQ(LookupPathForCreate((dir.path() + "/Help/New.htm").c_str(), resolved), pathExact);
  EXPECT_EQ(LookupPathForCreate((dir.path() + "\\Help\\New.htm").c_str(), resolved), pathSlashed);
  EXPECT_EQ(LookupPathForCreate((dir.path() + "/nowhere/New.htm").c_str(), resolved), pathNotFound);
  EXPECT_EQ(LookupPathForCreate(nullptr, resolved), pathNotFound);
}

TEST_F(PathLookupTest, ExistenceAttributesAndSize) {
  EXPECT_TRUE(FileExists((dir.path() + "\\help\\topics\\intro.htm").c_str()));
  EXPECT_TRUE(FileExists((dir.path() + "/HELP").c_str()));
  EXPECT_FALSE(FileExists((dir.path() + "/help/none").c_str()));
  EXPECT_FALSE(FileExists(nullptr));
  EXPECT_FALSE(FileExists(""));
  EXPECT_TRUE(IsDirectory((dir.path() + "/help/TOPICS").c_str()));
  EXPECT_FALSE(IsDirectory((dir.path() + "/help/topics/intro.htm").c_str()));
  EXPECT_TRUE(IsRegularFile((dir.path() + "/help/topics/intro.htm").c_str()));
  EXPECT_FALSE(IsRegularFile((dir.path() + "/help").c_str()));

  EXPECT_EQ(GetFileAttributes((dir.path() + "/help").c_str()), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(GetFileAttributes((dir.path() + "/help/topics/intro.htm").c_str()), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(GetFileAttributes((dir.path() + "/Help/.hidden").c_str()), FILE_ATTRIBUTE_HIDDEN);
  ASSERT_EQ(::chmod((dir / "Help/images/Logo.gif").c_str(), 0444), 0);
  EXPECT_EQ(GetFileAttributes((dir.path() + "/help/images/logo.gif").c_str()), FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(GetFileAttributes((dir.path() + "/help/missing").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetFileAttributes(nullptr), INVALID_FILE_ATTRIBUTES);

  EXPECT_EQ(GetFileSize((dir.path() + "\\HELP\\images\\LOGO.GIF").c_str()), 6);
  EXPECT_EQ(GetFileSize((dir.path() + "/Help/.hidden").c_str()), 0);
  EXPECT_EQ(GetFileSize((dir.path() + "/Help").c_str()), -1);
  EXPECT_EQ(GetFileSize((dir.path() + "/none").c_str()), -1);
  EXPECT_EQ(GetFileSize(nullptr), -1);
}

TEST(PathSlashes, TurnsBackslashesOnly) {
  EXPECT_EQ(ToForwardSlashes("a\\b/c\\"), "a/b/c/");
  EXPECT_EQ(ToForwardSlashes("C:\\Help"), "C:/Help");
  EXPECT_TRUE(ToForwardSlashes(nullptr).IsEmpty());
}

#include "telvanix/foundation/path_utils.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "golden_cases.h"
#include "test_util.h"

using namespace telvanix;

namespace {

struct Parts {
  char drive[kMaxDrive], dir[kMaxDir], fname[kMaxFname], ext[kMaxExt];
};

Parts SplitAll(const char* path) {
  Parts p;
  SplitPath(path, p.drive, p.dir, p.fname, p.ext);
  return p;
}

// The four parts joined by "|".
std::string Split(const char* path) {
  Parts p = SplitAll(path);
  return std::string(p.drive) + "|" + p.dir + "|" + p.fname + "|" + p.ext;
}

}  // namespace

// Each line of a case is "OPERATION|ARGUMENT|ARGUMENT": split (path parts),
// url (address and bookmark), topic (path parts and bookmark), full (the
// normalised full name against a base) or relative (the first path
// relative to the second); each line is printed with its result.
std::string DescribePaths(const std::string&, const std::string& input) {
  std::ostringstream out;
  std::istringstream lines(input);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#')
      continue;
    const size_t bar = line.find('|');
    const std::string op = line.substr(0, bar), a = line.substr(bar + 1);
    const size_t bar2 = a.find('|');
    const std::string first = a.substr(0, bar2), second = bar2 == std::string::npos ? "" : a.substr(bar2 + 1);
    char drive[kMaxDrive], dir[kMaxDir], name[kMaxFname], ext[kMaxExt], bookmark[kMaxBookmark];
    out << line << "\n  -> ";
    if (op == "split") {
      out << Split(first.c_str());
    } else if (op == "url") {
      out << SplitUrlAndBookMark(first.c_str(), dir, bookmark) << " " << dir << "|" << bookmark;
    } else if (op == "topic") {
      out << SplitPathAndBookMark(first.c_str(), drive, dir, name, ext, bookmark) << " " << drive << "|" << dir << "|"
          << name << "|" << ext << "|" << bookmark;
    } else if (op == "full") {
      out << GetNormalizedFullPathName(first.c_str(), second.c_str());
    } else if (op == "relative") {
      out << GetRelativePathNameByFilePathNames(first.c_str(), second.c_str());
    }
    out << "\n";
  }
  return out.str();
}

TEST(PathUtils, GoldenPaths) { test::RunGoldenCases("paths", ".paths", DescribePaths, 1); }

TEST(SplitPath, NullAndSomeOutputs) {
  EXPECT_EQ(Split(nullptr), "|||");
  char ext[kMaxExt];
  SplitPath("a\\b.c", nullptr, nullptr, nullptr, ext);
  EXPECT_STREQ(ext, ".c");
}

TEST(SplitPath, LongPartsAreCut) {
  const std::string longName(600, 'n');
  const std::string path = "C:\\" + longName + "\\" + longName + "." + longName;
  Parts p = SplitAll(path.c_str());
  EXPECT_EQ(std::string(p.dir).size(), static_cast<size_t>(kMaxDir - 1));
  EXPECT_EQ(std::string(p.fname), std::string(kMaxFname - 1, 'n'));
  EXPECT_EQ(std::string(p.ext).size(), static_cast<size_t>(kMaxExt - 1));
}

TEST(SplitPath, TrailByteIsNotASeparator) {
  // 0x95 0x5C is one character in code page 932; its second byte is "\".
  {
    test::CodePageScope cp(932);
    EXPECT_EQ(Split("ab\x95\x5C"), "||ab\x95\x5C|");
  }
  EXPECT_EQ(Split("ab\x95\x5C"), "|ab\x95\x5C||");
}

TEST(ChangeSlashInPath, BothWays) {
  char text[] = "a/b\\c/d";
  EXPECT_EQ(ChangeSlashInPath(text, TRUE), 1);
  EXPECT_STREQ(text, "a\\b\\c\\d");
  EXPECT_EQ(ChangeSlashInPath(text, FALSE), 1);
  EXPECT_STREQ(text, "a/b/c/d");
  EXPECT_EQ(ChangeSlashInPath(static_cast<char*>(nullptr), TRUE), 1);
  CString s("x\\y");
  EXPECT_EQ(ChangeSlashInPath(s, FALSE), 1);
  EXPECT_EQ(s, "x/y");
  CString empty;
  EXPECT_EQ(ChangeSlashInPath(empty, FALSE), 1);
  test::CodePageScope cp(932);
  char dbcs[] = "\x95\x5C\\z";
  ChangeSlashInPath(dbcs, FALSE);
  EXPECT_STREQ(dbcs, "\x95\x5C/z");
}

TEST(SplitUrlAndBookMark, NullAndLong) {
  char address[kMaxBookmark], bookmark[kMaxBookmark];
  EXPECT_EQ(SplitUrlAndBookMark("#only", address, nullptr), 1);
  EXPECT_STREQ(address, "");
  EXPECT_EQ(SplitUrlAndBookMark(nullptr, address, bookmark), 0);
  const std::string longUrl = std::string(400, 'u') + "#" + std::string(400, 'b');
  EXPECT_EQ(SplitUrlAndBookMark(longUrl.c_str(), address, bookmark), 1);
  EXPECT_EQ(std::string(address) + "|" + bookmark,
            std::string(kMaxBookmark - 1, 'u') + "|#" + std::string(kMaxBookmark - 2, 'b'));
}

TEST(SplitPathAndBookMark, NullAndSomeOutputs) {
  char drive[kMaxDrive], folder[kMaxDir], name[kMaxFname], ext[kMaxExt], bookmark[kMaxBookmark];
  EXPECT_EQ(SplitPathAndBookMark("a.b#c.d", nullptr, nullptr, name, ext, nullptr), 1);
  EXPECT_STREQ(name, "a.b#c");
  EXPECT_STREQ(ext, ".d");
  EXPECT_EQ(SplitPathAndBookMark(nullptr, drive, folder, name, ext, bookmark), 0);
}

TEST(GetNormalizedFullPathName, WithoutBaseUsesTheCurrentFolder) {
  char cwd[4096];
  ASSERT_NE(getcwd(cwd, sizeof(cwd)), nullptr);
  const std::string here(cwd);
  if (here.size() + 12 < static_cast<size_t>(kMaxPath)) {
    EXPECT_EQ(GetNormalizedFullPathName("x\\..\\y.htm", nullptr), (here == "/" ? "" : here) + "/y.htm");
    EXPECT_EQ(GetNormalizedFullPathName("y.htm", ""), (here == "/" ? "" : here) + "/y.htm");
  }
}

TEST(GetNormalizedFullPathName, NullAndOverLong) {
  EXPECT_EQ(GetNormalizedFullPathName("C:/a/b/../c/", nullptr), "C:\\a\\c\\");
  EXPECT_TRUE(GetNormalizedFullPathName(nullptr, "C:\\a\\t.htm").IsEmpty());
  const std::string fits = "C:\\" + std::string(kMaxPath - 4, 'a');  // 259 characters
  EXPECT_EQ(GetNormalizedFullPathName(fits.c_str(), nullptr), fits.c_str());
  const std::string tooLong = fits + "b";
  EXPECT_TRUE(GetNormalizedFullPathName(tooLong.c_str(), nullptr).IsEmpty());
  const std::string shrinking = "C:\\" + std::string(300, 'a') + "\\..\\b";
  EXPECT_EQ(GetNormalizedFullPathName(shrinking.c_str(), nullptr), "C:\\b");
}

TEST(GetRelativePathNameByFilePathNames, Null) {
  EXPECT_TRUE(GetRelativePathNameByFilePathNames(nullptr, "C:\\a\\t.htm").IsEmpty());
  EXPECT_EQ(GetRelativePathNameByFilePathNames("C:\\x.gif", nullptr), "C:\\x.gif");
}

class FileSystemTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"a.htm", "b.HTM", "c.txt", "noext", "Sub/d.htm", ".hidden/e.htm"})
      m_dir.Write(name, "x");
    m_dir.Write("a.htm", "hello");
    m_dir.Write("b.HTM", "");
    m_dir.Write("Sub/d.htm", "12");
  }
  // The files found, in the order found, checking the result code.
  static std::vector<std::string> Find(const char* folder, const char* ext, BOOL sub, int result = 1) {
    CStringList found;
    EXPECT_EQ(LocalFindAllFiles(folder, ext, found, sub), result) << (folder ? folder : "null") << " " << ext;
    const CStringList& list = found;
    std::vector<std::string> out;
    for (POSITION pos = list.GetHeadPosition(); pos;) out.push_back(list.GetNext(pos).str());
    return out;
  }
  test::TempDir m_dir;
  const std::string m_root = m_dir.path();
};

TEST_F(FileSystemTest, ExistenceAndLength) {
  EXPECT_TRUE(IsExistingFile((m_root + "/Sub").c_str()));  // folders count
  EXPECT_TRUE(IsExistingFile((m_root + "\\SUB\\D.HTM").c_str()));  // case-blind, backslashes
  EXPECT_FALSE(IsExistingFile((m_root + "/missing.htm").c_str()));
  EXPECT_FALSE(IsExistingFile(""));
  EXPECT_FALSE(IsExistingFile(nullptr));
  EXPECT_EQ(GetFileLength((m_root + "/b.htm").c_str()), 0);
  EXPECT_EQ(GetFileLength((m_root + "/sub\\d.htm").c_str()), 2);
  EXPECT_EQ(GetFileLength((m_root + "/missing").c_str()), -1);
  EXPECT_EQ(GetFileLength((m_root + "/Sub").c_str()), -1);
  EXPECT_EQ(GetFileLength(nullptr), -1);
}

TEST_F(FileSystemTest, FindByExtension) {
  const std::string& r = m_root;
  EXPECT_EQ(Find(r.c_str(), ".htm", FALSE), (std::vector<std::string>{r + "/a.htm", r + "/b.HTM"}));
  EXPECT_EQ(Find((r + "/").c_str(), "HTM", TRUE),
            (std::vector<std::string>{r + "/Sub/d.htm", r + "/a.htm", r + "/b.HTM"}));
  EXPECT_EQ(Find(r.c_str(), "*", FALSE).size(), 4u);  // files only, "noext" included
  EXPECT_EQ(Find((r + "\\sub").c_str(), "htm", FALSE), (std::vector<std::string>{r + "\\sub\\d.htm"}));
}

TEST_F(FileSystemTest, FindBadArguments) {
  const std::string nowhere = m_root + "/nowhere";
  const char* r = m_root.c_str();
  for (auto [folder, ext, sub, result] : {std::tuple{"", "htm", FALSE, 0}, {nullptr, "htm", FALSE, 0},
                                          {r, "", FALSE, 0}, {r, ".", FALSE, 0}, {nowhere.c_str(), "htm", TRUE, 1},
                                          {r, "gif", TRUE, 1}})
    EXPECT_TRUE(Find(folder, ext, sub, result).empty());
}

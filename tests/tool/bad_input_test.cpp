// Damaged projects: files that cannot be read, pipes and binary data named
// like pages, empty pages, symbolic link loops, huge files, paths that do not
// exist. Every command must name the file in one line, go on with the other
// files, exit 2 for I/O errors and 1 for problems, and never hang.
#include <nlohmann/json.hpp>

#include <linux/capability.h>
#include <sys/prctl.h>

#include <cstdlib>
#include <functional>

#include "tool/tool_runner.h"

namespace telvanix::tool_test {
namespace {

using Json = nlohmann::json;

// Two pages that link to each other, one of them also to a missing page:
// a known finding that must survive whatever else is wrong.
void WriteSmallProject(const ScratchDir& dir) {
  WriteFile(dir / "good.htm",
            "<html><head><title>Good</title></head><body><p>Alpha <a href=\"other.htm\">other</a> "
            "<a href=\"missing.htm\">gone</a></p></body></html>\n");
  WriteFile(dir / "other.htm",
            "<html><head><title>Other</title></head><body><p>Beta <a href=\"good.htm\">good</a></p></body></html>\n");
}

void MakeFifo(const std::string& path) { ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0) << path; }
void MakeLink(const std::string& target, const std::string& path) {
  ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0) << path;
}
void MakeSparse(const std::string& path, off_t size) {
  WriteFile(path, "");
  ASSERT_EQ(::truncate(path.c_str(), size), 0) << path;
}
std::string BinaryBytes() {
  std::string bytes = "<html>\x01\x02";
  bytes += std::string(1, '\0');
  for (int i = 0; i < 1000; ++i) bytes += static_cast<char>((i * 37) & 0xFF);
  return bytes;
}

// Every line on stderr is one of the tool's messages; `name` is in exactly
// one of them.
void ExpectNamedOnce(const ToolRun& r, const std::string& name, const std::string& reason) {
  size_t naming = 0;
  for (const std::string& line : Lines(r.err)) {
    EXPECT_EQ(line.rfind("telvanix: ", 0), 0u) << line;
    if (line.find(name) != std::string::npos) {
      ++naming;
      EXPECT_NE(line.find(reason), std::string::npos) << line;
    }
  }
  EXPECT_EQ(naming, 1u) << name << "\n" << r;
}

// Reading a process's memory at address 0 fails with EIO on Linux.
bool ReadOfProcMemFails() {
  int fd = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  char byte;
  bool failed = ::read(fd, &byte, 1) < 0 && errno == EIO;
  ::close(fd);
  return failed;
}

struct BadCase {
  const char* label;
  const char* name;  // the bad entry
  std::function<void(const ScratchDir&)> make;
  int status;          // of `telvanix check`
  const char* reason;  // in its stderr line; null when there is none
  const char* kind;    // finding about the entry; null when there is none
};

std::ostream& operator<<(std::ostream& os, const BadCase& c) { return os << c.label; }

const BadCase kBadCases[] = {
    {"pipe", "pipe.htm", [](const ScratchDir& d) { MakeFifo(d / "pipe.htm"); }, 2, "not a regular file", nullptr},
    {"dangling_link", "dangling.htm", [](const ScratchDir& d) { MakeLink("nowhere.htm", d / "dangling.htm"); }, 2,
     "broken symbolic link", nullptr},
    {"link_to_itself", "self.htm", [](const ScratchDir& d) { MakeLink("self.htm", d / "self.htm"); }, 2,
     "symbolic links", nullptr},
    {"folder_loop", "loop/up",
     [](const ScratchDir& d) {
       fs::create_directory(d / "loop");
       MakeLink("..", d / "loop/up");
     },
     2, "symbolic link loop", nullptr},
    // Reading it fails with an I/O error even for root, who reads anything
    // that file permissions guard.
    {"read_fails", "mem.htm", [](const ScratchDir& d) { MakeLink("/proc/self/mem", d / "mem.htm"); }, 2,
     "Input/output error", "unreadable"},
    {"huge_page", "huge.htm", [](const ScratchDir& d) { MakeSparse(d / "huge.htm", 3LL << 30); }, 2, "too large",
     "unreadable"},
    {"binary_page", "bin.htm", [](const ScratchDir& d) { WriteFile(d / "bin.htm", BinaryBytes()); }, 1, nullptr,
     "binary-page"},
    {"empty_page", "empty.htm", [](const ScratchDir& d) { WriteFile(d / "empty.htm", ""); }, 1, nullptr,
     "orphan-topic"},
    {"folder_named_like_a_page", "dir.htm", [](const ScratchDir& d) { fs::create_directory(d / "dir.htm"); }, 1,
     nullptr, nullptr},
};

class CheckBadInput : public ::testing::TestWithParam<BadCase> {};

TEST_P(CheckBadInput, NamesTheEntryAndChecksTheRest) {
  const BadCase& c = GetParam();
  if (std::string(c.name) == "mem.htm" && !ReadOfProcMemFails()) GTEST_SKIP() << "/proc/self/mem reads here";
  ScratchDir dir;
  WriteSmallProject(dir);
  c.make(dir);
  ToolRun r = RunTool({"check", dir.path(), "--json"});
  ASSERT_FALSE(r.timedOut) << r;
  EXPECT_EQ(r.status, c.status) << r;
  if (c.reason) {
    ExpectNamedOnce(r, c.name, c.reason);
  } else {
    EXPECT_EQ(r.err, "") << r;
  }
  Json j = Json::parse(r.out, nullptr, false);
  ASSERT_FALSE(j.is_discarded()) << r;
  bool goodChecked = false;
  std::vector<std::string> aboutEntry;
  for (const Json& f : j.at("findings")) {
    if (f.at("file") == "good.htm" && f.value("reference", "") == "missing.htm") goodChecked = true;
    if (f.at("file").get<std::string>().find(c.name) != std::string::npos) aboutEntry.push_back(f.at("kind"));
  }
  EXPECT_TRUE(goodChecked) << j.dump(2);
  if (c.kind) {
    EXPECT_EQ(aboutEntry, std::vector<std::string>{c.kind}) << j.dump(2);
  } else {
    EXPECT_TRUE(aboutEntry.empty()) << j.dump(2);
  }
  EXPECT_EQ(j.at("errors").size(), c.reason ? 1u : 0u) << j.dump(2);
  // The loop is walked once; a folder is no page.
  if (std::string(c.label) == "folder_loop" || std::string(c.label) == "folder_named_like_a_page") {
    EXPECT_EQ(j.at("counts").at("topics"), 2);
  }
}

INSTANTIATE_TEST_SUITE_P(Entry, CheckBadInput, ::testing::ValuesIn(kBadCases),
                         [](const ::testing::TestParamInfo<BadCase>& info) { return std::string(info.param.label); });

// Root reads files whatever their permissions, by two capabilities; taken
// out of this process's bounding set, the tools it starts are refused like
// any user.
bool PermissionsBindTheTool() {
  return ::geteuid() != 0 || (::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0) == 0 &&
                              ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0) == 0);
}

TEST(CheckBadInput, UnreadableFileIsNamedAsUnreadable) {
  if (!PermissionsBindTheTool()) GTEST_SKIP() << "root reads files whatever their permissions";
  ScratchDir dir;
  WriteSmallProject(dir);
  WriteFile(dir / "locked.htm", "<html><body>x</body></html>\n");
  ASSERT_EQ(::chmod((dir / "locked.htm").c_str(), 0), 0);
  ToolRun r = RunTool({"check", dir.path()});
  EXPECT_EQ(r.status, 2) << r;
  ExpectNamedOnce(r, "locked.htm", "unreadable (Permission denied)");
  EXPECT_NE(r.out.find("good.htm: missing.htm"), std::string::npos) << r;
  for (const char* command : {"text", "props", "format", "roundtrip", "tags"}) {
    r = RunTool({command, dir.path()});
    EXPECT_EQ(r.status, 2) << r;
    ExpectNamedOnce(r, "locked.htm", "unreadable (Permission denied)");
  }
}

// A folder with every kind of damage at once, for the page commands.
class PageCommandsBadInput : public ::testing::Test {
 protected:
  void SetUp() override {
    WriteSmallProject(dir);
    MakeFifo(dir / "pipe.htm");
    MakeLink("nowhere.htm", dir / "dangling.htm");
    fs::create_directory(dir / "loop");
    MakeLink("..", dir / "loop/up");
    fs::create_directory(dir / "dir.htm");
    WriteFile(dir / "bin.htm", BinaryBytes());
    WriteFile(dir / "empty.htm", "");
    MakeSparse(dir / "huge.htm", 3LL << 30);
  }
  ScratchDir dir;
};

TEST_F(PageCommandsBadInput, EveryCommandNamesEachBadFileAndGoesOn) {
  const std::string binary = ReadFile(dir / "bin.htm");
  struct Expect {
    std::vector<std::string> args;
    std::string goodOutput;  // shows that good.htm was handled
    bool binaryIsAnError;    // roundtrip reads binary data as it is
  };
  const Expect commands[] = {
      {{"text", dir.path()}, "\"text\":\"Alpha other gone\"", true},
      {{"props", dir.path()}, dir / "good.htm", true},
      {{"tags", dir.path(), "--remove", "x"}, "0 of 5 pages changed", true},
      {{"format", dir.path(), "--force"}, "formatted " + (dir / "good.htm"), true},
      {{"roundtrip", dir.path()}, "5 pages:", false},
  };
  for (const Expect& e : commands) {
    ToolRun r = RunTool(e.args);
    ASSERT_FALSE(r.timedOut) << e.args[0] << "\n" << r;
    EXPECT_EQ(r.status, 2) << r;
    EXPECT_NE(r.out.find(e.goodOutput), std::string::npos) << r;
    ExpectNamedOnce(r, "pipe.htm", "not a regular file");
    ExpectNamedOnce(r, "dangling.htm", "broken symbolic link");
    ExpectNamedOnce(r, "loop/up", "symbolic link loop");
    ExpectNamedOnce(r, "huge.htm", "too large");
    if (e.binaryIsAnError) {
      ExpectNamedOnce(r, "bin.htm", "binary data");
    }
    EXPECT_EQ(r.err.find("empty.htm"), std::string::npos) << "an empty page is a page\n" << r;
    EXPECT_EQ(r.err.find("dir.htm"), std::string::npos) << r;
    EXPECT_EQ(ReadFile(dir / "bin.htm"), binary) << e.args[0] << " changed the binary file";
  }
}

TEST(TextBadInput, BrokenLinksToFilesThatAreNoPagesAreNoError) {
  ScratchDir dir;
  WriteSmallProject(dir);
  MakeLink("/nowhere/jquery.js", dir / "jquery.js");
  MakeLink("nowhere.png", dir / "logo.png");
  ToolRun r = RunTool({"text", dir.path()});
  EXPECT_EQ(r.status, 0) << r;
  EXPECT_EQ(r.err, "") << r;
  EXPECT_EQ(Lines(r.out).size(), 2u) << r;
}

TEST_F(PageCommandsBadInput, NamedOperandsThatAreNoPages) {
  for (const char* command : {"text", "props", "format", "roundtrip", "tags"}) {
    ToolRun r = RunTool({command, dir / "pipe.htm", dir / "nowhere.htm", dir / "good.htm"});
    ASSERT_FALSE(r.timedOut) << command << "\n" << r;
    EXPECT_EQ(r.status, 2) << command << "\n" << r;
    ExpectNamedOnce(r, "pipe.htm", "not a regular file");
    ExpectNamedOnce(r, "nowhere.htm", "No such file or directory");
    EXPECT_EQ(r.err.find("good.htm"), std::string::npos) << command << "\n" << r;
  }
  for (const char* name : {"pipe.htm", "nowhere.hhc", "dir.htm", "huge.htm", "bin.htm"}) {
    ToolRun r = RunTool({"toc", "--check", dir / name});
    ASSERT_FALSE(r.timedOut) << name << "\n" << r;
    EXPECT_EQ(r.status, 2) << name << "\n" << r;
    EXPECT_EQ(r.out, "") << r;
    ExpectNamedOnce(r, name, "");
  }
}

}  // namespace
}  // namespace telvanix::tool_test

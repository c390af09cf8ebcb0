#include "telvanix/platform/code_page.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "test_util.h"

using namespace telvanix;

extern char** environ;

namespace {

// Runs one test of this executable in a fresh process with TELVANIX_CODEPAGE
// set, and gives its exit status.
int RunChild(const char* filter, const char* codePage) {
  std::string exe(4096, '\0');
  ssize_t n = ::readlink("/proc/self/exe", exe.data(), exe.size() - 1);
  if (n <= 0)
    return -1;
  exe.resize(static_cast<size_t>(n));
  std::string filterArg = std::string("--gtest_filter=") + filter;
  char* argv[] = {exe.data(), filterArg.data(), nullptr};
  test::EnvScope page("TELVANIX_CODEPAGE", codePage), child("TELVANIX_CODEPAGE_CHILD", "1");
  pid_t pid;
  if (::posix_spawn(&pid, exe.c_str(), nullptr, nullptr, argv, environ) != 0)
    return -1;
  int status = 0;
  if (::waitpid(pid, &status, 0) != pid || !WIFEXITED(status))
    return -1;
  return WEXITSTATUS(status);
}

bool InChild() { return std::getenv("TELVANIX_CODEPAGE_CHILD") != nullptr; }

}  // namespace

TEST(CodePage, LeadBytesOfTheDoubleByteCodePages) {
  struct Case {
    UINT codePage;
    BYTE byte;
    BOOL lead;
  };
  const Case cases[] = {
      {932, 0x80, FALSE}, {932, 0x81, TRUE},  {932, 0x9F, TRUE},  {932, 0xA0, FALSE},
      {932, 0xB1, FALSE},  // half-width katakana stand alone
      {932, 0xDF, FALSE}, {932, 0xE0, TRUE},  {932, 0xFC, TRUE},  {932, 0xFD, FALSE},
      {936, 0x80, FALSE}, {936, 0x81, TRUE},  {936, 0xFE, TRUE},  {936, 0xFF, FALSE},
      {949, 0x81, TRUE},  {949, 0xA0, TRUE},  {949, 0xFF, FALSE}, {950, 0x81, TRUE},
      {950, 0xFE, TRUE},  {950, 0x7E, FALSE}, {1252, 0x81, FALSE}, {1252, 0xE0, FALSE},
      {65001, 0xE3, FALSE}, {932, 'A', FALSE},
  };
  for (const Case& c : cases)
    EXPECT_EQ(IsDBCSLeadByteEx(c.codePage, c.byte), c.lead) << c.codePage << " " << int(c.byte);
  for (auto [codePage, dbcs] : {std::pair{932u, TRUE}, {950u, TRUE}, {1252u, FALSE}, {874u, FALSE}})
    EXPECT_EQ(IsDBCSCodePage(codePage), dbcs) << codePage;
}

TEST(CodePage, TheActiveCodePageDecidesTheShortForm) {
  if (InChild())
    GTEST_SKIP() << "runs in the parent only";
  test::CodePageScope chosen(936);
  EXPECT_EQ(GetActiveCodePage(), 936u);
  EXPECT_TRUE(IsDBCSLeadByte(0xA0));
  EXPECT_TRUE(IsDBCSLeadByteEx(CP_ACP, 0xA0));
  SetActiveCodePage(1252);
  EXPECT_FALSE(IsDBCSLeadByte(0xA0));
  EXPECT_EQ(SetActiveCodePage(932), 1252u);
  EXPECT_FALSE(IsDBCSLeadByte(0xA0));
  EXPECT_TRUE(IsDBCSLeadByte(0x81));
}

// Checked in a child process started by EnvironmentChoosesTheCodePage.
TEST(CodePageChild, ReportsTheEnvironmentsChoice) {
  if (!InChild())
    GTEST_SKIP() << "runs in a child process only";
  const char* expected = std::getenv("TELVANIX_CODEPAGE_EXPECT");
  UINT want = expected ? static_cast<UINT>(std::atoi(expected)) : 0;
  EXPECT_EQ(GetActiveCodePage(), want);
  // Read once: changing the variable later changes nothing.
  ::setenv("TELVANIX_CODEPAGE", "949", 1);
  EXPECT_EQ(GetActiveCodePage(), want);
  // The host's choice wins, and 0 goes back to the environment's.
  SetActiveCodePage(1252);
  EXPECT_EQ(GetActiveCodePage(), 1252u);
  SetActiveCodePage(0);
  EXPECT_EQ(GetActiveCodePage(), want);
}

TEST(CodePage, EnvironmentChoosesTheCodePage) {
  if (InChild())
    GTEST_SKIP() << "runs in the parent only";
  struct Case {
    const char* value;
    const char* expect;
  };
  for (Case c : {Case{"932", "932"}, Case{"cp936", "936"}, Case{"Windows-950", "950"}, Case{"klingon", "1252"},
                 Case{"", "1252"}, Case{"99999999", "1252"}, Case{nullptr, "1252"}}) {
    test::EnvScope expect("TELVANIX_CODEPAGE_EXPECT", c.expect);
    EXPECT_EQ(RunChild("CodePageChild.*", c.value), 0) << (c.value ? c.value : "(unset)");
  }
}

TEST(CodePage, NamesAndConversionToAndFromUtf8) {
  for (auto [name, codePage] : {std::pair{"utf-8", 65001u}, {"UTF8", 65001u}, {"65001", 65001u},
                                {"iso-8859-1", 1252u}, {"windows-1251", 1251u}, {"Shift_JIS", 932u},
                                {"gb2312", 936u}, {"cp950", 950u}, {"bogus", 0u}, {"", 0u}, {"99999", 0u}})
    EXPECT_EQ(CodePageFromName(name), codePage) << name;
  struct Case {
    UINT codePage;
    std::string bytes, utf8;
  };
  const Case cases[] = {
      {1252, "Caf\xE9 \x93x\x94 \x80", "Caf\xC3\xA9 \xE2\x80\x9Cx\xE2\x80\x9D \xE2\x82\xAC"},
      {65001, "a \xC3\x97 b", "a \xC3\x97 b"},
      {932, "\x93\xFA\x96\x7B", "\xE6\x97\xA5\xE6\x9C\xAC"},  // 日本
      {1251, "\xCC\xE8\xF0", "\xD0\x9C\xD0\xB8\xD1\x80"},
  };
  for (const Case& c : cases) {
    std::string utf8, back;
    EXPECT_TRUE(CodePageToUtf8(c.codePage, c.bytes.data(), c.bytes.size(), utf8));
    EXPECT_EQ(utf8, c.utf8) << c.codePage;
    EXPECT_TRUE(Utf8ToCodePage(c.codePage, utf8.data(), utf8.size(), back));
    EXPECT_EQ(back, c.bytes) << c.codePage;
  }
  // Broken input never stops a conversion; what a code page lacks goes to the handler.
  std::string utf8, bytes;
  EXPECT_TRUE(CodePageToUtf8(65001, "a\xC3", 2, utf8));
  EXPECT_EQ(utf8, "a\xEF\xBF\xBD");
  EXPECT_TRUE(Utf8ToCodePage(1252, "\xE6\x97\xA5!", 4, bytes, [](char32_t ch, std::string& out) {
    out += "&#" + std::to_string(static_cast<unsigned>(ch)) + ";";
  }));
  EXPECT_EQ(bytes, "&#26085;!");
  EXPECT_FALSE(CodePageToUtf8(4242, "x", 1, utf8));
}

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

TEST(CodePage, DefaultsTo1252) {
  if (std::getenv("TELVANIX_CODEPAGE"))
    GTEST_SKIP() << "TELVANIX_CODEPAGE is set in this environment";
  test::CodePageScope reset(0);
  EXPECT_EQ(GetActiveCodePage(), 1252u);
  EXPECT_FALSE(IsDBCSLeadByte(0x81));
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
                 Case{"", "1252"}, Case{"99999999", "1252"}}) {
    test::EnvScope expect("TELVANIX_CODEPAGE_EXPECT", c.expect);
    EXPECT_EQ(RunChild("CodePageChild.*", c.value), 0) << c.value;
  }
}

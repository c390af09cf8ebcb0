#include "telvanix/foundation/module_resources.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "test_util.h"

using namespace telvanix;

namespace {

std::string DefaultStyleSheet() {
  CByteString bytes;
  if (!LoadBinaryResource(&bytes, MAKEINTRESOURCE(4001), nullptr)) return std::string();
  return std::string(static_cast<const char*>(bytes), static_cast<size_t>(bytes.GetLength()));
}

// Comment lines as they are, rules as "SELECTOR { declarations }" with the
// blanks around the braces evened out, and each run of blank lines between
// them as "".
std::vector<std::string> Outline(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    line.erase(line.find_last_not_of("\r ") + 1);
    const size_t open = line.find('{'), close = line.rfind('}');
    if (line.empty() || line.rfind("/*", 0) == 0 || open == std::string::npos || close == std::string::npos) {
      if (!line.empty() || (!out.empty() && !out.back().empty()))
        out.push_back(line);
      continue;
    }
    std::string selector = line.substr(0, open), body = line.substr(open + 1, close - open - 1);
    selector.erase(selector.find_last_not_of(' ') + 1);
    body.erase(body.find_last_not_of(' ') + 1);
    body.erase(0, body.find_first_not_of(' '));
    out.push_back(selector + " { " + body + (body.empty() ? "}" : " }"));
  }
  if (!out.empty() && out.back().empty())
    out.pop_back();
  return out;
}

}  // namespace

TEST(LoadBinaryResource, DefaultStyleSheetSizeAndLineEnds) {
  const std::string css = DefaultStyleSheet();
  ASSERT_EQ(css.size(), 2089u);
  size_t lines = 0;
  for (size_t at = css.find_first_of("\r\n"); at != std::string::npos; at = css.find_first_of("\r\n", at + 2), ++lines)
    ASSERT_EQ(css.compare(at, 2, "\r\n"), 0) << "bare line end at " << at;
  EXPECT_GT(lines, 55u);
  EXPECT_EQ(css.substr(css.size() - 2), "\r\n");
  EXPECT_EQ(css.find('\0'), std::string::npos);
}

TEST(LoadBinaryResource, DefaultStyleSheetRulesInOrder) {
  // The rules and group comments as documented, misspellings included.
  const std::vector<std::string> expected = Outline(test::ReadDataFile("resources/default_stylesheet.rules"));
  ASSERT_GT(expected.size(), 50u);
  EXPECT_EQ(Outline(DefaultStyleSheet()), expected);
}

TEST(LoadBinaryResource, NamesAndFailures) {
  CByteString bytes;
  EXPECT_EQ(LoadBinaryResource(&bytes, "#4001", nullptr), 1);
  EXPECT_EQ(bytes.GetLength(), 2089);
  EXPECT_EQ(LoadBinaryResource(&bytes, MAKEINTRESOURCE(4001), "Telvanix.DLL"), 1);

  CByteString kept;
  kept = "untouched";
  for (const char* name : {MAKEINTRESOURCE(4002), "#40011", "DEFAULT", "#", static_cast<const char*>(nullptr)})
    EXPECT_EQ(LoadBinaryResource(&kept, name, nullptr), 0);
  for (const char* module : {"kernel32.dll", ""})
    EXPECT_EQ(LoadBinaryResource(&kept, MAKEINTRESOURCE(4001), module), 0) << module;
  EXPECT_EQ(kept.Compare("untouched"), 0);
  EXPECT_EQ(LoadBinaryResource(nullptr, MAKEINTRESOURCE(4001), nullptr), 0);
}

TEST(LoadStringResource, EveryIdBelowThe255Limit) {
  for (UINT id = 3000; id <= 3020; ++id) {
    CString s;
    EXPECT_EQ(LoadStringResource(&s, id, nullptr), 1) << id;
    EXPECT_LE(s.GetLength(), 255) << id;
    EXPECT_EQ(s.IsEmpty(), id == 3002) << id;
  }
}

TEST(LoadStringResource, MissingIdsAndModules) {
  // An id with no string loads nothing and succeeds; another module fails and keeps the text.
  const struct { UINT id; const char* module; int result; const char* after; } cases[] = {
      {3002, nullptr, 1, ""}, {4001, nullptr, 1, ""},
      {3000, "other.dll", 0, "before"}, {3000, "telvanix", 0, "before"}};
  for (const auto& c : cases) {
    CString s("before");
    EXPECT_EQ(LoadStringResource(&s, c.id, c.module), c.result) << c.id;
    EXPECT_EQ(s, c.after) << c.id;
  }
  EXPECT_EQ(LoadStringResource(nullptr, 3000, nullptr), 0);
}

TEST(ModuleNames, TheObjectsOwnFileNameAnswers) {
  const CString path = GetModuleFileNameOfLibrary();
  ASSERT_FALSE(path.IsEmpty());
  const CString fileName = path.Mid(path.ReverseFind('/') + 1);
  CString s;
  EXPECT_EQ(LoadStringResource(&s, 3001, fileName), 1);
  EXPECT_EQ(s, "Arial");
  EXPECT_EQ(LoadStringResource(&s, 3000, path), 1);
  EXPECT_EQ(s, "Letter");
  EXPECT_EQ(LoadStringResource(&s, 3000, fileName + ".bak"), 0);
}

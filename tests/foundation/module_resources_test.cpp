#include "telvanix/foundation/module_resources.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace telvanix;

namespace {

std::string DefaultStyleSheet() {
  CByteString bytes;
  if (!LoadBinaryResource(&bytes, MAKEINTRESOURCE(4001), nullptr)) return std::string();
  return std::string(static_cast<const char*>(bytes), static_cast<size_t>(bytes.GetLength()));
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
  const std::string css = DefaultStyleSheet();
  // (group comment, selector, declarations as stored)
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"BODY", "font-family:\"Times New Roman\"; font-size:12pt; margin-top : 2; margin-bottom : 2;"},
      {"TT", "font-family :\"system\";"}, {"I", "font-style: italic;"}, {"B", "font-weight: bold;"},
      {"U", "text-decoration: underline;"}, {"S", "text-decoration: line-through;"},
      {"STRIKE", "text-decoration: line-through;"}, {"BIG", "font-size: 14pt;"}, {"SMALL", "font-size: 10pt;"},
      {"STRONG", "font-weight: bold;"}, {"CODE", "font-family:\"Courier New\";"},
      {"SAMPLE", "font-family:\"Courier New\";"}, {"KDB", "font-family:\"Courier New\";"},
      {"VAR", "font-family:\"Courier New\"; font-style : italic;"}, {"ACRONYM", "font-family:\"Courier New\";"},
      {"EM", "font-style : italic;"}, {"CITE", "font-style : italic;"}, {"DFN", "font-style : italic;"},
      {"A", "color : blue ;"}, {"A:link", "color: blue;"}, {"A:visted", "color: red;"},
      {"A:actived", "color: lime;"}, {"SUB", "vertical-align: sub;"}, {"SUP", "vertical-align: super;"},
      {"P", ""}, {"DL", "margin-left : 20;"}, {"BLOCKQUOTE", "margin-left : 20;"},
      {"CENTER", "text-align : center;"}, {"ADDRESS", "font-style : italic;"},
      {"H1", "font-size : 14.0pt; font-weight : bold;  margin-top : 12;  margin-bottom : 12;"},
      {"H2", "font-size : 12.0pt; font-weight : bold;  margin-top : 10;  margin-bottom : 10;"},
      {"H3", "font-size : 10.0pt; font-weight : bold;  margin-top : 8;   margin-bottom : 8;"},
      {"H4", "font-size : 10.0pt; font-weight : bold;  margin-top : 6;   margin-bottom : 6;"},
      {"H5", "font-size : 10.0pt; font-weight : bold;  margin-top : 5;   margin-bottom : 5;"},
      {"H6", "font-size : 10.0pt; font-weight : bold;  margin-top : 4;   margin-bottom : 4;"},
      {"UL", "list-style-type : disc;"}, {"OL", "list-style-type : decimal;"}, {"DIR", "list-style-type : none;"},
      {"MENU", "list-style-type : upper-alpha;"}, {"PRE", "font-family :\"Courier New\"; font-size :10.0pt;"},
      {"XMP", "font-family :\"Courier New\";"}, {"LISTING", "font-family :\"Courier New\"; font-size : 8.0pt;"},
      {"PLAINTEXT", "font-family :\"Courier New\";"}, {"DT", "margin-left :-20;"}, {"DD", "margin-left : 20;"},
  };
  const std::vector<std::string> comments = {
      "/* Document */", "/* inine font */", "/* inline pharse */", "/* Tarnwick reserved pharse for DHTML */",
      "/*inine special */", "/* Block: Paragraph */", "/* Block Heading */", "/* Block list */",
      "/* Block preformat */", "/*Block embedded*/"};

  std::vector<std::pair<std::string, std::string>> rules;
  std::vector<std::string> seenComments;
  size_t blankLines = 0;
  std::istringstream in(css);
  for (std::string line; std::getline(in, line);) {
    line.erase(line.find_last_not_of("\r ") + 1);
    if (line.empty()) {
      ++blankLines;
    } else if (line.rfind("/*", 0) == 0) {
      seenComments.push_back(line);
    } else {
      const size_t open = line.find('{'), close = line.rfind('}');
      ASSERT_TRUE(open != std::string::npos && close != std::string::npos) << line;
      std::string selector = line.substr(0, open), body = line.substr(open + 1, close - open - 1);
      selector.erase(selector.find_last_not_of(' ') + 1);
      body.erase(body.find_last_not_of(' ') + 1);
      body.erase(0, body.find_first_not_of(' '));
      rules.emplace_back(selector, body);
    }
  }
  EXPECT_EQ(rules, expected);
  EXPECT_EQ(seenComments, comments);
  EXPECT_GE(blankLines, 9u);  // the groups are set apart
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

TEST(LoadStringResource, Texts) {
  const struct { UINT id; const char* text; } cases[] = {
      {3000, "Letter"}, {3001, "Arial"}, {3017, "QZTXDHTM.css"},
      {3003, " CITE.expandspot { font-style : normal;\n\t\tcolor : green;\n\t\tcursor: hand;}\n"},
      {3014, " .mvd-DFN-glosscollapsed { font-style : italic;\n\t\tfont-weight : normal;\n\t\tdisplay : 'none';"
             "\n\t\tcolor : blue;}\n"},
      {3018, "The following file needs to be writable:\n\n\"\"%s\"\"\n\nWould you like to make this file writable?"},
      {3019, "Unable to make the file\n\n\"\"%s\"\"\n\nwritable."},
      {3020, "The \"Special Effects\" component is not\nproperly installed.  Please reinstall and try again."},
  };
  for (const auto& c : cases) {
    CString s;
    EXPECT_EQ(LoadStringResource(&s, c.id, c.id == 3001 ? "telvanix.dll" : nullptr), 1) << c.id;
    EXPECT_EQ(s, c.text) << c.id;
  }
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

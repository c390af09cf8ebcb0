// The commands that only read (text, toc, roundtrip), the help of every
// command, and how the tool answers a command line it does not understand.
#include <nlohmann/json.hpp>

#include "tool/tool_runner.h"

namespace telvanix::tool_test {
namespace {

using Json = nlohmann::json;

const std::vector<std::string> kCommands = {"check", "text", "props", "tags", "format", "toc", "roundtrip"};

TEST(ToolUsage, HelpOfEveryCommandExitsZero) {
  ToolRun top = RunTool({"--help"});
  EXPECT_EQ(top.status, 0) << top;
  for (const std::string& c : kCommands) {
    EXPECT_NE(top.out.find("\n  " + c + " "), std::string::npos) << c << " missing from\n" << top.out;
    for (const char* flag : {"--help", "-h"}) {
      ToolRun r = RunTool({c, flag});
      EXPECT_EQ(r.status, 0) << c << " " << flag << "\n" << r;
      EXPECT_EQ(r.out.rfind("usage: telvanix " + c + " ", 0), 0u) << r;
      EXPECT_EQ(r.err, "") << r;
      // Every option the help explains is in its usage line.
      const std::string usage = r.out.substr(0, r.out.find('\n'));
      for (const std::string& line : Lines(r.out)) {
        if (line.rfind("  --", 0) == 0) {
          EXPECT_NE(usage.find(line.substr(2, line.find(' ', 2) - 2)), std::string::npos) << c << ": " << line;
        }
      }
    }
  }
}

TEST(ToolUsage, UnknownCommandOrOptionExitsTwo) {
  ToolRun none = RunTool({});
  EXPECT_EQ(none.status, 2) << none;
  EXPECT_EQ(none.out, "");
  ToolRun bogus = RunTool({"bogus"});
  EXPECT_EQ(bogus.status, 2) << bogus;
  EXPECT_EQ(bogus.err.rfind("telvanix: unknown command 'bogus'\n", 0), 0u) << bogus;
  for (const std::string& c : kCommands) {
    ToolRun r = RunTool({c, kLantern, "--bogus"});
    EXPECT_EQ(r.status, 2) << c << "\n" << r;
    EXPECT_EQ(r.out, "") << c;
    EXPECT_NE(r.err.find("--bogus"), std::string::npos) << c << "\n" << r;
    ToolRun bare = RunTool({c});  // every command wants an operand
    EXPECT_EQ(bare.status, 2) << c << "\n" << bare;
    EXPECT_EQ(bare.out, "") << c;
  }
  ToolRun value = RunTool({"check", kLantern, "--json=yes"});
  EXPECT_EQ(value.status, 2) << value;
  ToolRun twoRoots = RunTool({"check", kLantern, kLantern});
  EXPECT_EQ(twoRoots.status, 2) << twoRoots;
}

std::vector<Json> TextLines(const ToolRun& r) {
  std::vector<Json> pages;
  for (const std::string& line : Lines(r.out)) {
    Json j = Json::parse(line, nullptr, false);
    EXPECT_FALSE(j.is_discarded()) << line;
    if (!j.is_discarded()) pages.push_back(j);
  }
  return pages;
}

TEST(TextCommand, OneJsonLinePerTopicWithItsWords) {
  ToolRun r = RunTool({"text", kLantern});
  ASSERT_EQ(r.status, 0) << r;
  EXPECT_EQ(r.err, "");
  std::vector<Json> pages = TextLines(r);
  ASSERT_EQ(pages.size(), 12u) << r;
  std::vector<std::string> files;
  for (const Json& p : pages) {
    files.push_back(p.at("file"));
    const std::string text = p.at("text");
    // Markup, styles and scripts never reach the text.
    EXPECT_EQ(text.find('<'), std::string::npos) << text;
    EXPECT_EQ(text.find("x-condition"), std::string::npos) << text;
    EXPECT_EQ(text.find("&gt;"), std::string::npos) << text;
  }
  EXPECT_TRUE(std::is_sorted(files.begin(), files.end()));
  EXPECT_EQ(files.front(), kLantern + "/index.htm");

  auto page = [&](const std::string& rel) {
    for (const Json& p : pages)
      if (p.at("file") == kLantern + "/" + rel) return p;
    return Json();
  };
  Json printing = page("topics/printing.htm");
  EXPECT_EQ(printing.at("title"), "Printing notes");
  EXPECT_EQ(printing.at("keywords"), Json({"print"}));
  EXPECT_EQ(printing.at("text"),
            "Printing notes\r\nChoose File > Print. Each note starts on a new page.\r\n"
            "Cut along the dotted line to make index cards.");
  Json glossary = page("topics/glossary.htm");
  EXPECT_EQ(glossary.at("keywords"), Json({"glossary", "terms"}));
  EXPECT_NE(glossary.at("text").get<std::string>().find("A named collection of notes."), std::string::npos);
  Json index = page("index.htm");
  EXPECT_EQ(index.at("title"), "Welcome to Lantern Notes");
  EXPECT_EQ(index.at("keywords"), Json({"welcome", "overview"}));
  // An image's alternative text is a word a reader sees; the help-control
  // objects' parameters are not.
  EXPECT_NE(index.at("text").get<std::string>().find("Lantern logo Welcome"), std::string::npos) << index;
  EXPECT_EQ(index.at("text").get<std::string>().find("Splash"), std::string::npos) << index;

  ToolRun one = RunTool({"text", "--one-line", kLantern + "/topics/printing.htm"});
  ASSERT_EQ(one.status, 0) << one;
  EXPECT_EQ(TextLines(one).at(0).at("text"),
            "Printing notes Choose File > Print. Each note starts on a new page. "
            "Cut along the dotted line to make index cards.");
}

TEST(TextCommand, CodePageTextComesOutAsUtf8) {
  ScratchDir dir;
  WriteFile(dir / "caf\xC3\xA9.htm",
            "<html><head><title>Caf\xE9</title><meta name=\"keywords\" content=\"na\xEFve\"></head>"
            "<body><p>Cr\xE8me \x80 br\xFBl\xE9" "e</p></body></html>\n");
  ToolRun r = RunTool({"text", dir.path()});
  ASSERT_EQ(r.status, 0) << r;
  std::vector<Json> pages = TextLines(r);
  ASSERT_EQ(pages.size(), 1u) << r;
  EXPECT_EQ(pages[0].at("title"), "Caf\xC3\xA9");
  EXPECT_EQ(pages[0].at("keywords"), Json({"na\xC3\xAFve"}));
  EXPECT_EQ(pages[0].at("text"), "Cr\xC3\xA8me \xE2\x82\xAC br\xC3\xBBl\xC3\xA9" "e");
  EXPECT_EQ(pages[0].at("file"), dir / "caf\xC3\xA9.htm");
}

// Each page is read in the charset it declares, every reference to its
// Unicode character; a byte order mark is no text.
TEST(TextCommand, EachPageInItsOwnCharset) {
  ScratchDir dir;
  WriteFile(dir / "a.htm",
            "\xEF\xBB\xBF<html><head><title>Caf\xC3\xA9 &amp; co</title><meta name=\"keywords\" "
            "content=\"na&iuml;ve, &#26085;\"></head><body><p>a \xC3\x97 b &#128512; &#8220;q&#8221; &trade; "
            "&#X2019; \xC3\xA0&nbsp;la</p></body></html>");
  WriteFile(dir / "b.htm", "<html><head><meta charset=\"shift_jis\"></head><body>\x93\xFA\x96\x7B</body></html>");
  WriteFile(dir / "c.htm",
            "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset='utf-8'\"></head>"
            "<body>\xC3\xA9t\xC3\xA9</body></html>");
  ToolRun r = RunTool({"text", dir.path()});
  ASSERT_EQ(r.status, 0) << r;
  std::vector<Json> pages = TextLines(r);
  ASSERT_EQ(pages.size(), 3u) << r;
  EXPECT_EQ(pages[0].at("title"), "Caf\u00e9 & co");
  EXPECT_EQ(pages[0].at("keywords"), Json({"na\u00efve", "\u65e5"}));
  EXPECT_EQ(pages[0].at("text"), "a \u00d7 b \U0001F600 \u201cq\u201d \u2122 \u2019 \u00e0 la");
  EXPECT_EQ(pages[1].at("text"), "\u65e5\u672c");
  EXPECT_EQ(pages[2].at("text"), "\u00e9t\u00e9");
}

TEST(TocCommand, PrintsTheTreeAndChecksItsTopics) {
  ToolRun r = RunTool({"toc", "--check", kLantern + "/lantern.hhc"});
  EXPECT_EQ(r.status, 0) << r;
  std::vector<std::string> lines = Lines(r.out);
  ASSERT_GE(lines.size(), 3u) << r;
  EXPECT_EQ(lines[0], "Welcome -> index.htm");
  EXPECT_EQ(lines[1], "Getting started -> topics/getting_started.htm");
  EXPECT_EQ(lines[2], "  Creating a note -> topics/create_note.htm");
  EXPECT_NE(r.out.find("\n  Tags & notebooks -> topics/organize_tags.htm\n"), std::string::npos) << r;

  ToolRun index = RunTool({"toc", "--check", "--json", kLantern + "/lantern.hhk"});
  EXPECT_EQ(index.status, 0) << index;
  Json j = Json::parse(index.out);
  EXPECT_TRUE(j.at("problems").empty());
  bool sections = false;
  for (const Json& e : j.at("entries"))
    if (e.contains("sections")) sections = true;
  EXPECT_TRUE(sections) << "index entries carry their topics as sections";
}

TEST(TocCommand, CheckReportsMissingAndInexactTopics) {
  LanternCopy copy;
  ReplaceInFile(copy.file("lantern.hhc"), "value=\"topics/glossary.htm\"", "value=\"topics/missing.htm\"");
  ReplaceInFile(copy.file("lantern.hhc"), "value=\"topics/sync.htm\"", "value=\"topics/Sync.htm\"");
  ToolRun plain = RunTool({"toc", copy.file("lantern.hhc")});
  EXPECT_EQ(plain.status, 0) << "without --check nothing is checked\n" << plain;

  ToolRun r = RunTool({"toc", "--check", "--json", copy.file("lantern.hhc")});
  EXPECT_EQ(r.status, 1) << r;
  Json problems = Json::parse(r.out).at("problems");
  ASSERT_EQ(problems.size(), 2u) << r;
  std::map<std::string, std::string> byReference;
  for (const Json& p : problems) byReference[p.at("reference")] = p.at("problem");
  EXPECT_EQ(byReference["topics/missing.htm"], "topic does not exist");
  EXPECT_EQ(byReference["topics/Sync.htm"], "resolves only as topics/sync.htm");

  ToolRun text = RunTool({"toc", "--check", copy.file("lantern.hhc")});
  EXPECT_EQ(text.status, 1) << text;
  EXPECT_NE(text.out.find(copy.file("lantern.hhc") + ": entry "), std::string::npos) << text;
  EXPECT_NE(text.out.find(": topics/missing.htm: topic does not exist\n"), std::string::npos) << text;

  // Entries are relative to the file's own folder; --root says how far up
  // they may reach and still be inside the project.
  fs::create_directory(copy.file("toc"));
  WriteFile(copy.file("toc/part.hhc"),
            "<html><body><ul><li><object type=\"text/sitemap\"><param name=\"Name\" value=\"Sync\">"
            "<param name=\"Local\" value=\"../topics/sync.htm\"></object></ul></body></html>\n");
  ToolRun outside = RunTool({"toc", "--check", "--json", copy.file("toc/part.hhc")});
  EXPECT_EQ(outside.status, 1) << outside;
  EXPECT_EQ(Json::parse(outside.out).at("problems").at(0).at("problem"), "points outside the project") << outside;
  ToolRun rooted = RunTool({"toc", "--check", "--root", copy.root(), copy.file("toc/part.hhc")});
  EXPECT_EQ(rooted.status, 0) << rooted;
  EXPECT_EQ(rooted.out, "Sync -> ../topics/sync.htm\n");
}

// Entries are decoded, an index entry is named by its "Keyword", and
// bookmarks are checked as `check` checks them (see references.findings).
TEST(TocCommand, DecodesEntriesAndChecksBookmarks) {
  ToolRun r = RunTool({"toc", "--check", kReferences + "/index.hhk"});
  EXPECT_EQ(r.status, 1) << r;
  EXPECT_EQ(r.out, "Ampersand & more -> a&b.htm#nowhere\n" + kReferences +
                       "/index.hhk: entry 1: a&b.htm#nowhere: topic does not define the bookmark\n");
  ToolRun contents = RunTool({"toc", "--check", "--json", kReferences + "/contents.hhc"});
  EXPECT_EQ(contents.status, 1) << contents;
  EXPECT_EQ(Json::parse(contents.out).at("problems"),
            Json::parse(R"([{"entry": 3, "reference": "page.htm#nowhere",
                            "problem": "topic does not define the bookmark"}])"));
}

// A name's references keep characters outside the file's code page, and
// everything printed is UTF-8, problems included.
TEST(TocCommand, NamesAndReferencesAreUtf8) {
  ScratchDir dir;
  WriteFile(dir / "c.hhc", "<ul><li><object type=\"text/sitemap\"><param name=\"Name\" value=\"&#26085; &#8220;q&#8221; "
                           "caf\xE9\"><param name=\"Local\" value=\"caf\xE9.htm\"></object></ul>");
  ToolRun r = RunTool({"toc", "--check", "--json", dir / "c.hhc"});
  EXPECT_EQ(r.status, 1) << r;
  Json j = Json::parse(r.out);
  EXPECT_EQ(j.at("entries").at(0).at("name"), "\u65e5 \u201cq\u201d caf\u00e9");
  EXPECT_EQ(j.at("problems").at(0).at("reference"), "caf\u00e9.htm");
}

TEST(RoundtripCommand, SamplePagesComeBack) {
  ToolRun r = RunTool({"roundtrip", "--json", kLantern});
  ASSERT_EQ(r.status, 0) << r;
  Json j = Json::parse(r.out);
  EXPECT_EQ(j.at("pages"), 12);
  EXPECT_EQ(j.at("outcomes").at("differs"), 0);
  EXPECT_EQ(j.at("outcomes").at("unreadable"), 0);
  // Eleven pages end in one LF after "</html>", dropped by rule; the
  // glossary ends in CR LF, two bytes, and is kept whole.
  EXPECT_EQ(j.at("outcomes").at("trailing-byte"), 11);
  EXPECT_EQ(j.at("outcomes").at("identical"), 1);
  for (const Json& p : j.at("not_identical")) {
    EXPECT_EQ(p.at("outcome"), "trailing-byte");
    EXPECT_EQ(p.at("bytes_lost"), 1);
    EXPECT_EQ(p.at("first_difference"), fs::file_size(p.at("page").get<std::string>()) - 1);
  }
  ToolRun text = RunTool({"roundtrip", kLantern});
  EXPECT_EQ(text.status, 0) << text;
  EXPECT_EQ(Lines(text.out).back(),
            "12 pages: 1 identical, 0 lost a leading line break by rule, 11 lost one trailing byte by rule, "
            "0 lost an unterminated tail by rule, 0 differ, 0 unreadable");
}

TEST(RoundtripCommand, LossesByRuleAreApartAndEmptyPageIsWhole) {
  ScratchDir dir;
  WriteFile(dir / "tail.htm", "<html><body><p>x</p></body></html>\n<!-- never closed");
  WriteFile(dir / "empty.htm", "");
  WriteFile(dir / "lead.htm", "\r\n<html><body><p>x</p></body></html>");
  WriteFile(dir / "both.htm", "\n<html><body><p>x</p></body></html>\n");
  ToolRun r = RunTool({"roundtrip", "--json", dir.path()});
  EXPECT_EQ(r.status, 0) << r;
  Json j = Json::parse(r.out);
  EXPECT_EQ(j.at("pages"), 4);
  EXPECT_EQ(j.at("outcomes").at("identical"), 1) << j.dump(2);
  EXPECT_EQ(j.at("outcomes").at("unterminated-tail"), 1) << j.dump(2);
  EXPECT_EQ(j.at("outcomes").at("leading-line-break"), 1) << j.dump(2);
  EXPECT_EQ(j.at("outcomes").at("trailing-byte"), 1) << j.dump(2);
}

}  // namespace
}  // namespace telvanix::tool_test

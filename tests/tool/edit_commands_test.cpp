// The commands that write pages (tags, props, format) on copies of the
// sample: every file is compared byte for byte before and after, so an edit
// that touches a page it should not, or a byte beyond what it changes, fails.
// Edits of single pages are cases under tests/data/tool.
#include <nlohmann/json.hpp>

#include <regex>
#include <set>

#include "tool/tool_runner.h"

namespace telvanix::tool_test {
namespace {

using Json = nlohmann::json;

std::vector<std::string> SplitTags(const std::string& text) {
  std::vector<std::string> tags;
  std::stringstream in(text);
  for (std::string t; std::getline(in, t, ',');) {
    size_t b = t.find_first_not_of(" \t"), e = t.find_last_not_of(" \t");
    if (b != std::string::npos) tags.push_back(t.substr(b, e - b + 1));
  }
  return tags;
}

// Build tags a line carries, read by the test itself: a META "build tags"
// and "x-condition" style properties.
std::multiset<std::string> TagsInLine(const std::string& line) {
  static const std::regex meta(R"re(<meta name="build tags" content="([^"]*)")re", std::regex::icase);
  static const std::regex condition(R"re(x-condition\s*:\s*([^;"]*))re", std::regex::icase);
  std::multiset<std::string> tags;
  for (const std::regex* re : {&meta, &condition})
    for (std::sregex_iterator it(line.begin(), line.end(), *re), end; it != end; ++it)
      for (const std::string& t : SplitTags((*it)[1])) tags.insert(t);
  return tags;
}

bool UsesTag(const std::string& page, const std::string& tag) {
  for (const std::string& line : Lines(page))
    if (TagsInLine(line).count(tag)) return true;
  return false;
}

// The line with attribute values of META content and style blanked, so
// that two lines compare equal when only those values differ.
std::string Masked(const std::string& line) {
  static const std::regex values(R"re((content|style)="[^"]*")re", std::regex::icase);
  return std::regex_replace(line, values, "$1=\"\"");
}

// Checks that `after` differs from `before` only where `oldTag` was: each
// differing line carried the tag, differs only inside a META content or
// style value, and carries the same tags with oldTag renamed to newTag
// (removed when newTag is empty). A META whose only tag was removed may go.
void ExpectOnlyTagChanged(const std::string& name, const std::string& before, const std::string& after,
                          const std::string& oldTag, const std::string& newTag) {
  std::vector<std::string> a = Lines(before), b = Lines(after);
  size_t i = 0, j = 0, changedLines = 0;
  while (i < a.size()) {
    std::multiset<std::string> tagsBefore = TagsInLine(a[i]);
    std::multiset<std::string> wanted = tagsBefore;
    wanted.erase(oldTag);
    if (!newTag.empty() && tagsBefore.count(oldTag)) wanted.insert(newTag);
    if (j < b.size() && a[i] == b[j]) {
      EXPECT_EQ(tagsBefore.count(oldTag), 0u) << name << ": line kept the tag: " << a[i];
      ++i, ++j;
    } else if (j < b.size() && tagsBefore.count(oldTag) && Masked(a[i]) == Masked(b[j])) {
      EXPECT_EQ(TagsInLine(b[j]), wanted) << name << ": " << a[i] << " became " << b[j];
      ++i, ++j, ++changedLines;
    } else if (newTag.empty() && wanted.empty() && a[i].find("name=\"build tags\"") != std::string::npos) {
      ++i, ++changedLines;  // the META lost its last tag
    } else {
      ADD_FAILURE() << name << ": line " << i + 1 << " changed beyond the tag:\n  " << a[i] << "\n  "
                    << (j < b.size() ? b[j] : "(end of file)");
      return;
    }
  }
  EXPECT_EQ(j, b.size()) << name << ": lines were added";
  EXPECT_GT(changedLines, 0u) << name;
  // The final line break survives the edit.
  EXPECT_EQ(before.back(), after.back()) << name;
}

struct TagEdit {
  std::vector<std::string> args;
  std::string oldTag, newTag;
  size_t pagesUsing;  // in the sample, as a sanity check on the sample itself
};

// Readable test names: "--rename print paper".
void PrintTo(const TagEdit& edit, std::ostream* out) {
  for (size_t i = 0; i < edit.args.size(); ++i) *out << (i ? " " : "") << edit.args[i];
}

class TagsEdit : public ::testing::TestWithParam<TagEdit> {};

TEST_P(TagsEdit, ChangesExactlyThePagesUsingTheTag) {
  const TagEdit& edit = GetParam();
  LanternCopy copy;
  auto before = Snapshot(copy.root());
  std::set<std::string> using_;
  for (const auto& [name, bytes] : before)
    if (name.size() > 4 && name.substr(name.size() - 4) == ".htm" && UsesTag(bytes, edit.oldTag)) using_.insert(name);
  ASSERT_EQ(using_.size(), edit.pagesUsing);

  std::vector<std::string> args = {"tags", copy.root()};
  args.insert(args.end(), edit.args.begin(), edit.args.end());
  ToolRun r = RunTool(args);
  ASSERT_EQ(r.status, 0) << r;
  EXPECT_EQ(r.err, "");
  std::set<std::string> reported;
  for (const std::string& line : Lines(r.out))
    if (line.rfind("changed ", 0) == 0) reported.insert(fs::relative(line.substr(8), copy.root()).string());
  EXPECT_EQ(reported, using_) << r;
  EXPECT_EQ(Lines(r.out).back(), std::to_string(using_.size()) + " of 12 pages changed");

  auto after = Snapshot(copy.root());
  ASSERT_EQ(after.size(), before.size());
  for (const auto& [name, bytes] : before) {
    if (using_.count(name))
      ExpectOnlyTagChanged(name, bytes, after[name], edit.oldTag, edit.newTag);
    else
      EXPECT_EQ(after[name], bytes) << name << " does not use the tag but changed";
  }

  // The listing reads the change back, and a second run has nothing to do.
  ToolRun list = RunTool({"tags", copy.root(), "--json"});
  ASSERT_EQ(list.status, 0) << list;
  for (const std::string& line : Lines(list.out)) {
    Json j = Json::parse(line);
    for (const char* part : {"topic", "elements"})
      for (const Json& t : j.at(part)) EXPECT_NE(t, edit.oldTag) << line;
  }
  ToolRun again = RunTool(args);
  EXPECT_EQ(again.status, 0) << again;
  EXPECT_EQ(Lines(again.out).back(), "0 of 12 pages changed") << again;
  EXPECT_EQ(Snapshot(copy.root()), after);
}

INSTANTIATE_TEST_SUITE_P(Sample, TagsEdit,
                         ::testing::Values(TagEdit{{"--rename", "print", "paper"}, "print", "paper", 3},
                                           TagEdit{{"--remove", "online"}, "online", "", 2},
                                           TagEdit{{"--remove", "print"}, "print", "", 3}));

Json ReadProps(const std::string& page) {
  ToolRun r = RunTool({"props", "--json", page});
  EXPECT_EQ(r.status, 0) << r;
  Json j = Json::parse(r.out, nullptr, false);
  EXPECT_FALSE(j.is_discarded()) << r;
  return j;
}

TEST(PropsCommand, SetAuthorThenReadBack) {
  LanternCopy copy;
  auto before = Snapshot(copy.root());
  // index.htm has an author already; glossary.htm has none.
  ToolRun r = RunTool({"props", copy.file("index.htm"), copy.file("topics/glossary.htm"), "--set", "author=X"});
  ASSERT_EQ(r.status, 0) << r;
  EXPECT_EQ(r.out, "changed " + copy.file("index.htm") + "\nchanged " + copy.file("topics/glossary.htm") +
                       "\n2 of 2 pages changed\n");
  EXPECT_EQ(ReadProps(copy.file("index.htm")),
            Json({{"file", copy.file("index.htm")}, {"author", "X"}, {"status", "Reviewed"}}));
  EXPECT_EQ(ReadProps(copy.file("topics/glossary.htm")),
            Json({{"file", copy.file("topics/glossary.htm")}, {"author", "X"}}));

  auto after = Snapshot(copy.root());
  for (const auto& [name, bytes] : before) {
    if (name != "index.htm" && name != "topics/glossary.htm") {
      EXPECT_EQ(after[name], bytes) << name;
    }
  }
  // index.htm: the one META changes in place.
  std::string expected = before["index.htm"];
  expected.replace(expected.find("content=\"R. Okafor\""), 19, "content=\"X\"");
  EXPECT_EQ(after["index.htm"], expected);
  // glossary.htm: every old line is kept, in order, plus one new META.
  std::vector<std::string> a = Lines(before["topics/glossary.htm"]), b = Lines(after["topics/glossary.htm"]);
  ASSERT_EQ(b.size(), a.size() + 1);
  size_t extra = 0;
  for (size_t i = 0, j = 0; j < b.size(); ++j) {
    if (i < a.size() && a[i] == b[j]) {
      ++i;
    } else {
      ++extra;
      EXPECT_NE(b[j].find("<meta name=\"topic-author\" content=\"X\">"), std::string::npos) << b[j];
    }
  }
  EXPECT_EQ(extra, 1u);

  // Setting the same value again writes nothing.
  ToolRun again = RunTool({"props", copy.root(), "--set", "author=X"});
  EXPECT_EQ(again.status, 0) << again;
  EXPECT_EQ(again.out.find("changed " + copy.file("index.htm")), std::string::npos) << again;
  EXPECT_EQ(Lines(again.out).back(), "10 of 12 pages changed") << again;
}

// Identity of a file on disk: an atomic rewrite gives a new inode.
std::map<std::string, std::pair<ino_t, long long>> Stamps(const std::string& root) {
  std::map<std::string, std::pair<ino_t, long long>> stamps;
  for (const auto& e : fs::recursive_directory_iterator(root)) {
    struct stat st {};
    if (e.is_regular_file() && ::stat(e.path().c_str(), &st) == 0)
      stamps[fs::relative(e.path(), root).string()] = {st.st_ino, st.st_mtim.tv_sec * 1000000000LL + st.st_mtim.tv_nsec};
  }
  return stamps;
}

std::set<std::string> Reported(const ToolRun& r, const std::string& prefix, const std::string& root) {
  std::set<std::string> pages;
  for (const std::string& line : Lines(r.out))
    if (line.rfind(prefix, 0) == 0) pages.insert(fs::relative(line.substr(prefix.size()), root).string());
  return pages;
}

TEST(FormatCommand, KeepsPagesWhoseWordsWouldJoinUnlessForced) {
  LanternCopy copy;
  auto before = Snapshot(copy.root());
  // The layout trims blanks around text; pages where that joins words stay as they are.
  ToolRun kept = RunTool({"format", copy.root()});
  ASSERT_EQ(kept.status, 0) << kept;
  auto afterKept = Snapshot(copy.root());
  std::set<std::string> formatted;
  for (const auto& [name, bytes] : before)
    if (afterKept[name] != bytes) formatted.insert(name);
  EXPECT_EQ(Reported(kept, "formatted ", copy.root()), formatted) << kept;
  EXPECT_EQ(formatted.count("topics/search.htm"), 0u) << "\"box <img>\" would lose its blank";
  EXPECT_NE(kept.out.find("kept "), std::string::npos) << kept;
  for (const std::string& name : formatted) {
    ToolRun text = RunTool({"text", copy.file(name)});
    ToolRun original = RunTool({"text", kLantern + "/" + name});
    EXPECT_EQ(Json::parse(text.out).at("text"), Json::parse(original.out).at("text")) << name;
  }
}

TEST(FormatCommand, WritesOnlyPagesWhoseBytesChangeAndSettles) {
  LanternCopy copy;
  // One page formatted beforehand: the folder run must leave it alone.
  ToolRun first = RunTool({"format", copy.file("topics/sync.htm"), "--force"});
  ASSERT_EQ(first.status, 0) << first;
  auto before = Snapshot(copy.root());
  auto stampsBefore = Stamps(copy.root());

  ToolRun dry = RunTool({"format", copy.root(), "--dry-run", "--force"});
  ASSERT_EQ(dry.status, 0) << dry;
  EXPECT_EQ(Snapshot(copy.root()), before) << "--dry-run wrote";
  EXPECT_EQ(Stamps(copy.root()), stampsBefore);

  ToolRun r = RunTool({"format", copy.root(), "--force"});
  ASSERT_EQ(r.status, 0) << r;
  auto after = Snapshot(copy.root());
  auto stampsAfter = Stamps(copy.root());
  std::set<std::string> changed, rewritten;
  for (const auto& [name, bytes] : before) {
    if (after[name] != bytes) changed.insert(name);
    if (stampsAfter[name] != stampsBefore[name]) rewritten.insert(name);
  }
  EXPECT_EQ(changed.count("topics/sync.htm"), 0u);
  EXPECT_EQ(changed.size(), 11u);
  for (const std::string& name : changed) EXPECT_EQ(fs::path(name).extension(), ".htm") << name;
  EXPECT_EQ(rewritten, changed);
  EXPECT_EQ(Reported(r, "formatted ", copy.root()), changed) << r;
  EXPECT_EQ(Reported(dry, "would format ", copy.root()), changed) << dry;
  EXPECT_EQ(Lines(r.out).back(), "11 of 12 pages changed");

  ToolRun again = RunTool({"format", copy.root(), "--force"});
  EXPECT_EQ(again.status, 0) << again;
  EXPECT_EQ(again.out, "0 of 12 pages changed\n") << again;
  EXPECT_EQ(Snapshot(copy.root()), after);
  EXPECT_EQ(Stamps(copy.root()), stampsAfter);

  // Formatting moves no reference: the project checks as before.
  ToolRun check = RunTool({"check", copy.root(), "--json"});
  EXPECT_EQ(check.status, 1) << check;
  EXPECT_EQ(Json::parse(check.out).at("problems"), 4) << check;
}

// Pages of several megabytes take their words while they save: the outcome
// must be that of a small page of the same kind (and, under the thread
// sanitizer, free of races).
TEST(FormatCommand, LargePagesKeepWhatAReaderSees) {
  ScratchDir dir;
  auto large = [&](const std::string& name, const std::string& unit) {
    std::string page = "<html><head><title>t</title></head><body>\n";
    while (page.size() < (5u << 20)) page += unit;
    WriteFile(dir / name, page + "</body></html>\n");
  };
  large("joins.htm", "<p>Read <b>this</b> now</p>\n");
  large("pre.htm", "<p>code</p>\n<pre>\n  indented;\n</pre>\n");
  large("plain.htm", "<div>\n<p>one</p>\n      <p>two</p></div>\n");
  ToolRun r = RunTool({"format", dir.path(), "--dry-run"}, 300);
  ASSERT_EQ(r.status, 0) << r;
  EXPECT_NE(r.out.find("kept " + (dir / "joins.htm") + ": the layout would join words"), std::string::npos) << r;
  EXPECT_NE(r.out.find("kept " + (dir / "pre.htm") + ": the layout would change preformatted text"),
            std::string::npos)
      << r;
  EXPECT_NE(r.out.find("would format " + (dir / "plain.htm") + "\n"), std::string::npos) << r;
  EXPECT_NE(r.out.find("1 of 3 pages would change, 2 kept"), std::string::npos) << r;
}

}  // namespace
}  // namespace telvanix::tool_test

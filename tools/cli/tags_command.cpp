// telvanix tags DIR [--rename OLD NEW | --remove TAG]: list the build tags of
// a project's topics and elements, or rename or remove one everywhere.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <map>

#include "cli/attribute_text.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix tags PAGE|DIR... [--rename OLD NEW | --remove TAG] [--json]\n"
    "\n"
    "Without an option, lists the build tags of every topic (its META \"build\n"
    "tags\") and of its elements (the \"x-condition\" style property).\n"
    "--rename and --remove change a tag (letter case matters) in every page\n"
    "that uses it, and save exactly those pages (atomically); pages that do not\n"
    "use the tag are not touched. NEW may not hold \",\", \";\", quotes, \"&\",\n"
    "\"<\", \">\" or \"\\\" (it also goes into style attributes). A changed page is\n"
    "read back before it is written; one where the change would not read back\n"
    "as made is left as it was and named.\n"
    "\n"
    "  --json   the listing as one JSON object per page\n"
    "\n"
    "Exit status: 0 done, 1 some page cannot take the change (named, left as it\n"
    "was), 2 usage or I/O error.\n";

struct PageTags {
  std::vector<std::string> topic, elements;
  bool operator==(const PageTags&) const = default;
};

std::vector<std::string> SplitTags(CHtmlFileEx& doc, const std::string& text) {
  std::vector<std::string> out;
  CStringList items;
  doc.ParseBuildTags(text.c_str(), items);
  for (POSITION p = items.GetHeadPosition(); p;) out.push_back(items.GetNext(p).str());
  return out;
}

std::string JoinTags(const std::vector<std::string>& tags) {
  std::string joined;
  for (const std::string& t : tags) joined += (joined.empty() ? "" : ",") + t;
  return joined;
}

// The topic's tags are attribute text (references decoded); an element's
// are a style value in the page's code page.
std::string TopicTagText(CHtmlFileEx& doc, UINT codePage) {
  CString text;
  return doc.GetTopicBuildTags(text) ? AttributeValueToUtf8(text, codePage) : std::string();
}

PageTags ReadTags(CHtmlFileEx& doc, UINT codePage) {
  PageTags t;
  t.topic = SplitTags(doc, TopicTagText(doc, codePage));
  unsigned int index = 0;
  for (CString s = doc.GetFirstInlineBuildTags(index, nullptr); !s.IsEmpty(); s = doc.GetNextInlineBuildTags(index, nullptr))
    for (const std::string& tag : SplitTags(doc, PageTextToUtf8(s, codePage))) t.elements.push_back(tag);
  return t;
}

// `tags` with every `oldTag` renamed (removed when newTag is null); false
// when none of them is the tag.
bool EditTags(std::vector<std::string>& tags, const std::string& oldTag, const std::string* newTag) {
  std::vector<std::string> kept;
  for (const std::string& t : tags) {
    if (t != oldTag)
      kept.push_back(t);
    else if (newTag)
      kept.push_back(*newTag);
  }
  const bool found = kept != tags;
  tags.swap(kept);
  return found;
}

// Changes the tag in the topic's list and in exactly the elements that carry
// it. (The library's ReplaceBuildTag rewrites every style holding build tags,
// which would reformat styles that never mentioned the tag.)
bool ChangeTag(CHtmlFileEx& doc, UINT codePage, const std::string& oldTag, const std::string* newTag) {
  std::vector<std::string> tags = SplitTags(doc, TopicTagText(doc, codePage));
  if (EditTags(tags, oldTag, newTag) && !doc.SetTopicBuildTags(ToAttributeValue(JoinTags(tags), codePage).c_str()))
    return false;
  std::vector<POSITION> elements;
  unsigned int index = 0;
  POSITION pos = nullptr;
  for (CString s = doc.GetFirstInlineBuildTags(index, &pos); !s.IsEmpty(); s = doc.GetNextInlineBuildTags(index, &pos)) {
    tags = SplitTags(doc, PageTextToUtf8(s, codePage));
    if (EditTags(tags, oldTag, newTag)) elements.push_back(pos);
  }
  for (POSITION p : elements) {
    CHtmlTagItem* tag = doc.GetTokenList()->GetTagItem(p);
    CString text;
    if (!tag || !doc.GetInlineBuildTags(tag, text)) return false;
    tags = SplitTags(doc, PageTextToUtf8(text, codePage));
    EditTags(tags, oldTag, newTag);
    const std::string joined = Utf8ToPageText(JoinTags(tags), codePage);
    if (!doc.SetInlineBuildTags(tag, joined.empty() ? nullptr : joined.c_str())) return false;
  }
  return true;
}

struct PageOutcome {
  PageTags tags;
  int written = 0;  // 1 changed, 0 unchanged, -1 failed, -2 the page cannot take the change
  std::string error;
};

PageOutcome HandlePage(const std::string& path, const std::string& oldTag, const std::string* newTag) {
  PageOutcome o;
  OpenTopic topic;
  if (!OpenTopicPage(path, topic, o.error)) {
    o.written = -1;
    return o;
  }
  const UINT codePage = PageCodePage(*topic.doc);
  o.tags = ReadTags(*topic.doc, codePage);
  if (oldTag.empty()) return o;
  PageTags wanted = o.tags;
  const bool inTopic = EditTags(wanted.topic, oldTag, newTag);
  const bool inElements = EditTags(wanted.elements, oldTag, newTag);
  if (!inTopic && !inElements) return o;
  if (!ChangeTag(*topic.doc, codePage, oldTag, newTag)) {
    o.written = -2;
    o.error = path + ": the build tag could not be changed; left as it was";
    return o;
  }
  o.written = SaveTopicIfChanged(path, topic, o.error, [&](CHtmlFileEx& reread) {
    return ReadTags(reread, codePage) == wanted ? std::string()
                                                : std::string("the build tags would not read back as changed");
  });
  return o;
}

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"json", 0}, {"rename", 2}, {"remove", 1}}, kHelp, cl); rc >= 0) return rc;
  if ((cl.Has("rename") && cl.Has("remove")) || cl.Values("rename").size() > 2 ||
      cl.Values("remove").size() > 1) {
    std::fputs(kHelp, stderr);
    return kExitError;
  }
  std::string oldTag;
  std::string newTag;
  const std::string* target = nullptr;
  if (cl.Has("rename")) {
    oldTag = cl.Values("rename")[0];
    newTag = cl.Values("rename")[1];
    target = &newTag;
    // The name also goes into style attributes, where these would end the
    // value or the declaration.
    if (newTag.empty() || newTag.find_first_of(",;\"'&<>\\") != std::string::npos) {
      PrintError("--rename wants a new tag name without \",\", \";\", quotes, \"&\", \"<\", \">\" or \"\\\"");
      return kExitError;
    }
  } else if (cl.Has("remove")) {
    oldTag = cl.Values("remove")[0];
  }
  if ((cl.Has("rename") || cl.Has("remove")) && oldTag.empty()) {
    PrintError("the tag to change may not be empty");
    return kExitError;
  }
  std::vector<std::string> errors;
  std::vector<std::string> pages = ExpandTopicOperands(cl.operands(), errors);
  std::vector<PageOutcome> results(pages.size());
  ParallelFor(pages.size(), [&](size_t i) { results[i] = HandlePage(pages[i], oldTag, target); }, "tags");

  const bool changing = !oldTag.empty();
  size_t changed = 0;
  std::vector<std::string> refused;
  for (size_t i = 0; i < pages.size(); ++i) {
    const PageOutcome& o = results[i];
    if (o.written < 0) {
      (o.written == -2 ? refused : errors).push_back(o.error);
      continue;
    }
    if (changing) {
      if (o.written == 1) {
        ++changed;
        std::printf("changed %s\n", pages[i].c_str());
      }
      continue;
    }
    if (o.tags.topic.empty() && o.tags.elements.empty()) continue;
    if (cl.Has("json")) {
      nlohmann::json j = {{"file", FileNameToUtf8(pages[i])}, {"topic", nlohmann::json::array()},
                          {"elements", nlohmann::json::array()}};
      for (const std::string& t : o.tags.topic) j["topic"].push_back(t);
      for (const std::string& t : o.tags.elements) j["elements"].push_back(t);
      std::printf("%s\n", j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
    } else {
      std::string line = pages[i] + ":";
      for (const std::string& t : o.tags.topic) line += " " + t;
      if (!o.tags.elements.empty()) {
        line += " | elements:";
        for (const std::string& t : o.tags.elements) line += " " + t;
      }
      std::printf("%s\n", line.c_str());
    }
  }
  return FinishPageEdits(changing, changed, pages.size(), refused, errors);
}

}  // namespace

extern const Command kTagsCommand = {"tags", "list, rename or remove build tags across a project", Run};

}  // namespace telvanix::tool

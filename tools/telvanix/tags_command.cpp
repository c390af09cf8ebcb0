// telvanix tags DIR [--rename OLD NEW | --remove TAG]: list the build tags of
// a project's topics and elements, or rename or remove one everywhere.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <map>

#include "telvanix/command_line.h"
#include "telvanix/commands.h"
#include "telvanix/page_files.h"
#include "telvanix/parallel.h"
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
    "use the tag are not touched.\n"
    "\n"
    "  --json   the listing as one JSON object per page\n"
    "\n"
    "Exit status: 0 done, 2 usage or I/O error.\n";

struct PageTags {
  std::vector<std::string> topic, elements;
};

PageTags ReadTags(CHtmlFileEx& doc) {
  PageTags t;
  auto split = [&](const CString& text, std::vector<std::string>& out) {
    CStringList items;
    doc.ParseBuildTags(text, items);
    for (POSITION p = items.GetHeadPosition(); p;) out.push_back(items.GetNext(p).str());
  };
  CString text;
  if (doc.GetTopicBuildTags(text)) split(text, t.topic);
  unsigned int index = 0;
  for (CString s = doc.GetFirstInlineBuildTags(index, nullptr); !s.IsEmpty(); s = doc.GetNextInlineBuildTags(index, nullptr))
    split(s, t.elements);
  return t;
}

// `text` with every `oldTag` renamed (removed when newTag is null) into
// `joined`; false when the text does not carry the tag.
bool EditTagList(CHtmlFileEx& doc, const CString& text, const std::string& oldTag, const std::string* newTag,
                 CString& joined) {
  CStringList items, kept;
  doc.ParseBuildTags(text, items);
  bool found = false;
  for (POSITION p = items.GetHeadPosition(); p;) {
    CString t = items.GetNext(p);
    if (t.str() != oldTag) {
      kept.AddTail(t);
    } else {
      found = true;
      if (newTag) kept.AddTail(CString(newTag->c_str()));
    }
  }
  if (found) doc.MakeBuildTags(&kept, joined);
  return found;
}

// Changes the tag in the topic's list and in exactly the elements that carry
// it. (The library's ReplaceBuildTag rewrites every style holding build tags,
// which would reformat styles that never mentioned the tag.)
bool ChangeTag(CHtmlFileEx& doc, const std::string& oldTag, const std::string* newTag) {
  CString text, joined;
  if (doc.GetTopicBuildTags(text) && EditTagList(doc, text, oldTag, newTag, joined) &&
      !doc.SetTopicBuildTags(joined))
    return false;
  std::vector<POSITION> elements;
  unsigned int index = 0;
  POSITION pos = nullptr;
  for (CString s = doc.GetFirstInlineBuildTags(index, &pos); !s.IsEmpty(); s = doc.GetNextInlineBuildTags(index, &pos))
    if (EditTagList(doc, s, oldTag, newTag, joined)) elements.push_back(pos);
  for (POSITION p : elements) {
    CHtmlTagItem* tag = doc.GetTokenList()->GetTagItem(p);
    if (!tag || !doc.GetInlineBuildTags(tag, text) || !EditTagList(doc, text, oldTag, newTag, joined)) return false;
    if (!doc.SetInlineBuildTags(tag, joined.IsEmpty() ? nullptr : static_cast<const char*>(joined))) return false;
  }
  return true;
}

struct PageOutcome {
  PageTags tags;
  int written = 0;
  std::string error;
};

PageOutcome HandlePage(const std::string& path, const std::string& oldTag, const std::string* newTag) {
  PageOutcome o;
  OpenTopic topic;
  if (!OpenTopicPage(path, topic, o.error)) {
    o.written = -1;
    return o;
  }
  o.tags = ReadTags(*topic.doc);
  if (oldTag.empty()) return o;
  auto uses = [&](const std::vector<std::string>& v) { return std::find(v.begin(), v.end(), oldTag) != v.end(); };
  if (!uses(o.tags.topic) && !uses(o.tags.elements)) return o;
  if (!ChangeTag(*topic.doc, oldTag, newTag)) {
    o.written = -1;
    o.error = path + ": the build tag could not be changed";
    return o;
  }
  o.written = SaveTopicIfChanged(path, topic, o.error);
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
    if (newTag.empty() || newTag.find(',') != std::string::npos) {
      PrintError("--rename wants a new tag name without \",\"");
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
  for (size_t i = 0; i < pages.size(); ++i) {
    const PageOutcome& o = results[i];
    if (o.written < 0) {
      errors.push_back(o.error);
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
      for (const std::string& t : o.tags.topic) j["topic"].push_back(ToUtf8(t.c_str()));
      for (const std::string& t : o.tags.elements) j["elements"].push_back(ToUtf8(t.c_str()));
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
  if (changing) std::printf("%zu of %zu pages changed\n", changed, pages.size());
  for (const std::string& e : errors) PrintError(e);
  return errors.empty() ? kExitClean : kExitError;
}

}  // namespace

extern const Command kTagsCommand = {"tags", "list, rename or remove build tags across a project", Run};

}  // namespace telvanix::tool

// telvanix props PATH... [--set NAME=VALUE]...: read and change the topic
// properties (author, status, priority, ...) and topic build tags.
#include <nlohmann/json.hpp>

#include <strings.h>

#include <climits>
#include <cstdio>
#include <cstdlib>

#include "telvanix/command_line.h"
#include "telvanix/commands.h"
#include "telvanix/page_files.h"
#include "telvanix/parallel.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix props PAGE|DIR... [--set NAME=VALUE]... [--json]\n"
    "\n"
    "Without --set, prints the topic properties of each page. With --set,\n"
    "changes them and saves each page whose bytes change (atomically); an\n"
    "empty VALUE removes a property. Properties (NAME):\n"
    "  author, status, comment, id, signature      text\n"
    "  priority, time-estimate                     whole number\n"
    "  check-list                                  items separated by \",\"\n"
    "  build-tags                                  tags separated by \",\"\n"
    "\n"
    "  --json   print the properties as one JSON object per page\n"
    "\n"
    "Exit status: 0 done, 2 usage or I/O error.\n";

enum class PropType { kText, kNumber, kList, kBuildTags };

struct Property {
  const char* name;
  PropType type;
  int (CHtmlFileEx::*getText)(CString&);
  int (CHtmlFileEx::*setText)(const char*);
  int (CHtmlFileEx::*getNumber)(int&);
  int (CHtmlFileEx::*setNumber)(int);
  const char* meta = nullptr;  // META name, for removing what the library can only set
};

const Property kProperties[] = {
    {"author", PropType::kText, &CHtmlFileEx::GetTopicAuthor, &CHtmlFileEx::SetTopicAuthor, nullptr, nullptr},
    {"status", PropType::kText, &CHtmlFileEx::GetTopicStatus, &CHtmlFileEx::SetTopicStatus, nullptr, nullptr},
    {"priority", PropType::kNumber, nullptr, nullptr, &CHtmlFileEx::GetTopicPriority, &CHtmlFileEx::SetTopicPriority,
     "topic-priority"},
    {"time-estimate", PropType::kNumber, nullptr, nullptr, &CHtmlFileEx::GetTopicTimeEstimate,
     &CHtmlFileEx::SetTopicTimeEstimate, "topic-time-estimate"},
    {"check-list", PropType::kList, nullptr, nullptr, nullptr, nullptr, "topic-check-list"},
    {"comment", PropType::kText, &CHtmlFileEx::GetTopicComment, &CHtmlFileEx::SetTopicComment, nullptr, nullptr},
    {"id", PropType::kText, &CHtmlFileEx::GetTopicId, &CHtmlFileEx::SetTopicId, nullptr, nullptr},
    {"signature", PropType::kText, &CHtmlFileEx::GetTopicSourceDigitalSignature,
     &CHtmlFileEx::SetTopicSourceDigitalSignature, nullptr, nullptr},
    {"build-tags", PropType::kBuildTags, &CHtmlFileEx::GetTopicBuildTags, &CHtmlFileEx::SetTopicBuildTags, nullptr,
     nullptr},
};

const Property* FindProperty(const std::string& name) {
  for (const Property& p : kProperties)
    if (name == p.name) return &p;
  return nullptr;
}

// The property's value as text, or false when the page does not carry it.
bool ReadProperty(CHtmlFileEx& doc, const Property& p, std::string& value) {
  CString text;
  switch (p.type) {
    case PropType::kText:
    case PropType::kBuildTags:
      if (!(doc.*p.getText)(text)) return false;
      value = text.str();
      return true;
    case PropType::kNumber: {
      int n = -1;
      if (!(doc.*p.getNumber)(n)) return false;
      value = std::to_string(n);
      return true;
    }
    case PropType::kList: {
      CStringList items;
      if (!doc.GetTopicCheckList(items)) return false;
      CString joined;
      doc.MakeBuildTags(&items, joined);
      value = joined.str();
      return true;
    }
  }
  return false;
}

// Discards the page's META tags of that name: numbers and the check list
// have setters but no way to be taken out.
bool RemoveMeta(CHtmlFileEx& doc, const char* name) {
  CHtmlTokenList* list = doc.GetTokenList();
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list->GetNext(pos);
    CHtmlTagItem* tag = token ? token->GetSafeTagItemPtr() : nullptr;
    if (!tag || tag->IsDiscardedToken() || tag->IsEndTag() || strcasecmp(tag->GetTagName(), "meta") != 0) continue;
    const char* metaName = tag->GetAttributeValue("name");
    if (metaName && strcasecmp(metaName, name) == 0) tag->DiscardToken();
  }
  return true;
}

// A whole number that fits an int, with an optional leading "-".
bool IsWholeNumber(const std::string& value) {
  size_t digits = value.size() - (!value.empty() && value[0] == '-');
  if (digits == 0 || digits > 10 || value.find_first_not_of("0123456789", value.size() - digits) != std::string::npos)
    return false;
  long long n = std::stoll(value);
  return n >= INT_MIN && n <= INT_MAX;
}

bool WriteProperty(CHtmlFileEx& doc, const Property& p, const std::string& value) {
  if (value.empty() && p.meta) return RemoveMeta(doc, p.meta);
  switch (p.type) {
    case PropType::kText:
    case PropType::kBuildTags:
      return (doc.*p.setText)(value.empty() ? nullptr : value.c_str()) != 0;
    case PropType::kNumber:
      return (doc.*p.setNumber)(std::atoi(value.c_str())) != 0;
    case PropType::kList: {
      CStringList items;
      doc.ParseBuildTags(value.c_str(), items);
      return doc.SetTopicCheckList(&items) != 0;
    }
  }
  return false;
}

struct Assignment {
  const Property* property;
  std::string value;
};

struct PageOutcome {
  std::string output;
  int written = 0;
  std::string error;
};

PageOutcome HandlePage(const std::string& path, const std::vector<Assignment>& sets, bool json) {
  PageOutcome o;
  OpenTopic topic;
  if (!OpenTopicPage(path, topic, o.error)) {
    o.written = -1;
    return o;
  }
  CHtmlFileEx& doc = *topic.doc;
  if (!sets.empty()) {
    for (const Assignment& a : sets) WriteProperty(doc, *a.property, a.value);
    o.written = SaveTopicIfChanged(path, topic, o.error);
    return o;
  }
  nlohmann::json j = {{"file", FileNameToUtf8(path)}};
  std::string text = path + "\n";
  for (const Property& p : kProperties) {
    std::string value;
    if (!ReadProperty(doc, p, value)) continue;
    j[p.name] = ToUtf8(value.c_str());
    text += std::string("  ") + p.name + ": " + value + "\n";
  }
  o.output = json ? j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n" : text;
  return o;
}

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"json", 0}, {"set", 1}}, kHelp, cl); rc >= 0) return rc;
  std::vector<Assignment> sets;
  for (const std::string& s : cl.Values("set")) {
    size_t eq = s.find('=');
    const Property* p = eq == std::string::npos ? nullptr : FindProperty(s.substr(0, eq));
    if (!p) {
      PrintError("--set wants NAME=VALUE with a known NAME, not '" + s + "' (see --help)");
      return kExitError;
    }
    std::string value = s.substr(eq + 1);
    if (p->type == PropType::kNumber && !value.empty() && !IsWholeNumber(value)) {
      PrintError("--set " + std::string(p->name) + " wants a whole number, not '" + value + "'");
      return kExitError;
    }
    sets.push_back({p, value});
  }
  std::vector<std::string> errors;
  std::vector<std::string> pages = ExpandTopicOperands(cl.operands(), errors);
  std::vector<PageOutcome> results(pages.size());
  const bool json = cl.Has("json");
  ParallelFor(pages.size(), [&](size_t i) { results[i] = HandlePage(pages[i], sets, json); }, "props");
  size_t changed = 0;
  for (size_t i = 0; i < pages.size(); ++i) {
    const PageOutcome& o = results[i];
    if (o.written < 0) {
      errors.push_back(o.error);
      continue;
    }
    std::fputs(o.output.c_str(), stdout);
    if (o.written == 1) {
      ++changed;
      std::printf("changed %s\n", pages[i].c_str());
    }
  }
  if (!sets.empty()) std::printf("%zu of %zu pages changed\n", changed, pages.size());
  for (const std::string& e : errors) PrintError(e);
  return errors.empty() ? kExitClean : kExitError;
}

}  // namespace

extern const Command kPropsCommand = {"props", "read and change topic properties", Run};

}  // namespace telvanix::tool

// telvanix props PATH... [--set NAME=VALUE]...: read and change the topic
// properties (author, status, priority, ...) and topic build tags.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "cli/attribute_text.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix props PAGE|DIR... [--set NAME=VALUE]... [--json]\n"
    "\n"
    "Without --set, prints the topic properties of each page. With --set,\n"
    "changes them and saves each page whose bytes change (atomically); an\n"
    "empty VALUE removes a property. VALUE is written as given, with the\n"
    "double quote, \"&\", \"<\" and \">\" as references.\n"
    "Before a page is written its new bytes are read back: a page where a\n"
    "value would not read back as set (or that has no head) is left as it\n"
    "was and named. Properties (NAME):\n"
    "  author, status, comment, id, signature      text\n"
    "  priority, time-estimate                     whole number\n"
    "  check-list                                  items separated by \",\"\n"
    "  build-tags                                  tags separated by \",\"\n"
    "\n"
    "  --json   print the properties as one JSON object per page\n"
    "\n"
    "Exit status: 0 done, 1 some page cannot take the change, 2 usage or I/O\n"
    "error.\n";

enum class PropType { kText, kNumber, kList, kBuildTags };

struct Property {
  const char* name;
  PropType type;
  const char* meta;  // the META's "name"
  int (CHtmlFileEx::*setText)(const char*);
  int (CHtmlFileEx::*setNumber)(int);
};

const Property kProperties[] = {
    {"author", PropType::kText, "topic-author", &CHtmlFileEx::SetTopicAuthor, nullptr},
    {"status", PropType::kText, "topic-status", &CHtmlFileEx::SetTopicStatus, nullptr},
    {"priority", PropType::kNumber, "topic-priority", nullptr, &CHtmlFileEx::SetTopicPriority},
    {"time-estimate", PropType::kNumber, "topic-time-estimate", nullptr, &CHtmlFileEx::SetTopicTimeEstimate},
    {"check-list", PropType::kList, "topic-check-list", nullptr, nullptr},
    {"comment", PropType::kText, "topic-comment", &CHtmlFileEx::SetTopicComment, nullptr},
    {"id", PropType::kText, "topic-id", &CHtmlFileEx::SetTopicId, nullptr},
    {"signature", PropType::kText, "topic-sds", &CHtmlFileEx::SetTopicSourceDigitalSignature, nullptr},
    {"build-tags", PropType::kBuildTags, "build tags", &CHtmlFileEx::SetTopicBuildTags, nullptr},
};

const Property* FindProperty(const std::string& name) {
  for (const Property& p : kProperties)
    if (name == p.name) return &p;
  return nullptr;
}

// The items of a list value, trimmed, without empty ones, joined with ",".
std::string JoinedItems(CHtmlFileEx& doc, const char* text) {
  CStringList items;
  doc.ParseBuildTags(text, items);
  CString joined;
  doc.MakeBuildTags(&items, joined);
  return joined.str();
}

// The property's value as UTF-8 text, or false when the page does not carry
// it. Numbers read as the library reads them (leading digits).
bool ReadProperty(CHtmlFileEx& doc, UINT codePage, const Property& p, std::string& value) {
  CHtmlTagItem* meta = FindMeta(doc, p.meta);
  if (!meta) return false;
  value = AttributeValueToUtf8(meta->GetAttributeValue("content"), codePage);
  if (p.type == PropType::kNumber) value = std::to_string(std::atoi(value.c_str()));
  if (p.type == PropType::kList) value = JoinedItems(doc, value.c_str());
  return p.type != PropType::kList || !value.empty();
}

// Discards the page's META tags of that name: a property is taken out
// whole, also where the page carries it twice.
void RemoveMeta(CHtmlFileEx& doc, const char* name) {
  while (CHtmlTagItem* meta = FindMeta(doc, name)) meta->DiscardToken();
}

// A whole number that fits an int, with an optional leading "-".
bool IsWholeNumber(const std::string& value) {
  size_t digits = value.size() - (!value.empty() && value[0] == '-');
  if (digits == 0 || digits > 10 || value.find_first_not_of("0123456789", value.size() - digits) != std::string::npos)
    return false;
  long long n = std::stoll(value);
  return n >= INT_MIN && n <= INT_MAX;
}

struct Assignment {
  const Property* property;
  std::string value;   // as given (UTF-8)
  std::string stored;  // the "content" it becomes on this page; empty: removed
};

// Sets the property to `a.stored`, the value already made into attribute
// text. The library takes a value as attribute text where the META exists
// but encodes it where it makes one, so a missing META is made empty first
// and every value goes in the same way. False when the page has no place
// for a META.
bool WriteProperty(CHtmlFileEx& doc, const Assignment& a) {
  const Property& p = *a.property;
  if (a.stored.empty()) {
    RemoveMeta(doc, p.meta);
    return true;
  }
  switch (p.type) {
    case PropType::kBuildTags:  // taken as given, new or not
      return doc.SetTopicBuildTags(a.stored.c_str()) != 0;
    case PropType::kNumber:
      return (doc.*p.setNumber)(std::atoi(a.stored.c_str())) != 0;
    case PropType::kText:
      return (FindMeta(doc, p.meta) || (doc.*p.setText)("")) && (doc.*p.setText)(a.stored.c_str());
    case PropType::kList: {
      CStringList none, items;
      doc.ParseBuildTags(a.stored.c_str(), items);
      return (FindMeta(doc, p.meta) || doc.SetTopicCheckList(&none)) && doc.SetTopicCheckList(&items);
    }
  }
  return false;
}

// What `value` is stored as on this page: attribute text in its code page,
// lists trimmed as the library joins them; empty when it is removed.
std::string StoredValue(CHtmlFileEx& doc, UINT codePage, const Property& p, const std::string& value) {
  switch (p.type) {
    case PropType::kNumber: return value.empty() ? value : std::to_string(std::stoi(value));
    case PropType::kList: return ToAttributeValue(JoinedItems(doc, value.c_str()), codePage);
    default: return ToAttributeValue(value, codePage);
  }
}

// Empty when the page read back from its new bytes holds every property as
// set; else why it does not.
std::string CheckReadBack(CHtmlFileEx& reread, const std::vector<Assignment>& sets) {
  for (const Assignment& a : sets) {
    CHtmlTagItem* meta = FindMeta(reread, a.property->meta);
    const char* content = meta ? meta->GetAttributeValue("content") : nullptr;
    std::string got = content ? content : "";
    if (a.stored.empty() ? meta == nullptr : (meta && got == a.stored)) continue;
    std::string what = std::string(a.property->name) + " would ";
    if (!meta) return what + "be gone on the next reading (the page's markup swallows it)";
    if (a.stored.empty()) return what + "still be there on the next reading";
    return what + "read back as \"" + got + "\" (the page's markup cuts it)";
  }
  return "";
}

struct PageOutcome {
  std::string output;
  int written = 0;  // 1 changed, 0 unchanged, -1 failed, -2 the page cannot take the change
  std::string error;
};

PageOutcome HandlePage(const std::string& path, const std::vector<Assignment>& given, bool json) {
  PageOutcome o;
  OpenTopic topic;
  if (!OpenTopicPage(path, topic, o.error)) {
    o.written = -1;
    return o;
  }
  CHtmlFileEx& doc = *topic.doc;
  const UINT codePage = PageCodePage(*topic.doc);
  if (!given.empty()) {
    std::vector<Assignment> sets = given;
    for (Assignment& a : sets) {
      a.stored = StoredValue(doc, codePage, *a.property, a.value);
      if (WriteProperty(doc, a)) continue;
      o.written = -2;
      o.error = path + (topic.source.GetLength() == 0 ? ": is empty (0 bytes): there is no head for properties"
                                                      : ": has no HEAD or HTML tag to hold properties") +
                "; left as it was";
      return o;
    }
    o.written = SaveTopicIfChanged(path, topic, o.error,
                                   [&](CHtmlFileEx& reread) { return CheckReadBack(reread, sets); });
    return o;
  }
  nlohmann::json j = {{"file", FileNameToUtf8(path)}};
  std::string text = path + "\n";
  for (const Property& p : kProperties) {
    std::string value;
    if (!ReadProperty(doc, codePage, p, value)) continue;
    j[p.name] = value;
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
    // The last value given for a property is the one that counts.
    auto same = std::find_if(sets.begin(), sets.end(), [&](const Assignment& a) { return a.property == p; });
    if (same != sets.end()) sets.erase(same);
    sets.push_back({p, value, ""});
  }
  std::vector<std::string> errors;
  std::vector<std::string> pages = ExpandTopicOperands(cl.operands(), errors);
  std::vector<PageOutcome> results(pages.size());
  const bool json = cl.Has("json");
  ParallelFor(pages.size(), [&](size_t i) { results[i] = HandlePage(pages[i], sets, json); }, "props");
  size_t changed = 0;
  std::vector<std::string> refused;
  for (size_t i = 0; i < pages.size(); ++i) {
    const PageOutcome& o = results[i];
    if (o.written < 0) {
      (o.written == -2 ? refused : errors).push_back(o.error);
      continue;
    }
    std::fputs(o.output.c_str(), stdout);
    if (o.written == 1) {
      ++changed;
      std::printf("changed %s\n", pages[i].c_str());
    }
  }
  return FinishPageEdits(!sets.empty(), changed, pages.size(), refused, errors);
}

}  // namespace

extern const Command kPropsCommand = {"props", "read and change topic properties", Run};

}  // namespace telvanix::tool

// telvanix popups PAGE|DIR...: list the popups of a project's pages, make a
// popup of some words or of a link, or turn popups back into plain text or
// plain links.
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "cli/attribute_text.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/platform/path_lookup.h"
#include "telvanix/sitemap/file_sitemap.h"
#include "telvanix/sitemap/sitemap_entry.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/popups_support.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix popups PAGE|DIR|FILE.hhc... [--json]\n"
    "       telvanix popups PAGE|DIR... --make WORDS (--topic TARGET | --text TEXT) [--support DIR]\n"
    "       telvanix popups PAGE|DIR... --make-link WORDS [--support DIR]\n"
    "       telvanix popups PAGE|DIR... --remove WORDS [--keep-link]\n"
    "\n"
    "A contents or index file (.hhc, .hhk) stands for the pages it lists.\n"
    "Without an option, lists every popup: popup objects, links that call the\n"
    "popup script (javascript:telvanixPopup('topic.htm#name') or\n"
    "javascript:telvanixPopupText('text')) and links of class \"telvanix-popup\".\n"
    "\n"
    "  --json        one object with \"popups\", each with file, line, kind,\n"
    "                target or text, and link_text\n"
    "  --make WORDS  in each page, the first place in the body where WORDS stand\n"
    "                in one run of text outside a link becomes a popup link of\n"
    "                TARGET (as written in an href, \"glossary.htm#baud\") or of\n"
    "                the literal TEXT\n"
    "  --make-link WORDS  links whose words are WORDS become popups of their own\n"
    "                target\n"
    "  --support DIR where the shared script and stylesheet are written (once,\n"
    "                rewritten when their generated version changes): DIR, else\n"
    "                the folder given, else each page's folder; changed pages\n"
    "                link them from their head once\n"
    "  --remove WORDS  popups whose words are WORDS become plain text again\n"
    "                (with --keep-link, a topic popup stays a plain link); the\n"
    "                support links go when a page's last popup does\n"
    "\n"
    "Making a popup and removing it gives the page back byte for byte. Changed\n"
    "pages are read back before they are written, atomically.\n"
    "Exit status: 0 done, 1 some page cannot take the change (named, left as it\n"
    "was), 2 usage or I/O error.\n";

bool IsSitemapName(const std::string& name) {
  const std::string ext = std::filesystem::path(name).extension().string();
  return ext.size() == 4 && (ext[1] | 0x20) == 'h' && (ext[2] | 0x20) == 'h' &&
         ((ext[3] | 0x20) == 'c' || (ext[3] | 0x20) == 'k');
}

// The pages a contents or index file lists that exist, in its order, each
// once, read with its names in UTF-8.
bool ListedPages(const std::string& file, std::vector<std::string>& pages, std::string& error) {
  CHtmlFileSitemap sitemap;
  if (!ReadSitemapAsUtf8(file, sitemap, error, false)) return false;
  const std::filesystem::path folder = std::filesystem::path(file).parent_path();
  auto add = [&](const char* local) {
    std::string name = AttributeValueToUtf8(local, CP_UTF8);
    name = name.substr(0, name.find('#'));
    if (name.empty() || name.find(':') != std::string::npos) return;
    for (char& c : name)
      if (c == '\\') c = '/';
    const std::string page = (folder / name).lexically_normal().string();
    std::error_code ec;
    if (std::filesystem::is_regular_file(page, ec) && std::find(pages.begin(), pages.end(), page) == pages.end())
      pages.push_back(page);
  };
  for (int i = 0; i < sitemap.GetSitemapArraySize(); ++i) {
    const CHtmlSitemap* e = sitemap.GetSitemap(i);
    if (!e) continue;
    add(e->GetPrimary());
    for (int s = 0; s < e->GetSectionArraySize(); ++s)
      if (const CHtmlSitemapSection* sec = e->GetSection(s)) add(sec->GetPrimary());
  }
  return true;
}

struct Listed {
  std::string kind, target, text, words;
  int line = 0;
  bool isText = false;
};

struct Request {
  std::string make, makeLink, remove, topic, text, support;
  bool keepLink = false;
  bool Changing() const { return !make.empty() || !makeLink.empty() || !remove.empty(); }
};

// The words and the target or text as UTF-8, decoded from what the page
// holds (a reference to a character outside the page's code page included).
std::string WordsUtf8(const CHtmlPopupAnchor& p, UINT codePage) {
  return AttributeValueToUtf8(p.GetWrittenLinkText(), codePage);
}

std::string ValueUtf8(const CHtmlPopupAnchor& p, UINT codePage) {
  const std::string value = AttributeValueToUtf8(p.GetWrittenValue(), codePage);
  if (p.GetKind() != CHtmlPopupAnchor::emPopupScriptTopic && p.GetKind() != CHtmlPopupAnchor::emPopupScriptText)
    return value;
  CHtmlPopupAnchor::EmPopupKind kind;
  CString argument;
  CHtmlPopupAnchor::ParseScriptCall(value.c_str(), kind, argument);
  return argument.str();
}

std::vector<Listed> ListPopups(CHtmlFileEx& doc, const std::string& path, UINT codePage) {
  std::vector<Listed> out;
  CPopupsSupport popups(doc, path.c_str(), nullptr);
  unsigned int cursor = 0;
  CHtmlPopupAnchor p;
  for (int ok = popups.GetFirstPopup(cursor, p); ok; ok = popups.GetNextPopup(cursor, p)) {
    Listed l;
    l.kind = CHtmlPopupAnchor::GetKindName(p.GetKind());
    l.isText = CHtmlPopupAnchor::IsTextKind(p.GetKind());
    (l.isText ? l.text : l.target) = ValueUtf8(p, codePage);
    l.words = WordsUtf8(p, codePage);
    l.line = p.GetLine();
    out.push_back(l);
  }
  return out;
}

size_t CountWithWords(const std::vector<Listed>& popups, const std::string& words) {
  size_t n = 0;
  for (const Listed& l : popups) n += l.words == words;
  return n;
}

// The first run of body text holding `words` that can become a popup.
bool MakeFromText(CHtmlFileEx& doc, CPopupsSupport& popups, const Request& r, UINT codePage) {
  const std::string raw = Utf8ToPageText(r.make, codePage);
  const std::string encoded = CHtmlPack::TextToHtml(raw.c_str()).str();
  const std::string text = r.text.empty() ? std::string() : Utf8ToPageText(r.text, codePage);
  const std::string target = Utf8ToPageText(r.topic, codePage);
  CHtmlTokenList& list = *doc.GetTokenList();
  for (POSITION pos = list.GetHeadPosition(); pos;) {
    POSITION here = pos;
    CHtmlTokenItem* token = list.GetNext(pos);
    if (!token || token->IsDiscardedToken() || !token->IsTextToken()) continue;
    const std::string bytes = token->GetPrintableText(CHtmlTokenItem::emTextTokenOnly).str();
    for (const std::string& form : {raw, encoded}) {
      for (size_t at = bytes.find(form); !form.empty() && at != std::string::npos; at = bytes.find(form, at + 1))
        if (popups.MakePopupFromText(here, static_cast<int>(at), static_cast<int>(form.size()),
                                     target.c_str(), r.text.empty() ? nullptr : text.c_str()))
          return true;
    }
  }
  return false;
}

// Links whose words are `words` (blanks collapsed) become popups.
int MakeFromLinks(CHtmlFileEx& doc, CPopupsSupport& popups, const std::string& words, UINT codePage) {
  std::vector<POSITION> links;
  CHtmlTokenList& list = *doc.GetTokenList();
  for (POSITION pos = list.GetHeadPosition(); pos;) {
    POSITION here = pos;
    CHtmlTagItem* tag = list.GetTagItem(pos);
    list.GetNext(pos);
    if (!tag || tag->IsDiscardedToken() || tag->GetTagId() != CHtmlTagItem::emTagIdA || !tag->GetAttributeValue("href"))
      continue;
    std::string text;
    for (POSITION walk = pos; walk;) {
      CHtmlTokenItem* t = list.GetNext(walk);
      if (t->IsDiscardedToken()) continue;
      if (CHtmlTagItem* inner = t->GetSafeTagItemPtr()) {
        if ((inner->GetTagId() & ~CHtmlTagItem::emTagIdEndBit) == CHtmlTagItem::emTagIdA) break;
        continue;
      }
      text += t->GetPrintableText(CHtmlTokenItem::emTextTokenOnly).str();
    }
    std::string collapsed;
    for (char c : text) {
      const bool blank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
      if (!blank) collapsed += c;
      else if (!collapsed.empty() && collapsed.back() != ' ') collapsed += ' ';
    }
    while (!collapsed.empty() && collapsed.back() == ' ') collapsed.pop_back();
    if (AttributeValueToUtf8(collapsed.c_str(), codePage) == words) links.push_back(here);
  }
  int made = 0;
  for (POSITION p : links) made += popups.MakePopupFromLink(p);
  return made;
}

int RemoveByWords(CPopupsSupport& popups, const Request& r, UINT codePage) {
  std::vector<CHtmlPopupAnchor> found;
  unsigned int cursor = 0;
  CHtmlPopupAnchor p;
  for (int ok = popups.GetFirstPopup(cursor, p); ok; ok = popups.GetNextPopup(cursor, p))
    if (WordsUtf8(p, codePage) == r.remove) found.push_back(p);
  int removed = 0;
  for (const CHtmlPopupAnchor& each : found) removed += popups.RemovePopup(each, r.keepLink ? 1 : 0);
  return removed;
}

struct PageOutcome {
  std::vector<Listed> popups;
  int written = 0;  // 1 changed, 0 unchanged, -1 failed, -2 the page cannot take the change
  std::string error;
};

std::string SupportFolderFor(const std::string& page, const Request& r) {
  if (!r.support.empty()) return r.support;
  const std::string folder = std::filesystem::path(page).parent_path().string();
  return folder.empty() ? "." : folder;
}

PageOutcome HandlePage(const std::string& path, const Request& r) {
  PageOutcome o;
  OpenTopic topic;
  if (!OpenTopicPage(path, topic, o.error)) {
    o.written = -1;
    return o;
  }
  const UINT codePage = PageCodePage(*topic.doc);
  o.popups = ListPopups(*topic.doc, path, codePage);
  if (!r.Changing()) return o;
  CPopupsSupport popups(*topic.doc, path.c_str(), SupportFolderFor(path, r).c_str());
  const std::string& words = !r.make.empty() ? r.make : !r.makeLink.empty() ? r.makeLink : r.remove;
  const size_t before = CountWithWords(o.popups, words);
  size_t wanted = before;
  if (!r.make.empty()) {
    // A topic's popup of itself would only show the page again.
    std::error_code ec;
    const std::filesystem::path self = std::filesystem::path(path).parent_path() / r.topic.substr(0, r.topic.find('#'));
    if (!r.topic.empty() && std::filesystem::equivalent(self, path, ec)) return o;
    if (!MakeFromText(*topic.doc, popups, r, codePage)) {
      // The words are there, but the page has nowhere to link the script from.
      const std::string source(static_cast<const char*>(topic.source), static_cast<size_t>(topic.source.GetLength()));
      if (!topic.doc->GetHeadEndPosition() && source.find(Utf8ToPageText(r.make, codePage)) != std::string::npos) {
        o.written = -2;
        o.error = path + ": has no HEAD end tag to link the popup script from; left as it was";
      }
      return o;
    }
    wanted = before + 1;
  } else if (!r.makeLink.empty()) {
    const int made = MakeFromLinks(*topic.doc, popups, words, codePage);
    if (made == 0) return o;
    wanted = before + static_cast<size_t>(made);
  } else {
    if (before == 0) return o;
    if (RemoveByWords(popups, r, codePage) != static_cast<int>(before)) {
      o.written = -2;
      o.error = path + ": the popups could not be removed; left as it was";
      return o;
    }
    wanted = 0;
  }
  o.written = SaveTopicIfChanged(path, topic, o.error, [&](CHtmlFileEx& reread) {
    return CountWithWords(ListPopups(reread, path, codePage), words) == wanted
               ? std::string()
               : std::string("the popups would not read back as changed");
  });
  return o;
}

nlohmann::json ToJson(const std::string& file, const Listed& l) {
  nlohmann::json j = {{"file", FileNameToUtf8(file)}, {"line", l.line}, {"kind", l.kind}};
  if (l.isText) j["text"] = l.text;
  else j["target"] = l.target;
  j["link_text"] = l.words;
  return j;
}

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args,
                            {{"json", 0}, {"make", 1}, {"make-link", 1}, {"topic", 1}, {"text", 1}, {"support", 1},
                             {"remove", 1}, {"keep-link", 0}},
                            kHelp, cl);
      rc >= 0)
    return rc;
  Request r;
  auto one = [&](const char* name, std::string& into) {
    if (cl.Has(name)) into = cl.Values(name).back();
    return cl.Has(name) ? cl.Values(name).size() : 0;
  };
  const size_t uses = one("make", r.make) + one("make-link", r.makeLink) + one("remove", r.remove);
  one("topic", r.topic);
  one("text", r.text);
  one("support", r.support);
  r.keepLink = cl.Has("keep-link");
  const bool badMake = !r.make.empty() && r.topic.empty() == r.text.empty();
  const bool strayTarget = r.make.empty() && (cl.Has("topic") || cl.Has("text"));
  if (uses > 1 || badMake || strayTarget || (r.keepLink && r.remove.empty()) ||
      (cl.Has("support") && r.make.empty() && r.makeLink.empty())) {
    std::fputs(kHelp, stderr);
    return kExitError;
  }
  if (uses == 1 && (r.make + r.makeLink + r.remove).empty()) {
    PrintError("the words of a popup may not be empty");
    return kExitError;
  }
  if (r.support.empty() && (!r.make.empty() || !r.makeLink.empty()) && cl.operands().size() == 1 &&
      std::filesystem::is_directory(cl.operands()[0]))
    r.support = cl.operands()[0];

  std::vector<std::string> errors, operands, pages;
  for (const std::string& operand : cl.operands()) {
    std::string error;
    if (!IsSitemapName(operand)) operands.push_back(operand);
    else if (!ListedPages(operand, pages, error)) errors.push_back(error);
  }
  for (const std::string& page : ExpandTopicOperands(operands, errors))
    if (std::find(pages.begin(), pages.end(), page) == pages.end()) pages.push_back(page);
  std::vector<PageOutcome> results(pages.size());
  // The shared files come first, so that no page links to a file that is
  // not there; the ones made for nothing go again.
  std::vector<std::string> created;
  if (!r.make.empty() || !r.makeLink.empty()) {
    std::vector<std::string> folders;
    for (const std::string& page : pages)
      if (std::find(folders.begin(), folders.end(), SupportFolderFor(page, r)) == folders.end())
        folders.push_back(SupportFolderFor(page, r));
    for (const std::string& folder : folders) {
      for (const char* name : {CPopupsSupport::GetScriptFileName(), CPopupsSupport::GetStyleFileName()})
        if (!FileExists((folder + "/" + name).c_str())) created.push_back(folder + "/" + name);
      if (!CPopupsSupport::WriteSupportFiles(folder.c_str())) {
        PrintError(folder + ": the popup script and stylesheet cannot be written there (a file of that name that "
                            "telvanix did not write, or no access); no page changed");
        return kExitError;
      }
    }
  }
  ParallelFor(pages.size(), [&](size_t i) { results[i] = HandlePage(pages[i], r); }, "popups");

  size_t changed = 0;
  std::vector<std::string> refused;
  nlohmann::json all = nlohmann::json::array();
  for (size_t i = 0; i < pages.size(); ++i) {
    const PageOutcome& o = results[i];
    if (o.written < 0) {
      (o.written == -2 ? refused : errors).push_back(o.error);
      continue;
    }
    if (r.Changing()) {
      if (o.written == 1) {
        ++changed;
        std::printf("changed %s\n", pages[i].c_str());
      }
      continue;
    }
    for (const Listed& l : o.popups) {
      if (cl.Has("json")) {
        all.push_back(ToJson(pages[i], l));
        continue;
      }
      std::printf("%s:%d: %s \"%s\" -> %s%s%s\n", pages[i].c_str(), l.line, l.kind.c_str(), l.words.c_str(),
                  l.isText ? "text \"" : "", (l.isText ? l.text : l.target).c_str(), l.isText ? "\"" : "");
    }
  }
  if (cl.Has("json") && !r.Changing())
    std::printf("%s\n", nlohmann::json{{"popups", all}}.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace).c_str());
  if (changed == 0)
    for (const std::string& file : created) std::remove(file.c_str());
  return FinishPageEdits(r.Changing(), changed, pages.size(), refused, errors);
}

}  // namespace

extern const Command kPopupsCommand = {"popups", "list, make or remove popup links", Run};

}  // namespace telvanix::tool

// telvanix format PATH... [--layout]: save pages with regenerated line
// breaks and indentation, writing only the files whose bytes change.
#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string_view>
#include <thread>
#include <vector>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/pure_text.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix format PAGE|DIR... [--layout] [--dry-run] [--force]\n"
    "\n"
    "Saves each topic page with line breaks and indentation regenerated from\n"
    "the kind of each tag. A file is rewritten (atomically) only when its bytes\n"
    "change.\n"
    "\n"
    "  --layout    also start comments and OBJECT end tags on lines of their own\n"
    "              (an OBJECT's PARAM tags stay on the OBJECT's line)\n"
    "  --dry-run   report what would change, write nothing\n"
    "  --force     also write pages whose visible words would change\n"
    "\n"
    "The regenerated layout trims the blanks around text, so a blank between a\n"
    "word and an inline tag (\"Read <b>this</b> now\") would be lost and words\n"
    "joined, and preformatted text (PRE, LISTING, XMP, PLAINTEXT, TEXTAREA)\n"
    "would lose its line breaks and indentation at either end. Such pages are\n"
    "left as they are and listed, unless --force.\n"
    "\n"
    "Exit status: 0 done, 2 usage or I/O error.\n";

struct FormatResult {
  int written = 0;  // 1 changed (or would change), 0 unchanged, 2 or 3 kept (words, preformatted text), -1 failed
  std::string error;
};

// Elements whose white space a reader sees, and whether a line break right
// after the start tag is not part of the content.
struct Preformatted {
  const char* name;
  bool leadingBreakIgnored;
  int id;
};

const Preformatted* FindPreformatted(CHtmlTagItem* tag) {
  static const std::vector<Preformatted> kinds = [] {
    std::vector<Preformatted> v = {
        {"PRE", true, 0}, {"LISTING", true, 0}, {"TEXTAREA", true, 0}, {"XMP", false, 0}, {"PLAINTEXT", false, 0}};
    for (Preformatted& p : v) p.id = CHtmlTagItem::GetTagIdFromTagName(p.name, nullptr);
    return v;
  }();
  const int id = static_cast<int>(static_cast<DWORD>(tag->GetTagId()) & ~CHtmlTagItem::emTagIdEndBit);
  for (const Preformatted& p : kinds)
    if (p.id == id) return &p;
  return nullptr;
}

// The contents of every preformatted element of a parsed pack, byte for
// byte as they print (white space included), in page order; PLAINTEXT runs
// to the page end.
std::vector<std::string> PreformattedContents(CHtmlPack& pack) {
  std::vector<std::string> contents;
  CHtmlTokenList* list = pack.GetTokenList();
  const Preformatted* open = nullptr;
  int depth = 0;
  CByteString piece;
  std::string current;
  auto finish = [&] {
    if (open->leadingBreakIgnored) current.erase(0, current.rfind("\r\n", 0) == 0 ? 2 : current.rfind("\n", 0) == 0);
    contents.push_back(current);
    open = nullptr;
  };
  for (POSITION pos = list->GetHeadPosition(); pos;) {
    CHtmlTokenItem* token = list->GetNext(pos);
    if (!token || token->IsDiscardedToken()) continue;
    CHtmlTagItem* tag = token->GetSafeTagItemPtr();
    const Preformatted* kind = tag ? FindPreformatted(tag) : nullptr;
    if (!open && (!kind || tag->IsEndTag())) continue;
    piece.ClearContent();
    token->AppendPrintableText(piece, CHtmlTokenItem::emTextWithIndentAfter);
    std::string printed(reinterpret_cast<const char*>(piece.GetContent()), static_cast<size_t>(piece.GetLength()));
    if (!open) {
      open = kind;
      depth = 1;
      // Of the start tag, only the blanks after it belong to the content.
      const size_t blanks = std::min(printed.size(), static_cast<size_t>(token->GetIndentAfterLength()));
      current = printed.substr(printed.size() - blanks);
      continue;
    }
    if (kind == open) depth += tag->IsEndTag() ? -1 : 1;
    if (depth > 0) {
      current += printed;
      continue;
    }
    finish();
  }
  if (open) finish();
  return contents;
}

// The words a reader sees, on one line, as the indexer would read them.
CString VisibleWords(CHtmlFileEx& doc) { return doc.GetPureText(emPureTextOneLine, nullptr, nullptr); }

// What a reader sees of a parsed page, taken while its document is at hand:
// its words and its preformatted text.
struct SeenText {
  CString words;
  std::vector<std::string> preformatted;
  bool taken = false;
  void Take(CHtmlFileEx& doc) {
    words = VisibleWords(doc);
    preformatted = PreformattedContents(doc);
    taken = true;
  }
  // Takes them on a thread of its own, beside a save of the same page: the
  // page was parsed with its attributes, so neither walk analyses a tag and
  // both only read the tokens. No thread (none to be had) leaves the taking
  // to the caller, as does a failed one.
  std::jthread TakeAside(CHtmlFileEx& doc) {
    try {
      return std::jthread([this, &doc] {
        try {
          Take(doc);
        } catch (...) {
          taken = false;
        }
      });
    } catch (...) {
      return std::jthread();
    }
  }
};

// 0 when the formatted page shows what the source showed; else 2 (words
// would join) or 3 (preformatted text would change). The formatted page is
// read once, into the source's document (its memory is already at hand),
// and both are taken from that reading as they were from the source's.
int KeepReason(const SeenText& source, CHtmlFileEx& doc, CByteString& formatted) {
  doc.SetSource(formatted);
  if (source.words != VisibleWords(doc)) return 2;
  return source.preformatted.empty() || PreformattedContents(doc) == source.preformatted ? 0 : 3;
}

size_t Digest(const CByteString& bytes) {
  return std::hash<std::string_view>{}(std::string_view(bytes, static_cast<size_t>(bytes.GetLength())));
}

// The page is held whole at most twice at once beside one parsed document
// (the document's tokens are several times its size): the bytes as read go
// once the document has its own copy, and the formatted page is read for
// its words into the same document, over the memory of the first reading.
// The page is read from disk once: a formatted page of the same length is
// compared by a 64-bit digest of the bytes as read, so a file changed on
// disk meanwhile is never mistaken for the page that was formatted.
FormatResult FormatPage(const std::string& path, bool layout, bool dryRun, bool force) {
  FormatResult r;
  CByteString source;
  if (!LoadTopicBytes(path, source, r.error)) {
    r.written = -1;
    return r;
  }
  const int sourceLength = source.GetLength();
  const size_t sourceDigest = Digest(source);
  CByteString formatted;
  CHtmlFileEx doc(source, path.c_str());
  int saved = doc.Parse(CHtmlPack::emParseAttributes);
  source.Empty();
  SeenText seen;
  if (saved) {
    std::jthread aside = !force && sourceLength >= kPageAsideBytes ? seen.TakeAside(doc) : std::jthread();
    saved = doc.Save(&formatted, layout ? CHtmlPack::emSaveLayoutObject : CHtmlPack::emSaveLayout);
    if (aside.joinable()) aside.join();
  }
  if (!saved) {
    if (sourceLength == 0) return r;
    r.written = -1;
    r.error = path + ": could not be parsed";
    return r;
  }
  if (formatted.GetLength() == sourceLength && Digest(formatted) == sourceDigest) return r;
  if (!force) {
    if (!seen.taken) seen.Take(doc);
    r.written = KeepReason(seen, doc, formatted);
    if (r.written) return r;
  }
  if (dryRun) {
    r.written = 1;
    return r;
  }
  r.written = WritePage(path, formatted, r.error);
  return r;
}

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"layout", 0}, {"dry-run", 0}, {"force", 0}}, kHelp, cl); rc >= 0) return rc;
  std::vector<std::string> errors;
  std::vector<std::string> pages = ExpandTopicOperands(cl.operands(), errors);
  std::vector<FormatResult> results(pages.size());
  const bool layout = cl.Has("layout"), dryRun = cl.Has("dry-run"), force = cl.Has("force");
  ParallelFor(pages.size(), [&](size_t i) { results[i] = FormatPage(pages[i], layout, dryRun, force); }, "format");
  size_t changed = 0, kept = 0;
  for (size_t i = 0; i < pages.size(); ++i) {
    if (results[i].written == 1) {
      ++changed;
      std::printf("%s%s\n", dryRun ? "would format " : "formatted ", pages[i].c_str());
    } else if (results[i].written == 2 || results[i].written == 3) {
      ++kept;
      std::printf("kept %s: the layout would %s (use --force to format anyway)\n", pages[i].c_str(),
                  results[i].written == 2 ? "join words" : "change preformatted text");
    } else if (results[i].written < 0) {
      errors.push_back(results[i].error);
    }
  }
  for (const std::string& e : errors) PrintError(e);
  std::printf("%zu of %zu pages %s", changed, pages.size(), dryRun ? "would change" : "changed");
  if (kept) std::printf(", %zu kept to save what a reader sees", kept);
  std::printf("\n");
  return errors.empty() ? kExitClean : kExitError;
}

}  // namespace

extern const Command kFormatCommand = {"format", "save pages with regenerated line breaks and indentation", Run};

}  // namespace telvanix::tool

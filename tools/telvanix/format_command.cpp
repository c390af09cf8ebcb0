// telvanix format PATH... [--layout]: save pages with regenerated line
// breaks and indentation, writing only the files whose bytes change.
#include <cstdio>

#include "telvanix/command_line.h"
#include "telvanix/commands.h"
#include "telvanix/page_files.h"
#include "telvanix/parallel.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/pure_text.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix format PAGE|DIR... [--layout] [--dry-run]\n"
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
    "joined. Such pages are left as they are and listed, unless --force.\n"
    "\n"
    "Exit status: 0 done, 2 usage or I/O error.\n";

struct FormatResult {
  int written = 0;  // 1 changed (or would change), 0 unchanged, 2 kept to save its words, -1 failed
  std::string error;
};

// The words a reader sees, on one line, as the indexer would read them.
std::string VisibleWords(CHtmlFileEx& doc) { return doc.GetPureText(emPureTextOneLine, nullptr, nullptr).str(); }

std::string VisibleWords(CByteString& bytes, const std::string& path) {
  CHtmlFileEx doc(bytes, path.c_str());
  return VisibleWords(doc);
}

// The page is held whole at most twice at once beside one parsed document
// (the document's tokens are several times its size): the bytes as read go
// once the document has its own copy, and the document goes before the
// formatted page is read for its words.
FormatResult FormatPage(const std::string& path, bool layout, bool dryRun, bool force) {
  FormatResult r;
  CByteString source;
  if (!LoadTopicBytes(path, source, r.error)) {
    r.written = -1;
    return r;
  }
  const int sourceLength = source.GetLength();
  CByteString formatted;
  std::string words;  // the page's words, taken while its document is at hand
  bool changed = false;
  {
    CHtmlFileEx doc(source, path.c_str());
    const int parsed = doc.Parse(CHtmlPack::emParseAttributes);
    source.Empty();
    if (!parsed || !doc.Save(&formatted, layout ? CHtmlPack::emSaveLayoutObject : CHtmlPack::emSaveLayout)) {
      if (sourceLength == 0) return r;
      r.written = -1;
      r.error = path + ": could not be parsed";
      return r;
    }
    // A page whose length changes has changed; one of the same length is
    // read again below, once this document is gone, and compared.
    changed = formatted.GetLength() != sourceLength;
    if (changed && !force) words = VisibleWords(doc);
  }
  if (!changed) {
    if (!LoadTopicBytes(path, source, r.error)) {
      r.written = -1;
      return r;
    }
    changed = !SameBytes(source, formatted);
    if (changed && !force) words = VisibleWords(source, path);
    source.Empty();
  }
  if (!changed) return r;
  if (!force && words != VisibleWords(formatted, path)) {
    r.written = 2;
    return r;
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
    } else if (results[i].written == 2) {
      ++kept;
      std::printf("kept %s: the layout would join words (use --force to format anyway)\n", pages[i].c_str());
    } else if (results[i].written < 0) {
      errors.push_back(results[i].error);
    }
  }
  for (const std::string& e : errors) PrintError(e);
  std::printf("%zu of %zu pages %s", changed, pages.size(), dryRun ? "would change" : "changed");
  if (kept) std::printf(", %zu kept to save their words", kept);
  std::printf("\n");
  return errors.empty() ? kExitClean : kExitError;
}

}  // namespace

extern const Command kFormatCommand = {"format", "save pages with regenerated line breaks and indentation", Run};

}  // namespace telvanix::tool

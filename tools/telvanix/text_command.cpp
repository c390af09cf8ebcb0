// telvanix text PATH...: title, plain text and keywords of each topic as
// JSON lines, for a search indexer.
#include <nlohmann/json.hpp>

#include <cstdio>

#include "telvanix/command_line.h"
#include "telvanix/commands.h"
#include "telvanix/page_files.h"
#include "telvanix/parallel.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/topic_text.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix text PAGE|DIR... [--one-line]\n"
    "\n"
    "Prints one JSON object per topic page, one per line, in the order given\n"
    "(folders sorted): {\"file\", \"title\", \"text\", \"keywords\"}. The text is\n"
    "every word a reader sees, blocks separated by line breaks; the keywords\n"
    "come from META \"keywords\". Text is converted from the active code page\n"
    "(TELVANIX_CODEPAGE, default 1252) to UTF-8.\n"
    "\n"
    "  --one-line   the text as one line (blocks separated by a blank);\n"
    "               by default each block and BR ends a line (\"\\r\\n\")\n"
    "\n"
    "Exit status: 0 done, 2 some page could not be read (the others are printed).\n";

struct TextResult {
  std::string line;
  std::string error;
};

TextResult Extract(const std::string& path, bool oneLine) {
  TextResult r;
  // Read first for a precise reason when the file is no page (missing,
  // unreadable, a pipe, binary); an empty page simply has no text. The
  // parser reads the file itself, so these bytes go before it does.
  {
    CByteString bytes;
    if (!LoadTopicBytes(path, bytes, r.error)) return r;
    if (bytes.GetLength() == 0) {
      nlohmann::json j = {{"file", FileNameToUtf8(path)}, {"title", ""}, {"text", ""},
                          {"keywords", nlohmann::json::array()}};
      r.line = j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
      return r;
    }
  }
  CString text, unused, title;
  CStringArray keywords;
  {
    CHtmlTopicText parser;
    // Bit 0 of the flags selects the plain option 0 instead of the indexer's 2.
    if (!parser.OpenDocument(path.c_str(), nullptr, oneLine ? 1 : 0, nullptr, nullptr, nullptr)) {
      r.error = path + ": cannot be read as a topic page";
      return r;
    }
    parser.GetFirstTopicText(text, unused, &keywords);
    if (CHtmlFileEx* doc = parser.GetDocument()) doc->GetHtmlTitle(title);
  }
  // The document is gone; the text is converted and escaped with as few
  // copies of it alive at once as can be.
  nlohmann::json kw = nlohmann::json::array();
  for (int i = 0; i < keywords.GetSize(); ++i) kw.push_back(ToUtf8(keywords[i]));
  nlohmann::json j = nlohmann::json::object();
  j["file"] = FileNameToUtf8(path);
  j["title"] = ToUtf8(title);
  j["keywords"] = std::move(kw);
  std::string utf8 = ToUtf8(text);
  text.Empty();
  j["text"] = std::move(utf8);
  r.line = j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return r;
}

int Run(const std::vector<std::string>& args) {
  CommandLine cl;
  if (int rc = StartCommand(args, {{"one-line", 0}}, kHelp, cl); rc >= 0) return rc;
  std::vector<std::string> errors;
  std::vector<std::string> pages = ExpandTopicOperands(cl.operands(), errors);
  std::vector<TextResult> results(pages.size());
  const bool oneLine = cl.Has("one-line");
  ParallelFor(pages.size(), [&](size_t i) { results[i] = Extract(pages[i], oneLine); }, "text");
  for (const TextResult& r : results) {
    if (r.error.empty())
      std::printf("%s\n", r.line.c_str());
    else
      errors.push_back(r.error);
  }
  for (const std::string& e : errors) PrintError(e);
  return errors.empty() ? kExitClean : kExitError;
}

}  // namespace

extern const Command kTextCommand = {"text", "title, plain text and keywords of topics as JSON lines", Run};

}  // namespace telvanix::tool

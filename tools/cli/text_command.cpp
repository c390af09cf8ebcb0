// telvanix text PATH...: title, plain text and keywords of each topic as
// JSON lines, for a search indexer.
#include <nlohmann/json.hpp>

#include <cstdio>

#include "cli/attribute_text.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/pure_text.h"
#include "telvanix/topic/topic_text.h"

namespace telvanix::tool {

namespace {

const char kHelp[] =
    "usage: telvanix text PAGE|DIR... [--one-line]\n"
    "\n"
    "Prints one JSON object per topic page, one per line, in the order given\n"
    "(folders sorted): {\"file\", \"title\", \"text\", \"keywords\"}. The text is\n"
    "every word a reader sees, blocks separated by line breaks; the keywords\n"
    "come from META \"keywords\". Each page is read in its own charset (byte\n"
    "order mark, META charset, else TELVANIX_CODEPAGE, default 1252) and\n"
    "printed as UTF-8, every character reference as its character.\n"
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
  // Its start read first for a precise reason when the file is no page
  // (missing, unreadable, a pipe, binary); an empty page simply has no
  // text. The parser reads the file itself.
  {
    CByteString start;
    if (!ProbeTopicFile(path, start, r.error)) return r;
    if (start.GetLength() == 0) {
      nlohmann::json j = {{"file", FileNameToUtf8(path)}, {"title", ""}, {"text", ""},
                          {"keywords", nlohmann::json::array()}};
      r.line = j.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
      return r;
    }
  }
  CString text, title;
  CStringArray keywords;
  std::vector<std::string> keywordsUtf8;
  {
    CHtmlTopicText parser;
    // Bit 0 of the flags selects the plain option 0 instead of the indexer's 2.
    if (!parser.OpenDocument(path.c_str(), nullptr, oneLine ? 1 : 0, nullptr, nullptr, nullptr)) {
      r.error = path + ": cannot be read as a topic page";
      return r;
    }
    parser.GetTopicKeywords(&keywords);
    if (CHtmlFileEx* doc = parser.GetDocument()) {
      // Each page in its own charset, every reference as its character.
      const UINT codePage = doc->GetPageCodePage();
      text = doc->GetPureTextUtf8(oneLine ? emPureTextOneLine : emPureTextLineBreaks);
      title = doc->GetHtmlTitleUtf8();
      for (int i = 0; i < keywords.GetSize(); ++i) keywordsUtf8.push_back(AttributeValueToUtf8(keywords[i], codePage));
    }
  }
  // The document is gone; the text is escaped with as few copies of it
  // alive at once as can be.
  nlohmann::json j = nlohmann::json::object();
  j["file"] = FileNameToUtf8(path);
  j["title"] = title.str();
  j["keywords"] = keywordsUtf8;
  std::string utf8 = text.str();
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

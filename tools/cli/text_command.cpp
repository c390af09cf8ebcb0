// telvanix text PATH...: title, plain text and keywords of each topic as
// JSON lines, for a search indexer.
#include <nlohmann/json.hpp>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string_view>
#include <thread>

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

// True when s is UTF-8 as RFC 3629 has it (no overlong form, surrogate or
// code point past U+10FFFF).
bool IsValidUtf8(std::string_view s) {
  const auto* p = reinterpret_cast<const unsigned char*>(s.data());
  const unsigned char* end = p + s.size();
  while (p < end) {
    if (end - p >= 8) {
      std::uint64_t eight;
      std::memcpy(&eight, p, 8);
      if (!(eight & 0x8080808080808080ull)) {
        p += 8;
        continue;
      }
    }
    const unsigned char c = *p;
    if (c < 0x80) {
      ++p;
      continue;
    }
    int n;
    unsigned char low = 0x80, high = 0xBF;  // the second byte's range
    if (c >= 0xC2 && c <= 0xDF) {
      n = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
      n = 3;
      if (c == 0xE0) low = 0xA0;
      if (c == 0xED) high = 0x9F;
    } else if (c >= 0xF0 && c <= 0xF4) {
      n = 4;
      if (c == 0xF0) low = 0x90;
      if (c == 0xF4) high = 0x8F;
    } else {
      return false;
    }
    if (end - p < n || p[1] < low || p[1] > high) return false;
    for (int i = 2; i < n; ++i)
      if ((p[i] & 0xC0) != 0x80) return false;
    p += n;
  }
  return true;
}

// A page's text as a JSON string, byte for byte as the JSON library writes
// valid UTF-8 (characters kept, the short escapes, \u00xx for the other
// control bytes) but a run at a time rather than a character at a time;
// text that is not valid UTF-8 is left to the library and its replacements.
std::string TextAsJson(const std::string& text) {
  if (!IsValidUtf8(text)) return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  std::string out;
  out.reserve(text.size() + text.size() / 16 + 2);
  out += '"';
  size_t run = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c >= 0x20 && c != '"' && c != '\\') continue;
    out.append(text, run, i - run);
    run = i + 1;
    switch (c) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\b': out += "\\b"; break;
      case '\f': out += "\\f"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default: {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", c);
        out += escape;
      }
    }
  }
  out.append(text, run, std::string::npos);
  out += '"';
  return out;
}

struct TextResult {
  std::string line;
  std::string error;
};

// A page's line: the object the JSON library would write (keys in its
// order), the text escaped apart.
std::string TextLine(const std::string& path, const std::vector<std::string>& keywords, const std::string& text,
                     const std::string& title) {
  auto dump = [](const nlohmann::json& value) {
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  };
  std::string line = "{\"file\":" + dump(FileNameToUtf8(path)) + ",\"keywords\":" + dump(keywords) + ",\"text\":";
  line += TextAsJson(text);
  line += ",\"title\":" + dump(title) + "}";
  return line;
}

TextResult Extract(const std::string& path, bool oneLine) {
  TextResult r;
  // Its start read first for a precise reason when the file is no page
  // (missing, unreadable, a pipe, binary); an empty page simply has no
  // text. The parser reads the file itself.
  {
    CByteString start;
    if (!ProbeTopicFile(path, start, r.error)) return r;
    if (start.GetLength() == 0) {
      r.line = TextLine(path, {}, "", "");
      return r;
    }
  }
  CString text, title;
  CStringArray keywords;
  std::vector<std::string> keywordsUtf8;
  {
    auto doc = std::make_unique<CHtmlFileEx>(path.c_str());
    // Attributes read with the tokens (see CHtmlTopicText::OpenDocument).
    doc->Parse(CHtmlPack::emParseAttributes);
    const int option = oneLine ? emPureTextOneLine : emPureTextLineBreaks;
    int analysed = 0;
    bool taken = false;
    {
      // The words of a large page are taken while it is analysed: the
      // analysis writes no token of a page read with its attributes, and
      // the words walk only reads them.
      std::jthread words;
      std::error_code ec;
      if (std::filesystem::file_size(path, ec) >= static_cast<std::uintmax_t>(kPageAsideBytes) && !ec) {
        try {
          words = std::jthread([&] {
            try {
              text = doc->GetPureTextUtf8(option);
              taken = true;
            } catch (...) {
            }
          });
        } catch (...) {
        }
      }
      analysed = doc->Analyse();
    }
    if (!taken) text = doc->GetPureTextUtf8(option);
    CHtmlTopicText parser;
    if (!analysed || !parser.AttachDocument(doc.release(), path.c_str(), oneLine ? 1 : 0)) {
      r.error = path + ": cannot be read as a topic page";
      return r;
    }
    parser.GetTopicKeywords(&keywords);
    CHtmlFileEx* page = parser.GetDocument();
    // Each page in its own charset, every reference as its character.
    const UINT codePage = page->GetPageCodePage();
    title = page->GetHtmlTitleUtf8();
    for (int i = 0; i < keywords.GetSize(); ++i) keywordsUtf8.push_back(AttributeValueToUtf8(keywords[i], codePage));
  }
  // The document is gone.
  r.line = TextLine(path, keywordsUtf8, text.str(), title.str());
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

// Runs the topic text parser over real pages (every ".htm"/".html" file under
// the folders named on the command line) as an indexer would: open through
// the exported factory, take the text and the keywords, close. Checks that
// no markup, no stylesheet rule and no script line reaches the text, and that
// blank runs are collapsed. Prints words per page and pages per second
// (scripts/corpus-topic-text.sh).
// Exit status: 0 when every page passes, 1 otherwise.
#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "telvanix/topic/topic_text.h"

using namespace telvanix;

namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

std::string Lower(std::string text) {
  for (char& c : text)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

// Blank runs as one space, ends trimmed: how a line of source would read in
// the text if it leaked.
std::string Collapse(const std::string& text) {
  std::string out;
  bool blank = false;
  for (char c : text) {
    if (IsBlank(c)) {
      blank = !out.empty();
      continue;
    }
    if (blank)
      out += ' ';
    blank = false;
    out += c;
  }
  return out;
}

// The contents of every <name ...>...</name> element of the (lower-cased)
// source.
std::vector<std::string> Blocks(const std::string& source, const std::string& lower, const std::string& name) {
  std::vector<std::string> blocks;
  const std::string open = "<" + name;
  const std::string close = "</" + name;
  for (std::size_t at = lower.find(open); at != std::string::npos; at = lower.find(open, at + 1)) {
    std::size_t gt = lower.find('>', at);
    if (gt == std::string::npos)
      break;
    std::size_t end = lower.find(close, gt);
    if (end == std::string::npos)
      break;
    blocks.push_back(source.substr(gt + 1, end - gt - 1));
    at = end;
  }
  return blocks;
}

std::size_t Count(const std::string& text, const std::string& what) {
  std::size_t n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
    ++n;
  return n;
}

// Problems of one page's text; empty when it passes.
std::string Check(const std::string& source, const std::string& text) {
  const std::string lower = Lower(source);
  // A "<" that starts something tag-like must come from a reference.
  std::size_t tagLike = 0;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    unsigned char next = static_cast<unsigned char>(text[i + 1]);
    if (text[i] == '<' && (std::isalpha(next) || next == '/' || next == '!' || next == '?'))
      ++tagLike;
  }
  const std::size_t references = Count(lower, "&lt;") + Count(lower, "&#60;") + Count(lower, "&#x3c;");
  if (tagLike > references)
    return "markup in the text (" + std::to_string(tagLike) + " tag-like \"<\", " + std::to_string(references) +
           " references)";
  for (const std::string& style : Blocks(source, lower, "style")) {
    std::istringstream lines(style);
    for (std::string line; std::getline(lines, line);) {
      std::string rule = Collapse(line);
      if (rule.find('{') != std::string::npos && rule.size() > 3 && text.find(rule) != std::string::npos)
        return "style rule in the text: " + rule;
    }
  }
  for (const std::string& script : Blocks(source, lower, "script")) {
    std::istringstream lines(script);
    for (std::string line; std::getline(lines, line);) {
      std::string code = Collapse(line);
      if (code.size() >= 8 && text.find(code) != std::string::npos)
        return "script line in the text: " + code;
    }
  }
  for (char c : text) {
    unsigned char u = static_cast<unsigned char>(c);
    if ((u < ' ' && u != '\r' && u != '\n') || u == 0x7F)
      return "control byte " + std::to_string(u) + " in the text";
  }
  if (!text.empty() && (IsBlank(text.front()) || IsBlank(text.back())))
    return "blank at an end of the text";
  if (text.find("  ") != std::string::npos || text.find("\r\n\r\n") != std::string::npos ||
      text.find(" \r\n") != std::string::npos || text.find("\r\n ") != std::string::npos)
    return "blank run not collapsed";
  return std::string();
}

std::size_t Words(const std::string& text) {
  std::size_t words = 0;
  bool inWord = false;
  for (char c : text) {
    if (IsBlank(c)) {
      inWord = false;
    } else if (!inWord) {
      inWord = true;
      ++words;
    }
  }
  return words;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> pages;
  for (int i = 1; i < argc; ++i) {
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(argv[i], error);
         it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
      if (error)
        break;
      const std::string ext = Lower(it->path().extension().string());
      if (it->is_regular_file() && (ext == ".htm" || ext == ".html"))
        pages.push_back(it->path().string());
    }
  }
  std::sort(pages.begin(), pages.end());
  if (pages.empty()) {
    std::fprintf(stderr, "no pages found\n");
    return 1;
  }

  CHtmlTopicTextParser* parser = GetTopicTextParser();
  if (!parser)
    return 1;
  long failures = 0, words = 0, bytes = 0, keywords = 0, withScript = 0, withStyle = 0, empty = 0;
  std::size_t mostWords = 0;
  std::string mostWordsPage;
  std::chrono::duration<double> spent{0};
  for (const std::string& path : pages) {
    const std::string source = ReadFile(path);
    bytes += static_cast<long>(source.size());
    CString text, second;
    CStringArray found;
    const auto start = std::chrono::steady_clock::now();
    const int opened = parser->OpenDocument(path.c_str(), nullptr, 0, nullptr, nullptr, nullptr);
    const int got = opened ? parser->GetFirstTopicText(text, second, &found) : 0;
    parser->CloseDocument();
    spent += std::chrono::steady_clock::now() - start;
    if (!opened || !got) {
      ++failures;
      std::printf("FAIL %s: %s\n", path.c_str(), opened ? "no text" : "not opened");
      continue;
    }
    const std::string lower = Lower(source);
    withScript += lower.find("<script") != std::string::npos;
    withStyle += lower.find("<style") != std::string::npos;
    const std::string problem = Check(source, text.str());
    if (!problem.empty()) {
      ++failures;
      std::printf("FAIL %s: %s\n", path.c_str(), problem.c_str());
    }
    const std::size_t n = Words(text.str());
    empty += n == 0;
    words += static_cast<long>(n);
    keywords += found.GetSize();
    if (n > mostWords) {
      mostWords = n;
      mostWordsPage = path;
    }
  }
  delete parser;

  const double seconds = spent.count();
  std::printf("pages: %zu (%ld with SCRIPT, %ld with STYLE, %ld without words), %.1f MB\n", pages.size(), withScript,
              withStyle, empty, static_cast<double>(bytes) / 1e6);
  std::printf("words: %ld, %.1f per page; most: %zu in %s\n", words, static_cast<double>(words) / pages.size(),
              mostWords, mostWordsPage.c_str());
  std::printf("keywords: %ld\n", keywords);
  std::printf("time: %.3f s, %.0f pages/s, %.1f MB/s (open, text, keywords, close)\n", seconds,
              static_cast<double>(pages.size()) / seconds, static_cast<double>(bytes) / 1e6 / seconds);
  std::printf("%ld passed, %ld failed\n", static_cast<long>(pages.size()) - failures, failures);
  return failures ? 1 : 0;
}

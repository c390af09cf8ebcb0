// Checks canonical save over real stylesheets (the files named on the command
// line, or found under the folders named): each at-rule line is a verbatim
// piece of its source, in order; and reading a saved sheet back gives the
// same lines, each at-rule only gaining the line break the save wrote after
// it. A rule merged from repeated selectors may declare a property twice;
// reading it back keeps one pair (the later value, in the earlier place), so
// such a rule is expected to read back in that collapsed form. Files where
// that fails are listed with the first differing line.
// Exit status: 0 when every file passes, 1 otherwise.
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "css_corpus.h"
#include "telvanix/css/css_pack.h"

using namespace telvanix;

namespace {

struct Line {
  bool atRule;
  std::string text;
  std::string collapsed;  // a style as it reads back once repeated names are collapsed
};

std::vector<Line> Read(const std::string& text, std::string& saved) {
  CByteString content(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  CCssPack pack(&content);
  pack.Parse();
  std::vector<Line> lines;
  POSITION pos = pack.GetListLine().GetHeadPosition();
  while (pos) {
    CCssLogicalLine* line = pack.GetListLine().GetNext(pos);
    if (line->IsRemovedLine())
      continue;
    Line entry{!line->IsStyle(), std::string(line->GetPrintableString(&pack)), ""};
    if (line->IsStyle()) {
      CCssStyle* style = static_cast<CCssStyle*>(line);
      CCssStyleProperty collapsed;
      int index = 0;
      style->GetStyleProperty()->GetFirstPropertyPair(index);
      while (CCssStyleProperty::CPropertyPair* pair = style->GetStyleProperty()->GetNextPropertyPair(index))
        collapsed.SetProperty(pair->GetName(), pair->GetValue());
      CCssStyle again(style->GetStyleName(), nullptr, &collapsed);
      entry.collapsed = std::string(again.GetPrintableString(&pack));
    }
    lines.push_back(entry);
  }
  CByteString out;
  pack.Save(out);
  saved.assign(out.GetLength() ? reinterpret_cast<const char*>(out.GetContent()) : "",
               static_cast<size_t>(out.GetLength()));
  return lines;
}

// "" when the file passes, else what went wrong; `collapsed` counts the
// rules that read back only in their collapsed form.
std::string Check(const std::string& source, size_t& atRules, size_t& styles, size_t& collapsed) {
  std::string save1, save2;
  const std::vector<Line> first = Read(source, save1);
  size_t from = 0;
  for (const Line& line : first) {
    if (!line.atRule) {
      ++styles;
      continue;
    }
    ++atRules;
    const size_t at = source.find(line.text, from);
    if (at == std::string::npos)
      return "at-rule not found verbatim in the source: " + line.text.substr(0, 80);
    from = at + line.text.size();
  }
  const std::vector<Line> second = Read(save1, save2);
  if (second.size() != first.size())
    return "saved sheet reads back as " + std::to_string(second.size()) + " lines, not " +
           std::to_string(first.size());
  for (size_t i = 0; i < first.size(); ++i) {
    const std::string expected = first[i].text + (first[i].atRule ? "\r\n" : "");
    if (!first[i].atRule && second[i].text != expected && second[i].text == first[i].collapsed &&
        second[i].collapsed == second[i].text) {
      ++collapsed;
      continue;
    }
    if (second[i].atRule != first[i].atRule || second[i].text != expected)
      return "line " + std::to_string(i) + " reads back as\n      " + second[i].text.substr(0, 160) +
             "\n    not\n      " + expected.substr(0, 160);
  }
  return "";
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> files;
  for (int i = 1; i < argc; ++i) {
    std::error_code ec;
    if (std::filesystem::is_directory(argv[i], ec)) {
      for (std::filesystem::recursive_directory_iterator it(argv[i], ec), end; !ec && it != end; it.increment(ec))
        if (it->is_regular_file() && it->path().extension() == ".css")
          files.push_back(it->path().string());
    } else {
      files.push_back(argv[i]);
    }
  }
  if (files.empty()) {
    std::fprintf(stderr, "usage: css_corpus_check FILE.css|FOLDER...\n");
    return 2;
  }
  size_t good = 0, bad = 0, bytes = 0, atRules = 0, styles = 0, collapsed = 0;
  for (const std::string& path : files) {
    const std::string source = bench::ReadWholeFile(path);
    bytes += source.size();
    const std::string problem = Check(source, atRules, styles, collapsed);
    if (problem.empty()) {
      ++good;
    } else {
      ++bad;
      std::printf("NOT STABLE %s\n    %s\n", path.c_str(), problem.c_str());
    }
  }
  std::printf("css corpus: %zu files, %zu bytes, %zu at-rules, %zu style lines (%zu read back collapsed); "
              "%zu stable, %zu not stable\n",
              files.size(), bytes, atRules, styles, collapsed, good, bad);
  return bad ? 1 : 0;
}

// Stylesheet cases in tests/data/css: each NAME.css or NAME.sheets is read and described
// (its lines, each style's selectors and declarations, the saved text) in
// NAME.expected. A line "----" in a case starts another sheet, read on its
// own (imports and baggage files as a project walk sees them). A case of one sheet must also save stably: reading a saved sheet back
// gives the same lines, each at-rule only gaining the line break the previous
// save wrote after it (an at-rule keeps the blanks that follow it).
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "golden_cases.h"
#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/css_selector.h"
#include "telvanix/css/css_style.h"
#include "telvanix/css/style_property.h"

namespace telvanix {
namespace {

struct Line {
  bool atRule;
  std::string text;  // at-rule: original text; style: printable form
};

struct Read {
  std::vector<Line> lines;
  std::string saved;
  std::string description;
};

Read ReadSheet(const std::string& text) {
  CByteString content(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  CCssPackEx pack(&content);
  Read read;
  std::ostringstream out;
  out << "parse " << pack.Parse() << ", " << pack.GetListLine().GetCount() << " lines\n";
  POSITION pos = pack.GetListLine().GetHeadPosition();
  while (pos) {
    CCssLogicalLine* line = pack.GetListLine().GetNext(pos);
    read.lines.push_back({!line->IsStyle(), std::string(line->GetPrintableString(&pack))});
    if (line->IsAtImport()) {
      auto* import = static_cast<CCssLglAtImport*>(line);
      out << "@import [" << import->GetOriginalString() << "] url [" << import->GetImportCssUrl() << "]"
          << (import->IsAnalysed() ? " analysed" : "") << "\n";
    } else if (line->IsAtUnknown()) {
      out << "@ [" << static_cast<CCssLglAtUnknown*>(line)->GetOriginalString() << "]\n";
    } else {
      auto* style = static_cast<CCssStyle*>(line);
      out << "style [" << style->GetStyleName() << "]" << (style->IsInheritedStyle() ? " merged" : "")
          << (style->IsContextualSelector() ? " contextual" : "");
      if (const char* block = style->GetUniqueBlockStyleName())
        out << " block [" << block << "]";
      out << "\n  body [" << style->GetBodyText() << "]\n  pairs [" << style->GetStyleProperty()->GetPrintableString()
          << "]\n";
      const CCssStyleSelectors* chain = style->GetStyleSelectors();
      for (int i = 0; i < chain->GetSize(); ++i) {
        const CCssStyleSelectors::CSelector* s = chain->GetAt(i);
        out << "  selector [" << s->GetElementName() << "] part " << s->GetPartKind() << " [" << s->GetPartText()
            << "]" << (s->GetTagId() ? " known" : "") << "\n";
      }
    }
  }
  out << "imports:";
  POSITION at = nullptr;
  for (CString url = pack.GetFirstImportCssUrl(at); !url.IsEmpty(); url = pack.GetNextImportCssUrl(at))
    out << " [" << url << "]";
  out << "\nbaggage:";
  UINT index = 0;
  for (CString name = pack.GetFirstBaggageFile(index); !name.IsEmpty(); name = pack.GetNextBaggageFile(index))
    out << " [" << name << "]";
  CByteString saved;
  pack.Save(saved);
  read.saved = saved.GetLength() ? std::string(reinterpret_cast<const char*>(saved.GetContent()), saved.GetLength()) : "";
  out << "\nsaved:\n" << read.saved << "\n";
  read.description = out.str();
  return read;
}

void ExpectStable(const std::string& source, const Read& first) {
  // Every at-rule is a verbatim piece of the source, in order.
  size_t from = 0;
  for (const Line& line : first.lines) {
    if (!line.atRule)
      continue;
    const size_t at = source.find(line.text, from);
    ASSERT_NE(at, std::string::npos) << line.text;
    from = at + line.text.size();
  }
  Read previous = first;
  for (int round = 1; round <= 2; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    const Read next = ReadSheet(previous.saved);
    ASSERT_EQ(next.lines.size(), previous.lines.size());
    for (size_t i = 0; i < previous.lines.size(); ++i) {
      EXPECT_EQ(next.lines[i].atRule, previous.lines[i].atRule) << "line " << i;
      EXPECT_EQ(next.lines[i].text, previous.lines[i].text + (previous.lines[i].atRule ? "\r\n" : "")) << "line " << i;
    }
    previous = next;
  }
}

std::string DescribeSheets(const std::string&, const std::string& input) {
  const std::string separator = "----\n";
  if (input.find(separator) == std::string::npos) {
    const Read read = ReadSheet(input);
    ExpectStable(input, read);
    return read.description;
  }
  std::string out;
  size_t from = 0;
  while (from <= input.size()) {
    size_t to = input.find(separator, from);
    if (to == std::string::npos)
      to = input.size();
    const std::string sheet = input.substr(from, to - from);
    out += "==== [" + sheet + "]\n" + ReadSheet(sheet).description;
    from = to + separator.size();
  }
  return out;
}

// The .css cases are also the benchmark's default stylesheets; cases made
// to probe the reader are .sheets files.
TEST(CssCanonicalSaveTest, GoldenSheets) {
  test::RunGoldenCases("css", ".css", DescribeSheets, 6);
  test::RunGoldenCases("css", ".sheets", DescribeSheets, 3);
}

TEST(CssCanonicalSaveTest, QuotedValuesLoseTheirQuotes) {
  // Values are stored de-quoted and printed without quotes, so a quoted value
  // holding "}" does not read back the same: the one known break of stability.
  const Read first = ReadSheet("li { content: \"a } b\" }");
  EXPECT_EQ(first.saved, "li { \r\n    content:a } b;  }\r\n");
  EXPECT_EQ(ReadSheet(first.saved).saved, "li { \r\n    content:a;  }\r\n");
}

}  // namespace
}  // namespace telvanix

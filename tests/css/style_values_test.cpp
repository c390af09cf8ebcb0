#include "telvanix/css/style_values.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>
#include <string>
#include <tuple>

#include "golden_cases.h"

namespace telvanix {
namespace {

using N = CSttNumber;

std::string Print(const N& n) { return std::string(n.GetPrintableString()); }

// Each line of a case is "number TEXT", "color TEXT" or "url TEXT"; the
// value read from TEXT is described by all its getters. A number's points
// are given for five scales (parent size, pixels per inch, x-height).
std::string DescribeValues(const std::string&, const std::string& input) {
  std::ostringstream out;
  std::istringstream lines(input);
  for (std::string line; std::getline(lines, line);) {
    const size_t blank = line.find(' ');
    if (line.empty() || line[0] == '#' || blank == std::string::npos)
      continue;
    const std::string kind = line.substr(0, blank), text = line.substr(blank + 1);
    out << kind << " [" << text << "]: ";
    if (kind == "number") {
      N n;
      out << n.Assign(text.c_str()) << " num " << n.GetNum() << " ex " << n.GetNumEx() << " unit " << n.GetUnitType()
          << " sign " << n.GetSignType() << " [" << Print(n) << "] default " << n.IsDefault() << " abs "
          << n.IsAbsoultValue() << " rel " << n.IsRelativeValue() << " points";
      for (auto [parent, dpi, x] : {std::tuple{-1, -1, -1}, {12, -1, -1}, {-1, 75, -1}, {-1, -1, 1200}, {12, 75, 1200}})
        out << " " << n.GetPoints(parent, dpi, x);
    } else if (kind == "color") {
      CSttColor c;
      char ref[16];
      out << c.Assign(text.c_str());
      std::snprintf(ref, sizeof ref, "%08X", c.GetColorRef());
      out << " kind " << c.GetKind() << " ref " << ref << " [" << c.GetPrintableString() << "] default "
          << c.IsDefault();
    } else {
      CSttUrl u;
      out << u.Assign(text.c_str()) << " kind " << u.GetKind() << " name [" << u.GetUrlName() << "] ["
          << u.GetPrintableString() << "] default " << u.IsDefault();
    }
    out << "\n";
  }
  return out.str();
}

TEST(StyleValuesTest, GoldenValues) { test::RunGoldenCases("style_values", ".values", DescribeValues, 3); }

TEST(SttNumberTest, RejectsTextWithoutLeadingDigit) {
  N n;
  for (const char* text : {".5em", "em", "", static_cast<const char*>(nullptr), "   "})
    EXPECT_EQ(n.Assign(text), 0) << (text ? text : "(null)");
  // The sign read before the failure stays.
  EXPECT_EQ(n.Assign("-.5"), 0);
  EXPECT_EQ(n.GetSignType(), N::emSignMinus);
  EXPECT_EQ(n.Assign("12"), 1);
  EXPECT_EQ(n.GetSignType(), N::emSignNone);
}

TEST(SttNumberTest, CompareAndDefault) {
  N plus("+3"), bare("3"), px("3px"), again("3");
  EXPECT_EQ(plus.Compare(&bare), 0);
  EXPECT_EQ(bare.Compare(&px), 0);
  EXPECT_EQ(bare.Compare(&again), 1);
  EXPECT_EQ(bare.Compare(nullptr), 0);

  N zero("0");
  EXPECT_EQ(zero.IsDefault(), 1);
  EXPECT_EQ(Print(zero), "");
  EXPECT_EQ(N("0px").IsDefault(), 0);
  EXPECT_EQ(Print(N("0px")), "0px");
  // Default is the one reset that reports 0.
  EXPECT_EQ(px.Default(), 0);
  EXPECT_EQ(px.IsDefault(), 1);
  EXPECT_EQ(px.Copy(nullptr), 0);
  N copy;
  copy = plus;
  EXPECT_EQ(copy.Compare(&plus), 1);
}

TEST(SttNumberTest, FloatAssignKeepsNoUnitOrSign) {
  N a(12.0f, N::emUnitPt, N::emSignMinus);
  EXPECT_FLOAT_EQ(a.GetNum(), 12.0f);
  EXPECT_EQ(a.GetUnitType(), N::emUnitNone);
  EXPECT_EQ(a.GetSignType(), N::emSignNone);

  N b;
  EXPECT_EQ(b.Assign(-3.0f, N::emUnitPx, N::emSignNone), 1);
  EXPECT_FLOAT_EQ(b.GetNum(), 3.0f);
  EXPECT_EQ(b.GetUnitType(), N::emUnitNone);
  // With a sign passed the number is taken as it is, negative or not.
  b.Assign(-3.0f, N::emUnitPx, N::emSignMinus);
  EXPECT_FLOAT_EQ(b.GetNum(), -3.0f);
}

TEST(SttNumberTest, AdditionSameAndMixedUnits) {
  N size("2pt"), pica("1pc");
  size += pica;
  EXPECT_EQ(size.GetUnitType(), N::emUnitPt);
  EXPECT_FLOAT_EQ(size.GetNum(), 14.0f);

  // Same unit: the other's sign counts, this sign is left alone.
  N three("3pt"), minusFive("-5pt");
  three += minusFive;
  EXPECT_FLOAT_EQ(three.GetNum(), -2.0f);
  EXPECT_EQ(three.GetSignType(), N::emSignNone);

  N twelve("12pt"), tenPercent("10%");
  twelve += tenPercent;
  EXPECT_FLOAT_EQ(twelve.GetNum(), 12.0f);
  EXPECT_EQ(twelve.GetUnitType(), N::emUnitPt);

  // Mixed units with a negative sum give a minus sign and a magnitude.
  N small("2pt"), less("-1in");
  small += less;
  EXPECT_FLOAT_EQ(small.GetNum(), 70.0f);
  EXPECT_EQ(small.GetSignType(), N::emSignMinus);
  EXPECT_EQ(Print(small), "-70pt");
}

TEST(SttColorTest, AssignAndPrint) {
  CSttColor c;
  EXPECT_EQ(c.Assign(""), 0);
  EXPECT_EQ(c.Assign("  "), 0);
  EXPECT_EQ(c.Assign(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(c.IsDefault(), 1);
  EXPECT_EQ(c.Assign(0x00FFFF00u), 1);
  EXPECT_EQ(std::string(c.GetPrintableString()), "aqua");
  EXPECT_EQ(std::string(CSttColor("#123456").GetPrintableString()), "#123456");
  EXPECT_EQ(std::string(CSttColor("#F00").GetPrintableString()), "red");
  CSttColor none(static_cast<COLORREF>(0xFF000000u));
  EXPECT_EQ(none.IsDefault(), 1);
  EXPECT_EQ(std::string(none.GetPrintableString()), "");
  EXPECT_EQ(c.Compare(nullptr), 0);
  EXPECT_EQ(c.Copy(nullptr), 0);
}

TEST(SttUrlTest, CompareIgnoresCaseAndKind) {
  EXPECT_EQ(CSttUrl().Analyse(""), 0);
  EXPECT_EQ(std::string(CSttUrl().GetPrintableString()), "");
  CSttUrl a("url(Img/A.GIF)"), b("img/a.gif"), c("img/b.gif");
  EXPECT_EQ(a.Compare(&b), 1);
  EXPECT_EQ(a.Compare(&c), 0);
  EXPECT_EQ(a.Compare(nullptr), 0);
  CSttUrl copy(a);
  EXPECT_EQ(copy.GetKind(), CSttUrl::emUrlFunction);
  EXPECT_EQ(copy.Compare(&a), 1);
}

TEST(SttUrlTest, MakeNormalizedUrl) {
  EXPECT_EQ(std::string(CSttUrl::MakeNormalizedUrl("a\\b.gif", '\'')), "url('a/b.gif')");
  EXPECT_EQ(std::string(CSttUrl::MakeNormalizedUrl("a\\b.gif", 0)), "url(a/b.gif)");
  EXPECT_EQ(std::string(CSttUrl::MakeNormalizedUrl("x y.css", '"')), "url(\"x y.css\")");
  EXPECT_EQ(std::string(CSttUrl::MakeNormalizedUrl(nullptr, 0)), "url()");
}

TEST(StyleValuesTest, OverLongTextsStayInBounds) {
  std::string digits(5000, '7');
  EXPECT_GT(N(digits.c_str()).GetNum(), 0.0f);
  std::string units = "1" + std::string(5000, 'q');
  EXPECT_EQ(N(units.c_str()).GetUnitType(), N::emUnitUnknown);
  std::string url = "url('" + std::string(5000, 'a');
  EXPECT_EQ(CSttUrl(url.c_str()).GetUrlName().GetLength(), 5000);
  std::string rgb = "rgb(" + std::string(5000, '9');
  EXPECT_EQ(CSttColor(rgb.c_str()).GetKind(), CSttColor::emColorUnknown);
}

}  // namespace
}  // namespace telvanix

#include "telvanix/css/style_values.h"

#include <gtest/gtest.h>

#include <string>

namespace telvanix {
namespace {

std::string Print(const CSttNumber& n) { return std::string(n.GetPrintableString()); }

TEST(SttNumberTest, ReadsSignMagnitudeAndUnit) {
  CSttNumber n("-12.4pt");
  EXPECT_EQ(n.GetSignType(), CSttNumber::emSignMinus);
  EXPECT_FLOAT_EQ(n.GetNum(), 12.4f);
  EXPECT_FLOAT_EQ(n.GetNumEx(), -12.4f);
  EXPECT_EQ(n.GetUnitType(), CSttNumber::emUnitPt);
  EXPECT_EQ(Print(n), "-12pt");

  EXPECT_EQ(Print(CSttNumber("2.5in")), "2.50in");
  EXPECT_EQ(CSttNumber("12PT").GetUnitType(), CSttNumber::emUnitPt);
  EXPECT_EQ(CSttNumber("+3").GetSignType(), CSttNumber::emSignPlus);
  EXPECT_FLOAT_EQ(CSttNumber("+3").GetNumEx(), 3.0f);
  EXPECT_EQ(CSttNumber("50%").GetUnitType(), CSttNumber::emUnitPercent);
  EXPECT_EQ(Print(CSttNumber("50%")), "50%");
  EXPECT_EQ(CSttNumber("2en").GetUnitType(), CSttNumber::emUnitEn);
  EXPECT_EQ(CSttNumber("3mm").GetUnitType(), CSttNumber::emUnitMm);
}

TEST(SttNumberTest, OddNumberTextsKeepTheirReading) {
  // Digits after the unit letters still join the number.
  CSttNumber mixed("12px3");
  EXPECT_FLOAT_EQ(mixed.GetNum(), 123.0f);
  EXPECT_EQ(mixed.GetUnitType(), CSttNumber::emUnitPx);

  CSttNumber points("1.5.2em");
  EXPECT_FLOAT_EQ(points.GetNum(), 1.5f);
  EXPECT_EQ(points.GetUnitType(), CSttNumber::emUnitEm);

  CSttNumber spaced("12 px");
  EXPECT_FLOAT_EQ(spaced.GetNum(), 12.0f);
  EXPECT_EQ(spaced.GetUnitType(), CSttNumber::emUnitNone);

  CSttNumber font("12pt/14pt");
  EXPECT_FLOAT_EQ(font.GetNum(), 12.0f);
  EXPECT_EQ(font.GetUnitType(), CSttNumber::emUnitPt);

  // A unit longer than the buffer is cut and then not recognised.
  EXPECT_EQ(CSttNumber("1abcdefghijklmnopq").GetUnitType(), CSttNumber::emUnitUnknown);
  EXPECT_EQ(CSttNumber("1pz").GetUnitType(), CSttNumber::emUnitUnknown);
  // An unknown unit prints as the sign alone.
  EXPECT_EQ(Print(CSttNumber("-1pz")), "-");
}

TEST(SttNumberTest, RejectsTextWithoutLeadingDigit) {
  CSttNumber n;
  EXPECT_EQ(n.Assign(".5em"), 0);
  EXPECT_EQ(n.Assign("em"), 0);
  EXPECT_EQ(n.Assign(""), 0);
  EXPECT_EQ(n.Assign(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(n.Assign("   "), 0);
  // The sign read before the failure stays.
  EXPECT_EQ(n.Assign("-.5"), 0);
  EXPECT_EQ(n.GetSignType(), CSttNumber::emSignMinus);
  EXPECT_EQ(n.Assign("12"), 1);
  EXPECT_EQ(n.GetSignType(), CSttNumber::emSignNone);
}

TEST(SttNumberTest, CompareAndDefault) {
  CSttNumber plus("+3"), bare("3"), px("3px"), again("3");
  EXPECT_EQ(plus.Compare(&bare), 0);
  EXPECT_EQ(bare.Compare(&px), 0);
  EXPECT_EQ(bare.Compare(&again), 1);
  EXPECT_EQ(bare.Compare(nullptr), 0);

  CSttNumber zero("0");
  EXPECT_EQ(zero.IsDefault(), 1);
  EXPECT_EQ(Print(zero), "");
  EXPECT_EQ(CSttNumber("0px").IsDefault(), 0);
  EXPECT_EQ(Print(CSttNumber("0px")), "0px");
  // Default is the one reset that reports 0.
  EXPECT_EQ(px.Default(), 0);
  EXPECT_EQ(px.IsDefault(), 1);
  EXPECT_EQ(px.Copy(nullptr), 0);
  CSttNumber copy;
  copy = plus;
  EXPECT_EQ(copy.Compare(&plus), 1);
}

TEST(SttNumberTest, FloatAssignKeepsNoUnitOrSign) {
  CSttNumber a(12.0f, CSttNumber::emUnitPt, CSttNumber::emSignMinus);
  EXPECT_FLOAT_EQ(a.GetNum(), 12.0f);
  EXPECT_EQ(a.GetUnitType(), CSttNumber::emUnitNone);
  EXPECT_EQ(a.GetSignType(), CSttNumber::emSignNone);

  CSttNumber b;
  EXPECT_EQ(b.Assign(-3.0f, CSttNumber::emUnitPx, CSttNumber::emSignNone), 1);
  EXPECT_FLOAT_EQ(b.GetNum(), 3.0f);
  EXPECT_EQ(b.GetUnitType(), CSttNumber::emUnitNone);
  // With a sign passed the number is taken as it is, negative or not.
  b.Assign(-3.0f, CSttNumber::emUnitPx, CSttNumber::emSignMinus);
  EXPECT_FLOAT_EQ(b.GetNum(), -3.0f);
}

TEST(SttNumberTest, AbsoluteAndRelativeUnits) {
  EXPECT_EQ(CSttNumber("3mm").IsAbsoultValue(), 1);
  EXPECT_EQ(CSttNumber("3").IsAbsoultValue(), 1);
  EXPECT_EQ(CSttNumber("3px").IsAbsoultValue(), 0);
  EXPECT_EQ(CSttNumber("3px").IsRelativeValue(), 1);
  EXPECT_EQ(CSttNumber("3en").IsRelativeValue(), 1);
  EXPECT_EQ(CSttNumber("3zz").IsRelativeValue(), 0);
  EXPECT_EQ(CSttNumber("3zz").IsAbsoultValue(), 0);
}

TEST(SttNumberTest, GetPointsTruncatesSinglePrecisionProducts) {
  // The single-precision hundredth makes exact results fall one short.
  EXPECT_EQ(CSttNumber("100%").GetPoints(12, -1, -1), 11);
  EXPECT_EQ(CSttNumber("150%").GetPoints(12, -1, -1), 17);
  EXPECT_EQ(CSttNumber("1em").GetPoints(-1, -1, 1200), 11);
  EXPECT_EQ(CSttNumber("1ex").GetPoints(-1, -1, 1200), 11);
  EXPECT_EQ(CSttNumber("16px").GetPoints(-1, 75, -1), 11);
  // The twentieth is slightly above 0.05, so these come out whole.
  EXPECT_EQ(CSttNumber("16px").GetPoints(-1, -1, -1), 12);
  EXPECT_EQ(CSttNumber("1in").GetPoints(-1, -1, -1), 72);
  EXPECT_EQ(CSttNumber("1cm").GetPoints(-1, -1, -1), 28);
  EXPECT_EQ(CSttNumber("10mm").GetPoints(-1, -1, -1), 28);
  EXPECT_EQ(CSttNumber("2pc").GetPoints(-1, -1, -1), 24);
  EXPECT_EQ(CSttNumber("10.9pt").GetPoints(-1, -1, -1), 10);
  EXPECT_EQ(CSttNumber("-10.9pt").GetPoints(-1, -1, -1), -10);
  EXPECT_EQ(CSttNumber("50%").GetPoints(-1, 75, 1200), 0);
  EXPECT_EQ(CSttNumber("3em").GetPoints(12, 75, -1), 0);
  EXPECT_EQ(CSttNumber("3zz").GetPoints(12, 75, 1200), 0);
  // Absurd sizes stay defined.
  EXPECT_EQ(CSttNumber("99999999999999in").GetPoints(-1, -1, -1), 2147483647);
}

TEST(SttNumberTest, AdditionSameAndMixedUnits) {
  CSttNumber size("2pt"), pica("1pc");
  size += pica;
  EXPECT_EQ(size.GetUnitType(), CSttNumber::emUnitPt);
  EXPECT_FLOAT_EQ(size.GetNum(), 14.0f);

  // Same unit: the other's sign counts, this sign is left alone.
  CSttNumber three("3pt"), minusFive("-5pt");
  three += minusFive;
  EXPECT_FLOAT_EQ(three.GetNum(), -2.0f);
  EXPECT_EQ(three.GetSignType(), CSttNumber::emSignNone);

  CSttNumber twelve("12pt"), tenPercent("10%");
  twelve += tenPercent;
  EXPECT_FLOAT_EQ(twelve.GetNum(), 12.0f);
  EXPECT_EQ(twelve.GetUnitType(), CSttNumber::emUnitPt);

  // Mixed units with a negative sum give a minus sign and a magnitude.
  CSttNumber small("2pt"), less("-1in");
  small += less;
  EXPECT_FLOAT_EQ(small.GetNum(), 70.0f);
  EXPECT_EQ(small.GetSignType(), CSttNumber::emSignMinus);
  EXPECT_EQ(Print(small), "-70pt");
}

TEST(SttColorTest, HexNamesAndUnrecognised) {
  CSttColor shortHex("#F00"), name("red"), longHex("#ff0000");
  EXPECT_EQ(shortHex.GetColorRef(), 0x0000FFu);
  EXPECT_EQ(shortHex.GetKind(), CSttColor::emColorValue);
  EXPECT_EQ(name.GetKind(), CSttColor::emColorName);
  EXPECT_EQ(shortHex.Compare(&name), 1);
  EXPECT_EQ(longHex.Compare(&name), 1);
  EXPECT_EQ(CSttColor("NAVY").GetColorRef(), 0x800000u);

  // The "#" is optional, so hex-looking words are colours before names.
  EXPECT_EQ(CSttColor("c0c0c0").GetColorRef(), 0xC0C0C0u);
  EXPECT_EQ(CSttColor("abc").GetColorRef(), 0xCCBBAAu);
  EXPECT_EQ(CSttColor("#123456 trailing").GetColorRef(), 0x563412u);

  CSttColor five("#ff000");
  EXPECT_EQ(five.GetKind(), CSttColor::emColorUnknown);
  EXPECT_EQ(five.IsDefault(), 1);
  CSttColor word("notacolour");
  EXPECT_EQ(word.GetKind(), CSttColor::emColorUnknown);
  EXPECT_EQ(word.GetColorRef(), 0xFF000000u);
}

TEST(SttColorTest, RgbNotationIsKeptAsUnrecognised) {
  CSttColor c;
  EXPECT_EQ(c.Assign("rgb(255,0,0)"), 1);
  EXPECT_EQ(c.GetKind(), CSttColor::emColorUnknown);
  EXPECT_EQ(c.GetColorRef(), 0xFF000000u);
  EXPECT_EQ(std::string(c.GetPrintableString()), "");
  EXPECT_EQ(c.Assign("rgb(100%, 0%, 0%)"), 1);
  EXPECT_EQ(c.GetKind(), CSttColor::emColorUnknown);
  // Short texts skip four characters unchecked; none may read past the end.
  EXPECT_EQ(c.Assign("zz"), 1);
  EXPECT_EQ(c.Assign("rgb("), 1);
  EXPECT_EQ(c.Assign("rgb(1,"), 1);
  EXPECT_EQ(c.GetKind(), CSttColor::emColorUnknown);
  // Percentages that no int holds once scaled by 2.55 (found by fuzzing;
  // the overflowing conversion shows under clang's undefined-behaviour
  // sanitizer, which checks float-to-int casts).
  EXPECT_EQ(c.Assign("rgb(10%, 999999999, 0)"), 1);
  EXPECT_EQ(c.Assign("rgb(-999999999%, 1, 1)"), 1);
  EXPECT_EQ(c.GetKind(), CSttColor::emColorUnknown);
  EXPECT_EQ(c.GetColorRef(), 0xFF000000u);
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

TEST(SttUrlTest, FunctionAndBareForms) {
  CSttUrl u("URL('x.css')");
  EXPECT_EQ(u.GetKind(), CSttUrl::emUrlFunction);
  EXPECT_EQ(std::string(u.GetUrlName()), "x.css");
  EXPECT_EQ(std::string(u.GetPrintableString()), "url(x.css)");

  CSttUrl spaced("url( 'images/a b.gif' )");
  EXPECT_EQ(std::string(spaced.GetUrlName()), "images/a b.gif");

  CSttUrl bare("a.gif");
  EXPECT_EQ(bare.GetKind(), CSttUrl::emUrlBare);
  EXPECT_EQ(std::string(bare.GetPrintableString()), "a.gif");

  EXPECT_EQ(std::string(CSttUrl("url(a\\b.gif)").GetPrintableString()), "url(a/b.gif)");
  // Only the last ")" goes; short texts are bare whatever they look like.
  EXPECT_EQ(std::string(CSttUrl("url(a(1).gif)").GetUrlName()), "a(1).gif");
  EXPECT_EQ(CSttUrl("url()").GetKind(), CSttUrl::emUrlBare);
  EXPECT_EQ(std::string(CSttUrl("url(x").GetUrlName()), "url(x");
  EXPECT_EQ(std::string(CSttUrl("url(abc").GetUrlName()), "abc");

  CSttUrl empty;
  EXPECT_EQ(empty.Assign(""), 0);
  EXPECT_EQ(empty.IsDefault(), 1);
  EXPECT_EQ(std::string(empty.GetPrintableString()), "");
}

TEST(SttUrlTest, CompareIgnoresCaseAndKind) {
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
  CSttNumber n(digits.c_str());
  EXPECT_GT(n.GetNum(), 0.0f);
  std::string units = "1" + std::string(5000, 'q');
  EXPECT_EQ(CSttNumber(units.c_str()).GetUnitType(), CSttNumber::emUnitUnknown);
  std::string url = "url('" + std::string(5000, 'a');
  EXPECT_EQ(CSttUrl(url.c_str()).GetUrlName().GetLength(), 5000);
  std::string rgb = "rgb(" + std::string(5000, '9');
  EXPECT_EQ(CSttColor(rgb.c_str()).GetKind(), CSttColor::emColorUnknown);
}

}  // namespace
}  // namespace telvanix

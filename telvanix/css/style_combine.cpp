#include "telvanix/css/style_combine.h"

#include <algorithm>

#include "telvanix/css/style_format.h"

namespace telvanix {

namespace {

using N = CCssPropertyNames;
using C = CCssStyleCombine;

// How a property's value is judged.
enum class EmKind : unsigned char { kColor, kFamily, kFontSize, kWeight, kKeyword, kLength, kSize, kWidth, kText };

struct CPropertyRow {
  N::EmPropertyNameId id;
  EmKind kind;
  bool inherited;
};

constexpr CPropertyRow kRows[C::emPropertyCount] = {
    {N::emPropertyColor, EmKind::kColor, true},
    {N::emPropertyBackgroundColor, EmKind::kColor, false},
    {N::emPropertyFontFamily, EmKind::kFamily, true},
    {N::emPropertyFontSize, EmKind::kFontSize, true},
    {N::emPropertyFontWeight, EmKind::kWeight, true},
    {N::emPropertyFontStyle, EmKind::kKeyword, true},
    {N::emPropertyTextDecoration, EmKind::kKeyword, false},
    {N::emPropertyTextAlign, EmKind::kKeyword, true},
    {N::emPropertyVerticalAlign, EmKind::kLength, false},
    {N::emPropertyMarginTop, EmKind::kLength, false},
    {N::emPropertyMarginRight, EmKind::kLength, false},
    {N::emPropertyMarginBottom, EmKind::kLength, false},
    {N::emPropertyMarginLeft, EmKind::kLength, false},
    {N::emPropertyPaddingTop, EmKind::kSize, false},
    {N::emPropertyPaddingRight, EmKind::kSize, false},
    {N::emPropertyPaddingBottom, EmKind::kSize, false},
    {N::emPropertyPaddingLeft, EmKind::kSize, false},
    {N::emPropertyBorderTopWidth, EmKind::kWidth, false},
    {N::emPropertyBorderRightWidth, EmKind::kWidth, false},
    {N::emPropertyBorderBottomWidth, EmKind::kWidth, false},
    {N::emPropertyBorderLeftWidth, EmKind::kWidth, false},
    {N::emPropertyBorderTopStyle, EmKind::kKeyword, false},
    {N::emPropertyBorderRightStyle, EmKind::kKeyword, false},
    {N::emPropertyBorderBottomStyle, EmKind::kKeyword, false},
    {N::emPropertyBorderLeftStyle, EmKind::kKeyword, false},
    {N::emPropertyBorderTopColor, EmKind::kColor, false},
    {N::emPropertyBorderRightColor, EmKind::kColor, false},
    {N::emPropertyBorderBottomColor, EmKind::kColor, false},
    {N::emPropertyBorderLeftColor, EmKind::kColor, false},
    {N::emPropertyListStyleType, EmKind::kKeyword, true},
    {N::emPropertyWhiteSpace, EmKind::kText, true},
};

static_assert([] {
  for (int i = 1; i < C::emPropertyCount; ++i)
    for (int j = 0; j < i; ++j)
      if (kRows[i].id == kRows[j].id)
        return false;
  return true;
}(), "each property once");

// A length as CSS takes it: a unit it knows, or a bare 0 (any bare number
// in quirks mode); `negative` allows a minus sign.
bool IsLength(const CSttNumber& number, bool quirks, bool negative) {
  if (!negative && number.GetSignType() == CSttNumber::emSignMinus && number.GetNum() != 0.0f)
    return false;
  switch (number.GetUnitType()) {
    case CSttNumber::emUnitNone:
      return quirks || number.GetNum() == 0.0f;
    case CSttNumber::emUnitEn:
    case CSttNumber::emUnitUnknown:
      return false;
    default:
      return true;
  }
}

// The side index of a property within its group of four.
int SideOf(C::EmProperty property, C::EmProperty first) { return static_cast<int>(property - first); }

const CSttNumber* NumberOf(C::EmProperty property, const CCssStyleFormat& f, N::EmPropertyValue& code) {
  code = N::emValueNumber;
  if (property >= C::emMarginTop && property <= C::emMarginLeft)
    return &f.GetMargin(SideOf(property, C::emMarginTop));
  if (property >= C::emPaddingTop && property <= C::emPaddingLeft)
    return &f.GetPadding(SideOf(property, C::emPaddingTop));
  if (property >= C::emBorderTopWidth && property <= C::emBorderLeftWidth) {
    const CCssStyleFormat::CBorder& border = f.GetBorder(SideOf(property, C::emBorderTopWidth));
    code = border.GetWidthValue();
    return &border.GetWidth();
  }
  if (property == C::emVerticalAlign) {
    code = f.GetVerticalAlign();
    return &f.GetVerticalAlignNumber();
  }
  return nullptr;
}

bool IsWhiteSpaceWord(const CString& text) {
  static const char* const kWords[] = {"normal", "pre", "nowrap", "pre-wrap", "pre-line", "break-spaces"};
  for (const char* word : kWords)
    if (text == word)
      return true;
  return false;
}

}  // namespace

CCssPropertyNames::EmPropertyNameId CCssStyleCombine::GetPropertyNameId(EmProperty property) {
  return property >= 0 && property < emPropertyCount ? kRows[property].id : N::emPropertyUnknown;
}

int CCssStyleCombine::IsInheritedProperty(EmProperty property) {
  return property >= 0 && property < emPropertyCount && kRows[property].inherited ? 1 : 0;
}

int CCssStyleCombine::IsInheritValue(EmProperty property, const CCssStyleFormat& f) {
  switch (property) {
    case emFontWeight:
      return f.GetFontWeight() == N::emFontWeightInherit;
    case emFontStyle:
      return f.GetFontStyle() == N::emFontStyleInherit;
    case emFontFamily:
      return f.GetFontFamily().CompareNoCase("inherit") == 0;
    case emWhiteSpace:
      return f.GetWhiteSpace() == "inherit";
    default:
      return 0;
  }
}

int CCssStyleCombine::IsValidValue(EmProperty property, const CCssStyleFormat& f, bool quirks) {
  if (property < 0 || property >= emPropertyCount)
    return 0;
  if (IsInheritValue(property, f))
    return 1;
  switch (kRows[property].kind) {
    case EmKind::kColor:
    case EmKind::kFamily:
      return 1;  // the readers refuse what is no colour or family
    case EmKind::kFontSize:
      return f.GetFontSizeValue() != N::emValueNone || IsLength(f.GetFontSize(), quirks, false);
    case EmKind::kWeight: {
      const N::EmPropertyValue w = f.GetFontWeight();
      if (w == N::emValueNumber) {
        const CSttNumber& n = f.GetFontWeightNumber();
        return n.GetUnitType() == CSttNumber::emUnitNone && n.GetSignType() != CSttNumber::emSignMinus &&
               n.GetNum() >= 1.0f && n.GetNum() <= 1000.0f;
      }
      // The table's other words (light, demi-bold...) are no CSS weights.
      return w == N::emFontWeightNormal || w == N::emFontWeightBold || w == N::emFontWeightBolder;
    }
    case EmKind::kKeyword:
      if (property == emTextDecoration)
        return f.GetTextDecoration() != N::emTextDecorationItalic;
      return 1;
    case EmKind::kText:
      return IsWhiteSpaceWord(f.GetWhiteSpace());
    case EmKind::kLength:
    case EmKind::kSize:
    case EmKind::kWidth: {
      N::EmPropertyValue code = N::emValueNumber;
      const CSttNumber* number = NumberOf(property, f, code);
      if (!number)
        return 0;
      if (code != N::emValueNumber)
        return 1;
      if (kRows[property].kind == EmKind::kWidth && number->GetUnitType() == CSttNumber::emUnitPercent)
        return 0;
      return IsLength(*number, quirks, kRows[property].kind == EmKind::kLength);
    }
  }
  return 0;
}

void CCssStyleCombine::Combine(std::vector<CCssStyleCollector::CMatch>& matches, bool quirks) {
  auto before = [](const CCssStyleCollector::CMatch& a, const CCssStyleCollector::CMatch& b) {
    if (a.level != b.level)
      return a.level < b.level;
    if (a.specificity != b.specificity)
      return a.specificity < b.specificity;
    return a.order < b.order;
  };
  // An element meets few rules: an insertion sort (stable too) spares the
  // merge buffer a stable sort allocates on every call.
  if (matches.size() > 32) {
    std::stable_sort(matches.begin(), matches.end(), before);
  } else {
    for (size_t i = 1; i < matches.size(); ++i) {
      if (!before(matches[i], matches[i - 1]))
        continue;
      CCssStyleCollector::CMatch moving = matches[i];
      size_t j = i;
      for (; j > 0 && before(moving, matches[j - 1]); --j)
        matches[j] = matches[j - 1];
      matches[j] = moving;
    }
  }
  for (int p = 0; p < emPropertyCount; ++p)
    m_tWinners[p] = CWinner();
  for (const CCssStyleCollector::CMatch& match : matches) {
    if (!match.format || (match.format->IsDefault() && match.inherit.none()))
      continue;
    EmOrigin origin = emOriginRule;
    switch (match.level) {
      case CCssStyleCollector::emLevelDefault:
      case CCssStyleCollector::emLevelDefaultLink:
      case CCssStyleCollector::emLevelDefaultImportant:
        origin = emOriginDefault;
        break;
      case CCssStyleCollector::emLevelAttribute:
        origin = emOriginAttribute;
        break;
      case CCssStyleCollector::emLevelInline:
      case CCssStyleCollector::emLevelInlineImportant:
        origin = emOriginInline;
        break;
      default:
        break;
    }
    const bool inherits = match.inherit.any();
    for (int p = 0; p < emPropertyCount; ++p) {
      const EmProperty property = static_cast<EmProperty>(p);
      if (inherits && match.inherit.test(static_cast<size_t>(kRows[p].id))) {
        m_tWinners[p] = {nullptr, emOriginInherited, nullptr, 0};
        continue;
      }
      if (!match.format->IsPropertySet(kRows[p].id) || !IsValidValue(property, *match.format, quirks))
        continue;
      m_tWinners[p] = {match.format, origin, match.file, match.line};
    }
  }
  for (int p = 0; p < emPropertyCount; ++p) {
    CWinner& w = m_tWinners[p];
    const EmProperty property = static_cast<EmProperty>(p);
    if (w.format ? IsInheritValue(property, *w.format) : kRows[p].inherited)
      w = {nullptr, emOriginInherited, nullptr, 0};
  }
}

}  // namespace telvanix

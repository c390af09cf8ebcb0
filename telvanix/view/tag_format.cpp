#include "telvanix/view/tag_format.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <cstdio>
#include <cstring>
#include <strings.h>

#include "telvanix/css/style_format.h"
#include "telvanix/css/style_values.h"

namespace telvanix {

namespace {

using C = CCssStyleCombine;
using N = CCssPropertyNames;
using F = CCssStyleFormat;

constexpr COLORREF kTransparent = 0xFF000000;
// Browser sizes of the keywords xx-small..xx-large, and of the same keywords
// in a monospace family.
constexpr float kKeywordPx[7] = {9, 10, 13, 16, 18, 24, 32};
constexpr float kMonospaceKeywordPx[7] = {9, 10, 12, 13, 16, 20, 26};
constexpr float kQuirksMonospaceKeywordPx[7] = {9, 9, 10, 13, 16, 20, 26};
constexpr int kMediumKeyword = 4;
// The x-height of the default serif face, as a share of the font size.
constexpr float kExRatio = 0.458984375f;

const char* Keyword(QuickMapStringToValueItem* table, int bytes, int code) {
  const int rows = bytes / static_cast<int>(sizeof(QuickMapStringToValueItem));
  for (int i = 0; i < rows; ++i)
    if (table[i].nValue == code)
      return table[i].pszKey;
  return "";
}

// A family list as a browser writes it: names that are not one identifier
// in double quotes, generic families bare, ", " between.
CString SerializedFamilies(const CString& list) {
  static const char* const kGeneric[] = {"serif", "sans-serif", "monospace", "cursive", "fantasy", "system-ui"};
  CString out;
  const char* p = list;
  while (*p) {
    const char* comma = p;
    char quote = 0;
    for (; *comma && (quote || *comma != ','); ++comma)
      quote = quote ? (*comma == quote ? 0 : quote) : (*comma == '"' || *comma == '\'' ? *comma : 0);
    CString name(p, static_cast<int>(comma - p));
    name.Trim();
    name.Remove('"');
    name.Remove('\'');
    name.Trim();
    p = *comma ? comma + 1 : comma;
    if (name.IsEmpty())
      continue;
    bool identifier = !(name[0] >= '0' && name[0] <= '9');
    for (const char* c = name; *c && identifier; ++c)
      identifier = (*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z') || (*c >= '0' && *c <= '9') || *c == '-' ||
                   *c == '_' || static_cast<unsigned char>(*c) >= 0x80;
    bool generic = false;
    for (const char* g : kGeneric)
      generic = generic || name.CompareNoCase(g) == 0;
    if (!out.IsEmpty())
      out += ", ";
    out += identifier || generic ? name : CString("\"") + name + "\"";
  }
  return out;
}

float WeightOf(const F& f, float parent) {
  switch (f.GetFontWeight()) {
    case N::emValueNumber:
      return f.GetFontWeightNumber().GetNum();
    case N::emFontWeightBold:
      return 700;
    case N::emFontWeightBolder:
      return parent < 350 ? 400 : parent < 550 ? 700 : parent < 900 ? 900 : parent;
    default:
      return 400;
  }
}

// Border widths are drawn in whole pixels: down to a whole number, and a
// width under one pixel is one.
float SnapBorder(float px) {
  if (px <= 0)
    return 0;
  return px < 1 ? 1 : std::floor(px);
}

}  // namespace

CHtmlTagFormat::CHtmlTagFormat() : m_pData(std::make_shared<CComputed>()) {}

CHtmlTagFormat::CHtmlTagFormat(const CHtmlTagFormat& other)
    : CRglObject(), m_pData(other.m_pData), m_strTagName(other.m_strTagName), m_nLine(other.m_nLine) {}

float CHtmlTagFormat::GetFontSizePx() const { return m_pData->values[C::emFontSize].number; }

CHtmlTagFormat::~CHtmlTagFormat() = default;

const char* CHtmlTagFormat::GetPropertyName(EmProperty property) {
  if (property < 0 || property >= C::emPropertyCount)
    return nullptr;
  return N::GetPropertyNameString(C::GetPropertyNameId(property));
}

CCssStyleCombine::EmOrigin CHtmlTagFormat::GetOrigin(EmProperty property) const {
  return property >= 0 && property < C::emPropertyCount ? m_pData->origins[property].kind : C::emOriginInitial;
}

CString CHtmlTagFormat::GetOriginText(EmProperty property) const {
  if (property < 0 || property >= C::emPropertyCount)
    return CString();
  const COrigin& o = m_pData->origins[property];
  switch (o.kind) {
    case C::emOriginDefault: return CString("default");
    case C::emOriginAttribute: return CString("attribute");
    case C::emOriginInline: return CString("inline");
    case C::emOriginInherited: return CString("inherited");
    case C::emOriginRule: {
      CString text;
      text.Format("%s:%d", o.file, o.line);
      return text;
    }
    default: return CString("initial");
  }
}

COLORREF CHtmlTagFormat::GetColor(EmProperty property) const {
  if (property < 0 || property >= C::emPropertyCount || m_pData->values[property].type != kColor)
    return kTransparent;
  return m_pData->values[property].color;
}

CString CHtmlTagFormat::GetComputedValue(EmProperty property) const {
  CString out;
  if (property < 0 || property >= C::emPropertyCount)
    return out;
  const CValue& v = m_pData->values[property];
  switch (v.type) {
    case kPx:
    case kPercent: {
      char text[48];
      // Up to four decimals, as a browser writes them, without trailing zeros.
      std::snprintf(text, sizeof text, "%.4f", static_cast<double>(v.number));
      char* end = text + std::strlen(text);
      while (end[-1] == '0')
        --end;
      if (end[-1] == '.')
        --end;
      *end = 0;
      if (std::strcmp(text, "-0") == 0)
        std::strcpy(text, "0");
      out.Format("%s%s", text, v.type == kPx ? "px" : "%");
      break;
    }
    case kColor:
      if (v.color == kTransparent)
        out = "rgba(0, 0, 0, 0)";
      else
        out.Format("rgb(%u, %u, %u)", v.color & 0xFF, (v.color >> 8) & 0xFF, (v.color >> 16) & 0xFF);
      break;
    case kNumber:
      out.Format("%d", static_cast<int>(v.number));
      break;
    case kFamily:
      out = SerializedFamilies(m_pData->family);
      break;
    default:
      out = v.keyword;
      break;
  }
  return out;
}

float CHtmlTagFormat::LengthPx(const CSttNumber& number, float fontSize, bool& percent) const {
  percent = false;
  const float n = number.GetNumEx();
  switch (number.GetUnitType()) {
    case CSttNumber::emUnitPt: return n * 96.0f / 72.0f;
    case CSttNumber::emUnitPc: return n * 16.0f;
    case CSttNumber::emUnitIn: return n * 96.0f;
    case CSttNumber::emUnitCm: return n * 96.0f / 2.54f;
    case CSttNumber::emUnitMm: return n * 96.0f / 25.4f;
    case CSttNumber::emUnitEm: return n * fontSize;
    case CSttNumber::emUnitEx: return n * fontSize * kExRatio;
    case CSttNumber::emUnitPercent:
      percent = true;
      return n;
    default:
      return n;  // px, and a bare number (quirks mode)
  }
}

void CHtmlTagFormat::ComputeFont(const CCssStyleCombine& combine, const CHtmlTagFormat* parent, bool quirks) {
  // Family first: a monospace family changes what a size keyword means.
  const C::CWinner& family = combine.GetWinner(C::emFontFamily);
  if (!family.format) {
    m_pData->family = parent ? parent->m_pData->family : "Times New Roman";
  } else if (family.origin == C::emOriginDefault || family.origin == C::emOriginRule) {
    m_pData->family = family.format->GetFontFamily();
  } else {
    m_pData->ownFamily = family.format->GetFontFamily();
    m_pData->family = m_pData->ownFamily;
  }
  m_pData->values[C::emFontFamily].type = kFamily;
  const bool monospace = strcasecmp(m_pData->family, "monospace") == 0;

  const C::CWinner& size = combine.GetWinner(C::emFontSize);
  const float parentSize = parent ? parent->GetFontSizePx() : kKeywordPx[kMediumKeyword - 1];
  // A size that comes from a keyword, through any em and % steps, keeps
  // the keyword and the factor, so that a monospace family can resize it.
  const int parentKeyword = parent ? parent->m_pData->sizeKeyword : kMediumKeyword;
  const float parentFactor = parent ? parent->m_pData->sizeFactor : 1.0f;
  float px = parentSize;
  m_pData->sizeKeyword = parentKeyword;
  m_pData->sizeFactor = parentFactor;
  if (size.format) {
    const N::EmPropertyValue code = size.format->GetFontSizeValue();
    const CSttNumber& n = size.format->GetFontSize();
    float factor = 0;  // a multiple of the parent's size, 0 for an absolute size
    if (code >= N::emFontSizeXXSmall && code <= N::emFontSizeXXLarge) {
      m_pData->sizeKeyword = code;
      m_pData->sizeFactor = 1;
    } else if (code == N::emFontSizeLarger) {
      factor = 1.2f;
    } else if (code == N::emFontSizeSmaller) {
      factor = 1 / 1.2f;
    } else if (!parent && size.origin == C::emOriginDefault) {
      m_pData->sizeKeyword = kMediumKeyword;  // the root's default size is the medium keyword's
      m_pData->sizeFactor = 1;
    } else if (n.GetUnitType() == CSttNumber::emUnitEm) {
      factor = n.GetNumEx();
    } else if (n.GetUnitType() == CSttNumber::emUnitPercent) {
      factor = n.GetNumEx() / 100.0f;
    } else {
      bool percent = false;
      px = LengthPx(n, parentSize, percent);
      m_pData->sizeKeyword = 0;
    }
    if (factor != 0) {
      px = parentSize * factor;
      m_pData->sizeFactor = parentFactor * factor;
    }
  }
  CComputed& data = *m_pData;
  if (data.sizeKeyword >= 1 && data.sizeKeyword <= 7) {
    const float* table = !monospace ? kKeywordPx : quirks ? kQuirksMonospaceKeywordPx : kMonospaceKeywordPx;
    px = table[data.sizeKeyword - 1] * data.sizeFactor;
  }
  data.values[C::emFontSize].type = kPx;
  data.values[C::emFontSize].number = px;
}

void CHtmlTagFormat::Compute(const CCssStyleCombine& combine, const CHtmlTagFormat* parent, bool quirks) {
  if (!m_pData || m_pData.use_count() > 1)
    m_pData = std::make_shared<CComputed>();
  ComputeFont(combine, parent, quirks);
  const float fontSize = GetFontSizePx();
  for (int p = 0; p < C::emPropertyCount; ++p) {
    const EmProperty property = static_cast<EmProperty>(p);
    const C::CWinner& w = combine.GetWinner(property);
    COrigin& origin = m_pData->origins[p];
    origin.kind = w.origin;
    origin.line = w.line;
    origin.file = w.origin == C::emOriginRule && w.file ? w.file : "";
    if (property == C::emFontFamily || property == C::emFontSize)
      continue;
    CValue& v = m_pData->values[p];
    if (!w.format) {
      // Inherited, or the initial value.
      if (w.origin == C::emOriginInherited && parent) {
        v = parent->m_pData->values[p];
        continue;
      }
      v = CValue();
      switch (property) {
        case C::emColor:
          v.type = kColor;
          v.color = 0;
          break;
        case C::emBackgroundColor:
          v.type = kColor;
          v.color = kTransparent;
          break;
        case C::emFontWeight:
          v.type = kNumber;
          v.number = 400;
          break;
        case C::emFontStyle:
        case C::emWhiteSpace:
          v.keyword = "normal";
          break;
        case C::emTextDecoration:
        case C::emBorderTopStyle:
        case C::emBorderRightStyle:
        case C::emBorderBottomStyle:
        case C::emBorderLeftStyle:
          v.keyword = "none";
          break;
        case C::emTextAlign:
          v.keyword = "start";
          break;
        case C::emVerticalAlign:
          v.keyword = "baseline";
          break;
        case C::emListStyleType:
          v.keyword = "disc";
          break;
        case C::emBorderTopWidth:
        case C::emBorderRightWidth:
        case C::emBorderBottomWidth:
        case C::emBorderLeftWidth:
          v.type = kPx;
          v.number = 3;  // medium; made 0 below while the style is none
          break;
        case C::emBorderTopColor:
        case C::emBorderRightColor:
        case C::emBorderBottomColor:
        case C::emBorderLeftColor:
          v.type = kColor;
          v.color = kTransparent;  // the text colour, set below
          v.keyword = "currentcolor";
          break;
        default:
          v.type = kPx;
          v.number = 0;
          break;
      }
      continue;
    }
    const F& f = *w.format;
    v = CValue();
    switch (property) {
      case C::emColor:
      case C::emBackgroundColor:
      case C::emBorderTopColor:
      case C::emBorderRightColor:
      case C::emBorderBottomColor:
      case C::emBorderLeftColor: {
        const CSttColor& color = property == C::emColor             ? f.GetColor()
                                 : property == C::emBackgroundColor ? f.GetBackgroundColor()
                                                                    : f.GetBorder(p - C::emBorderTopColor).GetColor();
        v.type = kColor;
        v.color = color.GetColorRef();
        if (color.GetKind() == CSttColor::emColorUnset) {
          // currentcolor: for color itself the parent's colour.
          if (property == C::emColor)
            v.color = parent ? parent->m_pData->values[C::emColor].color : 0;
          else
            v.keyword = "currentcolor";
        }
        break;
      }
      case C::emFontWeight: {
        v.type = kNumber;
        v.number = WeightOf(f, parent ? parent->m_pData->values[C::emFontWeight].number : 400);
        break;
      }
      case C::emFontStyle:
        v.keyword = Keyword(F::ms_tFontStyleTable, F::ms_nFontStyleTableSize, f.GetFontStyle());
        break;
      case C::emTextDecoration:
        v.keyword = Keyword(F::ms_tTextDecorationTable, F::ms_nTextDecorationTableSize, f.GetTextDecoration());
        break;
      case C::emTextAlign:
        v.keyword = Keyword(F::ms_tTextAlignTable, F::ms_nTextAlignTableSize, f.GetTextAlign());
        break;
      case C::emListStyleType:
        v.keyword = Keyword(F::ms_tListStyleTypeTable, F::ms_nListStyleTypeTableSize, f.GetListStyleType());
        break;
      case C::emWhiteSpace:
        // The combination took only the known words; keep a static copy.
        for (const char* word : {"normal", "pre", "nowrap", "pre-wrap", "pre-line", "break-spaces"})
          if (f.GetWhiteSpace() == word)
            v.keyword = word;
        break;
      case C::emBorderTopStyle:
      case C::emBorderRightStyle:
      case C::emBorderBottomStyle:
      case C::emBorderLeftStyle:
        v.keyword = Keyword(F::ms_tBorderStyleTable, F::ms_nBorderStyleTableSize,
                            f.GetBorder(p - C::emBorderTopStyle).GetStyle());
        break;
      case C::emVerticalAlign:
        if (f.GetVerticalAlign() != N::emValueNumber) {
          v.keyword = Keyword(F::ms_tVerticalAlignTable, F::ms_nVerticalAlignTableSize, f.GetVerticalAlign());
          break;
        }
        [[fallthrough]];
      default: {
        // Margins, paddings, border widths and a vertical-align length.
        const CSttNumber* number = nullptr;
        N::EmPropertyValue code = N::emValueNumber;
        if (property == C::emVerticalAlign) {
          number = &f.GetVerticalAlignNumber();
        } else if (property >= C::emMarginTop && property <= C::emMarginLeft) {
          number = &f.GetMargin(p - C::emMarginTop);
        } else if (property >= C::emPaddingTop && property <= C::emPaddingLeft) {
          number = &f.GetPadding(p - C::emPaddingTop);
        } else {
          const F::CBorder& border = f.GetBorder(p - C::emBorderTopWidth);
          code = border.GetWidthValue();
          number = &border.GetWidth();
        }
        v.type = kPx;
        if (code == N::emBorderWidthThin)
          v.number = 1;
        else if (code == N::emBorderWidthMedium)
          v.number = 3;
        else if (code == N::emBorderWidthThick)
          v.number = 5;
        else {
          bool percent = false;
          v.number = LengthPx(*number, fontSize, percent);
          if (percent)
            v.type = kPercent;
        }
        break;
      }
    }
  }
  // Border colours that are the text colour; widths of borders without a
  // style are 0.
  for (int side = 0; side < 4; ++side) {
    CValue& color = m_pData->values[C::emBorderTopColor + side];
    if (std::strcmp(color.keyword, "currentcolor") == 0) {
      color.color = m_pData->values[C::emColor].color;
      color.keyword = "";
    }
    CValue& width = m_pData->values[C::emBorderTopWidth + side];
    const char* style = m_pData->values[C::emBorderTopStyle + side].keyword;
    if (std::strcmp(style, "none") == 0 || std::strcmp(style, "hidden") == 0)
      width.number = 0;
    else if (width.type == kPx)
      width.number = SnapBorder(width.number);
  }
}

}  // namespace telvanix

// Style combination: from the declaration blocks that apply to an element
// (CCssStyleCollector::CMatch), the cascade decides, for each property a
// formatting view shows, which declaration gives its value: origin level,
// then !important, then specificity, then source order, the last valid one
// winning. A property no declaration gives is inherited from the parent
// when it is an inherited property (or says "inherit"), otherwise it keeps
// its initial value.
#pragma once

#include <vector>

#include "telvanix/css/property_names.h"
#include "telvanix/css/style_collector.h"
#include "telvanix/platform/export.h"

namespace telvanix {

class CCssStyleFormat;

class TELVANIX_API CCssStyleCombine {
 public:
  // Where a property's value came from.
  enum EmOrigin : unsigned char {
    emOriginInitial = 0,  // no declaration, not inherited
    emOriginDefault,      // the tag defaults
    emOriginAttribute,    // a presentational HTML attribute
    emOriginRule,         // a stylesheet rule (file and line)
    emOriginInline,       // the element's style attribute
    emOriginInherited,    // the parent's value
  };

  // The properties a combination decides, in the order a view lists them.
  enum EmProperty : int {
    emColor, emBackgroundColor, emFontFamily, emFontSize, emFontWeight, emFontStyle, emTextDecoration,
    emTextAlign, emVerticalAlign,
    emMarginTop, emMarginRight, emMarginBottom, emMarginLeft,
    emPaddingTop, emPaddingRight, emPaddingBottom, emPaddingLeft,
    emBorderTopWidth, emBorderRightWidth, emBorderBottomWidth, emBorderLeftWidth,
    emBorderTopStyle, emBorderRightStyle, emBorderBottomStyle, emBorderLeftStyle,
    emBorderTopColor, emBorderRightColor, emBorderBottomColor, emBorderLeftColor,
    emListStyleType, emWhiteSpace,
    emPropertyCount
  };

  struct CWinner {
    const CCssStyleFormat* format = nullptr;  // null: inherited or initial
    EmOrigin origin = emOriginInitial;
    const char* file = nullptr;
    int line = 0;
  };

  // The style format identifier behind a property; its CSS name is
  // CCssPropertyNames::GetPropertyNameString of it.
  static CCssPropertyNames::EmPropertyNameId GetPropertyNameId(EmProperty property);
  static int IsInheritedProperty(EmProperty property);
  // 1 when the format's value of the property is one a browser accepts
  // (lengths need a unit but for 0, except in quirks mode; no negative
  // sizes, paddings or widths; keywords of the format's tables that CSS
  // does not know are refused); 0 otherwise, so a lower declaration wins.
  static int IsValidValue(EmProperty property, const CCssStyleFormat& format, bool quirks);
  // 1 when the value is the keyword "inherit".
  static int IsInheritValue(EmProperty property, const CCssStyleFormat& format);

  // Decides every property; the matches are sorted in cascade order.
  void Combine(std::vector<CCssStyleCollector::CMatch>& matches, bool quirks);
  const CWinner& GetWinner(EmProperty property) const { return m_tWinners[property]; }

 private:
  CWinner m_tWinners[emPropertyCount];
};

}  // namespace telvanix

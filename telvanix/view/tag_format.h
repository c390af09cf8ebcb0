// The effective format of one element, as a browser computes it: colours
// as rgb(r, g, b), lengths in px (em, ex, %, pt and size keywords resolved
// against the parent), font weights as numbers, keywords in lower case;
// and, for each value, where it came from (the tag defaults, an HTML
// attribute, a stylesheet rule with its file and line, the inline style, or
// the parent). A formatting view (CHtmlFileView) hangs one on the start-tag
// leaf of every element of a page.
#pragma once

#include <memory>
#include <utility>

#include "telvanix/css/style_combine.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CHtmlTagFormat : public CRglObject {
 public:
  using EmProperty = CCssStyleCombine::EmProperty;
  using EmOrigin = CCssStyleCombine::EmOrigin;

  CHtmlTagFormat();
  // A copy shares the computed values and origins; it names the format it
  // was computed as (GetSharedSource) so that equal inputs find it again.
  CHtmlTagFormat(const CHtmlTagFormat& other);
  CHtmlTagFormat& operator=(const CHtmlTagFormat&) = delete;
  ~CHtmlTagFormat() override;

  // The computed values this format holds; formats made as copies share
  // them, so equal inputs find them again.
  const void* GetSharedSource() const { return m_pData.get(); }

  // The CSS name of a property ("margin-top"); null out of range.
  static const char* GetPropertyName(EmProperty property);
  // The value as getComputedStyle writes it ("rgb(0, 0, 238)", "13.3333px",
  // "700", "italic"); "" out of range.
  CString GetComputedValue(EmProperty property) const;
  EmOrigin GetOrigin(EmProperty property) const;
  // "default", "attribute", "inline", "inherited", "initial", or the rule's
  // "FILE:LINE".
  CString GetOriginText(EmProperty property) const;

  // The element's line in the page (1 for the first).
  int GetLine() const { return m_nLine; }
  const CString& GetTagName() const { return m_strTagName; }
  float GetFontSizePx() const;
  // The colour as 0x00BBGGRR; 0xFF000000 for a transparent one.
  COLORREF GetColor(EmProperty property) const;

  // Computes every value from the cascade's winners and the parent's format
  // (null for the root). The file names of rules, and the formats of
  // winners of origin default or rule, must outlive this format; attribute
  // and inline formats need outlive only the call.
  // Quirks mode sizes keyword text in a monospace family as a browser's
  // compatibility mode does.
  void Compute(const CCssStyleCombine& combine, const CHtmlTagFormat* parent, bool quirks = false);

  void SetLine(int line) { m_nLine = line; }
  void SetTagName(const char* name) { m_strTagName = name; }
  void SetTagName(CString&& name) { m_strTagName = std::move(name); }

 private:
  enum EmValueType : unsigned char { kPx, kPercent, kColor, kKeyword, kNumber, kFamily };
  struct CValue {
    float number = 0;
    COLORREF color = 0;
    const char* keyword = "";
    EmValueType type = kKeyword;
  };
  struct COrigin {
    EmOrigin kind = CCssStyleCombine::emOriginInitial;
    int line = 0;
    const char* file = "";  // the view keeps the sheets its rules come from
  };
  void ComputeFont(const CCssStyleCombine& combine, const CHtmlTagFormat* parent, bool quirks);
  float LengthPx(const class CSttNumber& number, float fontSize, bool& percent) const;

  // What a computation gives; shared, never changed once computed.
  struct CComputed {
    CValue values[CCssStyleCombine::emPropertyCount];
    COrigin origins[CCssStyleCombine::emPropertyCount];
    // The family list: the winning format's text while that format lives as
    // long as the view (a sheet's rule), else the own copy.
    const char* family = "";
    CString ownFamily;
    // The size keyword the font size comes from (1..7 for xx-small..
    // xx-large), inherited while no other size is given, and the em and %
    // factor since; 0 when it is no keyword's. A browser sizes keyword text
    // in a monospace family smaller.
    int sizeKeyword = 0;
    float sizeFactor = 1;
  };
  std::shared_ptr<CComputed> m_pData;
  CString m_strTagName;
  int m_nLine = 0;
};

}  // namespace telvanix

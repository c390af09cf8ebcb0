// The typed format of one style rule or inline style: every property the
// library understands, read from its declaration text into a keyword code
// (EmPropertyValue) and/or a typed value (CSttNumber, CSttColor, CSttUrl).
// A declaration list builds one by handing each name/value pair, in list
// order, to AnalyseCssProperty; the formatting view merges formats of
// several rules with ConcatInner.
//
// Choices made here:
// - Each property remembers whether it was given (IsPropertySet), because a
//   value such as "margin-top: 0" cannot be told from "unset" by its value.
//   A later pair for the same property replaces the earlier one.
// - Shorthands are split into their parts and each part is stored as if it
//   had been given on its own; the shorthand itself counts as set too.
//   font: [style] [variant] [weight] size[/line-height] family (a size is
//   required; everything after the size is the family, as written). Style,
//   variant and weight that are not given are set to normal, as the
//   shorthand resets them.
//   margin, padding, border-width/-color/-style: one to four values, given
//   to the sides in the usual top, right, bottom, left order.
//   border, border-top/right/bottom/left: width, style and colour in any
//   order; border applies to all four sides.
//   background: colour, url image, repeat word, attachment word; other words
//   and lengths make up the position text.
//   list-style: type word, position word, url image, in any order.
// - text values (families, display, white-space, background words) keep
//   no quotes, brackets, ";", braces, "@", comment or escape marks, and one blank
//   between words; a url whose name holds ")", ";", braces or a comment mark
//   is refused: so every value prints back as text that reads the same;
// - font-weight reads the weight table or a number ("700" gives code 1 with
//   the number 700); the table's two codes of "light" are stored as one;
// - colours: a name or hexadecimal value, "transparent" (a colour value of
//   no colour), rgb()/rgba() with numbers or percentages (stored as a
//   colour value; an alpha of 0 is transparent); any other text is refused,
//   so it does not replace an earlier colour; font-family keeps the whole value text; the first
//   family, de-quoted, is available through GetFirstFontFamily.
// - a margin of "auto" is stored as 0px (what a block without a set width
//   gets); padding sides, word-spacing, letter-spacing and text-indent are lengths;
//   background-repeat, -attachment, -position, display and white-space keep
//   their value text lower-cased. Identifiers outside 1..65 are not stored.
// - One descriptor row per stored property (style_format_table.cpp) says
//   where its value lives, how its text is read and which parts a shorthand
//   has; Default, ConcatInner and ParseProperty walk those rows.
#pragma once

#include <bitset>

#include "telvanix/css/property_names.h"
#include "telvanix/css/style_values.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CCssStyleFormat : public CRglObject, public CCssPropertyNames {
 public:
  // Box sides, as indexes of the side arrays.
  enum EmBoxSide {
    emSideTop = 0,
    emSideRight = 1,
    emSideBottom = 2,
    emSideLeft = 3,
    emSideCount = 4,
  };

  // One side of a box border.
  class TELVANIX_API CBorder {
   public:
    CBorder() { Default(); }
    int Default();
    int IsDefault() const;
    int Copy(const CBorder* other);
    int Compare(const CBorder* other) const;
    // Takes the parts that the other side has; keeps the rest.
    int ConcatInner(const CBorder* other);

    // Keyword code (thin, medium, thick), emValueNumber for a length in
    // GetWidth(), or emValueNone.
    EmPropertyValue GetWidthValue() const { return m_emWidth; }
    const CSttNumber& GetWidth() const { return m_numWidth; }
    const CSttColor& GetColor() const { return m_clrColor; }
    EmPropertyValue GetStyle() const { return m_emStyle; }

    void SetWidth(EmPropertyValue value, const CSttNumber& width) {
      m_emWidth = value;
      m_numWidth = width;
    }
    void SetColor(const CSttColor& color) { m_clrColor = color; }
    void SetStyle(EmPropertyValue style) { m_emStyle = style; }

   private:
    friend class CCssStyleFormat;  // the property rows address the parts
    EmPropertyValue m_emWidth;
    CSttNumber m_numWidth;
    CSttColor m_clrColor;
    EmPropertyValue m_emStyle;
  };

  CCssStyleFormat();
  CCssStyleFormat(const CCssStyleFormat& other);
  CCssStyleFormat& operator=(const CCssStyleFormat& other);
  ~CCssStyleFormat() override;

  int Default();
  int IsDefault() const;
  int Copy(const CCssStyleFormat* other);
  // Every property that the other format has set replaces this one's; the
  // rest stays. 0 for null.
  int ConcatInner(const CCssStyleFormat* other);

  // 0 for a null name or value, an unknown name or an empty value; otherwise
  // ParseProperty's result.
  int AnalyseCssProperty(const char* name, const char* value);
  // Reads a declaration body into a temporary declaration list and merges
  // its format into this one. 1 when anything was set.
  int AnalyseCssProperties(const char* body);
  // 0 at once for identifiers outside 1..65; otherwise the reader's result.
  int ParseProperty(EmPropertyNameId id, const char* value);

  // The first token of the text looked up in the keyword table (size in
  // bytes): 1 and the code stored, or 0 with `value` unchanged.
  int ParsePropertyToValue(EmPropertyValue& value, const char* text, QuickMapStringToValueItem* table,
                           int tableBytes);
  // As ParsePropertyToValue; a token that is no keyword but a number gives
  // emValueNumber with the number stored.
  int ParsePropertyToValueAndNumber(EmPropertyValue& value, CSttNumber& number, const char* text,
                                    QuickMapStringToValueItem* table, int tableBytes);

  // The stored properties a value of property id sets: the property itself,
  // or a shorthand's parts, parts of parts included ("border" gives the
  // twelve side properties). Their count (at most `capacity` are written);
  // 0 for an identifier the format stores nothing under.
  static int GetPropertyParts(int id, int* parts, int capacity);

  // 1 when the property (a shorthand, or any part of one) was given.
  int IsPropertySet(EmPropertyNameId id) const {
    return id >= 0 && id < kPropertyIdCapacity && m_setFlags.test(static_cast<size_t>(id)) ? 1 : 0;
  }

  // 1 when both formats have the same stored properties set, with equal
  // values; shorthand marks are not compared (their parts carry the value).
  // 0 for null.
  int Compare(const CCssStyleFormat* other) const;
  // Declaration text ("name:value; " per stored property that is set, in
  // identifier order) that AnalyseCssProperties reads back to an equal
  // format. Numbers keep every digit the reader can hold.
  CString GetPrintableString() const;
  // One presentational HTML attribute of a tag (tag id as CHtmlTagItem
  // gives it) read into the format: FONT color/size/face, BASEFONT,
  // BODY bgcolor/text/background, bgcolor, align, valign, border of
  // IMG/OBJECT/TABLE, nowrap of TD/TH, IMG hspace/vspace and align
  // top/middle/bottom, HR color/noshade/size, UL/OL/LI type, INPUT type
  // (controls without a field box, buttons). FONT size is 1..7
  // or relative to 3 ("+2"), stored in px. 1 when something was stored; 0 for attributes with no style
  // meaning here (width, height, link...) and for unreadable values.
  int AnalyseHtmlAttribute(int tagId, const char* name, const char* value);

  // Font.
  const CSttNumber& GetFontSize() const { return m_numFontSize; }
  // The size keyword (emFontSizeXXSmall..emFontSizeSmaller); emValueNone
  // when the size is a length (or not given).
  EmPropertyValue GetFontSizeValue() const { return m_emFontSize; }
  const CString& GetFontFamily() const { return m_strFontFamily; }
  // The first family of the list, without quotes ("" when none).
  CString GetFirstFontFamily() const;
  EmPropertyValue GetFontWeight() const { return m_emFontWeight; }
  const CSttNumber& GetFontWeightNumber() const { return m_numFontWeight; }
  // 1 for bold, bolder, demi-bold, extra-bold or a weight number of 600 up.
  int IsBoldFontWeight() const;
  EmPropertyValue GetFontStyle() const { return m_emFontStyle; }
  EmPropertyValue GetFontVariant() const { return m_emFontVariant; }
  const CSttNumber& GetLineHeight() const { return m_numLineHeight; }

  // Colour and background.
  const CSttColor& GetColor() const { return m_clrColor; }
  const CSttColor& GetBackgroundColor() const { return m_clrBackgroundColor; }
  const CSttUrl& GetBackgroundImage() const { return m_urlBackgroundImage; }
  const CString& GetBackgroundRepeat() const { return m_strBackgroundRepeat; }
  const CString& GetBackgroundAttachment() const { return m_strBackgroundAttachment; }
  const CString& GetBackgroundPosition() const { return m_strBackgroundPosition; }

  // Text.
  const CSttNumber& GetWordSpacing() const { return m_numWordSpacing; }
  const CSttNumber& GetLetterSpacing() const { return m_numLetterSpacing; }
  EmPropertyValue GetTextDecoration() const { return m_emTextDecoration; }
  EmPropertyValue GetVerticalAlign() const { return m_emVerticalAlign; }
  const CSttNumber& GetVerticalAlignNumber() const { return m_numVerticalAlign; }
  EmPropertyValue GetTextTransform() const { return m_emTextTransform; }
  EmPropertyValue GetTextAlign() const { return m_emTextAlign; }
  const CSttNumber& GetTextIndent() const { return m_numTextIndent; }

  // Box. Sides are EmBoxSide values; out-of-range sides give an unset value.
  const CSttNumber& GetMargin(int side) const;
  const CSttNumber& GetPadding(int side) const;
  const CBorder& GetBorder(int side) const;

  // Display and lists.
  const CString& GetDisplay() const { return m_strDisplay; }
  const CString& GetWhiteSpace() const { return m_strWhiteSpace; }
  EmPropertyValue GetListStyleType() const { return m_emListStyleType; }
  const CSttUrl& GetListStyleImage() const { return m_urlListStyleImage; }
  EmPropertyValue GetListStylePosition() const { return m_emListStylePosition; }

 private:
  struct CPropertyRow;  // style_format_table.cpp
  struct CSlot;
  struct CValue;
  // The row of a stored property; null for every other identifier.
  static const CPropertyRow* FindPropertyRow(int id);
  // The rows in identifier order; `count` receives how many.
  static const CPropertyRow* GetPropertyRows(int& count);
  CSlot SlotOf(const CPropertyRow& row);

  int ParseFontSize(const char* text, EmPropertyValue& code, CSttNumber& size);
  int ReadColor(const char* text, CSttColor& color);
  int ParseFontShorthand(const char* text);
  int ParseFourSides(const CPropertyRow& row, const char* text);
  int ParseBorderSides(const CPropertyRow& row, const char* text);
  int ParseBackground(const char* text);
  int ParseListStyle(const char* text);
  // Reads `text` as the row says into `into`; 1 when it was read.
  int ReadValue(const CPropertyRow& row, const char* text, const CSlot& into);
  void MarkSet(EmPropertyNameId id);

  // Room for every identifier of EmPropertyNameId; the rows are checked
  // against it when they are compiled.
  static constexpr int kPropertyIdCapacity = 96;
  std::bitset<kPropertyIdCapacity> m_setFlags;

  CSttNumber m_numFontSize;
  EmPropertyValue m_emFontSize;
  CString m_strFontFamily;
  EmPropertyValue m_emFontWeight;
  CSttNumber m_numFontWeight;
  EmPropertyValue m_emFontStyle;
  EmPropertyValue m_emFontVariant;
  CSttNumber m_numLineHeight;

  CSttColor m_clrColor;
  CSttColor m_clrBackgroundColor;
  CSttUrl m_urlBackgroundImage;
  CString m_strBackgroundRepeat;
  CString m_strBackgroundAttachment;
  CString m_strBackgroundPosition;

  CSttNumber m_numWordSpacing;
  CSttNumber m_numLetterSpacing;
  EmPropertyValue m_emTextDecoration;
  EmPropertyValue m_emVerticalAlign;
  CSttNumber m_numVerticalAlign;
  EmPropertyValue m_emTextTransform;
  EmPropertyValue m_emTextAlign;
  CSttNumber m_numTextIndent;

  CSttNumber m_numMargin[emSideCount];
  CSttNumber m_numPadding[emSideCount];
  CBorder m_tBorder[emSideCount];

  CString m_strDisplay;
  CString m_strWhiteSpace;
  EmPropertyValue m_emListStyleType;
  CSttUrl m_urlListStyleImage;
  EmPropertyValue m_emListStylePosition;
};

}  // namespace telvanix

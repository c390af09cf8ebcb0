// Tag tokens and the tag syntax table. A CHtmlTagItem holds one tag of a page
// exactly as it stood in the source, from "<" to ">"; it identifies itself
// by hashing its name into the static table of known tags, parses its
// attributes on demand, lets callers read and change them, and prints itself
// either as the untouched source text or, once changed, rebuilt from parts.
#pragma once

#include <cstdint>

#include "telvanix/html/tag_vocabulary.h"
#include "telvanix/html/token_item.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// One row of the tag syntax table.
struct TagSyntaxItem {
  DWORD m_nHashCode;      // filled by InitializeSyntaxTable
  DWORD m_nTagId;
  const char* m_pszTagName;
  int m_nOcrType;         // 0 both tags optional, 1 end optional/forbidden, 2 end required
  int m_nCntType;         // content model; 0 = empty element
  int m_nSptType;         // 0x1 comment, 0x100 raw content, 0x200 declaration
  int m_nVerType;
  DWORD m_nMjrType;       // major category bits
  DWORD m_nPrtType;       // four byte-sized print codes for the saver
};

// One attribute of a tag: the name as written, the value without its
// enclosing quotes and without entity decoding. Both are terminated and kept
// in one block, the value right after the name's zero, so that a record is
// two lengths and one pointer. A record with an empty name holds the body of
// a comment or CDATA section.
struct TagAttribute {
  const char* m_pszName;
  int m_nNameLength;
  int m_nValueLength;
  const char* GetValue() const { return m_pszName + m_nNameLength + 1; }
};

class TELVANIX_API CHtmlTagItem : public CHtmlTokenItem {
 public:
  // Tag ids by row name (tag_vocabulary.h): emTagIdP, emTagIdComment ("!--"),
  // emTagIdDoctype ("!DOCTYPE"), ...
  enum EmTagId : int32_t {
#define TELVANIX_TAG_ID(name, spelling, id, ...) emTagId##name = id,
    TELVANIX_TAG_ROWS(TELVANIX_TAG_ID)
#undef TELVANIX_TAG_ID
  };
  enum : int32_t {
#define TELVANIX_TAG_ROW_COUNT(...) +1
    emTagSyntaxTableRows = 0 TELVANIX_TAG_ROWS(TELVANIX_TAG_ROW_COUNT)
#undef TELVANIX_TAG_ROW_COUNT
  };
  enum : DWORD {
    emTagIdEndBit = 0x10000000,
    emTagIdUnknownBit = 0x20000000,
    emTagIdHashMask = 0x0FFFFFFF,  // what an unknown tag keeps of its name hash
    // Bits 16 to 19 of a known id say where the tag belongs.
    emTagIdGroupMask = 0xF0000,
    emTagIdGroupDocument = 0x00000,
    emTagIdGroupHead = 0x10000,
    emTagIdGroupBody = 0x20000,
    emTagIdGroupFrameset = 0x30000
  };
  // Rows that unknown tags point at.
  enum : int32_t {
    emUnknownTagIndex = 1,        // any unknown tag
    emUnknownEmptyTagIndex = 2,   // closed by "/>", or taken as empty
    emUnknownXmlPiTagIndex = 3,   // closed by "?>"
    emUnknownContainerTagIndex = 4,
    emUnknownLastRowIndex = 5
  };

  // Occurrence (Ocr): which of the start and end tag a page may leave out.
  enum EmOcrType : int32_t { emOcrBothOptional = 0, emOcrEndOptional = 1, emOcrEndRequired = 2 };
  // Content model (Cnt): tags with the same code hold the same children
  // (CHtmlEntityTree::ms_tTagContainTable); 0 is an empty element.
  enum EmCntType : int32_t {
    emCntEmpty = 0x0, emCntHtml = 0x1, emCntHead = 0x2, emCntBody = 0x3, emCntFrameset = 0x4,
    emCntNoFrames = 0x5, emCntTitle = 0x10, emCntAnchor = 0x11, emCntApplet = 0x12, emCntObject = 0x13,
    emCntMap = 0x14, emCntSelect = 0x15, emCntLabel = 0x16, emCntButton = 0x17, emCntDl = 0x18,
    emCntForm = 0x19, emCntTable = 0x1A, emCntThead = 0x1B, emCntTfoot = 0x1C, emCntTbody = 0x1D,
    emCntColgroup = 0x1E, emCntTr = 0x1F, emCntFieldset = 0x20, emCntAddress = 0x21, emCntList = 0x22,
    emCntDirMenu = 0x23, emCntPreformatted = 0x24, emCntSpare25 = 0x25, emCntRawText = 0x40,
    emCntEmbedded = 0x41, emCntFlow = 0x42, emCntInline = 0x43, emCntCaption = 0x44, emCntSpare45 = 0x45,
    emCntParagraph = 0x50, emCntDt = 0x51, emCntHeading = 0x52, emCntDd = 0x60, emCntTh = 0x61,
    emCntTd = 0x62, emCntLi = 0x63, emCntDel = 0x70, emCntIns = 0x71, emCntUnknownContainer = 0x80,
    emCntUnknown = 0x81
  };
  // Special parsing (Spt). IsValidTagToken answers with these too; there
  // emSptDeclaration also stands for a "<" that starts no tag name.
  enum EmSptType : int32_t {
    emSptOrdinary = 0x0,
    emSptComment = 0x1,       // "<!--"
    emSptRawContent = 0x100,  // text up to the matching end tag (COMMENT, STYLE, SCRIPT)
    emSptDeclaration = 0x200  // "<!DOCTYPE"
  };
  // Version (Ver).
  enum EmVerType : int32_t { emVerAll = -1, emVerEdit = 0x8, emVerExtension = 0x600 };
  // Major category (Mjr): where a tag may stand and what kind it is. The
  // predicates test that all bits of a mask are set.
  enum EmMjrType : DWORD {
    emMjrHtmlChild = 0x80000000,
    emMjrHeadChild = 0x40000000,
    emMjrBodyChild = 0x20000000,
    emMjrFramesetChild = 0x10000000,
    emMjrNotElement = 0xFF000000,
    emMjrEditMark = 0x1,
    emMjrFrameKind = 0x2,
    emMjrDocumentKind = 0x4,
    emMjrInvalidKind = 0x8,
    emMjrBlockKind = 0x10,
    emMjrHeadingKind = 0x20,
    emMjrListKind = 0x40,
    emMjrPreformattedKind = 0x80,
    emMjrPartKind = 0x100,
    emMjrInlineKind = 0x1000,
    emMjrFontStyleKind = 0x2000,
    emMjrPhraseKind = 0x4000,
    emMjrSpecialKind = 0x8000,
    emMjrFormControlKind = 0x10000,
    emMjrEmbeddedKind = 0x20000,
    emMjrTitleKind = 0x100000,
    emMjrMetaKind = 0x200000,
    // Predicate masks.
    emMjrBlockLevel = emMjrHtmlChild | emMjrBodyChild | emMjrBlockKind,
    emMjrInlineLevel = emMjrHtmlChild | emMjrBodyChild | emMjrInlineKind,
    emMjrBlockLevelEmbedded = emMjrHtmlChild | emMjrBodyChild | emMjrPartKind,
    emMjrInlineLevelEmbedded = emMjrHtmlChild | emMjrBodyChild | emMjrEmbeddedKind,
    // The values of the rows.
    emMjrInvalidRow = emMjrNotElement | emMjrInvalidKind,
    emMjrDocumentRow = emMjrNotElement | emMjrDocumentKind,
    emMjrTopLevel = emMjrHtmlChild,
    emMjrHeadTitle = emMjrHtmlChild | emMjrHeadChild | emMjrTitleKind,
    emMjrHeadMeta = emMjrHtmlChild | emMjrHeadChild | emMjrMetaKind,
    emMjrFontStyle = emMjrInlineLevel | emMjrFontStyleKind,
    emMjrPhrase = emMjrInlineLevel | emMjrPhraseKind,
    emMjrSpecialInline = emMjrInlineLevel | emMjrSpecialKind,
    emMjrScript = emMjrHeadMeta | emMjrSpecialInline,
    emMjrFormControl = emMjrInlineLevel | emMjrFormControlKind,
    emMjrBlock = emMjrBlockLevel,
    emMjrHeadOrBlock = emMjrHeadMeta | emMjrBlockLevel,
    emMjrHeading = emMjrBlockLevel | emMjrHeadingKind,
    emMjrList = emMjrBlockLevel | emMjrListKind,
    emMjrPreformatted = emMjrBlockLevel | emMjrPreformattedKind,
    emMjrListTablePart = emMjrBlockLevelEmbedded,
    emMjrEmbeddedInline = emMjrInlineLevelEmbedded,
    emMjrEdit = emMjrHtmlChild | emMjrBodyChild | emMjrEditMark,
    emMjrFrame = emMjrHtmlChild | emMjrFramesetChild | emMjrFrameKind
  };
  // Print type (Prt): four byte-sized line codes for the saver, low byte
  // first: before and after the start tag, before and after the end tag.
  enum EmPrtType : DWORD {
    emPrtNone = 0x0,
    emPrtHeadLine = 0x2,
    emPrtBlockLine = 0x4,
    emPrtOwnLine = 0x101,
    emPrtDocument = 0x1010101,
    emPrtContainer = 0x4060504
  };
  // GetXmlType.
  enum EmXmlType : int32_t {
    emXmlStartTag = 1,
    emXmlEndTag = 2,
    emXmlEmptyTag = 3,     // closed by "/>"
    emXmlComment = 4,
    emXmlDeclaration = 5,  // "<!"
    emXmlDoctype = 6,
    emXmlProcessing = 7    // "<?"
  };

  // Sorted by hash, built when the library is compiled (tag_syntax_table.cpp).
  static const TagSyntaxItem ms_tTagSyntaxTable[emTagSyntaxTableRows];
  static constexpr int ms_nTagSyntaxTableSize = emTagSyntaxTableRows;

  // What the name scan after a "<" found (shared by the tokenizer and
  // identification so a name is hashed once).
  struct TagNameInfo {
    const unsigned char* m_pName;  // null when there is no name
    int m_nLength;
    int m_bEndTag;                 // a "/" came before the name
    DWORD m_nHash;
    int m_nIndex;                  // row index, or -1 for an unknown name
  };

  // The table is built at compile time; kept for hosts that call it. Returns 1.
  static int InitializeSyntaxTable();
  // Row index of the name first..last (inclusive), or -1. Stores the hash
  // (-1 when first > last) when pHash is not null.
  static int GetTagIndex(const unsigned char* first, const unsigned char* last, DWORD* pHash);
  // Tag id of a name ("/name" for an end tag); unknown names give their
  // hashed id and index 0.
  static int GetTagIdFromTagName(const char* name, int* pIndex);
  // The row, or row 0 for an index outside the table.
  static const TagSyntaxItem* GetTagSyntaxItem(int nIndex);
  // How the tokenizer must treat the text at start ("<") up to end
  // (exclusive), an EmSptType: ordinary tag, comment, raw content, declaration.
  static int IsValidTagToken(const unsigned char* start, const unsigned char* end);
  // The same, also handing back the scanned name.
  static int IsValidTagToken(const unsigned char* start, const unsigned char* end, TagNameInfo& info);
  // Scans the name after "<" (p points after it) up to last (inclusive).
  static void ScanTagName(const unsigned char* p, const unsigned char* last, TagNameInfo& info);

  // "<!-- " + mark (or "QZTXMARK") + " " + data + " -->".
  static CString MakeCommentMark(const char* mark, const char* data);
  static int IsCommentMark(CHtmlTagItem* pItem);
  // Empties both; for a comment mark fills the mark and its data. 1 for a mark.
  static int GetCommentMark(CHtmlTagItem* pItem, CString& mark, CString& data);
  // Past a "--...--" comment inside a tag at p (end exclusive); p otherwise.
  static const unsigned char* SkipCommentWithinTag(const unsigned char* p, const unsigned char* end);

  CHtmlTagItem();
  // text as a tag ("<" and ">" added when text does not begin with "<"),
  // flagged inserted and analysed at level 2.
  explicit CHtmlTagItem(const char* text);
  ~CHtmlTagItem() override;

  int Copy(CHtmlTagItem* pOther);
  int Analyse(int nFlags) override;
  void AppendPrintableText(CByteString& out, EmTextFlag nFlag) override;

  // The name as written, "/" in front for an end tag, at most 62 characters.
  CString GetTagName();
  int IsTagNameSameAs(const char* name);

  int GetTagId() const { return static_cast<int>(m_nTagId); }
  int GetEndofTagId() const { return static_cast<int>(m_nTagId | emTagIdEndBit); }
  int GetTagIndex() const { return m_nTagIndex; }
  int IsValidTagIndex() const { return m_nTagIndex > 0 && m_nTagIndex < ms_nTagSyntaxTableSize; }
  int IsUnknownTag() const { return (m_nTagId & emTagIdUnknownBit) != 0; }
  int IsEndTag() const { return (m_nTagId & emTagIdEndBit) != 0; }

  int GetOcrType() const;
  int GetCntType() const;
  int GetSptType() const;
  int GetVerType() const;
  DWORD GetMjrType() const;
  DWORD GetPrtType() const;
  int IsBlockLevelTag() const;
  int IsInlineLevelTag() const;
  int IsBlockTag() const;
  int IsBlockLevelEmbeddedTag() const;
  int IsInineLevelEmbeddedTag() const;

  // An EmXmlType.
  int GetXmlType();
  int IsXmlTag();
  // Unknown tags only, values 1 to 4; 0 otherwise.
  int ChangeUnknownTagIndex(int nIndex);

  // Value of the first attribute of that name (case ignored): the empty text
  // for an attribute written without value, null when there is none.
  const char* GetAttributeValue(const char* name);
  int HasAttribute(const char* name);
  // Replaces the value of an attribute of that name or adds one ("/" and "?"
  // stay last). 0 for a null or empty name.
  int SetAttribute(const char* name, const char* value);
  int DeleteAttribute(const char* name);
  // Walk by index: the name (null at the end) and its value.
  const char* GetFirstAttribute(unsigned int& pos, const char*& value);
  const char* GetNextAttribute(unsigned int& pos, const char*& value);
  int GetTotalAttributesNum();
  int GetAttributeByNum(int n, const char*& name, const char*& value);
  int RemoveAttributeByNum(int n);
  int ReplaceAttributeByNum(int n, const char* name, const char* value);
  // Where the value of attribute n stands in the tag's source bytes (without
  // its quotes): offset from GetOriginalData() and length, so that a caller
  // can change that value alone and keep every other byte (see
  // RewriteOriginalData). 0 for a changed tag, a comment, an index out of
  // range or an attribute written without value.
  int GetAttributeValueSpan(int n, int& offset, int& length);

 protected:
  friend class CHtmlTokenList;

  // Identification from a name already scanned; sets the identified flag.
  void Identify(const TagNameInfo& info);
  // Analyse with attribute texts drawn from the arena when one is given.
  int AnalyseIn(int nFlags, CHtmlTokenArena* pArena, const TagNameInfo* pInfo);
  int ParseAttributes(CHtmlTokenArena* pArena, const TagNameInfo* pInfo);
  void EnsureAnalysed();
  // Before a change: attributes moved to the token's own heap storage.
  void MakeAttributesOwned();
  void FreeAttributes();
  int FindAttribute(const char* name) const;
  // A record over a fresh heap block of both texts (null texts are empty).
  static TagAttribute HeapRecord(const char* name, int nNameLen, const char* value, int nValueLen);
  int InsertRecord(int nAt, const char* name, const char* value);

  TagAttribute* m_pAttributes;  // heap blocks when m_bOwnAttributes
  DWORD m_nTagId;
  int m_nAttributeCount;
};

}  // namespace telvanix

// Tag tokens and the tag syntax table. A CHtmlTagItem holds one tag of a page
// exactly as it stood in the source, from "<" to ">"; it identifies itself
// by hashing its name into the static table of known tags, parses its
// attributes on demand, lets callers read and change them, and prints itself
// either as the untouched source text or, once changed, rebuilt from parts.
#pragma once

#include <cstdint>

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
  enum : int32_t { emTagSyntaxTableRows = 111 };
  enum : DWORD {
    emTagIdEndBit = 0x10000000,
    emTagIdUnknownBit = 0x20000000,
    emTagIdComment = 0x60,
    emTagIdDoctype = 0x10
  };
  // Rows that unknown tags point at.
  enum : int32_t {
    emUnknownTagIndex = 1,        // any unknown tag
    emUnknownEmptyTagIndex = 2,   // closed by "/>", or taken as empty
    emUnknownXmlPiTagIndex = 3,   // closed by "?>"
    emUnknownContainerTagIndex = 4
  };

  static TagSyntaxItem ms_tTagSyntaxTable[emTagSyntaxTableRows];
  static int ms_nTagSyntaxTableSize;

  // What the name scan after a "<" found (shared by the tokenizer and
  // identification so a name is hashed once).
  struct TagNameInfo {
    const unsigned char* m_pName;  // null when there is no name
    int m_nLength;
    int m_bEndTag;                 // a "/" came before the name
    DWORD m_nHash;
    int m_nIndex;                  // row index, or -1 for an unknown name
  };

  // Once: hashes every row and sorts the table by hash. Returns 1.
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
  // (exclusive): 0 normal tag, 1 comment, 0x100 raw content, 0x200 declaration.
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

  // 1 start tag, 2 end tag, 3 "/>" tag, 4 comment, 5 "<!" declaration,
  // 6 !DOCTYPE, 7 "<?" processing instruction.
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

// CHtmlPack: the document pack that loads, parses and saves one page, and
// the character-entity conversion between raw HTML text (bytes with
// references such as "&eacute;") and decoded 16-bit text.
//
// A pack knows where its page's bytes come from (a file, a caller's buffer,
// or nothing yet), owns the page's token list and through it the element
// tree, parses to the depth asked for, and writes the list back either with
// the source's own layout or with line breaks and indentation regenerated
// from the tags' print types.
#pragma once

#include <string>

#include "telvanix/platform/code_page.h"

#include <cstddef>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/html/token_list.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/file.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

// One named character reference. `code` is a Windows-1252 byte value, not a
// Unicode code point; `hash` is the hash of the name.
struct TagHtmlCharEntity {
  const char* name;
  DWORD hash;
  WORD code;
};

class CHtmlEntityTree;

class TELVANIX_API CHtmlPack {
 public:
  // Parse depth; each adds analysis flags that accumulate over calls.
  enum EmParseFlag : int32_t {
    emParseTokens = 1,      // tokenise and identify tags (0x1)
    emParseAttributes = 2,  // also attributes and decoded text (0x3)
    emParseTree = 3,        // also the element tree (0x7)
    emParseHtmlTree = 4,    // tree with HTML repairs (0x10007)
    emParseXmlTree = 5      // tree, XML flavour (0x20007)
  };
  // The analysis flags a parse stores.
  enum EmAnalyseFlag : int32_t {
    emAnalyseIdentify = 0x1,
    emAnalyseAttributes = 0x2,
    emAnalyseTree = 0x4,
    emAnalyseOriginalMark = 0x100,
    emAnalyseHtmlTree = 0x10000,
    emAnalyseXmlTree = 0x20000
  };
  enum EmSaveFlag : int32_t {
    emSaveNoOverwrite = 1,  // refuse to replace an existing target
    emSave = 2,
    emSaveLayout = 3,       // regenerated layout, always written
    emSaveLayoutObject = 4  // as 3, comments and OBJECT tags on lines of their own
  };
  enum EmSourceMode : int32_t { emSourceEmpty = 1, emSourceFile = 2, emSourceBuffer = 3 };

  // An empty pack (counts as parsed).
  CHtmlPack();
  // A file pack over path.
  explicit CHtmlPack(const char* path);
  // A pack over source, which is remembered (not copied) and must outlive
  // the parse; a file pack when path is given, else a buffer pack.
  CHtmlPack(CByteString& source, const char* path);
  CHtmlPack(const CHtmlPack&) = delete;
  CHtmlPack& operator=(const CHtmlPack&) = delete;
  virtual ~CHtmlPack();

  // 1 on success; 0 on failure or for a flag outside 1..5. Never throws.
  int Parse(EmParseFlag nFlag);
  // Points the pack at new bytes, as if it had been made over source with
  // its present path: the tokens go, their memory stays for the next Parse
  // (a page read again, formatted or edited as text, costs no fresh memory),
  // and nothing counts as parsed. source is remembered, not copied. 1.
  virtual int SetSource(CByteString& source);
  // The tree over the present token list, with the parse flags when they
  // ask for a tree, else with the HTML repairs.
  int RebuildEntityTree();
  // Writes the token list to path (the pack's own file when null). Saving
  // an unchanged list over its own file writes nothing (except with 3).
  int Save(const char* path, EmSaveFlag nFlag);
  int Save(CByteString* pTarget, EmSaveFlag nFlag);
  // 1 as soon as a token was discarded, inserted, changed or not read from
  // the source; 0 for an unchanged or empty list.
  int IsTokenListModified();
  int OpenMappingView(const char* path);
  int CloseMappingView();
  CHtmlTokenList* GetTokenList() { return &m_TokenList; }
  CHtmlEntityTree* GetEntityTree() { return m_TokenList.GetEntityTree(); }
  // For a file pack: name resolved against the pack's path (the path itself
  // for null); empty for other packs.
  CString GetFilePathName(const char* name);
  // A new save target. A file pack keeps its content (read first when not
  // yet parsed); an empty pack with no tokens becomes a file pack of an
  // existing file and reads it. 0 for null/empty, a buffer pack, or an empty
  // pack whose file does not exist.
  int ChangeFilename(const char* path);

  int GetSourceMode() const { return m_nSourceMode; }
  int IsParsed() const { return m_bParsed; }
  int GetAnalyseFlags() const { return m_nAnalyseFlags; }
  const CString& GetPathName() const { return m_strPathName; }

  static constexpr int ms_nHtmlCharTableSize = 128;
  // The named references, sorted by hash, built when the library is
  // compiled (char_entity_table.cpp).
  static const TagHtmlCharEntity ms_tTagHtmlCharTable[ms_nHtmlCharTableSize];

  // The table needs no preparing; kept for hosts that call it. Returns 1.
  static int InitializeHtmlCharTable();

  // Decodes references into one unit per character. length -1 reads to the
  // terminating zero. With mark 1 a character below 256 that came from a
  // reference gets 0xFF in its high byte, so TextToHtml writes it back as a
  // reference. 0 for null text.
  static int HtmlToText(CWordString& out, const unsigned char* text, int length, int mark);
  // Decodes (no marks) and narrows to bytes; a unit of 255 or more looks at
  // the unit after it to pick a Windows-1252 punctuation byte.
  static int HtmlToText(CByteString& out, const unsigned char* text, int length);
  // The byte form of the decoded text; empty for null.
  static CString HtmlToText(const char* text);

  // Appends the HTML-safe form of the units to out. length -1 reads to the
  // zero unit; a length below 1 appends nothing and gives 1. 0 for null text.
  static int TextToHtml(CByteString& out, const unsigned short* text, int length);
  // Widens the bytes one to one (nothing marked) and encodes them.
  static int TextToHtml(CByteString& out, const unsigned char* text, int length);
  static CString TextToHtml(const char* text);

  // The Unicode form of HTML text, for hosts that want UTF-8 rather than
  // the byte forms above: the bytes are read in `codePage` (CP_ACP: the
  // active one), every numeric reference gives its Unicode character
  // ("&#26085;", "&#x1F600;", "&#X2019;"), named references and the
  // punctuation rows give their Unicode characters, a byte order mark is
  // dropped. Appends to out; 0 for null text or an invalid code page.
  static int HtmlToUtf8(std::string& out, const unsigned char* text, int length, UINT codePage);

  // The charset the page declares, as a code page: a UTF-8 byte order mark,
  // else the first META "charset", else the first META http-equiv
  // "Content-Type" with "charset=", else `fallback`. Labels that name no
  // valid code page are passed over. Needs a parsed page.
  UINT GetPageCodePage(UINT fallback = CP_ACP);

 protected:
  // The save format shared by both Save forms.
  virtual int SaveTokenListToByteString(CByteString& out, EmSaveFlag nFlag);
  // The print types of a tag for the layout printer: bytes of its print code
  // (start before/after, end before/after), overridden by the token's
  // manual indent flags. 0 (and 0, 0) for a null tag.
  virtual int GetTagPrintType(CHtmlTagItem* pTag, int& nBefore, int& nAfter);

  int m_nSourceMode;
  int m_bParsed;
  CString m_strPathName;
  HANDLE m_hFile;
  void* m_hMapping;
  const unsigned char* m_pMappedView;
  std::size_t m_nMappedSize;
  CByteString* m_pSource;
  int m_nAnalyseFlags;
  CHtmlTokenList m_TokenList;
};

}  // namespace telvanix

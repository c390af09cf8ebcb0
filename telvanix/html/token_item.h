// Tokens of a loaded page: CHtmlTokenItem is the common base of a tag
// (CHtmlTagItem, tag_item.h) and a run of text between tags (CHtmlTextItem).
// A token keeps its source bytes exactly as read and the whitespace that
// followed it, so an unchanged page saves byte for byte; its flag word records
// how far it was analysed and how it was edited.
//
// Storage: tokens that a token list reads from a page live in that list's
// arena and refer to its copy of the page; they are valid as long as the list
// holds them. Any change made through the public setters copies the changed
// part out to the token's own heap storage first, so every accessor behaves
// the same whichever storage a token uses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/foundation/rgl_object.h"
#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CHtmlTokenArena;
class CHtmlTagItem;
class CHtmlTextItem;
class CHtmlTokenList;

class TELVANIX_API CHtmlTokenItem : public CRglObject {
 public:
  enum EmTokenType : int32_t { emTokenText = 1, emTokenTag = 2 };

  enum EmTokenFlag : uint32_t {
    emTokenIdentified = 0x1,
    emTokenAnalysed = 0x2,
    emTokenDiscarded = 0x10,
    emTokenInserted = 0x20,
    emTokenModified = 0x40,
    emTokenAnalyseMark = 0x100,
    // A text run that begins with a "<" the tokenizer did not take as a tag.
    emTokenRejectedTagText = 0x200,
    // Source bytes replaced in place (RewriteOriginalData).
    emTokenRewritten = 0x400,
    emTokenPairedUnknown = 0x1000,
    emTokenStrayEndTag = 0x2000,
    emTokenUnclosed = 0x4000,
    emTokenPaired = 0x8000,
    // Set by the element tree's repairs.
    emTokenRecoveryInserted = 0x10000,
    emTokenOutsideHtml = 0x20000,
    emTokenMisplaced = 0x40000,
    emTokenReopened = 0x80000,
    emTokenManualIndentAfter1 = 0x1000000,
    emTokenManualIndentAfter2 = 0x2000000,
    emTokenManualIndentBefore1 = 0x4000000,
    emTokenManualIndentBefore2 = 0x8000000
  };

  // Line handling the saver applies around a token instead of its print type:
  // 1 starts a new line (indentation emptied), 2 keeps the indentation.
  enum EmManualIndent : int32_t { emManualIndentNewLine = 1, emManualIndentKeep = 2 };

  // 1: the token followed by its indent after; 2: the token alone.
  enum EmTextFlag : int32_t { emTextWithIndentAfter = 1, emTextTokenOnly = 2 };

  // Analysis levels and options passed to Analyse.
  enum EmAnalyseFlag : int32_t {
    emAnalyseIdentify = 0x1,
    emAnalyseFull = 0x2,
    emAnalyseMark = 0x100,
    emAnalyseRaw = 0x200
  };

  explicit CHtmlTokenItem(EmTokenType nType);
  CHtmlTokenItem(const CHtmlTokenItem&) = delete;
  CHtmlTokenItem& operator=(const CHtmlTokenItem&) = delete;
  ~CHtmlTokenItem() override;

  // Tokens come either from the heap (plain new) or from a list's arena;
  // delete works on both (an arena token's memory goes back with the arena).
  // The token itself records where it lives, so no word is spent in front
  // of each one.
  static void* operator new(std::size_t size);
  static void* operator new(std::size_t size, CHtmlTokenArena& arena);
  static void* operator new(std::size_t size, void* place) noexcept { (void)size; return place; }
  static void operator delete(CHtmlTokenItem* p, std::destroying_delete_t) noexcept;
  // Frees heap memory of a token whose constructor failed.
  static void operator delete(void* p) noexcept;
  static void operator delete(void* p, CHtmlTokenArena& arena) noexcept;
  static void operator delete(void* p, void* place) noexcept { (void)p; (void)place; }

  // Copies type, flags, original data and indent after; 0 for null.
  int Copy(CHtmlTokenItem* pOther);

  virtual int Analyse(int nFlags) = 0;
  // What AppendPrintableText appends, as a string of its own.
  virtual CString GetPrintableText(EmTextFlag nFlag);
  // Appends what GetPrintableText gives; the saver uses this to avoid a
  // temporary string per token.
  virtual void AppendPrintableText(CByteString& out, EmTextFlag nFlag) = 0;

  // Bytes first..last inclusive; 0 (and empty) when last is before first.
  int SetOriginalData(const unsigned char* first, const unsigned char* last);
  int SetOriginalData(const char* text);
  int SetOriginalData(const unsigned char* text);
  // Replaces the token's source bytes (the indent after stays) and analyses
  // it again from them. Unlike a setter it keeps the token printing its
  // bytes exactly as read, so a save changes nothing but these bytes; the
  // token counts as modified for IsTokenListModified (emTokenRewritten).
  // 0 for empty text.
  int RewriteOriginalData(const unsigned char* text, int length);
  int SetOriginalIndentAfter(const unsigned char* first, const unsigned char* last);
  int SetOriginalIndentAfter(const char* text);

  // Only the values 1 and 2 set a bit; any value gives 1.
  int SetManualIndentBefore(EmManualIndent nIndent);
  int SetManualIndentAfter(EmManualIndent nIndent);

  int IsTagToken() const { return m_nTokenType == emTokenTag; }
  int IsTextToken() const { return m_nTokenType == emTokenText; }
  EmTokenType GetTokenType() const { return static_cast<EmTokenType>(m_nTokenType); }

  void SetTokenFlag(EmTokenFlag nFlag) { m_nTokenFlags |= nFlag; }
  void ResetTokenFlag(EmTokenFlag nFlag) { m_nTokenFlags &= ~static_cast<DWORD>(nFlag); }
  DWORD GetTokenFlag() const { return m_nTokenFlags; }
  int DiscardToken() { m_nTokenFlags |= emTokenDiscarded; return 1; }
  int IsDiscardedToken() const { return (m_nTokenFlags & emTokenDiscarded) != 0; }
  int IsInsertedToken() const { return (m_nTokenFlags & emTokenInserted) != 0; }
  int IsModifiedToken() const { return (m_nTokenFlags & emTokenModified) != 0; }
  int IsValidToken() const { return 1; }

  CHtmlTagItem* GetSafeTagItemPtr();
  CHtmlTextItem* GetSafeTextItemPtr();

  CString GetOriginalString() const;
  CString GetIndentAfterString() const;

  // The stored bytes themselves (not terminated; the indent after follows
  // the original data directly).
  const unsigned char* GetOriginalData() const { return m_pOriginal; }
  int GetOriginalLength() const { return m_nOriginalLength; }
  const unsigned char* GetIndentAfter() const { return m_pOriginal ? m_pOriginal + m_nOriginalLength : nullptr; }
  int GetIndentAfterLength() const { return m_nIndentLength; }

  // Whether the token lives in a list's arena (read from a page).
  static bool IsArenaToken(const CHtmlTokenItem* pToken) { return pToken && pToken->m_bInArena; }
  // Whether deleting the token has anything to give back besides its own
  // memory (heap copies of bytes, attributes or text).
  bool HoldsHeapParts() const { return m_bHeapParts != 0; }

 protected:
  friend class CHtmlTokenList;

  // Refers to bytes that outlive the token (the list's copy of the page).
  void AttachOriginalData(const unsigned char* p, int n);
  // The whitespace after the token; it must follow the attached bytes in
  // the page, else both are copied to the token's own block.
  void AttachIndentAfter(const unsigned char* p, int n);
  // Replaces the token's bytes by a heap block holding both parts.
  void StoreData(const unsigned char* original, int nOriginal, const unsigned char* indent, int nIndent);
  void AppendOriginal(CByteString& out, EmTextFlag nFlag) const;
  // Marks the token as holding heap parts, so its list deletes it.
  void TakeHeapParts();

  // A page holds tens of thousands of tokens: the layout is kept to 32
  // bytes here and 48 in either kind of token.
  const unsigned char* m_pOriginal;  // original data, then the indent after
  DWORD m_nTokenFlags;
  int m_nOriginalLength;
  int m_nIndentLength;
  unsigned char m_nTokenType;          // EmTokenType
  unsigned char m_bOwnData : 1;        // m_pOriginal is a heap block of this token
  unsigned char m_bHeapParts : 1;      // something of the token is on the heap
  unsigned char m_bInArena : 1;        // the token's memory is its list's arena
  unsigned char m_bSpacesBefore : 1;   // text tokens: whitespace was taken before it
  unsigned char m_nWordMode : 2;       // text tokens: where the word text is
  unsigned char m_bOwnAttributes : 1;  // tag tokens: the attributes are heap blocks
  short m_nTagIndex;                   // tag tokens: row of the syntax table
};

class TELVANIX_API CHtmlTextItem : public CHtmlTokenItem {
 public:
  CHtmlTextItem();
  // The raw source form; the word text is its decoded form.
  explicit CHtmlTextItem(const char* text);
  ~CHtmlTextItem() override;

  int Copy(CHtmlTextItem* pOther);
  int Analyse(int nFlags) override;
  void AppendPrintableText(CByteString& out, EmTextFlag nFlag) override;

  // The word text narrowed to bytes (low byte of each unit).
  CString GetText();
  // Sets the modified flag; bytes widened one to one, no decoding.
  int SetText(const char* text);
  // The word text itself (analysed at level 2 first); owned by the token.
  CWordString* GetWordText();
  int SetWordText(CWordString* pText);
  // Length and units of the word text without making a CWordString of it.
  int GetWordTextLength();
  unsigned short GetWordTextAt(int nIndex);

  // True when every byte of first..last is a space, tab, LF or CR (also when
  // first is after last).
  static int IsSpaceOnly(const unsigned char* first, const unsigned char* last);
  // 1 when the whitespace before this text went to the preceding tag.
  int IsSpacesTextBefore() const { return m_bSpacesBefore; }

 protected:
  friend class CHtmlTokenList;

  // Analyse, drawing decoded text from the arena when one is given.
  int AnalyseIn(int nFlags, CHtmlTokenArena* pArena);
  void SetSpacesBefore(int bSpaces) { m_bSpacesBefore = bSpaces ? 1 : 0; }
  void ReleaseWordText();
  CWordString* MaterializeWordText();

  enum EmWordMode : unsigned char {
    emWordNone = 0,     // nothing decoded yet
    emWordBytes = 1,    // the bytes at m_pWordBytes widened one to one
    emWordUnits = 2,    // units at m_pWordUnits (arena)
    emWordString = 3    // m_pWordText
  };
  union {
    const unsigned char* m_pWordBytes;
    const unsigned short* m_pWordUnits;
    CWordString* m_pWordText;
  };
  int m_nWordLength;
};

}  // namespace telvanix

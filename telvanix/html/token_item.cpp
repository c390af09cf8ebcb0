#include "telvanix/html/token_item.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "telvanix/html/html_pack.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_arena.h"

namespace telvanix {

// ---- Allocation ----

namespace {
inline bool IsBlank(unsigned char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }
}  // namespace

void CHtmlTokenItem::TakeHeapParts() { m_bHeapParts = 1; }

void* CHtmlTokenItem::operator new(std::size_t size) {
  void* raw = std::malloc(size);
  if (!raw)
    throw std::bad_alloc();
  return raw;
}

void* CHtmlTokenItem::operator new(std::size_t size, CHtmlTokenArena& arena) { return arena.Allocate(size); }

// The flag is read before the destructor runs: afterwards the token is gone.
void CHtmlTokenItem::operator delete(CHtmlTokenItem* p, std::destroying_delete_t) noexcept {
  if (!p)
    return;
  const bool inArena = p->m_bInArena;
  p->~CHtmlTokenItem();
  // Arena memory is given back when the arena is reset.
  if (!inArena)
    std::free(p);
}

void CHtmlTokenItem::operator delete(void* p) noexcept { std::free(p); }

void CHtmlTokenItem::operator delete(void* p, CHtmlTokenArena& arena) noexcept {
  (void)p;
  (void)arena;
}

// ---- CHtmlTokenItem ----

CHtmlTokenItem::CHtmlTokenItem(EmTokenType nType)
    : m_pOriginal(nullptr),
      m_nTokenFlags(0),
      m_nOriginalLength(0),
      m_nIndentLength(0),
      m_nTokenType(static_cast<unsigned char>(nType)),
      m_bOwnData(0),
      m_bHeapParts(0),
      m_bInArena(0),
      m_bSpacesBefore(0),
      m_nWordMode(0),
      m_bOwnAttributes(0),
      m_nTagIndex(0) {}

CHtmlTokenItem::~CHtmlTokenItem() {
  if (m_bOwnData)
    std::free(const_cast<unsigned char*>(m_pOriginal));
}

void CHtmlTokenItem::StoreData(const unsigned char* original, int nOriginal, const unsigned char* indent,
                               int nIndent) {
  if (nOriginal < 0)
    nOriginal = 0;
  if (nIndent < 0)
    nIndent = 0;
  unsigned char* block = nullptr;
  if (nOriginal + nIndent > 0) {
    // Copied before the old block goes: the parts may lie in it.
    block = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(nOriginal + nIndent) + 1));
    if (!block)
      throw std::bad_alloc();
    if (nOriginal)
      std::memcpy(block, original, static_cast<std::size_t>(nOriginal));
    if (nIndent)
      std::memcpy(block + nOriginal, indent, static_cast<std::size_t>(nIndent));
    block[nOriginal + nIndent] = 0;
  }
  if (m_bOwnData)
    std::free(const_cast<unsigned char*>(m_pOriginal));
  m_pOriginal = block;
  m_nOriginalLength = nOriginal;
  m_nIndentLength = nIndent;
  m_bOwnData = block ? 1 : 0;
  if (block)
    TakeHeapParts();
}

void CHtmlTokenItem::AttachOriginalData(const unsigned char* p, int n) {
  if (m_bOwnData)
    std::free(const_cast<unsigned char*>(m_pOriginal));
  m_bOwnData = 0;
  m_pOriginal = p;
  m_nOriginalLength = n > 0 ? n : 0;
  m_nIndentLength = 0;
}

void CHtmlTokenItem::AttachIndentAfter(const unsigned char* p, int n) {
  if (n <= 0) {
    m_nIndentLength = 0;
    return;
  }
  if (!m_bOwnData && m_pOriginal && p == m_pOriginal + m_nOriginalLength) {
    m_nIndentLength = n;
    return;
  }
  StoreData(m_pOriginal, m_nOriginalLength, p, n);
}

int CHtmlTokenItem::SetOriginalData(const unsigned char* first, const unsigned char* last) {
  if (!first || !last || last < first) {
    StoreData(nullptr, 0, GetIndentAfter(), m_nIndentLength);
    return 0;
  }
  StoreData(first, static_cast<int>(last - first + 1), GetIndentAfter(), m_nIndentLength);
  return 1;
}

int CHtmlTokenItem::SetOriginalData(const char* text) {
  if (!text) {
    StoreData(nullptr, 0, GetIndentAfter(), m_nIndentLength);
    return 0;
  }
  StoreData(reinterpret_cast<const unsigned char*>(text), static_cast<int>(std::strlen(text)), GetIndentAfter(),
            m_nIndentLength);
  return 1;
}

int CHtmlTokenItem::SetOriginalData(const unsigned char* text) {
  return SetOriginalData(reinterpret_cast<const char*>(text));
}

int CHtmlTokenItem::RewriteOriginalData(const unsigned char* text, int length) {
  if (!text || length <= 0)
    return 0;
  StoreData(text, length, GetIndentAfter(), m_nIndentLength);
  m_nTokenFlags &= ~static_cast<DWORD>(emTokenIdentified | emTokenAnalysed);
  m_nTokenFlags |= emTokenRewritten;
  Analyse(emAnalyseFull);
  return 1;
}

int CHtmlTokenItem::SetOriginalIndentAfter(const unsigned char* first, const unsigned char* last) {
  if (!first || !last || last < first) {
    StoreData(m_pOriginal, m_nOriginalLength, nullptr, 0);
    return 0;
  }
  StoreData(m_pOriginal, m_nOriginalLength, first, static_cast<int>(last - first + 1));
  return 1;
}

int CHtmlTokenItem::SetOriginalIndentAfter(const char* text) {
  if (!text) {
    StoreData(m_pOriginal, m_nOriginalLength, nullptr, 0);
    return 0;
  }
  StoreData(m_pOriginal, m_nOriginalLength, reinterpret_cast<const unsigned char*>(text),
            static_cast<int>(std::strlen(text)));
  return 1;
}

int CHtmlTokenItem::Copy(CHtmlTokenItem* pOther) {
  if (!pOther)
    return 0;
  if (pOther == this)
    return 1;
  m_nTokenType = pOther->m_nTokenType;
  m_nTokenFlags = pOther->m_nTokenFlags;
  StoreData(pOther->m_pOriginal, pOther->m_nOriginalLength, pOther->GetIndentAfter(), pOther->m_nIndentLength);
  return 1;
}

CString CHtmlTokenItem::GetPrintableText(EmTextFlag nFlag) {
  CByteString out;
  AppendPrintableText(out, nFlag);
  if (out.GetLength() <= 0)
    return CString();
  return CString(reinterpret_cast<const char*>(out.GetContent()), out.GetLength());
}

int CHtmlTokenItem::SetManualIndentBefore(EmManualIndent nIndent) {
  if (nIndent == emManualIndentNewLine)
    m_nTokenFlags |= emTokenManualIndentBefore1;
  else if (nIndent == emManualIndentKeep)
    m_nTokenFlags |= emTokenManualIndentBefore2;
  return 1;
}

int CHtmlTokenItem::SetManualIndentAfter(EmManualIndent nIndent) {
  if (nIndent == emManualIndentNewLine)
    m_nTokenFlags |= emTokenManualIndentAfter1;
  else if (nIndent == emManualIndentKeep)
    m_nTokenFlags |= emTokenManualIndentAfter2;
  return 1;
}

CHtmlTagItem* CHtmlTokenItem::GetSafeTagItemPtr() {
  return m_nTokenType == emTokenTag ? static_cast<CHtmlTagItem*>(this) : nullptr;
}

CHtmlTextItem* CHtmlTokenItem::GetSafeTextItemPtr() {
  return m_nTokenType == emTokenText ? static_cast<CHtmlTextItem*>(this) : nullptr;
}

CString CHtmlTokenItem::GetOriginalString() const {
  if (!m_nOriginalLength)
    return CString();
  return CString(reinterpret_cast<const char*>(m_pOriginal), m_nOriginalLength);
}

CString CHtmlTokenItem::GetIndentAfterString() const {
  if (!m_nIndentLength)
    return CString();
  return CString(reinterpret_cast<const char*>(GetIndentAfter()), m_nIndentLength);
}

void CHtmlTokenItem::AppendOriginal(CByteString& out, EmTextFlag nFlag) const {
  if (nFlag != emTextWithIndentAfter && nFlag != emTextTokenOnly)
    return;
  int n = m_nOriginalLength + (nFlag == emTextWithIndentAfter ? m_nIndentLength : 0);
  if (n)
    out.Append(m_pOriginal, n);
}

// ---- CHtmlTextItem ----

CHtmlTextItem::CHtmlTextItem() : CHtmlTokenItem(emTokenText), m_pWordText(nullptr), m_nWordLength(0) {}

CHtmlTextItem::CHtmlTextItem(const char* text) : CHtmlTextItem() {
  SetOriginalData(text);
  m_nTokenFlags |= emTokenInserted;
  Analyse(emAnalyseFull);
}

CHtmlTextItem::~CHtmlTextItem() { ReleaseWordText(); }

void CHtmlTextItem::ReleaseWordText() {
  if (m_nWordMode == emWordString)
    delete m_pWordText;
  m_pWordText = nullptr;
  m_nWordLength = 0;
  m_nWordMode = emWordNone;
}

int CHtmlTextItem::Copy(CHtmlTextItem* pOther) {
  if (!pOther)
    return 0;
  if (pOther == this)
    return 1;
  CHtmlTokenItem::Copy(pOther);
  m_bSpacesBefore = pOther->m_bSpacesBefore;
  ReleaseWordText();
  if (pOther->m_nWordMode != emWordNone) {
    CWordString* copy = new CWordString;
    int n = pOther->GetWordTextLength();
    if (n > 0) {
      std::vector<unsigned short> units(static_cast<std::size_t>(n));
      for (int i = 0; i < n; ++i)
        units[static_cast<std::size_t>(i)] = pOther->GetWordTextAt(i);
      copy->Assign(units.data(), n);
    }
    m_pWordText = copy;
    m_nWordMode = emWordString;
    TakeHeapParts();
  }
  return 1;
}

int CHtmlTextItem::IsSpaceOnly(const unsigned char* first, const unsigned char* last) {
  if (!first || !last)
    return 1;
  for (const unsigned char* p = first; p <= last; ++p)
    if (!IsBlank(*p))
      return 0;
  return 1;
}

int CHtmlTextItem::Analyse(int nFlags) { return AnalyseIn(nFlags, nullptr); }

int CHtmlTextItem::AnalyseIn(int nFlags, CHtmlTokenArena* pArena) {
  if (!(nFlags & (emAnalyseIdentify | emAnalyseFull)))
    return 1;
  if ((nFlags & emAnalyseFull) && (m_nTokenFlags & emTokenAnalysed))
    return 1;
  if ((nFlags & emAnalyseIdentify) && (m_nTokenFlags & emTokenIdentified))
    return 1;
  if (nFlags & emAnalyseMark)
    m_nTokenFlags |= emTokenAnalyseMark;
  m_nTokenFlags |= emTokenIdentified;
  if (!(nFlags & emAnalyseFull))
    return 1;

  if (!m_pOriginal || m_nOriginalLength <= 0)
    return 0;
  const unsigned char* first = m_pOriginal;
  const unsigned char* end = m_pOriginal + m_nOriginalLength;
  bool raw = (nFlags & emAnalyseRaw) != 0;
  if (!raw) {
    while (first < end && (*first == '\r' || *first == '\n'))
      ++first;
    while (end > first && (end[-1] == '\r' || end[-1] == '\n'))
      --end;
    if (first == end)
      return 0;
  }
  int n = static_cast<int>(end - first);

  ReleaseWordText();
  if (raw || !std::memchr(first, '&', static_cast<std::size_t>(n))) {
    // Without a reference the decoded text is the bytes widened one to one;
    // keep a view of them instead of a second copy.
    if (m_bOwnData && !pArena) {
      m_pWordText = new CWordString;
      m_pWordText->Assign(first, n);
      m_nWordMode = emWordString;
      TakeHeapParts();
    } else {
      m_pWordBytes = first;
      m_nWordMode = emWordBytes;
    }
    m_nWordLength = n;
  } else {
    CWordString decoded;
    CHtmlPack::HtmlToText(decoded, first, n, 1);
    if (pArena) {
      int len = decoded.GetLength();
      unsigned short* units =
          static_cast<unsigned short*>(pArena->Allocate(sizeof(unsigned short) * (static_cast<std::size_t>(len) + 1)));
      if (len)
        std::memcpy(units, decoded.GetContent(), sizeof(unsigned short) * static_cast<std::size_t>(len));
      units[len] = 0;
      m_pWordUnits = units;
      m_nWordLength = len;
      m_nWordMode = emWordUnits;
    } else {
      m_pWordText = new CWordString(std::move(decoded));
      m_nWordMode = emWordString;
      TakeHeapParts();
    }
  }
  m_nTokenFlags |= emTokenAnalysed;
  return 1;
}

int CHtmlTextItem::GetWordTextLength() {
  if (!(m_nTokenFlags & emTokenAnalysed) && m_nWordMode == emWordNone)
    Analyse(emAnalyseFull);
  if (m_nWordMode == emWordString)
    return m_pWordText->GetLength();
  return m_nWordMode == emWordNone ? 0 : m_nWordLength;
}

unsigned short CHtmlTextItem::GetWordTextAt(int nIndex) {
  switch (m_nWordMode) {
    case emWordBytes:
      return nIndex >= 0 && nIndex < m_nWordLength ? m_pWordBytes[nIndex] : 0;
    case emWordUnits:
      return nIndex >= 0 && nIndex < m_nWordLength ? m_pWordUnits[nIndex] : 0;
    case emWordString:
      return nIndex >= 0 && nIndex < m_pWordText->GetLength() ? m_pWordText->GetContent()[nIndex] : 0;
    default:
      return 0;
  }
}

CWordString* CHtmlTextItem::MaterializeWordText() {
  if (m_nWordMode == emWordString)
    return m_pWordText;
  CWordString* text = new CWordString;
  if (m_nWordMode == emWordBytes && m_nWordLength > 0)
    text->Assign(m_pWordBytes, m_nWordLength);
  else if (m_nWordMode == emWordUnits && m_nWordLength > 0)
    text->Assign(m_pWordUnits, m_nWordLength);
  m_pWordText = text;
  m_nWordMode = emWordString;
  TakeHeapParts();
  return text;
}

CWordString* CHtmlTextItem::GetWordText() {
  if (!(m_nTokenFlags & emTokenAnalysed) && m_nWordMode == emWordNone)
    Analyse(emAnalyseFull);
  return MaterializeWordText();
}

CString CHtmlTextItem::GetText() {
  int n = GetWordTextLength();
  if (n <= 0)
    return CString();
  if (m_nWordMode == emWordBytes)
    return CString(reinterpret_cast<const char*>(m_pWordBytes), n);
  CString text;
  char* buffer = text.GetBufferSetLength(n);
  for (int i = 0; i < n; ++i)
    buffer[i] = static_cast<char>(GetWordTextAt(i) & 0xFF);
  text.ReleaseBuffer(n);
  return text;
}

int CHtmlTextItem::SetText(const char* text) {
  m_nTokenFlags |= emTokenModified;
  ReleaseWordText();
  CWordString* word = new CWordString;
  if (text && *text)
    word->Assign(reinterpret_cast<const unsigned char*>(text), -1);
  m_pWordText = word;
  m_nWordMode = emWordString;
  TakeHeapParts();
  return 1;
}

int CHtmlTextItem::SetWordText(CWordString* pText) {
  m_nTokenFlags |= emTokenModified;
  ReleaseWordText();
  CWordString* word = pText ? new CWordString(*pText) : new CWordString;
  m_pWordText = word;
  m_nWordMode = emWordString;
  TakeHeapParts();
  return 1;
}

void CHtmlTextItem::AppendPrintableText(CByteString& out, EmTextFlag nFlag) {
  if ((m_nTokenFlags & emTokenModified) && (nFlag == emTextWithIndentAfter || nFlag == emTextTokenOnly)) {
    // Low byte of every unit, no encoding: whoever changed the text put
    // markup-safe text in.
    int n = GetWordTextLength();
    if (m_nWordMode == emWordBytes) {
      if (n > 0)
        out.Append(m_pWordBytes, n);
    } else if (n > 0) {
      unsigned char chunk[256];
      int used = 0;
      for (int i = 0; i < n; ++i) {
        chunk[used++] = static_cast<unsigned char>(GetWordTextAt(i) & 0xFF);
        if (used == static_cast<int>(sizeof(chunk))) {
          out.Append(chunk, used);
          used = 0;
        }
      }
      if (used)
        out.Append(chunk, used);
    }
    if (nFlag == emTextWithIndentAfter && m_nIndentLength)
      out.Append(GetIndentAfter(), m_nIndentLength);
    return;
  }
  AppendOriginal(out, nFlag);
}

}  // namespace telvanix

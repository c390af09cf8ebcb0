#include "telvanix/html/tag_item.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <strings.h>

#include "telvanix/html/internal/markup_scan.h"
#include "telvanix/html/internal/tag_syntax_index.h"
#include "telvanix/html/token_arena.h"

namespace telvanix {

using markup::FindCdataClose;
using markup::FindCommentClose;

namespace {

using tagindex::kCommentHash;
using tagindex::kNameCodes;

// Character classes of the name scans.
enum : unsigned char { kTagFirst = 1, kTagNext = 2, kAttrFirst = 4, kAttrNext = 8, kBlank = 16 };
constexpr std::array<unsigned char, 256> kClass = [] {
  std::array<unsigned char, 256> t{};
  for (int c = 0; c < 128; ++c) {
    bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    bool digit = c >= '0' && c <= '9';
    unsigned char k = 0;
    if (letter || c == '!' || c == '/' || c == '?' || c == '_' || c == ':' || c == '[')
      k |= kTagFirst;
    if (letter || digit || c == '-' || c == '.' || c == ':' || c == '[' || c == '_')
      k |= kTagNext;
    if (letter || c == '_' || c == ':')
      k |= kAttrFirst;
    if (letter || digit || c == '-' || c == '.' || c == '_' || c == ':')
      k |= kAttrNext;
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r')
      k |= kBlank;
    t[static_cast<std::size_t>(c)] = k;
  }
  return t;
}();

inline bool Is(unsigned char c, unsigned char k) { return (kClass[c] & k) != 0; }

// name, a zero, value, a zero, into block (nameLen + valueLen + 2 bytes).
void FillRecordText(char* block, const void* name, int nameLen, const void* value, int valueLen) {
  if (nameLen > 0)
    std::memcpy(block, name, static_cast<std::size_t>(nameLen));
  block[nameLen] = 0;
  if (valueLen > 0)
    std::memcpy(block + nameLen + 1, value, static_cast<std::size_t>(valueLen));
  block[nameLen + 1 + valueLen] = 0;
}

// An attribute value at p: quoted up to the same quote, or a bare word up to
// a blank, ">", or "/", "?", "]" right before ">". Empty when nothing fits.
void ScanValue(const unsigned char* p, const unsigned char* end, const unsigned char*& vFirst,
               const unsigned char*& vEnd) {
  vFirst = vEnd = p;
  if (p >= end)
    return;
  if (*p == '"' || *p == '\'') {
    const unsigned char* q =
        static_cast<const unsigned char*>(std::memchr(p + 1, *p, static_cast<std::size_t>(end - p - 1)));
    if (q) {
      vEnd = q + 1;
    } else if (end[-1] == '>') {
      vEnd = end - 1 > p ? end - 1 : p;
    }
    return;
  }
  const unsigned char* q = p;
  while (q < end) {
    unsigned char c = *q;
    if (Is(c, kBlank) || c == '>')
      break;
    if ((c == '/' || c == '?' || c == ']') && q + 1 < end && q[1] == '>')
      break;
    ++q;
  }
  vEnd = q;
}

struct RawRecord {
  const unsigned char* name;
  int nameLen;
  const unsigned char* value;
  int valueLen;
};

}  // namespace

// ---- Static table operations ----

int CHtmlTagItem::InitializeSyntaxTable() { return 1; }

int CHtmlTagItem::GetTagIndex(const unsigned char* first, const unsigned char* last, DWORD* pHash) {
  if (!first || !last || first > last) {
    if (pHash)
      *pHash = static_cast<DWORD>(-1);
    return -1;
  }
  DWORD h = tagindex::HashName(first, last + 1);
  if (pHash)
    *pHash = h;
  return tagindex::Lookup(h);
}

int CHtmlTagItem::GetTagIdFromTagName(const char* name, int* pIndex) {
  if (pIndex)
    *pIndex = 0;
  if (!name)
    return 0;
  bool endTag = *name == '/';
  if (endTag)
    ++name;
  std::size_t n = std::strlen(name);
  DWORD h = 0;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(name);
  int index = n ? GetTagIndex(p, p + n - 1, &h) : -1;
  DWORD id;
  if (index < 0) {
    id = (h & emTagIdHashMask) | emTagIdUnknownBit;
    index = 0;
  } else {
    id = ms_tTagSyntaxTable[index].m_nTagId;
  }
  if (endTag)
    id |= emTagIdEndBit;
  if (pIndex)
    *pIndex = index;
  return static_cast<int>(id);
}

const TagSyntaxItem* CHtmlTagItem::GetTagSyntaxItem(int nIndex) {
  if (nIndex < 0 || nIndex >= ms_nTagSyntaxTableSize)
    return &ms_tTagSyntaxTable[0];
  return &ms_tTagSyntaxTable[nIndex];
}

void CHtmlTagItem::ScanTagName(const unsigned char* p, const unsigned char* last, TagNameInfo& info) {
  info.m_pName = nullptr;
  info.m_nLength = 0;
  info.m_bEndTag = 0;
  info.m_nHash = 0;
  info.m_nIndex = -1;
  if (!p || !last || p > last)
    return;
  if (*p == '/') {
    info.m_bEndTag = 1;
    ++p;
  }
  // A name needs a character after it inside the range, unless it runs up
  // to a closing ">" at the very end.
  if (p >= last || !Is(*p, kTagFirst))
    return;
  // The name is hashed while it is scanned.
  const unsigned char* start = p;
  DWORD h = kNameCodes[*p & 127];
  for (++p; p < last && Is(*p, kTagNext); ++p) {
    unsigned char code = kNameCodes[*p & 127];
    if (code)
      h = h * 44u + code;
  }
  if (p == last && *last != '>')
    return;
  if (p - start >= 3 && start[0] == '!' && start[1] == '-' && start[2] == '-')
    h = kCommentHash;
  info.m_pName = start;
  info.m_nLength = static_cast<int>(p - start);
  info.m_nHash = h;
  info.m_nIndex = tagindex::Lookup(h);
}

int CHtmlTagItem::IsValidTagToken(const unsigned char* start, const unsigned char* end) {
  TagNameInfo info;
  return IsValidTagToken(start, end, info);
}

int CHtmlTagItem::IsValidTagToken(const unsigned char* start, const unsigned char* end, TagNameInfo& info) {
  if (!start || !end || start + 1 >= end) {
    info = TagNameInfo{nullptr, 0, 0, 0, -1};
    return emSptDeclaration;
  }
  ScanTagName(start + 1, end - 1, info);
  if (!info.m_pName) {
    const unsigned char* there = start + 1;
    if (there < end && *there == '/')
      ++there;
    return there < end && *there == '>' ? emSptOrdinary : emSptDeclaration;
  }
  if (info.m_nIndex < 0 || info.m_bEndTag)
    return emSptOrdinary;
  return ms_tTagSyntaxTable[info.m_nIndex].m_nSptType;
}

const unsigned char* CHtmlTagItem::SkipCommentWithinTag(const unsigned char* p, const unsigned char* end) {
  if (!p || !end || end - p < 4 || p[0] != '-' || p[1] != '-')
    return p;
  for (const unsigned char* q = p + 2; q + 1 < end; ++q)
    if (q[0] == '-' && q[1] == '-')
      return q + 2;
  return end[-1] == '>' ? end - 1 : p;
}

CString CHtmlTagItem::MakeCommentMark(const char* mark, const char* data) {
  CString text("<!-- ");
  text += mark ? mark : "QZTXMARK";
  text += " ";
  if (data)
    text += data;
  text += " -->";
  return text;
}

int CHtmlTagItem::IsCommentMark(CHtmlTagItem* pItem) {
  if (!pItem || pItem->GetTagId() != static_cast<int>(emTagIdComment))
    return 0;
  pItem->EnsureAnalysed();
  if (pItem->m_nAttributeCount < 1)
    return 0;
  const TagAttribute& rec = pItem->m_pAttributes[0];
  return rec.m_nValueLength >= 9 && std::memcmp(rec.GetValue() + 1, "QZTXMARK", 8) == 0;
}

int CHtmlTagItem::GetCommentMark(CHtmlTagItem* pItem, CString& mark, CString& data) {
  mark.Empty();
  data.Empty();
  if (!IsCommentMark(pItem))
    return 0;
  const TagAttribute& rec = pItem->m_pAttributes[0];
  const unsigned char* v = reinterpret_cast<const unsigned char*>(rec.GetValue());
  const unsigned char* end = v + rec.m_nValueLength;
  const unsigned char* p = v + 1;
  const unsigned char* q = p;
  while (q < end && !Is(*q, kBlank))
    ++q;
  mark = CString(reinterpret_cast<const char*>(p), static_cast<int>(q - p));
  if (q < end)
    data = CString(reinterpret_cast<const char*>(q + 1), static_cast<int>(end - q - 1));
  return 1;
}

// ---- Construction ----

CHtmlTagItem::CHtmlTagItem()
    : CHtmlTokenItem(emTokenTag), m_pAttributes(nullptr), m_nTagId(0), m_nAttributeCount(0) {}

CHtmlTagItem::CHtmlTagItem(const char* text) : CHtmlTagItem() {
  if (text && *text == '<') {
    SetOriginalData(text);
  } else if (text) {
    CString wrapped("<");
    wrapped += text;
    wrapped += ">";
    SetOriginalData(static_cast<const char*>(wrapped));
  }
  m_nTokenFlags |= emTokenInserted;
  Analyse(emAnalyseFull);
}

CHtmlTagItem::~CHtmlTagItem() { FreeAttributes(); }

void CHtmlTagItem::FreeAttributes() {
  if (m_bOwnAttributes) {
    for (int i = 0; i < m_nAttributeCount; ++i)
      std::free(const_cast<char*>(m_pAttributes[i].m_pszName));
    std::free(m_pAttributes);
  }
  m_pAttributes = nullptr;
  m_nAttributeCount = 0;
  m_bOwnAttributes = 0;
}

void CHtmlTagItem::MakeAttributesOwned() {
  if (m_bOwnAttributes)
    return;
  int count = m_nAttributeCount;
  TagAttribute* owned =
      static_cast<TagAttribute*>(std::malloc(sizeof(TagAttribute) * static_cast<std::size_t>(count > 0 ? count : 1)));
  if (!owned)
    throw std::bad_alloc();
  for (int i = 0; i < count; ++i) {
    const TagAttribute& from = m_pAttributes[i];
    owned[i] = HeapRecord(from.m_pszName, from.m_nNameLength, from.GetValue(), from.m_nValueLength);
  }
  m_pAttributes = owned;
  m_nAttributeCount = count;
  m_bOwnAttributes = 1;
  TakeHeapParts();
}

int CHtmlTagItem::Copy(CHtmlTagItem* pOther) {
  if (!pOther)
    return 0;
  if (pOther == this)
    return 1;
  CHtmlTokenItem::Copy(pOther);
  m_nTagId = pOther->m_nTagId;
  m_nTagIndex = pOther->m_nTagIndex;
  FreeAttributes();
  // Share the other's records for a moment, then take copies of them.
  m_pAttributes = pOther->m_pAttributes;
  m_nAttributeCount = pOther->m_nAttributeCount;
  m_bOwnAttributes = 0;
  if (m_nAttributeCount)
    MakeAttributesOwned();
  else
    m_pAttributes = nullptr;
  return 1;
}

// ---- Identification and attribute parsing ----

void CHtmlTagItem::Identify(const TagNameInfo& info) {
  m_nTagId = 0;
  m_nTagIndex = 0;
  if (info.m_pName) {
    if (info.m_nIndex < 0) {
      m_nTagIndex = static_cast<short>(emUnknownTagIndex);
      m_nTagId = (info.m_nHash & emTagIdHashMask) + emTagIdUnknownBit;
    } else {
      m_nTagIndex = static_cast<short>(info.m_nIndex);
      m_nTagId = ms_tTagSyntaxTable[info.m_nIndex].m_nTagId;
    }
    if (info.m_bEndTag)
      m_nTagId |= emTagIdEndBit;
  }
  m_nTokenFlags |= emTokenIdentified;
}

int CHtmlTagItem::Analyse(int nFlags) { return AnalyseIn(nFlags, nullptr, nullptr); }

int CHtmlTagItem::AnalyseIn(int nFlags, CHtmlTokenArena* pArena, const TagNameInfo* pInfo) {
  // Written only when it changes: a page analysed again (or read for its
  // words on another thread meanwhile) sees no write to a token it had.
  if ((nFlags & emAnalyseMark) && !(m_nTokenFlags & emTokenAnalyseMark))
    m_nTokenFlags |= emTokenAnalyseMark;
  if (!(nFlags & (emAnalyseIdentify | emAnalyseFull)))
    return 1;
  if ((nFlags & emAnalyseFull) && (m_nTokenFlags & emTokenAnalysed))
    return 1;
  if ((nFlags & emAnalyseIdentify) && (m_nTokenFlags & emTokenIdentified))
    return 1;
  if (!m_pOriginal || m_nOriginalLength <= 0)
    return 0;
  TagNameInfo local;
  if (!pInfo) {
    ScanTagName(m_pOriginal + 1, m_pOriginal + m_nOriginalLength - 1, local);
    pInfo = &local;
  }
  Identify(*pInfo);
  if (!(nFlags & emAnalyseFull))
    return 1;
  ParseAttributes(pArena, pInfo);
  m_nTokenFlags |= emTokenAnalysed;
  return 1;
}

void CHtmlTagItem::EnsureAnalysed() {
  if (!(m_nTokenFlags & emTokenAnalysed))
    Analyse(emAnalyseFull);
}

// Walks the attribute text of a tag from p (after its name): `add` gets each
// record's name and value (without enclosing quotes; null for none). The one
// definition of attribute syntax, for parsing and for locating values.
template <class Add>
void ScanAttributeRecords(const unsigned char* p, const unsigned char* end, Add&& add) {
  while (p < end) {
    const unsigned char* p0 = p;
    while (p < end && Is(*p, kBlank))
      ++p;
    p = CHtmlTagItem::SkipCommentWithinTag(p, end);
    while (p < end && Is(*p, kBlank))
      ++p;
    if (p < end && Is(*p, kAttrFirst)) {
      const unsigned char* name = p++;
      while (p < end && Is(*p, kAttrNext))
        ++p;
      int nameLen = static_cast<int>(p - name);
      while (p < end && Is(*p, kBlank))
        ++p;
      const unsigned char* vFirst = nullptr;
      const unsigned char* vEnd = nullptr;
      if (p < end && *p == '=') {
        ++p;
        while (p < end && Is(*p, kBlank))
          ++p;
        ScanValue(p, end, vFirst, vEnd);
        p = vEnd;
        if (vEnd - vFirst > 1 && (*vFirst == '"' || *vFirst == '\'') && vEnd[-1] == *vFirst) {
          ++vFirst;
          --vEnd;
        }
      }
      add(name, nameLen, vFirst, vFirst ? static_cast<int>(vEnd - vFirst) : 0);
    }
    if (p == p0) {
      const unsigned char* vFirst;
      const unsigned char* vEnd;
      ScanValue(p, end, vFirst, vEnd);
      if (vEnd == vFirst) {
        unsigned char c = *p;
        if (c == '>') {
          // the tag's own end
        } else if ((c == '?' || c == '/' || c == ']') && p + 1 < end && p[1] == '>') {
          add(p, 1, nullptr, 0);
        } else if (c == ']' && end - p >= 3 && p[1] == ']' && p[2] == '>') {
          add(p, 1, nullptr, 0);
        }
        ++p;
      } else {
        // A quoted string or a stray word that is no attribute name.
        add(vFirst, static_cast<int>(vEnd - vFirst), nullptr, 0);
        p = vEnd;
      }
    }
  }
}

int CHtmlTagItem::ParseAttributes(CHtmlTokenArena* pArena, const TagNameInfo* pInfo) {
  FreeAttributes();
  const unsigned char* data = m_pOriginal;
  const unsigned char* end = data + m_nOriginalLength;

  RawRecord small[16];
  RawRecord* recs = small;
  int count = 0, capacity = 16;
  RawRecord* heapRecs = nullptr;
  auto add = [&](const unsigned char* n, int nl, const unsigned char* v, int vl) {
    if (count == capacity) {
      int grown = capacity * 2;
      RawRecord* bigger = static_cast<RawRecord*>(std::malloc(sizeof(RawRecord) * static_cast<std::size_t>(grown)));
      if (!bigger)
        throw std::bad_alloc();
      std::memcpy(bigger, recs, sizeof(RawRecord) * static_cast<std::size_t>(count));
      std::free(heapRecs);
      heapRecs = recs = bigger;
      capacity = grown;
    }
    recs[count++] = RawRecord{n, nl, v, vl};
  };

  if (m_nTagId == emTagIdComment) {
    if (m_nOriginalLength > 4) {
      const unsigned char* close = FindCommentClose(data + 4, end);
      if (close)
        add(nullptr, 0, data + 4, static_cast<int>(close - (data + 4)));
    }
  } else if ((m_nTagId & emTagIdUnknownBit) && markup::StartsNoCase(data, end, "<![CDATA[", 9)) {
    const unsigned char* close = FindCdataClose(data + 9, end);
    if (close)
      add(nullptr, 0, data + 9, static_cast<int>(close - (data + 9)));
  } else {
    const unsigned char* p;
    if (pInfo->m_pName)
      p = pInfo->m_pName + pInfo->m_nLength;
    else
      p = data + 1 + (m_nOriginalLength > 1 && data[1] == '/' ? 1 : 0);
    ScanAttributeRecords(p, end, add);
  }

  if (count) {
    if (pArena) {
      // The records, then every record's texts packed behind them in the
      // same allocation: one arena step, and no padding between texts.
      std::size_t texts = 0;
      for (int i = 0; i < count; ++i)
        texts += static_cast<std::size_t>(recs[i].nameLen) + static_cast<std::size_t>(recs[i].valueLen) + 2;
      const std::size_t head = sizeof(TagAttribute) * static_cast<std::size_t>(count);
      TagAttribute* attrs = static_cast<TagAttribute*>(pArena->Allocate(head + texts));
      char* block = reinterpret_cast<char*>(attrs) + head;
      for (int i = 0; i < count; ++i) {
        const RawRecord& r = recs[i];
        FillRecordText(block, r.name, r.nameLen, r.value, r.valueLen);
        attrs[i] = TagAttribute{block, r.nameLen, r.valueLen};
        block += r.nameLen + r.valueLen + 2;
      }
      m_pAttributes = attrs;
      m_nAttributeCount = count;
      m_bOwnAttributes = 0;
    } else {
      TagAttribute* attrs = static_cast<TagAttribute*>(std::malloc(sizeof(TagAttribute) * static_cast<std::size_t>(count)));
      if (!attrs)
        throw std::bad_alloc();
      for (int i = 0; i < count; ++i) {
        const RawRecord& r = recs[i];
        attrs[i] = HeapRecord(reinterpret_cast<const char*>(r.name), r.nameLen, reinterpret_cast<const char*>(r.value),
                              r.valueLen);
      }
      m_pAttributes = attrs;
      m_nAttributeCount = count;
      m_bOwnAttributes = 1;
      TakeHeapParts();
    }
  }
  std::free(heapRecs);

  if ((m_nTagId & emTagIdUnknownBit) && m_nAttributeCount) {
    const TagAttribute& lastRec = m_pAttributes[m_nAttributeCount - 1];
    if (lastRec.m_nNameLength == 1 && lastRec.m_pszName[0] == '/')
      m_nTagIndex = static_cast<short>(emUnknownEmptyTagIndex);
    else if (lastRec.m_nNameLength == 1 && lastRec.m_pszName[0] == '?')
      m_nTagIndex = static_cast<short>(emUnknownXmlPiTagIndex);
  }
  return 1;
}

int CHtmlTagItem::GetAttributeValueSpan(int n, int& offset, int& length) {
  offset = length = 0;
  EnsureAnalysed();
  if (n < 0 || n >= m_nAttributeCount || (m_nTokenFlags & emTokenModified) || m_nTagId == emTagIdComment ||
      !m_pOriginal || m_nOriginalLength < 2)
    return 0;
  const unsigned char* data = m_pOriginal;
  const unsigned char* end = data + m_nOriginalLength;
  if ((m_nTagId & emTagIdUnknownBit) && markup::StartsNoCase(data, end, "<![CDATA[", 9))
    return 0;
  TagNameInfo info;
  ScanTagName(data + 1, end - 1, info);
  const unsigned char* p = info.m_pName ? info.m_pName + info.m_nLength : data + 1 + (data[1] == '/' ? 1 : 0);
  int index = 0, found = 0;
  ScanAttributeRecords(p, end, [&](const unsigned char*, int, const unsigned char* value, int valueLen) {
    if (index++ == n && value) {
      offset = static_cast<int>(value - data);
      length = valueLen;
      found = 1;
    }
  });
  return found;
}

// ---- Names and types ----

CString CHtmlTagItem::GetTagName() {
  if (!m_pOriginal || m_nOriginalLength < 2)
    return CString();
  TagNameInfo info;
  ScanTagName(m_pOriginal + 1, m_pOriginal + m_nOriginalLength - 1, info);
  if (!info.m_pName)
    return CString();
  const char* text = reinterpret_cast<const char*>(info.m_pName);
  const int length = std::min(info.m_nLength, 62);
  if (!info.m_bEndTag)
    return CString(text, length);
  return CString("/") + CString(text, length);
}

int CHtmlTagItem::IsTagNameSameAs(const char* name) {
  if (!name)
    return 0;
  if (*name == '<')
    ++name;
  if (GetTagIdFromTagName(name, nullptr) != GetTagId())
    return 0;
  CString mine = GetTagName();
  return strcasecmp(mine, name) == 0;
}

int CHtmlTagItem::GetOcrType() const { return IsValidTagIndex() ? ms_tTagSyntaxTable[m_nTagIndex].m_nOcrType : 0; }
int CHtmlTagItem::GetCntType() const { return IsValidTagIndex() ? ms_tTagSyntaxTable[m_nTagIndex].m_nCntType : 0; }
int CHtmlTagItem::GetSptType() const { return IsValidTagIndex() ? ms_tTagSyntaxTable[m_nTagIndex].m_nSptType : 0; }
int CHtmlTagItem::GetVerType() const { return IsValidTagIndex() ? ms_tTagSyntaxTable[m_nTagIndex].m_nVerType : 0; }
DWORD CHtmlTagItem::GetMjrType() const {
  return IsValidTagIndex() ? ms_tTagSyntaxTable[m_nTagIndex].m_nMjrType : static_cast<DWORD>(emMjrInvalidRow);
}
DWORD CHtmlTagItem::GetPrtType() const { return IsValidTagIndex() ? ms_tTagSyntaxTable[m_nTagIndex].m_nPrtType : 0; }

namespace {
inline int HasAll(DWORD value, DWORD mask) { return (value & mask) == mask; }
}  // namespace

int CHtmlTagItem::IsBlockLevelTag() const { return HasAll(GetMjrType(), emMjrBlockLevel); }
int CHtmlTagItem::IsInlineLevelTag() const { return HasAll(GetMjrType(), emMjrInlineLevel); }
int CHtmlTagItem::IsBlockTag() const { return IsBlockLevelTag() || IsInlineLevelTag(); }
int CHtmlTagItem::IsBlockLevelEmbeddedTag() const { return HasAll(GetMjrType(), emMjrBlockLevelEmbedded); }
int CHtmlTagItem::IsInineLevelEmbeddedTag() const { return HasAll(GetMjrType(), emMjrInlineLevelEmbedded); }

int CHtmlTagItem::GetXmlType() {
  EnsureAnalysed();
  if (m_nTagId == emTagIdComment)
    return emXmlComment;
  if (m_nTagId == emTagIdDoctype)
    return emXmlDoctype;
  if (m_nOriginalLength > 2 && m_pOriginal[1] == '?')
    return emXmlProcessing;
  if (m_nOriginalLength > 2 && m_pOriginal[1] == '!')
    return emXmlDeclaration;
  if (m_nAttributeCount) {
    const TagAttribute& lastRec = m_pAttributes[m_nAttributeCount - 1];
    if (lastRec.m_nNameLength == 1 && lastRec.m_pszName[0] == '/')
      return emXmlEmptyTag;
  }
  return IsEndTag() ? emXmlEndTag : emXmlStartTag;
}

int CHtmlTagItem::IsXmlTag() {
  if (IsUnknownTag())
    return 1;
  int type = GetXmlType();
  return type == emXmlEmptyTag || type == emXmlDeclaration || type == emXmlProcessing;
}

int CHtmlTagItem::ChangeUnknownTagIndex(int nIndex) {
  if (!IsUnknownTag() || nIndex < emUnknownTagIndex || nIndex > emUnknownContainerTagIndex)
    return 0;
  m_nTagIndex = static_cast<short>(nIndex);
  return 1;
}

// ---- Attributes ----

int CHtmlTagItem::FindAttribute(const char* name) const {
  if (!name)
    return -1;
  for (int i = 0; i < m_nAttributeCount; ++i)
    if (strcasecmp(m_pAttributes[i].m_pszName, name) == 0)
      return i;
  return -1;
}

const char* CHtmlTagItem::GetAttributeValue(const char* name) {
  EnsureAnalysed();
  int i = FindAttribute(name);
  return i < 0 ? nullptr : m_pAttributes[i].GetValue();
}

int CHtmlTagItem::HasAttribute(const char* name) {
  EnsureAnalysed();
  return FindAttribute(name) >= 0;
}

TagAttribute CHtmlTagItem::HeapRecord(const char* name, int nNameLen, const char* value, int nValueLen) {
  if (!name)
    nNameLen = 0;
  if (!value)
    nValueLen = 0;
  char* block = static_cast<char*>(std::malloc(static_cast<std::size_t>(nNameLen) + static_cast<std::size_t>(nValueLen) + 2));
  if (!block)
    throw std::bad_alloc();
  FillRecordText(block, name, nNameLen, value, nValueLen);
  return TagAttribute{block, nNameLen, nValueLen};
}

int CHtmlTagItem::InsertRecord(int nAt, const char* name, const char* value) {
  MakeAttributesOwned();
  // Edits are rare: the owned array grows by exactly one record.
  TagAttribute fresh = HeapRecord(name, name ? static_cast<int>(std::strlen(name)) : 0, value,
                                  value ? static_cast<int>(std::strlen(value)) : 0);
  TagAttribute* bigger = static_cast<TagAttribute*>(
      std::realloc(m_pAttributes, sizeof(TagAttribute) * static_cast<std::size_t>(m_nAttributeCount + 1)));
  if (!bigger) {
    std::free(const_cast<char*>(fresh.m_pszName));
    throw std::bad_alloc();
  }
  m_pAttributes = bigger;
  std::memmove(m_pAttributes + nAt + 1, m_pAttributes + nAt,
               sizeof(TagAttribute) * static_cast<std::size_t>(m_nAttributeCount - nAt));
  m_pAttributes[nAt] = fresh;
  ++m_nAttributeCount;
  return 1;
}

int CHtmlTagItem::SetAttribute(const char* name, const char* value) {
  if (!name || !*name)
    return 0;
  EnsureAnalysed();
  m_nTokenFlags |= emTokenModified;
  MakeAttributesOwned();
  int i = FindAttribute(name);
  if (i >= 0) {
    // The name stays as written; the record gets a new block for both.
    TagAttribute& rec = m_pAttributes[i];
    TagAttribute fresh =
        HeapRecord(rec.m_pszName, rec.m_nNameLength, value, value ? static_cast<int>(std::strlen(value)) : 0);
    std::free(const_cast<char*>(rec.m_pszName));
    rec = fresh;
    return 1;
  }
  int at = m_nAttributeCount;
  if (at > 0) {
    const TagAttribute& lastRec = m_pAttributes[at - 1];
    if (lastRec.m_nValueLength == 0 && lastRec.m_nNameLength == 1 &&
        (lastRec.m_pszName[0] == '/' || lastRec.m_pszName[0] == '?'))
      --at;
  }
  return InsertRecord(at, name, value);
}

int CHtmlTagItem::DeleteAttribute(const char* name) {
  EnsureAnalysed();
  int i = FindAttribute(name);
  if (i < 0)
    return 0;
  return RemoveAttributeByNum(i);
}

const char* CHtmlTagItem::GetFirstAttribute(unsigned int& pos, const char*& value) {
  pos = static_cast<unsigned int>(-1);  // the step below makes it 0
  return GetNextAttribute(pos, value);
}

const char* CHtmlTagItem::GetNextAttribute(unsigned int& pos, const char*& value) {
  ++pos;
  EnsureAnalysed();
  if (pos >= static_cast<unsigned>(m_nAttributeCount)) {
    value = nullptr;
    return nullptr;
  }
  value = m_pAttributes[pos].GetValue();
  return m_pAttributes[pos].m_pszName;
}

int CHtmlTagItem::GetTotalAttributesNum() {
  EnsureAnalysed();
  return m_nAttributeCount;
}

int CHtmlTagItem::GetAttributeByNum(int n, const char*& name, const char*& value) {
  EnsureAnalysed();
  if (n < 0 || n >= m_nAttributeCount)
    return 0;
  name = m_pAttributes[n].m_pszName;
  value = m_pAttributes[n].GetValue();
  return 1;
}

int CHtmlTagItem::RemoveAttributeByNum(int n) {
  EnsureAnalysed();
  if (n < 0 || n >= m_nAttributeCount)
    return 0;
  MakeAttributesOwned();
  std::free(const_cast<char*>(m_pAttributes[n].m_pszName));
  std::memmove(m_pAttributes + n, m_pAttributes + n + 1,
               sizeof(TagAttribute) * static_cast<std::size_t>(m_nAttributeCount - n - 1));
  --m_nAttributeCount;
  m_nTokenFlags |= emTokenModified;
  return 1;
}

int CHtmlTagItem::ReplaceAttributeByNum(int n, const char* name, const char* value) {
  EnsureAnalysed();
  if (n < 0 || n >= m_nAttributeCount)
    return 0;
  MakeAttributesOwned();
  TagAttribute& rec = m_pAttributes[n];
  TagAttribute fresh = HeapRecord(name, name ? static_cast<int>(std::strlen(name)) : 0, value,
                                  value ? static_cast<int>(std::strlen(value)) : 0);
  std::free(const_cast<char*>(rec.m_pszName));
  rec = fresh;
  m_nTokenFlags |= emTokenModified;
  return 1;
}

// ---- Printing ----

void CHtmlTagItem::AppendPrintableText(CByteString& out, EmTextFlag nFlag) {
  if (nFlag != emTextWithIndentAfter && nFlag != emTextTokenOnly)
    return;
  if (!(m_nTokenFlags & emTokenModified)) {
    AppendOriginal(out, nFlag);
    return;
  }
  if (m_nTagId == emTagIdComment) {
    // A changed comment keeps its body only when that body is empty: the
    // test is inverted on purpose, so it prints as "<!---->".
    out += "<!--";
    if (!m_nAttributeCount)
      out += " ";
    // (a first record's value would be written only when it is empty)
    out += "-->";
    return;
  }
  out += "<";
  CString name = GetTagName();
  if (name.GetLength())
    out.Append(reinterpret_cast<const unsigned char*>(static_cast<const char*>(name)), name.GetLength());
  for (int i = 0; i < m_nAttributeCount; ++i) {
    const TagAttribute& rec = m_pAttributes[i];
    if (!rec.m_nNameLength)
      continue;
    out += " ";
    out.Append(reinterpret_cast<const unsigned char*>(rec.m_pszName), rec.m_nNameLength);
    if (rec.m_nValueLength) {
      out += "=\"";
      out.Append(reinterpret_cast<const unsigned char*>(rec.GetValue()), rec.m_nValueLength);
      out += "\"";
    }
  }
  out += ">";
  if (nFlag == emTextWithIndentAfter && m_nIndentLength)
    out.Append(GetIndentAfter(), m_nIndentLength);
}

}  // namespace telvanix

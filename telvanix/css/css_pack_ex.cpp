#include "telvanix/css/css_pack_ex.h"

#include <strings.h>

#include <cstring>

#include "telvanix/css/css_style.h"
#include "telvanix/css/style_property.h"
#include "telvanix/foundation/hash_fold.h"
#include "telvanix/foundation/url_utils.h"

namespace telvanix {

namespace {

bool IsNameByte(unsigned char ch) {
  return (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || (ch >= '0' && ch <= '9') || ch == '-' ||
         ch == '_';
}

bool ContainsNoCase(const char* text, const char* word) {
  const size_t n = std::strlen(word);
  for (const char* p = text; *p; ++p)
    if (strncasecmp(p, word, n) == 0)
      return true;
  return false;
}

bool StartsWithNoCase(const char* text, const char* word) {
  return strncasecmp(text, word, std::strlen(word)) == 0;
}

}  // namespace

CCssPackEx::CCssPackEx(const char* path, const CByteString* content) : CCssPack(path, content) {}

CCssPackEx::CCssPackEx(const CByteString* content) : CCssPack(content) {}

CCssPackEx::~CCssPackEx() = default;

CString CCssPackEx::GetFirstImportCssUrl(POSITION& pos) {
  pos = GetListLine().GetHeadPosition();
  return GetNextImportCssUrl(pos);
}

CString CCssPackEx::GetNextImportCssUrl(POSITION& pos) {
  while (pos) {
    CCssLogicalLine* line = GetListLine().GetNext(pos);
    if (!line || !line->IsAtImport() || line->IsRemovedLine())
      continue;
    CString url = static_cast<CCssLglAtImport*>(line)->GetImportCssUrl();
    if (!url.IsEmpty())
      return url;
  }
  return CString();
}

CString CCssPackEx::GetFirstBaggageFile(UINT& index) {
  m_arrBaggage.RemoveAll();
  CStringArray names;
  POSITION pos = GetListLine().GetHeadPosition();
  while (pos) {
    CCssLogicalLine* line = GetListLine().GetNext(pos);
    if (!line || line->IsRemovedLine())
      continue;
    names.RemoveAll();
    if (line->IsStyle()) {
      CCssStyleProperty* properties = static_cast<CCssStyle*>(line)->GetStyleProperty();
      int at = 0;
      properties->GetFirstPropertyPair(at);
      while (CCssStyleProperty::CPropertyPair* pair = properties->GetNextPropertyPair(at))
        CollectUrlFileNames(pair->GetValue().GetString(), names);
    } else if (line->IsAtUnknown()) {
      CollectUrlFileNames(static_cast<CCssLglAtUnknown*>(line)->GetOriginalString().GetString(), names);
    }
    for (int i = 0; i < names.GetSize(); ++i)
      AddBaggage(names[i]);
  }
  index = 0;
  return GetNextBaggageFile(index);
}

CString CCssPackEx::GetNextBaggageFile(UINT& index) {
  if (index >= static_cast<UINT>(m_arrBaggage.GetSize()))
    return CString();
  return m_arrBaggage[static_cast<int>(index++)];
}

void CCssPackEx::AddBaggage(const CString& name) {
  if (name.IsEmpty() || name[0] == '#' || StartsWithNoCase(name.GetString(), "data:") ||
      IsRemoteUrlEx(name.GetString()))
    return;
  for (int i = 0; i < m_arrBaggage.GetSize(); ++i)
    if (QuickCompareStringNoCase(m_arrBaggage[i].GetString(), name.GetString()))
      return;
  m_arrBaggage.Add(name);
}

int CCssPackEx::CollectUrlFileNames(const char* text, CStringArray& names) {
  if (!text)
    return 0;
  const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* const end = p + std::strlen(text);
  int added = 0;
  while (p < end) {
    if (*p == '/') {
      const unsigned char* q = CCssPack::CssSkipComment(p, end);
      if (q > p) {
        p = q;
        continue;
      }
    }
    const bool atWordStart = p == reinterpret_cast<const unsigned char*>(text) || !IsNameByte(p[-1]);
    if (!atWordStart || end - p < 4 || strncasecmp(reinterpret_cast<const char*>(p), "url(", 4) != 0) {
      ++p;
      continue;
    }
    // Find the ")" that closes it, looking past a quoted name.
    const unsigned char* q = p + 4;
    while (q < end && (*q == ' ' || *q == '\t' || *q == '\r' || *q == '\n' || *q == '\f'))
      ++q;
    if (q < end && (*q == '\'' || *q == '"')) {
      const unsigned char quote = *q++;
      while (q < end && *q != quote)
        ++q;
      if (q < end)
        ++q;
    }
    while (q < end && *q != ')')
      ++q;
    if (q >= end)
      break;  // an unclosed url( names nothing
    const CString call(reinterpret_cast<const char*>(p), static_cast<int>(q + 1 - p));
    const CString name = CCssStyleProperty::GetFileNameFromUrlPairValue(call.GetString());
    if (!name.IsEmpty()) {
      names.Add(name);
      ++added;
    }
    p = q + 1;
  }
  return added;
}

int CCssPackEx::MayContainBaggageFile(const char* value) {
  if (!value || !*value)
    return 0;
  if (ContainsNoCase(value, "url(") || ContainsNoCase(value, "background") || ContainsNoCase(value, "list-style"))
    return 1;
  return 0;
}

CString CCssPackEx::FindBaggageFileInStylePropertyValue(const char* value) {
  if (!value)
    return CString();
  const unsigned char* p = reinterpret_cast<const unsigned char*>(value);
  const unsigned char* const end = p + std::strlen(value);
  CString bare;
  while (p < end) {
    const unsigned char* s = CssSkipSpaces(p, end, 1);
    const unsigned char* q = CssSkipAny(s, end, kCssFlagsValue);
    if (q <= s)
      break;
    const unsigned char* e = q;
    while (e > s && IsCssBlank(e[-1]))
      --e;
    const CString part(reinterpret_cast<const char*>(s), static_cast<int>(e - s));
    if (StartsWithNoCase(part.GetString(), "url("))
      return part;
    if (bare.IsEmpty()) {
      const char first = part[0];
      const bool numberOrColour = (first >= '0' && first <= '9') || first == '+' || first == '-' ||
                                  first == '.' || first == '#';
      const bool hasFunction = part.Find('(') >= 0;
      if (!numberOrColour && !hasFunction &&
          (part.Find('.') >= 0 || part.Find('/') >= 0 || part.Find('\\') >= 0))
        bare = part;
    }
    p = q;
  }
  return bare;
}

}  // namespace telvanix

namespace telvanix {

// Not written yet: nothing is changed.
int CCssPackEx::ReplaceFileReference(const CFileMoves&) { return -1; }
int CCssPackEx::GetFileReferences(const CFileMoves&, std::vector<CFileReference>& references) {
  references.clear();
  return -1;
}
int CCssPackEx::ReplaceUrlsInText(const char*, int, const CFileMoves&, CByteString&, std::vector<CFileReference>*,
                                  int) {
  return -1;
}

}  // namespace telvanix

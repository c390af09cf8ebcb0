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

namespace {

// Skips a quoted string from its opening quote; gives the byte after the
// closing quote (or end), counting line ends into `line`.
const unsigned char* SkipString(const unsigned char* p, const unsigned char* end, int& line) {
  const unsigned char quote = *p++;
  while (p < end && *p != quote) {
    if (*p == '\\' && p + 1 < end)
      ++p;
    if (*p == '\n')
      ++line;
    ++p;
  }
  return p < end ? p + 1 : end;
}

bool IsCssBlankByte(unsigned char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f'; }

bool NeedsCssQuotes(const CString& text) {
  for (int i = 0; i < text.GetLength(); ++i) {
    const char c = text[i];
    if (IsCssBlankByte(static_cast<unsigned char>(c)) || c == '(' || c == ')' || c == '"' || c == '\'')
      return true;
  }
  return false;
}

}  // namespace

int CCssPackEx::ForEachUrlTarget(const char* text, int length,
                                 const std::function<void(int offset, int length, int isImport, int line)>& visit) {
  if (!text || length <= 0)
    return 0;
  const unsigned char* const begin = reinterpret_cast<const unsigned char*>(text);
  const unsigned char* const end = begin + length;
  const unsigned char* p = begin;
  int line = 0, count = 0;
  bool inImport = false;  // after "@import", until its target
  auto report = [&](const unsigned char* first, const unsigned char* last, bool import) {
    if (last > first) {
      visit(static_cast<int>(first - begin), static_cast<int>(last - first), import ? 1 : 0, line);
      ++count;
    }
  };
  while (p < end) {
    const unsigned char c = *p;
    if (c == '\n') {
      ++line;
      ++p;
    } else if (c == '/' && p + 1 < end && p[1] == '*') {
      const unsigned char* q = CssSkipComment(p, end);
      if (q <= p)
        q = end;
      for (const unsigned char* r = p; r < q; ++r)
        line += *r == '\n';
      p = q;
    } else if (c == '"' || c == '\'') {
      const unsigned char* q = SkipString(p, end, line);
      if (inImport && q > p + 1 && q[-1] == c)
        report(p + 1, q - 1, true);
      inImport = false;
      p = q;
    } else if (c == '\\') {
      p += p + 1 < end ? 2 : 1;
    } else if (c == '@' && end - p >= 7 && strncasecmp(reinterpret_cast<const char*>(p), "@import", 7) == 0) {
      inImport = true;
      p += 7;
    } else if ((c == 'u' || c == 'U') && end - p >= 4 && (p == begin || !IsNameByte(p[-1])) &&
               strncasecmp(reinterpret_cast<const char*>(p), "url(", 4) == 0) {
      const unsigned char* q = p + 4;
      while (q < end && IsCssBlankByte(*q)) {
        line += *q == '\n';
        ++q;
      }
      if (q < end && (*q == '"' || *q == '\'')) {
        const unsigned char* r = SkipString(q, end, line);
        if (r > q + 1 && r[-1] == *q)
          report(q + 1, r - 1, inImport);
        p = r;
      } else {
        const unsigned char* r = q;
        while (r < end && *r != ')')
          ++r;
        if (r >= end)
          break;  // an unclosed url( names nothing
        const unsigned char* e = r;
        while (e > q && IsCssBlankByte(e[-1]))
          --e;
        report(q, e, inImport);
        for (const unsigned char* s = q; s < r; ++s)
          line += *s == '\n';
        p = r + 1;
      }
      inImport = false;
    } else {
      if (c == ';' || c == '{' || c == '}')
        inImport = false;
      ++p;
    }
  }
  return count;
}

int CCssPackEx::ReplaceUrlsInText(const char* text, int length, const std::function<void(CFileReference&)>& decide,
                                  CByteString& out, std::vector<CFileReference>* references, int firstLine) {
  if (!text || length <= 0)
    return 0;
  const unsigned char* const bytes = reinterpret_cast<const unsigned char*>(text);
  int done = 0, changed = 0;
  ForEachUrlTarget(text, length, [&](int offset, int n, int isImport, int line) {
    if (std::memchr(text + offset, 0, static_cast<size_t>(n)))
      return;  // a zero byte: no file name
    CFileReference ref;
    ref.m_nLine = firstLine + line;
    ref.m_nKind = isImport ? CFileReference::emRefStyleSheet : CFileReference::emRefStyleUrl;
    ref.m_strElement = isImport ? "@import" : "url";
    ref.m_strWritten = CString(text + offset, n);
    decide(ref);
    if (ref.m_nChange == CFileMoves::emRewritten) {
      // A bare url() target that now holds blanks, quotes or parentheses
      // needs quotes of its own.
      const bool quoted = offset > 0 && (text[offset - 1] == '"' || text[offset - 1] == '\'');
      CString value = ref.m_strNewValue;
      if (!quoted && NeedsCssQuotes(value))
        value = value.Find('"') >= 0 ? "'" + value + "'" : "\"" + value + "\"";
      out.Append(bytes + done, offset - done);
      out.Append(reinterpret_cast<const unsigned char*>(value.GetString()), value.GetLength());
      done = offset + n;
      ++changed;
    }
    if (references)
      references->push_back(ref);
  });
  out.Append(bytes + done, length - done);
  return changed;
}

int CCssPackEx::ReplaceUrlsInText(const char* text, int length, const CFileMoves& moves, CByteString& out,
                                  std::vector<CFileReference>* references, int firstLine) {
  return ReplaceUrlsInText(
      text, length,
      [&](CFileReference& ref) {
        ref.m_strTarget = moves.ResolveReference(ref.m_strWritten);
        ref.m_nChange = moves.RewriteReference(ref.m_strWritten, ref.m_strNewValue);
      },
      out, references, firstLine);
}

int CCssPackEx::ReplaceFileReference(const CFileMoves& moves) {
  try {
    CByteString& content = GetContent();
    CByteString out;
    const int changed = ReplaceUrlsInText(reinterpret_cast<const char*>(content.GetContent()), content.GetLength(),
                                          moves, out, nullptr, 1);
    if (changed > 0) {
      content = out;
      Parse();
    }
    return changed;
  } catch (...) {
    return -1;
  }
}

int CCssPackEx::GetFileReferences(const CFileMoves& moves, std::vector<CFileReference>& references) {
  references.clear();
  try {
    const CByteString& content = GetContent();
    CByteString out;
    ReplaceUrlsInText(reinterpret_cast<const char*>(content.GetContent()), content.GetLength(), moves, out,
                      &references, 1);
    return static_cast<int>(references.size());
  } catch (...) {
    references.clear();
    return -1;
  }
}

}  // namespace telvanix

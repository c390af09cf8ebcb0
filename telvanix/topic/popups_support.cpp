// Finding, making and removing the popups of a page, and the page's one link
// to the support files every popup of the project shares.
#include "telvanix/topic/popups_support.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>

#include "telvanix/foundation/path_utils.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/platform/file.h"
#include "telvanix/platform/path_lookup.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/internal/popup_resources.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;
using namespace popup_detail;

namespace {

bool IsBlank(unsigned char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f'; }

// The last segment of a path or URL, without query or fragment.
std::string LastSegment(const char* path) {
  std::string s = path ? path : "";
  s = s.substr(0, s.find_first_of("?#"));
  const size_t slash = s.find_last_of("/\\");
  return slash == std::string::npos ? s : s.substr(slash + 1);
}

bool NamesSupportFile(const char* path, const char* name) { return MbsEqualNoCase(LastSegment(path).c_str(), name); }

// The blanks that end `text`, from the last line break on: the layout of the
// line the next tag stands on.
std::string LineLead(const CString& text) {
  const std::string s = text.str();
  size_t start = s.size();
  while (start > 0 && IsBlank(static_cast<unsigned char>(s[start - 1]))) --start;
  const std::string run = s.substr(start);
  const size_t lf = run.find_last_of("\r\n");
  if (lf == std::string::npos) return "";
  size_t from = lf;
  if (run[lf] == '\n' && lf > 0 && run[lf - 1] == '\r') from = lf - 1;
  return run.substr(from);
}

// A range [start, end) of page bytes is cut cleanly when neither end falls
// inside a double-byte character or a character reference.
bool CutsCleanly(const char* text, int length, int start, int end) {
  for (int i = 0; i < length;) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    int next = i + ((IsDBCSLeadByte(c) && i + 1 < length) ? 2 : 1);
    if (c == '&') {
      int j = i + 1;
      while (j < length && (std::isalnum(static_cast<unsigned char>(text[j])) || text[j] == '#')) ++j;
      if (j < length && text[j] == ';' && j > i + 1) next = j + 1;
    }
    if ((start > i && start < next) || (end > i && end < next)) return false;
    i = next;
  }
  return true;
}

// "<a id="x"/>": an XHTML element closed by its own start tag.
bool ClosesItself(CHtmlTagItem* tag) {
  const CString text = TokenText(tag);
  const int n = text.GetLength();
  return n >= 2 && text[n - 1] == '>' && text[n - 2] == '/';
}

// Text as attribute bytes: encoded for HTML, but a numeric reference
// ("&#960;", a character the page's code page cannot hold) is kept as one.
CString EncodedKeepingReferences(const CString& text) {
  const std::string s = text.str();
  std::string out, piece;
  for (size_t i = 0; i < s.size();) {
    size_t j = i + 2;
    const bool hex = j < s.size() && (s[j] == 'x' || s[j] == 'X');
    if (hex) ++j;
    const size_t digits = j;
    while (j < s.size() && (hex ? std::isxdigit(static_cast<unsigned char>(s[j])) : std::isdigit(static_cast<unsigned char>(s[j]))))
      ++j;
    if (s.compare(i, 2, "&#") == 0 && j > digits && j < s.size() && s[j] == ';') {
      out += CHtmlPack::TextToHtml(piece.c_str()).str() + s.substr(i, j + 1 - i);
      piece.clear();
      i = j + 1;
    } else {
      piece += s[i++];
    }
  }
  return CString((out + CHtmlPack::TextToHtml(piece.c_str()).str()).c_str());
}

// Line breaks in what a save prints for the token (its bytes and the blanks
// after it, read in place unless an edit changed them).
int CountLineBreaks(CHtmlTokenItem* token) {
  CString printed;
  const char* p = reinterpret_cast<const char*>(token->GetOriginalData());
  int length = token->GetOriginalLength() + token->GetIndentAfterLength();
  if (token->IsModifiedToken() || !p) {
    printed = token->GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter);
    p = printed;
    length = printed.GetLength();
  }
  int n = 0;
  for (int i = 0; i < length; ++i)
    if (p[i] == '\n' || (p[i] == '\r' && (i + 1 == length || p[i + 1] != '\n'))) ++n;
  return n;
}

}  // namespace

CPopupsSupport::CPopupsSupport(CHtmlFileEx& doc, const char* pagePath, const char* supportFolder)
    : m_doc(doc), m_strPagePath(pagePath), m_strSupportFolder(supportFolder) {}

int CPopupsSupport::GetSupportVersion() { return kSupportVersion; }
const char* CPopupsSupport::GetScriptFileName() { return kScriptName; }
const char* CPopupsSupport::GetStyleFileName() { return kStyleName; }
const char* CPopupsSupport::GetScriptText() { return kScriptText; }
const char* CPopupsSupport::GetStyleText() { return kStyleText; }

// ---------------------------------------------------------------------------
// finding

void CPopupsSupport::Collect() {
  m_found.clear();
  m_doc.GetBodyStartPosition();  // analyses the page when needed
  CHtmlTokenList& list = *m_doc.GetTokenList();
  int line = 1;
  for (POSITION pos = list.GetHeadPosition(); pos;) {
    POSITION here = pos;
    CHtmlTokenItem* token = list.GetNext(pos);
    if (!token || token->IsDiscardedToken()) continue;
    CHtmlPopupAnchor popup;
    if (token->IsTagToken() && popup.Analyse(m_doc, here, line)) m_found.push_back(popup);
    line += CountLineBreaks(token);
  }
}

int CPopupsSupport::AnyPopup() {
  CHtmlTokenList& list = *m_doc.GetTokenList();
  for (POSITION pos = list.GetHeadPosition(); pos; list.GetNext(pos)) {
    CHtmlPopupAnchor popup;
    if (popup.Analyse(m_doc, pos, 0)) return 1;
  }
  return 0;
}

int CPopupsSupport::GetFirstPopup(unsigned int& cursor, CHtmlPopupAnchor& popup) {
  try {
    Collect();
  } catch (...) {
    m_found.clear();
  }
  cursor = 0;
  return GetNextPopup(cursor, popup);
}

int CPopupsSupport::GetNextPopup(unsigned int& cursor, CHtmlPopupAnchor& popup) {
  if (cursor >= m_found.size()) {
    popup.Default();
    return 0;
  }
  popup = m_found[cursor++];
  return 1;
}

// ---------------------------------------------------------------------------
// token edits that print exactly as written

POSITION CPopupsSupport::InsertVerbatim(POSITION after, const char* text, int isTag, const char* indentAfter) {
  CHtmlTokenItem* token = isTag ? static_cast<CHtmlTokenItem*>(new CHtmlTagItem(text))
                                : static_cast<CHtmlTokenItem*>(new CHtmlTextItem(text));
  if (indentAfter && *indentAfter) token->SetOriginalIndentAfter(indentAfter);
  // Printed as read from a source: the saver then adds no line breaks around
  // it, and removing it later leaves the page's own bytes.
  token->SetTokenFlag(CHtmlTokenItem::emTokenAnalyseMark);
  return m_doc.GetTokenList()->InsertAfter(after, token);
}

int CPopupsSupport::DiscardKeepingBlanks(POSITION pos) {
  CHtmlTokenItem* token = m_doc.GetTokenList()->GetTokenItem(pos);
  if (!token) return 0;
  token->DiscardToken();
  if (token->GetIndentAfterLength() > 0) InsertVerbatim(pos, token->GetIndentAfterString(), 0, nullptr);
  return 1;
}

int CPopupsSupport::ReplaceTag(POSITION pos, const CString& bytes) {
  CHtmlTokenItem* token = m_doc.GetTokenList()->GetTokenItem(pos);
  if (!token) return 0;
  token->DiscardToken();
  InsertVerbatim(pos, bytes, 1, token->GetIndentAfterString());
  return 1;
}

// ---------------------------------------------------------------------------
// support links

CString CPopupsSupport::SupportHref(const char* name) const {
  if (m_strSupportFolder.IsEmpty()) return CString(name);
  CString full = m_strSupportFolder;
  if (full[full.GetLength() - 1] != '/' && full[full.GetLength() - 1] != '\\') full += "/";
  full += name;
  const CString page = m_strPagePath.IsEmpty() ? m_doc.GetFilePathName(nullptr) : m_strPagePath;
  CString href = page.IsEmpty() ? full
                                 : GetRelativePathNameByFilePathNames(GetNormalizedFullPathName(full, nullptr),
                                                                      GetNormalizedFullPathName(page, nullptr));
  ChangeSlashInPath(href, FALSE);
  return href;
}

std::vector<POSITION> CPopupsSupport::SupportTags() {
  std::vector<POSITION> found;
  m_doc.GetBodyStartPosition();
  CHtmlTokenList& list = *m_doc.GetTokenList();
  for (POSITION pos = list.GetHeadPosition(); pos; list.GetNext(pos)) {
    CHtmlTagItem* tag = LiveTagAt(list, pos);
    if (tag && ((tag->GetTagId() == kTagScript && NamesSupportFile(tag->GetAttributeValue("src"), kScriptName)) ||
                (tag->GetTagId() == kTagLink && NamesSupportFile(tag->GetAttributeValue("href"), kStyleName))))
      found.push_back(pos);
  }
  return found;
}

int CPopupsSupport::HasSupportLinks() {
  try {
    for (POSITION pos : SupportTags())
      if (m_doc.GetTokenList()->GetTagItem(pos)->GetTagId() == kTagScript) return 1;
  } catch (...) {
  }
  return 0;
}

int CPopupsSupport::InsertSupportLinks() {
  try {
    if (HasSupportLinks()) return 1;
    CHtmlTokenList& list = *m_doc.GetTokenList();
    POSITION headEnd = m_doc.GetHeadEndPosition();
    if (!LiveTagAt(list, headEnd)) return 0;
    // The tokens go right after the one before the HEAD end tag; they take
    // the layout of the line that tag starts.
    POSITION after = headEnd;
    list.GetPrev(after);
    if (!after) return 0;
    CHtmlTokenItem* previous = nullptr;
    for (POSITION scan = after; scan && !previous;) {
      CHtmlTokenItem* t = list.GetPrev(scan);
      if (t && !t->IsDiscardedToken()) previous = t;
    }
    const std::string lead =
        previous ? LineLead(previous->GetPrintableText(CHtmlTokenItem::emTextWithIndentAfter)) : std::string();
    const CString style = CHtmlPack::TextToHtml(SupportHref(kStyleName));
    const CString script = CHtmlPack::TextToHtml(SupportHref(kScriptName));
    CString link, open;
    link.Format("<link rel=\"stylesheet\" href=\"%s\">", static_cast<const char*>(style));
    open.Format("<script src=\"%s\">", static_cast<const char*>(script));
    after = InsertVerbatim(after, link, 1, lead.c_str());
    after = InsertVerbatim(after, open, 1, nullptr);
    InsertVerbatim(after, "</script>", 1, lead.c_str());
    return 1;
  } catch (...) {
    return 0;
  }
}

int CPopupsSupport::RemoveSupportLinks() {
  try {
    CHtmlTokenList& list = *m_doc.GetTokenList();
    for (POSITION pos : SupportTags()) {
      CHtmlTagItem* tag = list.GetTagItem(pos);
      tag->DiscardToken();
      list.GetNext(pos);
      CHtmlTagItem* end = tag->GetTagId() == kTagScript ? LiveTagAt(list, pos) : nullptr;
      if (end && end->GetTagId() == EndOf(kTagScript)) end->DiscardToken();
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

// ---------------------------------------------------------------------------
// making

int CPopupsSupport::InsideBodyOutsideLink(POSITION pos) {
  CHtmlTokenList& list = *m_doc.GetTokenList();
  POSITION bodyStart = m_doc.GetBodyStartPosition();
  if (!LiveTagAt(list, bodyStart)) return 0;
  // Walking back, an element closed before pos is passed over whole; one
  // still open around pos decides: a link, an object or raw text refuse.
  std::map<int, int> closed;
  POSITION p = pos;
  list.GetPrev(p);
  while (p) {
    if (p == bodyStart) return 1;
    CHtmlTokenItem* token = list.GetPrev(p);
    CHtmlTagItem* tag = token && !token->IsDiscardedToken() ? token->GetSafeTagItemPtr() : nullptr;
    if (!tag) continue;
    const int id = tag->GetTagId();
    if (id == EndOf(kTagBody)) return 0;
    if (tag->IsEndTag()) {
      ++closed[id & ~kEndBit];
      continue;
    }
    if (closed[id] > 0) {
      --closed[id];
      continue;
    }
    if (ClosesItself(tag)) continue;
    if (id == kTagA || id == kTagObject || (tag->GetSptType() & CHtmlTagItem::emSptRawContent)) return 0;
  }
  return 0;
}

int CPopupsSupport::MakePopupFromText(POSITION pos, int start, int length, const char* target, const char* text) {
  try {
    m_doc.GetBodyStartPosition();
    CHtmlTokenList& list = *m_doc.GetTokenList();
    CHtmlTokenItem* token = list.GetTokenItem(pos);
    if (!token || token->IsDiscardedToken() || !token->IsTextToken()) return 0;
    const CString bytes = TokenText(token);
    const int n = bytes.GetLength();
    if (start < 0 || length <= 0 || start > n - length) return 0;
    if (!CutsCleanly(bytes, n, start, start + length)) return 0;
    const CString words = bytes.Mid(start, length);
    bool blank = true;
    for (int i = 0; i < length && blank; ++i) blank = IsBlank(static_cast<unsigned char>(words[i]));
    if (blank) return 0;
    if (text ? !*text : (!target || !*target)) return 0;
    if (!InsideBodyOutsideLink(pos)) return 0;
    if (!InsertSupportLinks()) return 0;

    const CString href = text ? CHtmlPopupAnchor::MakeScriptCall(CHtmlPopupAnchor::emPopupScriptText, text)
                              : CString(target);
    CString open;
    open.Format("<a class=\"%s\" href=\"%s\">", CHtmlPopupAnchor::ms_szPopupClass,
                static_cast<const char*>(EncodedKeepingReferences(href)));
    token->DiscardToken();
    POSITION at = pos;
    if (start > 0) at = InsertVerbatim(at, bytes.Left(start), 0, nullptr);
    at = InsertVerbatim(at, open, 1, nullptr);
    at = InsertVerbatim(at, words, 0, nullptr);
    const bool rest = start + length < n;
    at = InsertVerbatim(at, "</a>", 1, rest ? nullptr : static_cast<const char*>(token->GetIndentAfterString()));
    if (rest) InsertVerbatim(at, bytes.Mid(start + length), 0, token->GetIndentAfterString());
    return 1;
  } catch (...) {
    return 0;
  }
}

int CPopupsSupport::MakePopupFromLink(POSITION pos) {
  try {
    m_doc.GetBodyStartPosition();
    CHtmlTagItem* tag = LiveTagAt(*m_doc.GetTokenList(), pos);
    if (!tag || tag->GetTagId() != kTagA) return 0;
    CHtmlPopupAnchor existing;
    if (existing.Analyse(m_doc, pos, 0)) return 0;
    const CString href = CHtmlPack::HtmlToText(tag->GetAttributeValue("href"));
    if (href.IsEmpty() || href == "#" || m_doc.IsJavaScriptAnchorHref(href)) return 0;
    if (!InsertSupportLinks()) return 0;
    const char* classes = tag->GetAttributeValue("class");
    if (classes) {
      CString joined = classes;
      joined.TrimRight();
      joined += joined.IsEmpty() ? "" : " ";
      joined += CHtmlPopupAnchor::ms_szPopupClass;
      return tag->SetAttribute("class", joined);
    }
    // The class goes right after the tag name, so that taking it out again
    // gives the tag back as written.
    const CString bytes = TokenText(tag);
    int name = 1;
    while (name < bytes.GetLength() && !IsBlank(static_cast<unsigned char>(bytes[name])) && bytes[name] != '>' &&
           bytes[name] != '/')
      ++name;
    CString marked = bytes.Left(name);
    marked += " class=\"";
    marked += CHtmlPopupAnchor::ms_szPopupClass;
    marked += "\"";
    marked += bytes.Mid(name);
    return ReplaceTag(pos, marked);
  } catch (...) {
    return 0;
  }
}

// ---------------------------------------------------------------------------
// removing

int CPopupsSupport::RemovePopup(const CHtmlPopupAnchor& popup, int keepLink) {
  try {
    CHtmlTokenList& list = *m_doc.GetTokenList();
    POSITION start = popup.GetStartPosition();
    CHtmlTagItem* tag = LiveTagAt(list, start);
    CHtmlPopupAnchor now;
    if (!tag || !now.Analyse(m_doc, start, 0) || now.GetKind() != popup.GetKind()) return 0;
    const bool asLink = keepLink && !CHtmlPopupAnchor::IsTextKind(popup.GetKind());
    const CHtmlPopupAnchor::EmPopupKind kind = popup.GetKind();

    if (kind == CHtmlPopupAnchor::emPopupObjectText || kind == CHtmlPopupAnchor::emPopupObjectTopic) {
      POSITION end = now.GetEndPosition();
      CString blanks;
      for (POSITION p = start; p;) {
        POSITION here = p;
        CHtmlTokenItem* token = list.GetNext(p);
        if (!token->IsDiscardedToken()) {
          token->DiscardToken();
          if (here == end) blanks = token->GetIndentAfterString();
        }
        if (here == end || !end) break;
      }
      POSITION at = end ? end : start;
      const CString words = CHtmlPack::TextToHtml(now.GetLinkText());
      if (asLink) {
        CString open;
        open.Format("<a href=\"%s\">", static_cast<const char*>(CHtmlPack::TextToHtml(now.GetTarget())));
        at = InsertVerbatim(at, open, 1, nullptr);
        if (!words.IsEmpty()) at = InsertVerbatim(at, words, 0, nullptr);
        InsertVerbatim(at, "</a>", 1, blanks);
      } else {
        CString text = words;
        text += blanks;
        if (!text.IsEmpty()) InsertVerbatim(at, text, 0, nullptr);
      }
    } else if (!asLink) {
      DiscardKeepingBlanks(start);
      if (LiveTagAt(list, now.GetEndPosition())) DiscardKeepingBlanks(now.GetEndPosition());
    } else {
      const CString bytes = TokenText(tag);
      CString marker = " class=\"";
      marker += CHtmlPopupAnchor::ms_szPopupClass;
      marker += "\"";
      const int at = bytes.Find(marker);
      const char* classes = tag->GetAttributeValue("class");
      const bool onlyClass = classes && CString(classes) == CHtmlPopupAnchor::ms_szPopupClass;
      if (kind == CHtmlPopupAnchor::emPopupClassTopic && onlyClass && at > 0 && !tag->GetAttributeValue("data-popup-topic")) {
        ReplaceTag(start, bytes.Left(at) + bytes.Mid(at + marker.GetLength()));
      } else {
        if (kind == CHtmlPopupAnchor::emPopupScriptTopic || tag->GetAttributeValue("data-popup-topic")) {
          tag->SetAttribute("href", CHtmlPack::TextToHtml(now.GetTarget()));
          tag->DeleteAttribute("data-popup-topic");
        }
        if (onlyClass) {
          tag->DeleteAttribute("class");
        } else if (classes) {
          std::string kept;
          std::string all = classes;
          for (size_t i = 0; i < all.size();) {
            size_t j = all.find_first_of(" \t\r\n\f", i);
            if (j == std::string::npos) j = all.size();
            const std::string word = all.substr(i, j - i);
            if (!word.empty() && word != CHtmlPopupAnchor::ms_szPopupClass) kept += (kept.empty() ? "" : " ") + word;
            i = j + 1;
          }
          tag->SetAttribute("class", kept.c_str());
        }
      }
    }
    if (!AnyPopup()) RemoveSupportLinks();
    return 1;
  } catch (...) {
    return 0;
  }
}

// ---------------------------------------------------------------------------
// support files

int CPopupsSupport::GetSupportFileVersion(const char* path) {
  CString resolved;
  if (!path || !LookupPath(path, resolved) || !IsRegularFile(resolved)) return 0;
  std::FILE* file = std::fopen(resolved, "rb");
  if (!file) return 0;
  char head[128] = {0};
  const size_t n = std::fread(head, 1, sizeof(head) - 1, file);
  std::fclose(file);
  head[n] = 0;
  const size_t stamp = std::strlen(kVersionStamp);
  if (n <= stamp || std::strncmp(head, kVersionStamp, stamp) != 0) return 0;
  int version = 0;
  for (const char* p = head + stamp; *p >= '0' && *p <= '9' && version < 100000; ++p) version = version * 10 + (*p - '0');
  return version;
}

int CPopupsSupport::WriteSupportFiles(const char* folder) {
  try {
    const CString base = folder && *folder ? CString(folder) : CString(".");
    const std::pair<const char*, const char*> files[] = {{kScriptName, kScriptText}, {kStyleName, kStyleText}};
    for (const auto& [name, text] : files) {
      CString path = base;
      path += "/";
      path += name;
      const int version = GetSupportFileVersion(path);
      if (version == kSupportVersion) continue;
      // A file of that name that we did not write is the author's own.
      if (version == 0 && FileExists(path)) return 0;
      CkolmStdioFile file;
      if (!file.Open(path, CkolmFile::modeCreate | CkolmFile::modeWrite | CkolmFile::typeBinary)) return 0;
      file.Write(text, static_cast<UINT>(std::strlen(text)));
      file.Close();
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

}  // namespace telvanix

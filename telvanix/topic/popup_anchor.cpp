// Recognising a popup: the popup object by its class id and parameters, a
// link by the script call in its "href" or by its class.
#include "telvanix/topic/popup_anchor.h"

#include <cstring>
#include <string>

#include "telvanix/html/html_pack.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

const char CHtmlPopupAnchor::ms_szPopupClass[] = "telvanix-popup";
const char CHtmlPopupAnchor::ms_szTopicFunction[] = "telvanixPopup";
const char CHtmlPopupAnchor::ms_szTextFunction[] = "telvanixPopupText";

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f'; }

const char* SkipBlanks(const char* p) {
  while (IsBlank(*p)) ++p;
  return p;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// One quoted string at p; `end` moves past the closing quote. Escapes of the
// script's own language; "\x" and "\u" only below 0x80, since a code point
// above has no single meaning in the page's bytes.
bool ReadQuoted(const char* p, const char** end, CString& out) {
  const char quote = *p;
  if (quote != '\'' && quote != '"') return false;
  std::string text;
  for (++p; *p && *p != quote; ++p) {
    if (*p == '\n' || *p == '\r') return false;
    if (IsDBCSLeadByte(static_cast<unsigned char>(*p)) && p[1]) {
      text += *p++;
      text += *p;
      continue;
    }
    if (*p != '\\') {
      text += *p;
      continue;
    }
    const char e = *++p;
    if (!e) return false;
    if (e == 'x' || e == 'u') {
      const int digits = e == 'x' ? 2 : 4;
      int value = 0;
      for (int i = 1; i <= digits; ++i) {
        const int h = HexValue(p[i]);
        if (h < 0) return false;
        value = value * 16 + h;
      }
      if (value == 0 || value >= 0x80) return false;
      text += static_cast<char>(value);
      p += digits;
    } else {
      text += e == 'n' ? '\n' : e == 'r' ? '\r' : e == 't' ? '\t' : e;
    }
  }
  if (*p != quote) return false;
  *end = p + 1;
  out = text.c_str();
  return true;
}

// The value of attribute `name`, references decoded; "" when absent.
CString DecodedAttribute(CHtmlTagItem* tag, const char* name) {
  const char* value = tag->GetAttributeValue(name);
  return value ? CHtmlPack::HtmlToText(value) : CString();
}

bool HasClass(CHtmlTagItem* tag, const char* wanted) {
  const char* value = tag->GetAttributeValue("class");
  if (!value) return false;
  const size_t n = std::strlen(wanted);
  for (const char* p = value; *p;) {
    p = SkipBlanks(p);
    const char* start = p;
    while (*p && !IsBlank(*p)) ++p;
    if (static_cast<size_t>(p - start) == n && std::strncmp(start, wanted, n) == 0) return true;
  }
  return false;
}

// Blanks collapsed to one and trimmed, as a reader sees the words.
CString CollapsedBlanks(const CString& text) {
  std::string out;
  for (const char* p = text; *p; ++p) {
    if (IsBlank(*p)) {
      if (!out.empty() && out.back() != ' ') out += ' ';
    } else {
      out += *p;
    }
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return CString(out.c_str());
}

}  // namespace

void CHtmlPopupAnchor::Default() {
  m_nKind = emPopupNone;
  m_strTarget.Empty();
  m_strText.Empty();
  m_strLinkText.Empty();
  m_strWrittenValue.Empty();
  m_strWrittenLinkText.Empty();
  m_posStart = nullptr;
  m_posEnd = nullptr;
  m_nLine = 0;
}

int CHtmlPopupAnchor::ParseScriptCall(const char* href, EmPopupKind& kind, CString& argument) {
  kind = emPopupNone;
  argument.Empty();
  if (!href) return 0;
  const char* p = SkipBlanks(href);
  if (MbsNCompareNoCase(p, "javascript:", 11) != 0) return 0;
  p = SkipBlanks(p + 11);
  const char* name = p;
  while ((*p >= 'A' && *p <= 'Z') || (*p >= 'a' && *p <= 'z') || (*p >= '0' && *p <= '9') || *p == '_' || *p == '$')
    ++p;
  const std::string function(name, static_cast<size_t>(p - name));
  EmPopupKind found = function == ms_szTopicFunction  ? emPopupScriptTopic
                      : function == ms_szTextFunction ? emPopupScriptText
                                                      : emPopupNone;
  if (found == emPopupNone) return 0;
  p = SkipBlanks(p);
  if (*p != '(') return 0;
  CString value;
  if (!ReadQuoted(SkipBlanks(p + 1), &p, value)) return 0;
  p = SkipBlanks(p);
  if (*p != ')') return 0;
  p = SkipBlanks(p + 1);
  if (*p == ';') p = SkipBlanks(p + 1);
  if (*p || value.IsEmpty()) return 0;
  kind = found;
  argument = value;
  return 1;
}

CString CHtmlPopupAnchor::MakeScriptCall(EmPopupKind kind, const char* argument) {
  std::string call = "javascript:";
  call += kind == emPopupScriptText ? ms_szTextFunction : ms_szTopicFunction;
  call += "('";
  for (const char* p = argument ? argument : ""; *p; ++p) {
    if (IsDBCSLeadByte(static_cast<unsigned char>(*p)) && p[1]) {
      call += *p++;
      call += *p;
    } else if (*p == '\\' || *p == '\'') {
      call += '\\';
      call += *p;
    } else if (*p == '\n' || *p == '\r' || *p == '\t') {
      call += *p == '\n' ? "\\n" : *p == '\r' ? "\\r" : "\\t";
    } else {
      call += *p;
    }
  }
  call += "')";
  return CString(call.c_str());
}

const char* CHtmlPopupAnchor::GetKindName(EmPopupKind kind) {
  switch (kind) {
    case emPopupObjectText: return "object-text";
    case emPopupObjectTopic: return "object-topic";
    case emPopupScriptTopic: return "script-topic";
    case emPopupScriptText: return "script-text";
    case emPopupClassTopic: return "class-topic";
    case emPopupClassText: return "class-text";
    default: return "";
  }
}

CString CHtmlPopupAnchor::GetTopic() const {
  const int hash = m_strTarget.Find('#');
  return hash < 0 ? m_strTarget : m_strTarget.Left(hash);
}

CString CHtmlPopupAnchor::GetBookmark() const {
  const int hash = m_strTarget.Find('#');
  return hash < 0 ? CString() : m_strTarget.Mid(hash + 1);
}

int CHtmlPopupAnchor::Analyse(CHtmlFileEx& doc, POSITION pos, int line) {
  Default();
  try {
    CHtmlTagItem* tag = LiveTagAt(*doc.GetTokenList(), pos);
    if (!tag || tag->IsEndTag()) return 0;
    const int found = tag->GetTagId() == kTagA ? AnalyseLink(doc, pos)
                      : tag->GetTagId() == kTagObject && doc.IsPopupActivexObject(tag) ? AnalyseObject(doc, pos)
                                                                                         : 0;
    if (!found) {
      Default();
      return 0;
    }
    m_posStart = pos;
    m_nLine = line;
    return 1;
  } catch (...) {
    Default();
    return 0;
  }
}

int CHtmlPopupAnchor::AnalyseLink(CHtmlFileEx& doc, POSITION pos) {
  CHtmlTokenList& list = *doc.GetTokenList();
  CHtmlTagItem* tag = list.GetTagItem(pos);
  const char* href = tag->GetAttributeValue("href");
  EmPopupKind kind = emPopupNone;
  CString argument;
  if (href && ParseScriptCall(CHtmlPack::HtmlToText(href), kind, argument)) {
    m_nKind = kind;
    m_strWrittenValue = href;
    (kind == emPopupScriptText ? m_strText : m_strTarget) = argument;
  } else if (HasClass(tag, ms_szPopupClass)) {
    if (tag->GetAttributeValue("data-popup-text")) {
      m_nKind = emPopupClassText;
      m_strText = DecodedAttribute(tag, "data-popup-text");
      m_strWrittenValue = tag->GetAttributeValue("data-popup-text");
    } else {
      const char* from = tag->GetAttributeValue("data-popup-topic") ? "data-popup-topic" : "href";
      m_strTarget = DecodedAttribute(tag, from);
      m_strWrittenValue = tag->GetAttributeValue(from);
      // A class-marked "javascript:" link is only a popup through its call.
      if (m_strTarget.IsEmpty() || m_strTarget == "#" || doc.IsJavaScriptAnchorHref(m_strTarget)) return 0;
      m_nKind = emPopupClassTopic;
    }
  } else {
    return 0;
  }
  // The words up to the link's end tag (a new link start ends it too).
  CString words;
  POSITION walk = pos;
  list.GetNext(walk);
  while (walk) {
    POSITION here = walk;
    CHtmlTokenItem* token = list.GetNext(walk);
    if (!token || token->IsDiscardedToken()) continue;
    if (CHtmlTagItem* t = token->GetSafeTagItemPtr()) {
      if (t->GetTagId() == EndOf(kTagA)) {
        m_posEnd = here;
        break;
      }
      if (t->GetTagId() == kTagA) break;
      continue;
    }
    words += TokenText(token);
  }
  m_strWrittenLinkText = CollapsedBlanks(words);
  m_strLinkText = CollapsedBlanks(CHtmlPack::HtmlToText(words));
  return 1;
}

int CHtmlPopupAnchor::AnalyseObject(CHtmlFileEx& doc, POSITION pos) {
  CHtmlTokenList& list = *doc.GetTokenList();
  bool hasText = false, hasTopic = false;
  CString text, topic;
  POSITION walk = pos;
  list.GetNext(walk);
  int depth = 0;
  while (walk) {
    POSITION here = walk;
    CHtmlTokenItem* token = list.GetNext(walk);
    CHtmlTagItem* t = token && !token->IsDiscardedToken() ? token->GetSafeTagItemPtr() : nullptr;
    if (!t) continue;
    if (t->GetTagId() == kTagObject) ++depth;
    if (t->GetTagId() == EndOf(kTagObject) && depth-- == 0) {
      m_posEnd = here;
      break;
    }
    if (depth != 0 || t->GetTagId() != kTagParam) continue;
    const char* name = t->GetAttributeValue("name");
    if (MbsEqualNoCase(name, "Text") && !hasText) {
      hasText = true;
      m_strText = DecodedAttribute(t, "value");
      text = t->GetAttributeValue("value");
    } else if (MbsEqualNoCase(name, "Item1") && !hasTopic) {
      hasTopic = true;
      m_strTarget = DecodedAttribute(t, "value");
      topic = t->GetAttributeValue("value");
    } else if (MbsEqualNoCase(name, "Button")) {
      const CString caption = t->GetAttributeValue("value");
      if (MbsNCompareNoCase(caption, "text:", 5) == 0) {
        m_strWrittenLinkText = CollapsedBlanks(caption.Mid(5));
        m_strLinkText = CollapsedBlanks(CHtmlPack::HtmlToText(caption.Mid(5)));
      }
    }
  }
  // Text wins when an object holds both, as the script shows it.
  if (hasText && !m_strText.IsEmpty()) {
    m_nKind = emPopupObjectText;
    m_strTarget.Empty();
    m_strWrittenValue = text;
  } else if (hasTopic && !m_strTarget.IsEmpty()) {
    m_nKind = emPopupObjectTopic;
    m_strText.Empty();
    m_strWrittenValue = topic;
  } else {
    return 0;
  }
  return 1;
}

}  // namespace telvanix

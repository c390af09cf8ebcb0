// The plain-text walk over a token list and CHtmlFileEx::GetPureText.
#include "telvanix/topic/pure_text.h"

#include <cstring>
#include <iterator>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

namespace {

constexpr int kTagDoctype = CHtmlTagItem::emTagIdDoctype;
constexpr int kTagCommentElement = CHtmlTagItem::emTagIdCommentElement;  // the raw COMMENT element, not "<!--"
constexpr int kTagNoScript = CHtmlTagItem::emTagIdNoScript;
constexpr int kTagNoFrames = CHtmlTagItem::emTagIdNoFrames;
constexpr int kTagNoEmbed = CHtmlTagItem::emTagIdNoEmbed;
constexpr int kTagBr = CHtmlTagItem::emTagIdBr;
constexpr int kTagOption = CHtmlTagItem::emTagIdOption;
constexpr int kTagSelect = CHtmlTagItem::emTagIdSelect;
constexpr int kTagTextArea = CHtmlTagItem::emTagIdTextArea;
constexpr int kTagButton = CHtmlTagItem::emTagIdButton;
constexpr int kTagApplet = CHtmlTagItem::emTagIdApplet;

// Major-type bit that every tag allowed in the HEAD carries.
constexpr DWORD kMjrHeadAllowed = CHtmlTagItem::emMjrHeadChild;

// Unknown to the syntax table, yet laid out as blocks by every current
// viewer; compared without regard to case.
const char* const kUnknownBlockNames[] = {"article", "aside", "details", "dialog", "figcaption", "figure",
                                          "footer", "header", "hgroup", "legend", "main", "nav",
                                          "section", "summary"};
// Unknown elements whose content no viewer shows.
const char* const kUnknownHiddenNames[] = {"template", "xml"};

// Ids of unknown names are hashes of the folded name, so a lookup by id
// needs no copy of the tag's name.
template <std::size_t N>
struct CUnknownTagIds {
  explicit CUnknownTagIds(const char* const (&names)[N]) {
    for (std::size_t i = 0; i < N; ++i)
      ids[i] = CHtmlTagItem::GetTagIdFromTagName(names[i], nullptr);
  }
  bool Has(CHtmlTagItem* tag) const {
    const int id = tag->GetTagId() & ~static_cast<int>(CHtmlTagItem::emTagIdEndBit);
    for (int known : ids)
      if (known == id)
        return true;
    return false;
  }
  int ids[N];
};

bool IsUnknownBlock(CHtmlTagItem* tag) {
  static const CUnknownTagIds<std::size(kUnknownBlockNames)> ids(kUnknownBlockNames);
  return tag->IsUnknownTag() && ids.Has(tag);
}

bool IsUnknownHidden(CHtmlTagItem* tag) {
  static const CUnknownTagIds<std::size(kUnknownHiddenNames)> ids(kUnknownHiddenNames);
  return tag->IsUnknownTag() && ids.Has(tag);
}

// Comments, declarations ("<!...") and processing instructions ("<?...").
bool IsMarkupOnly(CHtmlTagItem* tag) {
  const unsigned char* p = tag->GetOriginalData();
  return tag->GetOriginalLength() > 2 && (p[1] == '!' || p[1] == '?');
}

bool IsKnownTag(CHtmlTagItem* tag) { return !tag->IsUnknownTag() && tag->IsValidTagIndex(); }

// Written "<x ... />": such a tag opens no content.
bool IsSelfClosed(CHtmlTagItem* tag) { return tag->GetXmlType() == CHtmlTagItem::emXmlEmptyTag; }

// Assembles the text: bytes of words are appended as they come; blanks and
// breaks are only remembered and written once the next word arrives, so runs
// collapse and nothing trails.
class CPureTextWriter {
 public:
  // codePage 0: the byte form in the active code page; otherwise the page's
  // code page, and the text comes out as UTF-8.
  CPureTextWriter(int option, UINT codePage)
      : m_nCodePage(codePage),
        m_bLineBreaks((option & emPureTextLineBreaks) != 0),
        m_bDbcs(!codePage && IsDBCSCodePage(GetActiveCodePage()) != 0),
        m_bUtf8(codePage || GetActiveCodePage() == CP_UTF8) {}

  void Blank() {
    if (m_nPending < 1)
      m_nPending = 1;
  }
  void Break() { m_nPending = 2; }

  // Raw HTML text: references are decoded first.
  void AppendHtml(const unsigned char* p, int n, bool preformatted) {
    if (!p || n <= 0)
      return;
    if (m_nCodePage) {
      m_Utf8.clear();
      if (CHtmlPack::HtmlToUtf8(m_Utf8, p, n, m_nCodePage))
        AppendDecoded(reinterpret_cast<const unsigned char*>(m_Utf8.data()), static_cast<int>(m_Utf8.size()),
                      preformatted);
      return;
    }
    if (std::memchr(p, '&', static_cast<std::size_t>(n))) {
      if (!CHtmlPack::HtmlToText(m_Decoded, p, n))
        return;
      AppendDecoded(m_Decoded.GetContent(), m_Decoded.GetLength(), preformatted);
      return;
    }
    AppendDecoded(p, n, preformatted);
  }

  // Whitespace between tokens (a tag's indent after).
  void AppendSpacing(const unsigned char* p, int n, bool preformatted) {
    for (int i = 0; i < n; ++i) {
      if (preformatted && p[i] == '\n')
        Break();
      else
        Blank();
    }
  }

  std::string Take() { return std::move(m_Out); }

 private:
  bool IsBlankByte(unsigned char c) const {
    // A no-break space separates words for an indexer as a space does.
    // Control bytes are never words: references the decoder reads as 0 or
    // narrows to a low byte (a quote or dash beyond the code page) give them,
    // and a zero must not cut the text short for a host reading it as a C
    // string.
    return c <= ' ' || c == 0x7F || (c == 0xA0 && !m_bDbcs && !m_bUtf8);
  }

  // Bytes of the blank at p, 0 when none; in UTF-8 the no-break space is two.
  int BlankLength(const unsigned char* p, const unsigned char* end) const {
    if (IsBlankByte(*p))
      return 1;
    return m_bUtf8 && p[0] == 0xC2 && end - p > 1 && p[1] == 0xA0 ? 2 : 0;
  }

  void AppendDecoded(const unsigned char* p, int n, bool preformatted) {
    const unsigned char* end = p + n;
    while (p < end) {
      if (const int blank = BlankLength(p, end)) {
        if (preformatted && *p == '\n')
          Break();
        else
          Blank();
        p += blank;
        continue;
      }
      const unsigned char* word = p;
      while (p < end && !BlankLength(p, end)) {
        // A lead byte takes its trail byte along, whatever that byte is.
        if (m_bDbcs && IsDBCSLeadByte(*p) && p + 1 < end)
          ++p;
        ++p;
      }
      Flush();
      m_Out.append(reinterpret_cast<const char*>(word), static_cast<std::size_t>(p - word));
    }
  }

  void Flush() {
    if (m_nPending && !m_Out.empty())
      m_Out.append(m_nPending == 2 && m_bLineBreaks ? "\r\n" : " ");
    m_nPending = 0;
  }

  std::string m_Out;
  CByteString m_Decoded;
  std::string m_Utf8;
  UINT m_nCodePage;
  int m_nPending = 0;  // 1 blank, 2 line break owed before the next word
  bool m_bLineBreaks;
  bool m_bDbcs;
  bool m_bUtf8;
};

// The walk's state: where in the page it stands and what it passes over.
class CPureTextWalk {
 public:
  CPureTextWalk(int option, UINT codePage, const HiddenObjectTest& hiddenObject)
      : m_Writer(option, codePage), m_HiddenObject(hiddenObject) {}

  void Walk(const CHtmlTokenList& list) {
    for (POSITION pos = list.GetHeadPosition(); pos;) {
      CHtmlTokenItem* token = list.GetNext(pos);
      if (!token || token->IsDiscardedToken())
        continue;
      if (CHtmlTagItem* tag = token->GetSafeTagItemPtr())
        OnTag(tag);
      else
        OnText(token);
      if (!m_nSkipId && !m_bInHead)
        m_Writer.AppendSpacing(token->GetIndentAfter(), token->GetIndentAfterLength(), m_nPreDepth > 0);
    }
  }

  std::string Take() { return m_Writer.Take(); }

 private:
  void OnText(CHtmlTokenItem* token) {
    if (m_nSkipId)
      return;
    const unsigned char* p = token->GetOriginalData();
    const int n = token->GetOriginalLength();
    if (m_bInHead) {
      // Words written in the HEAD end it, as in every viewer.
      if (CHtmlTextItem::IsSpaceOnly(p, p + n - 1))
        return;
      m_bInHead = false;
    }
    m_bBodySeen = true;
    m_Writer.AppendHtml(p, n, m_nPreDepth > 0);
  }

  void OnTag(CHtmlTagItem* tag) {
    const int id = tag->GetTagId();
    if (m_nSkipId && !EndsSkip(tag, id))
      return;
    if (id == kTagComment || id == kTagDoctype || IsMarkupOnly(tag))
      return;  // comments, declarations and processing instructions say nothing
    if (id == kTagHead) {
      if (!m_bBodySeen)
        m_bInHead = true;
      return;
    }
    if (id == EndOf(kTagHead)) {
      m_bInHead = false;
      return;
    }
    if (m_bInHead && IsKnownTag(tag) && !(tag->GetMjrType() & kMjrHeadAllowed))
      m_bInHead = false;  // a tag that only stands in a body ends the head
    if (!tag->IsEndTag() && StartsSkip(tag, id))
      return;
    if (m_bInHead)
      return;
    if (IsKnownTag(tag) && !(tag->GetMjrType() & kMjrHeadAllowed))
      m_bBodySeen = true;
    Separate(tag, id);
  }

  // What a tag puts between the words around it.
  void Separate(CHtmlTagItem* tag, int id) {
    switch (id) {
      case kTagBr:
        m_Writer.Break();
        return;
      case kTagImg:
        AppendAlt(tag);
        return;
      case kTagInput: {
        const char* type = tag->GetAttributeValue("type");
        if (type && MbsEqualNoCase(type, "image"))
          AppendAlt(tag);
        else
          m_Writer.Blank();
        return;
      }
      case kTagSelect:
      case EndOf(kTagSelect):
      case kTagTextArea:
      case EndOf(kTagTextArea):
      case kTagButton:
      case EndOf(kTagButton):
      case kTagObject:
      case EndOf(kTagObject):
      case kTagApplet:
      case EndOf(kTagApplet):
      case kTagEmbed:
      case kTagIFrame:
      case EndOf(kTagIFrame):
        m_Writer.Blank();
        return;
      case kTagPre:
      case kTagXmp:
      case kTagListing:
      case kTagPlainText:
        ++m_nPreDepth;
        m_Writer.Break();
        return;
      case EndOf(kTagPre):
      case EndOf(kTagXmp):
      case EndOf(kTagListing):
      case EndOf(kTagPlainText):
        if (m_nPreDepth > 0)
          --m_nPreDepth;
        m_Writer.Break();
        return;
      case kTagHtml:
      case EndOf(kTagHtml):
      case kTagBody:
      case EndOf(kTagBody):
      case kTagFrameset:
      case EndOf(kTagFrameset):
      case kTagFrame:
      case kTagOption:
      case EndOf(kTagOption):
        m_Writer.Break();
        return;
      default:
        break;
    }
    if (IsKnownTag(tag)) {
      if (tag->IsBlockLevelTag() || tag->IsBlockLevelEmbeddedTag())
        m_Writer.Break();
    } else if (IsUnknownBlock(tag)) {
      m_Writer.Break();
    }
  }

  void AppendAlt(CHtmlTagItem* tag) {
    m_Writer.Blank();
    const char* alt = tag->GetAttributeValue("alt");
    if (alt && *alt) {
      m_bBodySeen = true;
      m_Writer.AppendHtml(reinterpret_cast<const unsigned char*>(alt), static_cast<int>(std::strlen(alt)), false);
      m_Writer.Blank();
    }
  }

  // A start tag whose content gives no words: the walk passes over it up to
  // the matching end tag.
  bool StartsSkip(CHtmlTagItem* tag, int id) {
    bool hidden = false;
    switch (id) {
      case kTagScript:
      case kTagStyle:
      case kTagCommentElement:
        // Raw content: the tokenizer took everything up to the end tag as
        // text, even after a "/>".
        hidden = true;
        break;
      case kTagTitle:
      case kTagNoScript:
      case kTagNoFrames:
      case kTagNoEmbed:
      case kTagIFrame:
        hidden = !IsSelfClosed(tag);
        break;
      case kTagObject:
        hidden = !IsSelfClosed(tag) && m_HiddenObject && m_HiddenObject(tag);
        break;
      default:
        hidden = IsUnknownHidden(tag) && !IsSelfClosed(tag);
        break;
    }
    if (!hidden)
      return false;
    if (id == kTagIFrame || id == kTagObject)
      m_Writer.Blank();  // the frame or object itself stands between words
    m_nSkipId = id;
    m_nSkipDepth = 1;
    return true;
  }

  // While passing over content: true when this tag ends the pass and is to
  // be handled as usual.
  bool EndsSkip(CHtmlTagItem* tag, int id) {
    if (id == m_nSkipId) {
      if (!IsSelfClosed(tag))
        ++m_nSkipDepth;
      return false;
    }
    if (id == EndOf(m_nSkipId)) {
      if (--m_nSkipDepth > 0)
        return false;
      m_nSkipId = 0;
      if (id == EndOf(kTagIFrame) || id == EndOf(kTagObject))
        m_Writer.Blank();
      return false;  // the end tag itself is done with
    }
    // An unclosed element must not swallow the rest of the page. The title
    // also ends where the body's blocks begin (inline tags stay inside it).
    bool ends = id == EndOf(kTagBody) || id == EndOf(kTagHtml);
    if (m_nSkipId == kTagTitle)
      ends = ends || id == EndOf(kTagHead) || id == kTagBody || id == kTagFrameset ||
             (IsKnownTag(tag) && (tag->IsBlockLevelTag() || tag->IsBlockLevelEmbeddedTag()));
    if (ends)
      m_nSkipId = 0;
    return ends;
  }

  static constexpr int kTagPre = CHtmlTagItem::emTagIdPre;
  static constexpr int kTagXmp = CHtmlTagItem::emTagIdXmp;
  static constexpr int kTagListing = CHtmlTagItem::emTagIdListing;
  static constexpr int kTagPlainText = CHtmlTagItem::emTagIdPlainText;

  CPureTextWriter m_Writer;
  const HiddenObjectTest& m_HiddenObject;
  int m_nSkipId = 0;
  int m_nSkipDepth = 0;
  int m_nPreDepth = 0;
  bool m_bInHead = false;
  bool m_bBodySeen = false;
};

}  // namespace

namespace topic_detail {

std::string CollectPureText(const CHtmlTokenList& list, int option, const HiddenObjectTest& hiddenObject,
                            UINT codePage) {
  CPureTextWalk walk(option, codePage, hiddenObject);
  walk.Walk(list);
  return walk.Take();
}

}  // namespace topic_detail

CString CHtmlFileEx::GetPureText(int option, HWND window, const char* name) {
  (void)window;  // opaque: the text does not depend on the host's window
  try {
    // The text needs the tokens, not the topic walk, which would analyse
    // the attributes of every tag to find the styled and bookmarked ones.
    if (!IsParsed())
      Parse(emParseTokens);
    std::string text = CollectPureText(m_TokenList, option, HiddenObjects());
    if (text.empty() && name)
      return CString(name);
    return CString(std::move(text));
  } catch (...) {
    return CString();
  }
}

std::function<int(CHtmlTagItem*)> CHtmlFileEx::HiddenObjects() {
  return [this](CHtmlTagItem* tag) {
    return IsHhctrlActivexObject(tag) || IsKeywordActiveObject(tag) || IsPopupActivexObject(tag);
  };
}

CString CHtmlFileEx::GetPureTextUtf8(int option) {
  try {
    if (!IsParsed())
      Parse(emParseTokens);
    return CString(CollectPureText(m_TokenList, option, HiddenObjects(), GetPageCodePage()));
  } catch (...) {
    return CString();
  }
}

CString CHtmlFileEx::GetHtmlTitleUtf8() {
  CString title;
  std::string utf8;
  try {
    if (GetHtmlTitle(title) && !title.IsEmpty())
      CHtmlPack::HtmlToUtf8(utf8, reinterpret_cast<const unsigned char*>(static_cast<const char*>(title)),
                            title.GetLength(), GetPageCodePage());
  } catch (...) {
    utf8.clear();
  }
  return CString(utf8);
}

}  // namespace telvanix

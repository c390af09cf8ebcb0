// Files a topic refers to and must travel with it: baggage images (found in
// tag attributes, vector-markup comments, inline styles and STYLE blocks, kept
// in three lists because each kind is rewritten its own way when files move),
// multimedia files played by the page, and the class of an anchor target.
#include <cstring>
#include <mutex>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/css/css_style.h"
#include "telvanix/css/style_property.h"
#include "telvanix/css/style_values.h"
#include "telvanix/foundation/keyword_map.h"
#include "telvanix/foundation/url_utils.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

QuickMapStringToValueItem CHtmlFileEx::ms_tAnchorHrefTypeTable[12] = {
    {0, "javascript", emHrefJavaScript}, {0, "ftp", emHrefFtp},       {0, "http", emHrefHttp},
    {0, "https", emHrefHttps},           {0, "gopher", emHrefGopher}, {0, "mailto", emHrefMailto},
    {0, "news", emHrefNews},             {0, "nntp", emHrefNntp},     {0, "telnet", emHrefTelnet},
    {0, "wais", emHrefWais},             {0, "file", emHrefFile},     {0, "prospero", emHrefProspero},
};

namespace {

// The three player controls, known by their vendor's download domain and the
// product name in the codebase; an empty domain means the product path alone
// identifies the control (its codebase moved between hosts over the years).
struct PlayerCodebase {
  const char* domain;
  const char* product;
  const char* parameter;
};
const PlayerCodebase kPlayerCodebases[] = {
    {"macromedia.com", "flash", "movie"},
    {"", "mplayer", "filename"},
    {"apple.com", "qtactivex", "src"},
};

// Parameters that commonly carry the played file, in the order they are tried.
const char* const kMediaParameterNames[] = {"src", "filename", "movie"};

std::mutex& AnchorSchemeLock() {
  static std::mutex lock;
  return lock;
}

CString Decoded(const char* text) { return CHtmlPack::HtmlToText(text); }

// Adds the decoded text unless it decodes to nothing.
void AddDecoded(CHtmlFileEx::CStringArrayEx& to, const char* text) {
  CString decoded = Decoded(text);
  if (!decoded.IsEmpty())
    to.Add(decoded);
}

}  // namespace

// ---------------------------------------------------------------------------
// baggage

int CHtmlFileEx::GetBaggageFilesReference() {
  if (m_bBaggageCollected)
    return 1;
  m_bBaggageCollected = 1;
  try {
    for (POSITION pos = m_TokenList.GetHeadPosition(); pos; m_TokenList.GetNext(pos)) {
      CHtmlTagItem* tag = GetLiveTag(pos);
      if (!tag || tag->IsEndTag())
        continue;
      GetBaggageFilesInSpecialTag(pos);
      if (tag->GetTagId() != kTagComment && tag->HasAttribute("style"))
        GetBaggageFilesInInlineStyle(pos);
      if (tag->GetTagId() == kTagStyle)
        GetBaggageFilesInEmbeddedStyle(pos);
    }
  } catch (...) {
  }
  return 1;
}

const CHtmlFileEx::CStringArrayEx& CHtmlFileEx::GetInlineStyleBaggage() {
  EnsureAnalysed();
  GetBaggageFilesReference();
  return m_arrInlineStyleBaggage;
}

const CHtmlFileEx::CStringArrayEx& CHtmlFileEx::GetEmbeddedStyleBaggage() {
  EnsureAnalysed();
  GetBaggageFilesReference();
  return m_arrEmbeddedStyleBaggage;
}

const CHtmlFileEx::CStringArrayEx& CHtmlFileEx::GetSpecialTagBaggage() {
  EnsureAnalysed();
  GetBaggageFilesReference();
  return m_arrSpecialTagBaggage;
}

int CHtmlFileEx::GetBaggageFilesInSpecialTag(POSITION pos) {
  CHtmlTagItem* tag = GetLiveTag(pos);
  if (!tag || tag->IsEndTag())
    return 1;
  CString name;
  switch (tag->GetTagId()) {
    case kTagBody:
    case kTagTable: {
      const char* value = tag->GetAttributeValue("background");
      // Colour names and "#rrggbb" are never files.
      if (value && std::strchr(value, '.')) {
        CSttColor color(value);
        if (color.GetColorRef() == CSttColor::ms_nNoColor)
          name = value;
      }
      break;
    }
    case kTagInput: {
      const char* type = tag->GetAttributeValue("type");
      if (type && MbsEqualNoCase(type, "image"))
        name = tag->GetAttributeValue("src");
      break;
    }
    case kTagComment:
      return CollectVectorMarkupImages(pos);
    default:
      return 1;
  }
  AddDecoded(m_arrSpecialTagBaggage, name);
  return 1;
}

// A comment holding a vector-markup image, followed by the fallback IMG
// that stands for it in other browsers:
//   <!--[if gte vml 1]>...<v:imagedata src="a.png">...<![endif]-->
//   <![if !vml]><img src="a.gif" v:shapes="_x0000_i1025"><![endif]>
int CHtmlFileEx::CollectVectorMarkupImages(POSITION pos) {
  CHtmlTagItem* comment = GetLiveTag(pos);
  if (!comment)
    return 1;
  CString text = TokenText(comment);
  if (text.GetLength() <= 128 || text.Find("<v:imagedata") < 0)
    return 1;

  // The three tokens after the comment, discarded ones passed over.
  CHtmlTokenItem* next[3] = {nullptr, nullptr, nullptr};
  POSITION walk = pos;
  m_TokenList.GetNext(walk);
  for (int found = 0; walk && found < 3;) {
    CHtmlTokenItem* token = m_TokenList.GetNext(walk);
    if (token && !token->IsDiscardedToken())
      next[found++] = token;
  }
  if (!next[2] || TokenText(next[0]).Find("<![if !vml]>") < 0)
    return 1;
  CHtmlTagItem* img = next[1]->GetSafeTagItemPtr();
  if (!img || img->GetTagId() != kTagImg)
    return 1;
  const char* shapes = img->GetAttributeValue("v:shapes");
  if (!shapes || !*shapes || TokenText(next[2]).Find("<![endif]>") < 0)
    return 1;
  CString id;
  id.Format("id=\"%s\"", shapes);
  if (text.Find(id) < 0)
    return 1;

  text.Trim();
  if (text.GetLength() <= 17)
    return 1;
  int first = text.Find('>');
  int last = text.ReverseFind('<');
  if (first <= 0 || last <= first)
    return 1;
  CString middle = text.Mid(first + 1, last - first - 1);
  CByteString bytes(reinterpret_cast<const unsigned char*>(static_cast<const char*>(middle)), middle.GetLength());
  CHtmlPack inner(bytes, nullptr);
  if (!inner.Parse(emParseAttributes))
    return 1;
  CHtmlTokenList* list = inner.GetTokenList();
  for (POSITION at = list->GetHeadPosition(); at;) {
    CHtmlTokenItem* token = list->GetNext(at);
    CHtmlTagItem* tag = token ? token->GetSafeTagItemPtr() : nullptr;
    if (!tag || tag->IsEndTag() || tag->IsDiscardedToken())
      continue;
    if (tag->GetTagName().CompareNoCase("v:imagedata") != 0)
      continue;
    const char* src = tag->GetAttributeValue("src");
    AddDecoded(m_arrSpecialTagBaggage, src);
  }
  return 1;
}

int CHtmlFileEx::GetBaggageFilesInInlineStyle(POSITION pos) {
  CHtmlTagItem* tag = GetLiveTag(pos);
  if (!tag || tag->IsEndTag())
    return 1;
  const char* value = tag->GetAttributeValue("style");
  if (!value || !CCssPackEx::MayContainBaggageFile(value))
    return 1;
  // The attribute is HTML text: references such as &quot; are read first.
  CString body = Decoded(value);
  CCssStyle style(nullptr, body, nullptr);
  CCssStyleProperty* properties = style.GetStyleProperty();
  if (!properties)
    return 1;
  static const char* const kShorthands[] = {"background", "background-image", "list-style", "list-style-image"};
  for (int i = 0; i < 4; ++i) {
    CString text;
    if (!properties->GetProperty(kShorthands[i], text) || text.IsEmpty())
      continue;
    CString name;
    if (i % 2 == 0) {
      CString part = CCssPackEx::FindBaggageFileInStylePropertyValue(text);
      if (!part.IsEmpty())
        name = CCssStyleProperty::GetFileNameFromUrlPairValue(part);
    } else {
      name = CCssStyleProperty::GetFileNameFromUrlPairValue(text);
    }
    if (!name.IsEmpty())
      m_arrInlineStyleBaggage.Add(name);
  }
  return 1;
}

int CHtmlFileEx::GetBaggageFilesInEmbeddedStyle(POSITION pos) {
  CHtmlTagItem* tag = GetLiveTag(pos);
  if (!tag || tag->GetTagId() != kTagStyle)
    return 1;
  CHtmlTextItem* text = nullptr;
  if (!m_TokenList.GetTextDefinedAfter(pos, text) || !text)
    return 1;
  CString css = TokenText(text);
  CByteString bytes(reinterpret_cast<const unsigned char*>(static_cast<const char*>(css)), css.GetLength());
  CCssPackEx pack("WhoCare", &bytes);
  pack.Parse();
  UINT index = 0;
  for (CString name = pack.GetFirstBaggageFile(index); !name.IsEmpty(); name = pack.GetNextBaggageFile(index)) {
    AddDecoded(m_arrEmbeddedStyleBaggage, name);
  }
  return 1;
}

// ---------------------------------------------------------------------------
// multimedia

int CHtmlFileEx::GetMultimediaFilesReference() {
  EnsureAnalysed();
  if (m_bMultimediaCollected)
    return 1;
  m_bMultimediaCollected = 1;
  try {
    for (POSITION pos = m_TokenList.GetHeadPosition(); pos; m_TokenList.GetNext(pos)) {
      CHtmlTagItem* tag = GetLiveTag(pos);
      if (!tag || tag->IsEndTag())
        continue;
      CString candidate;
      switch (tag->GetTagId()) {
        case kTagBgSound:
          candidate = tag->GetAttributeValue("src");
          break;
        case kTagImg:
          candidate = tag->GetAttributeValue("dynsrc");
          break;
        case kTagEmbed:
          candidate = tag->GetAttributeValue("src");
          break;
        case kTagObject:
          if (!IsHhctrlActivexObject(tag))
            candidate = GetMultimediaFileOfObject(pos);
          break;
        default:
          continue;
      }
      if (!candidate.IsEmpty() && IsSupportedMultimediaFileName(candidate)) {
        AddDecoded(m_arrMultimediaFiles, candidate);
      }
    }
  } catch (...) {
  }
  return 1;
}

CString CHtmlFileEx::GetMediaParameterName(POSITION pos) {
  CHtmlTagItem* object = GetLiveTag(pos);
  if (!object)
    return CString();
  CString codebase(object->GetAttributeValue("codebase"));
  codebase.MakeLower();
  // The class id is read as well; the codebase alone decides today.
  (void)object->GetAttributeValue("classid");
  for (const PlayerCodebase& player : kPlayerCodebases) {
    if ((!*player.domain || codebase.Find(player.domain) >= 0) && codebase.Find(player.product) >= 0)
      return CString(player.parameter);
  }
  POSITION walk = pos;
  m_TokenList.GetNext(walk);
  while (walk) {
    CHtmlTokenItem* token = m_TokenList.GetNext(walk);
    if (!token || token->IsDiscardedToken())
      continue;
    CHtmlTagItem* param = token->GetSafeTagItemPtr();
    if (!param || param->GetTagId() != kTagParam)
      break;
    const char* name = param->GetAttributeValue("name");
    if (!name)
      continue;
    for (const char* wanted : kMediaParameterNames) {
      if (MbsEqualNoCase(name, wanted) && IsSupportedMultimediaFileName(param->GetAttributeValue("value")))
        return CString(wanted);
    }
  }
  return CString();
}

CString CHtmlFileEx::GetMultimediaFileOfObject(POSITION pos) {
  try {
    EnsureAnalysed();
    CString parameter = GetMediaParameterName(pos);
    if (parameter.IsEmpty())
      return CString();
    POSITION walk = pos;
    m_TokenList.GetNext(walk);
    while (walk) {
      CHtmlTokenItem* token = m_TokenList.GetNext(walk);
      if (!token || token->IsDiscardedToken())
        continue;
      CHtmlTagItem* param = token->GetSafeTagItemPtr();
      if (!param || param->GetTagId() != kTagParam)
        break;
      const char* name = param->GetAttributeValue("name");
      const char* value = param->GetAttributeValue("value");
      if (name && MbsEqualNoCase(name, parameter) && IsSupportedMultimediaFileName(value))
        return CString(value);
    }
  } catch (...) {
  }
  return CString();
}

int CHtmlFileEx::IsMultimediaActivexObject(CHtmlTagItem* tag, POSITION pos) {
  try {
    if (!tag || tag->GetTagId() != kTagObject || IsHhctrlActivexObject(tag))
      return 0;
    if (!pos || m_TokenList.GetTokenItem(pos) != tag)
      return 0;
    return GetMultimediaFileOfObject(pos).IsEmpty() ? 0 : 1;
  } catch (...) {
    return 0;
  }
}

// ---------------------------------------------------------------------------
// anchor targets

int CHtmlFileEx::IsJavaScriptAnchorHref(const char* href) {
  if (!href)
    return 0;
  return MbsNCompareNoCase(href, "javascript:", 11) == 0 ? 1 : 0;
}

CHtmlFileEx::EmAnchorHrefType CHtmlFileEx::GetAnchorHrefType(const char* href) {
  if (!href)
    return emHrefNull;
  const char* colon = std::strchr(href, ':');
  if (!*href || !colon)
    return emHrefNone;
  CString scheme(href, static_cast<int>(colon - href));
  int value = -1;
  {
    std::lock_guard<std::mutex> guard(AnchorSchemeLock());
    value = QuickMapStringToValue(ms_tAnchorHrefTypeTable, static_cast<int>(sizeof(ms_tAnchorHrefTypeTable)),
                                  scheme, FALSE);
  }
  if (value >= 0)
    return static_cast<EmAnchorHrefType>(value);
  // "help.chm::/topic.htm" points into a compiled help file.
  const int length = scheme.GetLength();
  if (length >= 5 && MbsEqualNoCase(static_cast<const char*>(scheme) + length - 4, ".chm"))
    return emHrefCompiledHelp;
  return emHrefNone;
}

}  // namespace telvanix

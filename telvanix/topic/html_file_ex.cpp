// The topic document: construction, the analysis walk, the page skeleton and
// the head and body accessors (title, colours, background, sound, stylesheet
// link) with the enumerators over what the walk recorded.
#include "telvanix/topic/html_file_ex.h"

#include <cstdlib>
#include <cstring>

#include "telvanix/css/css_pack_ex.h"
#include "telvanix/foundation/color_names.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

namespace {

// BODY attributes in EmColor order (index 0 unused).
const char* const kColorAttributes[] = {nullptr, "link", "vlink", "alink", "bgcolor", "text"};

void ResetPositions(CHtmlFileEx::CPositionArray& array, int growBy) {
  array.RemoveAll();
  array.SetGrowBy(growBy);
}

void ResetStrings(CHtmlFileEx::CStringArrayEx& array, int growBy) {
  array.RemoveAll();
  array.SetGrowBy(growBy);
}

// Appends pos for the walk. The arrays grow by a fixed step of a few
// elements, so a page with a hundred thousand links would have its array
// copied once every few links; a full array this large grows by an eighth
// at once, as an array without a step would.
void AddPosition(CHtmlFileEx::CPositionArray& array, POSITION pos) {
  const int n = array.GetSize();
  if (n >= 1024 && n == array.GetAllocSize()) {
    array.SetSize(n + n / 8);
    array.SetSize(n);
  }
  array.Add(pos);
}

}  // namespace

// ---------------------------------------------------------------------------
// construction

CHtmlFileEx::CHtmlFileEx() : CHtmlPack() {
  m_nSourceMode = emSourceEmpty;
  ClearAllAnalysedData();
}

CHtmlFileEx::CHtmlFileEx(const char* path) : CHtmlPack(path) { ClearAllAnalysedData(); }

CHtmlFileEx::CHtmlFileEx(CByteString& bytes, const char* path) : CHtmlPack(bytes, path) {
  ClearAllAnalysedData();
}

CHtmlFileEx::CHtmlFileEx(const CHtmlFileEx& other) : CHtmlPack() {
  ClearAllAnalysedData();
  CopyFrom(other);
}

CHtmlFileEx& CHtmlFileEx::operator=(const CHtmlFileEx& other) {
  if (this != &other)
    CopyFrom(other);
  return *this;
}

CHtmlFileEx::~CHtmlFileEx() = default;

void CHtmlFileEx::CopyFrom(const CHtmlFileEx& other) {
  try {
    CloseMappingView();
    m_TokenList.ClearAll();
    ClearAllAnalysedData();
    m_nSourceMode = other.m_nSourceMode;
    m_bParsed = other.m_bParsed;
    m_strPathName = other.m_strPathName;
    m_pSource = other.m_pSource;
    m_nAnalyseFlags = other.m_nAnalyseFlags;
    const CHtmlTokenList& from = other.m_TokenList;
    for (POSITION pos = from.GetHeadPosition(); pos;) {
      CHtmlTokenItem* token = from.GetNext(pos);
      if (!token)
        continue;
      if (CHtmlTagItem* tag = token->GetSafeTagItemPtr()) {
        CHtmlTagItem* copy = new CHtmlTagItem();
        copy->Copy(tag);
        m_TokenList.AddTail(copy);
      } else if (CHtmlTextItem* text = token->GetSafeTextItemPtr()) {
        CHtmlTextItem* copy = new CHtmlTextItem();
        copy->Copy(text);
        m_TokenList.AddTail(copy);
      }
    }
    if (other.m_bAnalysed) {
      WalkThroughTokenList();
      m_bAnalysed = 1;
      m_bBaggageCollected = other.m_bBaggageCollected;
      m_arrEmbeddedStyleBaggage.Copy(other.m_arrEmbeddedStyleBaggage);
      m_arrInlineStyleBaggage.Copy(other.m_arrInlineStyleBaggage);
      m_arrSpecialTagBaggage.Copy(other.m_arrSpecialTagBaggage);
      m_bMultimediaCollected = other.m_bMultimediaCollected;
      m_arrMultimediaFiles.Copy(other.m_arrMultimediaFiles);
    }
  } catch (...) {
    ClearAllAnalysedData();
  }
}

// ---------------------------------------------------------------------------
// analysis

int CHtmlFileEx::Analyse() {
  int result = 0;
  try {
    int parsed = Parse(emParseTokens);
    ClearAllAnalysedData();
    int walked = WalkThroughTokenList();
    result = (parsed && walked) ? 1 : 0;
  } catch (...) {
    result = 0;
  }
  m_bAnalysed = 1;
  return result;
}

int CHtmlFileEx::SetSource(CByteString& source) {
  ClearAllAnalysedData();
  return CHtmlPack::SetSource(source);
}

void CHtmlFileEx::EnsureAnalysed() {
  if (!m_bAnalysed)
    Analyse();
}

int CHtmlFileEx::ClearAllAnalysedData() {
  m_bAnalysed = 0;
  m_posHtmlStart = m_posHtmlEnd = nullptr;
  m_posHeadStart = m_posHeadEnd = nullptr;
  m_posBodyStart = m_posBodyEnd = nullptr;
  m_posFramesetStart = m_posFramesetEnd = nullptr;
  m_posTitle = m_posBase = nullptr;
  m_posStyleSheetLink = m_posBgSound = nullptr;
  ResetPositions(m_arrLinkTags, 4);
  ResetPositions(m_arrAnchors, 8);
  ResetPositions(m_arrNamedAnchors, 8);
  ResetPositions(m_arrMapTags, 16);
  ResetPositions(m_arrImages, 4);
  ResetPositions(m_arrObjects, 4);
  ResetPositions(m_arrEmbeds, 4);
  ResetPositions(m_arrFrames, 4);
  ResetPositions(m_arrIFrames, 4);
  ResetPositions(m_arrScripts, 8);
  ResetPositions(m_arrMetas, 16);
  ResetPositions(m_arrStyles, 4);
  ResetPositions(m_arrComments, 32);
  ResetPositions(m_arrStyledTags, 32);
  ResetPositions(m_arrBookmarkTags, 16);
  m_bBaggageCollected = 0;
  ResetStrings(m_arrEmbeddedStyleBaggage, 4);
  ResetStrings(m_arrInlineStyleBaggage, 16);
  ResetStrings(m_arrSpecialTagBaggage, 16);
  m_bMultimediaCollected = 0;
  ResetStrings(m_arrMultimediaFiles, 2);
  return 1;
}

int CHtmlFileEx::WalkThroughTokenList() {
  for (POSITION pos = m_TokenList.GetHeadPosition(); pos; m_TokenList.GetNext(pos)) {
    CHtmlTagItem* tag = LiveTagAt(m_TokenList, pos);
    if (!tag)
      continue;
    switch (tag->GetTagId()) {
      case kTagHtml:
        if (!m_posHtmlStart)
          m_posHtmlStart = pos;
        break;
      case EndOf(kTagHtml):
        if (!m_posHtmlEnd)
          m_posHtmlEnd = pos;
        break;
      case kTagHead:
        m_posHeadStart = pos;
        break;
      case EndOf(kTagHead):
        m_posHeadEnd = pos;
        break;
      case kTagBody:
        if (!m_posBodyStart)
          m_posBodyStart = pos;
        break;
      case EndOf(kTagBody):
        if (!m_posBodyEnd)
          m_posBodyEnd = pos;
        break;
      case kTagFrameset:
        AddPosition(m_arrFrames, pos);
        if (!m_posFramesetStart)
          m_posFramesetStart = pos;
        break;
      case EndOf(kTagFrameset):
        AddPosition(m_arrFrames, pos);
        m_posFramesetEnd = pos;
        break;
      case kTagFrame:
        AddPosition(m_arrFrames, pos);
        break;
      case kTagTitle:
        if (!m_posTitle)
          m_posTitle = pos;
        break;
      case kTagBase:
        if (!m_posBase)
          m_posBase = pos;
        break;
      case kTagLink: {
        AddPosition(m_arrLinkTags, pos);
        // "rev" decides when present; "rel" only without it.
        const char* kind = tag->GetAttributeValue("rev");
        if (!kind)
          kind = tag->GetAttributeValue("rel");
        if (kind && MbsEqualNoCase(kind, "stylesheet") && tag->HasAttribute("href") && !m_posStyleSheetLink)
          m_posStyleSheetLink = pos;
        break;
      }
      case kTagBgSound:
        if (!m_posBgSound && tag->HasAttribute("src"))
          m_posBgSound = pos;
        break;
      case kTagA:
        AddPosition(m_arrAnchors, pos);
        if (tag->HasAttribute("name"))
          AddPosition(m_arrNamedAnchors, pos);
        break;
      case kTagMap:
      case kTagArea:
      case EndOf(kTagMap):
      case EndOf(kTagArea):
        AddPosition(m_arrMapTags, pos);
        break;
      case kTagImg:
        AddPosition(m_arrImages, pos);
        break;
      case kTagObject:
        AddPosition(m_arrObjects, pos);
        break;
      case kTagEmbed:
        AddPosition(m_arrEmbeds, pos);
        break;
      case kTagIFrame:
        AddPosition(m_arrIFrames, pos);
        break;
      case kTagScript:
        AddPosition(m_arrScripts, pos);
        break;
      case kTagMeta:
        AddPosition(m_arrMetas, pos);
        break;
      case kTagStyle:
        AddPosition(m_arrStyles, pos);
        break;
      case kTagComment:
        AddPosition(m_arrComments, pos);
        break;
      default:
        break;
    }
    if (tag->IsEndTag() || tag->GetTagId() == kTagComment)
      continue;
    if (tag->HasAttribute("style"))
      AddPosition(m_arrStyledTags, pos);
    if ((tag->GetTagId() == kTagA && tag->HasAttribute("name")) || tag->HasAttribute("id"))
      AddPosition(m_arrBookmarkTags, pos);
  }
  return 1;
}

CHtmlTagItem* CHtmlFileEx::GetLiveTag(POSITION pos) { return LiveTagAt(m_TokenList, pos); }

POSITION CHtmlFileEx::InsertTagAfter(POSITION pos, const char* text) {
  return m_TokenList.InsertAfter(pos, new CHtmlTagItem(text));
}

POSITION CHtmlFileEx::InsertTagBefore(POSITION pos, const char* text) {
  return m_TokenList.InsertBefore(pos, new CHtmlTagItem(text));
}

const char* CHtmlFileEx::GetNewRelFileNameCustom(const char* name, CReplaceContext& context) {
  (void)name;
  (void)context;
  return nullptr;
}

// ---------------------------------------------------------------------------
// page skeleton

int CHtmlFileEx::CreateDefaultHtmlFile() {
  try {
    m_TokenList.ClearAll();
    // The document now stands for these tags: its source is not read again.
    CloseMappingView();
    m_bParsed = 1;
    static const char* const kSkeleton[] = {"<HTML>", "<HEAD>", "</HEAD>", "<BODY>", "</BODY>", "</HTML>"};
    for (const char* text : kSkeleton)
      m_TokenList.AddTail(new CHtmlTagItem(text));
    Analyse();
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::InsertHeadTags() {
  try {
    if (m_posHeadStart || !m_posHtmlStart)
      return 0;
    POSITION headEnd = InsertTagAfter(m_posHtmlStart, "</HEAD>");
    POSITION headStart = InsertTagAfter(m_posHtmlStart, "<HEAD>");
    if (!m_posHeadEnd)
      m_posHeadEnd = headEnd;
    m_posHeadStart = headStart;
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::InsertBodyTags() {
  try {
    if (m_posBodyStart || m_posBodyEnd)
      return 0;
    POSITION anchor = m_posFramesetEnd ? m_posFramesetEnd : (m_posHeadEnd ? m_posHeadEnd : m_posHtmlStart);
    if (!anchor || !m_posHtmlEnd)
      return 0;
    m_posBodyStart = InsertTagAfter(anchor, "<BODY>");
    m_posBodyEnd = InsertTagBefore(m_posHtmlEnd, "</BODY>");
    return 1;
  } catch (...) {
    return 0;
  }
}

// ---------------------------------------------------------------------------
// body

int CHtmlFileEx::SetBodyHtmlText(const char* html, int atStart) {
  if (!html || !*html)
    return 0;
  try {
    EnsureAnalysed();
    if (!m_posBodyStart || !m_posBodyEnd)
      InsertBodyTags();
    POSITION at = atStart ? m_posBodyStart : m_posBodyEnd;
    if (!at)
      return 0;
    int inserted = m_TokenList.InsertHtmlStream(at, reinterpret_cast<const unsigned char*>(html), atStart ? 0 : 1);
    Analyse();
    return inserted ? 1 : 0;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetBodyHtmlText(CString& out) {
  out.Empty();
  try {
    EnsureAnalysed();
    if (!m_posBodyStart || !m_posBodyEnd)
      return 0;
    POSITION pos = m_posBodyStart;
    m_TokenList.GetNext(pos);
    while (pos && pos != m_posBodyEnd) {
      CHtmlTokenItem* token = m_TokenList.GetNext(pos);
      if (token && !token->IsDiscardedToken())
        out += TokenText(token);
    }
    return 1;
  } catch (...) {
    out.Empty();
    return 0;
  }
}

// ---------------------------------------------------------------------------
// colours and background

int CHtmlFileEx::SetColor(EmColor which, COLORREF rgb) {
  try {
    EnsureAnalysed();
    CHtmlTagItem* body = GetLiveTag(m_posBodyStart);
    if (!body || which < emColorLink || which > emColorText)
      return 0;
    if (rgb == kNoColor)
      return body->DeleteAttribute(kColorAttributes[which]);
    CString name;
    if (!ColorToColorName(rgb, name))
      return 0;
    return body->SetAttribute(kColorAttributes[which], name);
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetColor(EmColor which, COLORREF& rgb) {
  try {
    EnsureAnalysed();
    CHtmlTagItem* body = GetLiveTag(m_posBodyStart);
    if (!body || which < emColorLink || which > emColorText)
      return 0;
    const char* value = body->GetAttributeValue(kColorAttributes[which]);
    if (!value)
      return 0;
    return ColorNameToColor(value, rgb);
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::SetWaterMark(int fixed) {
  try {
    EnsureAnalysed();
    if (!m_posBodyStart || !m_posBodyEnd)
      InsertBodyTags();
    CHtmlTagItem* body = GetLiveTag(m_posBodyStart);
    if (!body)
      return 0;
    return fixed ? body->SetAttribute("bgproperties", "fixed") : body->DeleteAttribute("bgproperties");
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetWaterMark(int& fixed) {
  try {
    EnsureAnalysed();
    CHtmlTagItem* body = GetLiveTag(m_posBodyStart);
    const char* value = body ? body->GetAttributeValue("bgproperties") : nullptr;
    if (!value)
      return 0;
    fixed = MbsEqualNoCase(value, "fixed") ? 1 : 0;
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::SetBackgroundImage(const char* file) {
  try {
    EnsureAnalysed();
    if (!m_posBodyStart || !m_posBodyEnd)
      InsertBodyTags();
    if (CHtmlTagItem* body = GetLiveTag(m_posBodyStart)) {
      if (file && *file)
        body->SetAttribute("background", file);
      else
        body->DeleteAttribute("background");
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetBackgroundImage(CString& file) {
  file.Empty();
  try {
    EnsureAnalysed();
    CHtmlTagItem* body = GetLiveTag(m_posBodyStart);
    const char* value = body ? body->GetAttributeValue("background") : nullptr;
    if (!value)
      return 0;
    file = HtmlToText(value);
    return 1;
  } catch (...) {
    file.Empty();
    return 0;
  }
}

// ---------------------------------------------------------------------------
// background sound

int CHtmlFileEx::SetBackgroundSound(const char* file, int loop) {
  try {
    EnsureAnalysed();
    if (!file || !*file) {
      if (CHtmlTagItem* sound = GetLiveTag(m_posBgSound))
        sound->DiscardToken();
      m_posBgSound = nullptr;
      return 1;
    }
    if (CHtmlTagItem* sound = GetLiveTag(m_posBgSound)) {
      sound->SetAttribute("src", file);
      if (loop != 1) {
        CString number;
        number.Format("%d", loop);
        sound->SetAttribute("loop", number);
      }
      return 1;
    }
    POSITION after = m_posHeadEnd ? m_posHeadEnd : m_posHtmlStart;
    if (!after)
      return 0;
    CString text;
    if (loop == 1)
      text.Format("<BGSOUND src=\"%s\">", file);
    else
      text.Format("<BGSOUND src=\"%s\" loop=%d>", file, loop);
    m_posBgSound = InsertTagAfter(after, text);
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetBackgroundSound(CString& file, int& loop) {
  try {
    EnsureAnalysed();
    CHtmlTagItem* sound = GetLiveTag(m_posBgSound);
    if (!sound)
      return 0;
    file = sound->GetAttributeValue("src");
    const char* value = sound->GetAttributeValue("loop");
    if (!value) {
      loop = -1;
    } else {
      CString number(value);
      number.Trim();
      loop = static_cast<int>(std::strtol(number, nullptr, 10));
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

// ---------------------------------------------------------------------------
// title

int CHtmlFileEx::SetHtmlTitle(const char* title) {
  if (!title)
    return 0;
  try {
    EnsureAnalysed();
    CString encoded = TextToHtml(title);
    if (m_posTitle) {
      POSITION next = m_posTitle;
      m_TokenList.GetNext(next);
      CHtmlTextItem* text = next ? m_TokenList.GetTextItem(next) : nullptr;
      if (text && !text->IsDiscardedToken())
        text->SetText(encoded);
      else
        m_TokenList.InsertAfter(m_posTitle, new CHtmlTextItem(encoded));
      return 1;
    }
    if (!m_posHeadStart)
      InsertHeadTags();
    if (!m_posHeadStart)
      return 0;
    POSITION titleEnd = InsertTagAfter(m_posHeadStart, "</TITLE>");
    m_posTitle = InsertTagAfter(m_posHeadStart, "<TITLE>");
    m_TokenList.InsertBefore(titleEnd, new CHtmlTextItem(encoded));
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetHtmlTitle(CString& title) {
  title.Empty();
  try {
    EnsureAnalysed();
    if (!GetLiveTag(m_posTitle))
      return 0;
    POSITION next = m_posTitle;
    m_TokenList.GetNext(next);
    CHtmlTextItem* text = next ? m_TokenList.GetTextItem(next) : nullptr;
    if (!text || text->IsDiscardedToken())
      return 0;
    title = TokenText(text);
    title.Remove('\r');
    title.Remove('\n');
    title.Trim();
    return 1;
  } catch (...) {
    title.Empty();
    return 0;
  }
}

// ---------------------------------------------------------------------------
// external stylesheet

int CHtmlFileEx::SetExternalStyleSheetFileName(const char* file) {
  try {
    EnsureAnalysed();
    if (!file || !*file) {
      if (CHtmlTagItem* link = GetLiveTag(m_posStyleSheetLink))
        link->DiscardToken();
      m_posStyleSheetLink = nullptr;
      return 1;
    }
    CString encoded = TextToHtml(file);
    if (CHtmlTagItem* link = GetLiveTag(m_posStyleSheetLink)) {
      link->SetAttribute("href", encoded);
      return 1;
    }
    if (!m_posHeadStart)
      InsertHeadTags();
    if (!m_posHeadStart)
      return 0;
    CString text;
    text.Format("<LINK rel=\"StyleSheet\" href=\"%s\">", static_cast<const char*>(encoded));
    m_posStyleSheetLink = InsertTagAfter(m_posHeadStart, text);
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetExternalStyleSheetFileNameEx(CStringArrayEx& files) {
  files.RemoveAll();
  try {
    EnsureAnalysed();
    if (CHtmlTagItem* link = GetLiveTag(m_posStyleSheetLink)) {
      CString href = HtmlToText(link->GetAttributeValue("href"));
      files.Add(href);
    }
    for (int i = 0; i < m_arrStyles.GetSize(); ++i) {
      POSITION pos = m_arrStyles[i];
      if (!GetLiveTag(pos))
        continue;
      CHtmlTextItem* text = nullptr;
      if (!m_TokenList.GetTextDefinedAfter(pos, text) || !text)
        continue;
      CString css = TokenText(text);
      CByteString bytes(reinterpret_cast<const unsigned char*>(static_cast<const char*>(css)), css.GetLength());
      CCssPackEx pack("WhoCare", &bytes);
      pack.Parse();
      POSITION cursor = nullptr;
      for (CString url = pack.GetFirstImportCssUrl(cursor); !url.IsEmpty(); url = pack.GetNextImportCssUrl(cursor)) {
        CString decoded = HtmlToText(url);
        if (!decoded.IsEmpty())
          files.Add(decoded);
      }
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetExternalStyleSheetFileName(CString& file) {
  file.Empty();
  CStringArrayEx files;
  GetExternalStyleSheetFileNameEx(files);
  if (files.GetSize() == 0)
    return 0;
  file = files[0];
  return 1;
}

// ---------------------------------------------------------------------------
// enumerators

const char* CHtmlFileEx::GetFirstScriptSource(unsigned int& index) {
  EnsureAnalysed();
  index = 0;
  return GetNextScriptSource(index);
}

const char* CHtmlFileEx::GetNextScriptSource(unsigned int& index) {
  try {
    while (index < static_cast<unsigned int>(m_arrScripts.GetSize())) {
      CHtmlTagItem* tag = GetLiveTag(m_arrScripts[static_cast<int>(index++)]);
      const char* src = tag ? tag->GetAttributeValue("src") : nullptr;
      if (src)
        return src;
    }
  } catch (...) {
  }
  return nullptr;
}

CString CHtmlFileEx::GetFirstImage(unsigned int& index) {
  EnsureAnalysed();
  index = 0;
  return GetNextImage(index);
}

CString CHtmlFileEx::GetNextImage(unsigned int& index) {
  try {
    while (index < static_cast<unsigned int>(m_arrImages.GetSize())) {
      CHtmlTagItem* tag = GetLiveTag(m_arrImages[static_cast<int>(index++)]);
      const char* src = tag ? tag->GetAttributeValue("src") : nullptr;
      if (src) {
        CString decoded = HtmlToText(src);
        if (!decoded.IsEmpty())
          return decoded;
      }
    }
  } catch (...) {
  }
  return CString();
}

CString CHtmlFileEx::GetFirstBaggageImage(unsigned int& index, unsigned int& stage) {
  EnsureAnalysed();
  index = 0;
  stage = 0;
  return GetNextBaggageImage(index, stage);
}

CString CHtmlFileEx::GetNextBaggageImage(unsigned int& index, unsigned int& stage) {
  try {
    EnsureAnalysed();
    GetBaggageFilesReference();
    for (;;) {
      unsigned int number = stage & 0xFF;
      if (number == 0) {
        const char* value = GetNextHhctrlItemValue(index, emHhctrlItemBaggageImage);
        if (value) {
          CString decoded = HtmlToText(value);
          if (!decoded.IsEmpty())
            return decoded;
          continue;
        }
        stage = 1;
        index = 0;
        continue;
      }
      if (number > 3)
        return CString();
      const CStringArrayEx& list = number == 1 ? m_arrInlineStyleBaggage
                                   : number == 2 ? m_arrEmbeddedStyleBaggage
                                                 : m_arrSpecialTagBaggage;
      unsigned int at = stage >> 16;
      if (at < static_cast<unsigned int>(list.GetSize())) {
        stage = ((at + 1) << 16) | number;
        return list[static_cast<int>(at)];
      }
      stage = number + 1;
      index = 0;
    }
  } catch (...) {
    stage = 4;
    return CString();
  }
}

const char* CHtmlFileEx::GetFirstHhctrlBaggageImage(unsigned int& cursor) {
  return GetFirstHhctrlItemValue(cursor, emHhctrlItemBaggageImage);
}
const char* CHtmlFileEx::GetNextHhctrlBaggageImage(unsigned int& cursor) {
  return GetNextHhctrlItemValue(cursor, emHhctrlItemBaggageImage);
}
const char* CHtmlFileEx::GetFirstRelatedTopic(unsigned int& cursor) {
  return GetFirstHhctrlItemValue(cursor, emHhctrlItemRelatedTopic);
}
const char* CHtmlFileEx::GetNextRelatedTopic(unsigned int& cursor) {
  return GetNextHhctrlItemValue(cursor, emHhctrlItemRelatedTopic);
}
const char* CHtmlFileEx::GetFirstContentOrIndex(unsigned int& cursor) {
  return GetFirstHhctrlItemValue(cursor, emHhctrlItemContentOrIndex);
}
const char* CHtmlFileEx::GetNextContentOrIndex(unsigned int& cursor) {
  return GetNextHhctrlItemValue(cursor, emHhctrlItemContentOrIndex);
}

CString CHtmlFileEx::GetFirstMultimediaFile(unsigned int& index) {
  EnsureAnalysed();
  index = 0;
  return GetNextMultimediaFile(index);
}

CString CHtmlFileEx::GetNextMultimediaFile(unsigned int& index) {
  GetMultimediaFilesReference();
  if (index < static_cast<unsigned int>(m_arrMultimediaFiles.GetSize()))
    return m_arrMultimediaFiles[static_cast<int>(index++)];
  return CString();
}

// Anchors first, then the AREA tags among the map tags; the cursor runs
// over both lists as one.
const char* CHtmlFileEx::GetFirstAnchorHref(unsigned int& index) {
  EnsureAnalysed();
  index = 0;
  return GetNextAnchorHref(index);
}

const char* CHtmlFileEx::GetNextAnchorHref(unsigned int& index) {
  try {
    const unsigned int anchors = static_cast<unsigned int>(m_arrAnchors.GetSize());
    const unsigned int total = anchors + static_cast<unsigned int>(m_arrMapTags.GetSize());
    while (index < total) {
      unsigned int at = index++;
      CHtmlTagItem* tag = at < anchors ? GetLiveTag(m_arrAnchors[static_cast<int>(at)])
                                       : GetLiveTag(m_arrMapTags[static_cast<int>(at - anchors)]);
      if (!tag || tag->GetTagId() == EndOf(kTagA) || (at >= anchors && tag->GetTagId() != kTagArea))
        continue;
      if (const char* href = tag->GetAttributeValue("href"))
        return href;
    }
  } catch (...) {
  }
  return nullptr;
}

// The cursor is twice the tag index, plus one for the "id" of an A tag whose
// "name" was given first.
const char* CHtmlFileEx::GetFirstBookmark(unsigned int& index) {
  EnsureAnalysed();
  index = 0;
  return GetNextBookmark(index);
}

const char* CHtmlFileEx::GetNextBookmark(unsigned int& index) {
  try {
    const unsigned int total = static_cast<unsigned int>(m_arrBookmarkTags.GetSize());
    while ((index >> 1) < total) {
      unsigned int at = index >> 1;
      unsigned int part = index & 1;
      index = part ? (at + 1) << 1 : (at << 1) | 1;
      CHtmlTagItem* tag = GetLiveTag(m_arrBookmarkTags[static_cast<int>(at)]);
      if (!tag)
        continue;
      const char* value = part == 0 ? (tag->GetTagId() == kTagA ? tag->GetAttributeValue("name") : nullptr)
                                    : tag->GetAttributeValue("id");
      if (value)
        return value;
    }
  } catch (...) {
  }
  return nullptr;
}

const char* CHtmlFileEx::GetFirstFrameSource(unsigned int& index) {
  EnsureAnalysed();
  index = 0;
  return GetNextFrameSource(index);
}

const char* CHtmlFileEx::GetNextFrameSource(unsigned int& index) {
  try {
    const unsigned int frames = static_cast<unsigned int>(m_arrFrames.GetSize());
    const unsigned int total = frames + static_cast<unsigned int>(m_arrIFrames.GetSize());
    while (index < total) {
      unsigned int at = index++;
      CHtmlTagItem* tag = at < frames ? GetLiveTag(m_arrFrames[static_cast<int>(at)])
                                      : GetLiveTag(m_arrIFrames[static_cast<int>(at - frames)]);
      if (!tag || (at < frames && tag->GetTagId() != kTagFrame))
        continue;
      if (const char* src = tag->GetAttributeValue("src"))
        return src;
    }
  } catch (...) {
  }
  return nullptr;
}

}  // namespace telvanix

// Topic properties and build tags, kept inside the page so that it stays
// ordinary HTML: the properties and the topic's build tags as META tags in
// the head, an element's build tags as the style property "x-condition".
#include <cstdlib>
#include <cstring>

#include "telvanix/css/css_style.h"
#include "telvanix/css/style_property.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

namespace {

const char kMetaFormat[] = "<meta name=\"%s\" content=\"%s\">";
const char kBuildTagsMeta[] = "build tags";
const char kConditionProperty[] = "x-condition";

// Leading digits (after optional blanks and sign); none give 0.
int LeadingNumber(const char* text) { return static_cast<int>(std::strtol(text, nullptr, 10)); }

}  // namespace

// ---------------------------------------------------------------------------
// topic properties

int CHtmlFileEx::SetTopicText(const char* metaName, const char* value) {
  try {
    EnsureAnalysed();
    CHtmlTagItem* existing = nullptr;
    POSITION lastLive = nullptr;
    for (int i = 0; i < m_arrMetas.GetSize(); ++i) {
      CHtmlTagItem* meta = GetLiveTag(m_arrMetas[i]);
      if (!meta)
        continue;
      lastLive = m_arrMetas[i];
      if (!existing && MbsEqualNoCase(meta->GetAttributeValue("name"), metaName))
        existing = meta;
    }
    if (!value) {
      if (existing)
        existing->DiscardToken();
      return 1;
    }
    if (existing) {
      // An existing tag takes the value as given; only new tags are encoded.
      existing->SetAttribute("content", value);
      return 1;
    }
    CString encoded = TextToHtml(value);
    CString text;
    text.Format(kMetaFormat, metaName, static_cast<const char*>(encoded));
    POSITION inserted = nullptr;
    if (lastLive)
      inserted = InsertTagAfter(lastLive, text);
    else if (m_posHeadEnd)
      inserted = InsertTagBefore(m_posHeadEnd, text);
    else if (m_posHtmlStart)
      inserted = InsertTagAfter(m_posHtmlStart, text);
    else
      return 0;
    m_arrMetas.Add(inserted);
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetTopicText(const char* metaName, CString& value) {
  value.Empty();
  try {
    EnsureAnalysed();
    for (int i = 0; i < m_arrMetas.GetSize(); ++i) {
      CHtmlTagItem* meta = GetLiveTag(m_arrMetas[i]);
      if (!meta || !MbsEqualNoCase(meta->GetAttributeValue("name"), metaName))
        continue;
      value = HtmlToText(meta->GetAttributeValue("content"));
      return 1;
    }
  } catch (...) {
    value.Empty();
  }
  return 0;
}

int CHtmlFileEx::SetTopicNumber(const char* metaName, int value) {
  CString text;
  text.Format("%d", value);
  return SetTopicText(metaName, text);
}

int CHtmlFileEx::GetTopicNumber(const char* metaName, int& value) {
  CString text;
  if (!GetTopicText(metaName, text)) {
    value = -1;
    return 0;
  }
  value = LeadingNumber(text);
  return 1;
}

int CHtmlFileEx::SetTopicAuthor(const char* value) { return SetTopicText("topic-author", value); }
int CHtmlFileEx::GetTopicAuthor(CString& value) { return GetTopicText("topic-author", value); }
int CHtmlFileEx::SetTopicStatus(const char* value) { return SetTopicText("topic-status", value); }
int CHtmlFileEx::GetTopicStatus(CString& value) { return GetTopicText("topic-status", value); }
int CHtmlFileEx::SetTopicPriority(int value) { return SetTopicNumber("topic-priority", value); }
int CHtmlFileEx::GetTopicPriority(int& value) { return GetTopicNumber("topic-priority", value); }
int CHtmlFileEx::SetTopicTimeEstimate(int value) { return SetTopicNumber("topic-time-estimate", value); }
int CHtmlFileEx::GetTopicTimeEstimate(int& value) { return GetTopicNumber("topic-time-estimate", value); }
int CHtmlFileEx::SetTopicComment(const char* value) { return SetTopicText("topic-comment", value); }
int CHtmlFileEx::GetTopicComment(CString& value) { return GetTopicText("topic-comment", value); }
int CHtmlFileEx::SetTopicId(const char* value) { return SetTopicText("topic-id", value); }
int CHtmlFileEx::GetTopicId(CString& value) { return GetTopicText("topic-id", value); }
int CHtmlFileEx::SetTopicSourceDigitalSignature(const char* value) { return SetTopicText("topic-sds", value); }
int CHtmlFileEx::GetTopicSourceDigitalSignature(CString& value) { return GetTopicText("topic-sds", value); }

int CHtmlFileEx::SetTopicCheckList(CStringList* items) {
  if (!items)
    return 0;
  CString joined;
  bool first = true;
  for (POSITION pos = items->GetHeadPosition(); pos;) {
    const CString& item = items->GetNext(pos);
    if (!first)
      joined += ',';
    joined += item;
    first = false;
  }
  return SetTopicText("topic-check-list", joined);
}

int CHtmlFileEx::GetTopicCheckList(CStringList& items) {
  CString text;
  if (!GetTopicText("topic-check-list", text) || text.IsEmpty())
    return 0;
  ParseBuildTags(text, items);
  return 1;
}

// ---------------------------------------------------------------------------
// topic build tags

POSITION CHtmlFileEx::FindBuildTagsMeta() {
  // Discarded tags are not passed over here.
  for (int i = 0; i < m_arrMetas.GetSize(); ++i) {
    CHtmlTagItem* meta = m_TokenList.GetTagItem(m_arrMetas[i]);
    if (meta && MbsEqualNoCase(meta->GetAttributeValue("name"), kBuildTagsMeta))
      return m_arrMetas[i];
  }
  return nullptr;
}

int CHtmlFileEx::SetTopicBuildTags(const char* tags) {
  try {
    EnsureAnalysed();
    POSITION found = FindBuildTagsMeta();
    CHtmlTagItem* meta = found ? m_TokenList.GetTagItem(found) : nullptr;
    if (!tags || !*tags) {
      if (meta)
        meta->DiscardToken();
      return 1;
    }
    if (meta) {
      meta->SetAttribute("content", tags);
      return 1;
    }
    CString text;
    text.Format(kMetaFormat, kBuildTagsMeta, tags);
    if (m_arrMetas.GetSize() > 0) {
      POSITION last = m_arrMetas[m_arrMetas.GetSize() - 1];
      if (last)
        InsertTagAfter(last, text);
      else
        m_TokenList.AddTail(new CHtmlTagItem(static_cast<const char*>(text)));
    } else if (m_posHeadStart) {
      InsertTagAfter(m_posHeadStart, text);
    } else if (m_posHtmlStart) {
      InsertTagAfter(m_posHtmlStart, text);
    } else {
      return 0;
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::GetTopicBuildTags(CString& tags) {
  tags.Empty();
  try {
    EnsureAnalysed();
    POSITION found = FindBuildTagsMeta();
    CHtmlTagItem* meta = found ? m_TokenList.GetTagItem(found) : nullptr;
    if (!meta)
      return 0;
    tags = meta->GetAttributeValue("content");
    return 1;
  } catch (...) {
    tags.Empty();
    return 0;
  }
}

// ---------------------------------------------------------------------------
// element build tags

int CHtmlFileEx::HasInlineBuildTags(CHtmlTagItem* tag) {
  CString tags;
  return GetInlineBuildTags(tag, tags) && !tags.IsEmpty() ? 1 : 0;
}

int CHtmlFileEx::GetInlineBuildTags(CHtmlTagItem* tag, CString& tags) {
  if (!tag)
    return 0;
  tags.Empty();
  try {
    const char* text = tag->GetAttributeValue("style");
    if (!text || !std::strstr(text, kConditionProperty))
      return 0;
    CCssStyle style(nullptr, text, nullptr);
    CCssStyleProperty* properties = style.GetStyleProperty();
    CString value;
    if (!properties || !properties->GetProperty(kConditionProperty, value) || value.IsEmpty())
      return 0;
    tags = value;
    return 1;
  } catch (...) {
    tags.Empty();
    return 0;
  }
}

int CHtmlFileEx::SetInlineBuildTags(CHtmlTagItem* tag, const char* tags) {
  if (!tag)
    return 0;
  try {
    CCssStyle style(nullptr, tag->GetAttributeValue("style"), nullptr);
    CCssStyleProperty* properties = style.GetStyleProperty();
    if (!properties)
      return 0;
    int done = tags ? properties->SetProperty(kConditionProperty, tags) : properties->DeleteProperty(kConditionProperty);
    if (!done)
      return 0;
    CString printable = style.GetPrintableString(nullptr);
    // An emptied style stays as a blank attribute rather than going away.
    if (printable.IsEmpty())
      printable = " ";
    return tag->SetAttribute("style", printable);
  } catch (...) {
    return 0;
  }
}

CString CHtmlFileEx::GetFirstInlineBuildTags(unsigned int& index, POSITION* pos) {
  EnsureAnalysed();
  index = 0;
  return GetNextInlineBuildTags(index, pos);
}

CString CHtmlFileEx::GetNextInlineBuildTags(unsigned int& index, POSITION* pos) {
  try {
    while (index < static_cast<unsigned int>(m_arrStyledTags.GetSize())) {
      POSITION at = m_arrStyledTags[static_cast<int>(index++)];
      CHtmlTagItem* tag = GetLiveTag(at);
      CString tags;
      if (tag && GetInlineBuildTags(tag, tags) && !tags.IsEmpty()) {
        if (pos)
          *pos = at;
        return tags;
      }
    }
  } catch (...) {
  }
  return CString();
}

// ---------------------------------------------------------------------------
// build-tag lists

int CHtmlFileEx::ParseBuildTags(const char* text, CStringList& tags) {
  if (!text || !*text)
    return 0;
  const char* start = text;
  const char* p = text;
  for (; *p; ++p) {
    // A "," that starts a piece stays inside it.
    if (*p != ',' || p == start)
      continue;
    CString piece(start, static_cast<int>(p - start));
    piece.Trim();
    if (!piece.IsEmpty())
      tags.AddTail(piece);
    start = p + 1;
  }
  CString rest(start, static_cast<int>(p - start));
  rest.Trim();
  if (!rest.IsEmpty())
    tags.AddTail(rest);
  return 1;
}

int CHtmlFileEx::MakeBuildTags(CStringList* tags, CString& text) {
  text.Empty();
  if (!tags)
    return 0;
  for (POSITION pos = tags->GetHeadPosition(); pos;) {
    const CString& item = tags->GetNext(pos);
    if (item.IsEmpty())
      continue;
    if (!text.IsEmpty())
      text += ',';
    text += item;
  }
  return 1;
}

int CHtmlFileEx::ReplaceInList(CStringList& list, const char* oldTag, const char* newTag) {
  for (POSITION pos = list.GetHeadPosition(); pos; list.GetNext(pos)) {
    if (list.GetAt(pos).Compare(oldTag) != 0)
      continue;
    if (newTag && *newTag)
      list.SetAt(pos, newTag);
    else
      list.RemoveAt(pos);
    return 1;
  }
  return 0;
}

int CHtmlFileEx::ReplaceBuildTag(const char* oldTag, const char* newTag) {
  if (!oldTag || !*oldTag)
    return 0;
  try {
    EnsureAnalysed();
    CString topicTags;
    GetTopicBuildTags(topicTags);
    CStringList topicList;
    ParseBuildTags(topicTags, topicList);
    ReplaceInList(topicList, oldTag, newTag);
    CString joined;
    MakeBuildTags(&topicList, joined);
    SetTopicBuildTags(joined);

    for (int i = 0; i < m_arrStyledTags.GetSize(); ++i) {
      CHtmlTagItem* tag = GetLiveTag(m_arrStyledTags[i]);
      const char* text = tag ? tag->GetAttributeValue("style") : nullptr;
      if (!text || !std::strstr(text, kConditionProperty))
        continue;
      CCssStyle style(nullptr, text, nullptr);
      CCssStyleProperty* properties = style.GetStyleProperty();
      if (!properties)
        continue;
      CString value;
      properties->GetProperty(kConditionProperty, value);
      CStringList list;
      if (!value.IsEmpty())
        ParseBuildTags(value, list);
      ReplaceInList(list, oldTag, newTag);
      CString rebuilt;
      MakeBuildTags(&list, rebuilt);
      if (rebuilt.IsEmpty())
        properties->DeleteProperty(kConditionProperty);
      else
        properties->SetProperty(kConditionProperty, rebuilt);
      CString printable = style.GetPrintableString(nullptr);
      tag->SetAttribute("style", printable.IsEmpty() ? " " : static_cast<const char*>(printable));
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

}  // namespace telvanix

// Help-control objects: OBJECT tags told apart by their class id (the help
// control, the keyword object, the popup object), the help control's command,
// the file names inside its parameters, and the topic's K and A keywords kept
// as PARAM tags of the keyword object.
#include <cstring>

#include "telvanix/foundation/hash_fold.h"
#include "telvanix/foundation/keyword_map.h"
#include "telvanix/foundation/path_utils.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

QuickMapStringToValueItem CHtmlFileEx::ms_tHhctrlCommandTable[16] = {
    {0, "Contents", emHhctrlContents},
    {0, "HH Version", emHhctrlHHVersion},
    {0, "Index", emHhctrlIndex},
    {0, "Related Topics", emHhctrlRelatedTopics},
    {0, "RelatedTopics", emHhctrlRelatedTopics},
    {0, "ShortCut", emHhctrlShortCut},
    {0, "Splash", emHhctrlSplash},
    {0, "WinHelp Popup", emHhctrlWinHelp},
    {0, "WinHelp", emHhctrlWinHelp},
    {0, "TCard", emHhctrlTCard},
    {0, "Close", emHhctrlClose},
    {0, "Minimize", emHhctrlMinimize},
    {0, "Maximize", emHhctrlMaximize},
    {0, "HHWinPrint", emHhctrlHHWinPrint},
    {0, "KLink", emHhctrlKLink},
    {0, "ALink", emHhctrlALink},
};

namespace {

// Hashes of the reference class ids, each made once (function-local statics
// are initialised under the runtime's own lock).
DWORD HhctrlClassIdHash() {
  static const DWORD hash = GenHashCode("clsid:ADB880A6-D8FF-11CF-9377-00AA003B7A11");
  return hash;
}
DWORD KeywordClassIdHash() {
  static const DWORD hash = GenHashCode("clsid:4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab");
  return hash;
}
DWORD PopupClassIdHash() {
  static const DWORD hash = GenHashCode("clsid:3B6A91E4-5C2D-11D0-9E37-0000A4C81D55");
  return hash;
}

int IsObjectOfClass(CHtmlTagItem* tag, DWORD reference) {
  if (!tag || tag->GetTagId() != kTagObject)
    return 0;
  const char* classId = tag->GetAttributeValue("classid");
  if (!classId)
    return 0;
  return GenHashCode(classId) == reference ? 1 : 0;
}

}  // namespace

int CHtmlFileEx::IsHhctrlActivexObject(CHtmlTagItem* tag) {
  try {
    return IsObjectOfClass(tag, HhctrlClassIdHash());
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::IsKeywordActiveObject(CHtmlTagItem* tag) {
  try {
    return IsObjectOfClass(tag, KeywordClassIdHash());
  } catch (...) {
    return 0;
  }
}

int CHtmlFileEx::IsPopupActivexObject(CHtmlTagItem* tag) {
  try {
    return IsObjectOfClass(tag, PopupClassIdHash());
  } catch (...) {
    return 0;
  }
}

void CHtmlFileEx::CollectObjectParams(POSITION pos, CPositionArray& params) {
  params.RemoveAll();
  POSITION walk = pos;
  m_TokenList.GetNext(walk);
  while (walk) {
    POSITION at = walk;
    CHtmlTokenItem* token = m_TokenList.GetNext(walk);
    CHtmlTagItem* tag = token ? token->GetSafeTagItemPtr() : nullptr;
    if (!tag)
      continue;  // text between parameters
    if (tag->GetTagId() != kTagParam) {
      if (tag->IsDiscardedToken())
        continue;
      break;
    }
    params.Add(at);
  }
}

CHtmlFileEx::EmHhctrlCommand CHtmlFileEx::GetCommandOfParams(const CPositionArray& params) {
  for (int i = 0; i < params.GetSize(); ++i) {
    CHtmlTagItem* param = GetLiveTag(params[i]);
    const char* name = param ? param->GetAttributeValue("name") : nullptr;
    if (!name || !MbsEqualNoCase(name, "command"))
      continue;
    const char* value = param->GetAttributeValue("value");
    if (!value || !*value)
      return emHhctrlNone;
    char buffer[256];
    std::strncpy(buffer, value, sizeof(buffer) - 1);
    buffer[sizeof(buffer) - 1] = 0;
    if (char* comma = std::strchr(buffer, ','))
      *comma = 0;
    int found = QuickMapStringToValue(ms_tHhctrlCommandTable, static_cast<int>(sizeof(ms_tHhctrlCommandTable)),
                                      buffer, FALSE);
    return found > 0 ? static_cast<EmHhctrlCommand>(found) : emHhctrlNone;
  }
  return emHhctrlNone;
}

CHtmlFileEx::EmHhctrlCommand CHtmlFileEx::GetHhctrlCommandType(POSITION pos) {
  try {
    if (!pos)
      return emHhctrlNone;
    EnsureAnalysed();
    CHtmlTagItem* object = GetLiveTag(pos);
    if (!IsHhctrlActivexObject(object))
      return emHhctrlNone;
    CPositionArray params;
    CollectObjectParams(pos, params);
    return GetCommandOfParams(params);
  } catch (...) {
    return emHhctrlNone;
  }
}

const char* CHtmlFileEx::GetFirstHhctrlItemValue(unsigned int& cursor, EmHhctrlObjectItemType type) {
  EnsureAnalysed();
  cursor = 0;
  return GetNextHhctrlItemValue(cursor, type);
}

const char* CHtmlFileEx::GetNextHhctrlItemValue(unsigned int& cursor, EmHhctrlObjectItemType type) {
  try {
    EnsureAnalysed();
    unsigned int objectIndex = cursor >> 16;
    unsigned int paramIndex = cursor & 0xFFFF;
    CPositionArray params;
    const unsigned int objects = static_cast<unsigned int>(m_arrObjects.GetSize());
    for (; objectIndex < objects && objectIndex <= 0xFFFF; ++objectIndex, paramIndex = 0) {
      POSITION pos = m_arrObjects[static_cast<int>(objectIndex)];
      CHtmlTagItem* object = GetLiveTag(pos);
      if (!IsHhctrlActivexObject(object))
        continue;
      CollectObjectParams(pos, params);
      const EmHhctrlCommand command = GetCommandOfParams(params);
      bool holds = false;
      switch (type) {
        case emHhctrlItemBaggageImage:
          holds = command != emHhctrlNone;
          break;
        case emHhctrlItemRelatedTopic:
          holds = command == emHhctrlRelatedTopics;
          break;
        case emHhctrlItemContentOrIndex:
          holds = command == emHhctrlContents || command == emHhctrlIndex;
          break;
      }
      if (!holds)
        continue;
      const unsigned int count = static_cast<unsigned int>(params.GetSize());
      for (unsigned int k = paramIndex; k < count && k < 0xFFFF; ++k) {
        CHtmlTagItem* param = GetLiveTag(params[static_cast<int>(k)]);
        if (!param)
          continue;
        const char* name = param->GetAttributeValue("name");
        const char* value = param->GetAttributeValue("value");
        if (!name || !value)
          continue;
        const char* hit = nullptr;
        if (type == emHhctrlItemBaggageImage) {
          if (MbsEqualNoCase(name, "button")) {
            hit = ButtonImage(value);
          } else if (command == emHhctrlSplash && MbsNCompareNoCase(name, "item1", 5) == 0) {
            hit = LastSegment(value);
            if (IsPageName(hit))
              hit = nullptr;
          }
        } else if (MbsNCompareNoCase(name, "item", 4) == 0) {
          hit = LastSegment(value);
        }
        if (hit && *hit) {
          cursor = (objectIndex << 16) | (k + 1);
          return hit;
        }
      }
    }
    cursor = objects << 16;
  } catch (...) {
  }
  return nullptr;
}

// ---------------------------------------------------------------------------
// keywords

int CHtmlFileEx::SetKeywordK(CStringArrayEx* keywords) {
  return keywords ? SetGetKeywordX(*keywords, 0x11) : 0;
}

int CHtmlFileEx::GetKeywordK(CStringArrayEx& keywords) { return SetGetKeywordX(keywords, 0x12); }

int CHtmlFileEx::SetKeywordA(CStringArrayEx* keywords) {
  return keywords ? SetGetKeywordX(*keywords, 0x21) : 0;
}

int CHtmlFileEx::GetKeywordA(CStringArrayEx& keywords) { return SetGetKeywordX(keywords, 0x22); }

int CHtmlFileEx::SetGetKeywordX(CStringArrayEx& keywords, int flags) {
  try {
    EnsureAnalysed();
    const char* parameter = (flags & 0x10) ? "Keyword" : "ALink Name";
    const bool read = (flags & 0x02) != 0;
    const bool write = (flags & 0x01) != 0;
    POSITION keywordObject = nullptr;
    for (int i = 0; i < m_arrObjects.GetSize(); ++i) {
      POSITION pos = m_arrObjects[i];
      if (!IsKeywordActiveObject(GetLiveTag(pos)))
        continue;
      keywordObject = pos;
      POSITION walk = pos;
      m_TokenList.GetNext(walk);
      while (walk) {
        CHtmlTokenItem* token = m_TokenList.GetNext(walk);
        CHtmlTagItem* tag = token ? token->GetSafeTagItemPtr() : nullptr;
        if (!tag || tag->IsDiscardedToken())
          continue;
        if (tag->GetTagId() == EndOf(kTagObject))
          break;
        if (tag->GetTagId() != kTagParam)
          continue;
        const char* name = tag->GetAttributeValue("name");
        const char* value = tag->GetAttributeValue("value");
        if (!name || !value || !MbsEqualNoCase(name, parameter))
          continue;
        if (read) {
          CString keyword(value);
          keywords.Add(keyword);
        } else {
          tag->DiscardToken();
        }
      }
    }
    if (!write || keywords.GetSize() == 0)
      return 1;
    if (!keywordObject) {
      if (!m_posBodyStart || !m_posBodyEnd)
        InsertBodyTags();
      if (!m_posBodyEnd)
        return 1;
      // The class id is written without its "clsid:" prefix, as the
      // authoring tool always has.
      keywordObject = InsertTagBefore(m_posBodyEnd, "<OBJECT CLASSID=\"4c7e19a2-b83f-11d0-a5c1-00e07d3f21ab\">");
      InsertTagBefore(m_posBodyEnd, "</OBJECT>");
    }
    // Each goes directly after the start tag, so the last keyword comes first.
    for (int i = 0; i < keywords.GetSize(); ++i) {
      CString text;
      text.Format("<PARAM name=\"%s\" value=\"%s\">", parameter, static_cast<const char*>(keywords[i]));
      InsertTagAfter(keywordObject, text);
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

}  // namespace telvanix

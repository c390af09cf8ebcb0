// The topic text parser and its exported factory.
#include "telvanix/topic/topic_text.h"

#include <memory>
#include <new>

#include "telvanix/foundation/path_utils.h"
#include "telvanix/foundation/text_utils.h"
#include "telvanix/platform/window.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/pure_text.h"
#include "telvanix/topic/internal/topic_helpers.h"

namespace telvanix {

using namespace topic_detail;

CHtmlTopicTextParser::~CHtmlTopicTextParser() = default;

CHtmlTopicText::CHtmlTopicText() : m_pDocument(nullptr), m_hWnd(nullptr), m_dwFlags(0) {}

CHtmlTopicText::CHtmlTopicText(const CHtmlTopicText& other)
    : CHtmlTopicTextParser(),
      m_pDocument(other.m_pDocument),
      m_strFileName(other.m_strFileName),
      m_hWnd(other.m_hWnd),
      m_dwFlags(other.m_dwFlags) {}

CHtmlTopicText& CHtmlTopicText::operator=(const CHtmlTopicText& other) {
  m_pDocument = other.m_pDocument;
  m_strFileName = other.m_strFileName;
  m_hWnd = other.m_hWnd;
  m_dwFlags = other.m_dwFlags;
  return *this;
}

CHtmlTopicText::~CHtmlTopicText() { CloseDocument(); }

int CHtmlTopicText::OpenDocument(const char* path, HWND window, DWORD flags, int* unused1, const char* unused2,
                                 CWnd* unused3) {
  (void)unused1;
  (void)unused2;
  (void)unused3;
  if (!path)
    return 0;
  try {
    // The caller is meant to close first; a document still open is not
    // reachable after this call, so it goes now rather than leak.
    CloseDocument();
    m_dwFlags = flags;
    auto document = std::make_unique<CHtmlFileEx>(path);
    // Attributes read with the tokens go into the page's own storage; the
    // analysis would otherwise read those of every tag one by one onto the
    // heap, which takes more memory and time than reading them all at once.
    document->Parse(CHtmlPack::emParseAttributes);
    if (!document->Analyse())
      return 0;
    AttachDocument(document.release(), path, flags);
    m_hWnd = (window && IsWindow(window)) ? window : nullptr;
    return 1;
  } catch (...) {
    CloseDocument();
    return 0;
  }
}

int CHtmlTopicText::AttachDocument(CHtmlFileEx* pDocument, const char* path, DWORD flags) {
  if (pDocument != m_pDocument)
    CloseDocument();
  m_pDocument = pDocument;
  m_dwFlags = flags;
  m_hWnd = nullptr;
  m_strFileName.Empty();
  if (!pDocument)
    return 0;
  try {
    if (path) {
      char name[kMaxFname];
      char ext[kMaxExt];
      SplitPath(path, nullptr, nullptr, name, ext);
      m_strFileName = CString(name) + ext;
    }
  } catch (...) {
  }
  return 1;
}

int CHtmlTopicText::GetFirstTopicText(CString& text, CString& second, CString& third, CStringArray* keywords) {
  (void)text;
  (void)second;
  (void)third;
  (void)keywords;
  return 0;
}

int CHtmlTopicText::GetFirstTopicText(CString& text, CString& second, CStringArray* keywords) {
  (void)second;  // left as the caller gave it
  if (!m_pDocument)
    return 0;
  try {
    const int option = (m_dwFlags & 1) ? emPureTextOneLine : emPureTextLineBreaks;
    if (m_hWnd)
      text = m_pDocument->GetPureText(option, m_hWnd, m_strFileName);
    else
      text = m_pDocument->GetPureText(option, nullptr, nullptr);
    return GetTopicKeywords(keywords);
  } catch (...) {
    return 0;
  }
}

int CHtmlTopicText::GetTopicKeywords(CStringArray* keywords) {
  if (!m_pDocument)
    return 0;
  try {
    if (keywords) {
      keywords->RemoveAll();
      GetKeywordFromMetaTag(keywords);
    }
    return 1;
  } catch (...) {
    return 0;
  }
}

int CHtmlTopicText::GetNextTopicText(CString& text, CString& second, CString& third, CStringArray* keywords) {
  (void)text;
  (void)second;
  (void)third;
  (void)keywords;
  return 0;
}

int CHtmlTopicText::GetNextTopicText(CString& text, CString& second, CStringArray* keywords) {
  (void)text;
  (void)second;
  (void)keywords;
  return 0;
}

int CHtmlTopicText::CloseDocument() {
  delete m_pDocument;
  m_pDocument = nullptr;
  return 1;
}

int CHtmlTopicText::GetKeywordFromMetaTag(CStringArray* keywords) {
  if (!m_pDocument)
    return 0;
  const CHtmlFileEx::CPositionArray& metas = m_pDocument->GetMetaPositions();
  CHtmlTokenList& list = *m_pDocument->GetTokenList();
  for (int i = 0; i < metas.GetSize(); ++i) {
    CHtmlTagItem* tag = LiveTagAt(list, metas[i]);
    if (!tag)
      continue;
    const char* name = tag->GetAttributeValue("name");
    const char* content = tag->GetAttributeValue("content");
    if (name && content && MbsEqualNoCase(name, "keywords"))
      AppendKeyword(keywords, content);
  }
  return 0;
}

int CHtmlTopicText::AppendKeyword(CStringArray* keywords, const char* text) {
  if (!keywords || !text || !*text)
    return 0;
  CString list(text);
  list += ',';
  int start = 0;
  for (int comma = list.Find(',', start); comma >= 0; comma = list.Find(',', start)) {
    CString keyword = list.Mid(start, comma - start);
    TrimLeftAndRight(keyword);
    keywords->Add(keyword);
    start = comma + 1;
  }
  return 1;
}

}  // namespace telvanix

extern "C" TELVANIX_API telvanix::CHtmlTopicTextParser* GetTopicTextParser() {
  return new (std::nothrow) telvanix::CHtmlTopicText();
}

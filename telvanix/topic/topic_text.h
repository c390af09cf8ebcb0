// The pull interface a search indexer uses to read topic pages: the exported
// factory GetTopicTextParser makes a CHtmlTopicText, which opens a page as a
// topic document, yields its plain text and the keywords its META tags
// declare, and closes it. A page yields exactly one text.
#pragma once

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CHtmlFileEx;

// The host deletes a parser through this base.
class TELVANIX_API CHtmlTopicTextParser {
 public:
  virtual ~CHtmlTopicTextParser();
  // path, host window, flags (bit 0 set: the text on one line), three unused
  // arguments. 1 when the page was loaded and analysed.
  virtual int OpenDocument(const char* path, HWND window, DWORD flags, int* unused1, const char* unused2,
                           CWnd* unused3) = 0;
  virtual int GetFirstTopicText(CString& text, CString& second, CString& third, CStringArray* keywords) = 0;
  // The page's text; second is left as it is; keywords (when given) are
  // emptied and filled from the META keywords. 0 when no page is open.
  virtual int GetFirstTopicText(CString& text, CString& second, CStringArray* keywords) = 0;
  virtual int GetNextTopicText(CString& text, CString& second, CString& third, CStringArray* keywords) = 0;
  virtual int GetNextTopicText(CString& text, CString& second, CStringArray* keywords) = 0;
  virtual int CloseDocument() = 0;
};

class TELVANIX_API CHtmlTopicText : public CHtmlTopicTextParser {
 public:
  CHtmlTopicText();
  // The document is then shared as it is (the host never copies parsers).
  CHtmlTopicText(const CHtmlTopicText& other);
  CHtmlTopicText& operator=(const CHtmlTopicText& other);
  // Closes the document first.
  ~CHtmlTopicText() override;

  // 0 for a null path or a page that cannot be loaded and analysed (missing,
  // empty, unreadable); the window is kept only when IsWindow accepts it.
  int OpenDocument(const char* path, HWND window, DWORD flags, int* unused1, const char* unused2,
                   CWnd* unused3) override;
  // OpenDocument for a page the host has already read and analysed
  // (CHtmlFileEx::Analyse): the parser takes it over and deletes it on
  // CloseDocument. `path` names the page as in OpenDocument. 0 for a null
  // document.
  int AttachDocument(CHtmlFileEx* pDocument, const char* path, DWORD flags);
  // Does nothing: 0.
  int GetFirstTopicText(CString& text, CString& second, CString& third, CStringArray* keywords) override;
  int GetFirstTopicText(CString& text, CString& second, CStringArray* keywords) override;
  // A page has one text only: 0.
  int GetNextTopicText(CString& text, CString& second, CString& third, CStringArray* keywords) override;
  int GetNextTopicText(CString& text, CString& second, CStringArray* keywords) override;
  // Deletes the document if any. 1.
  int CloseDocument() override;

  // Host accessors: the open document (null when closed), the page's file
  // name with extension, the kept window (null when none) and the flags.
  CHtmlFileEx* GetDocument() const { return m_pDocument; }
  const CString& GetFileName() const { return m_strFileName; }
  HWND GetWindow() const { return m_hWnd; }
  DWORD GetFlags() const { return m_dwFlags; }
  // The META keywords alone, without the text: keywords is emptied and
  // filled as GetFirstTopicText fills it. 0 when no page is open.
  int GetTopicKeywords(CStringArray* keywords);

 private:
  // Keywords of every META named "keywords" (any case) with a "content", in
  // document order. Always 0.
  int GetKeywordFromMetaTag(CStringArray* keywords);
  // Appends the trimmed pieces between commas, empty ones included. 0 for
  // an empty text.
  int AppendKeyword(CStringArray* keywords, const char* text);

  CHtmlFileEx* m_pDocument;
  CString m_strFileName;
  HWND m_hWnd;
  DWORD m_dwFlags;
};

}  // namespace telvanix

// A new parser the caller owns and deletes; null when memory runs out.
extern "C" TELVANIX_API telvanix::CHtmlTopicTextParser* GetTopicTextParser();

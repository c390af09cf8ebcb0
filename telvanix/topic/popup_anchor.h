// CHtmlPopupAnchor: one popup of a topic page, a link or object that opens a
// small box with a topic's body or a line of text instead of jumping. It
// tells the kinds apart (the popup object, links that call the popup script,
// links marked by class) and holds what was found: the target or text, the
// words of the link and where it stands. CPopupsSupport finds, makes and
// removes them.
#pragma once

#include <cstdint>

#include "telvanix/platform/export.h"
#include "telvanix/platform/string_types.h"
#include "telvanix/platform/types.h"

namespace telvanix {

class CHtmlFileEx;

class TELVANIX_API CHtmlPopupAnchor {
 public:
  enum EmPopupKind : int32_t {
    emPopupNone = 0,
    emPopupObjectText = 1,   // popup OBJECT with a "Text" parameter
    emPopupObjectTopic = 2,  // popup OBJECT with an "Item1" topic parameter
    emPopupScriptTopic = 3,  // href "javascript:telvanixPopup('topic.htm#name')"
    emPopupScriptText = 4,   // href "javascript:telvanixPopupText('text')"
    emPopupClassTopic = 5,   // A of class "telvanix-popup": its "href" or "data-popup-topic"
    emPopupClassText = 6     // A of class "telvanix-popup" with "data-popup-text"
  };

  // The class that marks a popup link, and the script's two functions.
  static const char ms_szPopupClass[];
  static const char ms_szTopicFunction[];
  static const char ms_szTextFunction[];

  CHtmlPopupAnchor() { Default(); }

  void Default();
  int IsDefault() const { return m_nKind == emPopupNone; }

  // Recognises the tag at pos (an A or OBJECT start tag of doc): 1 and the
  // record filled when it is a popup, else 0 and the record reset. A
  // "javascript:" link whose call is not exactly one of the script's two
  // functions with one string is no popup. `line` is the line the tag
  // starts on, recorded as given.
  int Analyse(CHtmlFileEx& doc, POSITION pos, int line);

  // Reads "javascript:NAME('...')" for the script's two functions: 1 with
  // the kind and the unescaped argument (bytes of the page's code page),
  // 0 for anything else (other code, a second argument, a bad escape, an
  // empty argument). The text is as written in the page, not decoded.
  static int ParseScriptCall(const char* href, EmPopupKind& kind, CString& argument);
  // The call that ParseScriptCall reads back as (kind, argument).
  static CString MakeScriptCall(EmPopupKind kind, const char* argument);

  // "object-text", "object-topic", "script-topic", "script-text",
  // "class-topic", "class-text"; "" for none.
  static const char* GetKindName(EmPopupKind kind);
  static int IsTextKind(EmPopupKind kind) {
    return kind == emPopupObjectText || kind == emPopupScriptText || kind == emPopupClassText;
  }

  EmPopupKind GetKind() const { return m_nKind; }
  // Topic kinds: the target as written ("topic.htm#name"), references
  // decoded; its file part and its bookmark (after "#"; "" when none).
  const CString& GetTarget() const { return m_strTarget; }
  CString GetTopic() const;
  CString GetBookmark() const;
  // Text kinds: the text the box shows, references decoded.
  const CString& GetText() const { return m_strText; }
  // The words of the link (an object's "Button" caption after "Text:"),
  // references decoded and blanks collapsed.
  const CString& GetLinkText() const { return m_strLinkText; }
  // The same two as written (character references not decoded): the value
  // the target or text was read from (for script kinds the whole "href"),
  // and the link's words with blanks collapsed. Decoding is lossy for a
  // character the page's code page cannot hold; a host that reads pages
  // as Unicode decodes these itself.
  const CString& GetWrittenValue() const { return m_strWrittenValue; }
  const CString& GetWrittenLinkText() const { return m_strWrittenLinkText; }
  // The start tag, and the end tag that closes it (null when none).
  POSITION GetStartPosition() const { return m_posStart; }
  POSITION GetEndPosition() const { return m_posEnd; }
  int GetLine() const { return m_nLine; }

 private:
  int AnalyseLink(CHtmlFileEx& doc, POSITION pos);
  int AnalyseObject(CHtmlFileEx& doc, POSITION pos);

  EmPopupKind m_nKind;
  CString m_strTarget;
  CString m_strText;
  CString m_strLinkText;
  CString m_strWrittenValue;
  CString m_strWrittenLinkText;
  POSITION m_posStart;
  POSITION m_posEnd;
  int m_nLine;
};

}  // namespace telvanix

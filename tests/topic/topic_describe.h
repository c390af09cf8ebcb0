// A topic page held in memory, and the describe dump of a topic document:
// every getter and enumerator a host calls on a page, one line each in a
// fixed order. The golden topic cases
// compare it with their expected files; the concurrency test compares a
// threaded dump with the single-threaded one.
#pragma once

#include <cstdio>
#include <sstream>
#include <string>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/topic/html_file_ex.h"
#include "telvanix/topic/pure_text.h"
#include "telvanix/topic/topic_text.h"

namespace telvanix::test {

// A topic document over page text held in memory.
class TopicPage {
 public:
  explicit TopicPage(const std::string& html, const char* path = "/help/topic.htm")
      : m_bytes(reinterpret_cast<const unsigned char*>(html.data()), static_cast<int>(html.size())),
        m_doc(m_bytes, path) {}

  CHtmlFileEx& doc() { return m_doc; }
  CHtmlFileEx* operator->() { return &m_doc; }

  // The page as a save with the given flag writes it.
  std::string Saved(CHtmlPack::EmSaveFlag flag = CHtmlPack::emSave) {
    CByteString out;
    if (!m_doc.Save(&out, flag))
      return "<save failed>";
    if (out.GetLength() == 0)
      return std::string();
    return std::string(static_cast<const char*>(out), static_cast<size_t>(out.GetLength()));
  }

 private:
  CByteString m_bytes;
  CHtmlFileEx m_doc;
};

// Text with control bytes shown, so a line of the dump stays one line.
inline std::string Shown(const std::string& text) {
  std::string out;
  for (unsigned char c : text) {
    if (c == '\r') out += "\\r";
    else if (c == '\n') out += "\\n";
    else if (c == '\t') out += "\\t";
    else if (c < 0x20 || c == 0x7F) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
      out += hex;
    } else out += static_cast<char>(c);
  }
  return out;
}

inline std::string Shown(const char* text) { return text ? Shown(std::string(text)) : "(null)"; }
inline std::string Shown(const CString& text) { return Shown(text.str()); }

// "result [text]" of a getter.
inline std::string Got(int result, const CString& text) { return std::to_string(result) + " [" + Shown(text) + "]"; }

// Each item in brackets; lists with positions or with indices.
template <typename List>
std::string Listed(const List& list) {
  std::string out;
  if constexpr (requires { list.GetHeadPosition(); }) {
    for (POSITION pos = list.GetHeadPosition(); pos;) out += "[" + Shown(list.GetNext(pos)) + "]";
  } else {
    for (int i = 0; i < list.GetSize(); ++i) out += "[" + Shown(list[i]) + "]";
  }
  return out;
}

// The plain text of a page, CR LF shown as "\n" and any other line end marked.
inline std::string PlainText(const std::string& html, int option = emPureTextLineBreaks) {
  CByteString bytes(reinterpret_cast<const unsigned char*>(html.data()), static_cast<int>(html.size()));
  CHtmlFileEx doc(bytes, "/help/topic.htm");
  const std::string text = doc.GetPureText(option, nullptr, nullptr).str();
  std::string shown;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool crlf = text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    shown += crlf ? "\n" : text[i] == '\r' || text[i] == '\n' ? "<bare line end>" : std::string(1, text[i]);
    i += crlf;
  }
  return shown;
}

// Everything an enumerator pair gives: up to a null pointer or an empty string.
inline bool Given(const char* s) { return s != nullptr; }
inline bool Given(const CString& s) { return !s.IsEmpty(); }
template <typename First, typename Next>
std::string Walk(CHtmlFileEx& doc, First first, Next next) {
  unsigned int cursor = 0;
  std::string out;
  for (auto s = (doc.*first)(cursor); Given(s) && out.size() < 100000; s = (doc.*next)(cursor))
    out += "[" + Shown(s) + "]";
  return out;
}

inline std::string TagAt(CHtmlFileEx& doc, POSITION pos) {
  CHtmlTokenItem* token = pos ? doc.GetTokenList()->GetTokenItem(pos) : nullptr;
  return token ? Shown(token->GetPrintableText(CHtmlTokenItem::emTextTokenOnly)) : "-";
}

inline std::string DescribeTopic(CHtmlFileEx& doc) {
  using D = CHtmlFileEx;
  std::ostringstream out;
  // Getters that fail must empty their output, so it starts stale.
  CString text("(stale)");
  int number = 0;
  out << "analysed " << doc.IsAnalysed() << "\n";
  out << "html " << TagAt(doc, doc.GetHtmlStartPosition()) << " " << TagAt(doc, doc.GetHtmlEndPosition()) << "\n"
      << "head " << TagAt(doc, doc.GetHeadStartPosition()) << " " << TagAt(doc, doc.GetHeadEndPosition()) << "\n"
      << "body " << TagAt(doc, doc.GetBodyStartPosition()) << " " << TagAt(doc, doc.GetBodyEndPosition()) << "\n"
      << "frameset " << TagAt(doc, doc.GetFramesetStartPosition()) << " "
      << TagAt(doc, doc.GetFramesetEndPosition()) << "\n"
      << "title tag " << TagAt(doc, doc.GetTitlePosition()) << " base " << TagAt(doc, doc.GetBasePosition())
      << " sheet link " << TagAt(doc, doc.GetStyleSheetLinkPosition()) << " bgsound "
      << TagAt(doc, doc.GetBgSoundPosition()) << "\n";
  out << "positions links " << doc.GetLinkTagPositions().GetSize() << " anchors " << doc.GetAnchorPositions().GetSize()
      << " named " << doc.GetNamedAnchorPositions().GetSize() << " maps " << doc.GetMapTagPositions().GetSize()
      << " images " << doc.GetImagePositions().GetSize() << " objects " << doc.GetObjectPositions().GetSize()
      << " embeds " << doc.GetEmbedPositions().GetSize() << " frames " << doc.GetFramePositions().GetSize()
      << " iframes " << doc.GetIFramePositions().GetSize() << " scripts " << doc.GetScriptPositions().GetSize()
      << " metas " << doc.GetMetaPositions().GetSize() << " styles " << doc.GetStylePositions().GetSize()
      << " comments " << doc.GetCommentPositions().GetSize() << " styled " << doc.GetStyledTagPositions().GetSize()
      << " bookmark tags " << doc.GetBookmarkTagPositions().GetSize() << "\n";

  out << "title " << Got(doc.GetHtmlTitle(text), text) << " utf8 [" << Shown(doc.GetHtmlTitleUtf8()) << "]\n";
  out << "colors";
  for (int which = D::emColorLink; which <= D::emColorText; ++which) {
    COLORREF color = 0;
    const int result = doc.GetColor(static_cast<D::EmColor>(which), color);
    char hex[16];
    std::snprintf(hex, sizeof hex, "%06X", static_cast<unsigned>(color));
    out << " " << result << ":" << (result ? hex : "-");
  }
  out << "\nwatermark " << doc.GetWaterMark(number) << " " << number;
  out << "\nbackground " << Got(doc.GetBackgroundImage(text), text);
  number = 0;
  text = CString();  // a missing sound leaves the name as it was
  const int sound = doc.GetBackgroundSound(text, number);
  out << "\nsound " << Got(sound, text) << " loop " << number;
  out << "\nsheet " << Got(doc.GetExternalStyleSheetFileName(text), text);
  // List getters append to what the host passes in, or replace it: "(kept)" shows which.
  CString kept("(kept)");
  D::CStringArrayEx sheets, k, a;
  sheets.Add(kept);
  k.Add(kept);
  a.Add(kept);
  out << "\nsheets " << doc.GetExternalStyleSheetFileNameEx(sheets) << " " << Listed(sheets);

  out << "\nscripts " << Walk(doc, &D::GetFirstScriptSource, &D::GetNextScriptSource);
  out << "\nimages " << Walk(doc, &D::GetFirstImage, &D::GetNextImage);
  out << "\nbaggage images ";
  unsigned int index = 0, stage = 0;
  for (CString s = doc.GetFirstBaggageImage(index, stage); !s.IsEmpty(); s = doc.GetNextBaggageImage(index, stage))
    out << "[" << Shown(s) << " @" << (stage >> 16) << "." << (stage & 0xFFFF) << "]";
  out << "\ninline style baggage " << Listed(doc.GetInlineStyleBaggage());
  out << "\nembedded style baggage " << Listed(doc.GetEmbeddedStyleBaggage());
  out << "\nspecial tag baggage " << Listed(doc.GetSpecialTagBaggage());
  out << "\nmultimedia " << Walk(doc, &D::GetFirstMultimediaFile, &D::GetNextMultimediaFile);
  out << "\nrelated topics " << Walk(doc, &D::GetFirstRelatedTopic, &D::GetNextRelatedTopic);
  out << "\nhhctrl images " << Walk(doc, &D::GetFirstHhctrlBaggageImage, &D::GetNextHhctrlBaggageImage);
  out << "\ncontents or index " << Walk(doc, &D::GetFirstContentOrIndex, &D::GetNextContentOrIndex);
  out << "\nanchors ";
  for (const char* s = doc.GetFirstAnchorHref(index); s; s = doc.GetNextAnchorHref(index))
    out << "[" << Shown(s) << " =" << static_cast<int>(doc.GetAnchorHrefType(s))
        << (doc.IsJavaScriptAnchorHref(s) ? " script" : "") << "]";
  out << "\nbookmarks " << Walk(doc, &D::GetFirstBookmark, &D::GetNextBookmark);
  out << "\nframes " << Walk(doc, &D::GetFirstFrameSource, &D::GetNextFrameSource);
  const D::CPositionArray& objects = doc.GetObjectPositions();
  for (int i = 0; i < objects.GetSize(); ++i) {
    CHtmlTagItem* tag = doc.GetTokenList()->GetTagItem(objects[i]);
    out << "\nobject " << i << (doc.IsHhctrlActivexObject(tag) ? " hhctrl" : "")
        << (doc.IsKeywordActiveObject(tag) ? " keyword" : "") << (doc.IsPopupActivexObject(tag) ? " popup" : "")
        << " command " << static_cast<int>(doc.GetHhctrlCommandType(objects[i])) << " player "
        << doc.IsMultimediaActivexObject(tag, objects[i]) << " [" << Shown(doc.GetMultimediaFileOfObject(objects[i]))
        << "]";
  }
  out << "\nkeywords K " << doc.GetKeywordK(k) << " " << Listed(k);
  out << "\nkeywords A " << doc.GetKeywordA(a) << " " << Listed(a);

  out << "\nauthor " << Got(doc.GetTopicAuthor(text), text);
  out << "\nstatus " << Got(doc.GetTopicStatus(text), text);
  number = 0;
  out << "\npriority " << doc.GetTopicPriority(number) << " " << number;
  number = 0;
  out << "\nestimate " << doc.GetTopicTimeEstimate(number) << " " << number;
  out << "\nid " << Got(doc.GetTopicId(text), text);
  out << "\ncomment " << Got(doc.GetTopicComment(text), text);
  out << "\nsds " << Got(doc.GetTopicSourceDigitalSignature(text), text);
  CStringList checks;
  checks.AddTail(kept);
  out << "\nchecklist " << doc.GetTopicCheckList(checks) << " " << Listed(checks);
  out << "\nbuild tags " << Got(doc.GetTopicBuildTags(text), text);
  out << "\ninline build tags ";
  POSITION styled = nullptr;
  for (CString s = doc.GetFirstInlineBuildTags(index, &styled); !s.IsEmpty();
       s = doc.GetNextInlineBuildTags(index, &styled))
    out << "[" << Shown(s) << " on " << TagAt(doc, styled) << "]";
  out << "\nbody html " << Got(doc.GetBodyHtmlText(text), text);
  out << "\npure text [" << Shown(doc.GetPureText(emPureTextLineBreaks, nullptr, nullptr)) << "]";
  out << "\none line [" << Shown(doc.GetPureText(emPureTextOneLine, nullptr, nullptr)) << "]";
  out << "\nnamed [" << Shown(doc.GetPureText(emPureTextLineBreaks, nullptr, "untitled")) << "]";
  out << "\nutf8 text [" << Shown(doc.GetPureTextUtf8(emPureTextLineBreaks)) << "]";
  out << "\nutf8 one line [" << Shown(doc.GetPureTextUtf8(emPureTextOneLine)) << "]";
  out << "\nmodified " << doc.IsTokenListModified() << "\n";
  return out.str();
}

// What an indexer reads from the page file through the topic text parser,
// then the text with flag bit 0 (one line).
inline std::string DescribeTopicText(const std::string& path) {
  CHtmlTopicText parser;
  std::string out = "parser open " + std::to_string(parser.OpenDocument(path.c_str(), nullptr, 0, nullptr,
                                                                         nullptr, nullptr));
  CString text, second;
  CStringArray keywords;
  const int first = parser.GetFirstTopicText(text, second, &keywords);
  out += " text " + Got(first, text) + " keywords " + Listed(keywords);
  CStringArray alone;
  out += " alone " + std::to_string(parser.GetTopicKeywords(&alone)) + " " + Listed(alone);
  parser.OpenDocument(path.c_str(), nullptr, 3, nullptr, nullptr, nullptr);
  text = CString();
  out += " flags " + std::to_string(parser.GetFlags()) + " " + Got(parser.GetFirstTopicText(text, second, nullptr), text);
  return out + "\n";
}

}  // namespace telvanix::test

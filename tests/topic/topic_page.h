// A topic document over page text held in memory, for the topic tests.
#pragma once

#include <initializer_list>
#include <string>

#include "telvanix/foundation/byte_string.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::test {

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

// A getter's text, or "<none>" when it reports 0.
template <typename Getter>
std::string Text(CHtmlFileEx& doc, Getter getter) {
  CString text;
  return (doc.*getter)(text) ? text.str() : "<none>";
}

// The list's items, each followed by ";".
inline std::string Join(const CHtmlFileEx::CStringArrayEx& list) {
  std::string out;
  for (int i = 0; i < list.GetSize(); ++i)
    out += list[i].str() + ";";
  return out;
}

// Everything an enumerator pair gives, each followed by ";": up to a null
// pointer or an empty string.
inline bool Given(const char* s) { return s != nullptr; }
inline bool Given(const CString& s) { return !s.IsEmpty(); }
template <typename First, typename Next>
std::string Walk(CHtmlFileEx& doc, First first, Next next) {
  unsigned int cursor = 0;
  std::string out;
  for (auto s = (doc.*first)(cursor); Given(s) && out.size() < 100000; s = (doc.*next)(cursor))
    out += std::string(s) + ";";
  return out;
}

// True when the pieces appear in the text in this order.
inline bool InOrder(const std::string& text, std::initializer_list<const char*> pieces) {
  size_t from = 0;
  for (const char* piece : pieces) {
    const size_t at = text.find(piece, from);
    if (at == std::string::npos)
      return false;
    from = at + 1;
  }
  return true;
}

}  // namespace telvanix::test

// A topic document over page text held in memory, for the topic tests.
#pragma once

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

}  // namespace telvanix::test

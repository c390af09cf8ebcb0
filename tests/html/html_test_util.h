// Small helpers shared by the html tests: byte views of strings, a page
// read into a pack, and an object that counts its own deletion.
#pragma once

#include <cstdint>
#include <string>

#include "telvanix/foundation/rgl_object.h"
#include "telvanix/html/html_pack.h"

namespace telvanix::test {

inline const unsigned char* U(const char* text) { return reinterpret_cast<const unsigned char*>(text); }

inline std::string Str(const CString& s) {
  return std::string(static_cast<const char*>(s), static_cast<std::size_t>(s.GetLength()));
}

inline std::string Bytes(const CByteString& b) {
  return b.GetLength() ? std::string(reinterpret_cast<const char*>(b.GetContent()), static_cast<std::size_t>(b.GetLength()))
                       : std::string();
}

inline CByteString Buffer(const std::string& text) {
  CByteString b;
  if (!text.empty()) b.Assign(U(text.data()), static_cast<int>(text.size()));
  return b;
}

// Carriage returns shown as "\r", so that expected files stay plain
// line-feed text.
inline std::string ShowCarriageReturns(const std::string& s) {
  std::string out;
  for (char c : s) out += c == '\r' ? std::string("\\r") : std::string(1, c);
  return out;
}

// A buffer pack over its own copy of the page, parsed to the given level.
struct ParsedPack {
  explicit ParsedPack(const std::string& text, int nLevel) : source(Buffer(text)), pack(source, nullptr) {
    parsed = pack.Parse(static_cast<CHtmlPack::EmParseFlag>(nLevel));
  }
  std::string Saved(int nFlag = 2) {
    CByteString out;
    return pack.Save(&out, static_cast<CHtmlPack::EmSaveFlag>(nFlag)) ? Bytes(out) : "(save failed)";
  }
  CHtmlTokenList* List() { return pack.GetTokenList(); }

  CByteString source;
  CHtmlPack pack;
  int parsed = 0;
};

// Counts its own deletions, to see who deletes what a host hangs on nodes.
struct CountedObject : CRglObject {
  explicit CountedObject(int* pCounter) : m_pCounter(pCounter) {}
  ~CountedObject() override { ++*m_pCounter; }
  int* m_pCounter;
};

// A distinct, never dereferenced position for nodes and stack items.
inline POSITION FakePos(std::uintptr_t n) { return reinterpret_cast<POSITION>(n * 16); }

}  // namespace telvanix::test

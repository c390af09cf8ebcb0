// The host framework's text types: CString (8-bit text in the active code
// page), CStringList (a positioned list) and CStringArray. Results handed to
// a host are of these types. Nothing here throws except on memory exhaustion.
#pragma once

#include <cstdarg>
#include <string>
#include <utility>
#include <vector>

#include "telvanix/platform/types.h"

namespace telvanix {

class TELVANIX_API CString {
 public:
  CString() = default;
  CString(const char* text);  // null gives the empty string
  CString(const char* text, int length);
  CString(char ch, int count = 1);
  CString(const std::string& text) : m_str(text) {}
  CString(std::string&& text) noexcept : m_str(std::move(text)) {}
  CString(const CString&) = default;
  CString(CString&&) noexcept = default;
  CString& operator=(const CString&) = default;
  CString& operator=(CString&&) noexcept = default;
  CString& operator=(const char* text);
  CString& operator=(char ch);

  int GetLength() const { return static_cast<int>(m_str.size()); }
  bool IsEmpty() const { return m_str.empty(); }
  void Empty() { m_str.clear(); }
  operator const char*() const { return m_str.c_str(); }
  const char* GetString() const { return m_str.c_str(); }
  const std::string& str() const { return m_str; }

  char GetAt(int index) const { return m_str[static_cast<size_t>(index)]; }
  char operator[](int index) const { return m_str[static_cast<size_t>(index)]; }
  void SetAt(int index, char ch) { m_str[static_cast<size_t>(index)] = ch; }

  CString& operator+=(const CString& other) { m_str += other.m_str; return *this; }
  CString& operator+=(const char* text) { if (text) m_str += text; return *this; }
  CString& operator+=(char ch) { m_str += ch; return *this; }
  friend CString operator+(const CString& a, const CString& b) { return CString(a.m_str + b.m_str); }
  friend CString operator+(const CString& a, const char* b) { CString r(a); r += b; return r; }
  friend CString operator+(const char* a, const CString& b) { CString r(a); r += b; return r; }
  friend CString operator+(const CString& a, char b) { CString r(a); r += b; return r; }
  friend CString operator+(char a, const CString& b) { CString r(a); r += b; return r; }

  friend bool operator==(const CString& a, const CString& b) { return a.m_str == b.m_str; }
  friend bool operator==(const CString& a, const char* b) { return a.Compare(b) == 0; }
  friend bool operator==(const char* a, const CString& b) { return b.Compare(a) == 0; }
  friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
  friend bool operator!=(const CString& a, const char* b) { return !(a == b); }
  friend bool operator!=(const char* a, const CString& b) { return !(b == a); }
  friend bool operator<(const CString& a, const CString& b) { return a.m_str < b.m_str; }
  friend bool operator<(const CString& a, const char* b) { return a.Compare(b) < 0; }

  // strcmp-style results: negative, 0 or positive.
  int Compare(const char* text) const;
  int CompareNoCase(const char* text) const;

  // Index of the first match at or after `start`, or -1.
  int Find(char ch, int start = 0) const;
  int Find(const char* sub, int start = 0) const;
  int ReverseFind(char ch) const;
  int FindOneOf(const char* chars) const;

  CString Mid(int first) const;
  CString Mid(int first, int count) const;
  CString Left(int count) const;
  CString Right(int count) const;

  CString& MakeLower();
  CString& MakeUpper();
  CString& MakeReverse();
  CString& TrimLeft();
  CString& TrimLeft(char ch);
  CString& TrimLeft(const char* chars);
  CString& TrimRight();
  CString& TrimRight(char ch);
  CString& TrimRight(const char* chars);
  CString& Trim() { TrimRight(); return TrimLeft(); }
  CString& Trim(const char* chars) { TrimRight(chars); return TrimLeft(chars); }

  // Number of replacements / removals made.
  int Replace(char from, char to);
  int Replace(const char* from, const char* to);
  int Remove(char ch);
  int Insert(int index, const char* text);
  int Insert(int index, char ch);
  int Delete(int index, int count = 1);

  void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void FormatV(const char* format, va_list args);
  void AppendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));

  // A writable buffer of at least `minLength` chars (plus a terminating zero);
  // ReleaseBuffer(-1) takes the length from the terminating zero.
  char* GetBuffer(int minLength = 0);
  char* GetBufferSetLength(int length);
  void ReleaseBuffer(int newLength = -1);

 private:
  std::string m_str;
};

class TELVANIX_API CStringList {
 public:
  CStringList() = default;
  CStringList(const CStringList& other);
  CStringList& operator=(const CStringList& other);
  ~CStringList() { RemoveAll(); }

  POSITION AddHead(const CString& value);
  POSITION AddTail(const CString& value);
  void AddTail(const CStringList& other);
  POSITION InsertBefore(POSITION pos, const CString& value);
  POSITION InsertAfter(POSITION pos, const CString& value);

  POSITION GetHeadPosition() const;
  POSITION GetTailPosition() const;
  CString& GetNext(POSITION& pos);
  const CString& GetNext(POSITION& pos) const;
  CString& GetPrev(POSITION& pos);
  const CString& GetPrev(POSITION& pos) const;
  CString& GetAt(POSITION pos);
  const CString& GetAt(POSITION pos) const;
  void SetAt(POSITION pos, const CString& value);
  CString& GetHead();
  const CString& GetHead() const;
  CString& GetTail();
  const CString& GetTail() const;
  CString RemoveHead();
  CString RemoveTail();
  int GetCount() const { return m_count; }
  int GetSize() const { return m_count; }
  bool IsEmpty() const { return m_count == 0; }
  void RemoveAll();
  void RemoveAt(POSITION pos);
  // Position of the first exact match after `startAfter` (or from the head), or null.
  POSITION Find(const char* value, POSITION startAfter = nullptr) const;
  POSITION FindIndex(int index) const;

 private:
  struct Node {
    CString value;
    Node* prev = nullptr;
    Node* next = nullptr;
  };
  static Node* N(POSITION pos) { return reinterpret_cast<Node*>(pos); }
  static POSITION P(const Node* node) { return reinterpret_cast<POSITION>(const_cast<Node*>(node)); }
  POSITION Link(Node* node, Node* before);
  Node* m_head = nullptr;
  Node* m_tail = nullptr;
  int m_count = 0;
};

class TELVANIX_API CStringArray {
 public:
  int Add(const CString& value) { m_items.push_back(value); return GetSize() - 1; }
  int GetSize() const { return static_cast<int>(m_items.size()); }
  int GetCount() const { return GetSize(); }
  int GetUpperBound() const { return GetSize() - 1; }
  bool IsEmpty() const { return m_items.empty(); }
  const CString& GetAt(int index) const { return m_items[static_cast<size_t>(index)]; }
  CString& ElementAt(int index) { return m_items[static_cast<size_t>(index)]; }
  void SetAt(int index, const CString& value) { m_items[static_cast<size_t>(index)] = value; }
  void SetAtGrow(int index, const CString& value);
  CString& operator[](int index) { return m_items[static_cast<size_t>(index)]; }
  const CString& operator[](int index) const { return m_items[static_cast<size_t>(index)]; }
  void RemoveAll() { m_items.clear(); }
  void RemoveAt(int index, int count = 1);
  void InsertAt(int index, const CString& value, int count = 1);
  void SetSize(int size);
  void Append(const CStringArray& other) { m_items.insert(m_items.end(), other.m_items.begin(), other.m_items.end()); }
  void Copy(const CStringArray& other) { m_items = other.m_items; }

 private:
  std::vector<CString> m_items;
};

}  // namespace telvanix

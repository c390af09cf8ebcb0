#include "telvanix/platform/string_types.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <strings.h>

namespace telvanix {

namespace {
bool IsBlank(char ch) { return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n' || ch == '\v' || ch == '\f'; }
}  // namespace

CString::CString(const char* text) {
  if (text) m_str = text;
}

CString::CString(const char* text, int length) {
  if (text && length > 0) m_str.assign(text, static_cast<size_t>(length));
}

CString::CString(char ch, int count) {
  if (count > 0) m_str.assign(static_cast<size_t>(count), ch);
}

CString& CString::operator=(const char* text) {
  if (!text)
    m_str.clear();
  else if (text < m_str.data() || text > m_str.data() + m_str.size())
    m_str = text;
  else
    m_str = std::string(text);  // text aliases our own buffer
  return *this;
}

CString& CString::operator=(char ch) {
  m_str.assign(1, ch);
  return *this;
}

int CString::Compare(const char* text) const { return std::strcmp(m_str.c_str(), text ? text : ""); }

int CString::CompareNoCase(const char* text) const { return ::strcasecmp(m_str.c_str(), text ? text : ""); }

int CString::Find(char ch, int start) const {
  if (start < 0 || start >= GetLength()) return -1;
  size_t at = m_str.find(ch, static_cast<size_t>(start));
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::Find(const char* sub, int start) const {
  if (!sub || start < 0 || start > GetLength()) return -1;
  size_t at = m_str.find(sub, static_cast<size_t>(start));
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::ReverseFind(char ch) const {
  size_t at = m_str.rfind(ch);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::FindOneOf(const char* chars) const {
  if (!chars) return -1;
  size_t at = m_str.find_first_of(chars);
  return at == std::string::npos ? -1 : static_cast<int>(at);
}

CString CString::Mid(int first) const { return Mid(first, GetLength() - (first < 0 ? 0 : first)); }

CString CString::Mid(int first, int count) const {
  if (first < 0) first = 0;
  if (count < 0) count = 0;
  if (first >= GetLength()) return CString();
  if (count > GetLength() - first) count = GetLength() - first;
  return CString(m_str.substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CString CString::Left(int count) const { return Mid(0, count); }

CString CString::Right(int count) const {
  if (count <= 0) return CString();
  if (count >= GetLength()) return *this;
  return CString(m_str.substr(m_str.size() - static_cast<size_t>(count)));
}

CString& CString::MakeLower() {
  for (char& c : m_str) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return *this;
}

CString& CString::MakeUpper() {
  for (char& c : m_str) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return *this;
}

CString& CString::MakeReverse() {
  std::reverse(m_str.begin(), m_str.end());
  return *this;
}

CString& CString::TrimLeft() {
  size_t i = 0;
  while (i < m_str.size() && IsBlank(m_str[i])) ++i;
  m_str.erase(0, i);
  return *this;
}

CString& CString::TrimLeft(char ch) {
  size_t i = 0;
  while (i < m_str.size() && m_str[i] == ch) ++i;
  m_str.erase(0, i);
  return *this;
}

CString& CString::TrimLeft(const char* chars) {
  if (!chars) return *this;
  size_t i = m_str.find_first_not_of(chars);
  m_str.erase(0, i == std::string::npos ? m_str.size() : i);
  return *this;
}

CString& CString::TrimRight() {
  size_t n = m_str.size();
  while (n > 0 && IsBlank(m_str[n - 1])) --n;
  m_str.resize(n);
  return *this;
}

CString& CString::TrimRight(char ch) {
  size_t n = m_str.size();
  while (n > 0 && m_str[n - 1] == ch) --n;
  m_str.resize(n);
  return *this;
}

CString& CString::TrimRight(const char* chars) {
  if (!chars) return *this;
  size_t i = m_str.find_last_not_of(chars);
  m_str.resize(i == std::string::npos ? 0 : i + 1);
  return *this;
}

int CString::Replace(char from, char to) {
  int n = 0;
  for (char& c : m_str)
    if (c == from) { c = to; ++n; }
  return n;
}

int CString::Replace(const char* from, const char* to) {
  if (!from || !*from) return 0;
  if (!to) to = "";
  const size_t fromLen = std::strlen(from);
  std::string out;
  int n = 0;
  size_t pos = 0;
  for (;;) {
    size_t at = m_str.find(from, pos);
    if (at == std::string::npos) break;
    out.append(m_str, pos, at - pos);
    out += to;
    pos = at + fromLen;
    ++n;
  }
  if (n) {
    out.append(m_str, pos, std::string::npos);
    m_str.swap(out);
  }
  return n;
}

int CString::Remove(char ch) {
  size_t before = m_str.size();
  m_str.erase(std::remove(m_str.begin(), m_str.end(), ch), m_str.end());
  return static_cast<int>(before - m_str.size());
}

int CString::Insert(int index, const char* text) {
  if (index < 0) index = 0;
  if (index > GetLength()) index = GetLength();
  if (text) m_str.insert(static_cast<size_t>(index), text);
  return GetLength();
}

int CString::Insert(int index, char ch) {
  char buf[2] = {ch, 0};
  if (ch == 0) return GetLength();
  return Insert(index, buf);
}

int CString::Delete(int index, int count) {
  if (index < 0) index = 0;
  if (count > 0 && index < GetLength()) m_str.erase(static_cast<size_t>(index), static_cast<size_t>(count));
  return GetLength();
}

void CString::FormatV(const char* format, va_list args) {
  if (!format) { m_str.clear(); return; }
  va_list copy;
  va_copy(copy, args);
  int n = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  if (n < 0) { m_str.clear(); return; }
  std::string out(static_cast<size_t>(n) + 1, '\0');
  std::vsnprintf(out.data(), out.size(), format, args);
  out.resize(static_cast<size_t>(n));
  m_str.swap(out);
}

void CString::Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  FormatV(format, args);
  va_end(args);
}

void CString::AppendFormat(const char* format, ...) {
  CString tail;
  va_list args;
  va_start(args, format);
  tail.FormatV(format, args);
  va_end(args);
  m_str += tail.m_str;
}

char* CString::GetBuffer(int minLength) {
  if (minLength > GetLength()) m_str.resize(static_cast<size_t>(minLength));
  return m_str.data();
}

char* CString::GetBufferSetLength(int length) {
  m_str.resize(static_cast<size_t>(length < 0 ? 0 : length));
  return m_str.data();
}

void CString::ReleaseBuffer(int newLength) {
  if (newLength < 0)
    m_str.resize(std::strlen(m_str.c_str()));
  else if (static_cast<size_t>(newLength) <= m_str.size())
    m_str.resize(static_cast<size_t>(newLength));
}

// --- CStringList ----------------------------------------------------------
// A POSITION is the node itself, so walking is constant time per step and a
// position stays valid until its own element is removed.

CStringList::CStringList(const CStringList& other) { AddTail(other); }

CStringList& CStringList::operator=(const CStringList& other) {
  if (this != &other) {
    RemoveAll();
    AddTail(other);
  }
  return *this;
}

void CStringList::RemoveAll() {
  for (Node* n = m_head; n;) {
    Node* next = n->next;
    delete n;
    n = next;
  }
  m_head = m_tail = nullptr;
  m_count = 0;
}

// Links `node` in front of `before` (at the tail when `before` is null).
POSITION CStringList::Link(Node* node, Node* before) {
  node->next = before;
  node->prev = before ? before->prev : m_tail;
  if (node->prev) node->prev->next = node; else m_head = node;
  if (before) before->prev = node; else m_tail = node;
  ++m_count;
  return P(node);
}

POSITION CStringList::AddHead(const CString& value) { return Link(new Node{value}, m_head); }
POSITION CStringList::AddTail(const CString& value) { return Link(new Node{value}, nullptr); }

void CStringList::AddTail(const CStringList& other) {
  if (&other == this) {
    CStringList copy(other);
    AddTail(copy);
    return;
  }
  for (Node* n = other.m_head; n; n = n->next) AddTail(n->value);
}

POSITION CStringList::InsertBefore(POSITION pos, const CString& value) {
  return pos ? Link(new Node{value}, N(pos)) : AddHead(value);
}

POSITION CStringList::InsertAfter(POSITION pos, const CString& value) {
  return pos ? Link(new Node{value}, N(pos)->next) : AddTail(value);
}

POSITION CStringList::GetHeadPosition() const { return P(m_head); }
POSITION CStringList::GetTailPosition() const { return P(m_tail); }

CString& CStringList::GetNext(POSITION& pos) {
  Node* n = N(pos);
  pos = P(n->next);
  return n->value;
}

const CString& CStringList::GetNext(POSITION& pos) const { return const_cast<CStringList*>(this)->GetNext(pos); }

CString& CStringList::GetPrev(POSITION& pos) {
  Node* n = N(pos);
  pos = P(n->prev);
  return n->value;
}

const CString& CStringList::GetPrev(POSITION& pos) const { return const_cast<CStringList*>(this)->GetPrev(pos); }

CString& CStringList::GetAt(POSITION pos) { return N(pos)->value; }
const CString& CStringList::GetAt(POSITION pos) const { return N(pos)->value; }
void CStringList::SetAt(POSITION pos, const CString& value) { N(pos)->value = value; }
CString& CStringList::GetHead() { return m_head->value; }
const CString& CStringList::GetHead() const { return m_head->value; }
CString& CStringList::GetTail() { return m_tail->value; }
const CString& CStringList::GetTail() const { return m_tail->value; }

CString CStringList::RemoveHead() {
  CString v = m_head->value;
  RemoveAt(P(m_head));
  return v;
}

CString CStringList::RemoveTail() {
  CString v = m_tail->value;
  RemoveAt(P(m_tail));
  return v;
}

void CStringList::RemoveAt(POSITION pos) {
  Node* n = N(pos);
  if (!n) return;
  if (n->prev) n->prev->next = n->next; else m_head = n->next;
  if (n->next) n->next->prev = n->prev; else m_tail = n->prev;
  delete n;
  --m_count;
}

POSITION CStringList::Find(const char* value, POSITION startAfter) const {
  const char* wanted = value ? value : "";
  for (Node* n = startAfter ? N(startAfter)->next : m_head; n; n = n->next)
    if (n->value == wanted) return P(n);
  return nullptr;
}

POSITION CStringList::FindIndex(int index) const {
  if (index < 0 || index >= m_count) return nullptr;
  Node* n = m_head;
  while (index-- > 0) n = n->next;
  return P(n);
}

// --- CStringArray ---------------------------------------------------------

void CStringArray::SetAtGrow(int index, const CString& value) {
  if (index < 0) return;
  if (index >= GetSize()) m_items.resize(static_cast<size_t>(index) + 1);
  m_items[static_cast<size_t>(index)] = value;
}

void CStringArray::RemoveAt(int index, int count) {
  if (index < 0 || count <= 0 || index >= GetSize()) return;
  auto first = m_items.begin() + index;
  auto last = count >= GetSize() - index ? m_items.end() : first + count;
  m_items.erase(first, last);
}

void CStringArray::InsertAt(int index, const CString& value, int count) {
  if (count <= 0) return;
  if (index < 0) index = 0;
  if (index > GetSize()) m_items.resize(static_cast<size_t>(index));
  m_items.insert(m_items.begin() + index, static_cast<size_t>(count), value);
}

void CStringArray::SetSize(int size) { m_items.resize(static_cast<size_t>(size < 0 ? 0 : size)); }

}  // namespace telvanix

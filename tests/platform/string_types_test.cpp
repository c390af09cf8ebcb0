#include "telvanix/platform/string_types.h"

#include <gtest/gtest.h>

namespace telvanix {
namespace {

TEST(CStringTest, NullAndSlicesNeverFail) {
  CString s(nullptr);
  EXPECT_TRUE(s.IsEmpty());
  EXPECT_STREQ(static_cast<const char*>(s), "");
  CString t("abcdef");
  EXPECT_EQ(t.Mid(2, 100), "cdef");
  EXPECT_EQ(t.Mid(10), "");
  EXPECT_EQ(t.Left(-1), "");
  EXPECT_EQ(t.Right(3), "def");
  EXPECT_EQ(t.Find('z'), -1);
  EXPECT_EQ(t.Find("cd", 1), 2);
  EXPECT_EQ(t.Find("cd", 3), -1);
  EXPECT_EQ(t.Find('a', 99), -1);
}

TEST(CStringTest, EditingKeepsTheRest) {
  CString s("  a.b.c \r\n");
  s.Trim();
  EXPECT_EQ(s, "a.b.c");
  EXPECT_EQ(s.Replace(".", "::"), 2);
  EXPECT_EQ(s, "a::b::c");
  EXPECT_EQ(s.Remove(':'), 4);
  EXPECT_EQ(s.CompareNoCase("ABC"), 0);
  s.Format("%d-%s", 7, "x");
  EXPECT_EQ(s, "7-x");
  s = static_cast<const char*>(s) + 2;  // assigning from our own buffer
  EXPECT_EQ(s, "x");
  char* buf = s.GetBuffer(8);
  buf[0] = 'y';
  buf[1] = 0;
  s.ReleaseBuffer();
  EXPECT_EQ(s, "y");
}

TEST(CStringListTest, PositionsWalkBothWaysAndSurviveOtherRemovals) {
  CStringList list;
  list.AddTail("b");
  POSITION a = list.AddHead("a");
  POSITION c = list.AddTail("c");
  list.InsertAfter(a, "a2");
  list.RemoveAt(list.Find("b"));
  std::string forward;
  for (POSITION p = list.GetHeadPosition(); p;) forward += list.GetNext(p);
  EXPECT_EQ(forward, "aa2c");
  std::string backward;
  for (POSITION p = list.GetTailPosition(); p;) backward += list.GetPrev(p);
  EXPECT_EQ(backward, "ca2a");
  EXPECT_EQ(list.GetAt(c), "c");
  CStringList copy(list);
  list.RemoveAll();
  EXPECT_EQ(copy.GetCount(), 3);
  EXPECT_EQ(copy.GetTail(), "c");
  EXPECT_EQ(list.GetHeadPosition(), nullptr);
  EXPECT_TRUE(list.IsEmpty());
}

TEST(CStringArrayTest, InsertRemoveAndGrow) {
  CStringArray arr;
  arr.Add("x");
  arr.InsertAt(0, "w");
  arr.SetAtGrow(4, "z");
  EXPECT_EQ(arr.GetSize(), 5);
  EXPECT_EQ(arr[2], "");
  arr.RemoveAt(1, 10);
  EXPECT_EQ(arr.GetSize(), 1);
  EXPECT_EQ(arr.GetAt(0), "w");
}

}  // namespace
}  // namespace telvanix

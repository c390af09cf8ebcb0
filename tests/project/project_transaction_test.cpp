// The all-or-nothing change: refusals leave every file as it was, a commit
// leaves no temporary or journal behind, and a journal left by a killed
// change is completed or undone.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "telvanix/project/project_transaction.h"
#include "test_util.h"

namespace telvanix {
namespace {

using Stamp = CHtmlProjectTransaction::CFileStamp;

Stamp StampOf(const test::TempDir& dir, const std::string& rel) {
  Stamp s;
  CHtmlProjectTransaction::GetFileStamp((dir / rel).c_str(), s);
  return s;
}

TEST(ProjectTransaction, CommitsWritesMovesAndRemovesKeepingTheMode) {
  test::TempDir dir;
  dir.Write("a.htm", "A");
  dir.Write("sub/b.htm", "B");
  dir.Write("c.png", "C");
  ::chmod((dir / "a.htm").c_str(), 0640);
  CHtmlProjectTransaction t(dir.path().c_str());
  std::string moved = "B2";
  ASSERT_TRUE(t.AddWrite("a.htm", "A2", StampOf(dir, "a.htm")));
  ASSERT_TRUE(t.AddMove("sub/b.htm", "new/deep/b.htm", &moved, StampOf(dir, "sub/b.htm")));
  ASSERT_TRUE(t.AddRemove("c.png", StampOf(dir, "c.png")));
  t.AddEmptiedFolder("sub");
  ASSERT_EQ(t.Commit(), 1) << t.GetError();
  EXPECT_EQ(dir.Read("a.htm"), "A2");
  EXPECT_EQ(dir.Read("new/deep/b.htm"), "B2");
  EXPECT_EQ(dir.List(), "a.htm new");  // no temporary, journal, c.png or emptied folder left
  struct stat st {};
  ::stat((dir / "a.htm").c_str(), &st);
  EXPECT_EQ(st.st_mode & 0777, 0640u);
}

TEST(ProjectTransaction, RefusesAsAWhole) {
  test::TempDir dir;
  dir.Write("a.htm", "A");
  dir.Write("b.htm", "B");
  dir.Write("ro.htm", "R");
  ::chmod((dir / "ro.htm").c_str(), 0444);
  const struct {
    const char* what;
    std::function<void(CHtmlProjectTransaction&)> stage;
  } cases[] = {
      {"read-only", [&](auto& t) { t.AddWrite("ro.htm", "x", StampOf(dir, "ro.htm")); }},
      {"changed on disk", [&](auto& t) { t.AddWrite("a.htm", "x", Stamp()); }},
      {"already exists", [&](auto& t) { t.AddMove("a.htm", "ro.htm", nullptr, StampOf(dir, "a.htm")); }},
      {"outside the project", [&](auto& t) { t.AddMove("a.htm", "../a.htm", nullptr, StampOf(dir, "a.htm")); }},
  };
  for (const auto& c : cases) {
    CHtmlProjectTransaction t(dir.path().c_str());
    t.AddWrite("b.htm", "changed", StampOf(dir, "b.htm"));
    c.stage(t);
    EXPECT_EQ(t.Commit(), 0) << c.what;
    EXPECT_NE(t.GetError().find(c.what), std::string::npos) << t.GetError();
    EXPECT_EQ(dir.Read("b.htm"), "B") << c.what;
    EXPECT_EQ(dir.List(), "a.htm b.htm ro.htm") << c.what;
  }
}

TEST(ProjectTransaction, RecoverCompletesACommittedJournalAndUndoesAnOpenOne) {
  test::TempDir dir;
  dir.Write("a.htm", "old");
  dir.Write(".a.htm.tmp", "new");
  dir.Write("made/.x.tmp", "x");
  const std::string head = "telvanix journal 1\ndir\tmade\ntmp\t.a.htm.tmp\ntmp\tmade/.x.tmp\n"
                           "rename\t.a.htm.tmp\ta.htm\nrename\tmade/.x.tmp\tmade/x.htm\n";
  int done = -1;
  std::string error;
  dir.Write(CHtmlProjectTransaction::ms_szJournalName, head);  // no commit line: undone
  ASSERT_EQ(CHtmlProjectTransaction::Recover(dir.path().c_str(), done, error), 1) << error;
  EXPECT_EQ(done, 2);
  EXPECT_EQ(dir.List(), "a.htm");
  EXPECT_EQ(dir.Read("a.htm"), "old");

  dir.Write(".a.htm.tmp", "new");
  dir.Write("made/.x.tmp", "x");
  dir.Write(CHtmlProjectTransaction::ms_szJournalName, head + "commit\n");
  ASSERT_EQ(CHtmlProjectTransaction::Recover(dir.path().c_str(), done, error), 1) << error;
  EXPECT_EQ(done, 1);
  EXPECT_EQ(dir.Read("a.htm"), "new");
  EXPECT_EQ(dir.List(), "a.htm made");
  EXPECT_EQ(dir.List("made"), "x.htm");
  ASSERT_EQ(CHtmlProjectTransaction::Recover(dir.path().c_str(), done, error), 1);
  EXPECT_EQ(done, 0);  // nothing pending
}

}  // namespace
}  // namespace telvanix

// Page-shaped repair cases: tests/data/tree/NAME.html is parsed at level 4
// and must give NAME.expected (the saved page, the mismatch count, the tree
// and the discarded tokens). Each case is then saved and parsed again, and
// that second repair must find nothing left to repair; and a build without
// nodes must repair it exactly as the full build does.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "html/html_test_util.h"
#include "html/tree_dump.h"
#include "golden_cases.h"

namespace telvanix {
namespace {

std::string Describe(test::ParsedPack& page) {
  std::string out = "== saved\n" + test::ShowCarriageReturns(page.Saved()) + "\n";
  CHtmlEntityTree* pTree = page.pack.GetEntityTree();
  out += "== mismatches\n" + std::to_string(pTree != nullptr ? pTree->GetMismatchCount() : -1) + "\n";
  out += "== tree\n" + test::DumpTree(page.List());
  std::string discarded = test::DumpDiscarded(page.List());
  if (!discarded.empty()) out += "== discarded\n" + discarded;
  return out;
}

std::vector<std::string> CaseNames() { return test::GoldenCaseNames("tree", ".html"); }

TEST(TreeCasesTest, EachCaseGivesItsExpectedTree) {
  test::RunGoldenCases("tree", ".html", [](const std::string&, const std::string& input) {
    test::ParsedPack page(input, 4);
    EXPECT_EQ(page.parsed, 1);
    return Describe(page);
  }, 10);
}

TEST(TreeCasesTest, RepairIsStable) {
  for (const std::string& name : CaseNames()) {
    SCOPED_TRACE(name);
    test::ParsedPack first(test::ReadDataFile("tree/" + name + ".html"), 4);
    ASSERT_EQ(first.parsed, 1);
    std::string saved = first.Saved();
    std::string shape = test::DumpTree(first.List(), false);

    test::ParsedPack second(saved, 4);
    ASSERT_EQ(second.parsed, 1);
    EXPECT_EQ(test::CountTokensWithFlag(second.List(), 0x10000), 0) << "second repair inserted tokens";
    EXPECT_EQ(test::DumpDiscarded(second.List()), "") << "second repair discarded tokens";
    EXPECT_EQ(test::DumpTree(second.List(), false), shape);
    EXPECT_EQ(second.Saved(), saved);
  }
}

// Every token in list order, discarded ones too, with the tree's flags.
std::string TokenLines(CHtmlTokenList* pList) {
  std::string out;
  for (POSITION pos = pList->GetHeadPosition(); pos != nullptr;)
    out += test::TokenLine(pList->GetNext(pos), true) + "\n";
  return out;
}

TEST(TreeCasesTest, BuildWithoutNodesRepairsAlike) {
  for (const std::string& name : CaseNames()) {
    SCOPED_TRACE(name);
    const std::string input = test::ReadDataFile("tree/" + name + ".html");
    test::ParsedPack full(input, 4);
    test::ParsedPack bare(input, 2);
    ASSERT_EQ(bare.List()->BuildEntityTree(CHtmlEntityTree::emBuildHtml | CHtmlEntityTree::emBuildNoNodes), 1);
    CHtmlEntityTree* pTree = bare.pack.GetEntityTree();
    EXPECT_EQ(pTree->GetRootNode(), nullptr);
    EXPECT_EQ(pTree->GetMismatchCount(), full.pack.GetEntityTree()->GetMismatchCount());
    EXPECT_EQ(TokenLines(bare.List()), TokenLines(full.List()));
  }
}

}  // namespace
}  // namespace telvanix

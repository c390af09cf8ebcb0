// Text pictures of a built tree and of a token list, for the entity-tree
// tests: one line per node, children indented by two spaces.
#pragma once

#include <string>

#include "telvanix/html/entity_tree.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_item.h"
#include "telvanix/html/token_list.h"
#include "telvanix/html/tree_node.h"

namespace telvanix::test {

// The flags the tree pass sets (0x1000 up to 0x80000), as letters: u paired
// unknown, s stray end, o left open, p paired, i inserted by repair, x outside
// HTML, m misplaced, r reopened copy.
inline std::string TreeFlagLetters(DWORD dwFlags) {
  std::string out;
  for (int bit = 0; bit < 8; ++bit)
    if (dwFlags & (0x1000u << bit)) out += "usopixmr"[bit];
  return out;
}

inline std::string PrintableText(CHtmlTokenItem* pToken) {
  CString text = pToken->GetPrintableText(CHtmlTokenItem::emTextTokenOnly);
  return std::string(static_cast<const char*>(text), static_cast<std::size_t>(text.GetLength()));
}

// A token's text with line breaks shown; text tokens in quotes.
inline std::string TokenText(CHtmlTokenItem* pToken) {
  if (pToken == nullptr) return "(null)";
  std::string out;
  for (char c : PrintableText(pToken)) out += c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
  return pToken->IsTextToken() ? "\"" + out + "\"" : out;
}

inline std::string TokenLine(CHtmlTokenItem* pToken, bool bFlags) {
  std::string line = TokenText(pToken), letters = pToken != nullptr ? TreeFlagLetters(pToken->GetTokenFlag()) : "";
  return bFlags && !letters.empty() ? line + " [" + letters + "]" : line;
}

inline std::string Trimmed(const std::string& s) {
  const std::size_t b = s.find_first_not_of(" \t\r\n");
  return b == std::string::npos ? "" : s.substr(b, s.find_last_not_of(" \t\r\n") - b + 1);
}

// An element prints as its start tag, with its children below it; its own
// start-tag leaf (the first child) is not repeated. A leaf whose id differs
// from its token's id, an element without its start leaf, or a child whose
// parent is not the element is called out. Without flags the picture is of
// the shape only: text is trimmed of white space and neighbouring text leaves
// are shown as one (a saved page joins the runs that a discarded tag used to
// separate).
inline void DumpNode(CHtmlTokenList* pList, CHtmlTreeNode* pNode, int nDepth, bool bFlags, std::string& out) {
  const std::string indent(static_cast<std::size_t>(nDepth) * 2, ' ');
  CHtmlTokenItem* pToken = pList->GetTokenItem(pNode->GetTokenPosition());
  if (pNode->IsTokenNode()) {
    const int nExpectedId = pToken == nullptr ? -1 : pToken->IsTextToken() ? 0x40000000 : pToken->GetSafeTagItemPtr()->GetTagId();
    out += indent + TokenLine(pToken, bFlags) + (pNode->GetTagId() != nExpectedId ? " !id\n" : "\n");
    return;
  }
  CHtmlEntityNode* pEntity = static_cast<CHtmlEntityNode*>(pNode);
  POSITION pos = pEntity->GetFirstChildPosition();
  const bool bRoot = pEntity->GetParentNode() == nullptr;
  if (!bRoot) {
    CHtmlTokenNode* pStart = pEntity->GetStartTagNode();
    const bool bStart = pStart != nullptr && pStart->GetTagId() == pEntity->GetTagId();
    if (bStart) pEntity->GetNextChild(pos);
    out += indent + "+ " + TokenLine(pToken, bFlags) + (bStart ? "\n" : " !nostart\n");
  }
  const int nChildDepth = bRoot ? nDepth : nDepth + 1;
  std::string text;  // shape mode: the text run being joined
  bool bInText = false;
  auto flushText = [&] {
    if (bInText) out += std::string(static_cast<std::size_t>(nChildDepth) * 2, ' ') + "\"" + Trimmed(text) + "\"\n";
    text.clear();
    bInText = false;
  };
  while (pos != nullptr) {
    CHtmlTreeNode* pChild = pEntity->GetNextChild(pos);
    if (pChild->GetParentNode() != pEntity) out += indent + "  !parent\n";
    CHtmlTokenItem* pChildToken = pList->GetTokenItem(pChild->GetTokenPosition());
    if (!bFlags && pChild->IsTokenNode() && pChildToken != nullptr && pChildToken->IsTextToken()) {
      text += PrintableText(pChildToken);
      bInText = true;
      continue;
    }
    flushText();
    DumpNode(pList, pChild, nChildDepth, bFlags, out);
  }
  flushText();
}

inline std::string DumpTree(CHtmlTokenList* pList, bool bFlags = true) {
  CHtmlEntityTree* pTree = pList != nullptr ? pList->GetEntityTree() : nullptr;
  if (pTree == nullptr || pTree->GetRootNode() == nullptr) return "(no tree)\n";
  std::string out;
  DumpNode(pList, pTree->GetRootNode(), 0, bFlags, out);
  return out;
}

// The discarded tokens, one a line, with their flags.
inline std::string DumpDiscarded(CHtmlTokenList* pList) {
  std::string out;
  for (POSITION pos = pList->GetHeadPosition(); pos != nullptr;) {
    CHtmlTokenItem* pToken = pList->GetNext(pos);
    if (pToken != nullptr && pToken->IsDiscardedToken()) out += TokenLine(pToken, true) + "\n";
  }
  return out;
}

inline int CountTokensWithFlag(CHtmlTokenList* pList, DWORD dwFlag) {
  int n = 0;
  for (POSITION pos = pList->GetHeadPosition(); pos != nullptr;) {
    CHtmlTokenItem* pToken = pList->GetNext(pos);
    if (pToken != nullptr && (pToken->GetTokenFlag() & dwFlag) != 0) ++n;
  }
  return n;
}

}  // namespace telvanix::test

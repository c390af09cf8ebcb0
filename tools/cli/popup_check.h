// Popups whose topic or bookmark is missing, for `check`. Links marked as
// popups only by class are ordinary links there already; this covers the
// targets a link's href does not show (script calls, popup objects,
// "data-popup-topic").
#pragma once

#include <string>
#include <vector>

namespace telvanix::tool {

struct PopupProblem {
  std::string file;    // the page, as given
  std::string target;  // the popup's target as written ("topic.htm#name")
  bool bookmark;       // the topic exists but does not define the bookmark
};

// `topics` are paths relative to `root`, "/"-separated; the problems come in
// the order of `topics`, then of the popups in each page.
std::vector<PopupProblem> FindPopupProblems(const std::string& root, const std::vector<std::string>& topics);

}  // namespace telvanix::tool

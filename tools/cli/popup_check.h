// Popups whose topic or bookmark is missing, for `check`. Links marked as
// popups only by class are ordinary links there already; this covers the
// targets a link's href does not show (script calls, popup objects,
// "data-popup-topic").
#pragma once

#include <set>
#include <string>
#include <vector>

namespace telvanix::tool {

struct PopupProblem {
  std::string file;    // the page, as given
  std::string target;  // the popup's target as written ("topic.htm#name")
  bool bookmark;       // the topic exists but does not define the bookmark
};

struct PopupCheck {
  std::vector<PopupProblem> problems;  // in the order of the pages, then of their popups
  std::set<std::string> referenced;    // topics a popup of another page opens (as found on disk)
};

// `topics` are paths relative to `root`, "/"-separated, as `referenced` is.
PopupCheck CheckPopups(const std::string& root, const std::vector<std::string>& topics);

}  // namespace telvanix::tool

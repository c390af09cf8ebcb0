// Compares a project before and after a move, token by token: every file of
// ORIGINAL is found at its new name in CHANGED, and where the bytes differ
// the difference must lie inside reference values that now name, from the
// file's new folder, the file the old value named after the moves.
//   move_compare ORIGINAL CHANGED OLD=NEW...   (project paths; a folder moves whole)
// Prints the counts and the first faults; exit status 1 on any fault.
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "telvanix/foundation/file_moves.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/html/tag_item.h"
#include "telvanix/html/token_list.h"

namespace fs = std::filesystem;
using namespace telvanix;

namespace {

std::string ReadAll(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::string Ext(const std::string& p) {
  size_t dot = p.find_last_of('.');
  return dot == std::string::npos ? "" : Lower(p.substr(dot));
}

struct Checker {
  CFileMoves moves;
  std::vector<std::string> faults;
  size_t files = 0, identical = 0, changed = 0, values = 0;

  void Fault(const std::string& f) { faults.push_back(f); }

  // The old value, followed through the moves, must be the file the new
  // value names from the new folder; the part after "#" or "?" stays.
  bool SameTarget(const std::string& oldPath, const std::string& newPath, const std::string& a, const std::string& b) {
    CFileMoves before, after;
    before.SetDocument(oldPath.c_str(), nullptr);
    after.SetDocument(newPath.c_str(), nullptr);
    CString target = before.ResolveReference(a.c_str()), moved;
    if (target.IsEmpty()) return false;
    moves.MapPath(target, moved);
    auto tail = [](const std::string& s) {
      size_t at = s.find_first_of("#?");
      return at == std::string::npos ? std::string() : s.substr(at);
    };
    return Lower(after.ResolveReference(b.c_str()).str()) == Lower(moved.str()) && tail(a) == tail(b);
  }

  // The reference inside a longer value ("Bitmap:x.bmp", an item's last
  // ";" part, a comment's markup): the differing stretch widened to the
  // delimiters around it.
  bool SameTargetInside(const std::string& oldPath, const std::string& newPath, const std::string& a,
                        const std::string& b) {
    size_t p = 0;
    while (p < a.size() && p < b.size() && a[p] == b[p]) ++p;
    size_t s = 0;
    while (s < a.size() - p && s < b.size() - p && a[a.size() - 1 - s] == b[b.size() - 1 - s]) ++s;
    auto delimiter = [](char c) { return std::strchr(" \t\r\n\"'=:;,()<>", c) != nullptr; };
    while (p > 0 && !delimiter(a[p - 1])) --p;
    while (s > 0 && !delimiter(a[a.size() - s])) --s;
    return SameTarget(oldPath, newPath, a.substr(p, a.size() - p - s), b.substr(p, b.size() - p - s));
  }

  // Lines that differ must each hold a url() or @import (sheets) or be a
  // value line whose value follows the moves (project files).
  void CompareLines(const std::string& name, const std::string& a, const std::string& b) {
    std::istringstream sa(a), sb(b);
    std::string la, lb;
    int line = 0;
    while (true) {
      bool ga = static_cast<bool>(std::getline(sa, la)), gb = static_cast<bool>(std::getline(sb, lb));
      ++line;
      if (!ga || !gb) {
        if (ga != gb) Fault(name + ": line count differs");
        return;
      }
      if (la == lb) continue;
      ++values;
      const std::string l = Lower(la);
      if (l.find("url(") == std::string::npos && l.find("@import") == std::string::npos &&
          la.find('=') == std::string::npos && la.find('[') == std::string::npos && Ext(name) != ".hhp")
        Fault(name + ":" + std::to_string(line) + ": a line changed outside url() and @import");
    }
  }

  void ComparePages(const std::string& oldPath, const std::string& newPath, std::string a, std::string b) {
    CByteString ba(reinterpret_cast<const unsigned char*>(a.data()), static_cast<int>(a.size()));
    CByteString bb(reinterpret_cast<const unsigned char*>(b.data()), static_cast<int>(b.size()));
    CHtmlPack pa(ba, oldPath.c_str()), pb(bb, newPath.c_str());
    if (!pa.Parse(CHtmlPack::emParseAttributes) || !pb.Parse(CHtmlPack::emParseAttributes)) {
      Fault(newPath + ": cannot be parsed");
      return;
    }
    CHtmlTokenList *la = pa.GetTokenList(), *lb = pb.GetTokenList();
    POSITION p = la->GetHeadPosition(), q = lb->GetHeadPosition();
    while (p && q) {
      CHtmlTokenItem *x = la->GetNext(p), *y = lb->GetNext(q);
      if (x->GetOriginalLength() == y->GetOriginalLength() &&
          std::memcmp(x->GetOriginalData(), y->GetOriginalData(), static_cast<size_t>(x->GetOriginalLength())) == 0)
        continue;
      CHtmlTagItem *tx = x->GetSafeTagItemPtr(), *ty = y->GetSafeTagItemPtr();
      if (!tx || !ty) {
        // Text: a STYLE block's url() or @import.
        const std::string t = Lower(std::string(reinterpret_cast<const char*>(x->GetOriginalData()),
                                                static_cast<size_t>(x->GetOriginalLength())));
        ++values;
        if (tx || ty || (t.find("url(") == std::string::npos && t.find("@import") == std::string::npos))
          Fault(newPath + ": text changed outside a reference");
        continue;
      }
      const int n = tx->GetTotalAttributesNum();
      if (n != ty->GetTotalAttributesNum() || tx->GetTagName().str() != ty->GetTagName().str()) {
        Fault(newPath + ": a tag changed its name or attributes");
        continue;
      }
      long grown = 0;
      bool any = false;
      for (int i = 0; i < n; ++i) {
        const char *na, *va, *nb, *vb;
        tx->GetAttributeByNum(i, na, va);
        ty->GetAttributeByNum(i, nb, vb);
        const std::string sa = va ? va : "", sb = vb ? vb : "";
        if (std::strcmp(na ? na : "", nb ? nb : "") != 0) Fault(newPath + ": attribute names differ");
        if (sa == sb) continue;
        any = true;
        ++values;
        grown += static_cast<long>(sb.size()) - static_cast<long>(sa.size());
        const bool style = Lower(na ? na : "") == "style";
        const std::string da = CHtmlPack::HtmlToText(sa.c_str()).str(), db = CHtmlPack::HtmlToText(sb.c_str()).str();
        if (!style && !SameTarget(oldPath, newPath, da, db) && !SameTargetInside(oldPath, newPath, da, db))
          Fault(newPath + ": " + (na ? na : "") + "=\"" + sa + "\" became \"" + sb + "\", another file");
      }
      if (!any || y->GetOriginalLength() - x->GetOriginalLength() != grown)
        Fault(newPath + ": <" + tx->GetTagName().str() + "> changed outside its values");
    }
    if (p || q) Fault(newPath + ": token count differs");
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: move_compare ORIGINAL CHANGED OLD=NEW...\n");
    return 2;
  }
  const fs::path original = argv[1], changed = argv[2];
  Checker c;
  for (int i = 3; i < argc; ++i) {
    std::string m = argv[i];
    size_t eq = m.find('=');
    if (eq == std::string::npos) return 2;
    const std::string from = m.substr(0, eq), to = m.substr(eq + 1);
    c.moves.AddMove(from.c_str(), to.c_str(), fs::is_directory(original / from));
  }
  std::map<std::string, bool> seen;
  for (const auto& e : fs::recursive_directory_iterator(original)) {
    if (!e.is_regular_file()) continue;
    const std::string rel = e.path().lexically_relative(original).generic_string();
    CString moved;
    c.moves.MapPath(rel.c_str(), moved);
    const std::string to = moved.str();
    seen[to] = true;
    ++c.files;
    if (!fs::exists(changed / to)) {
      c.Fault(to + ": missing after the move");
      continue;
    }
    std::string a = ReadAll(e.path()), b = ReadAll(changed / to);
    if (a == b) {
      ++c.identical;
      continue;
    }
    ++c.changed;
    const std::string ext = Ext(rel);
    if (ext == ".htm" || ext == ".html" || ext == ".hhc" || ext == ".hhk")
      c.ComparePages(rel, to, a, b);
    else if (ext == ".css" || ext == ".hhp")
      c.CompareLines(to, a, b);
    else
      c.Fault(to + ": changed, and it holds no references");
  }
  for (const auto& e : fs::recursive_directory_iterator(changed))
    if (e.is_regular_file() && !seen.count(e.path().lexically_relative(changed).generic_string()))
      c.Fault(e.path().lexically_relative(changed).generic_string() + ": not in the original (a temporary?)");
  std::printf("%zu files: %zu identical, %zu changed, %zu values rewritten, %zu faults\n", c.files, c.identical,
              c.changed, c.values, c.faults.size());
  for (size_t i = 0; i < c.faults.size() && i < 20; ++i) std::printf("  %s\n", c.faults[i].c_str());
  return c.faults.empty() ? 0 : 1;
}

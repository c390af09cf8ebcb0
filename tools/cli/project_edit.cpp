#include "cli/project_edit.h"

#include <cctype>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <set>

#include "cli/commands.h"
#include "cli/page_files.h"
#include "cli/parallel.h"
#include "cli/project_files.h"
#include "cli/references.h"
#include "telvanix/css/css_pack_ex.h"
#include "telvanix/html/html_pack.h"
#include "telvanix/project/help_project.h"

namespace telvanix::tool {

namespace fs = std::filesystem;

std::string FindProjectRoot(const std::string& given, const std::string& start, std::string& error) {
  std::error_code ec;
  if (!given.empty()) {
    if (!fs::is_directory(given, ec)) {
      error = given + ": no such folder";
      return "";
    }
    return given;
  }
  fs::path dir = fs::absolute(start.empty() ? "." : start, ec).lexically_normal();
  if (!fs::is_directory(dir, ec)) dir = dir.parent_path();
  for (fs::path d = dir;; d = d.parent_path()) {
    for (fs::directory_iterator it(d, ec), end; !ec && it != end; it.increment(ec)) {
      std::string ext = it->path().extension().string();
      for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (ext == ".hhp" && it->is_regular_file(ec)) return d.string();
    }
    if (d == d.root_path() || d.parent_path() == d) break;
  }
  error = "no project file (.hhp) found at or above " + (start.empty() ? std::string(".") : start) +
          "; name the project folder with --root";
  return "";
}

bool ToProjectPath(const std::string& root, const std::string& path, std::string& rel, std::string& error,
                   bool rootToo) {
  std::error_code ec;
  fs::path r = fs::absolute(root, ec).lexically_normal();
  fs::path p = fs::absolute(path, ec).lexically_normal();
  std::string text = p.lexically_relative(r).generic_string();
  while (!text.empty() && text.back() == '/') text.pop_back();
  if (rootToo && (text == "." || text.empty())) {
    rel.clear();
    return true;
  }
  if (text.empty() || text == "." || text == ".." || text.compare(0, 3, "../") == 0) {
    error = path + ": outside the project root " + root;
    return false;
  }
  rel = text;
  return true;
}

bool CompletePendingChange(const std::string& root) {
  int done = 0;
  std::string error;
  if (!CHtmlProjectTransaction::Recover(root.c_str(), done, error)) {
    PrintError(error);
    return false;
  }
  if (done == 1) PrintError("completed an interrupted change in " + root);
  if (done == 2) PrintError("undid an interrupted change in " + root + " (it had not reached its renames)");
  return true;
}

bool CompletePendingChanges(const std::vector<std::string>& args) {
  std::set<std::string> roots, starts;
  std::string given;
  for (size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--root" && i + 1 < args.size()) given = args[++i];
    else if (args[i].compare(0, 7, "--root=") == 0) given = args[i].substr(7);
    else if (std::error_code ec; !args[i].empty() && args[i][0] != '-' && fs::exists(args[i], ec)) {
      // A folder named directly may be a root without a .hhp (check, recover).
      if (fs::is_directory(args[i], ec)) roots.insert(fs::absolute(args[i], ec).lexically_normal().string());
      starts.insert(fs::absolute(args[i], ec).lexically_normal().parent_path().string());
    }
  }
  if (!given.empty()) roots = {given};
  else
    for (const std::string& s : starts) {
      std::string error;
      if (std::string root = FindProjectRoot("", s, error); !root.empty()) roots.insert(root);
    }
  for (const std::string& root : roots)
    if (!CompletePendingChange(root)) return false;
  return true;
}

std::string OpenProject(const std::string& givenRoot, const std::string& start, CHtmlProjectIndex& index) {
  std::string error;
  const std::string root = FindProjectRoot(givenRoot, start, error);
  if (root.empty()) {
    PrintError(error);
    return "";
  }
  index.Build(root.c_str(), nullptr, true);
  return root;
}

int CommitChange(CHtmlProjectTransaction& change) {
  if (!change.Check()) {
    PrintError(change.GetError() + "; nothing was changed");
    return kExitProblems;
  }
  if (!change.Commit()) {
    PrintError(change.GetError());
    return kExitError;
  }
  return -1;
}

namespace {

std::string Text(const CByteString& b) {
  return b.GetLength() > 0 ? std::string(reinterpret_cast<const char*>(b.GetContent()), static_cast<size_t>(b.GetLength()))
                           : std::string();
}

std::string Join(const std::string& root, const std::string& rel) { return root + "/" + rel; }

// A file's new bytes from a page save: what the tokenizer drops by rule
// around the saved tokens (a line break before the first tag, a lone byte
// at the end) is put back, as an untouched save shows it.
bool PageBytes(const std::string& source, const std::string& untouched, const std::string& edited, std::string& out) {
  size_t at = untouched.empty() ? 0 : source.find(untouched);
  if (at == std::string::npos) return false;
  out = source.substr(0, at) + edited + source.substr(at + untouched.size());
  return true;
}

std::vector<std::string> Split(const std::string& path) {
  std::vector<std::string> parts;
  for (size_t start = 0; start < path.size();) {
    size_t slash = path.find('/', start);
    if (slash == std::string::npos) slash = path.size();
    if (slash > start) parts.push_back(path.substr(start, slash - start));
    start = slash + 1;
  }
  return parts;
}

bool SameName(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) return false;
  return true;
}

bool PlainName(const std::string& s) {
  for (char c : s)
    if (!std::isalnum(static_cast<unsigned char>(c)) && !std::strchr("._-~", c)) return false;
  return !s.empty();
}

// A page's references that climb ("../matrix/a.htm", "../../d6/x.htm") keep
// climbing to the same folder when it still holds both ends, so that the
// generator's way of writing them stays and moving back gives the bytes
// back. Anything else is left to the library's rule (the shortest path).
class StructureKeepingPage : public CHtmlFileEx {
 public:
  using CHtmlFileEx::CHtmlFileEx;

 protected:
  const char* GetNewRelFileNameCustom(const char* name, CReplaceContext& context) override {
    std::string written = name ? name : "";
    const size_t cut = written.find_first_of("?#");
    const std::string suffix = cut == std::string::npos ? "" : written.substr(cut);
    std::string path = written.substr(0, cut);
    if (path.empty() || path.find_first_of("%&: \t") != std::string::npos || path[0] == '/') return nullptr;
    const bool back = path.find('\\') != std::string::npos;
    for (char& c : path)
      if (c == '\\') c = '/';
    std::vector<std::string> parts = Split(path);
    size_t ups = 0;
    while (ups < parts.size() && parts[ups] == "..") ++ups;
    const std::vector<std::string> rest(parts.begin() + static_cast<long>(ups), parts.end());
    for (const std::string& r : rest)
      if (r == "." || r == ".." || !PlainName(r)) return nullptr;
    const std::vector<std::string> dir = Split(DirectoryOf(context.GetDocumentOldPath().str()));
    const std::string newDoc = context.GetDocumentNewPath().IsEmpty() ? context.GetDocumentOldPath().str()
                                                                     : context.GetDocumentNewPath().str();
    const std::vector<std::string> newDir = Split(DirectoryOf(newDoc));
    if (ups == 0 || ups > dir.size() || rest.empty()) return nullptr;
    const size_t pivot = dir.size() - ups;
    std::vector<std::string> target(dir.begin(), dir.begin() + static_cast<long>(pivot));
    target.insert(target.end(), rest.begin(), rest.end());
    std::string joined;
    for (const std::string& t : target) joined += (joined.empty() ? "" : "/") + t;
    CString moved;
    const CFileMoves::EmRewrite fate = context.MapPath(joined.c_str(), moved);
    if (fate == CFileMoves::emDeleted || (fate == CFileMoves::emUnchanged && newDir == dir)) return nullptr;
    const std::vector<std::string> newTarget = Split(moved.str());
    if (newDir.size() < pivot || newTarget.size() <= pivot) return nullptr;
    for (size_t i = 0; i < pivot; ++i)
      if (!SameName(newDir[i], dir[i]) || !SameName(newTarget[i], dir[i])) return nullptr;
    m_strNew.clear();
    for (size_t i = pivot; i < newDir.size(); ++i) m_strNew += back ? "..\\" : "../";
    for (size_t i = pivot; i < newTarget.size(); ++i) {
      if (!PlainName(newTarget[i])) return nullptr;
      m_strNew += newTarget[i] + (i + 1 < newTarget.size() ? (back ? "\\" : "/") : "");
    }
    m_strNew += suffix;
    return m_strNew.c_str();
  }

 private:
  std::string m_strNew;
};

// A project file value as a reference, resolved by `moves`.
CFileReference ProjectFileReference(const CHtmlHelpProject::CFileValue& v, const CFileMoves& moves) {
  CFileReference ref;
  ref.m_nLine = v.m_nLine;
  ref.m_nKind = CFileReference::emRefLink;
  ref.m_strElement = v.m_strKey.empty() ? "project" : v.m_strKey.c_str();
  ref.m_strWritten = v.m_strValue.c_str();
  ref.m_strTarget = moves.ResolveReference(v.m_strValue.c_str());
  return ref;
}

// The project file's values, followed through the moves one by one.
void RewriteProjectFile(const std::string& bytes, CHtmlFileEx::CReplaceContext& moves, FileRewrite& r, bool apply) {
  CHtmlHelpProject hhp;
  hhp.Analyse(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  const auto values = hhp.GetFileValues();
  for (size_t i = values.size(); i-- > 0;) {
    const CHtmlHelpProject::CFileValue& v = values[i];
    CString out;
    CFileMoves::EmRewrite what = moves.RewriteReference(v.m_strValue.c_str(), out);
    if (what == CFileMoves::emUnchanged) continue;
    CFileReference ref = ProjectFileReference(v, moves);
    ref.m_strNewValue = out;
    ref.m_nChange = what;
    r.changes.insert(r.changes.begin(), ref);
    if (!apply) continue;
    if (what == CFileMoves::emRewritten) hhp.SetFileValue(static_cast<int>(i), out);
    else hhp.RemoveFileValue(static_cast<int>(i));
  }
  if (hhp.IsChanged()) {
    r.changed = true;
    r.bytes = hhp.GetBytes();
  }
}

}  // namespace

FileRewrite RewriteFile(const std::string& root, const std::string& path, const std::string& newPath,
                        const CHtmlFileEx::CReplaceContext& base) {
  FileRewrite r;
  r.path = path;
  r.newPath = newPath;
  const std::string full = Join(root, path);
  CHtmlProjectTransaction::GetFileStamp(full.c_str(), r.stamp);
  // A symbolic link's bytes are its target's, rewritten (if at all) there;
  // writing them here would turn the link into a copy.
  if (fs::is_symlink(full)) return r;
  CByteString bytes;
  if (!LoadPage(full, bytes, r.error)) return r;
  const std::string source = Text(bytes);
  CHtmlFileEx::CReplaceContext moves(base);
  if (!moves.SetDocument(path.c_str(), newPath == path ? nullptr : newPath.c_str())) {
    r.error = path + ": not a project path";
    return r;
  }
  const FileKind kind = ClassifyFile(path);
  if (kind == FileKind::kProject) {
    RewriteProjectFile(source, moves, r, true);
  } else if (kind == FileKind::kStylesheet) {
    CCssPackEx sheet(full.c_str(), &bytes);
    sheet.Parse();
    sheet.GetFileReferences(moves, r.changes);
    std::erase_if(r.changes, [](const CFileReference& c) { return c.m_nChange == CFileMoves::emUnchanged; });
    int n = sheet.ReplaceFileReference(moves);
    if (n < 0) r.error = path + ": its references could not be rewritten";
    if (n > 0) {
      r.bytes = Text(sheet.GetContent());
      r.changed = r.bytes != source;
    }
  } else if (kind == FileKind::kTopic || kind == FileKind::kContents || kind == FileKind::kIndex) {
    if (LooksBinary(bytes)) return r;  // no page: nothing in it is rewritten
    CByteString copy;
    copy.Assign(bytes.GetContent(), bytes.GetLength());
    StructureKeepingPage page(bytes, full.c_str());
    if (page.GetFileReferences(moves, r.changes) < 0) {
      r.error = path + ": its references could not be read";
      return r;
    }
    std::erase_if(r.changes, [](const CFileReference& c) { return c.m_nChange == CFileMoves::emUnchanged; });
    if (r.changes.empty()) return r;
    int n = page.ReplaceFileReference(moves);
    if (n < 0) {
      r.error = path + ": its references could not be rewritten";
      return r;
    }
    if (n == 0) return r;
    CByteString edited, untouched;
    CHtmlPack plain(copy, full.c_str());
    if (!page.Save(&edited, CHtmlPack::emSave) || !plain.Parse(CHtmlPack::emParseAttributes) ||
        !plain.Save(&untouched, CHtmlPack::emSave) || !PageBytes(source, Text(untouched), Text(edited), r.bytes)) {
      r.error = path + ": cannot be saved back byte for byte; left as it was";
      return r;
    }
    r.changed = r.bytes != source;
  }
  return r;
}

std::vector<CFileReference> ListFileReferences(const std::string& root, const std::string& path,
                                               const CHtmlFileEx::CReplaceContext& base, std::string& error) {
  std::vector<CFileReference> refs;
  const std::string full = Join(root, path);
  CByteString bytes;
  if (!LoadPage(full, bytes, error)) return refs;
  CHtmlFileEx::CReplaceContext moves(base);
  moves.SetDocument(path.c_str(), nullptr);
  const FileKind kind = ClassifyFile(path);
  if (kind == FileKind::kProject) {
    // Listed through a rewrite that names each value as changed when a
    // move of its own target would change it; here every value is listed.
    CHtmlHelpProject hhp;
    hhp.Analyse(bytes.GetContent(), bytes.GetLength());
    for (const CHtmlHelpProject::CFileValue& v : hhp.GetFileValues()) refs.push_back(ProjectFileReference(v, moves));
  } else if (kind == FileKind::kStylesheet) {
    CCssPackEx sheet(full.c_str(), &bytes);
    sheet.Parse();
    if (sheet.GetFileReferences(moves, refs) < 0) error = path + ": its references could not be read";
  } else if (!LooksBinary(bytes)) {
    CHtmlFileEx page(bytes, full.c_str());
    if (page.GetFileReferences(moves, refs) < 0) error = path + ": its references could not be read";
  }
  return refs;
}

namespace {

// `lower` (lower case) among the bytes, without regard to ASCII case.
bool ContainsNoCase(const CByteString& bytes, const std::string& lower) {
  const char* p = reinterpret_cast<const char*>(bytes.GetContent());
  const size_t n = static_cast<size_t>(bytes.GetLength());
  if (lower.empty() || n < lower.size()) return false;
  const char first = lower[0], other = static_cast<char>(std::toupper(static_cast<unsigned char>(first)));
  for (size_t i = 0; i + lower.size() <= n; ++i) {
    if (p[i] != first && p[i] != other) continue;
    size_t k = 1;
    while (k < lower.size() && std::tolower(static_cast<unsigned char>(p[i + k])) == lower[k]) ++k;
    if (k == lower.size()) return true;
  }
  return false;
}

}  // namespace

std::vector<size_t> CandidateReferrers(const CHtmlProjectIndex& index, const std::vector<std::string>& paths) {
  const auto& files = index.GetFiles();
  std::vector<char> hit(files.size(), 0);
  for (const std::string& p : paths)
    for (const CHtmlProjectIndex::CReferrer& r : index.GetReferrers(p)) hit[r.m_nFile] = 1;
  // The last part of each path, lower case; a name that could be written
  // %-encoded or as a character reference cannot be looked for in bytes.
  std::vector<std::string> names;
  bool all = false;
  for (const std::string& p : paths) {
    std::string name = p.substr(p.find_last_of('/') + 1);
    for (char& c : name) {
      c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      if (!std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '-' && c != '_') all = true;
    }
    names.push_back(name);
  }
  std::vector<size_t> readable;
  for (size_t i = 0; i < files.size(); ++i)
    if (!hit[i] && files[i].kind != FileKind::kImage && files[i].kind != FileKind::kOther) readable.push_back(i);
  ParallelFor(readable.size(), [&](size_t k) {
    const size_t i = readable[k];
    if (all) {
      hit[i] = 1;
      return;
    }
    CByteString bytes;
    std::string error;
    if (!ReadWholeFile(Join(index.GetRoot(), files[i].path), bytes, error)) {
      hit[i] = 1;  // its error is reported when it is rewritten
      return;
    }
    for (const std::string& n : names)
      if (ContainsNoCase(bytes, n)) {
        hit[i] = 1;
        return;
      }
  }, "search");
  std::vector<size_t> out;
  for (size_t i = 0; i < files.size(); ++i)
    if (hit[i]) out.push_back(i);
  return out;
}

std::string DescribeChange(const std::string& file, const CFileReference& ref) {
  std::string line = file + ":" + std::to_string(ref.m_nLine) + ": " + ref.m_strElement.str();
  if (!ref.m_strAttribute.IsEmpty()) line += " " + ref.m_strAttribute.str();
  line += ": " + ref.m_strWritten.str();
  if (ref.m_nChange == CFileMoves::emRewritten) line += " -> " + ref.m_strNewValue.str();
  if (ref.m_nChange == CFileMoves::emDeleted) line += " (removed)";
  return line;
}

}  // namespace telvanix::tool

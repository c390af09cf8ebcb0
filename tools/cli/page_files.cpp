#include "cli/page_files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "cli/commands.h"
#include "cli/project_files.h"
#include "telvanix/platform/code_page.h"
#include "telvanix/topic/html_file_ex.h"

namespace telvanix::tool {

namespace fs = std::filesystem;

std::vector<std::string> ExpandTopicOperands(const std::vector<std::string>& operands,
                                             std::vector<std::string>& errors) {
  std::vector<std::string> out;
  for (const std::string& op : operands) {
    std::error_code ec;
    if (fs::is_directory(op, ec)) {
      ProjectFiles files = ListProjectFiles(op, true);
      for (const std::string& e : files.errors) errors.push_back(e);
      for (const std::string& f : files.files)
        if (ClassifyFile(f) == FileKind::kTopic) out.push_back((fs::path(op) / f).string());
    } else {
      out.push_back(op);
    }
  }
  return out;
}

bool LoadPage(const std::string& path, CByteString& bytes, std::string& error) {
  return project::LoadWholeFile(path, bytes, error);
}

bool LooksBinary(const CByteString& bytes) { return project::LooksBinary(bytes); }

namespace {

bool RefuseBinary(const std::string& path, const CByteString& bytes, std::string& error) {
  if (!LooksBinary(bytes)) return true;
  error = path + ": holds binary data (a zero byte), not a page";
  return false;
}

}  // namespace

bool LoadTopicBytes(const std::string& path, CByteString& bytes, std::string& error) {
  return LoadPage(path, bytes, error) && RefuseBinary(path, bytes, error);
}

bool ProbeTopicFile(const std::string& path, CByteString& start, std::string& error) {
  return project::LoadFileStart(path, 8192, start, error) && RefuseBinary(path, start, error);
}

bool SameBytes(const CByteString& a, const CByteString& b) {
  return a.GetLength() == b.GetLength() &&
         (a.GetLength() == 0 || std::memcmp(a.GetContent(), b.GetContent(), static_cast<size_t>(a.GetLength())) == 0);
}

int WritePage(const std::string& path, const CByteString& bytes, std::string& error) {
  if (!bytes.SaveToFile(path.c_str())) {
    error = path + ": cannot be written (" + std::strerror(errno ? errno : EIO) + ")";
    return -1;
  }
  return 1;
}

int WriteIfChanged(const std::string& path, const CByteString& original, const CByteString& bytes,
                   std::string& error) {
  return SameBytes(original, bytes) ? 0 : WritePage(path, bytes, error);
}

void PrintError(const std::string& message) { std::fprintf(stderr, "telvanix: %s\n", message.c_str()); }

int FinishPageEdits(bool changing, size_t changed, size_t pages, const std::vector<std::string>& refused,
                    const std::vector<std::string>& errors) {
  if (changing) std::printf("%zu of %zu pages changed\n", changed, pages);
  for (const std::string& e : refused) PrintError(e);
  for (const std::string& e : errors) PrintError(e);
  return !errors.empty() ? kExitError : !refused.empty() ? kExitProblems : kExitClean;
}

std::string ToUtf8(const char* text) {
  std::string out;
  // Pages are in the active code page; what it cannot read becomes U+FFFD.
  if (text && !CodePageToUtf8(CP_ACP, text, std::strlen(text), out))
    CodePageToUtf8(kDefaultCodePage, text, std::strlen(text), out);
  return out;
}

std::string FileNameToUtf8(const std::string& name) {
  return IsValidUtf8(name.data(), name.size()) ? name : ToUtf8(name.c_str());
}

namespace {

// Bytes at the end of the page that the tokenizer drops by rule (a lone byte
// after the last tag, an unterminated construct): an unedited save is then a
// strict prefix of the source, and the rest is what an edit would lose.
CByteString DroppedTail(const std::string& path, CByteString& source) {
  CByteString tail;
  CHtmlPack pack(source, path.c_str());
  CByteString saved;
  if (!pack.Parse(CHtmlPack::emParseAttributes) || !pack.Save(&saved, CHtmlPack::emSave)) return tail;
  const int n = source.GetLength(), m = saved.GetLength();
  if (m < n && (m == 0 || std::memcmp(source.GetContent(), saved.GetContent(), static_cast<size_t>(m)) == 0))
    tail.Assign(source.GetContent() + m, n - m);
  return tail;
}

}  // namespace

bool OpenTopicPage(const std::string& path, OpenTopic& topic, std::string& error) {
  if (!LoadTopicBytes(path, topic.source, error)) return false;
  topic.doc = std::make_unique<CHtmlFileEx>(topic.source, path.c_str());
  if (!topic.doc->Analyse() && topic.source.GetLength() > 0) {
    error = path + ": cannot be parsed as a page";
    return false;
  }
  return true;
}

int SaveTopicIfChanged(const std::string& path, OpenTopic& topic, std::string& error, const ReadBackCheck& check) {
  if (!topic.doc->IsTokenListModified()) return 0;
  CByteString saved;
  if (!topic.doc->Save(&saved, CHtmlPack::emSave)) {
    error = path + ": could not be saved";
    return -1;
  }
  // An edit changes what it changes and nothing else: the page keeps its
  // final line break even though the tokenizer does not.
  CByteString tail = DroppedTail(path, topic.source);
  if (tail.GetLength() > 0 && !saved.Append(tail.GetContent(), tail.GetLength())) {
    error = path + ": could not be saved";
    return -1;
  }
  if (check && !SameBytes(topic.source, saved)) {
    CHtmlFileEx reread(saved, path.c_str());
    reread.Analyse();
    std::string why = check(reread);
    if (!why.empty()) {
      error = path + ": " + why + "; left as it was";
      return -2;
    }
  }
  return WriteIfChanged(path, topic.source, saved, error);
}

}  // namespace telvanix::tool

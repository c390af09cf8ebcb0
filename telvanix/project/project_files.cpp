#include "telvanix/project/project_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <limits>
#include <set>
#include <utility>

namespace telvanix::project {

namespace fs = std::filesystem;

namespace {

std::string LowerExtension(const std::string& path) {
  size_t slash = path.find_last_of('/');
  size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  std::string ext = path.substr(dot);
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext;
}

struct Walker {
  std::string root;
  bool topicsOnly = false;
  ProjectFiles out;
  std::set<std::pair<dev_t, ino_t>> open;  // folders on the current walk path

  void Walk(const fs::path& dir, const std::string& relative) {
    struct stat st {};
    if (::stat(dir.c_str(), &st) != 0) {
      out.errors.push_back(dir.string() + ": " + std::strerror(errno));
      return;
    }
    auto id = std::make_pair(st.st_dev, st.st_ino);
    if (!open.insert(id).second) {
      out.errors.push_back(dir.string() + ": symbolic link loop, skipped");
      return;
    }
    std::error_code ec;
    fs::directory_iterator it(dir, ec);
    if (ec) {
      out.errors.push_back(dir.string() + ": " + ec.message());
      open.erase(id);
      return;
    }
    for (; it != fs::directory_iterator(); it.increment(ec)) {
      if (ec) {
        out.errors.push_back(dir.string() + ": " + ec.message());
        break;
      }
      const fs::path& p = it->path();
      std::string name = p.filename().string();
      std::string rel = relative.empty() ? name : relative + "/" + name;
      std::error_code sec;
      fs::file_status status = fs::status(p, sec);  // follows links
      if (sec) {
        std::error_code lec;
        bool dangling = sec == std::errc::no_such_file_or_directory && fs::is_symlink(fs::symlink_status(p, lec));
        // A link that leads nowhere (or round in a circle) holds no folder;
        // it matters only when its name is of a kind being collected.
        if ((dangling || sec == std::errc::too_many_symbolic_link_levels) && !Collects(rel)) continue;
        out.errors.push_back(p.string() + ": " + (dangling ? std::string("broken symbolic link") : sec.message()));
        continue;
      }
      if (fs::is_directory(status))
        Walk(p, rel);
      else if (fs::is_regular_file(status))
        out.files.push_back(rel);
      else if (Collects(rel))
        // A pipe or device that looks like a page would block or never end
        // when read; it is named so that nobody wonders why it was left out.
        out.errors.push_back(p.string() + ": not a regular file, skipped");
    }
    open.erase(id);
  }

  bool Collects(const std::string& rel) const {
    FileKind kind = ClassifyFile(rel);
    return topicsOnly ? kind == FileKind::kTopic : kind != FileKind::kOther;
  }
};

}  // namespace

FileKind ClassifyFile(const std::string& path) {
  static const std::set<std::string> images = {".gif", ".jpg", ".jpeg", ".png", ".bmp", ".ico",
                                               ".svg", ".webp", ".tif", ".tiff", ".jpe", ".wmf", ".emf"};
  std::string ext = LowerExtension(path);
  if (ext == ".htm" || ext == ".html") return FileKind::kTopic;
  if (ext == ".hhc") return FileKind::kContents;
  if (ext == ".hhk") return FileKind::kIndex;
  if (ext == ".css") return FileKind::kStylesheet;
  if (ext == ".hhp") return FileKind::kProject;
  if (images.count(ext)) return FileKind::kImage;
  return FileKind::kOther;
}

std::vector<ProjectFile> ClassifyFiles(const std::vector<std::string>& paths) {
  std::vector<ProjectFile> files;
  files.reserve(paths.size());
  for (const std::string& p : paths) files.push_back({p, ClassifyFile(p)});
  return files;
}

ProjectFiles ListProjectFiles(const std::string& root, bool topicsOnly) {
  Walker w;
  w.root = root;
  w.topicsOnly = topicsOnly;
  w.Walk(fs::path(root), "");
  std::sort(w.out.files.begin(), w.out.files.end());
  return std::move(w.out);
}

namespace {

// A file that is there but cannot be read says so, with the system's reason;
// only a missing one is "No such file or directory".
std::string ReadFailure(int err) {
  return err == ENOENT ? std::strerror(err) : "unreadable (" + std::string(std::strerror(err)) + ")";
}

// The first `limit` bytes of a regular file, refused as ReadWholeFile
// refuses.
bool ReadFileUpTo(const std::string& path, std::size_t limit, CByteString& bytes, std::string& error) {
  bytes.Empty();
  // Non-blocking, so that opening a pipe without a writer returns at once;
  // it is then turned away as not a regular file.
  int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) {
    error = ReadFailure(errno);
    return false;
  }
  struct stat st {};
  if (::fstat(fd, &st) != 0) {
    error = ReadFailure(errno);
    ::close(fd);
    return false;
  }
  if (!S_ISREG(st.st_mode)) {
    error = S_ISDIR(st.st_mode) ? "is a folder, not a file" : "not a regular file (a pipe, socket or device)";
    ::close(fd);
    return false;
  }
  // Refused before reading, so a huge file costs no memory.
  if (static_cast<unsigned long long>(st.st_size) > kMaxFileBytes) {
    error = "too large (" + std::to_string(st.st_size) + " bytes; at most " + std::to_string(kMaxFileBytes) +
            ")";
    ::close(fd);
    return false;
  }
  // Room for the whole file at once (and the terminating zero), so that a
  // large page is not copied as its buffer grows.
  if (st.st_size > 0) bytes.Allocate(static_cast<int>(std::min<unsigned long long>(st.st_size, limit)) + 64);
  char buf[1 << 16];
  for (std::size_t left = limit; left > 0;) {
    ssize_t n = ::read(fd, buf, std::min(sizeof buf, left));
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      error = ReadFailure(errno);
      ::close(fd);
      return false;
    }
    if (static_cast<size_t>(bytes.GetLength()) + static_cast<size_t>(n) > kMaxFileBytes) {  // grew while being read
      error = "too large (more than " + std::to_string(kMaxFileBytes) + " bytes)";
      ::close(fd);
      return false;
    }
    if (!bytes.Append(reinterpret_cast<const unsigned char*>(buf), static_cast<int>(n))) {
      error = "out of memory";
      ::close(fd);
      return false;
    }
    left -= static_cast<std::size_t>(n);
  }
  ::close(fd);
  return true;
}

bool LoadFileUpTo(const std::string& path, std::size_t limit, CByteString& bytes, std::string& error) {
  std::error_code ec;
  if (fs::is_directory(path, ec)) {
    error = path + ": is a folder, not a page";
    return false;
  }
  std::string why;
  if (!ReadFileUpTo(path, limit, bytes, why)) {
    bytes.Empty();
    error = path + ": " + why;
    return false;
  }
  return true;
}

}  // namespace

bool ReadWholeFile(const std::string& path, CByteString& bytes, std::string& error) {
  return ReadFileUpTo(path, std::numeric_limits<std::size_t>::max(), bytes, error);
}

bool LoadWholeFile(const std::string& path, CByteString& bytes, std::string& error) {
  return LoadFileUpTo(path, std::numeric_limits<std::size_t>::max(), bytes, error);
}

bool LoadFileStart(const std::string& path, std::size_t limit, CByteString& bytes, std::string& error) {
  return LoadFileUpTo(path, limit, bytes, error);
}

bool LooksBinary(const CByteString& bytes) {
  int n = bytes.GetLength() < 8192 ? bytes.GetLength() : 8192;
  return n > 0 && std::memchr(bytes.GetContent(), 0, static_cast<size_t>(n)) != nullptr;
}

}  // namespace telvanix::project

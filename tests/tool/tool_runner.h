// Running the built telvanix program as a user or build script would, and
// the scratch folders its end-to-end tests work in.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

extern char** environ;

namespace telvanix::tool_test {

namespace fs = std::filesystem;

inline const std::string kTool = TELVANIX_TOOL_FILE;
inline const std::string kLantern = std::string(TELVANIX_SAMPLES_DIR) + "/lantern";

struct ToolRun {
  int status = -1;  // exit status; -1 when killed or not started
  bool timedOut = false;
  std::string out, err;
};

inline std::ostream& operator<<(std::ostream& os, const ToolRun& r) {
  return os << "status " << r.status << (r.timedOut ? " (timed out)" : "") << "\n--- stdout:\n"
            << r.out << "--- stderr:\n"
            << r.err;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Runs `telvanix args...` with stdin from /dev/null, capturing both output
// streams in files. A run that outlives `timeoutSeconds` is killed: a tool
// that blocks (on a pipe, say) fails its test instead of hanging the suite.
inline ToolRun RunTool(const std::vector<std::string>& args, int timeoutSeconds = 60) {
  ToolRun r;
  std::string sink = (fs::temp_directory_path() / "telvanix-run-XXXXXX").string();
  if (!::mkdtemp(sink.data())) return r;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, (sink + "/out").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, 2, (sink + "/err").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  std::vector<std::string> all = {kTool};
  all.insert(all.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& a : all) argv.push_back(a.data());
  argv.push_back(nullptr);
  pid_t pid = -1;
  int wstatus = 0;
  const bool started = posix_spawn(&pid, kTool.c_str(), &actions, nullptr, argv.data(), environ) == 0;
  if (started) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
    while (::waitpid(pid, &wstatus, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() > deadline) {
        r.timedOut = true;
        ::kill(pid, SIGKILL);
        ::waitpid(pid, &wstatus, 0);
        break;
      }
      ::usleep(2000);
    }
    if (!r.timedOut && WIFEXITED(wstatus)) r.status = WEXITSTATUS(wstatus);
  }
  posix_spawn_file_actions_destroy(&actions);
  r.out = ReadFile(sink + "/out");
  r.err = started ? ReadFile(sink + "/err") : "cannot start " + kTool;
  std::error_code ec;
  fs::remove_all(sink, ec);
  return r;
}

// A scratch folder, removed with everything in it when the test ends.
class ScratchDir {
 public:
  ScratchDir() {
    std::string pattern = (fs::temp_directory_path() / "telvanix-e2e-XXXXXX").string();
    if (::mkdtemp(pattern.data())) m_path = pattern;
  }
  ~ScratchDir() {
    std::error_code ec;
    if (!m_path.empty()) fs::remove_all(m_path, ec);
  }
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;

  const std::string& path() const { return m_path; }
  std::string operator/(const std::string& relative) const { return m_path + "/" + relative; }

 private:
  std::string m_path;
};

// A fresh copy of the sample project inside a scratch folder.
class LanternCopy : public ScratchDir {
 public:
  LanternCopy() { fs::copy(kLantern, root(), fs::copy_options::recursive); }
  std::string root() const { return path() + "/lantern"; }
  std::string file(const std::string& relative) const { return root() + "/" + relative; }
};

inline void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
}

// Replaces the one occurrence of `from` in a file; fails the test when the
// text is not there exactly once, so a changed sample is noticed.
inline void ReplaceInFile(const std::string& path, const std::string& from, const std::string& to) {
  std::string bytes = ReadFile(path);
  size_t at = bytes.find(from);
  ASSERT_NE(at, std::string::npos) << from << " not in " << path;
  ASSERT_EQ(bytes.find(from, at + 1), std::string::npos) << from << " twice in " << path;
  bytes.replace(at, from.size(), to);
  WriteFile(path, bytes);
}

// Every regular file under `root` by relative path, with its bytes.
inline std::map<std::string, std::string> Snapshot(const std::string& root) {
  std::map<std::string, std::string> files;
  for (const auto& e : fs::recursive_directory_iterator(root))
    if (e.is_regular_file()) files[fs::relative(e.path(), root).string()] = ReadFile(e.path().string());
  return files;
}

inline std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

}  // namespace telvanix::tool_test

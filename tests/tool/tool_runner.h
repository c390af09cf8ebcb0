// Running the built telvanix program as a user or build script would, and
// the scratch folders its end-to-end tests work in.
#pragma once

#include <fcntl.h>
#include <poll.h>
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
// A small project with one case of each kind of reference `check` follows;
// the file of the same name with ".findings" lists what it reports.
inline const std::string kReferences = std::string(TELVANIX_TEST_DATA_DIR) + "/check/references";

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

// Runs `telvanix args...` with stdin from /dev/null, capturing both output
// streams. A run that outlives `timeoutSeconds` is killed: a tool that
// blocks (on a pipe, say) fails its test instead of hanging the suite.
inline ToolRun RunTool(const std::vector<std::string>& args, int timeoutSeconds = 60) {
  ToolRun r;
  int outPipe[2], errPipe[2];
  if (::pipe2(outPipe, O_CLOEXEC) != 0) return r;
  if (::pipe2(errPipe, O_CLOEXEC) != 0) {
    ::close(outPipe[0]);
    ::close(outPipe[1]);
    return r;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, outPipe[1], 1);
  posix_spawn_file_actions_adddup2(&actions, errPipe[1], 2);
  std::vector<std::string> all = {kTool};
  all.insert(all.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& a : all) argv.push_back(a.data());
  argv.push_back(nullptr);
  pid_t pid = -1;
  int spawned = posix_spawn(&pid, kTool.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(outPipe[1]);
  ::close(errPipe[1]);
  if (spawned != 0) {
    ::close(outPipe[0]);
    ::close(errPipe[0]);
    r.err = "cannot start " + kTool;
    return r;
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
  std::string* sinks[2] = {&r.out, &r.err};
  int open = 2;
  while (open > 0) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      r.timedOut = true;
      ::kill(pid, SIGKILL);
      break;
    }
    if (::poll(fds, 2, static_cast<int>(left.count())) < 0 && errno != EINTR) break;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
      char buf[8192];
      ssize_t n = ::read(fds[i].fd, buf, sizeof buf);
      if (n > 0) {
        sinks[i]->append(buf, static_cast<size_t>(n));
      } else if (n == 0 || errno != EINTR) {
        ::close(fds[i].fd);
        fds[i].fd = -1;
        --open;
      }
    }
  }
  for (pollfd& f : fds)
    if (f.fd >= 0) ::close(f.fd);
  int wstatus = 0;
  while (::waitpid(pid, &wstatus, 0) < 0 && errno == EINTR) {
  }
  if (!r.timedOut && WIFEXITED(wstatus)) r.status = WEXITSTATUS(wstatus);
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

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

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

#include "cli/parallel.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace telvanix::tool {

unsigned WorkerCount() {
  if (const char* env = std::getenv("TELVANIX_JOBS")) {
    int n = std::atoi(env);
    if (n > 0) return static_cast<unsigned>(n);
  }
  unsigned n = std::thread::hardware_concurrency();
  return n ? n : 1;
}

namespace {

class ProgressBar {
 public:
  ProgressBar(size_t total, std::string label)
      : m_total(total), m_label(std::move(label)), m_enabled(total >= 200 && isatty(STDERR_FILENO)) {}
  ~ProgressBar() {
    if (m_drawn) std::fprintf(stderr, "\r\033[K");
  }
  void Update(size_t done) {
    if (!m_enabled) return;
    auto now = std::chrono::steady_clock::now();
    if (done != m_total && now - m_last < std::chrono::milliseconds(100)) return;
    m_last = now;
    m_drawn = true;
    const int width = 30;
    int filled = static_cast<int>(width * done / (m_total ? m_total : 1));
    std::fprintf(stderr, "\r%s [%.*s%*s] %zu/%zu", m_label.c_str(), filled,
                 "##############################", width - filled, "", done, m_total);
    std::fflush(stderr);
  }

 private:
  size_t m_total;
  std::string m_label;
  bool m_enabled;
  bool m_drawn = false;
  std::chrono::steady_clock::time_point m_last{};
};

}  // namespace

void ParallelFor(size_t count, const std::function<void(size_t)>& job, const std::string& label) {
  std::atomic<size_t> next{0};
  std::atomic<size_t> done{0};
  unsigned workers = WorkerCount();
  if (workers > count) workers = static_cast<unsigned>(count ? count : 1);
  ProgressBar bar(count, label);
  auto work = [&] {
    for (size_t i; (i = next.fetch_add(1)) < count;) {
      job(i);
      done.fetch_add(1);
    }
  };
  std::vector<std::thread> pool;
  for (unsigned t = 1; t < workers; ++t) pool.emplace_back(work);
  // The calling thread works too and draws the bar between jobs.
  for (size_t i; (i = next.fetch_add(1)) < count;) {
    job(i);
    bar.Update(done.fetch_add(1) + 1);
  }
  for (std::thread& t : pool) t.join();
  bar.Update(count);
}

}  // namespace telvanix::tool

// Runs independent jobs on every core and keeps their results in input
// order, so output is stable whatever the scheduling. Draws a progress bar on
// stderr only when stderr is a terminal and the run is long enough to matter.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>

namespace telvanix::tool {

// Number of worker threads: TELVANIX_JOBS when set, else the core count.
unsigned WorkerCount();

// From this size on, a page's second walk over its tokens runs beside the
// first on a thread of its own: a large page then waits for one of them.
constexpr int kPageAsideBytes = 4 << 20;

// Calls job(i) for every i in [0, count) on a pool of WorkerCount() threads.
// job must be safe to run concurrently for different i.
void ParallelFor(size_t count, const std::function<void(size_t)>& job, const std::string& label);

}  // namespace telvanix::tool

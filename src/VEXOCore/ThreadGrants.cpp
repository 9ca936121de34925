#include "VEXOCore/ThreadGrants.h"

#include <sched.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>

#include "VEXOCore/Log.h"

namespace vexo::core {
namespace {

/// CPUs' worth of time that the control group at this folder and those above it grant; 0 when none sets a
/// limit.
double controlGroupLimit(const std::string& folder) {
  double limit = 0;
  for (std::string path = folder;; path.erase(path.rfind('/'))) {
    double quota = 0, period = 0;
    std::ifstream v2("/sys/fs/cgroup" + path + "/cpu.max");
    if (!(v2 >> quota >> period)) {
      std::ifstream("/sys/fs/cgroup/cpu" + path + "/cpu.cfs_quota_us") >> quota;
      std::ifstream("/sys/fs/cgroup/cpu" + path + "/cpu.cfs_period_us") >> period;
    }
    if (quota > 0 && period > 0 && (limit == 0 || quota / period < limit)) limit = quota / period;
    if (path.empty()) return limit;
  }
}

double controlGroupLimit() {
  // Lines "0::/folder" (version 2) or "4:cpu,cpuacct:/folder" (version 1).
  std::ifstream groups("/proc/self/cgroup");
  double limit = 0;
  for (std::string line; std::getline(groups, line);) {
    const auto first = line.find(':'), second = line.find(':', first + 1);
    if (second == std::string::npos) continue;
    const std::string controllers = "," + line.substr(first + 1, second - first - 1) + ",";
    if (controllers != ",," && controllers.find(",cpu,") == std::string::npos) continue;
    std::string folder = line.substr(second + 1);
    if (folder == "/") folder.clear();
    const double found = controlGroupLimit(folder);
    if (found > 0 && (limit == 0 || found < limit)) limit = found;
  }
  return limit;
}

/// Processors of the affinity mask.
std::size_t countProcessors() {
  for (int most = CPU_SETSIZE; most <= 1 << 20; most *= 2) {
    cpu_set_t* const set = CPU_ALLOC(most);
    if (!set) break;
    const std::size_t size = CPU_ALLOC_SIZE(most);
    const int count = sched_getaffinity(0, size, set) == 0 ? CPU_COUNT_S(size, set) : 0;
    CPU_FREE(set);
    if (count > 0) return static_cast<std::size_t>(count);
  }
  return 1;
}

}  // namespace

std::size_t countGrantedThreads() {
  std::size_t threads = countProcessors();
  if (const double granted = controlGroupLimit(); granted > 0)
    threads = std::min(threads, static_cast<std::size_t>(std::max(1.0, std::ceil(granted))));
  return threads;
}

void checkThreadCount(std::size_t count) {
  constexpr std::size_t most = 4096;
  if (count > most) raiseError(VEXO_HERE, "VEXOCore", "thread count ", count, " is over ", most);
}

}  // namespace vexo::core

#pragma once

#include <cstddef>

namespace vexo::core {

/// The threads that the affinity mask and the control groups of the process let run at once.
std::size_t countGrantedThreads();

/// Throws when there are more than any machine has a use for.
void checkThreadCount(std::size_t count);

}  // namespace vexo::core

// On its own, because the build for the thread sanitizer leaves this file out: oneTBB is not instrumented,
// and half instrumented, in what it inlines here, it looks like one race after another.
#include "VEXOCore/ParallelFor.h"

#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

namespace vexo::core {

void parallelFor(tbb::task_arena& arena, std::size_t count, void (*piece)(void*, std::size_t),
                 void* context) {
  arena.execute([=] {
    tbb::parallel_for(
        std::size_t(0), count, [=](std::size_t index) { piece(context, index); }, tbb::simple_partitioner());
  });
}

}  // namespace vexo::core

#pragma once

#include <tbb/task_arena.h>

#include <cstddef>

namespace vexo::core {

/// Calls piece(context, i) for each i below count, on the threads of the arena; returns when all have
/// returned.
void parallelFor(tbb::task_arena& arena, std::size_t count, void (*piece)(void* context, std::size_t index),
                 void* context);

}  // namespace vexo::core

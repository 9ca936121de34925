#pragma once

#include <cstddef>

namespace vexo::test {

/// From now on the allocation of that number, counted from 1 over all threads, fails, and all after it when
/// `andLater`. It covers malloc and its kind, aligned_alloc, and mmap of the program and its libraries.
void failAllocation(long number, bool andLater = false);
/// No allocation fails any more. Returns how many there were since.
long endFailing();
/// Blocks that have been allocated and not yet released.
long countBlocks();
/// The file name of the library that the last failed allocation was made for, the C++ library's left out.
const char* failedLibrary();

}  // namespace vexo::test

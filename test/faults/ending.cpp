// Ends while runs of all filters are under way in the background, which nobody waits for.
#include <cstdlib>
#include <thread>

#include "Filters.h"

int main(int argc, char** argv) {
  using namespace vexo;
  const int runs = argc > 1 ? std::atoi(argv[1]) : 100;
  const int pause = argc > 2 ? std::atoi(argv[2]) : 0;  // microseconds
  const std::string only = argc > 3 ? argv[3] : "";
  std::vector<std::string> names = test::filterNames();
  if (!only.empty()) names = {"vexo::imaproc::filter::" + only + "Lvl1"};
  for (int i = 0; i < runs; ++i)
    test::makeFilter(names[static_cast<std::size_t>(i) % names.size()], {64, 200, 4},
                     image::eImageBufferType::UInt16)
        ->run(core::eSynchroType::Asynchronous);
  std::this_thread::sleep_for(std::chrono::microseconds(pause));
  return 0;
}

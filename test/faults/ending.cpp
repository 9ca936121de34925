// Ends while runs of all filters are under way in the background, which nobody waits for.
//
//   ending WAY RUNS MICROSECONDS
//
// WAY: return (from main), sync and async (from main while another thread runs, or starts, filters), exit
// (from within a piece of a run).
#include <cstdlib>
#include <thread>

#include "tools/Filters.h"

namespace {

using namespace vexo;

boost::shared_ptr<processor::BaseProcessor> makeSome(int number) {
  static const auto& names = *new std::vector<std::string>(test::filterNames());
  return test::makeFilter(names[static_cast<std::size_t>(number) % names.size()], {64, 200, 4},
                          image::eImageBufferType::UInt16);
}

void runForEver(core::eSynchroType synchro) {
  for (int number = 0;; ++number) try {
      makeSome(number)->run(synchro);
    } catch (const BaseException&) {
      // The filter, or the run, came after the end.
    }
}

/// Its 20th piece ends the process.
class Ender : public core::BaseAction, public core::BaseActionProvider {
  std::size_t prepare() override { return 50; }
  void runPiece(std::size_t index, const core::RunShare&) override {
    if (index == 20) std::exit(0);
  }
  void execute(const core::RunShare& share) override { core::ActionRunner::getInstance().run(*this, share); }
  std::string getRunName() const override { return "the end"; }
};

}  // namespace

int main(int argc, char** argv) {
  const std::string way = argc > 1 ? argv[1] : "return";
  const int runs = argc > 2 ? std::atoi(argv[2]) : 100;
  const std::chrono::microseconds pause(argc > 3 ? std::atoi(argv[3]) : 0);
  for (int i = 0; i < runs; ++i) makeSome(i)->run(core::eSynchroType::Asynchronous);
  if (way == "sync" || way == "async")
    std::thread(runForEver,
                way == "sync" ? core::eSynchroType::Synchronous : core::eSynchroType::Asynchronous)
        .detach();
  std::this_thread::sleep_for(pause);
  if (way == "exit") {
    const auto ender = boost::make_shared<Ender>();
    ender->setThreadLimit(3);
    ender->run(core::eSynchroType::Asynchronous);
    std::this_thread::sleep_for(std::chrono::minutes(1));
  }
  return 0;
}

#pragma once

#include <boost/shared_ptr.hpp>
#include <string>
#include <vector>

#include "VEXOProcessing/Processor.h"

namespace vexo::app {

/// First-level processors, those that take whole images, or all.
std::vector<boost::shared_ptr<processor::BaseProcessor>> createProcessors(bool allLevels);

/// The processor that a word names, initialised. Namespaces and "Lvl1" may be left out of the word; a
/// UsageError when it names none.
boost::shared_ptr<processor::BaseProcessor> createProcessor(const std::string& word);

}  // namespace vexo::app

#include "VEXOIPL/VEXOIPLFiltering/Bilateral/BilateralTables.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "VEXOIPL/VEXOIPLGlobalMeasure/Processor/StatsMsr/StatsMsrLvl1.h"

namespace vexo::imaproc::filter {
namespace {

struct Bins {
  std::size_t count;
  float scale;
};

/// One bin per grey level while that is no more than 65536.
Bins binsFor(image::eImageBufferType type, double minimum, double maximum) {
  if (getSampleSize(type) == 1) return {256, 1};
  // The largest float stands for an infinity, and for what a given range has beyond it.
  constexpr double most = 65536, largest = std::numeric_limits<float>::max();
  // Without a sign: 0 to -0 is a range, too.
  double range = std::abs(std::clamp(maximum, -largest, largest) - std::clamp(minimum, -largest, largest));
  if (type != image::eImageBufferType::Real32) {
    range += 1.0;
    if (range < most) return {static_cast<std::size_t>(range), 1};
  }
  return {65536, static_cast<float>(most / range)};
}

/// In single precision, unless a difference, its square or that of the deviation is no float.
attr::Floats makeRangeTable(const Bins& bins, double sigma) {
  const double exact = -0.5 / (sigma * sigma);
  const auto coefficient = static_cast<float>(exact);
  attr::Floats table(bins.count, 0.0f);
  for (std::size_t i = 0; i < table.size(); ++i) {
    const float difference = static_cast<float>(i) / bins.scale;
    const float squared = difference * difference;
    const double wide = std::isfinite(difference) ? difference : static_cast<double>(i) / bins.scale;
    const float weight = std::isnormal(coefficient) && std::isfinite(squared)
                             ? std::exp(squared * coefficient)
                             : static_cast<float>(std::exp(wide * wide * exact));
    if (weight < std::numeric_limits<float>::min()) break;  // the others would be smaller still: they are 0
    table[i] = weight;
  }
  return table;
}

double placesOf(double halfSize, eBilateralWindow window) {
  const double size = 2 * halfSize + 1;
  return window == eBilateralWindow::Walk ? halfSize + 1
                                          : size * size * (window == eBilateralWindow::Cube ? size : 1);
}

attr::Floats makeSpaceTable(std::uint32_t halfSize, double sigma, eBilateralWindow window) {
  const double coefficient = -0.5 / (sigma * sigma);
  const auto h = static_cast<std::int64_t>(halfSize);
  const std::int64_t hy = window == eBilateralWindow::Walk ? 0 : h;
  const std::int64_t hz = window == eBilateralWindow::Cube ? h : 0;
  attr::Floats table;
  table.reserve(static_cast<std::size_t>(placesOf(halfSize, window)));
  for (std::int64_t dz = -hz; dz <= hz; ++dz)
    for (std::int64_t dy = -hy; dy <= hy; ++dy)
      for (std::int64_t dx = window == eBilateralWindow::Walk ? 0 : -h; dx <= h; ++dx) {
        const auto x = static_cast<float>(dx), y = static_cast<float>(dy), z = static_cast<float>(dz);
        const float squared = x * x + y * y + z * z;
        table.push_back(static_cast<float>(std::exp(static_cast<double>(squared) * coefficient)));
      }
  return table;
}

}  // namespace

double bilateralHalfSize(std::uint32_t given, double spaceSigma) {
  if (given != 0) return given;
  const double derived = std::trunc(1.5 * spaceSigma + 0.5);
  return derived > 0 ? derived : 0;
}

processor::RulePtr bilateralRule(const processor::BaseProcessor& level1, eBilateralWindow window) {
  const auto half = level1.accessAttribute<attr::InOptHalfKnlSize>();
  const auto sigma = level1.accessAttribute<attr::InSpaceSigma>();
  return processor::makeRule([half, sigma, window] {
    constexpr double mostPlaces = 1 << 28;  // a table of 1 GiB
    const double halfSize = bilateralHalfSize(half->getStorage(), sigma->getStorage());
    const auto tooLarge = [&](const std::string& why) {
      const processor::BaseAttribute& cause =
          half->getStorage() != 0 ? static_cast<const processor::BaseAttribute&>(*half) : *sigma;
      return BoolResult::failure(cause.getName() + " " + cause.getText() + ": " + why);
    };
    if (halfSize > static_cast<double>(image::maxStripMargin))
      return tooLarge("the window would be larger than the largest half size, " +
                      std::to_string(image::maxStripMargin));
    if (placesOf(halfSize, window) > mostPlaces)
      return tooLarge("the window would have more than " +
                      std::to_string(static_cast<std::int64_t>(mostPlaces)) + " samples");
    return BoolResult(true);
  });
}

double bilateralStepCost(const processor::BaseProcessor& level1, eBilateralWindow window, std::size_t step) {
  if (step != 2) return step == 0 ? 1 : 0;  // a measure that does not happen leaves its part to the filter
  const double half =
      bilateralHalfSize(level1.getStorage<attr::InOptHalfKnlSize>(), level1.getStorage<attr::InSpaceSigma>());
  return 10 + placesOf(half, window);
}

core::ProviderPtr measureRange(const processor::BaseProcessor& level1, const image::ConstImagePtr& image,
                               boost::shared_ptr<attr::StatsResult>& statistics) {
  statistics.reset();
  if (getSampleSize(image->getBufferType()) == 1 || level1.getStorage<attr::InOptInputRange>())
    return nullptr;
  return glbmsr::statsMsrStep(image, statistics);
}

BilateralTables makeBilateralTables(const processor::BaseProcessor& level1, image::eImageBufferType input,
                                    const boost::shared_ptr<const attr::StatsResult>& statistics,
                                    eBilateralWindow window) {
  const double spaceSigma = level1.getStorage<attr::InSpaceSigma>();
  const auto halfSize =
      static_cast<std::uint32_t>(bilateralHalfSize(level1.getStorage<attr::InOptHalfKnlSize>(), spaceSigma));
  const auto given = level1.getStorage<attr::InOptInputRange>();
  const Bins bins = given ? binsFor(input, given->minimum.getValue(), given->maximum.getValue())
                    : statistics
                        ? binsFor(input, statistics->minimum.getValue(), statistics->maximum.getValue())
                        : binsFor(input, 0, 0);
  return {
      halfSize, static_cast<double>(bins.scale),
      boost::make_shared<const attr::Floats>(makeSpaceTable(halfSize, spaceSigma, window)),
      boost::make_shared<const attr::Floats>(makeRangeTable(bins, level1.getStorage<attr::InRangeSigma>()))};
}

BoolResult makeBilateralParameters(const attr::Floats& space, const attr::Floats& range, double scale,
                                   const image::StripMargins& margins, bool walk,
                                   BilateralParameters& parameters) {
  if (!std::equal(margins.before, margins.before + 3, margins.after))
    return BoolResult::failure("the margins of a strip are not the same on both sides");
  std::size_t places = 1;
  for (int axis = 0; axis < 3; ++axis)
    places *= walk ? 1 + margins.after[axis] : 1 + margins.before[axis] + margins.after[axis];
  if (space.size() != places)
    return BoolResult::failure("InTabulatedSpaceExponentials has " + std::to_string(space.size()) +
                               " weights, the window " + std::to_string(places) + " places");
  if (range.empty() || range.size() > 65536)
    return BoolResult::failure("InTabulatedRangeExponentials has " + std::to_string(range.size()) +
                               " weights, not 1 to 65536");
  // All bins from the first 0 on are 0: one of them stands for all, and kernels need less of the table.
  const auto zero = std::find(range.begin(), range.end() - 1, 0.0f);
  parameters.space = space.data();
  parameters.range = range.data();
  parameters.lastBin = static_cast<int>(zero - range.begin());
  parameters.scale = static_cast<float>(scale);
  return true;
}

}  // namespace vexo::imaproc::filter

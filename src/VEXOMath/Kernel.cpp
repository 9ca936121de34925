#include "VEXOMath/Kernel.h"

#include <algorithm>
#include <cmath>

#include "VEXOCore/DataItem.h"
#include "VEXOCore/Quote.h"

namespace vexo {
namespace {

constexpr std::array<std::int32_t OffsetXY::*, 2> axes(const OffsetXY&) {
  return {&OffsetXY::dx, &OffsetXY::dy};
}
constexpr std::array<std::int32_t OffsetXYZ::*, 3> axes(const OffsetXYZ&) {
  return {&OffsetXYZ::dx, &OffsetXYZ::dy, &OffsetXYZ::dz};
}

std::string trimmed(const std::string& text) {
  const char* const blanks = " \t\r\v\f";
  const auto first = text.find_first_not_of(blanks);
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> split(const std::string& text, const char* separators) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0, end; begin != std::string::npos;
       begin = end == std::string::npos ? end : end + 1) {
    end = text.find_first_of(separators, begin);
    parts.push_back(trimmed(text.substr(begin, end - begin)));
  }
  return parts;
}

template <class Point>
BoolResult pointFromText(const std::string& text, Point& point) {
  const std::vector<std::string> fields = split(text, ",");
  const auto members = axes(point.offset);
  if (fields.size() != members.size() + 1)
    return BoolResult::failure(std::to_string(members.size() + 1) + " numbers are needed");
  for (std::size_t axis = 0; axis < members.size(); ++axis)
    if (const BoolResult read = ScalarText<std::int32_t>::fromText(fields[axis], point.offset.*members[axis]);
        !read)
      return read;
  return ScalarText<float>::fromText(fields.back(), point.weight);
}

}  // namespace

template <class Offset>
double KernelOf<Offset>::getWeightSum() const {
  double sum = 0;
  for (const Point& point : _points) sum += point.weight;
  return sum;
}

template <class Offset>
typename KernelOf<Offset>::Extent KernelOf<Offset>::getExtent() const {
  Extent extent{};
  for (const Point& point : _points) {
    for (std::size_t axis = 0; axis < extent.size(); ++axis) {
      const std::int64_t offset = point.offset.*axes(point.offset)[axis];
      auto& reach = offset < 0 ? extent[axis].before : extent[axis].after;
      reach = std::max(reach, static_cast<std::size_t>(offset < 0 ? -offset : offset));
    }
  }
  return extent;
}

template <class Offset>
bool KernelOf<Offset>::operator==(const KernelOf& other) const {
  return std::equal(_points.begin(), _points.end(), other._points.begin(), other._points.end(),
                    [](const Point& a, const Point& b) {
                      for (const auto axis : axes(a.offset))
                        if (a.offset.*axis != b.offset.*axis) return false;
                      return a.weight == b.weight || (std::isnan(a.weight) && std::isnan(b.weight));
                    });
}

template <class Offset>
std::string KernelOf<Offset>::toText() const {
  std::string text;
  for (const Point& point : _points) {
    if (!text.empty()) text += ';';
    for (const auto axis : axes(point.offset))
      text += ScalarText<std::int32_t>::toText(point.offset.*axis) + ",";
    text += ScalarText<float>::toText(point.weight);
  }
  return text;
}

template <class Offset>
BoolResult KernelOf<Offset>::fromText(const std::string& text, KernelOf& kernel) {
  KernelOf parsed;
  for (const std::string& pointText : split(text, ";\n")) {
    if (pointText.empty()) continue;
    Point point{};
    if (const BoolResult read = pointFromText(pointText, point); !read)
      return BoolResult::failure("point " + std::to_string(parsed._points.size() + 1) + " of the kernel, " +
                                 quote(pointText) + ": " + read.getMessage());
    parsed._points.push_back(point);
  }
  kernel = std::move(parsed);
  return true;
}

template class KernelOf<OffsetXY>;
template class KernelOf<OffsetXYZ>;

}  // namespace vexo

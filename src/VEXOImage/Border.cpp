#include "VEXOImage/Border.h"

#include <boost/make_shared.hpp>

#include "VEXOCore/DataItem.h"
#include "VEXOCore/Quote.h"

namespace vexo::image {

bool BorderPolicy::operator==(const BorderPolicy& o) const {
  if (_border != o._border) return false;
  const bool bothNan = _constant != _constant && o._constant != o._constant;
  return _border != eBorder::Constant || _constant == o._constant || bothNan;
}

std::string BorderPolicy::toText() const {
  switch (_border) {
    case eBorder::Mirror:
      return "mirror";
    case eBorder::Replicate:
      return "replicate";
    case eBorder::Circular:
      return "circular";
    case eBorder::Constant:
      break;
  }
  return "constant=" + ScalarText<double>::toText(_constant);
}

BoolResult BorderPolicy::fromText(const std::string& text, BorderPolicy& policy) {
  if (text == "mirror") {
    policy = BorderPolicy(eBorder::Mirror);
  } else if (text == "replicate") {
    policy = BorderPolicy(eBorder::Replicate);
  } else if (text == "circular") {
    policy = BorderPolicy(eBorder::Circular);
  } else if (text.rfind("constant=", 0) == 0) {
    double value = 0;
    if (const BoolResult parsed = ScalarText<double>::fromText(text.substr(9), value); !parsed) return parsed;
    policy = BorderPolicy(eBorder::Constant, value);
  } else {
    return BoolResult::failure(quote(text) +
                               " is no border policy; use mirror, replicate, circular or constant=V");
  }
  return true;
}

boost::shared_ptr<const Border2dPolicy> mirorBorder2d() {
  static const auto& policy =
      *new boost::shared_ptr<const Border2dPolicy>(boost::make_shared<const Border2dPolicy>());
  return policy;
}
boost::shared_ptr<const Border2dPolicy> replicateBorder2d() {
  return boost::make_shared<const Border2dPolicy>(eBorder::Replicate);
}
boost::shared_ptr<const Border2dPolicy> circularBorder2d() {
  return boost::make_shared<const Border2dPolicy>(eBorder::Circular);
}
boost::shared_ptr<const Border2dPolicy> constantBorder2d(double value) {
  return boost::make_shared<const Border2dPolicy>(eBorder::Constant, value);
}
boost::shared_ptr<const Border3dPolicy> mirorBorder3d() {
  static const auto& policy =
      *new boost::shared_ptr<const Border3dPolicy>(boost::make_shared<const Border3dPolicy>());
  return policy;
}
boost::shared_ptr<const Border3dPolicy> replicateBorder3d() {
  return boost::make_shared<const Border3dPolicy>(eBorder::Replicate);
}
boost::shared_ptr<const Border3dPolicy> circularBorder3d() {
  return boost::make_shared<const Border3dPolicy>(eBorder::Circular);
}
boost::shared_ptr<const Border3dPolicy> constantBorder3d(double value) {
  return boost::make_shared<const Border3dPolicy>(eBorder::Constant, value);
}

}  // namespace vexo::image

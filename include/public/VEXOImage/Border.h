#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "VEXOCore/BoolResult.h"
#include "VEXOCore/Export.h"
#include "VEXOImage/StripView.h"

namespace vexo::image {

/// How samples outside an image are obtained, the axes independently of one another:
///   mirror     ... c b a | a b c d | d c b ...   (the edge sample is repeated; the period is twice the size)
///   replicate  ... a a a | a b c d | d d d ...
///   circular   ... b c d | a b c d | a b c ...
///   constant   a value, rounded and saturated to the type of the image
class VEXO_API BorderPolicy {
public:
  eBorder getBorder() const { return _border; }
  double getConstant() const { return _constant; }
  bool operator==(const BorderPolicy& o) const;
  /// "mirror", "replicate", "circular" or "constant=V", and back.
  std::string toText() const;
  static BoolResult fromText(const std::string& text, BorderPolicy& policy);

  BorderPolicy(eBorder border = eBorder::Mirror, double constant = 0)
      : _border(border), _constant(constant) {}

private:
  eBorder _border;
  double _constant;
};

class Border2dPolicy : public BorderPolicy {
  using BorderPolicy::BorderPolicy;
};
class Border3dPolicy : public BorderPolicy {
  using BorderPolicy::BorderPolicy;
};

VEXO_API boost::shared_ptr<const Border2dPolicy> mirorBorder2d();
VEXO_API boost::shared_ptr<const Border2dPolicy> replicateBorder2d();
VEXO_API boost::shared_ptr<const Border2dPolicy> circularBorder2d();
VEXO_API boost::shared_ptr<const Border2dPolicy> constantBorder2d(double value);
VEXO_API boost::shared_ptr<const Border3dPolicy> mirorBorder3d();
VEXO_API boost::shared_ptr<const Border3dPolicy> replicateBorder3d();
VEXO_API boost::shared_ptr<const Border3dPolicy> circularBorder3d();
VEXO_API boost::shared_ptr<const Border3dPolicy> constantBorder3d(double value);

}  // namespace vexo::image

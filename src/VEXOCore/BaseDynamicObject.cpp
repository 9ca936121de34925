#include "VEXOCore/BaseDynamicObject.h"

#include <memory>

#include "VEXOCore/Log.h"

namespace vexo {

BaseDynamicObject::~BaseDynamicObject() = default;

BaseDynamicObject* BaseDynamicObject::duplicate() const {
  std::unique_ptr<BaseDynamicObject> twin(createNew());
  if (const BoolResult copied = twin->copy(*this); !copied)
    raiseError(VEXO_HERE, "VEXOCore", "cannot duplicate ", getClassName(), ": ", copied.getMessage());
  return twin.release();
}

boost::shared_ptr<BaseDynamicObject> BaseDynamicObject::duplicateShared() const {
  boost::shared_ptr<BaseDynamicObject> twin = createShared();
  if (const BoolResult copied = twin->copy(*this); !copied)
    raiseError(VEXO_HERE, "VEXOCore", "cannot duplicate ", getClassName(), ": ", copied.getMessage());
  return twin;
}

}  // namespace vexo

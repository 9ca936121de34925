#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "VEXOCore/BoolResult.h"
#include "VEXOCore/Export.h"

namespace vexo {

/// An object whose class is known by name at run time and that can be made anew and copied through its base.
class VEXO_API BaseDynamicObject {
public:
  virtual ~BaseDynamicObject();

  /// Fully qualified class name.
  virtual const std::string& getClassName() const = 0;
  /// A new raw, or shared, instance of the same class.
  virtual BaseDynamicObject* createNew() const = 0;
  virtual boost::shared_ptr<BaseDynamicObject> createShared() const = 0;

  /// Takes over the values and settings of an object of the same class; false with a message when it is of
  /// another.
  virtual BoolResult copy(const BaseDynamicObject& other) = 0;
  virtual bool hasCopySupport() const = 0;
  /// A new instance with the values and settings of this one; the caller owns the raw pointer.
  BaseDynamicObject* duplicate() const;
  boost::shared_ptr<BaseDynamicObject> duplicateShared() const;
};

/// Creators of one class, as factories keep them.
template <class T>
class DynamicRegistrator {
public:
  using NewCreator = BaseDynamicObject* (*)();
  using SharedCreator = boost::shared_ptr<BaseDynamicObject> (*)();
  static NewCreator newCreatorFcn() {
    return []() -> BaseDynamicObject* { return T::createNewObject(); };
  }
  static SharedCreator sharedCreatorFcn() {
    return []() -> boost::shared_ptr<BaseDynamicObject> { return T::createSharedObject(); };
  }
};

}  // namespace vexo

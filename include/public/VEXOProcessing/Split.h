#pragma once

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <functional>
#include <optional>
#include <vector>

#include "VEXOProcessing/Processor.h"

namespace vexo::processor {

/// For one attribute of the processors that a dispatcher runs: the value that each of them receives.
class VEXO_API BaseSplit {
public:
  virtual ~BaseSplit();
  /// False with a message when the processor is not of the class that the split serves.
  virtual BoolResult checkProcessorType(const BaseProcessor& processor) const = 0;
  /// True when the split was made from the class itself, so that there is nothing to check.
  virtual bool isMadeFor(const ProcessorClassInfo&) const { return false; }
  virtual const std::string& getAttributeName() const = 0;
  virtual const char* getAttributeToolTip() const = 0;
  /// Sets the attribute of one run to the value of that piece.
  virtual void setPiece(BaseProcessor& processor, std::size_t pieceIndex) const = 0;
};

/// A split whose number of pieces is known in advance; none when it serves any number.
class VEXO_API BaseStaticSplit : public BaseSplit {
public:
  virtual std::optional<std::size_t> getPieceCount() const = 0;
};

/// A split that follows the cut that its dispatcher decides.
class VEXO_API BaseDynamicSplit : public BaseSplit {
public:
  /// What is to be cut: its sizes X, Y, Z, the axis of the cut, and how far a piece reaches beyond its ends.
  struct Extent {
    std::size_t size[3];
    image::eStripParsingDirection direction;
    std::size_t margin;
  };
  /// None when the split goes along with any cut.
  virtual std::optional<Extent> getExtent() const { return std::nullopt; }
  /// Tells the cut, before the first piece runs.
  virtual void prepare(const image::StripBounds&) {}
};

/// The part of a split that knows the target: processor class P, attribute A.
template <class Base, class P, class A>
class TargetedSplit : public Base {
public:
  BoolResult checkProcessorType(const BaseProcessor& processor) const override {
    if (dynamic_cast<const P*>(&processor)) return true;
    return BoolResult::failure(processor.getClassName() + " is not a " + typeName<P>());
  }
  const std::string& getAttributeName() const override { return A::info().name; }
  const char* getAttributeToolTip() const override { return A::info().toolTip; }
  void setPiece(BaseProcessor& processor, std::size_t pieceIndex) const override {
    processAttribute(processor, pieceIndex, getValue(pieceIndex));
  }
  void processAttribute(BaseProcessor& processor, std::size_t, const typename A::StorageType& value) const {
    processor.set<A>(value);
  }

protected:
  virtual typename A::StorageType getValue(std::size_t pieceIndex) const = 0;
};

/// The same value for every run.
template <class Base, class P, class A>
class NoSplit : public TargetedSplit<Base, P, A> {
public:
  explicit NoSplit(typename A::StorageType value) : _value(std::move(value)) {}

protected:
  typename A::StorageType getValue(std::size_t) const override { return _value; }
  const typename A::StorageType _value;
};
template <class P, class A>
class StaticNoSplit : public NoSplit<BaseStaticSplit, P, A> {
public:
  using NoSplit<BaseStaticSplit, P, A>::NoSplit;
  std::optional<std::size_t> getPieceCount() const override { return std::nullopt; }
};
template <class P, class A>
class DynamicNoSplit : public NoSplit<BaseDynamicSplit, P, A> {
public:
  using NoSplit<BaseDynamicSplit, P, A>::NoSplit;
};
template <class P, class A>
boost::shared_ptr<StaticNoSplit<P, A>> staticNoSplit(const typename A::StorageType& value) {
  return boost::make_shared<StaticNoSplit<P, A>>(value);
}
template <class P, class A>
boost::shared_ptr<DynamicNoSplit<P, A>> dynamicNoSplit(const typename A::StorageType& value) {
  return boost::make_shared<DynamicNoSplit<P, A>>(value);
}

/// A value that a function makes for each piece.
template <class A>
typename A::StorageType defaultDynamicByCreationResultSplitCreationFun(std::size_t) {
  using Object = std::remove_const_t<typename A::StorageType::element_type>;
  return boost::make_shared<Object>();
}
template <class P, class A>
class DynamicByCreationResultSplit : public TargetedSplit<BaseDynamicSplit, P, A> {
public:
  using CreationFunction = std::function<typename A::StorageType(std::size_t pieceIndex)>;
  explicit DynamicByCreationResultSplit(
      CreationFunction create = defaultDynamicByCreationResultSplitCreationFun<A>)
      : _create(std::move(create)) {}

protected:
  typename A::StorageType getValue(std::size_t pieceIndex) const override { return _create(pieceIndex); }

private:
  CreationFunction _create;
};

/// An object per strip, kept in the order of the strips for what comes after them.
template <class P, class A>
class DynamicCollectedResultSplit : public TargetedSplit<BaseDynamicSplit, P, A> {
public:
  void prepare(const image::StripBounds& bounds) override {
    _results.clear();
    while (_results.size() + 1 < bounds.size())
      _results.push_back(defaultDynamicByCreationResultSplitCreationFun<A>(_results.size()));
  }
  const std::vector<typename A::StorageType>& getResults() const { return _results; }

protected:
  typename A::StorageType getValue(std::size_t pieceIndex) const override { return _results.at(pieceIndex); }

private:
  std::vector<typename A::StorageType> _results;
};

}  // namespace vexo::processor

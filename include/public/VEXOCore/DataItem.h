#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "VEXOCore/BoolResult.h"
#include "VEXOCore/Export.h"

namespace vexo {

/// One typed value inside a data item: a serial key (also its name on the command line), a description, the
/// value.
class VEXO_API BaseDataItemLeaf {
public:
  BaseDataItemLeaf(std::string key, std::string description)
      : _key(std::move(key)), _description(std::move(description)) {}
  virtual ~BaseDataItemLeaf();

  const std::string& getKey() const { return _key; }
  const std::string& getDescription() const { return _description; }

  virtual const char* getValueTypeName() const = 0;
  virtual std::string getText() const = 0;
  /// Takes the value from text; false with a message, and the old value kept, when it cannot be parsed.
  virtual BoolResult setText(const std::string& text) = 0;

private:
  std::string _key;
  std::string _description;
};

/// Text to value and back for bool, std::uint32_t, std::int32_t, float, double and std::string. Parsing takes
/// the whole text or fails; numbers are printed so that they read back equal.
template <class T>
struct ScalarText {
  static const char* typeName();
  static std::string toText(const T& value);
  static BoolResult fromText(const std::string& text, T& value);
};
#define VEXO_SCALAR_TEXT(T)                             \
  template <>                                           \
  VEXO_API const char* ScalarText<T>::typeName();       \
  template <>                                           \
  VEXO_API std::string ScalarText<T>::toText(const T&); \
  template <>                                           \
  VEXO_API BoolResult ScalarText<T>::fromText(const std::string&, T&);
VEXO_SCALAR_TEXT(bool)
VEXO_SCALAR_TEXT(std::uint32_t)
VEXO_SCALAR_TEXT(std::int32_t)
VEXO_SCALAR_TEXT(float)
VEXO_SCALAR_TEXT(double)
VEXO_SCALAR_TEXT(std::string)
#undef VEXO_SCALAR_TEXT

template <class T>
class DataItemLeaf : public BaseDataItemLeaf {
public:
  DataItemLeaf(std::string key, std::string description, T value = T())
      : BaseDataItemLeaf(std::move(key), std::move(description)), _value(std::move(value)) {}

  const T& getValue() const { return _value; }
  void setValue(T value) { _value = std::move(value); }

  const char* getValueTypeName() const override { return ScalarText<T>::typeName(); }
  std::string getText() const override { return ScalarText<T>::toText(_value); }
  BoolResult setText(const std::string& text) override { return ScalarText<T>::fromText(text, _value); }

private:
  T _value;
};

/// A set of parameters: leaves and further nodes, each with a key of its own. Derived classes own their
/// leaves as members and add them, in serial order, in their constructor.
class VEXO_API BaseDataItemNode {
public:
  BaseDataItemNode(std::string key, std::string description)
      : _key(std::move(key)), _description(std::move(description)) {}
  BaseDataItemNode(const BaseDataItemNode&) = delete;
  BaseDataItemNode& operator=(const BaseDataItemNode&) = delete;
  virtual ~BaseDataItemNode();

  const std::string& getKey() const { return _key; }
  const std::string& getDescription() const { return _description; }
  virtual std::uint32_t getVersion() const { return 1; }
  /// Whether a text must give every leaf, because none has a usual value.
  virtual bool needsAllLeaves() const { return false; }

  std::size_t getLeafCount() const { return _leaves.size(); }
  BaseDataItemLeaf& getLeaf(std::size_t index) { return *_leaves[index]; }
  const BaseDataItemLeaf& getLeaf(std::size_t index) const { return *_leaves[index]; }
  /// Null when no leaf has the key.
  BaseDataItemLeaf* findLeaf(const std::string& key);

  std::size_t getNodeCount() const { return _nodes.size(); }
  BaseDataItemNode& getNode(std::size_t index) { return *_nodes[index]; }
  const BaseDataItemNode& getNode(std::size_t index) const { return *_nodes[index]; }

protected:
  void add(BaseDataItemLeaf& leaf) { _leaves.push_back(&leaf); }
  void add(BaseDataItemNode& node) { _nodes.push_back(&node); }

private:
  std::string _key;
  std::string _description;
  std::vector<BaseDataItemLeaf*> _leaves;
  std::vector<BaseDataItemNode*> _nodes;
};

/// "Key=value,Key=value" of the leaves of a node (its own, not those of nodes inside it). There is no escape
/// for a comma inside a text.
VEXO_API std::string dataItemToText(const BaseDataItemNode& item);
/// Sets the named leaves; a value without a name goes to the leaf at its position ("0,255" for a range). On
/// failure the message names the key, and the valid keys when it is unknown: also of a leaf that is given
/// twice, or is missing although it is needed. Leaves set before the failure keep their new values.
VEXO_API BoolResult dataItemFromText(const std::string& text, BaseDataItemNode& item);

}  // namespace vexo

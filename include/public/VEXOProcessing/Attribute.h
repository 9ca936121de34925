#pragma once

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include "VEXOImage/Image.h"
#include "VEXOImage/Strip.h"
#include "VEXOProcessing/AttributeValue.h"
#include "VEXOSerialization/Archive.h"

namespace vexo::processor {

enum class eAttributeDirection { In, Out, InOut };

/// What a parameter's class says once for all its objects. Direction and optionality are read off the name:
/// the prefix "In", "Out" or "InOut", with "Opt" after it when the parameter may stay unset.
struct VEXO_API AttributeInfo {
  explicit AttributeInfo(const std::string& qualifiedClassName, const char* toolTip);
  /// A work image ("OutWk1Img", "OutOptWk1RealGpuImg"), released after each run unless the caller supplied
  /// it.
  bool isWorkImage() const;

  std::string name;
  const char* toolTip;
  eAttributeDirection direction;
  bool optional;
};

/// One named parameter of a processor, with its value when it is set.
class VEXO_API BaseAttribute {
public:
  virtual ~BaseAttribute();
  BaseAttribute(const BaseAttribute&) = delete;
  BaseAttribute& operator=(const BaseAttribute&) = delete;

  const AttributeInfo& getInfo() const { return _info; }
  const std::string& getName() const { return getInfo().name; }
  const char* getToolTip() const { return getInfo().toolTip; }
  eAttributeDirection getDirection() const { return getInfo().direction; }
  bool isOptional() const { return getInfo().optional; }
  bool isInput() const { return getDirection() != eAttributeDirection::Out; }
  bool isOutput() const { return getDirection() != eAttributeDirection::In; }

  /// "image", "unsigned", "float", "KernelXY" ...; the names of an enumeration joined by "|".
  virtual std::string getValueTypeName() const = 0;
  virtual bool isSet() const = 0;
  virtual bool hasDefault() const = 0;
  virtual void clear() = 0;
  /// Takes over the value, or that there is none, of an attribute of the same class.
  virtual BoolResult copyValue(const BaseAttribute& other) = 0;

  /// The value (the default when it is not set) as text; empty when there is none or it has no text form.
  virtual std::string getText() const = 0;
  /// False with a message when the text is no value of this type or the type has no text form; throws when
  /// the attribute refuses the value.
  virtual BoolResult setText(const std::string& text) = 0;

  /// Writes the value as an item of this name, when it is set; reads it, or clears it when there is no such
  /// item.
  virtual void write(BaseOArchive& archive) const = 0;
  virtual void read(BaseIArchive& archive) = 0;

  /// The name of the processor that has the attribute stands in front of what it refuses.
  void setOwner(const std::string* name) { _owner = name; }

protected:
  explicit BaseAttribute(const AttributeInfo& info) : _info(info) {}
  [[noreturn]] void raiseRefused(const std::string& why) const;
  /// A value was asked for, and there is none.
  [[noreturn]] void raiseNotSet() const;

private:
  const AttributeInfo& _info;
  const std::string* _owner = nullptr;
};

using AttributeColl = std::vector<boost::shared_ptr<BaseAttribute>>;

/// Raises that `attribute` refuses a value, in the one wording that all refusals have.
[[noreturn]] VEXO_API void raiseRefusedValue(const std::string& attributeName, const std::string& why);

/// For a check(): refuses NaN and infinities, which no processing can make sense of.
VEXO_API BoolResult checkFinite(double value);

/// Samples, geometry and type of an image as a section of an archive.
VEXO_API void writeImage(BaseOArchive& archive, const std::string& name, const image::BaseImage& image);
VEXO_API boost::shared_ptr<image::Image> readImage(BaseIArchive& archive, const std::string& name);

template <class T>
inline constexpr bool isHandle = false;
template <class T>
inline constexpr bool isHandle<boost::shared_ptr<T>> = true;

/// What an attribute class says about its values; null where it says nothing.
template <class Storage>
using AttributeCheck = BoolResult (*)(const Storage& value);
template <class Storage>
using AttributeDefault = std::optional<Storage> (*)();
template <class Storage>
struct AttributeRules {
  AttributeCheck<Storage> check;  ///< false with the reason refuses a value
  AttributeDefault<Storage> getDefault;
};

/// What all attributes of a storage type have in common: the code of a type exists once, in the library.
template <class Storage, class Base = BaseAttribute>
class VEXO_API ValueAttribute : public Base {
public:
  using StorageType = Storage;
  using Text = ValueText<Storage>;

  void setStorage(const Storage& value) {
    if constexpr (isHandle<Storage>)
      if (!value) this->raiseRefused("it is null");
    if (_rules.check)
      if (const BoolResult accepted = _rules.check(value); !accepted)
        this->raiseRefused(accepted.getMessage());
    _value = value;
  }
  /// The value, or the default. Without either: a null handle, or an exception.
  Storage getStorage() const {
    if (_value) return *_value;
    if (_rules.getDefault)
      if (std::optional<Storage> standard = _rules.getDefault()) return std::move(*standard);
    if constexpr (isHandle<Storage>)
      return Storage();
    else
      this->raiseNotSet();
  }

  std::string getValueTypeName() const override {
    if constexpr (Text::available)
      return Text::typeName();
    else
      return "object";
  }
  bool isSet() const override { return _value.has_value(); }
  bool hasDefault() const override { return _rules.getDefault && _rules.getDefault().has_value(); }
  void clear() override { _value.reset(); }
  BoolResult copyValue(const BaseAttribute& other) override {
    if (typeid(other) != typeid(*this))
      return BoolResult::failure("attribute " + this->getName() + " cannot take the value of " +
                                 other.getName());
    _value = static_cast<const ValueAttribute&>(other)._value;
    return true;
  }

  std::string getText() const override {
    if constexpr (Text::available)
      if (isSet() || hasDefault()) return Text::toText(getStorage());
    return {};
  }
  BoolResult setText(const std::string& text) override {
    if constexpr (Text::available) {
      Storage value{};
      if (const BoolResult parsed = Text::fromText(text, value); !parsed) return parsed;
      setStorage(value);
      return true;
    } else {
      return BoolResult::failure("a value of this type cannot be given as text");
    }
  }

  void write(BaseOArchive& archive) const override {
    if (!isSet()) return;
    if constexpr (std::is_arithmetic_v<Storage> || std::is_same_v<Storage, std::string>)
      archive.write(this->getName(), *_value);
    else
      writeOther(archive);
  }
  void read(BaseIArchive& archive) override {
    if (!archive.has(this->getName())) return clear();
    if constexpr (std::is_arithmetic_v<Storage> || std::is_same_v<Storage, std::string>) {
      Storage value{};
      archive.read(this->getName(), value);
      setStorage(value);
    } else {
      readOther(archive);
    }
  }

protected:
  ValueAttribute(const AttributeInfo& info, const AttributeRules<Storage>& rules)
      : Base(info), _rules(rules) {}

  virtual void writeOther(BaseOArchive& archive) const { archive.write(this->getName(), getTextOrThrow()); }
  virtual void readOther(BaseIArchive& archive) {
    std::string text;
    archive.read(this->getName(), text);
    if (const BoolResult set = setText(text); !set) this->raiseRefused(set.getMessage());
  }

private:
  std::string getTextOrThrow() const {
    if (!Text::available) this->raiseRefused("a value of this type cannot be written to an archive");
    return getText();
  }

  const AttributeRules<Storage>& _rules;
  std::optional<Storage> _value;
};

/// A parameter class. Derived states its tool tip, and where it applies a default and the values it refuses:
///
///   class InHalfKnlSizeX : public processor::Attribute<InHalfKnlSizeX, std::uint32_t> {
///   public:
///     static constexpr char toolTip[] = "...";
///     static std::uint32_t defaultValue();              // optional
///     static BoolResult check(std::uint32_t value);     // optional: false with the reason refuses a value
///   };
template <class Derived, class Storage, class Value = ValueAttribute<Storage>>
class Attribute : public Value {
public:
  Attribute() : Value(info(), rules()) {}

  static const AttributeInfo& info() {
    static const auto& result = *new AttributeInfo(typeName<Derived>(), Derived::toolTip);
    return result;
  }

private:
  static const AttributeRules<Storage>& rules() {
    static constexpr AttributeRules<Storage> result = {checkOf<Derived>(0), defaultOf<Derived>(0)};
    return result;
  }
  template <class D>
  static constexpr auto checkOf(int)
      -> decltype(D::check(std::declval<const Storage&>()), AttributeCheck<Storage>()) {
    return [](const Storage& value) -> BoolResult { return D::check(value); };
  }
  template <class D>
  static constexpr AttributeCheck<Storage> checkOf(long) {
    return nullptr;
  }
  template <class D>
  static constexpr auto defaultOf(int)
      -> decltype(std::optional<Storage>(D::defaultValue()), AttributeDefault<Storage>()) {
    return []() -> std::optional<Storage> { return D::defaultValue(); };
  }
  template <class D>
  static constexpr AttributeDefault<Storage> defaultOf(long) {
    return nullptr;
  }
};

/// What all image parameters have in common.
class VEXO_API BaseImageAttribute : public BaseAttribute {
public:
  /// Null when not set.
  virtual boost::shared_ptr<const image::BaseImage> getImage() const = 0;
  virtual void setImage(const boost::shared_ptr<image::BaseImage>& image) = 0;

protected:
  using BaseAttribute::BaseAttribute;
};

template <class Image>
class VEXO_API ImageValue : public ValueAttribute<boost::shared_ptr<Image>, BaseImageAttribute> {
public:
  boost::shared_ptr<const image::BaseImage> getImage() const override { return this->getStorage(); }
  void setImage(const boost::shared_ptr<image::BaseImage>& image) override { this->setStorage(image); }
  std::string getValueTypeName() const override { return "image"; }

protected:
  using ValueAttribute<boost::shared_ptr<Image>, BaseImageAttribute>::ValueAttribute;
  void writeOther(BaseOArchive& archive) const override { writeImage(archive, this->getName(), *getImage()); }
  void readOther(BaseIArchive& archive) override { setImage(readImage(archive, this->getName())); }
};
template <class Derived>
using InputImageAttribute =
    Attribute<Derived, boost::shared_ptr<const image::BaseImage>, ImageValue<const image::BaseImage>>;
template <class Derived>
using OutputImageAttribute =
    Attribute<Derived, boost::shared_ptr<image::BaseImage>, ImageValue<image::BaseImage>>;

/// A result that is no image: a data item that a run fills, the caller's or one that the run creates. Its
/// serial form is a section, so that a program reads the fields without taking a text apart.
template <class Item>
class VEXO_API DataItemValue : public ValueAttribute<boost::shared_ptr<Item>> {
public:
  using ItemType = Item;

protected:
  using ValueAttribute<boost::shared_ptr<Item>>::ValueAttribute;
  void writeOther(BaseOArchive& archive) const override {
    writeDataItem(archive, *this->getStorage(), this->getName());
  }
  void readOther(BaseIArchive& archive) override {
    const auto item = boost::make_shared<Item>();
    readDataItem(archive, *item, this->getName());
    this->setStorage(item);
  }
};
template <class Derived, class Item>
using OutputDataItemAttribute = Attribute<Derived, boost::shared_ptr<Item>, DataItemValue<Item>>;

/// A strip that a third-level processor reads, and one that it writes.
template <class Strip>
class VEXO_API BaseStripAttribute : public BaseAttribute {
public:
  virtual boost::shared_ptr<Strip> getStrip() const = 0;
  virtual void setStrip(const boost::shared_ptr<Strip>& strip) = 0;

protected:
  using BaseAttribute::BaseAttribute;
};
using BaseInputStripAttribute = BaseStripAttribute<const image::InputStrip>;
using BaseOutputStripAttribute = BaseStripAttribute<image::OutputStrip>;

template <class Strip>
class VEXO_API StripValue : public ValueAttribute<boost::shared_ptr<Strip>, BaseStripAttribute<Strip>> {
public:
  boost::shared_ptr<Strip> getStrip() const override { return this->getStorage(); }
  void setStrip(const boost::shared_ptr<Strip>& strip) override { this->setStorage(strip); }

protected:
  using ValueAttribute<boost::shared_ptr<Strip>, BaseStripAttribute<Strip>>::ValueAttribute;
};
template <class Derived>
using InputStripAttribute =
    Attribute<Derived, boost::shared_ptr<const image::InputStrip>, StripValue<const image::InputStrip>>;
template <class Derived>
using OutputStripAttribute =
    Attribute<Derived, boost::shared_ptr<image::OutputStrip>, StripValue<image::OutputStrip>>;

// Compiled once, in the library.
extern template class VEXO_API ValueAttribute<bool>;
extern template class VEXO_API ValueAttribute<std::int32_t>;
extern template class VEXO_API ValueAttribute<std::uint32_t>;
extern template class VEXO_API ValueAttribute<float>;
extern template class VEXO_API ValueAttribute<double>;
extern template class VEXO_API ValueAttribute<std::string>;
extern template class VEXO_API ValueAttribute<boost::shared_ptr<const image::BaseImage>, BaseImageAttribute>;
extern template class VEXO_API ValueAttribute<boost::shared_ptr<image::BaseImage>, BaseImageAttribute>;
extern template class VEXO_API ImageValue<const image::BaseImage>;
extern template class VEXO_API ImageValue<image::BaseImage>;
extern template class VEXO_API
    ValueAttribute<boost::shared_ptr<const image::InputStrip>, BaseInputStripAttribute>;
extern template class VEXO_API
    ValueAttribute<boost::shared_ptr<image::OutputStrip>, BaseOutputStripAttribute>;
extern template class VEXO_API StripValue<const image::InputStrip>;
extern template class VEXO_API StripValue<image::OutputStrip>;

/// The parameters of a processor class, in declaration order.
template <class... Attributes>
struct AttributeList {
  static AttributeColl create() {
    AttributeColl attributes;
    attributes.reserve(sizeof...(Attributes));
    (attributes.emplace_back(static_cast<BaseAttribute*>(new Attributes)), ...);
    return attributes;
  }
};

}  // namespace vexo::processor

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

  virtual const AttributeInfo& getInfo() const = 0;
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
};

using AttributeColl = std::vector<boost::shared_ptr<BaseAttribute>>;

/// Raises that `attribute` refuses a value, in the one wording that all refusals have.
[[noreturn]] VEXO_API void raiseRefusedValue(const std::string& attributeName, const std::string& why);

/// For a check(): refuses NaN and infinities, which no processing can make sense of.
VEXO_API BoolResult checkFinite(double value);

/// Raises that a value was asked for that `attribute` does not have.
[[noreturn]] VEXO_API void raiseNotSet(const std::string& attributeName);

/// Samples, geometry and type of an image as a section of an archive.
VEXO_API void writeImage(BaseOArchive& archive, const std::string& name, const image::BaseImage& image);
VEXO_API boost::shared_ptr<image::Image> readImage(BaseIArchive& archive, const std::string& name);

/// A parameter class. Derived states its tool tip, and where it applies a default and the values it refuses:
///
///   class InHalfKnlSizeX : public processor::Attribute<InHalfKnlSizeX, std::uint32_t> {
///   public:
///     static constexpr char toolTip[] = "...";
///     static std::uint32_t defaultValue();              // optional
///     static BoolResult check(std::uint32_t value);     // optional: false with the reason refuses a value
///   };
template <class Derived, class Storage, class Base = BaseAttribute>
class Attribute : public Base {
public:
  using StorageType = Storage;
  using Text = ValueText<Storage>;

  static const AttributeInfo& info() {
    static const auto& result = *new AttributeInfo(typeName<Derived>(), Derived::toolTip);
    return result;
  }
  const AttributeInfo& getInfo() const override { return info(); }

  void setStorage(const Storage& value) {
    if constexpr (isHandle)
      if (!value) raiseRefusedValue(this->getName(), "it is null");
    if (const BoolResult accepted = checkValue<Derived>(value, 0); !accepted)
      raiseRefusedValue(this->getName(), accepted.getMessage());
    _value = value;
  }
  /// The value, or the default. Without either: a null handle, or an exception.
  Storage getStorage() const {
    if (_value) return *_value;
    if (const std::optional<Storage> standard = findDefault<Derived>(0)) return *standard;
    if constexpr (isHandle)
      return Storage();
    else
      raiseNotSet(this->getName());
  }

  std::string getValueTypeName() const override {
    if constexpr (Text::available)
      return Text::typeName();
    else
      return "object";
  }
  bool isSet() const override { return _value.has_value(); }
  bool hasDefault() const override { return findDefault<Derived>(0).has_value(); }
  void clear() override { _value.reset(); }
  BoolResult copyValue(const BaseAttribute& other) override {
    const auto* twin = dynamic_cast<const Attribute*>(&other);
    if (!twin)
      return BoolResult::failure("attribute " + this->getName() + " cannot take the value of " +
                                 other.getName());
    _value = twin->_value;
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
  virtual void writeOther(BaseOArchive& archive) const { archive.write(this->getName(), getTextOrThrow()); }
  virtual void readOther(BaseIArchive& archive) {
    std::string text;
    archive.read(this->getName(), text);
    if (const BoolResult set = setText(text); !set) raiseRefusedValue(this->getName(), set.getMessage());
  }

private:
  template <class T>
  struct IsHandle : std::false_type {};
  template <class T>
  struct IsHandle<boost::shared_ptr<T>> : std::true_type {};
  static constexpr bool isHandle = IsHandle<Storage>::value;

  template <class D>
  static auto checkValue(const Storage& value, int) -> decltype(D::check(value)) {
    return D::check(value);
  }
  template <class D>
  static BoolResult checkValue(const Storage&, long) {
    return true;
  }
  template <class D>
  static auto findDefault(int) -> decltype(std::optional<Storage>(D::defaultValue())) {
    return D::defaultValue();
  }
  template <class D>
  static std::optional<Storage> findDefault(long) {
    return std::nullopt;
  }
  std::string getTextOrThrow() const {
    if (!Text::available)
      raiseRefusedValue(this->getName(), "a value of this type cannot be written to an archive");
    return getText();
  }

  std::optional<Storage> _value;
};

/// What all image parameters have in common.
class VEXO_API BaseImageAttribute : public BaseAttribute {
public:
  /// Null when not set.
  virtual boost::shared_ptr<const image::BaseImage> getImage() const = 0;
  virtual void setImage(const boost::shared_ptr<image::BaseImage>& image) = 0;
};

template <class Derived, class Image>
class ImageAttribute : public Attribute<Derived, boost::shared_ptr<Image>, BaseImageAttribute> {
public:
  boost::shared_ptr<const image::BaseImage> getImage() const override { return this->getStorage(); }
  void setImage(const boost::shared_ptr<image::BaseImage>& image) override { this->setStorage(image); }
  std::string getValueTypeName() const override { return "image"; }

protected:
  void writeOther(BaseOArchive& archive) const override { writeImage(archive, this->getName(), *getImage()); }
  void readOther(BaseIArchive& archive) override { setImage(readImage(archive, this->getName())); }
};
template <class Derived>
using InputImageAttribute = ImageAttribute<Derived, const image::BaseImage>;
template <class Derived>
using OutputImageAttribute = ImageAttribute<Derived, image::BaseImage>;

/// A result that is no image: a data item that a run fills, the caller's or one that the run creates. Its
/// serial form is a section, so that a program reads the fields without taking a text apart.
template <class Derived, class Item>
class OutputDataItemAttribute : public Attribute<Derived, boost::shared_ptr<Item>> {
public:
  using ItemType = Item;

protected:
  void writeOther(BaseOArchive& archive) const override {
    writeDataItem(archive, *this->getStorage(), this->getName());
  }
  void readOther(BaseIArchive& archive) override {
    const auto item = boost::make_shared<Item>();
    readDataItem(archive, *item, this->getName());
    this->setStorage(item);
  }
};

/// A strip that a third-level processor reads, and one that it writes.
class VEXO_API BaseInputStripAttribute : public BaseAttribute {
public:
  virtual boost::shared_ptr<const image::InputStrip> getStrip() const = 0;
};
class VEXO_API BaseOutputStripAttribute : public BaseAttribute {
public:
  virtual boost::shared_ptr<image::OutputStrip> getStrip() const = 0;
};
template <class Derived>
class InputStripAttribute
    : public Attribute<Derived, boost::shared_ptr<const image::InputStrip>, BaseInputStripAttribute> {
public:
  boost::shared_ptr<const image::InputStrip> getStrip() const override { return this->getStorage(); }
};
template <class Derived>
class OutputStripAttribute
    : public Attribute<Derived, boost::shared_ptr<image::OutputStrip>, BaseOutputStripAttribute> {
public:
  boost::shared_ptr<image::OutputStrip> getStrip() const override { return this->getStorage(); }
};

/// The parameters of a processor class, in declaration order.
template <class... Attributes>
struct AttributeList {
  static AttributeColl create() { return {boost::make_shared<Attributes>()...}; }
};

}  // namespace vexo::processor

// Leaf attributes that carry a typed value (int, bool, string, float, double) per chronology, with a
// unit and access checks for writes and reads that come from a user of the model.
#pragma once

#include "ombrix/model/AttributeEx.h"
#include "ombrix/model/ValueContainer.h"
#include "ombrix/sdk/SDKInterfaceImpl.h"

#include <string>

namespace Ombrix::Model
{

template <typename T> struct ValueAttributeTypeNumber;
template <> struct ValueAttributeTypeNumber<int> : std::integral_constant<int, 1>
{
};
template <> struct ValueAttributeTypeNumber<bool> : std::integral_constant<int, 2>
{
};
template <> struct ValueAttributeTypeNumber<std::string> : std::integral_constant<int, 3>
{
};
template <> struct ValueAttributeTypeNumber<float> : std::integral_constant<int, 4>
{
};
template <> struct ValueAttributeTypeNumber<double> : std::integral_constant<int, 11>
{
};

template <typename T>
class OMBRIX_API ValueAttribute
    : public AttributeEx<ValueAttribute<T>, ValueAttributeTypeNumber<T>::value, IAttributeImpl, Attribute>
{
  using Base = AttributeEx<ValueAttribute<T>, ValueAttributeTypeNumber<T>::value, IAttributeImpl, Attribute>;

public:
  using Chronology = KorvanSDK::Chronology;
  using ValueType = T;

  ValueAttribute() = default;
  explicit ValueAttribute(CompositeAttribute* parent);
  ValueAttribute(const std::string& type, KorvanSDK::AccessType access, CompositeAttribute* parent);

  // The stored value itself, without conversion or access check.
  const T& get(Chronology chronology = Chronology::Current) const { return m_value.get(chronology); }
  // Stores `value` as an internal (non-user) write: no access check, not logged.
  void set(const T& value, Chronology chronology = Chronology::Current) { m_value.set(chronology, value); }

  Data::ValueContainer<T>& container() { return m_value; }
  const Data::ValueContainer<T>& container() const { return m_value; }
  Model::ValueType getStorageType() const { return m_value.getValueType(); }

  void toStream(FileSystem::DataOStream& out) const;
  void fromStream(FileSystem::DataIStream& in);
  // Attribute part, unit and stored values equal.
  bool isEqual(const ValueAttribute& other) const;

protected:
  void do_setIntValue(int value, const std::string& unit, Chronology chronology, bool user) override;
  void do_setBoolValue(bool value, const std::string& unit, Chronology chronology, bool user) override;
  void do_setFloatValue(float value, const std::string& unit, Chronology chronology, bool user) override;
  void do_setDoubleValue(double value, const std::string& unit, Chronology chronology, bool user) override;
  void do_setStringValue(const std::string& value, const std::string& unit, Chronology chronology,
                         bool user) override;
  bool do_hasValue(Chronology chronology, bool user) const override;
  int do_getIntValue(Chronology chronology, bool user) const override;
  bool do_getBoolValue(Chronology chronology, bool user) const override;
  float do_getFloatValue(Chronology chronology, bool user) const override;
  double do_getDoubleValue(Chronology chronology, bool user) const override;
  std::string do_getStringValue(Chronology chronology, bool user) const override;
  bool do_hasUnits() const override { return !m_unit.empty(); }
  const std::string& do_getUnit() const override { return m_unit; }
  void do_setUnit(const std::string& unit) override { m_unit = unit; }

private:
  template <typename U>
  void setConverted(const U& value, const std::string& unit, Chronology chronology, bool user);
  template <typename U> U getConverted(Chronology chronology, bool user) const;

  std::string m_unit;
  Data::ValueContainer<T> m_value;
};

extern template class OMBRIX_API ValueAttribute<int>;
extern template class OMBRIX_API ValueAttribute<bool>;
extern template class OMBRIX_API ValueAttribute<std::string>;
extern template class OMBRIX_API ValueAttribute<float>;
extern template class OMBRIX_API ValueAttribute<double>;

using IntAttribute = ValueAttribute<int>;
using BoolAttribute = ValueAttribute<bool>;
using StringAttribute = ValueAttribute<std::string>;
using FloatAttribute = ValueAttribute<float>;
using DoubleAttribute = ValueAttribute<double>;

} // namespace Ombrix::Model

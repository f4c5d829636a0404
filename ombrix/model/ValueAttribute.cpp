#include "ombrix/model/ValueAttribute.h"

#include "ombrix/log/LogManager.h"
#include "ombrix/model/AccessException.h"
#include "ombrix/model/ValueText.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <cmath>
#include <stdexcept>
#include <type_traits>

namespace Ombrix::Model
{
namespace
{

// Values read or written through another type's getter or setter: numbers convert numerically,
// bools as 0/1, and text through the text forms.
template <typename To, typename From> To convertValue(const From& value)
{
  if constexpr (std::is_same_v<To, From>)
    return value;
  else if constexpr (std::is_same_v<To, std::string>)
    return toText(value);
  else if constexpr (std::is_same_v<From, std::string>)
    return parseText<To>(value);
  else if constexpr (std::is_same_v<To, bool>)
    return value != From(0);
  else if constexpr (std::is_same_v<To, int> && std::is_floating_point_v<From>)
  {
    // Compared in double, where both bounds are exact: INT_MAX rounds up to 2^31 as a float, which
    // would let 2^31 through to an undefined conversion. Anything that truncates into range fits.
    const double wide = static_cast<double>(value);
    if (!(wide > -2147483649.0 && wide < 2147483648.0))
      throw std::out_of_range("Value " + toText(value) + " does not fit an Int");
    return static_cast<int>(value);
  }
  else
    return static_cast<To>(value);
}

} // namespace

template <typename T> ValueAttribute<T>::ValueAttribute(CompositeAttribute* parent) : Base(parent) {}

template <typename T>
ValueAttribute<T>::ValueAttribute(const std::string& type, KorvanSDK::AccessType access,
                                  CompositeAttribute* parent)
    : Base(type, access, parent)
{
}

template <typename T>
template <typename U>
void ValueAttribute<T>::setConverted(const U& value, const std::string& unit, Chronology chronology,
                                     bool user)
{
  if (user && !KorvanSDK::hasWriteAccess(this->getAccessType()))
    throw AccessException("User has no write access");
  if (!unit.empty() && unit != m_unit)
    throw std::runtime_error("Invalid Unit");
  m_value.set(chronology, convertValue<T>(value));
  if (user)
    LogManager::instance().recordAttributeSetValue(this, chronology);
}

template <typename T>
template <typename U>
U ValueAttribute<T>::getConverted(Chronology chronology, bool user) const
{
  if (user && !KorvanSDK::hasReadAccess(this->getAccessType()))
    throw AccessException("User has no read access");
  return convertValue<U>(m_value.get(chronology));
}

template <typename T>
void ValueAttribute<T>::do_setIntValue(int value, const std::string& unit, Chronology chronology, bool user)
{
  setConverted(value, unit, chronology, user);
}

template <typename T>
void ValueAttribute<T>::do_setBoolValue(bool value, const std::string& unit, Chronology chronology, bool user)
{
  setConverted(value, unit, chronology, user);
}

template <typename T>
void ValueAttribute<T>::do_setFloatValue(float value, const std::string& unit, Chronology chronology,
                                         bool user)
{
  setConverted(value, unit, chronology, user);
}

template <typename T>
void ValueAttribute<T>::do_setDoubleValue(double value, const std::string& unit, Chronology chronology,
                                          bool user)
{
  setConverted(value, unit, chronology, user);
}

template <typename T>
void ValueAttribute<T>::do_setStringValue(const std::string& value, const std::string& unit,
                                          Chronology chronology, bool user)
{
  setConverted(value, unit, chronology, user);
}

template <typename T> bool ValueAttribute<T>::do_hasValue(Chronology chronology, bool) const
{
  return m_value.has(chronology);
}

template <typename T> int ValueAttribute<T>::do_getIntValue(Chronology chronology, bool user) const
{
  return getConverted<int>(chronology, user);
}

template <typename T> bool ValueAttribute<T>::do_getBoolValue(Chronology chronology, bool user) const
{
  return getConverted<bool>(chronology, user);
}

template <typename T> float ValueAttribute<T>::do_getFloatValue(Chronology chronology, bool user) const
{
  return getConverted<float>(chronology, user);
}

template <typename T> double ValueAttribute<T>::do_getDoubleValue(Chronology chronology, bool user) const
{
  return getConverted<double>(chronology, user);
}

template <typename T> std::string ValueAttribute<T>::do_getStringValue(Chronology chronology, bool user) const
{
  return getConverted<std::string>(chronology, user);
}

template <typename T> void ValueAttribute<T>::toStream(FileSystem::DataOStream& out) const
{
  Attribute::toStream(out);
  out.key("Unit");
  out << m_unit;
  out.beginSection("ValueContainer");
  out.key("ValueType");
  out << static_cast<std::int32_t>(m_value.getValueType());
  if (m_value.getValueType() == Model::ValueType::Simple)
  {
    out.key("Value:");
    out << static_cast<const Data::SimpleValue<T>&>(m_value.storage()).value();
  }
  else
  {
    const auto& values = static_cast<const Data::ChronologicalValue<T>&>(m_value.storage()).values();
    out.beginSection("ChronologicalValue");
    out << static_cast<std::uint64_t>(values.size());
    for (const auto& [chronology, value] : values)
      out << static_cast<std::int32_t>(chronology) << value;
    out.endSection();
  }
  out.endSection();
}

template <typename T> void ValueAttribute<T>::fromStream(FileSystem::DataIStream& in)
{
  Attribute::fromStream(in);
  std::string unit;
  std::int32_t valueType = 0;
  std::unique_ptr<Data::ValueAbstract<T>> storage;
  in.key("Unit");
  in >> unit;
  in.beginSection("ValueContainer");
  in.key("ValueType");
  in >> valueType;
  if (valueType == static_cast<std::int32_t>(Model::ValueType::Simple))
  {
    T value{};
    in.key("Value:");
    in >> value;
    storage = std::make_unique<Data::SimpleValue<T>>(std::move(value));
  }
  else if (valueType == static_cast<std::int32_t>(Model::ValueType::Chronological))
  {
    auto chronological = std::make_unique<Data::ChronologicalValue<T>>();
    std::uint64_t count = 0;
    in.beginSection("ChronologicalValue");
    in >> count;
    for (std::uint64_t i = 0; i < count && in; ++i)
    {
      std::int32_t chronology = 0;
      T value{};
      in >> chronology >> value;
      if (chronology < 0 || chronology > 4)
        in.setFailed();
      if (in)
        chronological->values()[static_cast<Chronology>(chronology)] = std::move(value);
    }
    in.endSection();
    storage = std::move(chronological);
  }
  else
  {
    in.setFailed();
  }
  in.endSection();
  if (!in)
    return;
  m_unit = unit;
  m_value.replace(std::move(storage));
}

template <typename T> bool ValueAttribute<T>::isEqual(const ValueAttribute& other) const
{
  return Attribute::isEqual(other) && m_unit == other.m_unit && m_value == other.m_value;
}

template class ValueAttribute<int>;
template class ValueAttribute<bool>;
template class ValueAttribute<std::string>;
template class ValueAttribute<float>;
template class ValueAttribute<double>;

} // namespace Ombrix::Model

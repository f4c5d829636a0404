// One stored value, the same at every chronology.
#pragma once

#include "ombrix/model/ValueEx.h"

namespace Ombrix::Model::Data
{

template <typename T> class OMBRIX_API SimpleValue : public ValueEx<T, SimpleValue, 1, ValueAbstract<T>>
{
public:
  SimpleValue() = default;
  explicit SimpleValue(T value) : m_value(std::move(value)) {}

  const T& get(KorvanSDK::Chronology) const override { return m_value; }
  T& getForWrite(KorvanSDK::Chronology) override { return m_value; }
  bool has(KorvanSDK::Chronology) const override { return true; }
  const T& value() const { return m_value; }
  bool isEqual(const SimpleValue& other) const { return sameStoredValue(m_value, other.m_value); }

private:
  T m_value{};
};

} // namespace Ombrix::Model::Data

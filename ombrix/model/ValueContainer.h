// Owns the storage of one value attribute and switches it from simple to chronological when a value
// is first written at a chronology other than Initial (the simple value becomes the Initial value).
#pragma once

#include "ombrix/model/ChronologicalValue.h"
#include "ombrix/model/SimpleValue.h"

namespace Ombrix::Model::Data
{

template <typename T> class OMBRIX_API ValueContainer
{
public:
  ValueContainer() : m_value(std::make_unique<SimpleValue<T>>()) {}
  ValueContainer(const ValueContainer& other) : m_value(other.m_value->clone()) {}
  ValueContainer& operator=(const ValueContainer& other)
  {
    m_value = other.m_value->clone();
    return *this;
  }

  ValueType getValueType() const { return m_value->getValueType(); }
  const ValueAbstract<T>& storage() const { return *m_value; }

  const T& get(KorvanSDK::Chronology chronology) const { return m_value->get(chronology); }
  bool has(KorvanSDK::Chronology chronology) const { return m_value->has(chronology); }

  // std::out_of_range "Chronology Out Of Range" for a chronology outside Initial..Next, or for a
  // chronological value without Initial; the value is then unchanged.
  void set(KorvanSDK::Chronology chronology, T value)
  {
    if (static_cast<int>(chronology) < 0 || static_cast<int>(chronology) > 4)
      throw std::out_of_range("Chronology Out Of Range");
    if (chronology != KorvanSDK::Chronology::Initial && getValueType() == ValueType::Simple)
      makeChronological();
    m_value->getForWrite(chronology) = std::move(value);
  }

  // Keeps the current value as the Initial value; does nothing when already chronological.
  void makeChronological()
  {
    if (getValueType() == ValueType::Chronological)
      return;
    T initial = static_cast<const SimpleValue<T>&>(*m_value).value();
    m_value = std::make_unique<ChronologicalValue<T>>(std::move(initial));
  }
  // Replaces the storage (used when reading streams).
  void replace(std::unique_ptr<ValueAbstract<T>> storage) { m_value = std::move(storage); }

  bool operator==(const ValueContainer& other) const { return m_value->equals(*other.m_value); }

private:
  std::unique_ptr<ValueAbstract<T>> m_value;
};

} // namespace Ombrix::Model::Data

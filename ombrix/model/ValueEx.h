// Binds a storage kind (SimpleValue, ChronologicalValue) to its value-type number.
#pragma once

#include "ombrix/model/ValueAbstract.h"

#include <cmath>
#include <type_traits>

namespace Ombrix::Model::Data
{

// Stored values compare exactly, except that two NaNs are the same stored value.
template <typename T> bool sameStoredValue(const T& a, const T& b)
{
  if constexpr (std::is_floating_point_v<T>)
    return a == b || (std::isnan(a) && std::isnan(b));
  else
    return a == b;
}

template <typename T, template <typename> class Kind, int N, class Base>
class OMBRIX_API ValueEx : public Base
{
public:
  static constexpr ValueType valueType = static_cast<ValueType>(N);

  ValueType getValueType() const override { return valueType; }
  std::unique_ptr<ValueAbstract<T>> clone() const override
  {
    return std::make_unique<Kind<T>>(static_cast<const Kind<T>&>(*this));
  }
  bool equals(const ValueAbstract<T>& other) const override
  {
    return other.getValueType() == valueType &&
           static_cast<const Kind<T>&>(*this).isEqual(static_cast<const Kind<T>&>(other));
  }
};

} // namespace Ombrix::Model::Data

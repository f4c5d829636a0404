// One stored value per chronology. A read of chronology c gives the value of the greatest stored
// chronology not after c; a write to an absent chronology first copies the value read just before it.
// Initial is never created implicitly.
#pragma once

#include "ombrix/model/ValueEx.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <stdexcept>

namespace Ombrix::Model::Data
{

template <typename T>
class OMBRIX_API ChronologicalValue : public ValueEx<T, ChronologicalValue, 2, ValueAbstract<T>>
{
public:
  using Map = std::map<KorvanSDK::Chronology, T>;

  ChronologicalValue() = default;
  // Holds `initial` at chronology Initial.
  explicit ChronologicalValue(T initial)
  {
    m_values.emplace(KorvanSDK::Chronology::Initial, std::move(initial));
  }

  const T& get(KorvanSDK::Chronology chronology) const override
  {
    auto it = m_values.upper_bound(chronology);
    if (it == m_values.begin())
      throw std::out_of_range("Chronology Out Of Range");
    return std::prev(it)->second;
  }

  T& getForWrite(KorvanSDK::Chronology chronology) override
  {
    if (auto it = m_values.find(chronology); it != m_values.end())
      return it->second;
    const auto number = static_cast<int>(chronology);
    if (number < 1 || number > 4)
      throw std::out_of_range("Chronology Out Of Range");
    T initial = get(static_cast<KorvanSDK::Chronology>(number - 1));
    return m_values.emplace(chronology, std::move(initial)).first->second;
  }

  bool has(KorvanSDK::Chronology chronology) const override
  {
    return m_values.upper_bound(chronology) != m_values.begin();
  }

  const Map& values() const { return m_values; }
  Map& values() { return m_values; }
  bool isEqual(const ChronologicalValue& other) const
  {
    return m_values.size() == other.m_values.size() &&
           std::equal(m_values.begin(), m_values.end(), other.m_values.begin(),
                      [](const auto& a, const auto& b)
                      { return a.first == b.first && sameStoredValue(a.second, b.second); });
  }

private:
  Map m_values;
};

} // namespace Ombrix::Model::Data

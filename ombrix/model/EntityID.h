// The identity of one entity across the host application, the exchange files and the client: two signed
// 32-bit integers, with the same layout as the host SDK's identifier. A small regular value type.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/sdk/EntityID.h"

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

namespace Ombrix::Model
{

class OMBRIX_API EntityID
{
public:
  // A freshly generated identifier (see generateNew).
  EntityID();
  constexpr EntityID(int first, int second) : m_id{first, second} {}
  constexpr explicit EntityID(const std::pair<int, int>& id) : m_id{id.first, id.second} {}
  constexpr explicit EntityID(const std::array<int, 2>& id) : m_id{id[0], id[1]} {}
  constexpr EntityID(const KorvanSDK::Model::EntityID& id) : m_id{id.id[0], id.id[1]} {}
  constexpr EntityID(const KorvanSDK_Model_EntityID& id) : m_id{id.id[0], id.id[1]} {}

  // Parses "first-second". A '-' at index 0 is a sign. A text without separator names the ID whose two
  // elements are both that number ("7" gives 7-7); "" gives 0-0. Throws std::invalid_argument
  // ("invalid stoi argument") or std::out_of_range ("stoi argument out of range").
  static EntityID fromString(const std::string& text);
  static constexpr EntityID fromCEntityID(const KorvanSDK_Model_EntityID& id) { return EntityID(id); }

  // Element 0 from a process-wide counter started at a random value, element 1 from the processor
  // clock. Distinct within one process until the counter wraps, also when several threads generate IDs.
  void generateNew();

  constexpr int operator[](std::size_t i) const { return m_id[i]; }
  constexpr int first() const { return m_id[0]; }
  constexpr int second() const { return m_id[1]; }

  constexpr operator KorvanSDK::Model::EntityID() const
  {
    return KorvanSDK::Model::EntityID(m_id[0], m_id[1]);
  }
  constexpr KorvanSDK_Model_EntityID toCEntityID() const
  {
    return KorvanSDK_Model_EntityID{{m_id[0], m_id[1]}};
  }

  // Both elements compared as one 64-bit quantity.
  constexpr std::uint64_t key() const
  {
    return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(m_id[0])) << 32) |
           static_cast<std::uint32_t>(m_id[1]);
  }
  friend constexpr bool operator==(const EntityID& a, const EntityID& b) { return a.key() == b.key(); }
  // Lexicographic order of the two elements, for callers that need one; the model never orders IDs.
  friend constexpr std::strong_ordering operator<=>(const EntityID& a, const EntityID& b)
  {
    if (auto c = a.m_id[0] <=> b.m_id[0]; c != 0)
      return c;
    return a.m_id[1] <=> b.m_id[1];
  }

private:
  std::array<int, 2> m_id;
};

// "first-second" in decimal, each element with its own sign: "17-520", "-3-12".
OMBRIX_API std::string toString(const EntityID& id);

} // namespace Ombrix::Model

template <> struct std::hash<Ombrix::Model::EntityID>
{
  std::size_t operator()(const Ombrix::Model::EntityID& id) const noexcept
  {
    return std::hash<std::uint64_t>{}(id.key());
  }
};

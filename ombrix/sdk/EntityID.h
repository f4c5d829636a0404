// The host SDK's entity identifier: two 32-bit integers, as a C struct and as a C++ class with the same
// layout, so that conversion to and from the model's identifier is a copy of both elements.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>

extern "C"
{
  struct KorvanSDK_Model_EntityID
  {
    std::int32_t id[2];
  };
}

namespace KorvanSDK::Model
{

class OMBRIX_API EntityID
{
public:
  constexpr EntityID() = default;
  constexpr EntityID(std::int32_t first, std::int32_t second) : id{first, second} {}
  constexpr EntityID(const KorvanSDK_Model_EntityID& c) : id{c.id[0], c.id[1]} {}

  constexpr std::int32_t operator[](int i) const { return id[i]; }
  constexpr KorvanSDK_Model_EntityID toC() const { return KorvanSDK_Model_EntityID{{id[0], id[1]}}; }

  friend constexpr bool operator==(const EntityID& a, const EntityID& b)
  {
    return a.id[0] == b.id[0] && a.id[1] == b.id[1];
  }

  std::int32_t id[2]{0, 0};
};

} // namespace KorvanSDK::Model

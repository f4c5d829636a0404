// Appends the little-endian fields of the runtime's binary formats to a byte array. Header-only, used by
// the format writers; one thread at a time.
#pragma once

#include "ombrix/platform/bytearray.h"

#include <bit>
#include <cstdint>
#include <span>

namespace Ombrix
{

class ByteWriter
{
public:
  void u32(std::uint32_t value) { unsignedField(value, 4); }
  void i32(std::int32_t value) { u32(static_cast<std::uint32_t>(value)); }
  void u64(std::uint64_t value) { unsignedField(value, 8); }
  void f64(double value) { u64(std::bit_cast<std::uint64_t>(value)); }
  void bytes(std::span<const std::uint8_t> block) { m_data.insert(m_data.end(), block.begin(), block.end()); }

  const Utilities::bytearray& data() const { return m_data; }
  Utilities::bytearray take() { return std::move(m_data); }

private:
  void unsignedField(std::uint64_t value, int size)
  {
    for (int i = 0; i < size; ++i)
      m_data.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }

  Utilities::bytearray m_data;
};

} // namespace Ombrix

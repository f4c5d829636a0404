// Reads the little-endian fields of the runtime's binary formats from a block of bytes, bounds-checked:
// a read past the end throws std::invalid_argument naming the format, the field and the byte offset.
// Header-only, used by the format readers; one thread at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

namespace Ombrix
{

class ByteReader
{
public:
  // `format` names the data in messages ("NeuralNetwork data").
  ByteReader(std::span<const std::uint8_t> bytes, std::string format)
      : m_bytes(bytes), m_format(std::move(format))
  {
  }

  std::size_t offset() const { return m_offset; }
  std::size_t remaining() const { return m_bytes.size() - m_offset; }
  const std::string& format() const { return m_format; }

  // Throws std::invalid_argument "<format>: <what>".
  [[noreturn]] void fail(const std::string& what) const
  {
    throw std::invalid_argument(m_format + ": " + what);
  }

  // Fails unless `count` more bytes are there for `field`.
  void need(std::uint64_t count, const std::string& field) const
  {
    if (count > remaining())
      fail("ends at byte " + std::to_string(m_bytes.size()) + " in " + field + " (" + std::to_string(count) +
           " bytes needed from byte " + std::to_string(m_offset) + ")");
  }

  std::uint32_t u32(const std::string& field) { return static_cast<std::uint32_t>(unsignedField(4, field)); }
  std::int32_t i32(const std::string& field) { return static_cast<std::int32_t>(u32(field)); }
  std::uint64_t u64(const std::string& field) { return unsignedField(8, field); }
  double f64(const std::string& field) { return std::bit_cast<double>(u64(field)); }

  // The next `count` bytes, for data nested in the format.
  std::span<const std::uint8_t> bytes(std::uint64_t count, const std::string& field)
  {
    need(count, field);
    const auto block = m_bytes.subspan(m_offset, static_cast<std::size_t>(count));
    m_offset += static_cast<std::size_t>(count);
    return block;
  }

  // Reads `count` doubles into `out` (resized); the size is checked before anything is allocated.
  template <typename Vector> void f64s(std::uint64_t count, Vector& out, const std::string& field)
  {
    if (count > remaining() / 8)
      fail("ends at byte " + std::to_string(m_bytes.size()) + " in " + field + " (" + std::to_string(count) +
           " x 8 bytes needed from byte " + std::to_string(m_offset) + ")");
    out.resize(static_cast<std::size_t>(count));
    for (auto& value : out)
      value = f64(field);
  }

  // Fails when bytes are left after the last field.
  void expectEnd() const
  {
    if (remaining() != 0)
      fail(std::to_string(remaining()) + " bytes after the end of the data, at byte " +
           std::to_string(m_offset));
  }

private:
  std::uint64_t unsignedField(std::size_t size, const std::string& field)
  {
    need(size, field);
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
      value |= static_cast<std::uint64_t>(m_bytes[m_offset + i]) << (8 * i);
    m_offset += size;
    return value;
  }

  std::span<const std::uint8_t> m_bytes;
  std::string m_format;
  std::size_t m_offset = 0;
};

} // namespace Ombrix

// FileSystem::DataIStream: reads back what a DataOStream of the same kind wrote, item by item, checking
// section and key names on the way. One thread at a time per stream.
//
// A stream fails (good() turns false) when the next item is not the one asked for (another section, key or
// closing tag), a value is malformed or out of range for its type, the data ends early, a name is not valid,
// or its kind is neither Binary nor Text. A failed read leaves its target unchanged; once failed, the stream
// ignores every further read. Any input, however truncated or corrupt, only ever fails the stream.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/platform/DataStreamKind.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace FileSystem
{

class OMBRIX_API DataIStream
{
public:
  explicit DataIStream(std::string data, DataStreamKind kind = DataStreamKind::Binary);
  // A stream over the whole content of `path`; a failed stream when the file cannot be read.
  static DataIStream fromFile(const std::string& path, DataStreamKind kind);

  DataStreamKind kind() const { return m_kind; }
  bool good() const { return m_good; }
  explicit operator bool() const { return m_good; }
  void setFailed() { m_good = false; }
  // True when nothing but (for Text) blanks and line ends is left.
  bool atEnd() const;
  // Bytes not yet read; every item takes at least one, which bounds counts read from the data.
  std::size_t remaining() const { return m_data.size() - m_pos; }

  // Fails unless the next item opens a section of exactly that name.
  void beginSection(std::string_view name);
  // Fails unless the next item closes the innermost open section.
  void endSection();
  // Fails unless the next item is exactly that key.
  void key(std::string_view name);

  DataIStream& operator>>(bool& value);
  DataIStream& operator>>(std::int8_t& value);
  DataIStream& operator>>(std::uint8_t& value);
  DataIStream& operator>>(std::int16_t& value);
  DataIStream& operator>>(std::uint16_t& value);
  DataIStream& operator>>(std::int32_t& value);
  DataIStream& operator>>(std::uint32_t& value);
  DataIStream& operator>>(std::int64_t& value);
  DataIStream& operator>>(std::uint64_t& value);
  DataIStream& operator>>(float& value);
  DataIStream& operator>>(double& value);
  DataIStream& operator>>(std::string& value);

private:
  bool usable();
  bool readBinary(std::uint64_t& bits, std::size_t bytes);
  bool readName(DataStreamTag tag, std::string_view name);
  void skipBlanks();
  std::string_view nextToken();
  template <typename T> DataIStream& readNumber(T& value);

  std::string m_data;
  std::size_t m_pos = 0;
  DataStreamKind m_kind;
  bool m_good = true;
  std::vector<std::string> m_open;
};

// A vector as DataOStream writes it. On a failed stream, or when the count read could not fit in the rest of
// the data, the stream fails and the vector is left as it was. Otherwise the vector is cleared and receives,
// in order, each element read into a value-initialised T (through its operator>>, found by argument-dependent
// lookup) until the count is reached or a read fails.
template <typename T> DataIStream& operator>>(DataIStream& in, std::vector<T>& values)
{
  std::uint64_t count = 0;
  if (!(in >> count))
    return in;
  if (count > in.remaining())
  {
    in.setFailed();
    return in;
  }
  values.clear();
  values.reserve(static_cast<std::size_t>(count));
  for (std::uint64_t i = 0; i < count; ++i)
  {
    T value{};
    if (!(in >> value))
      break;
    values.push_back(std::move(value));
  }
  return in;
}

// An optional as DataOStream writes it; left as it was when the stream fails.
template <typename T> DataIStream& operator>>(DataIStream& in, std::optional<T>& value)
{
  bool engaged = false;
  if (!(in >> engaged))
    return in;
  if (!engaged)
  {
    value.reset();
    return in;
  }
  T read{};
  if (in >> read)
    value = std::move(read);
  return in;
}

} // namespace FileSystem

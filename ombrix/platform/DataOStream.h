// FileSystem::DataOStream: writes named sections, keyed entries and values into memory, in the binary or
// the text encoding described in DataStreamKind.h. One thread at a time per stream.
//
// A stream fails (good() turns false) when a section is closed that was never opened, a name is not valid
// (isValidDataStreamName), a null C string is written, or its kind is neither Binary nor Text. Once failed it
// ignores every further write, so callers may write a whole record and check good() once at the end.
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

class OMBRIX_API DataOStream
{
public:
  explicit DataOStream(DataStreamKind kind = DataStreamKind::Binary);

  DataStreamKind kind() const { return m_kind; }
  bool good() const { return m_good; }
  explicit operator bool() const { return m_good; }
  void setFailed() { m_good = false; }

  // Opens a named group; groups nest.
  void beginSection(std::string_view name);
  // Closes the innermost open group; fails the stream when none is open.
  void endSection();
  // Starts a keyed entry; its value follows through operator<<.
  void key(std::string_view name);

  DataOStream& operator<<(bool value);
  DataOStream& operator<<(std::int8_t value);
  DataOStream& operator<<(std::uint8_t value);
  DataOStream& operator<<(std::int16_t value);
  DataOStream& operator<<(std::uint16_t value);
  DataOStream& operator<<(std::int32_t value);
  DataOStream& operator<<(std::uint32_t value);
  DataOStream& operator<<(std::int64_t value);
  DataOStream& operator<<(std::uint64_t value);
  DataOStream& operator<<(float value);
  DataOStream& operator<<(double value);
  DataOStream& operator<<(const std::string& value);
  DataOStream& operator<<(const char* value);
  // A pointer would otherwise be written as a bool.
  DataOStream& operator<<(const void*) = delete;

  // Everything written so far: bytes for Binary, text for Text (each line ended by LF).
  const std::string& data() const { return m_data; }
  // Writes data() to `path` through a temporary file renamed into place. Returns false, without writing,
  // when the stream has failed, and false when the file cannot be written.
  bool saveAs(const std::string& path) const;

private:
  bool usable();
  void writeName(DataStreamTag tag, std::string_view name);
  void writeBinary(std::uint64_t bits, std::size_t bytes);
  void writeText(std::string_view token);
  void indent();
  template <typename T> DataOStream& writeNumber(T value);

  DataStreamKind m_kind;
  bool m_good = true;
  bool m_lineOpen = false;
  std::string m_data;
  std::vector<std::string> m_open;
};

// A vector: its size as uint64, then each element through its own operator<< (found by argument-dependent
// lookup, so model types and std::unique_ptr of them work when they provide one). Stops when the stream
// fails.
template <typename T> DataOStream& operator<<(DataOStream& out, const std::vector<T>& values)
{
  out << static_cast<std::uint64_t>(values.size());
  for (const auto& value : values)
  {
    if (!out)
      break;
    out << value;
  }
  return out;
}

// An optional: a bool telling whether it holds a value, then the value if it does.
template <typename T> DataOStream& operator<<(DataOStream& out, const std::optional<T>& value)
{
  out << value.has_value();
  if (value && out)
    out << *value;
  return out;
}

} // namespace FileSystem

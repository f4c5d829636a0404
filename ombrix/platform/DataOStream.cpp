#include "ombrix/platform/DataOStream.h"

#include "ombrix/platform/File.h"

#include <bit>
#include <charconv>
#include <type_traits>

namespace FileSystem
{

DataOStream::DataOStream(DataStreamKind kind) : m_kind(kind) {}

bool DataOStream::usable()
{
  if (m_good && m_kind != DataStreamKind::Binary && m_kind != DataStreamKind::Text)
    m_good = false;
  return m_good;
}

void DataOStream::indent()
{
  m_data.append(2 * m_open.size(), ' ');
}

void DataOStream::writeBinary(std::uint64_t bits, std::size_t bytes)
{
  for (std::size_t i = 0; i < bytes; ++i)
    m_data += static_cast<char>((bits >> (8 * i)) & 0xffu);
}

void DataOStream::writeText(std::string_view token)
{
  // Values join the current line; the line's LF is taken back and written again after the value.
  if (m_lineOpen)
  {
    m_data.back() = ' ';
  }
  else
  {
    indent();
    m_lineOpen = true;
  }
  m_data += token;
  m_data += '\n';
}

void DataOStream::writeName(DataStreamTag tag, std::string_view name)
{
  m_data += static_cast<char>(tag);
  writeBinary(name.size(), 8);
  m_data += name;
}

void DataOStream::beginSection(std::string_view name)
{
  if (!usable())
    return;
  if (!isValidDataStreamName(name))
  {
    m_good = false;
    return;
  }
  if (m_kind == DataStreamKind::Binary)
  {
    writeName(DataStreamTag::SectionBegin, name);
  }
  else
  {
    indent();
    m_data += '<';
    m_data += name;
    m_data += ">\n";
    m_lineOpen = false;
  }
  m_open.emplace_back(name);
}

void DataOStream::endSection()
{
  if (!usable())
    return;
  if (m_open.empty())
  {
    m_good = false;
    return;
  }
  const std::string name = std::move(m_open.back());
  m_open.pop_back();
  if (m_kind == DataStreamKind::Binary)
  {
    m_data += static_cast<char>(DataStreamTag::SectionEnd);
  }
  else
  {
    indent();
    m_data += "</";
    m_data += name;
    m_data += ">\n";
    m_lineOpen = false;
  }
}

void DataOStream::key(std::string_view name)
{
  if (!usable())
    return;
  if (!isValidDataStreamName(name))
  {
    m_good = false;
    return;
  }
  if (m_kind == DataStreamKind::Binary)
  {
    writeName(DataStreamTag::Key, name);
  }
  else
  {
    indent();
    m_data += name;
    m_data += '\n';
    m_lineOpen = true;
  }
}

template <typename T> DataOStream& DataOStream::writeNumber(T value)
{
  if (!usable())
    return *this;
  if (m_kind == DataStreamKind::Binary)
  {
    if constexpr (std::is_floating_point_v<T>)
    {
      using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
      writeBinary(std::bit_cast<Bits>(value), sizeof(T));
    }
    else
    {
      writeBinary(static_cast<std::uint64_t>(static_cast<std::make_unsigned_t<T>>(value)), sizeof(T));
    }
    return *this;
  }
  char text[64];
  const auto result = std::to_chars(text, text + sizeof(text), value);
  writeText(std::string_view(text, static_cast<std::size_t>(result.ptr - text)));
  return *this;
}

DataOStream& DataOStream::operator<<(bool value)
{
  if (!usable())
    return *this;
  if (m_kind == DataStreamKind::Binary)
    m_data += static_cast<char>(value ? 1 : 0);
  else
    writeText(value ? "true" : "false");
  return *this;
}

DataOStream& DataOStream::operator<<(std::int8_t value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(std::uint8_t value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(std::int16_t value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(std::uint16_t value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(std::int32_t value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(std::uint32_t value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(std::int64_t value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(std::uint64_t value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(float value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(double value)
{
  return writeNumber(value);
}

DataOStream& DataOStream::operator<<(const std::string& value)
{
  if (!usable())
    return *this;
  if (m_kind == DataStreamKind::Binary)
  {
    writeBinary(value.size(), 8);
    m_data += value;
    return *this;
  }
  std::string quoted;
  quoted.reserve(value.size() + 2);
  quoted += '"';
  for (const char c : value)
  {
    if (c == '"' || c == '\\')
      quoted += '\\';
    quoted += c;
  }
  quoted += '"';
  writeText(quoted);
  return *this;
}

DataOStream& DataOStream::operator<<(const char* value)
{
  if (!value)
  {
    m_good = false;
    return *this;
  }
  return *this << std::string(value);
}

bool DataOStream::saveAs(const std::string& path) const
{
  return m_good && File::writeAtomically(path, m_data);
}

} // namespace FileSystem

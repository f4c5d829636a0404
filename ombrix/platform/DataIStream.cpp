#include "ombrix/platform/DataIStream.h"

#include "ombrix/platform/File.h"

#include <bit>
#include <charconv>
#include <type_traits>

namespace FileSystem
{

namespace
{

bool isBlank(char c)
{
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

} // namespace

DataIStream::DataIStream(std::string data, DataStreamKind kind) : m_data(std::move(data)), m_kind(kind) {}

DataIStream DataIStream::fromFile(const std::string& path, DataStreamKind kind)
{
  std::string content;
  const bool read = File::readAll(path, content);
  DataIStream stream(std::move(content), kind);
  if (!read)
    stream.setFailed();
  return stream;
}

bool DataIStream::usable()
{
  if (m_good && m_kind != DataStreamKind::Binary && m_kind != DataStreamKind::Text)
    m_good = false;
  return m_good;
}

bool DataIStream::atEnd() const
{
  if (m_kind != DataStreamKind::Text)
    return m_pos >= m_data.size();
  for (std::size_t i = m_pos; i < m_data.size(); ++i)
  {
    if (!isBlank(m_data[i]))
      return false;
  }
  return true;
}

bool DataIStream::readBinary(std::uint64_t& bits, std::size_t bytes)
{
  if (remaining() < bytes)
  {
    m_good = false;
    return false;
  }
  bits = 0;
  for (std::size_t i = 0; i < bytes; ++i)
    bits |= static_cast<std::uint64_t>(static_cast<unsigned char>(m_data[m_pos + i])) << (8 * i);
  m_pos += bytes;
  return true;
}

void DataIStream::skipBlanks()
{
  while (m_pos < m_data.size() && isBlank(m_data[m_pos]))
    ++m_pos;
}

std::string_view DataIStream::nextToken()
{
  skipBlanks();
  const std::size_t start = m_pos;
  while (m_pos < m_data.size() && !isBlank(m_data[m_pos]))
    ++m_pos;
  return std::string_view(m_data).substr(start, m_pos - start);
}

bool DataIStream::readName(DataStreamTag tag, std::string_view name)
{
  if (!usable())
    return false;
  if (!isValidDataStreamName(name))
  {
    m_good = false;
    return false;
  }
  if (m_kind == DataStreamKind::Binary)
  {
    std::uint64_t found = 0;
    std::uint64_t length = 0;
    if (!readBinary(found, 1) || found != static_cast<std::uint64_t>(tag) || !readBinary(length, 8) ||
        length != name.size() || remaining() < length ||
        std::string_view(m_data).substr(m_pos, name.size()) != name)
    {
      m_good = false;
      return false;
    }
    m_pos += name.size();
    return true;
  }
  const std::string_view token = nextToken();
  bool matches = false;
  if (tag == DataStreamTag::Key)
    matches = token == name;
  else
    matches = token.size() == name.size() + 2 && token.front() == '<' && token.back() == '>' &&
              token.substr(1, name.size()) == name;
  if (!matches)
    m_good = false;
  return matches;
}

void DataIStream::beginSection(std::string_view name)
{
  if (readName(DataStreamTag::SectionBegin, name))
    m_open.emplace_back(name);
}

void DataIStream::endSection()
{
  if (!usable())
    return;
  if (m_open.empty())
  {
    m_good = false;
    return;
  }
  if (m_kind == DataStreamKind::Binary)
  {
    std::uint64_t found = 0;
    if (!readBinary(found, 1) || found != static_cast<std::uint64_t>(DataStreamTag::SectionEnd))
    {
      m_good = false;
      return;
    }
  }
  else
  {
    const std::string_view token = nextToken();
    const std::string& name = m_open.back();
    if (token.size() != name.size() + 3 || token.substr(0, 2) != "</" || token.back() != '>' ||
        token.substr(2, name.size()) != name)
    {
      m_good = false;
      return;
    }
  }
  m_open.pop_back();
}

void DataIStream::key(std::string_view name)
{
  readName(DataStreamTag::Key, name);
}

template <typename T> DataIStream& DataIStream::readNumber(T& value)
{
  if (!usable())
    return *this;
  if (m_kind == DataStreamKind::Binary)
  {
    std::uint64_t bits = 0;
    if (!readBinary(bits, sizeof(T)))
      return *this;
    if constexpr (std::is_floating_point_v<T>)
    {
      using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
      value = std::bit_cast<T>(static_cast<Bits>(bits));
    }
    else
    {
      value = static_cast<T>(static_cast<std::make_unsigned_t<T>>(bits));
    }
    return *this;
  }
  const std::string_view token = nextToken();
  T read{};
  const auto result = std::from_chars(token.data(), token.data() + token.size(), read);
  if (token.empty() || result.ec != std::errc() || result.ptr != token.data() + token.size())
  {
    m_good = false;
    return *this;
  }
  value = read;
  return *this;
}

DataIStream& DataIStream::operator>>(bool& value)
{
  if (!usable())
    return *this;
  if (m_kind == DataStreamKind::Binary)
  {
    std::uint64_t bits = 0;
    if (!readBinary(bits, 1))
      return *this;
    if (bits > 1)
    {
      m_good = false;
      return *this;
    }
    value = bits == 1;
    return *this;
  }
  const std::string_view token = nextToken();
  if (token == "true" || token == "1")
    value = true;
  else if (token == "false" || token == "0")
    value = false;
  else
    m_good = false;
  return *this;
}

DataIStream& DataIStream::operator>>(std::int8_t& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(std::uint8_t& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(std::int16_t& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(std::uint16_t& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(std::int32_t& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(std::uint32_t& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(std::int64_t& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(std::uint64_t& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(float& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(double& value)
{
  return readNumber(value);
}

DataIStream& DataIStream::operator>>(std::string& value)
{
  if (!usable())
    return *this;
  if (m_kind == DataStreamKind::Binary)
  {
    std::uint64_t length = 0;
    const std::size_t start = m_pos;
    if (!readBinary(length, 8))
      return *this;
    if (length > remaining())
    {
      m_pos = start;
      m_good = false;
      return *this;
    }
    value.assign(m_data, m_pos, static_cast<std::size_t>(length));
    m_pos += static_cast<std::size_t>(length);
    return *this;
  }

  skipBlanks();
  const std::size_t size = m_data.size();
  if (m_pos >= size || m_data[m_pos] != '"')
  {
    m_good = false;
    return *this;
  }
  std::string read;
  std::size_t pos = m_pos + 1;
  for (;;)
  {
    const std::size_t special = m_data.find_first_of("\"\\", pos);
    if (special == std::string::npos)
    {
      m_good = false;
      return *this;
    }
    read.append(m_data, pos, special - pos);
    if (m_data[special] == '"')
    {
      pos = special + 1;
      break;
    }
    // Only the two escapes that the writer produces are accepted.
    if (special + 1 >= size || (m_data[special + 1] != '"' && m_data[special + 1] != '\\'))
    {
      m_good = false;
      return *this;
    }
    read += m_data[special + 1];
    pos = special + 2;
  }
  if (pos < size && !isBlank(m_data[pos]))
  {
    m_good = false;
    return *this;
  }
  m_pos = pos;
  value = std::move(read);
  return *this;
}

} // namespace FileSystem

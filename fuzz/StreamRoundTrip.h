// Shared by the data-stream fuzz targets: reads a record from fuzzed bytes and, when the stream accepts
// them, checks that writing the record and reading it back gives an equal record and the same bytes again.
#pragma once

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "FuzzSupport.h"

#include <string>
#include <string_view>

namespace OmbrixFuzz
{

template <typename Record> std::string written(const Record& record, FileSystem::DataStreamKind kind)
{
  FileSystem::DataOStream out(kind);
  out << record;
  if (!out.good())
    fail("a record read from a stream cannot be written again");
  return out.data();
}

// Whether two records have the same content: operator==, unless specialised for a record whose own
// equality is identity.
template <typename Record> struct Same
{
  bool operator()(const Record& a, const Record& b) const { return a == b; }
};

template <typename Record> void streamRoundTrip(std::string_view bytes, FileSystem::DataStreamKind kind)
{
  Record first;
  FileSystem::DataIStream in{std::string(bytes), kind};
  in >> first;
  if (!in.good())
    return;
  const std::string text = written(first, kind);
  Record second;
  FileSystem::DataIStream again{text, kind};
  again >> second;
  if (!again.good() || !Same<Record>{}(second, first))
    fail("a written record does not read back to the same record");
  if (written(second, kind) != text)
    fail("a record read back writes other bytes");
}

// A whole target: the first byte of an input chooses the encoding (bit 0) and which of `Records` is read
// (the rest, modulo their number); the other bytes are the stream.
template <typename... Records> int streamTarget(const std::uint8_t* data, std::size_t size)
{
  std::string_view input = asText(data, size);
  if (input.empty())
    return 0;
  const unsigned flags = takeFlags(input);
  const auto kind = (flags & 1) ? FileSystem::DataStreamKind::Text : FileSystem::DataStreamKind::Binary;
  const unsigned chosen = (flags >> 1) % sizeof...(Records);
  unsigned index = 0;
  ((index++ == chosen ? streamRoundTrip<Records>(input, kind) : void()), ...);
  return 0;
}

} // namespace OmbrixFuzz

// Shared by the data-stream fuzz targets: reads a record from fuzzed bytes and, when the stream accepts
// them, checks that writing the record and reading it back gives an equal record and the same bytes again.
#pragma once

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "FuzzSupport.h"

#include <functional>
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

// `same` compares two records by content: operator== unless the record's own equality is identity.
template <typename Record, typename Same = std::equal_to<Record>>
void streamRoundTrip(std::string_view bytes, FileSystem::DataStreamKind kind, Same same = {})
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
  if (!again.good() || !same(second, first))
    fail("a written record does not read back to the same record");
  if (written(second, kind) != text)
    fail("a record read back writes other bytes");
}

// The first byte of an input chooses the encoding (bit 0) and the record (the rest); returns the record's
// number below `records`.
inline unsigned splitSelector(std::string_view& input, FileSystem::DataStreamKind& kind, unsigned records)
{
  const unsigned selector = takeFlags(input);
  kind = (selector & 1) ? FileSystem::DataStreamKind::Text : FileSystem::DataStreamKind::Binary;
  return (selector >> 1) % records;
}

} // namespace OmbrixFuzz

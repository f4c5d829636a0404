// Shared by the fuzz targets and the seed writer: a model with every attribute kind, a scratch directory
// per process for the readers that take a path, the flag byte that starts most inputs, the round trip of
// the CSV files, and the check that stops a target on a broken property.
#pragma once

#include "ombrix/model/EntityCollection.h"
#include "ombrix/platform/CSVParser.h"
#include "ombrix/sdk/Chronology.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <set>
#include <string>
#include <string_view>

namespace OmbrixFuzz
{

// Solution control, values of the five kinds at several chronologies, units, every access type, nested
// composites, a shortcut, a list and a link owning their entities, and an array.
void buildModel(Ombrix::Model::EntityCollection& collection);

// A file in a directory of this process's own, removed when the process ends.
std::string scratchFile(const std::string& name);

// Replaces the whole content of `path` with `data`.
void writeFile(const std::string& path, std::string_view data);

// Prints `what` and aborts: the fuzzer (or the replay) then reports the input that broke the property.
[[noreturn]] void fail(const std::string& what);

// A fuzz input as text.
inline std::string_view asText(const std::uint8_t* data, std::size_t size)
{
  return {reinterpret_cast<const char*>(data), size};
}

// Removes the first byte of a non-empty input and returns it: the flags a target reads its settings from.
inline unsigned takeFlags(std::string_view& input)
{
  const auto flags = static_cast<unsigned char>(input.front());
  input.remove_prefix(1);
  return flags;
}

// The chronologies of bits 2 to 6 of a CSV target's flags (bit 2 Initial ... bit 6 Next).
inline std::set<KorvanSDK::Chronology> chronologiesOf(unsigned flags)
{
  std::set<KorvanSDK::Chronology> chronologies;
  for (int c = 0; c < 5; ++c)
    if (flags & (4u << c))
      chronologies.insert(static_cast<KorvanSDK::Chronology>(c));
  return chronologies;
}

// The rows of a CSV file's text, and the text of rows, as the exchange's files frame them.
inline FileSystem::CSVParser::Table csvRows(std::string_view text)
{
  FileSystem::CSVParser csv(',', false, false, '\n', true);
  csv.parseText(std::string(text));
  return csv.rows();
}
inline std::string csvText(FileSystem::CSVParser::Table rows)
{
  FileSystem::CSVParser csv(',', false, false, '\n', true);
  csv.rows() = std::move(rows);
  return csv.toText();
}

// Reads `text` with a fresh `Side(flags, false)`, which may refuse it; when it is read, what that side
// writes must be read by a fresh `Side(flags, true)` (fatal errors on) to a model that writes the same text.
// A side has read(text) -> bool and write() -> text; `writerMayRefuse` lets the first write throw too.
template <typename Side> void csvRoundTrip(std::string_view text, unsigned flags, bool writerMayRefuse)
{
  std::string first;
  {
    Side side(flags, false);
    try
    {
      if (!side.read(text))
        return;
    }
    catch (const std::exception&)
    {
      return;
    }
    try
    {
      first = side.write();
    }
    catch (const std::exception&)
    {
      if (!writerMayRefuse)
        throw;
      return;
    }
  }
  Side again(flags, true);
  try
  {
    if (!again.read(first))
      fail(std::string("a written ") + Side::file + " is not read back:\n" + first);
  }
  catch (const std::exception& error)
  {
    fail(std::string("a written ") + Side::file + " is refused: " + error.what() + "\n" + first);
  }
  if (again.write() != first)
    fail(std::string("a ") + Side::file + " read back writes another file:\n" + first);
}

} // namespace OmbrixFuzz

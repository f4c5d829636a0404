// Shared by the fuzz targets and the seed writer: a model with every attribute kind, a scratch directory
// per process for the readers that take a path, and the check that stops a target on a broken property.
#pragma once

#include "ombrix/model/EntityCollection.h"
#include "ombrix/sdk/Chronology.h"

#include <cstddef>
#include <cstdint>
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

// Prints `what` and aborts: the fuzzer (or the replay) then reports the input that broke the property.
[[noreturn]] void fail(const std::string& what);

} // namespace OmbrixFuzz

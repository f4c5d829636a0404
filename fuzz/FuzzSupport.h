// Shared by the fuzz targets and the seed writer: a model with every attribute kind, a scratch directory
// per process for the readers that take a path, and the check that stops a target on a broken property.
#pragma once

#include "ombrix/model/EntityCollection.h"

#include <cstddef>
#include <cstdint>
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

// Prints `what` and aborts: the fuzzer (or the replay) then reports the input that broke the property.
[[noreturn]] void fail(const std::string& what);

} // namespace OmbrixFuzz

// The binary form of a "Transformed" module definition: the transformations of the inputs and outputs
// and the definition of the module they wrap (grammar in docs/ai-runtime.md). All fields little-endian:
//
//   transformed    = "OMTR" version:u32 transforms(inputs) transforms(outputs) inner
//   transforms     = count:u32 transformation{count}
//   transformation = type:i32 parameters:u32 f64{parameters}
//   inner          = type:i32 size:u64 u8{size}
//
// Version 1. An empty list of transformations leaves that side's values as they are, whatever their
// number; otherwise the list has one entry per input (or output), in order.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/platform/ModuleType.h"
#include "ombrix/platform/bytearray.h"
#include "ombrix/runtime/Transformation.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Ombrix
{

class OMBRIX_AI_API TransformedFormat
{
public:
  static constexpr std::uint32_t version = 1;

  struct Content
  {
    std::vector<Transformation> inputs;
    std::vector<Transformation> outputs;
    AISystem::ModuleType innerType = AISystem::ModuleType::Trivial;
    Utilities::bytearray innerData;

    bool operator==(const Content&) const = default;
  };

  // Throws std::invalid_argument "Transformed data: <what>" when `bytes` do not hold exactly one
  // content of this version (wrong signature or version, data that ends early or goes on, a
  // transformation whose parameters do not suit its type). The inner data is not read here.
  static Content read(std::span<const std::uint8_t> bytes);
  static Utilities::bytearray write(const Content& content);
};

} // namespace Ombrix

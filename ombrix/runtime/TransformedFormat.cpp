#include "ombrix/runtime/TransformedFormat.h"

#include "ombrix/runtime/ByteReader.h"
#include "ombrix/runtime/ByteWriter.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Ombrix
{
namespace
{

constexpr std::uint8_t signature[4] = {'O', 'M', 'T', 'R'};
// Type and parameter count: the fewest bytes a transformation takes.
constexpr std::size_t smallestTransformation = 8;

std::vector<Transformation> readTransformations(ByteReader& in, const std::string& side)
{
  const std::uint32_t count = in.u32("the number of " + side + " transformations");
  std::vector<Transformation> transformations;
  transformations.reserve(std::min<std::size_t>(count, in.remaining() / smallestTransformation));
  for (std::uint32_t i = 0; i < count; ++i)
  {
    const std::string name = side + " transformation " + std::to_string(i);
    const auto type = static_cast<TransformationType>(in.i32(name + "'s type"));
    const std::uint32_t parameterCount = in.u32(name + "'s number of parameters");
    std::vector<double> parameters;
    in.f64s(parameterCount, parameters, name + "'s parameters");
    try
    {
      transformations.emplace_back(type, std::move(parameters));
    }
    catch (const std::invalid_argument& error)
    {
      in.fail(name + ": " + error.what());
    }
  }
  return transformations;
}

void writeTransformations(ByteWriter& out, const std::vector<Transformation>& transformations)
{
  out.u32(static_cast<std::uint32_t>(transformations.size()));
  for (const Transformation& transformation : transformations)
  {
    out.i32(static_cast<std::int32_t>(transformation.type()));
    out.u32(static_cast<std::uint32_t>(transformation.parameters().size()));
    for (double parameter : transformation.parameters())
      out.f64(parameter);
  }
}

} // namespace

TransformedFormat::Content TransformedFormat::read(std::span<const std::uint8_t> bytes)
{
  ByteReader in(bytes, "Transformed data");
  if (bytes.size() < 4 || !std::equal(signature, signature + 4, bytes.begin()))
    in.fail("does not start with the signature \"OMTR\"");
  in.bytes(4, "the signature");
  const std::uint32_t dataVersion = in.u32("the version");
  if (dataVersion != version)
    in.fail("version " + std::to_string(dataVersion) + ", this build reads version " +
            std::to_string(version));
  Content content;
  content.inputs = readTransformations(in, "input");
  content.outputs = readTransformations(in, "output");
  content.innerType = static_cast<AISystem::ModuleType>(in.i32("the inner module's type"));
  const std::uint64_t size = in.u64("the inner module's size");
  const auto inner = in.bytes(size, "the inner module's data");
  content.innerData.assign(inner.begin(), inner.end());
  in.expectEnd();
  return content;
}

Utilities::bytearray TransformedFormat::write(const Content& content)
{
  ByteWriter out;
  out.bytes(signature);
  out.u32(version);
  writeTransformations(out, content.inputs);
  writeTransformations(out, content.outputs);
  out.i32(static_cast<std::int32_t>(content.innerType));
  out.u64(content.innerData.size());
  out.bytes(content.innerData);
  return out.take();
}

} // namespace Ombrix

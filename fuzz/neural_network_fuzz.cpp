// The readers of the AI runtime's own formats. Any bytes are either refused with std::invalid_argument,
// or read into a network that writes back to exactly the same bytes (the format has one encoding per
// network), reads again to the same network, and evaluates a row. The same bytes go to the "Transformed"
// builder, whose data nests a module definition (unless it nests a TorchScript archive, which only
// libtorch reads).
#include "ombrix/runtime/AIModuleBuilder.h"
#include "ombrix/runtime/NeuralNetworkFormat.h"
#include "ombrix/runtime/NeuralNetworkModule.h"
#include "ombrix/runtime/TransformedFormat.h"

#include "FuzzSupport.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

namespace
{

// Whether Transformed data wraps a TorchScript module, at any depth: libtorch's archive reader is
// libtorch's to fuzz, not this target's.
bool wrapsTorchScript(std::span<const std::uint8_t> bytes, int depth = 0)
{
  try
  {
    const auto content = Ombrix::TransformedFormat::read(bytes);
    if (content.innerType == AISystem::ModuleType::TorchScript)
      return true;
    return content.innerType == AISystem::ModuleType::Transformed &&
           depth < Ombrix::AIModuleBuilder::maximumNesting && wrapsTorchScript(content.innerData, depth + 1);
  }
  catch (const std::invalid_argument&)
  {
    return false;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  const std::span<const std::uint8_t> bytes(data, size);
  Ombrix::DenseNetwork network;
  try
  {
    if (!wrapsTorchScript(bytes))
      Ombrix::AIModuleBuilder::build(AISystem::ModuleType::Transformed, bytes);
  }
  catch (const std::invalid_argument&)
  {
  }
  try
  {
    network = Ombrix::NeuralNetworkFormat::read(bytes);
  }
  catch (const std::invalid_argument&)
  {
    return 0;
  }
  const Utilities::bytearray written = Ombrix::NeuralNetworkFormat::write(network);
  if (!std::equal(written.begin(), written.end(), bytes.begin(), bytes.end()))
    OmbrixFuzz::fail("writing a network read from bytes does not give the same bytes");
  if (Ombrix::NeuralNetworkFormat::read(written) != network)
    OmbrixFuzz::fail("reading the written network does not give the same network");
  std::vector<double> in(network.inputCount(), 0.5), out(network.outputCount());
  Ombrix::NeuralNetworkModule(network).compute(in.data(), 1, in.size(), out.data());
  return 0;
}

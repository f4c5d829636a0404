#include "ombrix/runtime/TorchScriptModule.h"

#include <stdexcept>
#include <string>

#if OMBRIX_WITH_TORCH

// The only file that sees libtorch's headers: they are large, and keeping them here keeps the rest of
// the runtime quick to build.
#include <algorithm>
#include <cstring>
#include <sstream>
#include <torch/script.h>

namespace Ombrix
{
namespace
{

// libtorch's reason without its C++ backtrace or TorchScript traceback: the last line of the message,
// less the Python exception name.
std::string reason(const std::exception& error)
{
  const auto* c10Error = dynamic_cast<const c10::Error*>(&error);
  std::string text = c10Error ? c10Error->what_without_backtrace() : error.what();
  while (!text.empty() && (text.back() == '\n' || text.back() == ' '))
    text.pop_back();
  if (const auto newline = text.rfind('\n'); newline != std::string::npos)
    text.erase(0, newline + 1);
  for (const char* prefix : {"RuntimeError: ", "ValueError: ", "TypeError: ", "IndexError: "})
  {
    if (text.rfind(prefix, 0) == 0)
      text.erase(0, std::strlen(prefix));
  }
  return text;
}

torch::Tensor toTensor(const std::vector<double>& values, std::initializer_list<std::int64_t> shape)
{
  return torch::tensor(values, torch::kDouble).reshape(shape).clone();
}

} // namespace

struct TorchScriptModule::Torch
{
  torch::jit::Module module;
  torch::Dtype dtype = torch::kDouble;
};

bool TorchScriptModule::available()
{
  return true;
}

TorchScriptModule::TorchScriptModule(std::span<const std::uint8_t> bytes)
    : AIRuntimeModule(AISystem::ModuleType::TorchScript), m_torch(std::make_unique<Torch>())
{
  // torch.jit.save writes a zip archive; anything else would only get libtorch's reader's confusion.
  static constexpr std::uint8_t zip[4] = {'P', 'K', 3, 4};
  if (bytes.size() < 4 || !std::equal(zip, zip + 4, bytes.begin()))
    throw std::invalid_argument("TorchScript data: not a TorchScript archive (the zip archive that "
                                "torch.jit.save writes)");
  try
  {
    std::istringstream in(std::string(bytes.begin(), bytes.end()));
    m_torch->module = torch::jit::load(in, torch::kCPU);
  }
  catch (const std::exception& error)
  {
    throw std::invalid_argument("TorchScript data: libtorch cannot load it: " + reason(error));
  }
  if (!m_torch->module.find_method("forward"))
    throw std::invalid_argument("TorchScript data: the module has no forward method");
  m_torch->module.eval();
  for (const auto& parameter : m_torch->module.parameters())
  {
    if (parameter.is_floating_point())
    {
      m_torch->dtype = parameter.scalar_type();
      break;
    }
  }
}

TorchScriptModule::~TorchScriptModule() = default;

std::size_t TorchScriptModule::do_outputCount(std::size_t inputs)
{
  if (const auto known = m_outputCounts.find(inputs); known != m_outputCounts.end())
    return known->second;
  torch::Tensor result;
  try
  {
    c10::InferenceMode inference;
    const auto input = torch::zeros({1, static_cast<std::int64_t>(inputs)}, torch::dtype(m_torch->dtype));
    const auto value = m_torch->module.forward({input});
    if (!value.isTensor())
      throw std::invalid_argument("returns a " + value.tagKind() + ", expected a tensor");
    result = value.toTensor();
  }
  catch (const std::invalid_argument&)
  {
    throw;
  }
  catch (const std::exception& error)
  {
    throw std::invalid_argument("cannot run on " + std::to_string(inputs) + " inputs: " + reason(error));
  }
  if (result.dim() != 2 || result.size(0) != 1 || result.size(1) < 1)
    throw std::invalid_argument("gives a tensor of shape " + c10::str(result.sizes()) + " for one row of " +
                                std::to_string(inputs) + " inputs, expected [1, outputs]");
  const auto outputs = static_cast<std::size_t>(result.size(1));
  m_outputCounts[inputs] = outputs;
  return outputs;
}

void TorchScriptModule::do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out)
{
  std::size_t outputs = 0;
  try
  {
    outputs = do_outputCount(inputs);
  }
  catch (const std::invalid_argument& error)
  {
    throw std::runtime_error(describe() + " " + error.what());
  }
  torch::Tensor result;
  try
  {
    c10::InferenceMode inference;
    auto input = torch::from_blob(const_cast<double*>(in),
                                  {static_cast<std::int64_t>(rows), static_cast<std::int64_t>(inputs)},
                                  torch::kDouble);
    if (m_torch->dtype != torch::kDouble)
      input = input.to(m_torch->dtype);
    const auto value = m_torch->module.forward({input});
    if (!value.isTensor())
      throw std::runtime_error("returns a " + value.tagKind() + ", expected a tensor");
    result = value.toTensor().to(torch::kDouble).contiguous();
  }
  catch (const std::exception& error)
  {
    throw std::runtime_error(describe() + " failed on " + std::to_string(rows) + " rows: " + reason(error));
  }
  if (result.dim() != 2 || result.size(0) != static_cast<std::int64_t>(rows) ||
      result.size(1) != static_cast<std::int64_t>(outputs))
    throw std::runtime_error(describe() + " gives a tensor of shape " + c10::str(result.sizes()) + " for " +
                             std::to_string(rows) + " rows, expected [" + std::to_string(rows) + ", " +
                             std::to_string(outputs) + "]");
  std::memcpy(out, result.data_ptr<double>(), rows * outputs * sizeof(double));
}

Utilities::bytearray TorchScriptModule::fromNetwork(const DenseNetwork& network)
{
  if (network.layers().empty())
    throw std::invalid_argument("TorchScript: a network without layers cannot be converted");
  torch::jit::Module module("OmbrixDenseNetwork");
  std::string source = "def forward(self, x):\n";
  for (std::size_t l = 0; l < network.layers().size(); ++l)
  {
    const DenseLayer& layer = network.layers()[l];
    const std::string index = std::to_string(l);
    module.register_parameter("w" + index,
                              toTensor(layer.weights, {static_cast<std::int64_t>(layer.outputs),
                                                       static_cast<std::int64_t>(layer.inputs)}),
                              false);
    module.register_parameter("b" + index, toTensor(layer.biases, {static_cast<std::int64_t>(layer.outputs)}),
                              false);
    const std::string affine = "torch.addmm(self.b" + index + ", x, self.w" + index + ".t())";
    switch (layer.activation)
    {
    case Activation::Relu:
      source += "    x = torch.relu(" + affine + ")\n";
      break;
    case Activation::Tanh:
      source += "    x = torch.tanh(" + affine + ")\n";
      break;
    case Activation::Sigmoid:
      source += "    x = torch.sigmoid(" + affine + ")\n";
      break;
    default:
      source += "    x = " + affine + "\n";
      break;
    }
  }
  source += "    return x\n";
  module.define(source);
  std::ostringstream out;
  module.save(out);
  const std::string bytes = out.str();
  return Utilities::bytearray(bytes.begin(), bytes.end());
}

} // namespace Ombrix

#else

namespace Ombrix
{
namespace
{

const char* const missing =
    "this build has no runtime for module type \"TorchScript\" (built without libtorch)";

} // namespace

struct TorchScriptModule::Torch
{
};

bool TorchScriptModule::available()
{
  return false;
}

TorchScriptModule::TorchScriptModule(std::span<const std::uint8_t>)
    : AIRuntimeModule(AISystem::ModuleType::TorchScript)
{
  throw std::invalid_argument(missing);
}

TorchScriptModule::~TorchScriptModule() = default;

std::size_t TorchScriptModule::do_outputCount(std::size_t)
{
  throw std::invalid_argument(missing);
}

void TorchScriptModule::do_compute(const double*, std::size_t, std::size_t, double*)
{
  throw std::runtime_error(missing);
}

Utilities::bytearray TorchScriptModule::fromNetwork(const DenseNetwork&)
{
  throw std::invalid_argument(missing);
}

} // namespace Ombrix

#endif

#include "ombrix/runtime/TorchScriptModule.h"

#include <stdexcept>
#include <string>

#if OMBRIX_WITH_TORCH

#include "ombrix/runtime/TorchScriptEngine.h"

#include <algorithm>
#include <dlfcn.h>

namespace Ombrix
{
namespace
{

std::string shapeText(const std::vector<std::int64_t>& shape)
{
  std::string text = "[";
  for (std::size_t i = 0; i < shape.size(); ++i)
    text += (i ? ", " : "") + std::to_string(shape[i]);
  return text + "]";
}

// The libtorch plugin, loaded from beside this library on first use and kept for the process.
struct Plugin
{
  OmbrixTorchScriptLoad load = nullptr;
  OmbrixTorchScriptFromLayers fromLayers = nullptr;
  std::string error; // why it could not be loaded
};

const Plugin& plugin()
{
  static const Plugin loaded = []
  {
    Plugin result;
    Dl_info self{};
    std::string path = OMBRIX_TORCH_PLUGIN;
    if (dladdr(reinterpret_cast<void*>(&plugin), &self) && self.dli_fname)
    {
      const std::string library = self.dli_fname;
      if (const auto slash = library.rfind('/'); slash != std::string::npos)
        path = library.substr(0, slash + 1) + path;
    }
    void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle)
    {
      result.load = reinterpret_cast<OmbrixTorchScriptLoad>(dlsym(handle, "ombrixTorchScriptLoad"));
      result.fromLayers =
          reinterpret_cast<OmbrixTorchScriptFromLayers>(dlsym(handle, "ombrixTorchScriptFromLayers"));
    }
    if (!result.load || !result.fromLayers)
    {
      const char* reason = dlerror();
      result.load = nullptr;
      result.error = std::string("its libtorch plugin cannot be loaded: ") +
                     (reason ? reason : path + " lacks its entry points");
    }
    return result;
  }();
  return loaded;
}

std::string missing()
{
  return "this build has no runtime for module type \"TorchScript\" (" + plugin().error + ")";
}

} // namespace

bool TorchScriptModule::available()
{
  return plugin().load != nullptr;
}

TorchScriptModule::TorchScriptModule(std::span<const std::uint8_t> bytes)
    : AIRuntimeModule(AISystem::ModuleType::TorchScript)
{
  // torch.jit.save writes a zip archive; anything else would only get libtorch's reader's confusion.
  static constexpr std::uint8_t zip[4] = {'P', 'K', 3, 4};
  if (bytes.size() < 4 || !std::equal(zip, zip + 4, bytes.begin()))
    throw std::invalid_argument("TorchScript data: not a TorchScript archive (the zip archive that "
                                "torch.jit.save writes)");
  if (!available())
    throw std::invalid_argument(missing());
  try
  {
    m_engine.reset(plugin().load(bytes.data(), bytes.size()));
  }
  catch (const std::invalid_argument& error)
  {
    throw std::invalid_argument(std::string("TorchScript data: ") + error.what());
  }
}

TorchScriptModule::~TorchScriptModule() = default;

std::string TorchScriptModule::unavailableReason()
{
  return available() ? std::string() : missing();
}

std::size_t TorchScriptModule::do_outputCount(std::size_t inputs)
{
  if (const auto known = m_outputCounts.find(inputs); known != m_outputCounts.end())
    return known->second;
  const std::vector<double> zeros(inputs, 0.0);
  std::vector<std::int64_t> shape;
  try
  {
    shape = m_engine->forward(zeros.data(), 1, inputs, m_result);
  }
  catch (const std::runtime_error& error)
  {
    throw std::invalid_argument("cannot run on " + std::to_string(inputs) + " inputs: " + error.what());
  }
  if (shape.size() != 2 || shape[0] != 1 || shape[1] < 1)
    throw std::invalid_argument("gives a tensor of shape " + shapeText(shape) + " for one row of " +
                                std::to_string(inputs) + " inputs, expected [1, outputs]");
  const auto outputs = static_cast<std::size_t>(shape[1]);
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
  std::vector<std::int64_t> shape;
  try
  {
    shape = m_engine->forward(in, rows, inputs, m_result);
  }
  catch (const std::runtime_error& error)
  {
    throw std::runtime_error(describe() + " failed on " + std::to_string(rows) + " rows: " + error.what());
  }
  if (shape != std::vector<std::int64_t>{static_cast<std::int64_t>(rows), static_cast<std::int64_t>(outputs)})
    throw std::runtime_error(describe() + " gives a tensor of shape " + shapeText(shape) + " for " +
                             std::to_string(rows) + " rows, expected [" + std::to_string(rows) + ", " +
                             std::to_string(outputs) + "]");
  std::copy(m_result.begin(), m_result.end(), out);
}

Utilities::bytearray TorchScriptModule::fromNetwork(const DenseNetwork& network)
{
  if (network.layers().empty())
    throw std::invalid_argument("TorchScript: a network without layers cannot be converted");
  if (!available())
    throw std::invalid_argument(missing());
  std::vector<TorchScriptEngine::Layer> layers;
  for (const DenseLayer& layer : network.layers())
    layers.push_back({layer.inputs, layer.outputs, static_cast<std::uint32_t>(layer.activation),
                      layer.weights.data(), layer.biases.data()});
  Utilities::bytearray archive;
  plugin().fromLayers(layers.data(), layers.size(), &archive);
  return archive;
}

} // namespace Ombrix

#else

namespace Ombrix
{
namespace
{

std::string missing()
{
  return "this build has no runtime for module type \"TorchScript\" (built without libtorch)";
}

} // namespace

class TorchScriptEngine
{
};

bool TorchScriptModule::available()
{
  return false;
}

TorchScriptModule::TorchScriptModule(std::span<const std::uint8_t>)
    : AIRuntimeModule(AISystem::ModuleType::TorchScript)
{
  throw std::invalid_argument(missing());
}

TorchScriptModule::~TorchScriptModule() = default;

std::string TorchScriptModule::unavailableReason()
{
  return available() ? std::string() : missing();
}

std::size_t TorchScriptModule::do_outputCount(std::size_t)
{
  throw std::invalid_argument(missing());
}

void TorchScriptModule::do_compute(const double*, std::size_t, std::size_t, double*)
{
  throw std::runtime_error(missing());
}

Utilities::bytearray TorchScriptModule::fromNetwork(const DenseNetwork&)
{
  throw std::invalid_argument(missing());
}

} // namespace Ombrix

#endif

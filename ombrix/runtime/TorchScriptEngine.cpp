#include "ombrix/runtime/TorchScriptEngine.h"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <stdexcept>
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

torch::Tensor toTensor(const double* values, std::vector<std::int64_t> shape)
{
  std::int64_t count = 1;
  for (auto size : shape)
    count *= size;
  return torch::from_blob(const_cast<double*>(values), {count}, torch::kDouble).reshape(shape).clone();
}

class Engine : public TorchScriptEngine
{
public:
  Engine(const std::uint8_t* bytes, std::size_t size)
  {
    try
    {
      std::istringstream in(std::string(reinterpret_cast<const char*>(bytes), size));
      m_module = torch::jit::load(in, torch::kCPU);
    }
    catch (const std::exception& error)
    {
      throw std::invalid_argument("libtorch cannot load it: " + reason(error));
    }
    if (!m_module.find_method("forward"))
      throw std::invalid_argument("the module has no forward method");
    m_module.eval();
    for (const auto& parameter : m_module.parameters())
    {
      if (parameter.is_floating_point())
      {
        m_dtype = parameter.scalar_type();
        break;
      }
    }
  }

  std::vector<std::int64_t> forward(const double* in, std::size_t rows, std::size_t inputs,
                                    std::vector<double>& out) override
  {
    torch::Tensor result;
    try
    {
      c10::InferenceMode inference;
      auto input = torch::from_blob(const_cast<double*>(in),
                                    {static_cast<std::int64_t>(rows), static_cast<std::int64_t>(inputs)},
                                    torch::kDouble);
      if (m_dtype != torch::kDouble)
        input = input.to(m_dtype);
      const auto value = m_module.forward({input});
      if (!value.isTensor())
        throw std::runtime_error("returns a " + value.tagKind() + ", expected a tensor");
      result = value.toTensor().to(torch::kDouble).contiguous();
    }
    catch (const std::exception& error)
    {
      throw std::runtime_error(reason(error));
    }
    out.resize(static_cast<std::size_t>(result.numel()));
    std::copy_n(result.data_ptr<double>(), out.size(), out.begin());
    return result.sizes().vec();
  }

private:
  torch::jit::Module m_module;
  torch::Dtype m_dtype = torch::kDouble;
};

} // namespace
} // namespace Ombrix

extern "C" [[gnu::visibility("default")]] Ombrix::TorchScriptEngine*
ombrixTorchScriptLoad(const std::uint8_t* bytes, std::size_t size)
{
  return new Ombrix::Engine(bytes, size);
}

extern "C" [[gnu::visibility("default")]] void
ombrixTorchScriptFromLayers(const Ombrix::TorchScriptEngine::Layer* layers, std::size_t count,
                            std::vector<std::uint8_t>* archive)
{
  using namespace Ombrix;
  torch::jit::Module module("OmbrixDenseNetwork");
  std::string source = "def forward(self, x):\n";
  for (std::size_t l = 0; l < count; ++l)
  {
    const TorchScriptEngine::Layer& layer = layers[l];
    const std::string index = std::to_string(l);
    const auto outputs = static_cast<std::int64_t>(layer.outputs);
    module.register_parameter(
        "w" + index, toTensor(layer.weights, {outputs, static_cast<std::int64_t>(layer.inputs)}), false);
    module.register_parameter("b" + index, toTensor(layer.biases, {outputs}), false);
    const std::string affine = "torch.addmm(self.b" + index + ", x, self.w" + index + ".t())";
    static const char* const activations[] = {"", "torch.relu", "torch.tanh", "torch.sigmoid"};
    const char* activation = layer.activation < 4 ? activations[layer.activation] : "";
    source += "    x = " + std::string(activation) + "(" + affine + ")\n";
  }
  source += "    return x\n";
  module.define(source);
  std::ostringstream out;
  module.save(out);
  const std::string bytes = out.str();
  archive->assign(bytes.begin(), bytes.end());
}

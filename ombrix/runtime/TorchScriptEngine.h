// libtorch behind a plain interface, for TorchScriptModule. Its implementation is a plugin of its own,
// libOmbrixAITorch, which OmbrixAI loads when the first "TorchScript" module is built: a process that
// runs no TorchScript module does not load libtorch (a second of start-up and 150 MB), and OmbrixAI
// runs without libtorch installed. The plugin is the only code that sees libtorch's headers and is
// compiled as C++17, as those of libtorch 1.13 do not compile as C++20 with every compiler; this header
// is therefore C++17 and standard library only. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Ombrix
{

class TorchScriptEngine
{
public:
  // A dense layer for the plugin's fromLayers: `outputs` rows of `inputs` weights, `outputs` biases;
  // the activation as Ombrix::Activation numbers it.
  struct Layer
  {
    std::size_t inputs;
    std::size_t outputs;
    std::uint32_t activation;
    const double* weights;
    const double* biases;
  };

  virtual ~TorchScriptEngine() = default;

  // Runs forward on `rows` rows of `inputs` values (row-major), given in the dtype of the module's first
  // floating-point parameter (double without one), in inference mode. Fills `out` with the result as
  // doubles, row-major, and returns its shape. Throws std::runtime_error with libtorch's reason
  // (without its tracebacks), or when forward does not return a tensor.
  virtual std::vector<std::int64_t> forward(const double* in, std::size_t rows, std::size_t inputs,
                                            std::vector<double>& out) = 0;
};

} // namespace Ombrix

// The plugin's entry points, found by these names.
extern "C"
{
  // Loads `size` bytes at `bytes` as a TorchScript module; the caller owns the engine. Throws
  // std::invalid_argument with libtorch's reason when libtorch cannot load them, or the module has no
  // forward method.
  using OmbrixTorchScriptLoad = Ombrix::TorchScriptEngine* (*)(const std::uint8_t* bytes, std::size_t size);
  // Fills `archive` with what torch.jit.save writes for a module computing `count` layers in double
  // precision.
  using OmbrixTorchScriptFromLayers = void (*)(const Ombrix::TorchScriptEngine::Layer* layers,
                                               std::size_t count, std::vector<std::uint8_t>* archive);
}

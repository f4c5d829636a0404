// libtorch behind a plain interface, for TorchScriptModule. Its source is the only code that sees
// libtorch's headers, and it is compiled as C++17: those of libtorch 1.13 do not compile as C++20 with
// every compiler. This header is therefore C++17 and standard library only. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Ombrix
{

class TorchScriptEngine
{
public:
  // A dense layer for fromLayers: `outputs` rows of `inputs` weights, `outputs` biases; activation as
  // Ombrix::Activation numbers it.
  struct Layer
  {
    std::size_t inputs;
    std::size_t outputs;
    std::uint32_t activation;
    const double* weights;
    const double* biases;
  };

  // Throws std::invalid_argument with libtorch's reason when it cannot load `size` bytes at `bytes`, or
  // the module has no forward method.
  TorchScriptEngine(const std::uint8_t* bytes, std::size_t size);
  ~TorchScriptEngine();
  TorchScriptEngine(const TorchScriptEngine&) = delete;
  TorchScriptEngine& operator=(const TorchScriptEngine&) = delete;

  // Runs forward on `rows` rows of `inputs` values (row-major), given in the dtype of the module's first
  // floating-point parameter (double without one), in inference mode. Fills `out` with the result as
  // doubles, row-major, and returns its shape. Throws std::runtime_error with libtorch's reason
  // (without its tracebacks), or when forward does not return a tensor.
  std::vector<std::int64_t> forward(const double* in, std::size_t rows, std::size_t inputs,
                                    std::vector<double>& out);

  // The archive, as torch.jit.save writes it, of a module computing the layers in double precision.
  static std::vector<std::uint8_t> fromLayers(const std::vector<Layer>& layers);

private:
  struct Torch;
  std::unique_ptr<Torch> m_torch;
};

} // namespace Ombrix

// The "TorchScript" module: a TorchScript module (the bytes torch.jit.save writes) run on the CPU with
// libtorch. Its forward takes one 2-D tensor, a row of input values per functor, and returns one 2-D
// tensor, a row of output values per functor. The inputs are given in the dtype of the module's first
// floating-point parameter (double when it has none) and the results read back as double. How many
// outputs a number of inputs gives is found once, when the first functor with that many inputs is
// checked, by running the module on a row of zeros. Available when the library was built with libtorch
// (OMBRIX_WITH_TORCH), whose plugin it loads when the first module is built (TorchScriptEngine.h);
// libtorch may use several threads of its own. One thread at a time.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/platform/bytearray.h"
#include "ombrix/runtime/AIRuntimeModule.h"
#include "ombrix/runtime/DenseNetwork.h"

#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace Ombrix
{

class TorchScriptEngine;

class OMBRIX_AI_API TorchScriptModule : public AIRuntimeModule
{
public:
  // Whether this build has libtorch and its plugin (libOmbrixAITorch, beside this library) loads:
  // loaded on the first call, not before. Without it the constructor and fromNetwork throw.
  static bool available();
  // "" when available, otherwise "this build has no runtime for module type "TorchScript" (<why>)".
  static std::string unavailableReason();

  // Throws std::invalid_argument "TorchScript data: <libtorch's reason>" when libtorch cannot load the
  // bytes or the module has no forward method.
  explicit TorchScriptModule(std::span<const std::uint8_t> bytes);
  ~TorchScriptModule() override;

  // The bytes of a TorchScript module that computes `network` in double precision, as torch.jit.save
  // writes them: converts a network, and gives tests and benchmarks the same model in both forms.
  static Utilities::bytearray fromNetwork(const DenseNetwork& network);

protected:
  // Refuses a number of inputs that the module cannot run on, with libtorch's reason.
  std::size_t do_outputCount(std::size_t inputs) override;
  // Throws std::runtime_error with libtorch's reason, or when the result is not one tensor of a row of
  // the expected width per input row.
  void do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out) override;

private:
  std::unique_ptr<TorchScriptEngine> m_engine;
  std::map<std::size_t, std::size_t> m_outputCounts; // inputs -> outputs, once checked
  std::vector<double> m_result;                      // kept between calls
};

} // namespace Ombrix

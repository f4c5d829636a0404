// The "Trivial" module: passes each input's value to the output at the same position, unchanged. It
// needs as many outputs as inputs, each of the same type as its input (Int, Bool, String, Float or
// Double); useful to test the wiring of functors. Its definition carries no data. Inside a Transformed
// module it is the identity on numbers. One thread at a time.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/runtime/AIRuntimeModule.h"

namespace Ombrix
{

class OMBRIX_AI_API TrivialModule : public AIRuntimeModule
{
public:
  TrivialModule();

protected:
  std::size_t do_outputCount(std::size_t inputs) override { return inputs; }
  void do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out) override;
  void do_checkKinds(const References& inputs, const References& outputs) const override;
  // Copies value by value: an input that cannot be read gives its entity's error and leaves only the
  // output at its position alone.
  void do_run(std::span<const Call> calls, std::vector<CallError>& errors) override;
};

} // namespace Ombrix

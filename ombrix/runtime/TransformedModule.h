// The "Transformed" module: wraps another runtime module and transforms the values on their way in
// (Transformation::toModel, one transformation per input) and out (Transformation::fromModel, one per
// output); an empty list leaves that side as it is. Its definition's bytes are TransformedFormat's,
// carrying the wrapped module's definition. One thread at a time.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/runtime/AIRuntimeModule.h"
#include "ombrix/runtime/Transformation.h"

#include <memory>
#include <vector>

namespace Ombrix
{

class OMBRIX_AI_API TransformedModule : public AIRuntimeModule
{
public:
  // Throws std::invalid_argument when `inner` is null.
  TransformedModule(std::vector<Transformation> inputs, std::vector<Transformation> outputs,
                    std::unique_ptr<AIRuntimeModule> inner);
  ~TransformedModule() override;

  const AIRuntimeModule& getInner() const { return *m_inner; }
  const std::vector<Transformation>& getInputTransformations() const { return m_inputs; }
  const std::vector<Transformation>& getOutputTransformations() const { return m_outputs; }

protected:
  // Refuses a number of inputs or outputs that differs from a non-empty list of transformations, and
  // whatever the wrapped module refuses.
  std::size_t do_outputCount(std::size_t inputs) override;
  void do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out) override;
  void do_initialise() override;

private:
  std::vector<Transformation> m_inputs;
  std::vector<Transformation> m_outputs;
  std::unique_ptr<AIRuntimeModule> m_inner;
  std::vector<double> m_modelIn; // values on the wrapped module's scale, kept between calls
  std::vector<double> m_modelOut;
};

} // namespace Ombrix

#include "ombrix/runtime/TransformedModule.h"

#include "ombrix/ai/AIModuleType.h"

#include <stdexcept>
#include <string>

namespace Ombrix
{

TransformedModule::TransformedModule(std::vector<Transformation> inputs, std::vector<Transformation> outputs,
                                     std::unique_ptr<AIRuntimeModule> inner)
    : AIRuntimeModule(AISystem::ModuleType::Transformed), m_inputs(std::move(inputs)),
      m_outputs(std::move(outputs)), m_inner(std::move(inner))
{
  if (!m_inner)
    throw std::invalid_argument("Transformed module: no module to wrap");
}

TransformedModule::~TransformedModule() = default;

void TransformedModule::do_initialise()
{
  m_inner->initialise(false);
}

std::size_t TransformedModule::do_outputCount(std::size_t inputs)
{
  if (!m_inputs.empty() && inputs != m_inputs.size())
    throw std::invalid_argument("has " + std::to_string(m_inputs.size()) +
                                " input transformations, the functor has " + std::to_string(inputs) +
                                " inputs");
  const std::size_t outputs = m_inner->outputCount(inputs);
  if (!m_outputs.empty() && outputs != m_outputs.size())
    throw std::invalid_argument("has " + std::to_string(m_outputs.size()) + " output transformations, its " +
                                aiModuleTypeToString(m_inner->getType()) + " module gives " +
                                std::to_string(outputs) + " outputs");
  return outputs;
}

void TransformedModule::do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out)
{
  const std::size_t outputs = do_outputCount(inputs);
  const double* innerIn = in;
  if (!m_inputs.empty())
  {
    m_modelIn.resize(rows * inputs);
    for (std::size_t r = 0; r < rows; ++r)
      for (std::size_t i = 0; i < inputs; ++i)
        m_modelIn[r * inputs + i] = m_inputs[i].toModel(in[r * inputs + i]);
    innerIn = m_modelIn.data();
  }
  if (m_outputs.empty())
  {
    m_inner->compute(innerIn, rows, inputs, out);
    return;
  }
  m_modelOut.resize(rows * outputs);
  m_inner->compute(innerIn, rows, inputs, m_modelOut.data());
  for (std::size_t r = 0; r < rows; ++r)
    for (std::size_t o = 0; o < outputs; ++o)
      out[r * outputs + o] = m_outputs[o].fromModel(m_modelOut[r * outputs + o]);
}

} // namespace Ombrix

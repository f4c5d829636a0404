// A module that cannot run: its definition could not be built (bytes its type refuses, a type without
// runtime in this build). The collection keeps it in the definition's place, so that the reason is
// reported, with the functor's name, when a functor initialises against it. One thread at a time.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/runtime/AIRuntimeModule.h"

#include <string>

namespace Ombrix
{

class OMBRIX_AI_API UnavailableModule : public AIRuntimeModule
{
public:
  UnavailableModule(AISystem::ModuleType type, std::string reason);

  const std::string& getReason() const { return m_reason; }

protected:
  // Each throws std::runtime_error "<module>: <reason>" (do_outputCount std::invalid_argument).
  void do_initialise() override;
  std::size_t do_outputCount(std::size_t inputs) override;
  void do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out) override;

private:
  std::string m_reason;
};

} // namespace Ombrix

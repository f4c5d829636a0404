// The AI runtime's collection of loaded modules: builds a module from each definition of an
// AIModuleDefinitionCollection (AIModuleBuilder) and owns it, so that functors initialised against it
// find their module by definition identifier. Runs many functors in one call per module
// (executeBatch). It must outlive every functor initialised against it. One thread at a time.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/ai/AIFunctor.h"
#include "ombrix/ai/AIModuleDefinition.h"
#include "ombrix/ai/AIModuleDefinitionCollection.h"
#include "ombrix/platform/AIModuleCollection.h"
#include "ombrix/runtime/AIRuntimeModule.h"

#include <map>
#include <memory>
#include <span>
#include <vector>

namespace Ombrix
{

class OMBRIX_AI_API AIRuntimeModuleCollection : public AISystem::AIModuleCollection
{
public:
  using Chronology = KorvanSDK::Chronology;

  AIRuntimeModuleCollection() = default;
  // Adds a module for every definition of `definitions` that is present and has an identifier.
  explicit AIRuntimeModuleCollection(const AIModuleDefinitionCollection& definitions);
  AIRuntimeModuleCollection(const AIRuntimeModuleCollection&) = delete;
  AIRuntimeModuleCollection& operator=(const AIRuntimeModuleCollection&) = delete;
  ~AIRuntimeModuleCollection() override;

  // Builds the module of `definition` and keeps it under the definition's identifier. A definition that
  // cannot be built (bytes its type refuses, a type without runtime in this build) gives an
  // UnavailableModule, which reports why when a functor initialises against it: one bad definition does
  // not keep the others from running. Throws std::invalid_argument when the definition has no
  // identifier or a module with its identifier exists already.
  AIRuntimeModule& add(const AIModuleDefinition& definition);

  AIRuntimeModule* findModule(std::size_t definitionId) override;
  std::size_t size() const { return m_modules.size(); }

  // The chronologies at which every module, present and future, reads its inputs and writes its
  // outputs; Current and Current unless set.
  void setChronologies(Chronology input, Chronology output);

  // Executes `functors` with one call per module of this runtime: the functors that share a module are
  // evaluated as one batch. Results and entity errors are those of executing the functors one by one,
  // errors in the order of the functors. Functors whose module is not a runtime module are executed one
  // by one. Throws, before anything runs, std::runtime_error "Error in AI Model : <name> No Model" for
  // a functor without module (not initialised, or initialised with outputsOnly); when a module fails
  // as a whole, std::runtime_error "Error in AI Model : <name> - <what>" naming its first functor.
  std::vector<Model::EntityError> executeBatch(std::span<AIFunctor> functors);

private:
  std::map<std::size_t, std::unique_ptr<AIRuntimeModule>> m_modules;
  Chronology m_input = Chronology::Current;
  Chronology m_output = Chronology::Current;
};

} // namespace Ombrix

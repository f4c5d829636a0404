// Binds one AI module to the model: the owning entity, the attributes that feed the module and those
// that receive its results, and the module named by its definition identifier. Built from options or a
// stream, initialised once against the live collections, executed any number of times, terminated.
// One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/ai/AIModuleReference.h"
#include "ombrix/model/AttributeReference.h"
#include "ombrix/model/EntityError.h"

#include <string>
#include <vector>

namespace Ombrix
{

class AIModuleDefinition;

class OMBRIX_API AIFunctor
{
public:
  using References = std::vector<Model::AttributeReference<Model::Attribute>>;

  AIFunctor() = default;
  // A null definition leaves the functor without module identifier (execution then reports " No Model").
  AIFunctor(const std::string& name, Model::Entity* owner, const References& inputs,
            const References& outputs, AIModuleDefinition* definition);
  AIFunctor(const AIFunctor&) = default;
  AIFunctor(AIFunctor&&) noexcept = default;
  AIFunctor& operator=(const AIFunctor&) = default;
  AIFunctor& operator=(AIFunctor&&) noexcept = default;
  virtual ~AIFunctor();

  const std::string& getName() const { return m_name; }
  bool isInitialized() const { return m_initialized; }
  References& getInputs() { return m_inputs; }
  const References& getInputs() const { return m_inputs; }
  References& getOutputs() { return m_outputs; }
  const References& getOutputs() const { return m_outputs; }
  const std::optional<std::size_t>& getDefinitionId() const { return m_model.getId(); }
  const Model::AttributeReference<Model::Attribute>& getOwner() const { return m_owner; }
  const AIModuleReference& getModel() const { return m_model; }

  // Once per lifecycle (a second call before terminate does nothing): re-attaches the owner to
  // `entities`; unless `outputsOnly`, re-attaches the module in `modules`, initialises it with
  // `moduleFlag` when found, and re-attaches the inputs; then re-attaches the outputs and, with a
  // module, lets it check the references (AIModule::checkReferences). References that do not resolve
  // stay empty (see AttributeReference::lastError). Throws only when the module's initialise or check
  // throws: std::runtime_error "Error in AI Model : <name> - <what>", the functor then stays
  // uninitialised without module (a module whose check failed is terminated first).
  void initialize(AISystem::AIModuleCollection& modules, Model::EntityCollection& entities, bool moduleFlag,
                  bool outputsOnly);
  // Runs the module on the functor's inputs and outputs and returns the problems it reports per
  // entity. Throws std::runtime_error "Error in AI Model : <name> No Model" without module, and
  // "Error in AI Model : <name> - <what>" (or "- Unknown Error") when the module throws.
  std::vector<Model::EntityError> execute();
  // Ends an initialised lifecycle: terminates the attached module and drops it. Otherwise nothing.
  void terminate();

  // Names, inputs, outputs and module identifiers equal; owner and initialisation take no part.
  friend bool operator==(const AIFunctor& a, const AIFunctor& b)
  {
    return a.m_name == b.m_name && a.m_inputs == b.m_inputs && a.m_outputs == b.m_outputs &&
           a.m_model == b.m_model;
  }
  friend bool operator!=(const AIFunctor& a, const AIFunctor& b) { return !(a == b); }

  friend OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIFunctor& functor);

protected:
  std::vector<Model::EntityError> execute(const References& inputs, References& outputs);

private:
  Model::Entity* owner();

  bool m_initialized = false;
  Model::AttributeReference<Model::Attribute> m_owner;
  std::string m_name;
  References m_inputs;
  References m_outputs;
  AIModuleReference m_model;
};

// Section "AIFunctor": key "Name" and the name, key "Owner" and the owner reference, section "Inputs"
// with the input vector, section "Ouptuts" with the output vector, section "Model" with the module
// reference. A functor read from a stream is not initialised; a failed read leaves it unchanged.
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const AIFunctor& functor);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AIFunctor& functor);

} // namespace Ombrix

#include "ombrix/runtime/AIRuntimeModuleCollection.h"

#include "ombrix/runtime/AIModuleBuilder.h"
#include "ombrix/runtime/UnavailableModule.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace Ombrix
{

AIRuntimeModuleCollection::AIRuntimeModuleCollection(const AIModuleDefinitionCollection& definitions)
{
  for (const auto& definition : definitions)
  {
    if (definition && definition->getId())
      add(*definition);
  }
}

AIRuntimeModuleCollection::~AIRuntimeModuleCollection() = default;

AIRuntimeModule& AIRuntimeModuleCollection::add(const AIModuleDefinition& definition)
{
  const auto id = definition.getId();
  if (!id)
    throw std::invalid_argument("AI runtime: a definition without identifier cannot be added; insert it into "
                                "an AIModuleDefinitionCollection first");
  if (m_modules.count(*id))
    throw std::invalid_argument("AI runtime: module " + std::to_string(*id) + " exists already");
  std::unique_ptr<AIRuntimeModule> module;
  try
  {
    module = AIModuleBuilder::build(definition.getType(), definition.getData());
  }
  catch (const std::exception& error)
  {
    module = std::make_unique<UnavailableModule>(definition.getType(), error.what());
  }
  module->setDefinitionId(id);
  module->setChronologies(m_input, m_output);
  return *(m_modules[*id] = std::move(module));
}

AIRuntimeModule* AIRuntimeModuleCollection::findModule(std::size_t definitionId)
{
  const auto found = m_modules.find(definitionId);
  return found == m_modules.end() ? nullptr : found->second.get();
}

void AIRuntimeModuleCollection::setChronologies(Chronology input, Chronology output)
{
  m_input = input;
  m_output = output;
  for (auto& [id, module] : m_modules)
    module->setChronologies(input, output);
}

std::vector<Model::EntityError> AIRuntimeModuleCollection::executeBatch(std::span<AIFunctor> functors)
{
  // Each functor's module, checked before anything runs.
  std::vector<AISystem::AIModule*> modules(functors.size());
  for (std::size_t f = 0; f < functors.size(); ++f)
  {
    modules[f] = functors[f].getModel().get();
    if (!modules[f] || !functors[f].isInitialized())
      throw std::runtime_error("Error in AI Model : " + functors[f].getName() + " No Model");
  }

  std::vector<std::pair<std::size_t, Model::EntityError>> tagged; // functor position, error
  std::vector<bool> done(functors.size(), false);
  std::vector<AIRuntimeModule::Call> calls;
  std::vector<std::size_t> positions;
  std::vector<AIRuntimeModule::CallError> errors;
  for (std::size_t f = 0; f < functors.size(); ++f)
  {
    if (done[f])
      continue;
    auto* module = dynamic_cast<AIRuntimeModule*>(modules[f]);
    if (!module)
    {
      for (auto& error : functors[f].execute())
        tagged.emplace_back(f, std::move(error));
      done[f] = true;
      continue;
    }
    calls.clear();
    positions.clear();
    for (std::size_t g = f; g < functors.size(); ++g)
    {
      if (done[g] || modules[g] != module)
        continue;
      AIFunctor& functor = functors[g];
      calls.push_back(
          {&functor.getName(), functor.getOwner().get(), &functor.getInputs(), &functor.getOutputs()});
      positions.push_back(g);
      done[g] = true;
    }
    errors.clear();
    try
    {
      module->run(calls, errors);
    }
    catch (const std::exception& error)
    {
      throw std::runtime_error("Error in AI Model : " + functors[f].getName() + " - " + error.what());
    }
    for (auto& error : errors)
      tagged.emplace_back(positions[error.call], std::move(error.error));
  }

  std::stable_sort(tagged.begin(), tagged.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<Model::EntityError> result;
  result.reserve(tagged.size());
  for (auto& [position, error] : tagged)
    result.push_back(std::move(error));
  return result;
}

} // namespace Ombrix

// A module collection for the AI tests whose modules record every call and can be told to fail.
#pragma once

#include "ombrix/model/AttributeReference.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityError.h"
#include "ombrix/platform/AIModuleCollection.h"

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace OmbrixTest
{

class RecordingModule : public AISystem::AIModule
{
public:
  explicit RecordingModule(std::vector<std::string>& calls) : m_calls(calls) {}

  void initialise(bool flag) override
  {
    m_calls.push_back(std::string("initialise ") + (flag ? "true" : "false"));
    if (fail == "initialise")
      throw std::runtime_error("cannot load");
  }

  void checkReferences(const std::string& name, Ombrix::Model::Entity*, const References& inputs,
                       const References& outputs) override
  {
    m_calls.push_back("check " + name + sizes(inputs, outputs));
    if (fail == "check")
      throw std::invalid_argument("does not fit");
  }

  // Writes the sum of the resolved inputs to every resolved output and reports one entity error.
  std::vector<Ombrix::Model::EntityError> execute(const std::string& name, Ombrix::Model::Entity* owner,
                                                  const References& inputs, References& outputs) override
  {
    m_calls.push_back("execute " + name + " owner " + (owner ? owner->name() : "none") +
                      sizes(inputs, outputs));
    if (fail == "execute")
      throw std::runtime_error("x");
    if (fail == "execute with an int")
      throw 42;
    double sum = 0.0;
    for (const auto& input : inputs)
      sum += input ? input->getDoubleValue(KorvanSDK::Chronology::Current, false) : 0.0;
    for (auto& output : outputs)
      if (output)
        output->setDoubleValue(sum, KorvanSDK::Chronology::Current, false);
    return {Ombrix::Model::EntityError(owner, "checked", Ombrix::Model::EntityErrorLevel::Information)};
  }

  void terminate() override { m_calls.push_back("terminate"); }

  // Where to fail: "initialise" throws std::runtime_error("cannot load"), "check" std::invalid_argument("does
  // not fit"), "execute" std::runtime_error("x") and "execute with an int" an int.
  std::string fail;

private:
  static std::string sizes(const References& inputs, const References& outputs)
  {
    return " inputs " + std::to_string(inputs.size()) + " outputs " + std::to_string(outputs.size());
  }

  std::vector<std::string>& m_calls;
};

class RecordingModuleCollection : public AISystem::AIModuleCollection
{
public:
  RecordingModule& add(std::size_t id)
  {
    auto& module = m_modules[id];
    module = std::make_unique<RecordingModule>(calls);
    return *module;
  }

  AISystem::AIModule* findModule(std::size_t definitionId) override
  {
    calls.push_back("find " + std::to_string(definitionId));
    auto it = m_modules.find(definitionId);
    return it == m_modules.end() ? nullptr : it->second.get();
  }

  std::vector<std::string> calls;

private:
  std::map<std::size_t, std::unique_ptr<RecordingModule>> m_modules;
};

} // namespace OmbrixTest

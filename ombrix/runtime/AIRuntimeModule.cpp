#include "ombrix/runtime/AIRuntimeModule.h"

#include "ombrix/ai/AIModuleType.h"
#include "ombrix/model/Entity.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <stdexcept>

namespace Ombrix
{
namespace
{

using KorvanSDK::AttributeType;

std::string counted(std::size_t count, const char* what)
{
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

bool isNumericInput(AttributeType type)
{
  return type == AttributeType::Int || type == AttributeType::Bool || type == AttributeType::Float ||
         type == AttributeType::Double;
}

bool isNumericOutput(AttributeType type)
{
  return type == AttributeType::Int || type == AttributeType::Float || type == AttributeType::Double;
}

std::string numberText(double value)
{
  char text[32];
  std::snprintf(text, sizeof text, "%.17g", value);
  return text;
}

} // namespace

AIRuntimeModule::AIRuntimeModule(AISystem::ModuleType type) : m_type(type) {}

AIRuntimeModule::~AIRuntimeModule() = default;

std::string AIRuntimeModule::describe() const
{
  const std::string type = aiModuleTypeToString(m_type);
  if (!m_definitionId)
    return type + " module";
  return "module " + std::to_string(*m_definitionId) + " (" + type + ")";
}

void AIRuntimeModule::setChronologies(Chronology input, Chronology output)
{
  m_inputChronology = input;
  m_outputChronology = output;
}

void AIRuntimeModule::initialise(bool)
{
  do_initialise();
}

void AIRuntimeModule::terminate() {}

Model::EntityID AIRuntimeModule::entityOf(const Model::AttributeReference<Model::Attribute>& reference,
                                          const Call& call)
{
  if (reference.getEntityID())
    return *reference.getEntityID();
  const auto* owner = dynamic_cast<const Model::Entity*>(call.owner);
  return owner ? owner->getUniqueID() : Model::EntityID(0, 0);
}

std::string AIRuntimeModule::place(const char* side, std::size_t index,
                                   const Model::AttributeReference<Model::Attribute>& reference)
{
  const auto& id = reference.getEntityID();
  return std::string(side) + " " + std::to_string(index) + " (" +
         (id ? toString(*id) : std::string("no entity")) + ":" + reference.getAttributePath().toString() +
         ")";
}

void AIRuntimeModule::checkReferences(const std::string&, Model::Entity*, const References& inputs,
                                      const References& outputs)
{
  std::size_t produced = 0;
  try
  {
    produced = do_outputCount(inputs.size());
  }
  catch (const std::invalid_argument& error)
  {
    throw std::invalid_argument(describe() + " " + error.what());
  }
  if (outputs.size() != produced)
    throw std::invalid_argument(describe() + " gives " + counted(produced, "output") + " for " +
                                counted(inputs.size(), "input") + ", the functor has " +
                                counted(outputs.size(), "output"));
  const auto resolved = [&](const References& references, const char* side)
  {
    for (std::size_t i = 0; i < references.size(); ++i)
    {
      const auto& reference = references[i];
      if (!reference)
        throw std::invalid_argument(describe() + ": " + place(side, i, reference) + " is unresolved" +
                                    (reference.lastError().empty() ? "" : ": " + reference.lastError()));
    }
  };
  resolved(inputs, "input");
  resolved(outputs, "output");
  try
  {
    do_checkKinds(inputs, outputs);
  }
  catch (const std::invalid_argument& error)
  {
    throw std::invalid_argument(describe() + ": " + error.what());
  }
}

void AIRuntimeModule::do_checkKinds(const References& inputs, const References& outputs) const
{
  for (std::size_t i = 0; i < inputs.size(); ++i)
  {
    const AttributeType type = inputs[i]->getAttributeType(true);
    if (!isNumericInput(type))
      throw std::invalid_argument(place("input", i, inputs[i]) + " is of type " +
                                  KorvanSDK::attributeTypeToString(type) +
                                  ", expected a number (Int, Bool, Float or Double)");
  }
  for (std::size_t i = 0; i < outputs.size(); ++i)
  {
    const AttributeType type = outputs[i]->getAttributeType(true);
    if (!isNumericOutput(type))
      throw std::invalid_argument(place("output", i, outputs[i]) + " is of type " +
                                  KorvanSDK::attributeTypeToString(type) + ", expected Int, Float or Double");
  }
}

std::vector<Model::EntityError> AIRuntimeModule::execute(const std::string& name, Model::Entity* owner,
                                                         const References& inputs, References& outputs)
{
  const Call call{&name, owner, &inputs, &outputs};
  std::vector<CallError> tagged;
  do_run({&call, 1}, tagged);
  std::vector<Model::EntityError> errors;
  errors.reserve(tagged.size());
  for (auto& error : tagged)
    errors.push_back(std::move(error.error));
  return errors;
}

void AIRuntimeModule::run(std::span<const Call> calls, std::vector<CallError>& errors)
{
  do_run(calls, errors);
}

void AIRuntimeModule::do_run(std::span<const Call> calls, std::vector<CallError>& errors)
{
  if (calls.empty())
    return;
  // Calls with the same number of inputs go through the model together: usually all of them.
  const std::size_t inputs = calls.front().inputs->size();
  if (std::all_of(calls.begin(), calls.end(),
                  [&](const Call& call) { return call.inputs->size() == inputs; }))
  {
    m_group.resize(calls.size());
    std::iota(m_group.begin(), m_group.end(), std::size_t(0));
    runGroup(calls, m_group, inputs, errors);
    return;
  }
  std::vector<std::size_t> counts;
  for (const Call& call : calls)
  {
    if (std::find(counts.begin(), counts.end(), call.inputs->size()) == counts.end())
      counts.push_back(call.inputs->size());
  }
  for (std::size_t count : counts)
  {
    std::vector<std::size_t> group;
    for (std::size_t i = 0; i < calls.size(); ++i)
    {
      if (calls[i].inputs->size() == count)
        group.push_back(i);
    }
    runGroup(calls, group, count, errors);
  }
}

void AIRuntimeModule::runGroup(std::span<const Call> calls, std::span<const std::size_t> group,
                               std::size_t inputs, std::vector<CallError>& errors)
{
  std::size_t outputs = 0;
  try
  {
    outputs = do_outputCount(inputs);
  }
  catch (const std::invalid_argument& error)
  {
    throw std::runtime_error(describe() + " " + error.what());
  }
  m_in.resize(group.size() * inputs);
  m_rowCall.resize(group.size());
  std::size_t rows = 0;
  for (std::size_t index : group)
  {
    const Call& call = calls[index];
    if (call.outputs->size() != outputs)
      throw std::runtime_error(describe() + " gives " + counted(outputs, "output") + ", functor \"" +
                               *call.name + "\" has " + counted(call.outputs->size(), "output"));
    double* row = m_in.data() + rows * inputs;
    bool readable = true;
    for (std::size_t i = 0; i < inputs; ++i)
    {
      const auto& reference = (*call.inputs)[i];
      try
      {
        if (!reference)
          throw std::runtime_error("it is unresolved");
        row[i] = reference->getDoubleValue(m_inputChronology, false);
      }
      catch (const std::exception& error)
      {
        readable = false;
        errors.push_back({index, Model::EntityError(entityOf(reference, call),
                                                    place("Input", i, reference) + " of \"" + *call.name +
                                                        "\" could not be read: " + error.what(),
                                                    Model::EntityErrorLevel::Error)});
      }
    }
    if (readable)
      m_rowCall[rows++] = index;
  }
  if (rows == 0)
    return;
  m_out.resize(rows * outputs);
  do_compute(m_in.data(), rows, inputs, m_out.data());
  for (std::size_t r = 0; r < rows; ++r)
  {
    const Call& call = calls[m_rowCall[r]];
    for (std::size_t o = 0; o < outputs; ++o)
    {
      auto& reference = (*call.outputs)[o];
      const double value = m_out[r * outputs + o];
      const auto report = [&](const std::string& what, const std::optional<std::string>& modelError)
      {
        Model::EntityError error(entityOf(reference, call),
                                 place("Output", o, reference) + " of \"" + *call.name + "\" " + what,
                                 Model::EntityErrorLevel::Error);
        error.setAIModelError(modelError);
        errors.push_back({m_rowCall[r], std::move(error)});
      };
      if (!std::isfinite(value))
      {
        report("not written: the module gave " + numberText(value),
               "result " + numberText(value) + " is not finite");
        continue;
      }
      try
      {
        if (!reference)
          throw std::runtime_error("it is unresolved");
        switch (reference->getAttributeType(true))
        {
        case AttributeType::Int:
          if (!(value > -2147483648.5 && value < 2147483647.5))
          {
            report("not written: " + numberText(value) + " does not fit an Int",
                   "result " + numberText(value) + " does not fit an Int");
            continue;
          }
          reference->setIntValue(static_cast<int>(std::lround(value)), m_outputChronology, false);
          break;
        case AttributeType::Float:
          if (std::abs(value) > FLT_MAX)
          {
            report("not written: " + numberText(value) + " does not fit a Float",
                   "result " + numberText(value) + " does not fit a Float");
            continue;
          }
          reference->setFloatValue(static_cast<float>(value), m_outputChronology, false);
          break;
        default:
          reference->setDoubleValue(value, m_outputChronology, false);
          break;
        }
      }
      catch (const std::exception& error)
      {
        report(std::string("could not be written: ") + error.what(), std::nullopt);
      }
    }
  }
}

} // namespace Ombrix

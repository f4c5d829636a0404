#include "ombrix/runtime/TrivialModule.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <variant>

namespace Ombrix
{
namespace
{

using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

bool isValueType(AttributeType type)
{
  return type == AttributeType::Int || type == AttributeType::Bool || type == AttributeType::String ||
         type == AttributeType::Float || type == AttributeType::Double;
}

using Value = std::variant<int, bool, std::string, float, double>;

Value readValue(const Model::Attribute& from, Chronology chronology)
{
  switch (from.getAttributeType(true))
  {
  case AttributeType::Int:
    return from.getIntValue(chronology, false);
  case AttributeType::Bool:
    return from.getBoolValue(chronology, false);
  case AttributeType::String:
    return from.getStringValue(chronology, false);
  case AttributeType::Float:
    return from.getFloatValue(chronology, false);
  default:
    return from.getDoubleValue(chronology, false);
  }
}

void writeValue(Model::Attribute& to, const Value& value, Chronology chronology)
{
  std::visit([&](const auto& v) { to.setValue(v, chronology, false); }, value);
}

} // namespace

TrivialModule::TrivialModule() : AIRuntimeModule(AISystem::ModuleType::Trivial) {}

void TrivialModule::do_compute(const double* in, std::size_t rows, std::size_t inputs, double* out)
{
  std::copy(in, in + rows * inputs, out);
}

void TrivialModule::do_checkKinds(const References& inputs, const References& outputs) const
{
  for (std::size_t i = 0; i < inputs.size(); ++i)
  {
    const AttributeType in = inputs[i]->getAttributeType(true);
    const AttributeType out = outputs[i]->getAttributeType(true);
    if (!isValueType(in))
      throw std::invalid_argument(place("input", i, inputs[i]) + " is of type " +
                                  KorvanSDK::attributeTypeToString(in) +
                                  ", expected a value (Int, Bool, String, Float or Double)");
    if (out != in)
      throw std::invalid_argument(place("output", i, outputs[i]) + " is of type " +
                                  KorvanSDK::attributeTypeToString(out) + ", expected " +
                                  KorvanSDK::attributeTypeToString(in) + " like input " + std::to_string(i));
  }
}

void TrivialModule::do_run(std::span<const Call> calls, std::vector<CallError>& errors)
{
  for (std::size_t c = 0; c < calls.size(); ++c)
  {
    const Call& call = calls[c];
    if (call.outputs->size() != call.inputs->size())
      throw std::runtime_error(describe() + " gives one output per input, functor \"" + *call.name +
                               "\" has " + std::to_string(call.inputs->size()) + " inputs and " +
                               std::to_string(call.outputs->size()) + " outputs");
    for (std::size_t i = 0; i < call.inputs->size(); ++i)
    {
      const auto& input = (*call.inputs)[i];
      auto& output = (*call.outputs)[i];
      const auto report = [&](const char* side, const Model::AttributeReference<Model::Attribute>& reference,
                              const char* what, const std::string& why)
      {
        errors.push_back({c, Model::EntityError(entityOf(reference, call),
                                                place(side, i, reference) + " of \"" + *call.name +
                                                    "\" could not be " + what + ": " + why,
                                                Model::EntityErrorLevel::Error)});
      };
      Value value;
      try
      {
        if (!input)
          throw std::runtime_error("it is unresolved");
        value = readValue(*input, getInputChronology());
      }
      catch (const std::exception& error)
      {
        report("Input", input, "read", error.what());
        continue;
      }
      try
      {
        if (!output)
          throw std::runtime_error("it is unresolved");
        writeValue(*output, value, getOutputChronology());
      }
      catch (const std::exception& error)
      {
        report("Output", output, "written", error.what());
      }
    }
  }
}

} // namespace Ombrix

#include "ombrix/runtime/Activation.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

constexpr auto names = makeNameTable<Activation>({
    {Activation::Identity, "Identity"},
    {Activation::Relu, "Relu"},
    {Activation::Tanh, "Tanh"},
    {Activation::Sigmoid, "Sigmoid"},
});

} // namespace

std::string activationToString(Activation activation)
{
  return std::string(names.nameOr(activation));
}

Activation activationFromString(const std::string& text, Activation fallback)
{
  return names.valueOr(text, fallback);
}

bool isActivation(std::uint32_t value)
{
  return names.findName(static_cast<Activation>(value)).has_value();
}

} // namespace Ombrix

#include "ombrix/ai/TransformationType.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

constexpr auto names = makeNameTable<TransformationType>({
    {TransformationType::Inverse, "Inverse"},
    {TransformationType::Identity, "Identity"},
    {TransformationType::Curve, "Curve"},
    {TransformationType::PowerLaw, "PowerLaw"},
    {TransformationType::SimpleScaling, "SimpleScaling"},
    {TransformationType::MeanStdDevScaling, "MeanStdDevScaling"},
});

} // namespace

std::string transformationTypeToString(TransformationType type)
{
  return std::string(names.nameOr(type));
}

TransformationType transformationTypeFromString(const std::string& text, TransformationType fallback)
{
  return names.valueOr(text, fallback);
}

} // namespace Ombrix

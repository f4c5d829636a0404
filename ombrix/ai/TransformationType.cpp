#include "ombrix/ai/TransformationType.h"

#include "ombrix/ai/AIVocabulary.h"

namespace Ombrix
{
namespace
{

const std::pair<TransformationType, const char*> names[] = {
    {TransformationType::Inverse, "Inverse"},
    {TransformationType::Identity, "Identity"},
    {TransformationType::Curve, "Curve"},
    {TransformationType::PowerLaw, "PowerLaw"},
    {TransformationType::SimpleScaling, "SimpleScaling"},
    {TransformationType::MeanStdDevScaling, "MeanStdDevScaling"},
};

} // namespace

std::string transformationTypeToString(TransformationType type)
{
  return Detail::nameOf(names, type);
}

TransformationType transformationTypeFromString(const std::string& text, TransformationType fallback)
{
  return Detail::valueOf(names, text, fallback);
}

} // namespace Ombrix

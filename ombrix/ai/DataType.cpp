#include "ombrix/ai/DataType.h"

#include "ombrix/ai/AIVocabulary.h"

namespace Ombrix
{
namespace
{

const std::pair<DataType, const char*> names[] = {
    {DataType::Int, "Int"},     {DataType::Bool, "Bool"},     {DataType::String, "String"},
    {DataType::Float, "Float"}, {DataType::Double, "Double"},
};

} // namespace

std::string dataTypeToString(DataType type)
{
  return Detail::nameOf(names, type);
}

DataType datatTypeFromString(const std::string& text, DataType fallback)
{
  return Detail::valueOf(names, text, fallback);
}

} // namespace Ombrix

#include "ombrix/ai/DataType.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix
{
namespace
{

constexpr auto names = makeNameTable<DataType>({
    {DataType::Int, "Int"},
    {DataType::Bool, "Bool"},
    {DataType::String, "String"},
    {DataType::Float, "Float"},
    {DataType::Double, "Double"},
});

} // namespace

std::string dataTypeToString(DataType type)
{
  return std::string(names.nameOr(type));
}

DataType datatTypeFromString(const std::string& text, DataType fallback)
{
  return names.valueOr(text, fallback);
}

} // namespace Ombrix

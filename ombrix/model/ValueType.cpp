#include "ombrix/model/ValueType.h"

#include "ombrix/sdk/NameTable.h"

namespace Ombrix::Model
{
namespace
{

constexpr auto valueTypes = makeNameTable<ValueType>({
    {ValueType::Simple, "Simple"},
    {ValueType::Chronological, "Chronological"},
});

} // namespace

std::string valueTypeToString(ValueType type)
{
  return std::string(valueTypes.nameOr(type));
}

ValueType valueTypeFromString(const std::string& text, ValueType fallback)
{
  return valueTypes.valueOr(text, fallback);
}

} // namespace Ombrix::Model

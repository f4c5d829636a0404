#include "ombrix/model/ValueType.h"

namespace Ombrix::Model
{

std::string valueTypeToString(ValueType type)
{
  switch (type)
  {
  case ValueType::Simple:
    return "Simple";
  case ValueType::Chronological:
    return "Chronological";
  }
  return std::string();
}

ValueType valueTypeFromString(const std::string& text, ValueType fallback)
{
  if (text == "Simple")
    return ValueType::Simple;
  if (text == "Chronological")
    return ValueType::Chronological;
  return fallback;
}

} // namespace Ombrix::Model

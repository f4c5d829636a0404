// Helpers shared by the CSV parsers: value text of a value attribute at one chronology, the value
// column names and the parsing of value text into the attribute's own element type.
#pragma once

#include "ombrix/model/ValueAttribute.h"
#include "ombrix/model/ValueText.h"
#include "ombrix/sdk/AttributeType.h"
#include "ombrix/sdk/Chronology.h"

#include <array>
#include <cctype>
#include <cmath>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

namespace Ombrix::CSVValueText
{

constexpr std::array<KorvanSDK::Chronology, 5> allChronologies{
    KorvanSDK::Chronology::Initial, KorvanSDK::Chronology::Continue, KorvanSDK::Chronology::TimeStepStart,
    KorvanSDK::Chronology::Current, KorvanSDK::Chronology::Next};

inline std::string columnName(KorvanSDK::Chronology chronology)
{
  return KorvanSDK::chronologyToString(chronology) + "Value";
}

inline bool isValueType(KorvanSDK::AttributeType type)
{
  using KorvanSDK::AttributeType;
  return type == AttributeType::Int || type == AttributeType::Bool || type == AttributeType::String ||
         type == AttributeType::Float || type == AttributeType::Double;
}

template <typename T>
bool appendTyped(std::string& out, const Model::Attribute& attribute, KorvanSDK::Chronology chronology,
                 Model::NumberFormat format)
{
  const auto& value = static_cast<const Model::ValueAttribute<T>&>(attribute);
  const T* stored = nullptr;
  try
  {
    stored = &value.get(chronology);
  }
  catch (const std::out_of_range&)
  {
    return false; // no value at this chronology: the field stays empty
  }
  if constexpr (std::is_same_v<T, std::string>)
    out += *stored;
  else if constexpr (std::is_floating_point_v<T>)
    Model::appendText(out, *stored, format);
  else
    Model::appendText(out, *stored);
  return true;
}

// Appends the text of a value attribute (types Int, Bool, String, Float, Double) at `chronology`.
inline bool appendValue(std::string& out, const Model::Attribute& attribute, KorvanSDK::Chronology chronology,
                        Model::NumberFormat format)
{
  using KorvanSDK::AttributeType;
  switch (attribute.getAttributeType(false))
  {
  case AttributeType::Int:
    return appendTyped<int>(out, attribute, chronology, format);
  case AttributeType::Bool:
    return appendTyped<bool>(out, attribute, chronology, format);
  case AttributeType::String:
    return appendTyped<std::string>(out, attribute, chronology, format);
  case AttributeType::Float:
    return appendTyped<float>(out, attribute, chronology, format);
  case AttributeType::Double:
    return appendTyped<double>(out, attribute, chronology, format);
  default:
    return false;
  }
}

// Parses `text` as T with the standard conversions' rules (see Model::parseText); `whole` tells whether
// the text was entirely that number: every character taken and no leading blank (which the conversion
// skips). Bool and string texts are always whole.
template <typename T> T parseValue(const std::string& text, bool& whole)
{
  std::size_t used = 0;
  T value{};
  if constexpr (std::is_same_v<T, int>)
    value = Model::parseInt(text, &used);
  else if constexpr (std::is_same_v<T, float>)
    value = Model::parseFloat(text, &used);
  else if constexpr (std::is_same_v<T, double>)
    value = Model::parseDouble(text, &used);
  else
  {
    whole = true;
    return Model::parseText<T>(text);
  }
  whole = used == text.size() && !std::isspace(static_cast<unsigned char>(text.front()));
  return value;
}

// The strict readers' complaint about a value that is not entirely a number of `type`.
inline std::string notWholeNumber(const std::string& text, KorvanSDK::Chronology chronology,
                                  const std::string& place, KorvanSDK::AttributeType type)
{
  return "Invalid value '" + text + "' in " + columnName(chronology) + " of " + place +
         ": the text is not entirely a number of type " + KorvanSDK::attributeTypeToString(type);
}

// Equal values, counting two NaNs of a floating type as equal (both then read back the same).
template <typename T> bool sameValue(const T& a, const T& b)
{
  if constexpr (std::is_floating_point_v<T>)
    return a == b ? std::signbit(a) == std::signbit(b) : (std::isnan(a) && std::isnan(b));
  else
    return a == b;
}

} // namespace Ombrix::CSVValueText

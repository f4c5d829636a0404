#include "ombrix/sdk/ExceptionType.h"

#include "ombrix/sdk/CodedException.h"

#include <array>
#include <exception>
#include <stdexcept>
#include <string_view>

namespace KorvanSDK
{
namespace
{

constexpr std::array<std::string_view, 11> texts = {
    "Success",      "AccessError",  "AttributeReadError", "OutOfRange", "InvalidArgument", "LogicError",
    "RuntimeError", "StdException", "UnknownException",   "NullHandle", "NullArgument"};

ExceptionType classify(const std::exception& error)
{
  if (const auto* coded = dynamic_cast<const CodedException*>(&error))
    return coded->exceptionType();
  if (dynamic_cast<const std::out_of_range*>(&error))
    return ExceptionType::OutOfRange;
  if (dynamic_cast<const std::invalid_argument*>(&error))
    return ExceptionType::InvalidArgument;
  if (dynamic_cast<const std::logic_error*>(&error))
    return ExceptionType::LogicError;
  if (dynamic_cast<const std::runtime_error*>(&error))
    return ExceptionType::RuntimeError;
  return ExceptionType::StdException;
}

} // namespace

std::string exceptionTypeToString(ExceptionType type)
{
  const auto number = static_cast<std::int32_t>(type);
  if (number < 0 || static_cast<std::size_t>(number) >= texts.size())
    return "Unknown";
  return std::string(texts[static_cast<std::size_t>(number)]);
}

ExceptionType exceptionTypeFromString(const std::string& text, ExceptionType fallback)
{
  for (std::size_t i = 0; i < texts.size(); ++i)
    if (texts[i] == text)
      return static_cast<ExceptionType>(i);
  return fallback;
}

ExceptionType currentExceptionType(std::string& message) noexcept
{
  ExceptionType code = ExceptionType::UnknownException;
  const char* text = "Unknown exception";
  try
  {
    throw;
  }
  catch (const std::exception& error)
  {
    code = classify(error);
    text = error.what();
  }
  catch (...)
  {
  }
  try
  {
    message = text;
  }
  catch (...)
  {
    // Out of memory for the text: the code still tells what happened.
    message.clear();
  }
  return code;
}

} // namespace KorvanSDK

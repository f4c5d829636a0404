#include "ombrix/sdk/ExceptionType.h"

#include "ombrix/sdk/CodedException.h"
#include "ombrix/sdk/NameTable.h"

#include <exception>
#include <stdexcept>

namespace KorvanSDK
{
namespace
{

constexpr auto texts = Ombrix::makeNameTable<ExceptionType>({
    {ExceptionType::Success, "Success"},
    {ExceptionType::AccessError, "AccessError"},
    {ExceptionType::AttributeReadError, "AttributeReadError"},
    {ExceptionType::OutOfRange, "OutOfRange"},
    {ExceptionType::InvalidArgument, "InvalidArgument"},
    {ExceptionType::LogicError, "LogicError"},
    {ExceptionType::RuntimeError, "RuntimeError"},
    {ExceptionType::StdException, "StdException"},
    {ExceptionType::UnknownException, "UnknownException"},
    {ExceptionType::NullHandle, "NullHandle"},
    {ExceptionType::NullArgument, "NullArgument"},
});

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
  return std::string(texts.nameOr(type, "Unknown"));
}

ExceptionType exceptionTypeFromString(const std::string& text, ExceptionType fallback)
{
  return texts.valueOr(text, fallback);
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

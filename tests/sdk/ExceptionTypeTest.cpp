#include "ombrix/sdk/ExceptionType.h"

#include "ombrix/model/AccessException.h"
#include "ombrix/sdk/CodedException.h"
#include "ombrix/sdk/FacadeException.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <string>

using KorvanSDK::ExceptionType;

namespace
{

// Stands for an exception of a layer above the facade that brings its own code.
class ReadFailure : public std::runtime_error, public KorvanSDK::CodedException
{
public:
  using std::runtime_error::runtime_error;
  ExceptionType exceptionType() const noexcept override { return ExceptionType::AttributeReadError; }
};

ExceptionType classify(const std::function<void()>& thrower, std::string& message)
{
  try
  {
    thrower();
  }
  catch (...)
  {
    return KorvanSDK::currentExceptionType(message);
  }
  ADD_FAILURE() << "nothing was thrown";
  return ExceptionType::Success;
}

} // namespace

TEST(ExceptionType, TextsRoundTrip)
{
  const std::pair<int, const char*> cases[] = {
      {0, "Success"},          {1, "AccessError"}, {2, "AttributeReadError"}, {3, "OutOfRange"},
      {4, "InvalidArgument"},  {5, "LogicError"},  {6, "RuntimeError"},       {7, "StdException"},
      {8, "UnknownException"}, {9, "NullHandle"},  {10, "NullArgument"}};
  for (const auto& [number, text] : cases)
  {
    SCOPED_TRACE(text);
    const auto type = static_cast<ExceptionType>(number);
    EXPECT_EQ(KorvanSDK::exceptionTypeToString(type), text);
    EXPECT_EQ(KorvanSDK::exceptionTypeFromString(text, ExceptionType::UnknownException), type);
  }
  EXPECT_EQ(KorvanSDK::exceptionTypeToString(static_cast<ExceptionType>(11)), "Unknown");
  EXPECT_EQ(KorvanSDK::exceptionTypeToString(static_cast<ExceptionType>(-1)), "Unknown");
  for (const char* text : {"success", "Success ", "Unknown", ""})
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(KorvanSDK::exceptionTypeFromString(text, ExceptionType::LogicError), ExceptionType::LogicError);
  }
}

TEST(ExceptionType, EachFamilyGetsItsCodeAndKeepsItsMessage)
{
  struct Case
  {
    const char* name;
    std::function<void()> thrower;
    ExceptionType code;
    const char* message;
  };
  const Case cases[] = {
      {"access", [] { throw Ombrix::Model::AccessException("User has no write access"); },
       ExceptionType::AccessError, "User has no write access"},
      {"coded", [] { throw ReadFailure("Cannot read 'x'"); }, ExceptionType::AttributeReadError,
       "Cannot read 'x'"},
      {"facade", [] { throw KorvanSDK::FacadeException(ExceptionType::NullHandle, "none"); },
       ExceptionType::NullHandle, "none"},
      {"out_of_range", [] { throw std::out_of_range("No Shortcut_i='3'"); }, ExceptionType::OutOfRange,
       "No Shortcut_i='3'"},
      {"invalid_argument", [] { throw std::invalid_argument("invalid stoi argument"); },
       ExceptionType::InvalidArgument, "invalid stoi argument"},
      {"logic_error", [] { throw std::logic_error("Invalid type"); }, ExceptionType::LogicError,
       "Invalid type"},
      {"runtime_error", [] { throw std::runtime_error("Not Available"); }, ExceptionType::RuntimeError,
       "Not Available"},
      {"range_error is a runtime_error", [] { throw std::range_error("range"); }, ExceptionType::RuntimeError,
       "range"},
      {"other std::exception", [] { throw std::bad_alloc(); }, ExceptionType::StdException, "std::bad_alloc"},
      {"not a std::exception", [] { throw 42; }, ExceptionType::UnknownException, "Unknown exception"},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    std::string message = "stale text";
    EXPECT_EQ(classify(c.thrower, message), c.code);
    EXPECT_EQ(message, c.message);
  }
}

TEST(ExceptionType, RequireArgumentNamesTheNullArgument)
{
  int value = 0;
  EXPECT_EQ(KorvanSDK::requireArgument(&value, "value"), &value);
  std::string message;
  const ExceptionType code =
      classify([] { KorvanSDK::requireArgument(static_cast<const char*>(nullptr), "unit"); }, message);
  EXPECT_EQ(code, ExceptionType::NullArgument);
  EXPECT_EQ(message, "Argument 'unit' is null: pass a valid pointer");
}

#include "ombrix/sdk/ExceptionType.h"

#include "ombrix/model/AccessException.h"
#include "ombrix/sdk/CodedException.h"
#include "ombrix/sdk/FacadeException.h"

#include "support/Tables.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <string>

using E = KorvanSDK::ExceptionType;

namespace
{

// Stands for an exception of a layer above the facade that brings its own code.
class ReadFailure : public std::runtime_error, public KorvanSDK::CodedException
{
public:
  using std::runtime_error::runtime_error;
  E exceptionType() const noexcept override { return E::AttributeReadError; }
};

// The code and message of what `thrower` throws; `message` starts stale so that an unset one shows.
std::pair<E, std::string> classify(const std::function<void()>& thrower)
{
  std::string message = "stale text";
  try
  {
    thrower();
  }
  catch (...)
  {
    const E code = KorvanSDK::currentExceptionType(message);
    return {code, message};
  }
  ADD_FAILURE() << "nothing was thrown";
  return {E::Success, message};
}

} // namespace

TEST(ExceptionType, Texts)
{
  OmbrixTest::expectNames({{0, "Success"},
                           {1, "AccessError"},
                           {2, "AttributeReadError"},
                           {3, "OutOfRange"},
                           {4, "InvalidArgument"},
                           {5, "LogicError"},
                           {6, "RuntimeError"},
                           {7, "StdException"},
                           {8, "UnknownException"},
                           {9, "NullHandle"},
                           {10, "NullArgument"}},
                          KorvanSDK::exceptionTypeToString, KorvanSDK::exceptionTypeFromString,
                          static_cast<E>(99));
  EXPECT_EQ(KorvanSDK::exceptionTypeToString(static_cast<E>(11)), "Unknown");
  EXPECT_EQ(KorvanSDK::exceptionTypeToString(static_cast<E>(-1)), "Unknown");
  EXPECT_EQ(KorvanSDK::exceptionTypeFromString("Unknown", E::LogicError), E::LogicError);
}

TEST(ExceptionType, EachFamilyGetsItsCodeAndKeepsItsMessage)
{
  const std::tuple<std::function<void()>, E, const char*> cases[] = {
      {[] { throw Ombrix::Model::AccessException("access"); }, E::AccessError, "access"},
      {[] { throw ReadFailure("coded"); }, E::AttributeReadError, "coded"},
      {[] { throw KorvanSDK::FacadeException(E::NullHandle, "facade"); }, E::NullHandle, "facade"},
      {[] { throw std::out_of_range("range"); }, E::OutOfRange, "range"},
      {[] { throw std::invalid_argument("argument"); }, E::InvalidArgument, "argument"},
      {[] { throw std::logic_error("logic"); }, E::LogicError, "logic"},
      {[] { throw std::runtime_error("runtime"); }, E::RuntimeError, "runtime"},
      {[] { throw std::range_error("a runtime_error"); }, E::RuntimeError, "a runtime_error"},
      {[] { throw std::bad_alloc(); }, E::StdException, "std::bad_alloc"},
      {[] { throw 42; }, E::UnknownException, "Unknown exception"},
      {[] { KorvanSDK::requireArgument(static_cast<const char*>(nullptr), "unit"); }, E::NullArgument,
       "Argument 'unit' is null: pass a valid pointer"},
  };
  for (const auto& [thrower, code, message] : cases)
    EXPECT_EQ(classify(thrower), std::make_pair(code, std::string(message))) << message;
  int value = 0;
  EXPECT_EQ(KorvanSDK::requireArgument(&value, "value"), &value);
}

#include "ombrix/model/ValueAttribute.h"

#include "ombrix/model/AccessException.h"
#include "ombrix/model/ValueText.h"

#include "support/TestSupport.h"

#include <climits>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using C = KorvanSDK::Chronology;

namespace
{
const C kAll[] = {C::Initial, C::Continue, C::TimeStepStart, C::Current, C::Next};
}

TEST(ValueAttributeTest, StartsSimpleAndSwitchesOnFirstLaterWrite)
{
  ValueAttribute<int> value("V", AccessType::ReadWrite, nullptr);
  EXPECT_EQ(value.getStorageType(), ValueType::Simple);
  value.setIntValue(5, C::Initial, false);
  EXPECT_EQ(value.getStorageType(), ValueType::Simple);
  for (C c : kAll)
    EXPECT_EQ(value.getIntValue(c, false), 5);

  value.setIntValue(7, C::Current, false);
  EXPECT_EQ(value.getStorageType(), ValueType::Chronological);
  const auto& stored =
      static_cast<const Data::ChronologicalValue<int>&>(value.container().storage()).values();
  ASSERT_EQ(stored.size(), 2u);
  EXPECT_EQ(stored.at(C::Initial), 5);
  EXPECT_EQ(stored.at(C::Current), 7);
  const int expected[] = {5, 5, 5, 7, 7};
  for (int i = 0; i < 5; ++i)
  {
    SCOPED_TRACE(i);
    EXPECT_EQ(value.getIntValue(kAll[i], false), expected[i]);
  }
  EXPECT_EQ(static_cast<int>(value), 7); // conversions read Current
  EXPECT_EQ(value.get(C::Initial), 5);
}

TEST(ValueAttributeTest, WriteCreatesOnlyTheWrittenChronologyFromTheOneBefore)
{
  ValueAttribute<double> value("V", AccessType::ReadWrite, nullptr);
  value.container().replace(std::make_unique<Data::ChronologicalValue<double>>(5.0));
  value.setDoubleValue(7.0, C::Next, false);
  const auto& stored =
      static_cast<const Data::ChronologicalValue<double>&>(value.container().storage()).values();
  EXPECT_EQ(stored.size(), 2u);
  EXPECT_EQ(value.getDoubleValue(C::Current, false), 5.0);
  EXPECT_EQ(value.getDoubleValue(C::Next, false), 7.0);
  value.setDoubleValue(6.0, C::TimeStepStart, false);
  EXPECT_EQ(stored.size(), 3u);
  EXPECT_EQ(value.getDoubleValue(C::Continue, false), 5.0);
  EXPECT_EQ(value.getDoubleValue(C::Current, false), 6.0);
  EXPECT_EQ(value.getDoubleValue(C::Next, false), 7.0);
}

TEST(ValueAttributeTest, ChronologyOutOfRange)
{
  ValueAttribute<int> value("V", AccessType::ReadWrite, nullptr);
  auto onlyCurrent = std::make_unique<Data::ChronologicalValue<int>>();
  onlyCurrent->values()[C::Current] = 3;
  value.container().replace(std::move(onlyCurrent));
  EXPECT_THROW_MSG(value.getIntValue(C::Initial, false), std::out_of_range, "Chronology Out Of Range");
  EXPECT_THROW_MSG(value.getIntValue(C::TimeStepStart, false), std::out_of_range, "Chronology Out Of Range");
  EXPECT_FALSE(value.hasValue(C::Continue, false));
  EXPECT_TRUE(value.hasValue(C::Next, false));
  EXPECT_EQ(value.getIntValue(C::Next, false), 3);
  // Initial is never created implicitly, nor is an entry whose predecessor cannot be read.
  EXPECT_THROW_MSG(value.setIntValue(1, C::Initial, false), std::out_of_range, "Chronology Out Of Range");
  EXPECT_THROW_MSG(value.setIntValue(1, C::TimeStepStart, false), std::out_of_range,
                   "Chronology Out Of Range");
  value.setIntValue(4, C::Next, false);
  EXPECT_EQ(value.getIntValue(C::Current, false), 3);
  EXPECT_EQ(value.getIntValue(C::Next, false), 4);

  ValueAttribute<int> simple("S", AccessType::ReadWrite, nullptr);
  simple.setIntValue(2, C::Initial, false);
  EXPECT_THROW_MSG(simple.setIntValue(9, static_cast<C>(5), false), std::out_of_range,
                   "Chronology Out Of Range");
  EXPECT_THROW_MSG(simple.setIntValue(9, static_cast<C>(-1), false), std::out_of_range,
                   "Chronology Out Of Range");
  EXPECT_EQ(simple.getStorageType(), ValueType::Simple);
  EXPECT_EQ(simple.getIntValue(C::Current, false), 2);
}

TEST(ValueAttributeTest, AccessAndUnitFailuresLeaveTheValueUnchanged)
{
  struct Case
  {
    AccessType access;
    bool canRead;
    bool canWrite;
  };
  const Case cases[] = {{AccessType::None, false, false},
                        {AccessType::ReadOnly, true, false},
                        {AccessType::WriteOnly, false, true},
                        {AccessType::ReadWrite, true, true}};
  for (const auto& c : cases)
  {
    SCOPED_TRACE(static_cast<int>(c.access));
    ValueAttribute<double> value("V", c.access, nullptr);
    value.setUnit("m");
    value.set(1.5, C::Initial);
    if (c.canWrite)
    {
      value.setDoubleValue(2.5, C::Initial, true);
      EXPECT_EQ(value.get(C::Initial), 2.5);
    }
    else
    {
      EXPECT_THROW_MSG(value.setDoubleValue(2.5, C::Initial, true), AccessException,
                       "User has no write access");
      EXPECT_EQ(value.get(C::Initial), 1.5);
      value.setDoubleValue(2.5, C::Initial, false); // internal writes are not checked
      EXPECT_EQ(value.get(C::Initial), 2.5);
    }
    if (c.canRead)
      EXPECT_EQ(value.getDoubleValue(C::Current, true), 2.5);
    else
      EXPECT_THROW_MSG(value.getDoubleValue(C::Current, true), AccessException, "User has no read access");
    EXPECT_EQ(value.getDoubleValue(C::Current, false), 2.5);

    EXPECT_THROW_MSG(value.setDoubleValue(3.5, "s", C::Current, false), std::runtime_error, "Invalid Unit");
    EXPECT_THROW_MSG(value.setDoubleValue(3.5, "M", C::Current, false), std::runtime_error, "Invalid Unit");
    EXPECT_EQ(value.get(C::Current), 2.5);
    EXPECT_EQ(value.getStorageType(), ValueType::Simple);
    value.setDoubleValue(3.5, "", C::Initial, false);
    EXPECT_EQ(value.get(C::Initial), 3.5);
    value.setDoubleValue(4.5, "m", C::Initial, false);
    EXPECT_EQ(value.get(C::Initial), 4.5);
  }
}

TEST(ValueAttributeTest, UserWriteOnReadOnlyWithUnitReportsAccessFirst)
{
  ValueAttribute<int> value("V", AccessType::ReadOnly, nullptr);
  value.setUnit("m");
  EXPECT_THROW_MSG(value.setIntValue(1, "s", C::Current, true), AccessException, "User has no write access");
  EXPECT_TRUE(value.hasUnits());
  EXPECT_EQ(value.getUnit(), "m");
}

TEST(ValueAttributeTest, ConversionsBetweenTypes)
{
  ValueAttribute<double> d("D", AccessType::ReadWrite, nullptr);
  d.set(0.5, C::Initial);
  EXPECT_EQ(d.getStringValue(C::Current, false), "0.500000");
  EXPECT_EQ(d.getIntValue(C::Current, false), 0);
  EXPECT_TRUE(d.getBoolValue(C::Current, false));
  EXPECT_EQ(d.getFloatValue(C::Current, false), 0.5f);
  d.setStringValue("1e-7", C::Initial, false);
  EXPECT_EQ(d.get(C::Initial), 1e-7);
  EXPECT_EQ(d.getStringValue(C::Initial, false), "0.000000");
  d.setIntValue(-3, C::Initial, false);
  EXPECT_EQ(d.get(C::Initial), -3.0);
  d.setBoolValue(true, C::Initial, false);
  EXPECT_EQ(d.get(C::Initial), 1.0);
  d.set(1e10, C::Initial);
  EXPECT_THROW_MSG(d.getIntValue(C::Initial, false), std::out_of_range,
                   "Value 10000000000.000000 does not fit an Int");

  ValueAttribute<bool> b("B", AccessType::ReadWrite, nullptr);
  b.set(true, C::Initial);
  EXPECT_EQ(b.getStringValue(C::Current, false), "Yes");
  EXPECT_EQ(b.getIntValue(C::Current, false), 1);
  EXPECT_EQ(b.getDoubleValue(C::Current, false), 1.0);
  struct BoolCase
  {
    const char* text;
    bool value;
  };
  const BoolCase bools[] = {{"True", true},   {"Yes", true}, {"1", true},
                            {"False", false}, {"No", false}, {"0", false}};
  for (const auto& c : bools)
  {
    SCOPED_TRACE(c.text);
    b.set(!c.value, C::Initial);
    b.setStringValue(c.text, C::Initial, false);
    EXPECT_EQ(b.get(C::Initial), c.value);
  }
  b.set(false, C::Initial);
  EXPECT_EQ(b.getStringValue(C::Initial, false), "No");
  EXPECT_THROW_MSG(b.setStringValue("yes", C::Initial, false), std::invalid_argument,
                   "Invalid bool text 'yes'");
  EXPECT_THROW_MSG(b.setStringValue(" Yes", C::Initial, false), std::invalid_argument,
                   "Invalid bool text ' Yes'");
  b.setIntValue(2, C::Initial, false);
  EXPECT_TRUE(b.get(C::Initial));

  ValueAttribute<std::string> s("S", AccessType::ReadWrite, nullptr);
  s.setStringValue("  padded  ", C::Initial, false);
  EXPECT_EQ(s.get(C::Initial), "  padded  ");
  s.setDoubleValue(2.25, C::Initial, false);
  EXPECT_EQ(s.get(C::Initial), "2.250000");
  s.setIntValue(-12, C::Initial, false);
  EXPECT_EQ(s.get(C::Initial), "-12");
  EXPECT_EQ(s.getIntValue(C::Initial, false), -12);
  s.setBoolValue(true, C::Initial, false);
  EXPECT_EQ(s.get(C::Initial), "Yes");
  EXPECT_TRUE(s.getBoolValue(C::Initial, false));
}

TEST(ValueAttributeTest, NumberTextFailuresKeepTheStandardMessages)
{
  struct Case
  {
    const char* text;
    const char* message;
    bool range;
  };
  ValueAttribute<int> i("I", AccessType::ReadWrite, nullptr);
  ValueAttribute<float> f("F", AccessType::ReadWrite, nullptr);
  ValueAttribute<double> d("D", AccessType::ReadWrite, nullptr);
  i.set(4, C::Initial);
  f.set(4.f, C::Initial);
  d.set(4.0, C::Initial);
  const Case ints[] = {{"abc", "invalid stoi argument", false},
                       {"", "invalid stoi argument", false},
                       {"99999999999", "stoi argument out of range", true}};
  for (const auto& c : ints)
  {
    SCOPED_TRACE(c.text);
    if (c.range)
      EXPECT_THROW_MSG(i.setStringValue(c.text, C::Initial, false), std::out_of_range, c.message);
    else
      EXPECT_THROW_MSG(i.setStringValue(c.text, C::Initial, false), std::invalid_argument, c.message);
  }
  EXPECT_THROW_MSG(f.setStringValue("x1", C::Initial, false), std::invalid_argument, "invalid stof argument");
  EXPECT_THROW_MSG(f.setStringValue("1e60", C::Initial, false), std::out_of_range,
                   "stof argument out of range");
  EXPECT_THROW_MSG(d.setStringValue("x1", C::Initial, false), std::invalid_argument, "invalid stod argument");
  EXPECT_THROW_MSG(d.setStringValue("1e999", C::Initial, false), std::out_of_range,
                   "stod argument out of range");
  EXPECT_EQ(i.get(C::Initial), 4);
  EXPECT_EQ(f.get(C::Initial), 4.f);
  EXPECT_EQ(d.get(C::Initial), 4.0);
  // Standard rules: leading blanks skipped, trailing text ignored.
  i.setStringValue(" 12abc", C::Initial, false);
  EXPECT_EQ(i.get(C::Initial), 12);
}

TEST(ValueAttributeTest, ConversionOperatorsReadCurrent)
{
  ValueAttribute<double> d("D", AccessType::None, nullptr);
  d.set(1.0, C::Initial);
  d.set(2.0, C::Current);
  EXPECT_EQ(static_cast<double>(d), 2.0);
  EXPECT_EQ(static_cast<int>(d), 2);
  EXPECT_EQ(static_cast<float>(d), 2.f);
  EXPECT_EQ(static_cast<std::string>(d), "2.000000");
  EXPECT_TRUE(static_cast<bool>(d));
  d.set(0.0, C::Current);
  EXPECT_FALSE(static_cast<bool>(d));
}

TEST(ValueAttributeTest, TextForms)
{
  EXPECT_EQ(toText(1.0 / 3.0), "0.333333");
  EXPECT_EQ(toText(-0.5f), "-0.500000");
  EXPECT_EQ(toText(0.1, NumberFormat::RoundTrip), "0.1");
  EXPECT_EQ(parseDouble(toText(1.0 / 3.0, NumberFormat::RoundTrip)), 1.0 / 3.0);
  std::string out = "x=";
  appendText(out, 42);
  appendText(out, false);
  EXPECT_EQ(out, "x=42No");
  EXPECT_TRUE(std::isnan(parseDouble("nan")));
}

TEST(ValueAttributeTest, EqualityComparesUnitAndStoredValues)
{
  ValueAttribute<int> a("V", AccessType::ReadWrite, nullptr);
  ValueAttribute<int> b("V", AccessType::ReadWrite, nullptr);
  a.set(1, C::Initial);
  b.set(1, C::Initial);
  EXPECT_TRUE(a.isEqual(b));
  b.setUnit("m");
  EXPECT_FALSE(a.isEqual(b));
  b.setUnit("");
  b.set(1, C::Current);
  EXPECT_FALSE(a.isEqual(b));
  a.set(1, C::Current);
  EXPECT_TRUE(a.isEqual(b));
  ValueAttribute<double> n1("N", AccessType::ReadWrite, nullptr);
  ValueAttribute<double> n2("N", AccessType::ReadWrite, nullptr);
  n1.set(std::numeric_limits<double>::quiet_NaN(), C::Initial);
  n2.set(std::numeric_limits<double>::quiet_NaN(), C::Initial);
  EXPECT_TRUE(n1.isEqual(n2)); // a stored NaN equals itself, so models with NaN round-trip
}

TEST(ValueAttributeTest, NumberToIntBounds)
{
  struct Case
  {
    double value;
    bool isFloat;
    std::optional<int> expected;
    const char* message;
  };
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Case cases[] = {
      {2147483647.0, false, INT_MAX, ""},
      {2147483647.9, false, INT_MAX, ""},
      {-2147483648.0, false, INT_MIN, ""},
      {-2147483648.9, false, INT_MIN, ""},
      {-7.9, false, -7, ""},
      {2147483648.0, false, std::nullopt, "Value 2147483648.000000 does not fit an Int"},
      {-2147483649.0, false, std::nullopt, "Value -2147483649.000000 does not fit an Int"},
      {inf, false, std::nullopt, "Value inf does not fit an Int"},
      {nan, false, std::nullopt, "Value nan does not fit an Int"},
      {2147483520.0, true, 2147483520, ""}, // the largest float below 2^31
      {2147483648.0, true, std::nullopt, "Value 2147483648.000000 does not fit an Int"},
      {-2147483648.0, true, INT_MIN, ""},
      {-inf, true, std::nullopt, "Value -inf does not fit an Int"},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.value);
    std::unique_ptr<Attribute> attribute;
    if (c.isFloat)
    {
      auto f = std::make_unique<FloatAttribute>("F", AccessType::ReadWrite, nullptr);
      f->set(static_cast<float>(c.value), C::Initial);
      attribute = std::move(f);
    }
    else
    {
      auto d = std::make_unique<DoubleAttribute>("D", AccessType::ReadWrite, nullptr);
      d->set(c.value, C::Initial);
      attribute = std::move(d);
    }
    if (c.expected)
      EXPECT_EQ(attribute->getIntValue(C::Initial, false), *c.expected);
    else
      EXPECT_THROW_MSG(attribute->getIntValue(C::Initial, false), std::out_of_range, c.message);
  }
}

#include "ombrix/model/ValueAttribute.h"

#include "ombrix/model/AccessException.h"
#include "ombrix/model/ValueText.h"

#include "support/TestSupport.h"

#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <map>
#include <stdexcept>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using C = KorvanSDK::Chronology;

namespace
{

const C kAll[] = {C::Initial, C::Continue, C::TimeStepStart, C::Current, C::Next};
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// A ReadWrite attribute holding `value` at Initial (simple storage).
template <typename T> std::unique_ptr<Attribute> holding(T value)
{
  auto attribute = std::make_unique<ValueAttribute<T>>("V", AccessType::ReadWrite, nullptr);
  attribute->set(value, C::Initial);
  return attribute;
}

// Reads of every chronology, -1 where there is no value to read.
std::array<int, 5> reads(const Attribute& v)
{
  std::array<int, 5> result{};
  for (int i = 0; i < 5; ++i)
    result[i] = v.hasValue(kAll[i], false) ? v.getIntValue(kAll[i], false) : -1;
  return result;
}

const std::map<C, int>& stored(const ValueAttribute<int>& value)
{
  return static_cast<const Data::ChronologicalValue<int>&>(value.container().storage()).values();
}

} // namespace

TEST(ValueAttributeTest, StartsSimpleAndSwitchesOnFirstLaterWrite)
{
  ValueAttribute<int> value("V", AccessType::ReadWrite, nullptr);
  EXPECT_EQ(value.getStorageType(), ValueType::Simple);
  value.setIntValue(5, C::Initial, false);
  for (C outside : {static_cast<C>(5), static_cast<C>(-1)})
    EXPECT_THROW_MSG(value.setIntValue(9, outside, false), std::out_of_range, "Chronology Out Of Range");
  EXPECT_EQ(value.getStorageType(), ValueType::Simple);
  EXPECT_EQ(reads(value), (std::array{5, 5, 5, 5, 5}));
  value.setIntValue(7, C::Current, false);
  EXPECT_EQ(value.getStorageType(), ValueType::Chronological);
  EXPECT_EQ(stored(value), (std::map<C, int>{{C::Initial, 5}, {C::Current, 7}}));
}

TEST(ValueAttributeTest, WriteCreatesOnlyTheWrittenChronologyFromTheOneBefore)
{
  // A read gives the latest value not after its chronology. Initial is never created implicitly, nor is an
  // entry whose predecessor cannot be read; a refused write (no 9 expected) changes nothing.
  // {stored values, chronology written with 9, reads afterwards, entries afterwards}
  const std::tuple<std::map<C, int>, C, std::array<int, 5>, std::size_t> cases[] = {
      {{{C::Initial, 5}}, C::Continue, {5, 9, 9, 9, 9}, 2},
      {{{C::Initial, 5}}, C::TimeStepStart, {5, 5, 9, 9, 9}, 2},
      {{{C::Initial, 5}}, C::Next, {5, 5, 5, 5, 9}, 2},
      {{{C::Initial, 5}, {C::Current, 7}}, C::TimeStepStart, {5, 5, 9, 7, 7}, 3},
      {{{C::Initial, 5}, {C::Current, 7}}, C::Initial, {9, 9, 9, 7, 7}, 2},
      {{{C::Current, 3}}, C::Current, {-1, -1, -1, 9, 9}, 1},
      {{{C::Current, 3}}, C::Next, {-1, -1, -1, 3, 9}, 2},
      {{{C::Current, 3}}, C::Initial, {-1, -1, -1, 3, 3}, 1},
      {{{C::Current, 3}}, C::Continue, {-1, -1, -1, 3, 3}, 1},
      {{{C::Current, 3}}, C::TimeStepStart, {-1, -1, -1, 3, 3}, 1},
  };
  for (const auto& [values, write, expected, entries] : cases)
  {
    SCOPED_TRACE(testing::Message() << "write " << static_cast<int>(write) << " over " << values.size());
    ValueAttribute<int> value("V", AccessType::ReadWrite, nullptr);
    auto storage = std::make_unique<Data::ChronologicalValue<int>>();
    storage->values() = values;
    value.container().replace(std::move(storage));
    if (expected[static_cast<int>(write)] == 9)
      value.setIntValue(9, write, false);
    else
      EXPECT_THROW_MSG(value.setIntValue(9, write, false), std::out_of_range, "Chronology Out Of Range");
    EXPECT_EQ(reads(value), expected);
    EXPECT_EQ(stored(value).size(), entries);
  }
  ValueAttribute<int> onlyCurrent("V", AccessType::ReadWrite, nullptr);
  onlyCurrent.container().replace(std::make_unique<Data::ChronologicalValue<int>>());
  EXPECT_THROW_MSG(onlyCurrent.getIntValue(C::Current, false), std::out_of_range, "Chronology Out Of Range");
}

TEST(ValueAttributeTest, AccessAndUnitFailuresLeaveTheValueUnchanged)
{
  for (const auto access :
       {AccessType::None, AccessType::ReadOnly, AccessType::WriteOnly, AccessType::ReadWrite})
  {
    SCOPED_TRACE(static_cast<int>(access));
    const bool canRead = KorvanSDK::hasReadAccess(access), canWrite = KorvanSDK::hasWriteAccess(access);
    ValueAttribute<double> value("V", access, nullptr);
    value.setUnit("m");
    value.set(1.5, C::Initial);
    if (canWrite)
      value.setDoubleValue(2.5, C::Initial, true);
    else
    {
      // The access is reported before the unit.
      EXPECT_THROW_MSG(value.setDoubleValue(2.5, "s", C::Initial, true), AccessException,
                       "User has no write access");
      EXPECT_EQ(value.get(C::Initial), 1.5);
      value.setDoubleValue(2.5, C::Initial, false); // internal writes are not checked
    }
    EXPECT_EQ(value.get(C::Initial), 2.5);
    if (canRead)
      EXPECT_EQ(value.getDoubleValue(C::Current, true), 2.5);
    else
      EXPECT_THROW_MSG(value.getDoubleValue(C::Current, true), AccessException, "User has no read access");
    EXPECT_EQ(value.getDoubleValue(C::Current, false), 2.5);

    for (const char* unit : {"s", "M"})
      EXPECT_THROW_MSG(value.setDoubleValue(3.5, unit, C::Current, false), std::runtime_error,
                       "Invalid Unit");
    EXPECT_EQ(value.getStorageType(), ValueType::Simple);
    value.setDoubleValue(3.5, "", C::Initial, false);
    EXPECT_EQ(value.get(C::Initial), 3.5);
    value.setDoubleValue(4.5, "m", C::Initial, false);
    EXPECT_EQ(value.get(C::Initial), 4.5);
  }
}

TEST(ValueAttributeTest, EveryGetterAndConversionConvertsTheStoredValue)
{
  const std::tuple<std::unique_ptr<Attribute>, int, bool, double, const char*> cases[] = {
      {holding(0.5), 0, true, 0.5, "0.500000"},
      {holding(1e-7), 0, true, 1e-7, "0.000000"},
      {holding(-3.75f), -3, true, -3.75, "-3.750000"},
      {holding(0.0), 0, false, 0.0, "0.000000"},
      {holding(true), 1, true, 1.0, "Yes"},
      {holding(false), 0, false, 0.0, "No"},
      {holding(-12), -12, true, -12.0, "-12"},
      {holding(0), 0, false, 0.0, "0"},
      {holding(std::string("1")), 1, true, 1.0, "1"},
  };
  for (const auto& [a, i, b, d, text] : cases)
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(a->getIntValue(C::Current, false), i);
    EXPECT_EQ(a->getDoubleValue(C::Current, false), d);
    EXPECT_EQ(a->getFloatValue(C::Current, false), static_cast<float>(d));
    EXPECT_EQ(a->getStringValue(C::Current, false), text);
    EXPECT_EQ(a->getBoolValue(C::Current, false), b);
  }
  // Standard rules for number texts: leading blanks skipped, trailing text ignored.
  EXPECT_EQ(holding(std::string(" 12abc"))->getIntValue(C::Current, false), 12);
  EXPECT_THROW_MSG(holding(std::string("2"))->getBoolValue(C::Current, false), std::invalid_argument,
                   "Invalid bool text '2'");
  // Conversions read Current.
  ValueAttribute<double> d("D", AccessType::None, nullptr);
  d.set(1.0, C::Initial);
  d.set(2.0, C::Current);
  EXPECT_EQ(std::make_tuple(double(d), int(d), float(d), std::string(d), bool(d)),
            std::make_tuple(2.0, 2, 2.f, std::string("2.000000"), true));
  d.set(0.0, C::Current);
  EXPECT_FALSE(static_cast<bool>(d));
}

TEST(ValueAttributeTest, EverySetterConvertsIntoTheStoredType)
{
  auto d = holding(0.0);
  auto b = holding(false);
  auto s = holding(std::string());
  const std::tuple<Attribute*, std::function<void(Attribute&)>, std::string> cases[] = {
      {d.get(), [](Attribute& a) { a.setStringValue("2.5e-1", C::Initial, false); }, "0.250000"},
      {d.get(), [](Attribute& a) { a.setIntValue(-3, C::Initial, false); }, "-3.000000"},
      {d.get(), [](Attribute& a) { a.setBoolValue(true, C::Initial, false); }, "1.000000"},
      {d.get(), [](Attribute& a) { a.setFloatValue(0.75f, C::Initial, false); }, "0.750000"},
      {b.get(), [](Attribute& a) { a.setIntValue(2, C::Initial, false); }, "Yes"},
      {b.get(), [](Attribute& a) { a.setDoubleValue(0.0, C::Initial, false); }, "No"},
      {b.get(), [](Attribute& a) { a.setFloatValue(-0.5f, C::Initial, false); }, "Yes"},
      {s.get(), [](Attribute& a) { a.setStringValue("  padded  ", C::Initial, false); }, "  padded  "},
      {s.get(), [](Attribute& a) { a.setDoubleValue(2.25, C::Initial, false); }, "2.250000"},
      {s.get(), [](Attribute& a) { a.setIntValue(-12, C::Initial, false); }, "-12"},
      {s.get(), [](Attribute& a) { a.setBoolValue(true, C::Initial, false); }, "Yes"},
  };
  for (const auto& [target, write, expected] : cases)
  {
    SCOPED_TRACE(expected);
    write(*target);
    EXPECT_EQ(target->getStringValue(C::Initial, false), expected);
  }
  for (const auto& [text, value] :
       {std::pair{"True", true}, {"Yes", true}, {"1", true}, {"False", false}, {"No", false}, {"0", false}})
  {
    SCOPED_TRACE(text);
    b->setBoolValue(!value, C::Initial, false);
    b->setStringValue(text, C::Initial, false);
    EXPECT_EQ(b->getBoolValue(C::Initial, false), value);
  }
}

TEST(ValueAttributeTest, TextFailuresKeepTheValueAndTheStandardMessages)
{
  const std::tuple<std::unique_ptr<Attribute>, const char*, const char*, bool> cases[] = {
      {holding(4), "abc", "invalid stoi argument", false},
      {holding(4), "99999999999", "stoi argument out of range", true},
      {holding(4.f), "x1", "invalid stof argument", false},
      {holding(4.f), "1e60", "stof argument out of range", true},
      {holding(4.0), "x1", "invalid stod argument", false},
      {holding(4.0), "1e999", "stod argument out of range", true},
      {holding(true), "yes", "Invalid bool text 'yes'", false},
      {holding(true), " Yes", "Invalid bool text ' Yes'", false},
  };
  for (const auto& [attribute, text, message, range] : cases)
  {
    SCOPED_TRACE(text);
    const std::string before = attribute->getStringValue(C::Initial, false);
    if (range)
      EXPECT_THROW_MSG(attribute->setStringValue(text, C::Initial, false), std::out_of_range, message);
    else
      EXPECT_THROW_MSG(attribute->setStringValue(text, C::Initial, false), std::invalid_argument, message);
    EXPECT_EQ(attribute->getStringValue(C::Initial, false), before);
  }
}

TEST(ValueAttributeTest, NumberToIntBounds)
{
  // A float holds 2147483520 (the largest below 2^31) and 2^31 exactly.
  const std::tuple<std::unique_ptr<Attribute>, int, const char*> cases[] = {
      {holding(2147483647.0), INT_MAX, ""},
      {holding(2147483647.9), INT_MAX, ""},
      {holding(-2147483648.0), INT_MIN, ""},
      {holding(-2147483648.9), INT_MIN, ""},
      {holding(-7.9), -7, ""},
      {holding(2147483648.0), 0, "Value 2147483648.000000 does not fit an Int"},
      {holding(-2147483649.0), 0, "Value -2147483649.000000 does not fit an Int"},
      {holding(1e10), 0, "Value 10000000000.000000 does not fit an Int"},
      {holding(kInf), 0, "Value inf does not fit an Int"},
      {holding(kNan), 0, "Value nan does not fit an Int"},
      {holding(2147483520.f), 2147483520, ""},
      {holding(2147483648.f), 0, "Value 2147483648.000000 does not fit an Int"},
      {holding(-2147483648.f), INT_MIN, ""},
      {holding(static_cast<float>(-kInf)), 0, "Value -inf does not fit an Int"},
  };
  for (const auto& [attribute, expected, message] : cases)
  {
    SCOPED_TRACE(attribute->getStringValue(C::Initial, false));
    if (*message)
      EXPECT_THROW_MSG(attribute->getIntValue(C::Initial, false), std::out_of_range, message);
    else
      EXPECT_EQ(attribute->getIntValue(C::Initial, false), expected);
  }
}

TEST(ValueAttributeTest, EqualityComparesUnitAndStoredValues)
{
  ValueAttribute<int> a("V", AccessType::ReadWrite, nullptr), b("V", AccessType::ReadWrite, nullptr);
  a.set(1, C::Initial);
  b.set(1, C::Initial);
  EXPECT_TRUE(a.isEqual(b));
  b.setUnit("m");
  EXPECT_FALSE(a.isEqual(b));
  b.setUnit("");
  b.set(1, C::Current); // the same reads, but chronological storage
  EXPECT_FALSE(a.isEqual(b));
  a.set(1, C::Current);
  EXPECT_TRUE(a.isEqual(b));
  // A stored NaN equals itself, so models with NaN round-trip.
  EXPECT_TRUE(holding(kNan)->isEqual(*holding(kNan)));
}

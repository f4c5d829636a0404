#include "ombrix/model/ValueText.h"

#include "support/TestSupport.h"

#include <cmath>
#include <limits>

namespace
{

using namespace Ombrix::Model;

TEST(ValueTextTest, RoundTripFormReadsBackBitIdentical)
{
  using D = std::numeric_limits<double>;
  using F = std::numeric_limits<float>;
  for (double value : {0.0, -0.0, 0.1, 1.0 / 3.0, -1e300, D::max(), D::lowest(), D::min(), D::denorm_min(),
                       1e-310, D::infinity(), -D::infinity()})
  {
    SCOPED_TRACE(value);
    const double back = parseDouble(toText(value, NumberFormat::RoundTrip));
    EXPECT_EQ(back, value);
    EXPECT_EQ(std::signbit(back), std::signbit(value));
  }
  for (float value : {0.1f, -F::max(), F::min(), F::denorm_min(), 1e-40f, F::infinity()})
  {
    SCOPED_TRACE(value);
    EXPECT_EQ(parseFloat(toText(value, NumberFormat::RoundTrip)), value);
  }
  EXPECT_EQ(toText(D::denorm_min(), NumberFormat::RoundTrip), "5e-324");
  EXPECT_TRUE(std::isnan(parseDouble(toText(D::quiet_NaN(), NumberFormat::RoundTrip))));
  // The default form has six decimals; the round-trip form is the shortest that reads back.
  EXPECT_EQ(toText(1.0 / 3.0), "0.333333");
  EXPECT_EQ(toText(-0.5f), "-0.500000");
  EXPECT_EQ(toText(0.1, NumberFormat::RoundTrip), "0.1");
  EXPECT_EQ(toText(0.1f, NumberFormat::RoundTrip), "0.1");
  std::string out = "x=";
  appendText(out, 42);
  appendText(out, false);
  appendText(out, 0.5);
  appendText(out, 1.5f, NumberFormat::RoundTrip);
  EXPECT_EQ(out, "x=42No0.5000001.5");
}

TEST(ValueTextTest, ParsingFollowsTheStandardConversions)
{
  // {text, value, characters used}
  const std::tuple<const char*, double, std::size_t> cases[] = {
      {" \t1.5x", 1.5, 5}, {"+2", 2.0, 2}, {"-.5", -0.5, 3},       {"1e3", 1000.0, 3}, {"1e", 1.0, 1},
      {"0x1.8p1", 3.0, 7}, {"0x", 0.0, 1}, {"-INF", -INFINITY, 4}, {"1,5", 1.0, 1},    {"5e-324", 5e-324, 6},
  };
  EXPECT_TRUE(std::isnan(parseDouble("nan")));
  std::size_t used = 0;
  for (const auto& [text, value, expectedUsed] : cases)
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(parseDouble(text, &used), value);
    EXPECT_EQ(used, expectedUsed);
  }
  EXPECT_EQ(parseInt(" -2147483648 ", &used), std::numeric_limits<int>::min());
  EXPECT_EQ(used, 12u);
  EXPECT_EQ(parseInt("+7"), 7);
  // {text, out of range (else invalid), message}
  const std::tuple<const char*, bool, const char*> failures[] = {
      {"", false, "invalid stod argument"},           {"+-1", false, "invalid stod argument"},
      {"- 1", false, "invalid stod argument"},        {"1e999", true, "stod argument out of range"},
      {"1e-999", true, "stod argument out of range"},
  };
  for (const auto& [text, range, message] : failures)
  {
    SCOPED_TRACE(text);
    if (range)
      EXPECT_THROW_MSG(parseDouble(text), std::out_of_range, message);
    else
      EXPECT_THROW_MSG(parseDouble(text), std::invalid_argument, message);
  }
  EXPECT_THROW_MSG(parseInt("2147483648"), std::out_of_range, "stoi argument out of range");
  EXPECT_THROW_MSG(parseInt("+-1"), std::invalid_argument, "invalid stoi argument");
  EXPECT_THROW_MSG(parseFloat("1e39"), std::out_of_range, "stof argument out of range");
}

} // namespace

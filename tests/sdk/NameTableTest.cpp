#include "ombrix/sdk/NameTable.h"

#include "support/Tables.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

enum class Colour
{
  Red = 0,
  Green = 1,
  Blue = 7,
  Unnamed = 9,
};

constexpr auto colours = Ombrix::makeNameTable<Colour>({
    {Colour::Red, "Red"},
    {Colour::Green, "Green"},
    {Colour::Blue, "Blue"},
});

// The lookups run at compile time, so tables can be checked where they are defined.
static_assert(colours.nameOr(Colour::Blue) == "Blue");
static_assert(colours.valueOr("Green", Colour::Red) == Colour::Green);
static_assert(!colours.findName(Colour::Unnamed));

} // namespace

TEST(NameTable, TextMatchesExactlyOrGivesTheFallback)
{
  OmbrixTest::expectNames(
      {{0, "Red"}, {1, "Green"}, {7, "Blue"}}, [](Colour c) { return colours.nameOr(c); },
      [](const std::string& text, Colour fallback) { return colours.valueOr(text, fallback); },
      Colour::Unnamed);
  EXPECT_EQ(colours.findName(Colour::Green), "Green");
  EXPECT_EQ(colours.findValue("Blue"), Colour::Blue);
  for (const char* text : {"", "RED", "Redd", "Blue\n"})
    EXPECT_FALSE(colours.findValue(text)) << text;
  // An embedded NUL is part of the text, not its end.
  EXPECT_EQ(colours.valueOr(std::string("Red\0x", 5), Colour::Unnamed), Colour::Unnamed);
}

TEST(NameTable, UnknownValueGivesTheFallbackName)
{
  for (Colour value : {Colour::Unnamed, static_cast<Colour>(2), static_cast<Colour>(-1)})
  {
    SCOPED_TRACE(static_cast<int>(value));
    EXPECT_FALSE(colours.findName(value));
    EXPECT_EQ(colours.nameOr(value), "");
    EXPECT_EQ(colours.nameOr(value, "Red"), "Red");
  }
}

TEST(NameTable, FirstEntryWinsForRepeatedValuesAndTexts)
{
  constexpr auto aliases =
      Ombrix::makeNameTable<Colour>({{Colour::Red, "Red"}, {Colour::Red, "Crimson"}, {Colour::Green, "Red"}});
  EXPECT_EQ(aliases.nameOr(Colour::Red), "Red");
  EXPECT_EQ(aliases.valueOr("Red", Colour::Blue), Colour::Red);
  EXPECT_EQ(aliases.valueOr("Crimson", Colour::Blue), Colour::Red);
  EXPECT_EQ(aliases.nameOr(Colour::Green), "Red");
}

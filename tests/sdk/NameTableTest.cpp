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
static_assert(colours.findName(Colour::Green) == "Green" && colours.findValue("Blue") == Colour::Blue);
static_assert(!colours.findValue("") && !colours.findValue("RED") && !colours.findValue("Blue\n"));
// An unknown value has no name, and gives the fallback name ("" unless given).
static_assert(!colours.findName(Colour::Unnamed) && !colours.findName(static_cast<Colour>(-1)));
static_assert(colours.nameOr(static_cast<Colour>(2)).empty() &&
              colours.nameOr(Colour::Unnamed, "Red") == "Red");
// The first entry wins for repeated values and texts.
constexpr auto aliases =
    Ombrix::makeNameTable<Colour>({{Colour::Red, "Red"}, {Colour::Red, "Crimson"}, {Colour::Green, "Red"}});
static_assert(aliases.nameOr(Colour::Red) == "Red" && aliases.nameOr(Colour::Green) == "Red");
static_assert(aliases.valueOr("Red", Colour::Blue) == Colour::Red &&
              aliases.valueOr("Crimson", Colour::Blue) == Colour::Red);

} // namespace

TEST(NameTable, TextMatchesExactlyOrGivesTheFallback)
{
  OmbrixTest::expectNames(
      {{0, "Red"}, {1, "Green"}, {7, "Blue"}}, [](Colour c) { return colours.nameOr(c); },
      [](const std::string& text, Colour fallback) { return colours.valueOr(text, fallback); },
      Colour::Unnamed);
  // An embedded NUL is part of the text, not its end.
  EXPECT_EQ(colours.valueOr(std::string("Red\0x", 5), Colour::Unnamed), Colour::Unnamed);
}

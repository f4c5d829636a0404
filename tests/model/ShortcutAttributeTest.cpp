#include "ombrix/model/ShortcutAttribute.h"

#include "ombrix/model/AccessException.h"
#include "ombrix/model/Entity.h"

#include "model/ModelTestSupport.h"
#include "support/TestSupport.h"

#include <limits>
#include <stdexcept>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using C = KorvanSDK::Chronology;
using OmbrixTest::addShortcut;
using OmbrixTest::addValue;

namespace
{

// Entity "Pump" with a composite "Group"; shortcut paths are relative to the entity even for shortcuts
// that sit in the group.
class ShortcutAttributeTest : public ::testing::Test
{
protected:
  Entity entity{"Pump", "P"};
  CompositeAttribute& group = OmbrixTest::addComposite(entity, "Group");
};

} // namespace

TEST_F(ShortcutAttributeTest, AddingIgnoresEmptyAndDuplicatePathsAndEqualityComparesPathsInOrder)
{
  auto& s = addShortcut(group, "S", {"A", "B"});
  s.addShortcut(AttributePath("A"));
  s.addShortcut(AttributePath());
  s.addShortcut(AttributePath(""));
  EXPECT_EQ(s.shortcuts(), (std::vector<AttributePath>{"A", "B"}));
  ShortcutAttribute a("S", AccessType::ReadOnly, nullptr);
  ShortcutAttribute b("S", AccessType::ReadOnly, nullptr);
  a.addShortcut(std::vector<AttributePath>{"A", "B"});
  b.addShortcut(std::vector<AttributePath>{"B", "A"});
  EXPECT_FALSE(a.isEqual(b));
  b.shortcuts() = a.shortcuts();
  EXPECT_TRUE(a.isEqual(b));
}

TEST_F(ShortcutAttributeTest, ReadsGiveTheValueAllResolvableTargetsAgreeOn)
{
  addValue<int>(entity, "I3", 3);
  addValue<int>(entity, "I3b", 3);
  addValue<int>(entity, "I4", 4);
  addValue<std::string>(entity, "Sa", "a");
  addValue<std::string>(entity, "Sb", "b");
  addValue<double>(entity, "Nan", std::numeric_limits<double>::quiet_NaN());
  auto& differ = addShortcut(group, "Differ", {"I3", "I4"});
  auto& same = addShortcut(group, "Same", {"I3", "I3b"});
  auto& partial = addShortcut(group, "Partial", {"Missing", "I3"});
  auto& none = addShortcut(group, "None", {"Missing"});
  EXPECT_EQ(differ.getIntValue(C::Current, false), 0);
  EXPECT_EQ(differ.getDoubleValue(C::Current, false), 0.0);
  EXPECT_EQ(differ.getStringValue(C::Current, false), "");
  EXPECT_TRUE(differ.getBoolValue(C::Current, false)); // 3 and 4 agree as bools
  EXPECT_EQ(same.getIntValue(C::Current, false), 3);
  EXPECT_EQ(same.getFloatValue(C::Current, false), 3.f);
  EXPECT_TRUE(same.hasValue(C::Current, false));
  EXPECT_EQ(partial.getIntValue(C::Current, false), 3);
  EXPECT_EQ(partial.getStringValue(C::Current, false), "3");
  EXPECT_EQ(addShortcut(group, "Strings", {"Sa", "Sb"}).getStringValue(C::Current, false), "");
  EXPECT_EQ(addShortcut(group, "Nan", {"Nan"}).getDoubleValue(C::Current, false), 0.0) << "NaN never agrees";

  EXPECT_EQ(none.getIntValue(C::Current, false), 0);
  EXPECT_FALSE(none.hasValue(C::Current, false));
  EXPECT_THROW_MSG(none.getBoolValue(C::Current, false), std::runtime_error, "Not Available");
  EXPECT_THROW_MSG(none.getFloatValue(C::Current, false), std::runtime_error, "Not Available");
  EXPECT_THROW_MSG(none.getDoubleValue(C::Current, false), std::runtime_error, "Not Available");
  EXPECT_THROW_MSG(none.getStringValue(C::Current, false), std::runtime_error, "Not Available");
}

TEST_F(ShortcutAttributeTest, TypesAndUnits)
{
  addValue<int>(entity, "I", 1).setUnit("m");
  addValue<int>(entity, "J", 1).setUnit("m");
  addValue<double>(entity, "D", 1.0).setUnit("s");
  auto& ints = addShortcut(entity, "Ints", {"I", "J"});
  auto& mixed = addShortcut(entity, "Mixed", {"I", "D"});
  auto& none = addShortcut(entity, "None", {"X"});
  // {shortcut, resolved type, unit, has units}; unresolved, every shortcut is a Shortcut.
  const std::tuple<ShortcutAttribute*, AttributeType, const char*, bool> cases[] = {
      {&ints, AttributeType::Int, "m", true},
      {&mixed, AttributeType::Unknown, "", true}, // both targets have a unit
      {&none, AttributeType::Unknown, "", false},
      {&addShortcut(entity, "Nested", {"Ints"}), AttributeType::Int, "m", true},
  };
  for (const auto& [shortcut, type, unit, hasUnits] : cases)
  {
    SCOPED_TRACE(shortcut->getType());
    EXPECT_EQ(shortcut->getAttributeType(true), type);
    EXPECT_EQ(shortcut->getUnit(), unit);
    EXPECT_EQ(shortcut->hasUnits(), hasUnits);
    EXPECT_TRUE(shortcut->isShortcut());
  }
  ints.setUnit("km");
  EXPECT_EQ(entity.getAttribute(AttributePath("I")).getUnit(), "km");
  EXPECT_EQ(entity.getAttribute(AttributePath("J")).getUnit(), "km");
}

TEST_F(ShortcutAttributeTest, WritesEveryTargetAndRethrowsTheFirstError)
{
  auto& a = addValue<int>(entity, "A", 0);
  auto& b = addValue<int>(entity, "B", 0, AccessType::ReadOnly);
  auto& c = addValue<int>(entity, "C", 0);
  auto& d = addValue<int>(entity, "D", 0, AccessType::None);
  a.setUnit("m");
  c.setUnit("s");
  auto& s = addShortcut(group, "S", {"A", "Gone", "B", "C", "D"});
  // The shortcut's unit argument is not used; each target keeps its own.
  EXPECT_THROW_MSG(s.setIntValue(5, "furlong", C::Current, true), AccessException,
                   "User has no write access");
  EXPECT_EQ(std::make_tuple(a.get(), b.get(), c.get(), d.get()), std::make_tuple(5, 0, 5, 0));
  s.setDoubleValue(6.0, C::Initial, false);
  s.setFloatValue(7.f, C::Next, false);
  s.setBoolValue(true, C::Continue, false);
  EXPECT_EQ(std::make_tuple(b.get(C::Initial), d.get(C::Next), a.get(C::Continue)), std::make_tuple(6, 7, 1));
  s.setStringValue("8", "x", C::Initial, false);
  EXPECT_EQ(a.get(C::Initial), 8);
  EXPECT_THROW_MSG(s.setStringValue("q", C::Initial, false), std::invalid_argument, "invalid stoi argument");

  // With no entity above, nothing resolves and nothing is written.
  CompositeAttribute root("Root", AccessType::ReadWrite, nullptr);
  auto& v = addValue<int>(root, "V", 1);
  auto& loose = addShortcut(root, "S", {"V"});
  EXPECT_EQ(loose.getShortcut(0), nullptr);
  EXPECT_EQ(loose.getIntValue(C::Current, false), 0);
  loose.setIntValue(9, C::Current, false);
  EXPECT_EQ(v.get(), 1);
}

TEST_F(ShortcutAttributeTest, IndexLookupsAndTargets)
{
  auto& v = addValue<int>(entity, "V", 1);
  auto& w = addValue<int>(entity, "W", 1);
  auto& s = addShortcut(group, "S", {"Missing", "V", "Group"});
  EXPECT_EQ(s.getShortcut(0), nullptr);
  EXPECT_EQ(s.getShortcut(1), &v);
  EXPECT_EQ(s[2], &group);
  EXPECT_EQ(s.getFirstValidShortcut(), &v);
  EXPECT_THROW_MSG(s[17], std::out_of_range, "No Shortcut_i='17'");

  auto& inner = addShortcut(entity, "Inner", {"W"});
  auto& outer = addShortcut(entity, "Outer", {"V", "Inner"});
  auto& broken = addShortcut(entity, "Broken", {"Missing", "V"});
  auto& empty = addShortcut(entity, "Empty", {});
  EXPECT_EQ(empty.getFirstValidShortcut(), nullptr);
  // {shortcut, attribute, recursive, is a target}
  const std::tuple<ShortcutAttribute*, Attribute*, bool, bool> cases[] = {
      {&outer, &v, false, true},
      {&outer, &inner, false, true},
      {&outer, &w, false, false},
      {&outer, &w, true, true},
      {&outer, nullptr, true, false},
      {&broken, &v, true, false}, // the unresolvable first path ends the search
      {&broken, nullptr, true, true},
      {&empty, nullptr, true, false},
  };
  for (const auto& [shortcut, attribute, recursive, expected] : cases)
    EXPECT_EQ(shortcut->isShortcutTarget(attribute, recursive), expected)
        << shortcut->getType() << " " << (attribute ? attribute->getType() : "null") << " " << recursive;
}

TEST_F(ShortcutAttributeTest, CleanupRemovesUnresolvablePathsInOrderAndFindsCycles)
{
  addValue<int>(entity, "V", 1);
  addValue<int>(entity, "W", 1);
  auto& s = addShortcut(entity, "S", {"X", "V", "Y", "W", "Z"});
  s.cleanupNonExistingShortcuts();
  EXPECT_EQ(s.shortcuts(), (std::vector<AttributePath>{"V", "W"}));

  auto& a = addShortcut(entity, "A", {"Missing", "B"});
  addShortcut(entity, "B", {"A"});
  EXPECT_THROW_MSG(a.cleanupNonExistingShortcuts(), std::logic_error, "Shortcut targets itself");
  EXPECT_EQ(a.getNumberOfShortcuts(), 2u); // nothing removed
  // X -> Y -> Z -> X: found through isShortcutTarget of the second level.
  auto& x = addShortcut(entity, "X", {"Y"});
  addShortcut(entity, "Y", {"Z"});
  addShortcut(entity, "Z", {"X"});
  EXPECT_THROW_MSG(x.cleanupNonExistingShortcuts(), std::logic_error, "Shortcut targets itself");
  // Reads through a cycle do not recurse forever: the cycle is only a problem for clean-up.
  EXPECT_FALSE(x.isShortcutTarget(&entity, true));
}

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
using OmbrixTest::addValue;

namespace
{

class ShortcutAttributeTest : public ::testing::Test
{
protected:
  ShortcutAttribute& addShortcut(CompositeAttribute& parent, const std::string& name,
                                 std::vector<AttributePath> paths)
  {
    auto* shortcut = static_cast<ShortcutAttribute*>(
        parent.createAttribute(AttributeType::Shortcut, name, AccessType::ReadWrite));
    shortcut->addShortcut(paths);
    return *shortcut;
  }

  Entity entity{"Pump", "P"};
  CompositeAttribute& group = OmbrixTest::addComposite(entity, "Group");
};

} // namespace

TEST_F(ShortcutAttributeTest, AddingIgnoresEmptyAndDuplicatePaths)
{
  auto& s = addShortcut(group, "S", {AttributePath("A"), AttributePath("B")});
  s.addShortcut(AttributePath("A"));
  s.addShortcut(AttributePath());
  s.addShortcut(AttributePath(""));
  EXPECT_EQ(s.getNumberOfShortcuts(), 2u);
  EXPECT_EQ(s.shortcuts()[1].toString(), "B");
}

TEST_F(ShortcutAttributeTest, ReadsAgreementTable)
{
  addValue<int>(entity, "I3", 3);
  addValue<int>(entity, "I3b", 3);
  addValue<int>(entity, "I4", 4);
  addValue<std::string>(entity, "Sa", "a");
  addValue<std::string>(entity, "Sb", "b");
  addValue<double>(entity, "Nan1", std::numeric_limits<double>::quiet_NaN());
  addValue<double>(entity, "Nan2", std::numeric_limits<double>::quiet_NaN());
  // Paths are relative to the nearest entity even though the shortcuts sit in a composite.
  auto& differ = addShortcut(group, "Differ", {AttributePath("I3"), AttributePath("I4")});
  auto& same = addShortcut(group, "Same", {AttributePath("I3"), AttributePath("I3b")});
  auto& partial = addShortcut(group, "Partial", {AttributePath("Missing"), AttributePath("I3")});
  auto& strings = addShortcut(group, "Strings", {AttributePath("Sa"), AttributePath("Sb")});
  auto& nans = addShortcut(group, "Nans", {AttributePath("Nan1"), AttributePath("Nan2")});
  auto& none = addShortcut(group, "None", {AttributePath("Missing")});

  EXPECT_EQ(differ.getIntValue(C::Current, false), 0);
  EXPECT_EQ(differ.getDoubleValue(C::Current, false), 0.0);
  EXPECT_EQ(differ.getStringValue(C::Current, false), "");
  EXPECT_TRUE(differ.getBoolValue(C::Current, false)); // 3 and 4 agree as bools
  EXPECT_EQ(same.getIntValue(C::Current, false), 3);
  EXPECT_EQ(same.getFloatValue(C::Current, false), 3.f);
  EXPECT_EQ(partial.getIntValue(C::Current, false), 3);
  EXPECT_EQ(partial.getStringValue(C::Current, false), "3");
  EXPECT_EQ(strings.getStringValue(C::Current, false), "");
  EXPECT_EQ(nans.getDoubleValue(C::Current, false), 0.0);
  EXPECT_TRUE(same.hasValue(C::Current, false));

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
  auto& ints = addShortcut(entity, "Ints", {AttributePath("I"), AttributePath("J")});
  auto& mixed = addShortcut(entity, "Mixed", {AttributePath("I"), AttributePath("D")});
  auto& nested = addShortcut(entity, "Nested", {AttributePath("Ints")});
  auto& none = addShortcut(entity, "None", {AttributePath("X")});
  EXPECT_EQ(ints.getAttributeType(false), AttributeType::Shortcut);
  EXPECT_EQ(mixed.getAttributeType(false), AttributeType::Shortcut);
  EXPECT_EQ(ints.getAttributeType(true), AttributeType::Int);
  EXPECT_EQ(mixed.getAttributeType(true), AttributeType::Unknown);
  EXPECT_EQ(nested.getAttributeType(true), AttributeType::Int);
  EXPECT_EQ(none.getAttributeType(true), AttributeType::Unknown);
  EXPECT_TRUE(ints.isShortcut());
  EXPECT_EQ(ints.getUnit(), "m");
  EXPECT_TRUE(ints.hasUnits());
  EXPECT_EQ(mixed.getUnit(), "");
  EXPECT_TRUE(mixed.hasUnits()); // both targets have a unit
  EXPECT_EQ(none.getUnit(), "");
  EXPECT_FALSE(none.hasUnits());

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
  auto& s = addShortcut(group, "S",
                        {AttributePath("A"), AttributePath("Gone"), AttributePath("B"), AttributePath("C"),
                         AttributePath("D")});
  // The shortcut's unit argument is not used; each target keeps its own.
  EXPECT_THROW_MSG(s.setIntValue(5, "furlong", C::Current, true), AccessException,
                   "User has no write access");
  EXPECT_EQ(a.get(C::Current), 5);
  EXPECT_EQ(b.get(C::Current), 0);
  EXPECT_EQ(c.get(C::Current), 5);
  EXPECT_EQ(d.get(C::Current), 0);
  s.setDoubleValue(6.0, C::Initial, false);
  EXPECT_EQ(b.get(C::Initial), 6);
  EXPECT_EQ(d.get(C::Initial), 6);
  s.setStringValue("7", "x", C::Initial, false);
  EXPECT_EQ(a.get(C::Initial), 7);
  EXPECT_THROW_MSG(s.setStringValue("q", C::Initial, false), std::invalid_argument, "invalid stoi argument");
}

TEST_F(ShortcutAttributeTest, IndexLookups)
{
  auto& v = addValue<int>(entity, "V", 1);
  auto& s = addShortcut(group, "S", {AttributePath("Missing"), AttributePath("V"), AttributePath("Group")});
  EXPECT_EQ(s.getShortcut(0), nullptr);
  EXPECT_EQ(s.getShortcut(1), &v);
  EXPECT_EQ(s[2], &group);
  EXPECT_EQ(s.getFirstValidShortcut(), &v);
  EXPECT_THROW_MSG(s.getShortcut(3), std::out_of_range, "No Shortcut_i='3'");
  EXPECT_THROW_MSG(s[17], std::out_of_range, "No Shortcut_i='17'");
  auto& empty = addShortcut(group, "Empty", {});
  EXPECT_EQ(empty.getFirstValidShortcut(), nullptr);
}

TEST_F(ShortcutAttributeTest, IsShortcutTarget)
{
  auto& v = addValue<int>(entity, "V", 1);
  auto& w = addValue<int>(entity, "W", 1);
  auto& inner = addShortcut(entity, "Inner", {AttributePath("W")});
  auto& outer = addShortcut(entity, "Outer", {AttributePath("V"), AttributePath("Inner")});
  auto& broken = addShortcut(entity, "Broken", {AttributePath("Missing"), AttributePath("V")});
  auto& empty = addShortcut(entity, "Empty", {});
  EXPECT_TRUE(outer.isShortcutTarget(&v, false));
  EXPECT_TRUE(outer.isShortcutTarget(&inner, false));
  EXPECT_FALSE(outer.isShortcutTarget(&w, false));
  EXPECT_TRUE(outer.isShortcutTarget(&w, true));
  EXPECT_FALSE(outer.isShortcutTarget(nullptr, true));
  EXPECT_FALSE(broken.isShortcutTarget(&v, true)); // the unresolvable first path ends the search
  EXPECT_TRUE(broken.isShortcutTarget(nullptr, true));
  EXPECT_FALSE(empty.isShortcutTarget(nullptr, true));
}

TEST_F(ShortcutAttributeTest, CleanupRemovesUnresolvablePathsInOrder)
{
  addValue<int>(entity, "V", 1);
  addValue<int>(entity, "W", 1);
  auto& s = addShortcut(
      entity, "S",
      {AttributePath("X"), AttributePath("V"), AttributePath("Y"), AttributePath("W"), AttributePath("Z")});
  s.cleanupNonExistingShortcuts();
  ASSERT_EQ(s.getNumberOfShortcuts(), 2u);
  EXPECT_EQ(s.shortcuts()[0].toString(), "V");
  EXPECT_EQ(s.shortcuts()[1].toString(), "W");
}

TEST_F(ShortcutAttributeTest, CleanupFindsCycles)
{
  auto& a = addShortcut(entity, "A", {AttributePath("Missing"), AttributePath("B")});
  addShortcut(entity, "B", {AttributePath("A")});
  EXPECT_THROW_MSG(a.cleanupNonExistingShortcuts(), std::logic_error, "Shortcut targets itself");
  EXPECT_EQ(a.getNumberOfShortcuts(), 2u); // nothing removed

  // A -> C -> D -> A: found through isShortcutTarget of the second level.
  auto& x = addShortcut(entity, "X", {AttributePath("Y")});
  addShortcut(entity, "Y", {AttributePath("Z")});
  addShortcut(entity, "Z", {AttributePath("X")});
  EXPECT_THROW_MSG(x.cleanupNonExistingShortcuts(), std::logic_error, "Shortcut targets itself");

  // Reads through a cycle do not recurse forever: the cycle is only a problem for clean-up.
  EXPECT_FALSE(x.isShortcutTarget(&entity, true));
}

TEST_F(ShortcutAttributeTest, NoEntityAboveResolvesNothing)
{
  CompositeAttribute root("Root", AccessType::ReadWrite, nullptr);
  OmbrixTest::addValue<int>(root, "V", 1);
  auto* s = static_cast<ShortcutAttribute*>(
      root.createAttribute(AttributeType::Shortcut, "S", AccessType::ReadWrite));
  s->addShortcut(AttributePath("V"));
  EXPECT_EQ(s->getShortcut(0), nullptr);
  EXPECT_EQ(s->getIntValue(C::Current, false), 0);
  EXPECT_THROW_MSG(s->getDoubleValue(C::Current, false), std::runtime_error, "Not Available");
  s->setIntValue(9, C::Current, false); // no target: nothing to write
  EXPECT_EQ(root.getAttribute(AttributePath("V")).getIntValue(C::Current, false), 1);
}

TEST_F(ShortcutAttributeTest, EqualityComparesPathsInOrder)
{
  ShortcutAttribute a("S", AccessType::ReadOnly, nullptr);
  ShortcutAttribute b("S", AccessType::ReadOnly, nullptr);
  a.addShortcut(std::vector<AttributePath>{AttributePath("A"), AttributePath("B")});
  b.addShortcut(std::vector<AttributePath>{AttributePath("B"), AttributePath("A")});
  EXPECT_FALSE(a.isEqual(b));
  b.shortcuts() = a.shortcuts();
  EXPECT_TRUE(a.isEqual(b));
}

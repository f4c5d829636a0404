#include "ombrix/model/CompositeAttribute.h"

#include "ombrix/model/Entity.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include "model/ModelTestSupport.h"
#include "support/TestSupport.h"

#include <functional>
#include <stdexcept>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using C = KorvanSDK::Chronology;

TEST(CompositeAttributeTest, CreateAndAddRefuseDuplicatesAndSetTheParent)
{
  CompositeAttribute composite("Group", AccessType::ReadWrite, nullptr);
  Attribute* first = composite.createAttribute(AttributeType::Double, "Value", AccessType::ReadOnly);
  EXPECT_EQ(first->getParent(), &composite);
  EXPECT_EQ(std::make_pair(first->getAttributeType(), first->getAccessType()),
            std::make_pair(AttributeType::Double, AccessType::ReadOnly));
  EXPECT_EQ(composite.createAttribute(AttributeType::Int, "Value", AccessType::ReadWrite), nullptr);
  auto& added = OmbrixTest::addValue(composite, "A", 1);
  EXPECT_EQ(added.getParent(), &composite);
  EXPECT_EQ(composite.addAttribute(std::make_unique<DoubleAttribute>("A", AccessType::ReadWrite, nullptr)),
            nullptr);
  EXPECT_EQ(composite.addAttribute(nullptr), nullptr);
  EXPECT_EQ(composite.size(), 2u);
  EXPECT_EQ(&composite.getAttribute(AttributePath("Value")), first);
  EXPECT_EQ(&composite.getAttribute(AttributePath("A")), &added);
  // A dotted name is a child's name, which a path cannot reach.
  ASSERT_NE(composite.createAttribute(AttributeType::Int, "a.b", AccessType::ReadWrite), nullptr);
  EXPECT_EQ(composite.findAttribute(AttributePath("a.b")), nullptr);
  EXPECT_NE(composite.findChild("a.b"), nullptr);
}

TEST(CompositeAttributeTest, FactoryMakesEveryKindAndRefusesOthers)
{
  for (int kind = 1; kind <= 11; ++kind)
    EXPECT_EQ(
        static_cast<int>(createAttribute(static_cast<AttributeType>(kind), nullptr)->getAttributeType(false)),
        kind);
  EXPECT_EQ(createAttribute("Double", nullptr)->getAttributeType(), AttributeType::Double);
  EXPECT_THROW_MSG(createAttribute(AttributeType::Unknown, nullptr), std::logic_error, "Invalid type");
  EXPECT_THROW_MSG(createAttribute(static_cast<AttributeType>(12), nullptr), std::logic_error,
                   "Invalid type");
  EXPECT_THROW_MSG(createAttribute("double", nullptr), std::logic_error, "Invalid type");
  CompositeAttribute composite;
  EXPECT_THROW_MSG(composite.createAttribute(AttributeType::Unknown, "X", AccessType::None), std::logic_error,
                   "Invalid type");
  EXPECT_EQ(composite.size(), 0u);
}

TEST(CompositeAttributeTest, PathLookup)
{
  auto entity = OmbrixTest::makeEntity("Pump", "P1", EntityID(12, 3));
  auto& group = OmbrixTest::addComposite(*entity, "Group");
  auto& value = OmbrixTest::addValue<double>(group, "Time Step", 0.5);
  OmbrixTest::addValue<double>(*entity, "Time", 1.0);
  Entity* server = OmbrixTest::addLink<ListAttribute>(*entity, "Servers", true)
                       .addEntity(OmbrixTest::makeEntity("Server", "S0", EntityID(2, 2)));
  auto& name = OmbrixTest::addValue<std::string>(*server, "Name", "alpha");
  EXPECT_EQ(&entity->getAttribute(AttributePath()), entity.get());
  EXPECT_EQ(&entity->getAttribute(AttributePath("Servers.0.Name")), &name);
  EXPECT_EQ(entity->findAttribute(AttributePath("Servers.1.Name")), nullptr);
  EXPECT_EQ(&entity->getAttribute(AttributePath("Group.Time Step")), &value);
  EXPECT_EQ(&(*entity)[AttributePath("Group")], &group);
  EXPECT_TRUE(entity->hasAttribute(AttributePath("Time")));
  EXPECT_EQ(value.getAttributePath(true).toString(), "Group.Time Step");
  EXPECT_EQ(value.getAttributePath(false).toString(), "Pump.Group.Time Step");

  // Past a link the message names the entity there; without an entity above, the absolute path.
  CompositeAttribute root("Root", AccessType::ReadWrite, nullptr);
  auto& inner = OmbrixTest::addComposite(root, "Inner");
  OmbrixTest::addValue<int>(inner, "V", 1);
  const std::tuple<const CompositeAttribute*, const char*, const char*> cases[] = {
      {entity.get(), "Missing", "Invalid path [12-3] of type Pump : Missing"},
      {entity.get(), "Group.time step", "Invalid path [12-3] of type Pump : Group.time step"},
      {entity.get(), "Time.X", "Invalid path [12-3] of type Pump : Time.X"},
      {entity.get(), "Group.Nope.Deeper", "Invalid path [12-3] of type Pump : Group.Nope.Deeper"},
      {&group, "Nope", "Invalid path [12-3] of type Pump : Group.Nope"},
      {&group, "Time Step.X", "Invalid path [12-3] of type Pump : Group.Time Step.X"},
      {entity.get(), "Servers.0.Other", "Invalid path [2-2] of type Server : Other"},
      {&root, "Inner.V.W", "Invalid path Root.Inner.V.W"},
      {&inner, "Missing", "Invalid path Root.Inner.Missing"},
  };
  for (const auto& [from, path, message] : cases)
  {
    SCOPED_TRACE(path);
    EXPECT_THROW_MSG(from->getAttribute(AttributePath(path)), std::runtime_error, message);
    EXPECT_EQ(from->findAttribute(AttributePath(path)), nullptr);
    EXPECT_FALSE(from->hasAttribute(AttributePath(path)));
  }
}

TEST(CompositeAttributeTest, RecursiveIndexNumbering)
{
  auto entity = OmbrixTest::makeEntity("Pump", "P1", EntityID(12, 3));
  auto& a = OmbrixTest::addComposite(*entity, "A");
  auto& a0 = OmbrixTest::addValue<int>(a, "A0", 0);
  auto& a1 = OmbrixTest::addValue<int>(a, "A1", 1);
  auto& b = OmbrixTest::addValue<int>(*entity, "B", 2);
  const Attribute* expected[] = {&a, &a0, &a1, &b};
  for (std::uint64_t i = 0; i < 4; ++i)
    EXPECT_EQ(&entity->getAttribute(i, true), expected[i]) << i;
  EXPECT_EQ(entity->getNumberOfAttributes(true), 4u);
  EXPECT_EQ(entity->getNumberOfAttributes(false), 2u);
  EXPECT_EQ(&entity->getAttribute(1, false), &b);

  CompositeAttribute root("Root", AccessType::ReadWrite, nullptr);
  auto& inner = OmbrixTest::addComposite(root, "Inner");
  const std::tuple<const CompositeAttribute*, std::uint64_t, bool, const char*> cases[] = {
      {entity.get(), 2, false, "No Attribute Found for [12-3] of type Pump child_i='2'"},
      {&a, 2, true, "No Attribute Found for [12-3] of type Pump child_i='2'"},
      {&root, 1, true, "No Attribute Found for Root child_i='1'"},
      {&inner, 0, false, "No Attribute Found for Root.Inner child_i='0'"},
  };
  for (const auto& [from, index, recursive, message] : cases)
    EXPECT_THROW_MSG(from->getAttribute(index, recursive), std::out_of_range, message);
}

TEST(CompositeAttributeTest, ValueAccessIsNotAvailable)
{
  const C now = C::Current;
  const std::function<void(Attribute&)> calls[] = {
      [](Attribute& a) { a.getIntValue(now, false); },
      [](Attribute& a) { a.getBoolValue(now, false); },
      [](Attribute& a) { a.getFloatValue(now, false); },
      [](Attribute& a) { a.getDoubleValue(now, false); },
      [](Attribute& a) { a.getStringValue(now, false); },
      [](Attribute& a) { a.setIntValue(1, now, false); },
      [](Attribute& a) { a.setBoolValue(true, now, false); },
      [](Attribute& a) { a.setFloatValue(1.f, now, false); },
      [](Attribute& a) { a.setDoubleValue(1, now, false); },
      [](Attribute& a) { a.setStringValue("x", now, false); },
      [](Attribute& a) { a.setUnit("m"); },
  };
  Entity entity("T", "N");
  CompositeAttribute composite;
  for (Attribute* a : std::initializer_list<Attribute*>{&entity, &composite})
  {
    for (const auto& call : calls)
      EXPECT_THROW_MSG(call(*a), std::runtime_error, "Not Available");
    EXPECT_FALSE(a->hasValue(now, false));
    EXPECT_FALSE(a->hasUnits());
    EXPECT_EQ(a->getUnit(), "");
    EXPECT_TRUE(a->isComposite());
  }
}

TEST(CompositeAttributeTest, EqualityIsDeepAndOrdered)
{
  CompositeAttribute a("G", AccessType::ReadWrite, nullptr);
  CompositeAttribute b("G", AccessType::ReadWrite, nullptr);
  CompositeAttribute reversed("G", AccessType::ReadWrite, nullptr);
  for (CompositeAttribute* c : {&a, &b})
  {
    OmbrixTest::addValue<int>(*c, "X", 1);
    OmbrixTest::addValue<int>(*c, "Y", 2);
  }
  OmbrixTest::addValue<int>(reversed, "Y", 2);
  OmbrixTest::addValue<int>(reversed, "X", 1);
  EXPECT_TRUE(a.isEqual(b));
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a.isEqual(reversed));
  static_cast<IntAttribute&>(b.getAttribute(AttributePath("Y"))).set(3, C::Initial);
  EXPECT_FALSE(a.isEqual(b));
}

#include "ombrix/model/CompositeAttribute.h"

#include "ombrix/model/Entity.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include "model/ModelTestSupport.h"
#include "support/TestSupport.h"

#include <stdexcept>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

TEST(CompositeAttributeTest, CreateAttributeRefusesDuplicates)
{
  CompositeAttribute composite("Group", AccessType::ReadWrite, nullptr);
  Attribute* first = composite.createAttribute(AttributeType::Double, "Value", AccessType::ReadOnly);
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(first->getParent(), &composite);
  EXPECT_EQ(first->getType(), "Value");
  EXPECT_EQ(first->getAccessType(), AccessType::ReadOnly);
  EXPECT_EQ(first->getAttributeType(), AttributeType::Double);
  EXPECT_EQ(composite.createAttribute(AttributeType::Int, "Value", AccessType::ReadWrite), nullptr);
  EXPECT_EQ(composite.size(), 1u);
  EXPECT_EQ(composite.getAttribute(AttributePath("Value")).getAttributeType(), AttributeType::Double);
}

TEST(CompositeAttributeTest, AddAttributeRefusesDuplicatesAndSetsParent)
{
  CompositeAttribute composite("Group", AccessType::ReadWrite, nullptr);
  auto* added =
      composite.addAttribute(std::make_unique<ValueAttribute<int>>("A", AccessType::ReadWrite, nullptr));
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added->getParent(), &composite);
  EXPECT_EQ(
      composite.addAttribute(std::make_unique<ValueAttribute<double>>("A", AccessType::ReadWrite, nullptr)),
      nullptr);
  EXPECT_EQ(composite.addAttribute(nullptr), nullptr);
  EXPECT_EQ(composite.size(), 1u);
  EXPECT_EQ(composite.getAttribute(AttributePath("A")).getAttributeType(), AttributeType::Int);
}

TEST(CompositeAttributeTest, FactoryMakesEveryKindAndRefusesOthers)
{
  for (int kind = 1; kind <= 11; ++kind)
  {
    SCOPED_TRACE(kind);
    auto attribute = createAttribute(static_cast<AttributeType>(kind), nullptr);
    EXPECT_EQ(static_cast<int>(attribute->getAttributeType(false)), kind);
  }
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

  EXPECT_EQ(&entity->getAttribute(AttributePath()), entity.get());
  EXPECT_EQ(&entity->getAttribute(AttributePath("Group.Time Step")), &value);
  EXPECT_EQ(&(*entity)[AttributePath("Group")], &group);
  EXPECT_EQ(entity->findAttribute(AttributePath("Group.time step")), nullptr);
  EXPECT_TRUE(entity->hasAttribute(AttributePath("Time")));
  EXPECT_EQ(value.getAttributePath(true).toString(), "Group.Time Step");
  EXPECT_EQ(value.getAttributePath(false).toString(), "Pump.Group.Time Step");

  struct Case
  {
    const CompositeAttribute* from;
    const char* path;
    const char* message;
  };
  const Case cases[] = {
      {entity.get(), "Missing", "Invalid path [12-3] of type Pump : Missing"},
      {entity.get(), "Time.X", "Invalid path [12-3] of type Pump : Time.X"},
      {entity.get(), "Group.Nope.Deeper", "Invalid path [12-3] of type Pump : Group.Nope.Deeper"},
      {&group, "Nope", "Invalid path [12-3] of type Pump : Group.Nope"},
      {&group, "Time Step.X", "Invalid path [12-3] of type Pump : Group.Time Step.X"},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.path);
    EXPECT_THROW_MSG(c.from->getAttribute(AttributePath(c.path)), std::runtime_error, c.message);
    EXPECT_EQ(c.from->findAttribute(AttributePath(c.path)), nullptr);
    EXPECT_FALSE(c.from->hasAttribute(AttributePath(c.path)));
  }
}

TEST(CompositeAttributeTest, PathLookupWithoutEntity)
{
  CompositeAttribute root("Root", AccessType::ReadWrite, nullptr);
  auto& inner = OmbrixTest::addComposite(root, "Inner");
  OmbrixTest::addValue<int>(inner, "V", 1);
  EXPECT_THROW_MSG(root.getAttribute(AttributePath("Inner.V.W")), std::runtime_error,
                   "Invalid path Root.Inner.V.W");
  EXPECT_THROW_MSG(inner.getAttribute(AttributePath("Missing")), std::runtime_error,
                   "Invalid path Root.Inner.Missing");
}

TEST(CompositeAttributeTest, PathLookupThroughLinks)
{
  auto entity = OmbrixTest::makeEntity("Rack", "R", EntityID(1, 1));
  auto* list = static_cast<ListAttribute*>(
      entity->addAttribute(std::make_unique<ListAttribute>("Servers", true, nullptr)));
  auto* server = list->addEntity(OmbrixTest::makeEntity("Server", "S0", EntityID(2, 2)));
  auto& name = OmbrixTest::addValue<std::string>(*server, "Name", "alpha");
  EXPECT_EQ(&entity->getAttribute(AttributePath("Servers.0.Name")), &name);
  EXPECT_EQ(&entity->getAttribute(AttributePath("Servers.0")), server);
  EXPECT_EQ(entity->findAttribute(AttributePath("Servers.1.Name")), nullptr);
  EXPECT_EQ(entity->findAttribute(AttributePath("Servers.x")), nullptr);
  EXPECT_THROW_MSG(entity->getAttribute(AttributePath("Servers.1.Name")), std::out_of_range,
                   "No Entity found with entity_i='1'");
  EXPECT_THROW_MSG(entity->getAttribute(AttributePath("Servers.0.Other")), std::runtime_error,
                   "Invalid path [2-2] of type Server : Other");
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
  {
    SCOPED_TRACE(i);
    EXPECT_EQ(&entity->getAttribute(i, true), expected[i]);
  }
  EXPECT_EQ(entity->getNumberOfAttributes(true), 4u);
  EXPECT_EQ(entity->getNumberOfAttributes(false), 2u);
  EXPECT_EQ(&entity->getAttribute(1, false), &b);
  EXPECT_THROW_MSG(entity->getAttribute(4, true), std::out_of_range,
                   "No Attribute Found for [12-3] of type Pump child_i='4'");
  EXPECT_THROW_MSG(entity->getAttribute(2, false), std::out_of_range,
                   "No Attribute Found for [12-3] of type Pump child_i='2'");
  EXPECT_THROW_MSG(a.getAttribute(2, true), std::out_of_range,
                   "No Attribute Found for [12-3] of type Pump child_i='2'");

  CompositeAttribute root("Root", AccessType::ReadWrite, nullptr);
  auto& inner = OmbrixTest::addComposite(root, "Inner");
  EXPECT_THROW_MSG(root.getAttribute(1, true), std::out_of_range, "No Attribute Found for Root child_i='1'");
  EXPECT_THROW_MSG(inner.getAttribute(0, false), std::out_of_range,
                   "No Attribute Found for Root.Inner child_i='0'");
}

TEST(CompositeAttributeTest, ValueAccessIsNotAvailable)
{
  Entity entity("T", "N");
  CompositeAttribute composite;
  const Attribute* attributes[] = {&entity, &composite};
  for (const Attribute* attribute : attributes)
  {
    Attribute& a = const_cast<Attribute&>(*attribute);
    EXPECT_THROW_MSG(a.getIntValue(Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.getBoolValue(Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.getFloatValue(Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.getDoubleValue(Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.getStringValue(Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.setIntValue(1, Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.setBoolValue(true, Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.setFloatValue(1.f, Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.setDoubleValue(1.0, Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.setStringValue("x", Chronology::Current, false), std::runtime_error, "Not Available");
    EXPECT_THROW_MSG(a.setUnit("m"), std::runtime_error, "Not Available");
    EXPECT_FALSE(a.hasValue(Chronology::Current, false));
    EXPECT_FALSE(a.hasUnits());
    EXPECT_EQ(a.getUnit(), "");
    EXPECT_TRUE(a.isComposite());
  }
}

TEST(CompositeAttributeTest, DottedChildNameIsCreatedButNotFound)
{
  CompositeAttribute composite("Root", AccessType::ReadWrite, nullptr);
  ASSERT_NE(composite.createAttribute(AttributeType::Int, "a.b", AccessType::ReadWrite), nullptr);
  EXPECT_EQ(composite.findAttribute(AttributePath("a.b")), nullptr);
  EXPECT_NE(composite.findChild("a.b"), nullptr);
}

TEST(CompositeAttributeTest, EqualityIsDeepAndOrdered)
{
  CompositeAttribute a("G", AccessType::ReadWrite, nullptr);
  CompositeAttribute b("G", AccessType::ReadWrite, nullptr);
  OmbrixTest::addValue<int>(a, "X", 1);
  OmbrixTest::addValue<int>(a, "Y", 2);
  OmbrixTest::addValue<int>(b, "X", 1);
  OmbrixTest::addValue<int>(b, "Y", 2);
  EXPECT_TRUE(a.isEqual(b));
  EXPECT_TRUE(a == b);
  static_cast<ValueAttribute<int>&>(b.getAttribute(AttributePath("Y"))).set(3, Chronology::Initial);
  EXPECT_FALSE(a.isEqual(b));

  CompositeAttribute c("G", AccessType::ReadWrite, nullptr);
  OmbrixTest::addValue<int>(c, "Y", 2);
  OmbrixTest::addValue<int>(c, "X", 1);
  EXPECT_FALSE(a.isEqual(c));
}

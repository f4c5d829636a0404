#include "ombrix/compare/ModelComparator.h"

#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using Messages = ModelComparator::Messages;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr float nanf = std::numeric_limits<float>::quiet_NaN();
constexpr float inff = std::numeric_limits<float>::infinity();

template <typename T> T& child(CompositeAttribute& parent, const char* path)
{
  return static_cast<T&>(parent.getAttribute(AttributePath(path)));
}

std::unique_ptr<Entity> makeEntity(const char* type, const char* name, EntityID id)
{
  auto entity = std::make_unique<Entity>(type, name);
  entity->setUniqueID(id);
  return entity;
}

// Pump 1-1 with values of every kind, a shortcut, a link holding Motor 3-3 and a list holding Stages
// 4-4 and 4-5; Valve 2-2 as a second root.
EntityCollection buildModel()
{
  auto pump = makeEntity("Pump", "P1", EntityID(1, 1));
  auto& pressure = static_cast<DoubleAttribute&>(
      *pump->createAttribute(AttributeType::Double, "Pressure", AccessType::ReadWrite));
  pressure.setUnit("Pa");
  pressure.set(101325.0);
  static_cast<IntAttribute&>(*pump->createAttribute(AttributeType::Int, "Speed", AccessType::ReadWrite))
      .set(1450);
  static_cast<BoolAttribute&>(*pump->createAttribute(AttributeType::Bool, "Running", AccessType::ReadOnly))
      .set(true);
  static_cast<StringAttribute&>(*pump->createAttribute(AttributeType::String, "Label", AccessType::ReadWrite))
      .set("main");
  static_cast<ShortcutAttribute&>(
      *pump->createAttribute(AttributeType::Shortcut, "Both", AccessType::ReadWrite))
      .addShortcut(std::vector<AttributePath>{AttributePath("Pressure"), AttributePath("Speed")});

  auto& motorLink = static_cast<LinkAttribute&>(
      *pump->createAttribute(AttributeType::Link, "Motor", AccessType::ReadWrite));
  motorLink.setOwnsEntities(true);
  motorLink.setRelationShipType("has");
  auto motor = makeEntity("Motor", "M1", EntityID(3, 3));
  static_cast<FloatAttribute&>(*motor->createAttribute(AttributeType::Float, "Power", AccessType::ReadOnly))
      .set(7.5f);
  motorLink.addEntity(std::move(motor));

  auto& stages = static_cast<ListAttribute&>(
      *pump->createAttribute(AttributeType::List, "Stages", AccessType::ReadWrite));
  stages.setOwnsEntities(true);
  for (int i : {4, 5})
  {
    auto stage = makeEntity("Stage", i == 4 ? "S1" : "S2", EntityID(4, i));
    static_cast<DoubleAttribute&>(
        *stage->createAttribute(AttributeType::Double, "Load", AccessType::ReadWrite))
        .set(i == 4 ? 1.0 : 2.0);
    stages.addEntity(std::move(stage));
  }

  auto valve = makeEntity("Valve", "V1", EntityID(2, 2));
  static_cast<DoubleAttribute&>(
      *valve->createAttribute(AttributeType::Double, "Opening", AccessType::ReadWrite))
      .set(0.5);

  EntityCollection collection(std::move(pump));
  collection.addRootEntity(std::move(valve));
  return collection;
}

Entity& pumpOf(EntityCollection& collection)
{
  return *collection.getEntity(EntityID(1, 1));
}

const char* const pumpChildren = "Pressure:Double, Speed:Int, Running:Bool, Label:String, Both:Shortcut, "
                                 "Motor:Link, Stages:List";

TEST(ModelComparator, WholeModelDifferencesAreFiledUnderTheirAttributes)
{
  struct Case
  {
    const char* name;
    std::function<void(EntityCollection&)> change;
    bool modelIsReference; // compare the unchanged model against the changed one
    Messages expected;
  };
  const Case cases[] = {
      {"identical", [](EntityCollection&) {}, false, {}},
      {"value",
       [](EntityCollection& c) { child<DoubleAttribute>(pumpOf(c), "Pressure").set(101000.0); },
       false,
       {{"1-1:Pressure", {"Value differs101000 expected 101325"}}}},
      {"value within tolerance",
       [](EntityCollection& c) { child<DoubleAttribute>(pumpOf(c), "Pressure").set(101325.5); },
       false,
       {}},
      {"unit",
       [](EntityCollection& c) { child<DoubleAttribute>(pumpOf(c), "Pressure").setUnit("bar"); },
       false,
       {{"1-1:Pressure", {"Difference in Unit bar expected Pa"}}}},
      {"access",
       [](EntityCollection& c)
       { child<BoolAttribute>(pumpOf(c), "Running").setAccessType(AccessType::ReadWrite); },
       false,
       {{"1-1:Running", {"Difference in AccessType ReadWrite expected ReadOnly"}}}},
      {"int",
       [](EntityCollection& c) { child<IntAttribute>(pumpOf(c), "Speed").set(1500); },
       false,
       {{"1-1:Speed", {"Value differs 1500 expected 1450"}}}},
      {"bool",
       [](EntityCollection& c) { child<BoolAttribute>(pumpOf(c), "Running").set(false); },
       false,
       {{"1-1:Running", {"Value differs\n\t'False'\nexpected\n\t'True'"}}}},
      {"string",
       [](EntityCollection& c) { child<StringAttribute>(pumpOf(c), "Label").set("spare"); },
       false,
       {{"1-1:Label", {"Value differs\n\t'spare'\nexpected\n\t'main'"}}}},
      {"float in a linked entity",
       [](EntityCollection& c) { child<FloatAttribute>(*c.getEntity(EntityID(3, 3)), "Power").set(7.25f); },
       false,
       {{"3-3:Power", {"Value differs7.25 expected 7.5"}}}},
      {"missing entity",
       [](EntityCollection& c) { c.erase("Valve", "V1"); },
       false,
       {{"2-2:", {"Missing entity 2-2 'V1'"}}}},
      {"reference missing entity",
       [](EntityCollection& c) { c.addRootEntity(makeEntity("Extra", "X", EntityID(5, 5))); },
       false,
       {{"5-5:", {"Reference missing entity 5-5 'X'"}}}},
      {"extra child",
       [](EntityCollection& c)
       { pumpOf(c).createAttribute(AttributeType::Int, "Extra", AccessType::ReadWrite); },
       false,
       {{"1-1:",
         {std::string("Difference in child attributes\n\t'") + pumpChildren + ", Extra:Int'\nexpected\n\t'" +
          pumpChildren + "'"}},
        {"1-1:Extra", {"No child attribute with type Int 'Extra'"}}}},
      {"missing child",
       [](EntityCollection& c)
       { pumpOf(c).createAttribute(AttributeType::Int, "Extra", AccessType::ReadWrite); },
       true,
       {{"1-1:",
         {std::string("Difference in child attributes\n\t'") + pumpChildren + "'\nexpected\n\t'" +
          pumpChildren + ", Extra:Int'"}}}},
      {"link ownership",
       [](EntityCollection& c) { child<LinkAttribute>(pumpOf(c), "Motor").setOwnsEntities(false); },
       false,
       {{"1-1:Motor", {"Difference in OwnsEntities False expected True"}}}},
      {"relationship",
       [](EntityCollection& c) { child<LinkAttribute>(pumpOf(c), "Motor").setRelationShipType("uses"); },
       false,
       {{"1-1:Motor", {"Difference in RelationshipType uses expected has"}}}},
      {"shortcut order",
       [](EntityCollection& c)
       {
         auto& paths = child<ShortcutAttribute>(pumpOf(c), "Both").shortcuts();
         std::swap(paths[0], paths[1]);
       },
       false,
       {{"1-1:Both", {"Difference in shortcuts"}}}},
      {"entity name",
       [](EntityCollection& c) { c.getEntity(EntityID(2, 2))->setName("V2"); },
       false,
       {{"2-2:", {"Difference in Name V2 expected V1"}}}},
      {"value in a list entity",
       [](EntityCollection& c) { child<DoubleAttribute>(*c.getEntity(EntityID(4, 4)), "Load").set(1.5); },
       false,
       {{"4-4:Load", {"Value differs1.5 expected 1"}}}},
      {"extra list entity",
       [](EntityCollection& c)
       {
         child<ListAttribute>(pumpOf(c), "Stages").addEntity(makeEntity("Stage", "S3", EntityID(4, 6)));
         c.rebuildChildEntitiesList();
       },
       false,
       {{"4-6:", {"Reference missing entity 4-6 'S3'"}}}},
      {"missing list entity",
       [](EntityCollection& c)
       {
         child<ListAttribute>(pumpOf(c), "Stages").addEntity(makeEntity("Stage", "S3", EntityID(4, 6)));
         c.rebuildChildEntitiesList();
       },
       true,
       {{"4-6:", {"Missing entity 4-6 'S3'"}}}},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.name);
    EntityCollection changed = buildModel();
    const EntityCollection unchanged = buildModel();
    c.change(changed);
    ModelComparator comparator;
    if (c.modelIsReference)
      comparator.compareCollection(unchanged, changed);
    else
      comparator.compareCollection(changed, unchanged);
    EXPECT_EQ(comparator.getMessages(), c.expected);
  }
}

TEST(ModelComparator, EachComparisonStartsAfresh)
{
  EntityCollection changed = buildModel();
  child<IntAttribute>(pumpOf(changed), "Speed").set(1);
  const EntityCollection reference = buildModel();
  ModelComparator comparator;
  comparator.compareCollection(changed, reference);
  EXPECT_EQ(comparator.getMessages().size(), 1u);
  comparator.compareCollection(reference, reference);
  EXPECT_TRUE(comparator.getMessages().empty());
}

// Exposes the attribute check, which the walk only reaches with attributes of equal names.
class ExposedComparator : public ModelComparator
{
public:
  using ModelComparator::compare;
};

TEST(ModelComparator, AttributeChecksFileThreeMessagesInOrder)
{
  IntAttribute model("A", AccessType::ReadOnly, nullptr);
  DoubleAttribute reference("B", AccessType::ReadWrite, nullptr);
  ExposedComparator comparator;
  comparator.compare(static_cast<const Attribute&>(model), static_cast<const Attribute&>(reference));
  const Messages expected{
      {"0-0:A",
       {"Difference in AttributeType Int expected Double", "Difference in Type A expected B",
        "Difference in AccessType ReadOnly expected ReadWrite"}}};
  EXPECT_EQ(comparator.getMessages(), expected);
}

TEST(ModelComparator, DoubleTolerance)
{
  const double t = 1e-05;
  struct Case
  {
    double a;
    double b;
    bool equal;
  };
  const Case cases[] = {
      {1.0, 1.000001, true},
      {1.0, 1.0001, false},
      {1.0, -1.0, false},
      {2.5e-3, -2.5e-3, false},
      {0.0, 0.000001, true},
      {0.0, 0.00001, false}, // |b| < t is strict
      {0.0, -0.0000099, true},
      {0.000001, 0.0, true},
      {-0.00001, 0.0, false},
      {0.0, 0.0, true},
      {1.0 + t, 1.0, false}, // ratio 1 + t exactly: outside
      {1.0 - t, 1.0, false}, // ratio 1 - t exactly: outside
      {std::nextafter(1.0 + t, 1.0), 1.0, true},
      {std::nextafter(1.0 - t, 1.0), 1.0, true},
      {1e6 + 9.0, 1e6, true},
      {1e6 + 11.0, 1e6, false},
      {1e-300, 2e-300, true},  // both below the tiny bound
      {1e-300, -1e-300, true}, // signs do not matter down there
      {1e-290, 1e-300, false},
      {1e-300, 1e-290, false},
      {1e300, 1e-10, false},
      {1e-10, 1e300, false},
      {nan, nan, true},
      {nan, 1.0, false},
      {1.0, nan, false},
      {inf, inf, true},
      {-inf, -inf, true},
      {inf, -inf, false},
      {inf, std::numeric_limits<double>::max(), false},
      {std::numeric_limits<double>::max(), inf, false},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(testing::Message() << c.a << " vs " << c.b);
    EXPECT_EQ(ModelComparator::nearlyEqual(c.a, c.b, t), c.equal);
  }
  // A tolerance at or below machine epsilon only accepts identical finite values.
  EXPECT_FALSE(ModelComparator::nearlyEqual(1.0, std::nextafter(1.0, 2.0), 0.0));
  EXPECT_TRUE(ModelComparator::nearlyEqual(1.0, 1.0, 0.0));
}

TEST(ModelComparator, FloatTolerance)
{
  const float t = 1e-05f;
  struct Case
  {
    float a;
    float b;
    bool equal;
  };
  const Case cases[] = {
      {1.0f, 1.000001f, true}, {1.0f, 1.0001f, false},
      {1.0f, -1.0f, false},    {0.0f, 0.000001f, true},
      {0.0f, 0.00001f, false}, {0.000009f, 0.0f, true},
      {1.0f + t, 1.0f, false}, {std::nextafter(1.0f + t, 1.0f), 1.0f, true},
      {1e-37f, 5e-38f, true}, // both below the tiny bound (about 9.9e-37)
      {1e-30f, 1e-37f, false}, {1e-37f, 1e-30f, false},
      {nanf, nanf, true},      {nanf, 0.0f, false},
      {inff, inff, true},      {-inff, inff, false},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(testing::Message() << c.a << " vs " << c.b);
    EXPECT_EQ(ModelComparator::nearlyEqual(c.a, c.b, t), c.equal);
  }
}

// One entity 7-7 holding one attribute "X" of type T with value `value`.
template <typename T> EntityCollection singleValue(T value)
{
  auto entity = makeEntity("Probe", "P", EntityID(7, 7));
  constexpr auto kind = std::is_same_v<T, float> ? AttributeType::Float : AttributeType::Double;
  static_cast<ValueAttribute<T>&>(*entity->createAttribute(kind, "X", AccessType::ReadWrite)).set(value);
  return EntityCollection(std::move(entity));
}

template <typename T> Messages compareValues(T model, T reference)
{
  ModelComparator comparator;
  comparator.compareCollection(singleValue(model), singleValue(reference));
  return comparator.getMessages();
}

TEST(ModelComparator, FloatingMessagesUseTwoForms)
{
  struct Case
  {
    double a;
    double b;
    const char* message; // null: equal
  };
  const Case cases[] = {
      {nan, 1.0, "Value differs NaN expected 1"},
      {1.0, nan, "Value differs 1 expected NaN"},
      {inf, 1.0, "Value differs inf expected 1"},
      {inf, -inf, "Value differs inf expected -inf"},
      {1.0, 1.0001, "Value differs1 expected 1.0001"},
      {1.0, -1.0, "Value differs1 expected -1"},
      {0.0, 0.00001, "Value differs0 expected 1e-05"},
      {0.123456789, 0.2, "Value differs0.123457 expected 0.2"},
      {nan, nan, nullptr},
      {1.0, 1.000001, nullptr},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(testing::Message() << c.a << " vs " << c.b);
    const Messages expected = c.message ? Messages{{"7-7:X", {c.message}}} : Messages{};
    EXPECT_EQ(compareValues(c.a, c.b), expected);
    EXPECT_EQ(compareValues(static_cast<float>(c.a), static_cast<float>(c.b)), expected);
  }
}

TEST(ModelComparator, TolerancesCanBeChanged)
{
  ModelComparator comparator;
  comparator.setDoubleTolerance(1e-3);
  comparator.compareCollection(singleValue(1.0), singleValue(1.0001));
  EXPECT_TRUE(comparator.getMessages().empty());
  comparator.setFloatTolerance(1e-7f);
  comparator.compareCollection(singleValue(1.0f), singleValue(1.000001f));
  EXPECT_EQ(comparator.getMessages(), (Messages{{"7-7:X", {"Value differs1 expected 1"}}}));
}

} // namespace

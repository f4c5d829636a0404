#include "ombrix/compare/ModelComparator.h"

#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"

#include "model/ModelTestSupport.h"
#include "support/GroupingLocale.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using namespace Ombrix::Model;
using namespace OmbrixTest;
using KorvanSDK::AccessType;
using KorvanSDK::Chronology;
using Messages = ModelComparator::Messages;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double dmax = std::numeric_limits<double>::max();
constexpr float nanf = std::numeric_limits<float>::quiet_NaN();
constexpr float inff = std::numeric_limits<float>::infinity();

// The attribute at `path` of entity `id`, as a T.
template <typename T = Attribute> T& at(EntityCollection& c, EntityID id, const char* path)
{
  return static_cast<T&>(c.getEntity(id)->getAttribute(AttributePath(path)));
}

// Pump 1-1 with values of every kind, a shortcut, a link holding Motor 3-3 and a list holding Stages
// 4-4 and 4-5; Valve 2-2 as a second root.
EntityCollection buildModel()
{
  auto pump = makeEntity("Pump", "P1", {1, 1});
  addValue(*pump, "Pressure", 101325.0).setUnit("Pa");
  addValue(*pump, "Speed", 1450);
  addValue(*pump, "Running", true, AccessType::ReadOnly);
  addValue<std::string>(*pump, "Label", "main");
  addShortcut(*pump, "Both", {"Pressure", "Speed"});
  auto& motor = addLink<LinkAttribute>(*pump, "Motor", true, "has");
  addValue(*motor.addEntity(makeEntity("Motor", "M1", {3, 3})), "Power", 7.5f, AccessType::ReadOnly);
  auto& stages = addLink<ListAttribute>(*pump, "Stages", true);
  for (int i : {4, 5})
    addValue(*stages.addEntity(makeEntity("Stage", i == 4 ? "S1" : "S2", {4, i})), "Load", i - 3.0);
  auto valve = makeEntity("Valve", "V1", {2, 2});
  addValue(*valve, "Opening", 0.5);
  EntityCollection collection(std::move(pump));
  collection.addRootEntity(std::move(valve));
  return collection;
}

const EntityID kPump(1, 1);
const std::string pumpChildren =
    "Pressure:Double, Speed:Int, Running:Bool, Label:String, Both:Shortcut, Motor:Link, Stages:List";

// The messages of comparing the model changed by `change` with the unchanged one (or the other way round).
Messages compareChanged(const std::function<void(EntityCollection&)>& change, bool changedIsReference = false)
{
  EntityCollection changed = buildModel();
  const EntityCollection unchanged = buildModel();
  change(changed);
  ModelComparator comparator;
  comparator.compareCollection(unchanged, unchanged);
  comparator.compareCollection(changedIsReference ? unchanged : changed,
                               changedIsReference ? changed : unchanged);
  const Messages messages = comparator.getMessages();
  comparator.compareCollection(unchanged, unchanged);
  EXPECT_TRUE(comparator.getMessages().empty()) << "each comparison starts afresh";
  return messages;
}

TEST(ModelComparator, ValueDifferencesAreFiledUnderTheirAttributes)
{
  // Each value is written as text (the floating forms are checked in FloatingMessagesUseTwoForms).
  const std::tuple<EntityID, const char*, const char*, const char*> cases[] = {
      {{1, 1}, "Speed", "1500", "Value differs 1500 expected 1450"},
      {{1, 1}, "Running", "No", "Value differs\n\t'False'\nexpected\n\t'True'"},
      {{1, 1}, "Label", "spare", "Value differs\n\t'spare'\nexpected\n\t'main'"},
      {{3, 3}, "Power", "7.25", "Value differs7.25 expected 7.5"},
      {{4, 4}, "Load", "1.5", "Value differs1.5 expected 1"},
  };
  for (const auto& [id, path, text, message] : cases)
  {
    SCOPED_TRACE(text);
    const auto change = [&, &id = id, &path = path, &text = text](EntityCollection& c)
    { at(c, id, path).setStringValue(text, Chronology::Initial, false); };
    EXPECT_EQ(compareChanged(change), (Messages{{toString(id) + ":" + path, {message}}}));
  }
}

TEST(ModelComparator, StructureDifferencesAreFiledUnderTheirAttributesOrEntities)
{
  using C = EntityCollection&;
  const auto addStage = [](C c)
  {
    at<ListAttribute>(c, {1, 1}, "Stages").addEntity(makeEntity("Stage", "S3", {4, 6}));
    c.rebuildChildEntitiesList();
  };
  const auto addExtra = [](C c) { addValue(*c.getEntity(EntityID(1, 1)), "Extra", 0); };
  const auto swapShortcuts = [](C c)
  {
    auto& paths = at<ShortcutAttribute>(c, {1, 1}, "Both").shortcuts();
    std::swap(paths[0], paths[1]);
  };
  const auto childrenDiffer = [](bool extraInChanged)
  {
    const std::string more = pumpChildren + ", Extra:Int";
    return "Difference in child attributes\n\t'" + (extraInChanged ? more : pumpChildren) +
           "'\nexpected\n\t'" + (extraInChanged ? pumpChildren : more) + "'";
  };
  struct Case
  {
    std::function<void(C)> change;
    Messages expected;
    bool changedIsReference = false;
  };
  const Case cases[] = {
      {[](C) {}, {}},
      {[](C c) { at(c, kPump, "Pressure").setUnit("bar"); },
       {{"1-1:Pressure", {"Difference in Unit bar expected Pa"}}}},
      {[](C c) { at(c, kPump, "Running").setAccessType(AccessType::ReadWrite); },
       {{"1-1:Running", {"Difference in AccessType ReadWrite expected ReadOnly"}}}},
      {[](C c) { c.erase("Valve", "V1"); }, {{"2-2:", {"Missing entity 2-2 'V1'"}}}},
      {[](C c) { c.addRootEntity(makeEntity("Extra", "X", EntityID(5, 5))); },
       {{"5-5:", {"Reference missing entity 5-5 'X'"}}}},
      {addStage, {{"4-6:", {"Reference missing entity 4-6 'S3'"}}}},
      {addStage, {{"4-6:", {"Missing entity 4-6 'S3'"}}}, true},
      {addExtra,
       {{"1-1:", {childrenDiffer(true)}}, {"1-1:Extra", {"No child attribute with type Int 'Extra'"}}}},
      {addExtra, {{"1-1:", {childrenDiffer(false)}}}, true},
      {[](C c) { at<LinkAttribute>(c, kPump, "Motor").setOwnsEntities(false); },
       {{"1-1:Motor", {"Difference in OwnsEntities False expected True"}}}},
      {[](C c) { at<LinkAttribute>(c, kPump, "Motor").setRelationShipType("uses"); },
       {{"1-1:Motor", {"Difference in RelationshipType uses expected has"}}}},
      {swapShortcuts, {{"1-1:Both", {"Difference in shortcuts"}}}},
      {[](C c) { c.getEntity(EntityID(2, 2))->setName("V2"); },
       {{"2-2:", {"Difference in Name V2 expected V1"}}}},
  };
  for (const auto& c : cases)
    EXPECT_EQ(compareChanged(c.change, c.changedIsReference), c.expected);
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
  const double inHigh = std::nextafter(1.0 + t, 1.0), inLow = std::nextafter(1.0 - t, 1.0);
  // |b| < t is strict; a ratio of exactly 1 + t or 1 - t is outside; below the tiny bound signs do not
  // matter.
  const std::tuple<double, double, bool> cases[] = {
      {1.0, 1.000001, true},  {1.0, 1.0001, false},    {1.0, -1.0, false},      {2.5e-3, -2.5e-3, false},
      {0.0, 0.000001, true},  {0.0, 0.00001, false},   {0.0, -0.0000099, true}, {0.000001, 0.0, true},
      {-0.00001, 0.0, false}, {0.0, 0.0, true},        {1.0 + t, 1.0, false},   {1.0 - t, 1.0, false},
      {inHigh, 1.0, true},    {inLow, 1.0, true},      {1e6 + 9.0, 1e6, true},  {1e6 + 11.0, 1e6, false},
      {1e-300, 2e-300, true}, {1e-300, -1e-300, true}, {1e-290, 1e-300, false}, {1e-300, 1e-290, false},
      {1e300, 1e-10, false},  {1e-10, 1e300, false},   {nan, nan, true},        {nan, 1.0, false},
      {1.0, nan, false},      {inf, inf, true},        {-inf, -inf, true},      {inf, -inf, false},
      {inf, dmax, false},     {dmax, inf, false},
  };
  for (const auto& [a, b, equal] : cases)
    EXPECT_EQ(ModelComparator::nearlyEqual(a, b, t), equal) << a << " vs " << b;
  // A tolerance at or below machine epsilon only accepts identical finite values.
  EXPECT_FALSE(ModelComparator::nearlyEqual(1.0, std::nextafter(1.0, 2.0), 0.0));
  EXPECT_TRUE(ModelComparator::nearlyEqual(1.0, 1.0, 0.0));
}

TEST(ModelComparator, FloatTolerance)
{
  const float t = 1e-05f;
  const float inHigh = std::nextafter(1.0f + t, 1.0f);
  // The tiny bound is about 9.9e-37.
  const std::tuple<float, float, bool> cases[] = {
      {1.0f, 1.000001f, true}, {1.0f, 1.0001f, false},  {1.0f, -1.0f, false},    {0.0f, 0.000001f, true},
      {0.0f, 0.00001f, false}, {0.000009f, 0.0f, true}, {1.0f + t, 1.0f, false}, {inHigh, 1.0f, true},
      {1e-37f, 5e-38f, true},  {1e-30f, 1e-37f, false}, {1e-37f, 1e-30f, false}, {nanf, nanf, true},
      {nanf, 0.0f, false},     {inff, inff, true},      {-inff, inff, false},
  };
  for (const auto& [a, b, equal] : cases)
    EXPECT_EQ(ModelComparator::nearlyEqual(a, b, t), equal) << a << " vs " << b;
}

// One entity 7-7 holding one attribute "X" of type T with value `value`.
template <typename T> EntityCollection singleValue(T value)
{
  auto entity = makeEntity("Probe", "P", {7, 7});
  addValue(*entity, "X", value);
  return EntityCollection(std::move(entity));
}

template <typename T> Messages compareValues(T model, T reference, ModelComparator comparator = {})
{
  comparator.compareCollection(singleValue(model), singleValue(reference));
  return comparator.getMessages();
}

TEST(ModelComparator, FloatingMessagesUseTwoForms)
{
  const OmbrixTest::GroupingLocale locale; // a host's locale changes no number of the report
  const std::tuple<double, double, const char*> cases[] = {
      {1234.5, 1000.0, "Value differs1234.5 expected 1000"},
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
  for (const auto& [a, b, message] : cases)
  {
    SCOPED_TRACE(testing::Message() << a << " vs " << b);
    const Messages expected = message ? Messages{{"7-7:X", {message}}} : Messages{};
    EXPECT_EQ(compareValues(a, b), expected);
    EXPECT_EQ(compareValues(static_cast<float>(a), static_cast<float>(b)), expected);
  }
}

TEST(ModelComparator, TolerancesCanBeChanged)
{
  ModelComparator comparator;
  comparator.setDoubleTolerance(1e-3);
  comparator.setFloatTolerance(1e-7f);
  EXPECT_TRUE(compareValues(1.0, 1.0001, comparator).empty());
  EXPECT_EQ(compareValues(1.0f, 1.000001f, comparator), (Messages{{"7-7:X", {"Value differs1 expected 1"}}}));
}

} // namespace

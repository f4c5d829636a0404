#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "model/ModelTestSupport.h"
#include "support/Tables.h"
#include "support/TestSupport.h"

#include <limits>

using namespace Ombrix::Model;
using FileSystem::DataStreamKind;
using KorvanSDK::AccessType;
using C = KorvanSDK::Chronology;
using OmbrixTest::addLink;
using OmbrixTest::addValue;
using OmbrixTest::makeEntity;

namespace
{

EntityCollection fullCollection()
{
  auto plant = makeEntity("Plant", "Main", EntityID(-1, 7));
  addValue<int>(*plant, "Count", -42, AccessType::ReadOnly).setUnit("pcs");
  addValue<bool>(*plant, "Enabled", true, AccessType::WriteOnly);
  addValue<std::string>(*plant, "Label", "  tab\there, \"quoted\"; done ", AccessType::None);
  addValue<float>(*plant, "Ratio", 0.1f);
  auto& results = OmbrixTest::addComposite(*plant, "Results");
  auto& time = addValue<double>(results, "Time", 0.0);
  time.setUnit("s");
  time.set(1.0 / 3.0, C::Current);
  time.set(std::numeric_limits<double>::max(), C::Next);
  auto& flag = addValue<bool>(results, "Flag", false);
  flag.set(true, C::TimeStepStart);
  auto& text = addValue<std::string>(results, "Text", "");
  text.set("later", C::Continue);

  auto& pumps = addLink<ListAttribute>(*plant, "Pumps", true, "contains");
  for (int i = 0; i < 3; ++i)
  {
    Entity* pump = pumps.addEntity(makeEntity("Pump", "P" + std::to_string(i), EntityID(10 + i, -i)));
    addValue<double>(*pump, "Speed", 100.0 * i).setUnit("rpm");
    auto& motor = addLink<LinkAttribute>(*pump, "Motor", true, "drives");
    if (i != 1)
      addValue<int>(*motor.addEntity(makeEntity("Motor", "M", EntityID(20 + i, 0))), "Poles", 4);
  }
  auto& slots = addLink<ArrayAttribute>(*plant, "Slots", true, "");
  slots.addEntity(makeEntity("Slot", "S0", EntityID(30, 0)));
  addLink<ListAttribute>(*plant, "Refs", false, "uses").addEntity(makeEntity("Pump", "Ref", EntityID(40, 0)));
  addLink<ArrayAttribute>(*plant, "EmptyArray", true, "x");

  // Paths stream with empty segments and blanks.
  OmbrixTest::addShortcut(results, "AllSpeeds", {"Pumps.0.Speed", "Pumps.2.Speed", "Gone.Away", ".a..b c"});

  EntityCollection collection(std::move(plant));
  collection.addRootEntity(makeEntity("Solution Control", "SC", EntityID(0, 0)));
  SolutionControlDefinition definition;
  definition.setSolutionControlName("SC");
  definition.setTimePath(AttributePath("Results.Simulated Time"));
  collection.setSolutionControlDefinition(definition);
  return collection;
}

} // namespace

TEST(ModelStreamTest, CollectionRoundTripsInBothKinds)
{
  const EntityCollection original = fullCollection();
  ASSERT_EQ(original.size(), 8u); // Main, P0, M, P1, P2, M, S0, SC
  for (auto kind : OmbrixTest::kStreamKinds)
  {
    SCOPED_TRACE(static_cast<int>(kind));
    const EntityCollection read = OmbrixTest::roundTrip(original, kind);
    EXPECT_TRUE(read.isEqual(original));
    EXPECT_TRUE(original.isEqual(read));
    EXPECT_EQ(OmbrixTest::streamed(read, kind), OmbrixTest::streamed(original, kind));

    // Equality covers the values of every chronology, the storage kind and the solution-control definition;
    // the links are wired up again: paths, full names, shortcuts and ownership work on the copy.
    Entity* motor = read.getEntity(EntityID(22, 0));
    EXPECT_EQ(motor->getName(true), "Main->P2->M");
    EXPECT_EQ(motor->getParentEntityLink()->getType(), "Motor");
    EXPECT_EQ(read.getEntityIndex(EntityID(40, 0)), std::nullopt);
    const Attribute& allSpeeds =
        read.getEntity(EntityID(-1, 7))->getAttribute(AttributePath("Results.AllSpeeds"));
    EXPECT_EQ(allSpeeds.getDoubleValue(C::Current, false), 0.0); // 0 and 200 disagree
  }
  // Equality sees a changed value and a renamed entity.
  EntityCollection changed = fullCollection(), renamed = fullCollection();
  changed.getEntity(EntityID(12, -2))
      ->getAttribute(AttributePath("Speed"))
      .setDoubleValue(1, C::Current, false);
  renamed.getEntity(EntityID(30, 0))->setName("S1");
  EXPECT_FALSE(changed.isEqual(original));
  EXPECT_FALSE(renamed.isEqual(original));
}

TEST(ModelStreamTest, TruncatedStreamFailsCleanly)
{
  const EntityCollection original = fullCollection();
  for (auto kind : OmbrixTest::kStreamKinds)
  {
    SCOPED_TRACE(static_cast<int>(kind));
    const std::string data = OmbrixTest::streamed(original, kind);
    for (std::size_t length = 0; length < data.size(); length += (kind == DataStreamKind::Binary ? 1 : 3))
    {
      FileSystem::DataIStream in(data.substr(0, length), kind);
      EntityCollection target(makeEntity("Keep", "Me", EntityID(99, 99)));
      in >> target;
      if (in.good())
      {
        // Only a text stream cut in its trailing blanks can still be complete.
        EXPECT_TRUE(target.isEqual(original)) << "length " << length;
        continue;
      }
      ASSERT_EQ(target.size(), 1u) << "length " << length;
      EXPECT_EQ(target.getEntity(std::size_t{0})->name(), "Me");
    }
  }
}

TEST(ModelStreamTest, AnotherAttributeKindInTheStreamFails)
{
  ValueAttribute<int> value("V", AccessType::ReadWrite, nullptr), same;
  value.set(3, C::Initial);
  FileSystem::DataOStream out;
  value.toStream(out);
  FileSystem::DataIStream in(out.data()), again(out.data());
  ValueAttribute<double> other("W", AccessType::None, nullptr);
  other.fromStream(in);
  EXPECT_FALSE(in.good());
  EXPECT_EQ(other.getType(), "W");
  same.fromStream(again);
  EXPECT_TRUE(again.good());
  EXPECT_TRUE(same.isEqual(value));
}

// Walks a small model through the host interfaces only, and checks that every failure comes back as
// its code with the model's exact message on the handle.
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/sdk/String.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

using namespace KorvanSDK;
using namespace KorvanSDK::Model;
namespace M = Ombrix::Model;

namespace
{

// Rack "Rack 1" (1-1)
//   Results (composite): Time (double, unit "s"), Label (string, ReadOnly)
//   Count (int), Limit (int, ReadOnly), Secret (int, WriteOnly)
//   Power (link): Supply "PSU A" (2-2)
//   Servers (list): Server "S1" (3-3) and "S2" (3-4), each with Load (double)
//   Total (shortcut): Count, Missing, Limit;  Ghost (shortcut): Nowhere
// Solution Control "SC" (9-9), a second root named by the solution-control definition.
class SDKFacade : public ::testing::Test
{
protected:
  SDKFacade()
  {
    auto rack = std::make_unique<M::Entity>("Rack", "Rack 1");
    rack->setUniqueID(M::EntityID(1, 1));
    auto& results = static_cast<M::CompositeAttribute&>(
        *rack->createAttribute(AttributeType::Composite, "Results", AccessType::ReadWrite));
    results.createAttribute(AttributeType::Double, "Time", AccessType::ReadWrite)->setUnit("s");
    static_cast<M::StringAttribute*>(
        results.createAttribute(AttributeType::String, "Label", AccessType::ReadOnly))
        ->set("cold aisle");
    static_cast<M::IntAttribute*>(rack->createAttribute(AttributeType::Int, "Count", AccessType::ReadWrite))
        ->set(7);
    static_cast<M::IntAttribute*>(rack->createAttribute(AttributeType::Int, "Limit", AccessType::ReadOnly))
        ->set(7);
    rack->createAttribute(AttributeType::Int, "Secret", AccessType::WriteOnly);

    auto& power = static_cast<M::LinkAttribute&>(
        *rack->createAttribute(AttributeType::Link, "Power", AccessType::ReadWrite));
    power.setRelationShipType("PoweredBy");
    power.setOwnsEntities(true);
    power.addEntity(makeEntity("Supply", "PSU A", 2, 2));

    auto& servers = static_cast<M::ListAttribute&>(
        *rack->createAttribute(AttributeType::List, "Servers", AccessType::ReadWrite));
    servers.setOwnsEntities(true);
    for (int i = 0; i < 2; ++i)
    {
      auto server = makeEntity("Server", "S" + std::to_string(i + 1), 3, 3 + i);
      server->createAttribute(AttributeType::Double, "Load", AccessType::ReadWrite);
      servers.addEntity(std::move(server));
    }

    auto& total = static_cast<M::ShortcutAttribute&>(
        *rack->createAttribute(AttributeType::Shortcut, "Total", AccessType::ReadWrite));
    total.addShortcut({M::AttributePath("Count"), M::AttributePath("Missing"), M::AttributePath("Limit")});
    static_cast<M::ShortcutAttribute&>(
        *rack->createAttribute(AttributeType::Shortcut, "Ghost", AccessType::ReadWrite))
        .addShortcut(M::AttributePath("Nowhere"));

    m_collection.addRootEntity(std::move(rack));
    m_collection.addRootEntity(makeEntity("Solution Control", "SC", 9, 9));
    M::SolutionControlDefinition definition;
    definition.setSolutionControlType("Solution Control");
    definition.setSolutionControlName("SC");
    m_collection.setSolutionControlDefinition(definition);
  }

  static std::unique_ptr<M::Entity> makeEntity(const std::string& type, const std::string& name, int a, int b)
  {
    auto entity = std::make_unique<M::Entity>(type, name);
    entity->setUniqueID(M::EntityID(a, b));
    return entity;
  }

  IEntity& rack()
  {
    IEntity* entity = nullptr;
    EXPECT_EQ(api().getEntity(0, entity), ExceptionType::Success);
    return *entity;
  }

  IAttribute& at(const char* path)
  {
    IAttribute* attribute = nullptr;
    EXPECT_EQ(rack().getAttributeByPath(path, attribute), ExceptionType::Success)
        << rack().getLastErrorMessage();
    return *attribute;
  }

  IEntityCollection& api() { return *m_collection.getSDKInterface(); }

  static std::string text(const std::function<ExceptionType(IString&)>& call)
  {
    String out;
    EXPECT_EQ(call(out), ExceptionType::Success);
    return out.str();
  }

  M::EntityCollection m_collection;
};

} // namespace

TEST_F(SDKFacade, CollectionCountsAndLooksUpEntities)
{
  std::uint64_t count = 0;
  EXPECT_EQ(api().getNumberOfEntities(count), ExceptionType::Success);
  EXPECT_EQ(count, 5u);
  EXPECT_EQ(api().getNumberOfRootEntities(count), ExceptionType::Success);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(api().getNumberOfEntitiesOfType("Server", count), ExceptionType::Success);
  EXPECT_EQ(count, 2u);

  // Each lookup names the entity it should find by its ID.
  struct Case
  {
    const char* name;
    std::function<ExceptionType(IEntity*&)> lookup;
    EntityID expected;
  };
  const Case cases[] = {
      {"index 0 is the first root", [&](IEntity*& e) { return api().getEntity(0, e); }, {1, 1}},
      {"pre-order: the link's entity next", [&](IEntity*& e) { return api().getEntity(1, e); }, {2, 2}},
      {"by ID", [&](IEntity*& e) { return api().getEntityByID(EntityID(3, 4), e); }, {3, 4}},
      {"by C ID",
       [&](IEntity*& e) {
         return api().getEntityByID(KorvanSDK_Model_EntityID{{3, 3}}, e);
       },
       {3, 3}},
      {"by type and index", [&](IEntity*& e) { return api().getEntityByType("Server", 1, e); }, {3, 4}},
      {"by full name", [&](IEntity*& e) { return api().getEntityByName("Server", "Rack 1->S2", e); }, {3, 4}},
      {"by own name", [&](IEntity*& e) { return api().getEntityByName("Server", "S1", e); }, {3, 3}},
      {"second root", [&](IEntity*& e) { return api().getRootEntity(1, e); }, {9, 9}},
      {"solution control", [&](IEntity*& e) { return api().getSolutionControl(e); }, {9, 9}},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    IEntity* entity = nullptr;
    ASSERT_EQ(c.lookup(entity), ExceptionType::Success) << api().getLastErrorMessage();
    ASSERT_NE(entity, nullptr);
    EntityID id;
    EXPECT_EQ(entity->getUniqueID(id), ExceptionType::Success);
    EXPECT_EQ(id, c.expected);
  }
}

TEST_F(SDKFacade, EntityGivesItsNamesAndChildrenByIndexNameAndPath)
{
  IEntity* s2 = nullptr;
  ASSERT_EQ(api().getEntityByID(EntityID(3, 4), s2), ExceptionType::Success);
  EXPECT_EQ(text([&](IString& s) { return s2->getName(false, s); }), "S2");
  EXPECT_EQ(text([&](IString& s) { return s2->getName(true, s); }), "Rack 1->S2");

  std::uint64_t count = 0;
  EXPECT_EQ(rack().getNumberOfAttributes(false, count), ExceptionType::Success);
  EXPECT_EQ(count, 8u);
  EXPECT_EQ(rack().getNumberOfAttributes(true, count), ExceptionType::Success);
  EXPECT_EQ(count, 10u);

  IAttribute* byIndex = nullptr;
  IAttribute* recursive = nullptr;
  IAttribute* byName = nullptr;
  IAttribute* byPath = nullptr;
  EXPECT_EQ(rack().getAttribute(1, false, byIndex), ExceptionType::Success);
  EXPECT_EQ(rack().getAttribute(2, true, recursive), ExceptionType::Success);
  EXPECT_EQ(rack().getAttributeByName("Count", byName), ExceptionType::Success);
  EXPECT_EQ(rack().getAttributeByPath("Results.Label", byPath), ExceptionType::Success);
  EXPECT_EQ(byIndex, byName) << "a model object has one handle";
  EXPECT_EQ(recursive, byPath);
  EXPECT_EQ(text([&](IString& s) { return byIndex->getType(s); }), "Count");

  // A path runs through the list by entity index; paths print relative to the entity or absolute.
  IAttribute* load = nullptr;
  ASSERT_EQ(rack().getAttributeByPath("Servers.1.Load", load), ExceptionType::Success);
  EXPECT_EQ(text([&](IString& s) { return load->getAttributePath(true, s); }), "Load");
  EXPECT_EQ(text([&](IString& s) { return load->getAttributePath(false, s); }), "Rack.Servers.Server.Load");
  EntityID owner;
  EXPECT_EQ(load->getEntityID(owner), ExceptionType::Success);
  EXPECT_EQ(owner, EntityID(3, 4));
  EXPECT_EQ(text([&](IString& s) { return at("Results.Time").getAttributePath(true, s); }), "Results.Time");

  IAttribute* self = nullptr;
  EXPECT_EQ(rack().getAttributeByPath("", self), ExceptionType::Success);
  EXPECT_EQ(self, &rack());
}

TEST_F(SDKFacade, KindsAndNarrowing)
{
  struct Case
  {
    const char* path;
    AttributeType kind;
    bool composite, entityLink, link, list, shortcut;
  };
  const Case cases[] = {
      {"Results", AttributeType::Composite, true, false, false, false, false},
      {"Count", AttributeType::Int, false, false, false, false, false},
      {"Power", AttributeType::Link, false, true, true, false, false},
      {"Servers", AttributeType::List, false, true, false, true, false},
      {"Total", AttributeType::Shortcut, false, false, false, false, true},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.path);
    IAttribute& attribute = at(c.path);
    AttributeType kind = AttributeType::Unknown;
    EXPECT_EQ(attribute.getAttributeType(false, kind), ExceptionType::Success);
    EXPECT_EQ(kind, c.kind);
    EXPECT_EQ(attribute.asComposite() != nullptr, c.composite);
    EXPECT_EQ(attribute.asEntity(), nullptr);
    EXPECT_EQ(attribute.asEntityLink() != nullptr, c.entityLink);
    EXPECT_EQ(attribute.asLink() != nullptr, c.link);
    EXPECT_EQ(attribute.asList() != nullptr, c.list);
    EXPECT_EQ(attribute.asArray(), nullptr);
    EXPECT_EQ(attribute.asShortcut() != nullptr, c.shortcut);
  }
  EXPECT_EQ(rack().asEntity(), &rack());
  EXPECT_EQ(rack().asComposite(), &rack());

  // Resolved, a shortcut to two ints reports Int.
  AttributeType resolved = AttributeType::Unknown;
  EXPECT_EQ(at("Total").getAttributeType(true, resolved), ExceptionType::Success);
  EXPECT_EQ(resolved, AttributeType::Int);
}

TEST_F(SDKFacade, ValuesPerChronologyAndUnits)
{
  IAttribute& time = at("Results.Time");
  EXPECT_EQ(time.setDoubleValue(0.5, Chronology::Initial), ExceptionType::Success);
  EXPECT_EQ(time.setDoubleValue(2.25, "s", Chronology::Current), ExceptionType::Success);
  EXPECT_EQ(time.setFloatValue(4.0f, Chronology::Next), ExceptionType::Success);
  const std::pair<Chronology, double> expected[] = {
      {Chronology::Initial, 0.5}, {Chronology::Current, 2.25}, {Chronology::Next, 4.0}};
  for (const auto& [chronology, value] : expected)
  {
    SCOPED_TRACE(chronologyToString(chronology));
    double read = -1;
    EXPECT_EQ(time.getDoubleValue(chronology, read), ExceptionType::Success);
    EXPECT_EQ(read, value);
  }
  EXPECT_EQ(text([&](IString& s) { return at("Results.Label").getStringValue(Chronology::Current, s); }),
            "cold aisle");
  EXPECT_EQ(text([&](IString& s) { return time.getUnit(s); }), "s");

  IAttribute& count = at("Count");
  EXPECT_EQ(count.setStringValue("12", Chronology::Current), ExceptionType::Success);
  int number = 0;
  bool flag = false;
  EXPECT_EQ(count.getIntValue(Chronology::Current, number), ExceptionType::Success);
  EXPECT_EQ(number, 12);
  EXPECT_EQ(count.getBoolValue(Chronology::Current, flag), ExceptionType::Success);
  EXPECT_TRUE(flag);

  EXPECT_EQ(count.setUnit("pcs"), ExceptionType::Success);
  EXPECT_EQ(count.setIntValue(13, "pcs", Chronology::Current), ExceptionType::Success);
  EXPECT_EQ(count.getIntValue(Chronology::Current, number), ExceptionType::Success);
  EXPECT_EQ(number, 13);
}

TEST_F(SDKFacade, LinkAndListHandOutTheirEntities)
{
  IEntityLinkAttribute* power = at("Power").asEntityLink();
  IEntityLinkAttribute* servers = at("Servers").asEntityLink();
  ASSERT_NE(power, nullptr);
  ASSERT_NE(servers, nullptr);

  EXPECT_EQ(text([&](IString& s) { return power->getRelationshipType(s); }), "PoweredBy");
  std::uint64_t count = 0;
  EXPECT_EQ(servers->getNumberOfEntities(count), ExceptionType::Success);
  EXPECT_EQ(count, 2u);

  IEntity* supply = nullptr;
  IEntity* second = nullptr;
  IEntity* byID = nullptr;
  ASSERT_EQ(power->getEntity(0, supply), ExceptionType::Success);
  EXPECT_EQ(text([&](IString& s) { return supply->getName(false, s); }), "PSU A");
  ASSERT_EQ(servers->getEntity(1, second), ExceptionType::Success);
  ASSERT_EQ(servers->getEntity(EntityID(3, 4), byID), ExceptionType::Success);
  EXPECT_EQ(second, byID);

  // The list's entity is the same handle the collection hands out.
  IEntity* fromCollection = nullptr;
  ASSERT_EQ(api().getEntityByID(EntityID(3, 4), fromCollection), ExceptionType::Success);
  EXPECT_EQ(second, fromCollection);
}

TEST_F(SDKFacade, ShortcutHandsOutItsTargets)
{
  IShortcutAttribute* total = at("Total").asShortcut();
  ASSERT_NE(total, nullptr);
  std::uint64_t count = 0;
  EXPECT_EQ(total->getNumberOfShortcuts(count), ExceptionType::Success);
  EXPECT_EQ(count, 3u);

  IAttribute* first = nullptr;
  IAttribute* third = nullptr;
  IAttribute* firstValid = nullptr;
  EXPECT_EQ(total->getShortcut(0, first), ExceptionType::Success);
  EXPECT_EQ(total->getShortcut(2, third), ExceptionType::Success);
  EXPECT_EQ(total->getFirstValidShortcut(firstValid), ExceptionType::Success);
  EXPECT_EQ(first, &at("Count"));
  EXPECT_EQ(third, &at("Limit"));
  EXPECT_EQ(firstValid, first);

  // Reading through the shortcut: both resolvable targets hold 7.
  int value = 0;
  EXPECT_EQ(total->getIntValue(Chronology::Current, value), ExceptionType::Success);
  EXPECT_EQ(value, 7);
}

TEST_F(SDKFacade, EachFailureBecomesItsCodeWithTheModelsMessage)
{
  IAttribute* out = nullptr;
  IEntity* entity = nullptr;
  int number = 0;
  struct Case
  {
    const char* name;
    std::function<ExceptionType()> call;
    std::function<IHandle&()> handle;
    ExceptionType code;
    std::string message;
  };
  const Case cases[] = {
      {"bad path", [&] { return rack().getAttributeByPath("Results.Nope", out); },
       [&]() -> IHandle& { return rack(); }, ExceptionType::RuntimeError,
       "Invalid path [1-1] of type Rack : Results.Nope"},
      {"path through a value", [&] { return rack().getAttributeByPath("Count.X", out); },
       [&]() -> IHandle& { return rack(); }, ExceptionType::RuntimeError,
       "Invalid path [1-1] of type Rack : Count.X"},
      {"bad name", [&] { return at("Results").asComposite()->getAttributeByName("Tim", out); },
       [&]() -> IHandle& { return at("Results"); }, ExceptionType::RuntimeError,
       "Invalid path [1-1] of type Rack : Results.Tim"},
      {"bad index", [&] { return rack().getAttribute(99, true, out); }, [&]() -> IHandle& { return rack(); },
       ExceptionType::OutOfRange, "No Attribute Found for [1-1] of type Rack child_i='99'"},
      {"user write to ReadOnly", [&] { return at("Limit").setIntValue(5, Chronology::Current); },
       [&]() -> IHandle& { return at("Limit"); }, ExceptionType::AccessError, "User has no write access"},
      {"user read of WriteOnly", [&] { return at("Secret").getIntValue(Chronology::Current, number); },
       [&]() -> IHandle& { return at("Secret"); }, ExceptionType::AccessError, "User has no read access"},
      {"wrong unit", [&] { return at("Results.Time").setDoubleValue(1.0, "min", Chronology::Current); },
       [&]() -> IHandle& { return at("Results.Time"); }, ExceptionType::RuntimeError, "Invalid Unit"},
      {"value on a composite", [&] { return at("Results").getIntValue(Chronology::Current, number); },
       [&]() -> IHandle& { return at("Results"); }, ExceptionType::RuntimeError, "Not Available"},
      {"unit on an entity", [&] { return rack().setUnit("m"); }, [&]() -> IHandle& { return rack(); },
       ExceptionType::RuntimeError, "Not Available"},
      {"shortcut index past the end", [&] { return at("Total").asShortcut()->getShortcut(3, out); },
       [&]() -> IHandle& { return at("Total"); }, ExceptionType::OutOfRange, "No Shortcut_i='3'"},
      {"shortcut path naming nothing", [&] { return at("Total").asShortcut()->getShortcut(1, out); },
       [&]() -> IHandle& { return at("Total"); }, ExceptionType::NullHandle,
       "Shortcut_i='1' names no attribute: path 'Missing' resolves to nothing"},
      {"no shortcut resolves", [&] { return at("Ghost").asShortcut()->getFirstValidShortcut(out); },
       [&]() -> IHandle& { return at("Ghost"); }, ExceptionType::NullHandle,
       "No Shortcut resolves: none of the 1 paths names an attribute"},
      {"null path", [&] { return rack().getAttributeByPath(nullptr, out); },
       [&]() -> IHandle& { return rack(); }, ExceptionType::NullArgument,
       "Argument 'path' is null: pass a valid pointer"},
      {"null string value", [&] { return at("Count").setStringValue(nullptr, Chronology::Current); },
       [&]() -> IHandle& { return at("Count"); }, ExceptionType::NullArgument,
       "Argument 'value' is null: pass a valid pointer"},
      {"text that is no number", [&] { return at("Count").setStringValue("twelve", Chronology::Current); },
       [&]() -> IHandle& { return at("Count"); }, ExceptionType::InvalidArgument, "invalid stoi argument"},
      {"list index", [&] { return at("Servers").asEntityLink()->getEntity(5, entity); },
       [&]() -> IHandle& { return at("Servers"); }, ExceptionType::OutOfRange,
       "No Entity found with entity_i='5'"},
      {"collection index", [&] { return api().getEntity(99, entity); }, [&]() -> IHandle& { return api(); },
       ExceptionType::OutOfRange, "No Entity found with entity_i='99'"},
      {"collection ID", [&] { return api().getEntityByID(EntityID(8, -8), entity); },
       [&]() -> IHandle& { return api(); }, ExceptionType::OutOfRange,
       "No Entity found with entityID='8--8'"},
      {"collection type and name", [&] { return api().getEntityByName("Server", "S3", 1, entity); },
       [&]() -> IHandle& { return api(); }, ExceptionType::OutOfRange,
       "No Entity found with entityType='Server' and entityName='S3' and entity_i='1'"},
      {"collection root", [&] { return api().getRootEntity(2, entity); }, [&]() -> IHandle& { return api(); },
       ExceptionType::OutOfRange, "No Root Entity found with rootEntity_i='2'"},
      {"collection null type", [&] { return api().getEntityByType(nullptr, 0, entity); },
       [&]() -> IHandle& { return api(); }, ExceptionType::NullArgument,
       "Argument 'type' is null: pass a valid pointer"},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.call(), c.code);
    EXPECT_EQ(c.handle().getLastError(), c.code);
    EXPECT_EQ(std::string(c.handle().getLastErrorMessage()), c.message);
  }
}

TEST_F(SDKFacade, FailedLookupHandsOutNull)
{
  IAttribute* attribute = &rack();
  IEntity* entity = &rack();
  EXPECT_EQ(rack().getAttribute(50, false, attribute), ExceptionType::OutOfRange);
  EXPECT_EQ(attribute, nullptr);
  EXPECT_EQ(api().getEntityByType("Server", 2, entity), ExceptionType::OutOfRange);
  EXPECT_EQ(entity, nullptr);
}

TEST_F(SDKFacade, SuccessClearsTheErrorOfItsOwnHandleOnly)
{
  IEntity& root = rack();
  IAttribute& count = at("Count");
  IAttribute* out = nullptr;
  int value = 0;
  ASSERT_EQ(root.getAttributeByPath("Nope", out), ExceptionType::RuntimeError);
  ASSERT_EQ(count.setIntValue(1, static_cast<Chronology>(7)), ExceptionType::OutOfRange);
  EXPECT_EQ(std::string(count.getLastErrorMessage()), "Chronology Out Of Range");

  EXPECT_EQ(root.getAttributeByPath("Count", out), ExceptionType::Success);
  EXPECT_EQ(root.getLastError(), ExceptionType::Success);
  EXPECT_EQ(std::string(root.getLastErrorMessage()), "");
  EXPECT_EQ(count.getLastError(), ExceptionType::OutOfRange) << "another handle keeps its own error";

  // A failed write leaves the value as it was.
  IAttribute& limit = at("Limit");
  ASSERT_EQ(limit.setIntValue(99, Chronology::Current), ExceptionType::AccessError);
  IAttribute* viaShortcut = nullptr;
  ASSERT_EQ(at("Total").asShortcut()->getShortcut(2, viaShortcut), ExceptionType::Success);
  EXPECT_EQ(viaShortcut, &limit);
  at("Count").setIntValue(7, Chronology::Current);
  EXPECT_EQ(at("Total").getIntValue(Chronology::Current, value), ExceptionType::Success);
  EXPECT_EQ(value, 7);
}

// Walks a small model through the host interfaces only, and checks that every failure comes back as
// its code with the model's exact message on the handle.
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/sdk/String.h"

#include "model/ModelTestSupport.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

using namespace KorvanSDK;
using namespace KorvanSDK::Model;
using namespace OmbrixTest;
namespace M = Ombrix::Model;
using E = ExceptionType;
using CEntityID = KorvanSDK_Model_EntityID;

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
    auto rack = makeEntity("Rack", "Rack 1", {1, 1});
    auto& results = addComposite(*rack, "Results");
    addValue<double>(results, "Time", 0.0).setUnit("s");
    addValue<std::string>(results, "Label", "cold aisle", AccessType::ReadOnly);
    addValue<int>(*rack, "Count", 7);
    addValue<int>(*rack, "Limit", 7, AccessType::ReadOnly);
    addValue<int>(*rack, "Secret", 0, AccessType::WriteOnly);
    addLink<M::LinkAttribute>(*rack, "Power", true, "PoweredBy")
        .addEntity(makeEntity("Supply", "PSU A", {2, 2}));
    auto& servers = addLink<M::ListAttribute>(*rack, "Servers", true);
    for (int i : {3, 4})
      addValue<double>(*servers.addEntity(makeEntity("Server", "S" + std::to_string(i - 2), {3, i})), "Load",
                       0.0);
    addShortcut(*rack, "Total", {"Count", "Missing", "Limit"});
    addShortcut(*rack, "Ghost", {"Nowhere"});
    m_collection.addRootEntity(std::move(rack));
    m_collection.addRootEntity(makeEntity("Solution Control", "SC", {9, 9}));
    M::SolutionControlDefinition definition;
    definition.setSolutionControlName("SC");
    m_collection.setSolutionControlDefinition(definition);
  }

  IEntity& rack()
  {
    IEntity* entity = nullptr;
    EXPECT_EQ(api().getEntity(0, entity), E::Success);
    return *entity;
  }

  IAttribute& at(const char* path)
  {
    IAttribute* attribute = nullptr;
    EXPECT_EQ(rack().getAttributeByPath(path, attribute), E::Success) << rack().getLastErrorMessage();
    return *attribute;
  }

  IEntityCollection& api() { return *m_collection.getSDKInterface(); }

  // What a successful call hands out.
  template <typename T, typename Call> static T get(Call call)
  {
    T value{};
    EXPECT_EQ(call(value), E::Success);
    return value;
  }
  static std::string text(const std::function<E(IString&)>& call) { return get<String>(call).str(); }

  M::EntityCollection m_collection;
};

} // namespace

TEST_F(SDKFacade, CollectionCountsAndLooksUpEntities)
{
  EXPECT_EQ(get<std::uint64_t>([&](auto& n) { return api().getNumberOfEntities(n); }), 5u);
  EXPECT_EQ(get<std::uint64_t>([&](auto& n) { return api().getNumberOfRootEntities(n); }), 2u);
  EXPECT_EQ(get<std::uint64_t>([&](auto& n) { return api().getNumberOfEntitiesOfType("Server", n); }), 2u);
  IEntityLinkAttribute& servers = *at("Servers").asEntityLink();
  const CEntityID cID{{3, 3}};
  // Each lookup names the entity it should find by its ID.
  const std::tuple<const char*, std::function<E(IEntity*&)>, EntityID> cases[] = {
      {"index 0 is the first root", [&](IEntity*& e) { return api().getEntity(0, e); }, {1, 1}},
      {"by ID", [&](IEntity*& e) { return api().getEntityByID(EntityID(3, 4), e); }, {3, 4}},
      {"by C ID", [&](IEntity*& e) { return api().getEntityByID(cID, e); }, {3, 3}},
      {"by type and index", [&](IEntity*& e) { return api().getEntityByType("Server", 1, e); }, {3, 4}},
      {"by full name", [&](IEntity*& e) { return api().getEntityByName("Server", "Rack 1->S2", e); }, {3, 4}},
      {"second root", [&](IEntity*& e) { return api().getRootEntity(1, e); }, {9, 9}},
      {"solution control", [&](IEntity*& e) { return api().getSolutionControl(e); }, {9, 9}},
      {"list by index", [&](IEntity*& e) { return servers.getEntity(1, e); }, {3, 4}},
      {"list by ID", [&](IEntity*& e) { return servers.getEntity(EntityID(3, 3), e); }, {3, 3}},
      {"link", [&](IEntity*& e) { return at("Power").asEntityLink()->getEntity(0, e); }, {2, 2}},
  };
  for (const auto& [name, lookup, expected] : cases)
  {
    SCOPED_TRACE(name);
    IEntity* entity = get<IEntity*>(lookup);
    ASSERT_NE(entity, nullptr) << api().getLastErrorMessage();
    const EntityID id = get<EntityID>([&](EntityID& i) { return entity->getUniqueID(i); });
    EXPECT_EQ(id, expected);
    EXPECT_EQ(entity, get<IEntity*>([&](IEntity*& e) { return api().getEntityByID(id, e); }))
        << "a model object has one handle";
  }
}

TEST_F(SDKFacade, EntityGivesItsNamesAndChildrenByIndexNameAndPath)
{
  IEntity& s2 = *get<IEntity*>([&](IEntity*& e) { return api().getEntityByID(EntityID(3, 4), e); });
  EXPECT_EQ(text([&](IString& s) { return s2.getName(false, s); }), "S2");
  EXPECT_EQ(text([&](IString& s) { return s2.getName(true, s); }), "Rack 1->S2");
  EXPECT_EQ(text([&](IString& s) { return at("Power").asEntityLink()->getRelationshipType(s); }),
            "PoweredBy");
  EXPECT_EQ(get<std::uint64_t>([&](auto& n) { return rack().getNumberOfAttributes(false, n); }), 8u);
  EXPECT_EQ(get<std::uint64_t>([&](auto& n) { return rack().getNumberOfAttributes(true, n); }), 10u);
  EXPECT_EQ(get<std::uint64_t>([&](auto& n) { return at("Servers").asEntityLink()->getNumberOfEntities(n); }),
            2u);

  // A model object has one handle, however it is reached.
  IAttribute* byIndex = get<IAttribute*>([&](IAttribute*& a) { return rack().getAttribute(1, false, a); });
  EXPECT_EQ(byIndex, &at("Count"));
  EXPECT_EQ(byIndex, get<IAttribute*>([&](IAttribute*& a) { return rack().getAttributeByName("Count", a); }));
  EXPECT_EQ(get<IAttribute*>([&](IAttribute*& a) { return rack().getAttribute(2, true, a); }),
            &at("Results.Label"));
  EXPECT_EQ(text([&](IString& s) { return byIndex->getType(s); }), "Count");
  EXPECT_EQ(&at(""), &rack());

  // A path runs through the list by entity index; paths print relative to the entity or absolute.
  IAttribute& load = at("Servers.1.Load");
  EXPECT_EQ(text([&](IString& s) { return load.getAttributePath(true, s); }), "Load");
  EXPECT_EQ(text([&](IString& s) { return load.getAttributePath(false, s); }), "Rack.Servers.Server.Load");
  EXPECT_EQ(get<EntityID>([&](EntityID& id) { return load.getEntityID(id); }), EntityID(3, 4));
}

TEST_F(SDKFacade, KindsNarrowingAndShortcutTargets)
{
  // The interfaces a handle narrows to, in the order composite, entity, entity link, link, list, array,
  // shortcut; resolved, a shortcut to two ints is an Int.
  const auto narrowing = [](IAttribute& a)
  {
    const bool answers[] = {a.asComposite() != nullptr, a.asEntity() != nullptr, a.asEntityLink() != nullptr,
                            a.asLink() != nullptr,      a.asList() != nullptr,   a.asArray() != nullptr,
                            a.asShortcut() != nullptr};
    std::string result;
    for (bool answer : answers)
      result += answer ? 'x' : '.';
    return result;
  };
  const std::tuple<const char*, AttributeType, AttributeType, const char*> cases[] = {
      {"", AttributeType::Entity, AttributeType::Entity, "xx....."},
      {"Results", AttributeType::Composite, AttributeType::Composite, "x......"},
      {"Count", AttributeType::Int, AttributeType::Int, "......."},
      {"Power", AttributeType::Link, AttributeType::Link, "..xx..."},
      {"Servers", AttributeType::List, AttributeType::List, "..x.x.."},
      {"Total", AttributeType::Shortcut, AttributeType::Int, "......x"},
  };
  for (const auto& [path, kind, resolved, expected] : cases)
  {
    SCOPED_TRACE(path);
    IAttribute& a = at(path);
    EXPECT_EQ(get<AttributeType>([&](AttributeType& k) { return a.getAttributeType(false, k); }), kind);
    EXPECT_EQ(get<AttributeType>([&](AttributeType& k) { return a.getAttributeType(true, k); }), resolved);
    EXPECT_EQ(narrowing(a), expected);
  }

  // The shortcut hands out its targets.
  IShortcutAttribute& total = *at("Total").asShortcut();
  EXPECT_EQ(get<std::uint64_t>([&](auto& n) { return total.getNumberOfShortcuts(n); }), 3u);
  EXPECT_EQ(get<IAttribute*>([&](IAttribute*& a) { return total.getShortcut(0, a); }), &at("Count"));
  EXPECT_EQ(get<IAttribute*>([&](IAttribute*& a) { return total.getShortcut(2, a); }), &at("Limit"));
  EXPECT_EQ(get<IAttribute*>([&](IAttribute*& a) { return total.getFirstValidShortcut(a); }), &at("Count"));
  // Reading through the shortcut: both resolvable targets hold 7.
  EXPECT_EQ(get<int>([&](int& v) { return total.getIntValue(Chronology::Current, v); }), 7);
}

TEST_F(SDKFacade, ValuesPerChronologyAndUnits)
{
  const Chronology now = Chronology::Current;
  IAttribute& time = at("Results.Time");
  EXPECT_EQ(time.setDoubleValue(0.5, Chronology::Initial), E::Success);
  EXPECT_EQ(time.setDoubleValue(2.25, "s", now), E::Success);
  EXPECT_EQ(time.setFloatValue(4.0f, Chronology::Next), E::Success);
  EXPECT_EQ(get<double>([&](double& v) { return time.getDoubleValue(Chronology::Initial, v); }), 0.5);
  EXPECT_EQ(get<double>([&](double& v) { return time.getDoubleValue(now, v); }), 2.25);
  EXPECT_EQ(get<double>([&](double& v) { return time.getDoubleValue(Chronology::Next, v); }), 4.0);
  EXPECT_EQ(text([&](IString& s) { return at("Results.Label").getStringValue(now, s); }), "cold aisle");
  EXPECT_EQ(text([&](IString& s) { return time.getUnit(s); }), "s");

  IAttribute& count = at("Count");
  EXPECT_EQ(count.setStringValue("12", now), E::Success);
  EXPECT_EQ(get<int>([&](int& v) { return count.getIntValue(now, v); }), 12);
  EXPECT_TRUE(get<bool>([&](bool& v) { return count.getBoolValue(now, v); }));
  EXPECT_EQ(count.setUnit("pcs"), E::Success);
  EXPECT_EQ(count.setIntValue(13, "pcs", now), E::Success);
  EXPECT_EQ(get<int>([&](int& v) { return count.getIntValue(now, v); }), 13);
}

TEST_F(SDKFacade, EveryValueCallChecksTheUsersAccessAndSuccessClearsTheError)
{
  int i = 0;
  bool b = false;
  float f = 0;
  double d = 0;
  String s;
  const Chronology now = Chronology::Current;
  using A = IAttribute&;
  using Call = std::function<E(A)>;
  const std::pair<Call, Call> readsAndWrites[] = {
      {[&](A a) { return a.getIntValue(now, i); }, [](A a) { return a.setIntValue(1, now); }},
      {[&](A a) { return a.getBoolValue(now, b); }, [](A a) { return a.setBoolValue(1, now); }},
      {[&](A a) { return a.getFloatValue(now, f); }, [](A a) { return a.setFloatValue(1, now); }},
      {[&](A a) { return a.getDoubleValue(now, d); }, [](A a) { return a.setDoubleValue(1, now); }},
      {[&](A a) { return a.getStringValue(now, s); }, [](A a) { return a.setStringValue("1", now); }},
  };
  for (const auto& [read, write] : readsAndWrites)
  {
    EXPECT_EQ(read(at("Secret")), E::AccessError);
    EXPECT_EQ(std::string(at("Secret").getLastErrorMessage()), "User has no read access");
    EXPECT_EQ(read(at("Limit")), E::Success);
    EXPECT_EQ(write(at("Limit")), E::AccessError);
    EXPECT_EQ(std::string(at("Limit").getLastErrorMessage()), "User has no write access");
    EXPECT_EQ(write(at("Secret")), E::Success);
  }
  // A success clears the error of its own handle only.
  EXPECT_EQ(at("Secret").getLastError(), E::Success);
  EXPECT_EQ(std::string(at("Secret").getLastErrorMessage()), "");
  EXPECT_EQ(at("Limit").getLastError(), E::AccessError);
  EXPECT_EQ(at("Limit").getIntValue(now, i), E::Success);
  EXPECT_EQ(i, 7) << "a refused write changes nothing";
}

TEST_F(SDKFacade, EachFailureBecomesItsCodeWithTheModelsMessageAndHandsOutNull)
{
  IAttribute* out = nullptr;
  IEntity* entity = nullptr;
  int number = 0;
  IEntity& r = rack();
  IEntityCollection& c = api();
  IAttribute& count = at("Count");
  IShortcutAttribute& total = *at("Total").asShortcut();
  M::EntityCollection empty;
  const std::tuple<IHandle*, std::function<E()>, E, std::string, bool> cases[] = {
      {&r, [&] { return r.getAttributeByPath("Results.Nope", out); }, E::RuntimeError,
       "Invalid path [1-1] of type Rack : Results.Nope", true},
      {&at("Results"), [&] { return at("Results").asComposite()->getAttributeByName("Tim", out); },
       E::RuntimeError, "Invalid path [1-1] of type Rack : Results.Tim", true},
      {&r, [&] { return r.getAttributeByName("Results.Time", out); }, E::RuntimeError,
       "No child named 'Results.Time' in Rack", true},
      {&r, [&] { return r.getAttribute(99, true, out); }, E::OutOfRange,
       "No Attribute Found for [1-1] of type Rack child_i='99'", true},
      {&count, [&] { return count.setIntValue(1, static_cast<Chronology>(7)); }, E::OutOfRange,
       "Chronology Out Of Range", false},
      {&at("Results.Time"),
       [&] { return at("Results.Time").setDoubleValue(1.0, "min", Chronology::Current); }, E::RuntimeError,
       "Invalid Unit", false},
      {&at("Results"), [&] { return at("Results").getIntValue(Chronology::Current, number); },
       E::RuntimeError, "Not Available", false},
      {&r, [&] { return r.setUnit("m"); }, E::RuntimeError, "Not Available", false},
      {&total, [&] { return total.getShortcut(3, out); }, E::OutOfRange, "No Shortcut_i='3'", true},
      {&total, [&] { return total.getShortcut(1, out); }, E::NullHandle,
       "Shortcut_i='1' names no attribute: path 'Missing' resolves to nothing", true},
      {&at("Ghost"), [&] { return at("Ghost").asShortcut()->getFirstValidShortcut(out); }, E::NullHandle,
       "No Shortcut resolves: none of the 1 paths names an attribute", true},
      {&r, [&] { return r.getAttributeByPath(nullptr, out); }, E::NullArgument,
       "Argument 'path' is null: pass a valid pointer", true},
      {&count, [&] { return count.setIntValue(1, nullptr, Chronology::Current); }, E::NullArgument,
       "Argument 'unit' is null: pass a valid pointer", false},
      {&count, [&] { return count.setStringValue(nullptr, Chronology::Current); }, E::NullArgument,
       "Argument 'value' is null: pass a valid pointer", false},
      {&at("Servers"), [&] { return at("Servers").asEntityLink()->getEntity(5, entity); }, E::OutOfRange,
       "No Entity found with entity_i='5'", true},
      {&c, [&] { return c.getEntity(99, entity); }, E::OutOfRange, "No Entity found with entity_i='99'",
       true},
      {&c, [&] { return c.getEntityByID(EntityID(8, -8), entity); }, E::OutOfRange,
       "No Entity found with entityID='8--8'", true},
      {&c, [&] { return c.getEntityByName("Server", "S3", 1, entity); }, E::OutOfRange,
       "No Entity found with entityType='Server' and entityName='S3' and entity_i='1'", true},
      {&c, [&] { return c.getEntityByType("Server", 2, entity); }, E::OutOfRange,
       "No Entity found with entityType='Server' and entity_i='2'", true},
      {&c, [&] { return c.getRootEntity(2, entity); }, E::OutOfRange,
       "No Root Entity found with rootEntity_i='2'", true},
      {&c, [&] { return c.getEntityByType(nullptr, 0, entity); }, E::NullArgument,
       "Argument 'type' is null: pass a valid pointer", true},
      {empty.getSDKInterface(), [&] { return empty.getSDKInterface()->getSolutionControl(entity); },
       E::OutOfRange,
       "No Entity found with entityType='Solution Control' and entityName='Solution Control' and "
       "entity_i='0'",
       true},
  };
  for (const auto& [handle, call, code, message, handsOut] : cases)
  {
    SCOPED_TRACE(message);
    out = &r;
    entity = &r;
    EXPECT_EQ(call(), code);
    EXPECT_EQ(handle->getLastError(), code);
    EXPECT_EQ(std::string(handle->getLastErrorMessage()), message);
    EXPECT_EQ(out == nullptr || entity == nullptr, handsOut) << "a failed lookup hands out null";
  }
}

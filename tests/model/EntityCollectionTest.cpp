#include "ombrix/model/EntityCollection.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"

#include "model/ModelTestSupport.h"
#include "support/TestSupport.h"

#include <functional>
#include <random>
#include <stdexcept>

using namespace Ombrix::Model;
using OmbrixTest::addLink;
using OmbrixTest::entityNames;
using OmbrixTest::makeEntity;

namespace
{

// Root R(1-1) with Group.Kids (owned list) [K1(2-2), K2(3-3)], Single (owned link) S(4-4) holding in an owned
// array Leaf L(5-5), and, not owned, Refs (list) X(6-6), RefLink Y(10-10) and in S RefArray Z(11-11).
std::unique_ptr<Entity> sampleRoot()
{
  auto root = makeEntity("Rack", "R", EntityID(1, 1));
  auto& kids = addLink<ListAttribute>(OmbrixTest::addComposite(*root, "Group"), "Kids", true);
  kids.addEntity(makeEntity("Server", "K1", EntityID(2, 2)));
  kids.addEntity(makeEntity("Server", "K2", EntityID(3, 3)));
  Entity* s =
      addLink<LinkAttribute>(*root, "Single", true).addEntity(makeEntity("Switch", "S", EntityID(4, 4)));
  addLink<ArrayAttribute>(*s, "Leaves", true).addEntity(makeEntity("Port", "L", EntityID(5, 5)));
  addLink<ListAttribute>(*root, "Refs", false).addEntity(makeEntity("Server", "X", EntityID(6, 6)));
  addLink<LinkAttribute>(*root, "RefLink", false).addEntity(makeEntity("Server", "Y", EntityID(10, 10)));
  addLink<ArrayAttribute>(*s, "RefArray", false).addEntity(makeEntity("Server", "Z", EntityID(11, 11)));
  addLink<LinkAttribute>(*root, "Empty", true);
  return root;
}

} // namespace

TEST(EntityCollectionTest, FlatListIsPreOrderThroughOwnedLinksAndFollowsChanges)
{
  EntityCollection collection(sampleRoot());
  EXPECT_EQ(entityNames(collection), (std::vector<std::string>{"R", "K1", "K2", "S", "L"}));
  for (const EntityID referred : {EntityID(6, 6), EntityID(10, 10), EntityID(11, 11)})
    EXPECT_FALSE(collection.getEntityIndex(referred).has_value());
  EXPECT_EQ(collection.addRootEntity(AttributeContainer<Entity>()), collection.end());
  EXPECT_EQ(collection.addRootEntity(std::unique_ptr<Entity>()), collection.end());
  auto it = collection.addRootEntity(makeEntity("Rack", "R2", EntityID(7, 7)));
  EXPECT_EQ(it - collection.begin(), 5);
  EXPECT_EQ(collection.getNumberOfRootEntities(), 2u);
  EXPECT_EQ(collection.getEntityIndex(EntityID(7, 7)), 5u);

  // An entity added inside the model shows up only after a rebuild.
  auto& kids =
      static_cast<ListAttribute&>(collection.getRootEntity(0)->getAttribute(AttributePath("Group.Kids")));
  kids.addEntity(makeEntity("Server", "K3", EntityID(8, 8)));
  EXPECT_FALSE(collection.hasEntity(EntityID(8, 8)));
  collection.rebuildChildEntitiesList();
  EXPECT_EQ(entityNames(collection), (std::vector<std::string>{"R", "K1", "K2", "K3", "S", "L", "R2"}));
  EXPECT_EQ(collection.getEntity("Server", std::size_t{1})->name(), "K2");

  // Erasing takes the entity out of the flat list until the next rebuild.
  it = collection.erase("Server", "K1");
  ASSERT_NE(it, collection.end());
  EXPECT_EQ((*it)->name(), "K2");
  EXPECT_EQ(entityNames(collection), (std::vector<std::string>{"R", "K2", "K3", "S", "L", "R2"}));
  EXPECT_FALSE(collection.hasEntity(EntityID(2, 2)));
  EXPECT_EQ(collection.erase("Server", "K1"), collection.end());
  collection.rebuildChildEntitiesList();
  EXPECT_EQ(collection.getEntityIndex(EntityID(2, 2)), 1u);
}

// The other lookup failures are checked through the host interface (SDKFacadeTest), which hands on these
// texts.
TEST(EntityCollectionTest, FailureTextsAndTheSolutionControlOfTheDefinition)
{
  EntityCollection empty;
  EXPECT_FALSE(empty.hasEntity(std::size_t{0}));
  EXPECT_EQ(empty.findEntity(EntityID(1, 1)), nullptr);
  EXPECT_FALSE(empty.hasSolutionControl());

  EntityCollection collection(sampleRoot());
  const EntityTypeName port{"Port", "L", 1}, nope{"Nope", "L", 0};
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[&] { collection.getEntity(std::size_t{5}); }, "No Entity found with entity_i='5'"},
      {[&] { collection.getEntity("Server", "K3"); },
       "No Entity found with entityType='Server' and entityName='K3' and entity_i='0'"},
      {[&] { collection.getEntity(port); },
       "No Entity found with entityType='Port' and entityName='L' and entity_i='1'"},
      {[&] { collection[nope]; },
       "No Entity found with entityType='Nope' and entityName='L' and entity_i='0'"},
  };
  for (const auto& [call, message] : cases)
    EXPECT_THROW_MSG(call(), std::out_of_range, message);

  collection.addRootEntity(makeEntity("Solution Control", "Solution Control", EntityID(9, 9)));
  EXPECT_TRUE(collection.hasSolutionControl());
  SolutionControlDefinition definition;
  definition.setSolutionControlName("Other");
  collection.setSolutionControlDefinition(definition);
  EXPECT_FALSE(collection.hasSolutionControl());
}

namespace
{

const char* const kTypes[] = {"A", "B", "C"};
const char* const kNames[] = {"n0", "n1", "n2", "n0->n1", "n1->n2", "n2->n0->n1"};

// Positions from `start` on, by first-match linear scan, of the entities `matches` accepts.
std::vector<std::ptrdiff_t> scan(const EntityCollection& c, std::size_t start,
                                 const std::function<bool(const Entity&)>& matches)
{
  std::vector<std::ptrdiff_t> result;
  for (std::size_t i = start; i < c.size(); ++i)
    if (matches(*c[i]))
      result.push_back(static_cast<std::ptrdiff_t>(i));
  return result;
}

// Every lookup agrees with a linear scan of the flat list.
void expectAgreesWithLinearScan(EntityCollection& collection)
{
  for (int first = 0; first < 4; ++first)
    for (int second = 0; second < 2; ++second)
    {
      const EntityID id(first, second);
      const auto matches = scan(collection, 0, [&](const Entity& e) { return e.getUniqueID() == id; });
      const auto expected = matches.empty() ? std::nullopt : std::optional<std::uint64_t>(matches[0]);
      EXPECT_EQ(collection.getEntityIndex(id), expected) << toString(id);
      EXPECT_EQ(collection.hasEntity(id), expected.has_value());
      EXPECT_EQ(collection.getNumberOfEntities(id), matches.size());
    }
  const auto position = [&](EntityCollection::iterator it)
  { return it == collection.end() ? -1 : it - collection.begin(); };
  const auto nth = [](const std::vector<std::ptrdiff_t>& matches, std::size_t i)
  { return i < matches.size() ? matches[i] : -1; };
  // The forms without a start from the beginning; those with one from the middle (indices count from there).
  for (const std::size_t start : {std::size_t{0}, collection.size() / 2})
  {
    const auto from = collection.begin() + static_cast<std::ptrdiff_t>(start);
    for (const std::string type : kTypes)
    {
      const auto positions = scan(collection, start, [&](const Entity& e) { return e.type() == type; });
      EXPECT_EQ(collection.getNumberOfEntities(type),
                scan(collection, 0, [&](const Entity& e) { return e.type() == type; }).size());
      for (std::size_t i = 0; i <= positions.size(); ++i)
        EXPECT_EQ(position(start == 0 ? collection.find(type, i) : collection.find(type, i, from)),
                  nth(positions, i))
            << type << " #" << i << " from " << start;
      for (const std::string name : kNames)
      {
        // A full-name match hides the own-name matches.
        auto matches = scan(collection, start,
                            [&](const Entity& e) { return e.type() == type && e.getName(true) == name; });
        if (matches.empty())
          matches = scan(collection, start,
                         [&](const Entity& e) { return e.type() == type && e.getName(false) == name; });
        for (std::size_t i = 0; i <= matches.size(); ++i)
          EXPECT_EQ(
              position(start == 0 ? collection.find(type, name, i) : collection.find(type, name, i, from)),
              nth(matches, i))
              << type << " " << name << " #" << i << " from " << start;
        EXPECT_EQ(position(start == 0 ? collection.find(type, name) : collection.find(type, name, from)),
                  nth(matches, 0))
            << type << " " << name;
      }
    }
  }
  for (std::size_t i = 0; i < collection.size(); ++i)
  {
    EXPECT_EQ(collection.getEntityIndex(collection[i]), i);
    const auto at = collection.begin() + static_cast<std::ptrdiff_t>(i);
    EXPECT_EQ(collection.find(collection[i], at), at);
    EXPECT_EQ(collection.find(collection[i], at + 1), collection.end());
  }
}

std::unique_ptr<Entity> randomEntity(std::mt19937& rng, int depth)
{
  auto pick = [&](int n) { return static_cast<int>(rng() % static_cast<unsigned>(n)); };
  auto entity = makeEntity(kTypes[pick(3)], kNames[pick(3)], EntityID(pick(4), pick(2)));
  for (int l = depth == 0 ? 0 : pick(3); l > 0; --l)
  {
    const bool owns = pick(4) != 0;
    const std::string name = "L" + std::to_string(l);
    const int kind = pick(3);
    EntityLink& link = kind == 0   ? static_cast<EntityLink&>(addLink<LinkAttribute>(*entity, name, owns))
                       : kind == 1 ? static_cast<EntityLink&>(addLink<ListAttribute>(*entity, name, owns))
                                   : static_cast<EntityLink&>(addLink<ArrayAttribute>(*entity, name, owns));
    for (int k = kind == 0 ? 1 : pick(3); k > 0; --k)
      link.addEntity(randomEntity(rng, depth - 1));
  }
  return entity;
}

} // namespace

TEST(EntityCollectionTest, IndexAgreesWithLinearScanThroughChanges)
{
  std::mt19937 rng(20261123);
  auto pick = [&](std::size_t n) { return static_cast<std::size_t>(rng() % n); };
  EntityCollection collection;
  for (int r = 0; r < 3; ++r)
    collection.addRootEntity(randomEntity(rng, 3));
  expectAgreesWithLinearScan(collection);

  for (int step = 0; step < 60 && !HasFailure(); ++step)
  {
    SCOPED_TRACE(step);
    const std::size_t op = pick(7);
    Entity* target = collection.empty() ? nullptr : collection[pick(collection.size())];
    switch (op)
    {
    case 0:
      if (target)
        target->setName(kNames[pick(3)]);
      break;
    case 1:
      if (target)
        target->setUniqueID(EntityID(static_cast<int>(pick(4)), static_cast<int>(pick(2))));
      break;
    case 2:
      if (target)
        target->setType(kTypes[pick(3)]);
      break;
    case 3:
      collection.addRootEntity(randomEntity(rng, 2));
      break;
    case 4:
      if (target)
      {
        // An entity added inside the model shows up only after a rebuild.
        auto& list = addLink<ListAttribute>(*target, "Extra" + std::to_string(step), true);
        list.addEntity(randomEntity(rng, 1));
        expectAgreesWithLinearScan(collection);
        collection.rebuildChildEntitiesList();
      }
      break;
    case 5:
      collection.erase(kTypes[pick(3)], kNames[pick(4)]);
      break;
    default:
      collection.rebuildChildEntitiesList();
      break;
    }
    // Query first, then change again without a query in between, so that a stale index would show.
    expectAgreesWithLinearScan(collection);
  }
}

TEST(EntityCollectionTest, RenamingAnAncestorUpdatesFullNameLookups)
{
  auto a = makeEntity("Rack", "A", EntityID(1, 1));
  Entity* b =
      addLink<ListAttribute>(*a, "Servers", true).addEntity(makeEntity("Server", "B", EntityID(2, 2)));
  EntityCollection collection(std::move(a));
  EXPECT_EQ(collection.getEntity("Server", "A->B"), b);
  EXPECT_EQ(collection.find("Rack", "A", std::string("Servers.0")), b);
  EXPECT_EQ(collection.find("Rack", "A", std::string("Servers.7")), nullptr);
  collection.getRootEntity(0)->setName("Z");
  EXPECT_FALSE(collection.hasEntity("Server", "A->B"));
  EXPECT_EQ(collection.getEntity("Server", "Z->B"), b);

  // A root whose parent is an entity outside the collection takes that entity's name into its full name.
  Entity outside("Hall", "H");
  auto root = makeEntity("Rack", "R", EntityID(3, 3));
  root->setParent(&outside);
  Entity* r = *collection.addRootEntity(std::move(root));
  EXPECT_EQ(collection.getEntity("Rack", "H->R"), r);
  outside.setName("G");
  EXPECT_EQ(collection.getEntity("Rack", "G->R"), r);

  // Entities that no index has seen change freely; the collection's answers stay right.
  Entity loose("Server", "B");
  loose.setName("Other");
  loose.setUniqueID(EntityID(2, 2));
  EXPECT_EQ(collection.getEntity(EntityID(2, 2)), b);
}

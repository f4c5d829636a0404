#include "ombrix/model/LinkAttribute.h"

#include "ombrix/model/ArrayAttribute.h"
#include "ombrix/model/ListAttribute.h"

#include "model/ModelTestSupport.h"
#include "support/Tables.h"
#include "support/TestSupport.h"

#include <functional>
#include <stdexcept>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using OmbrixTest::makeEntity;
using IDs = std::vector<EntityID>;

TEST(LinkAttributeTest, SingleLinkHoldsTheLastEntityAndSequencesHoldAll)
{
  Entity owner("Rack", "R");
  auto& link = OmbrixTest::addLink<LinkAttribute>(owner, "Main", true);
  EXPECT_FALSE(link.hasEntities());
  EXPECT_EQ(link.getEntity(false), nullptr);
  EXPECT_TRUE(link.getEntityIDs().empty());
  Entity* first = link.addEntity(makeEntity("Server", "A", EntityID(1, 2)));
  EXPECT_EQ(first->getParentLink(), &link);
  EXPECT_EQ(first->getParentEntityLink(), &link);
  EXPECT_EQ(first->getParent(), &owner);
  EXPECT_EQ(link.getEntity(std::size_t{0}), first);
  EXPECT_EQ(link.getEntity(EntityID(1, 2)), first);
  EXPECT_TRUE(link.hasEntity(std::size_t{0}));
  EXPECT_FALSE(link.hasEntity(std::size_t{1}));
  Entity* second = link.addEntity(makeEntity("Server", "B", EntityID(3, 4)));
  EXPECT_EQ(link.getNumberOfEntities(), 1u);
  EXPECT_EQ(link.getEntity(false), second);
  EXPECT_FALSE(link.hasEntity(EntityID(1, 2)));
  EXPECT_EQ(link.getEntityIDs(), IDs{EntityID(3, 4)});

  auto& list = OmbrixTest::addLink<ListAttribute>(owner, "Servers", true);
  list.addEntity(makeEntity("Server", "A", EntityID(1, 1)));
  Entity* b = list.addEntity(makeEntity("Server", "B", EntityID(2, 2)));
  list.addEntity(makeEntity("Server", "C", EntityID(2, 2)));
  EXPECT_EQ(list.addEntity(nullptr), nullptr);
  EXPECT_EQ(list.getNumberOfEntities(), 3u);
  EXPECT_TRUE(list.hasEntity(std::size_t{2}));
  EXPECT_FALSE(list.hasEntity(std::size_t{3}));
  EXPECT_EQ(list.getEntity(EntityID(2, 2)), b); // the earlier of two equal IDs
  EXPECT_EQ(list.getEntityIDs(), (IDs{EntityID(1, 1), EntityID(2, 2), EntityID(2, 2)}));
  EXPECT_EQ(&list.getAttribute(AttributePath("1")), b);
  EXPECT_EQ(&list.getAttribute(AttributePath()), &list);
  EXPECT_FALSE(list.hasAttribute(AttributePath("-1")));
  EXPECT_FALSE(list.hasAttribute(AttributePath("1x")));
  ArrayAttribute array("Slots", true, nullptr);
  const std::pair<std::function<void()>, const char*> outOfRange[] = {
      {[&] { link.getEntity(std::size_t{1}); }, "No Entity Found for entity_i='1'"},
      {[&] { link.getEntity(EntityID(-1, 2)); }, "No Entity Found for entity_ID='-1-2'"},
      {[&] { list.getEntity(EntityID(9, 9)); }, "No Entity Found for entity_ID='9-9'"},
      {[&] { list.getAttribute(AttributePath("7.Name")); }, "No Entity found with entity_i='7'"},
      {[&] { array.getEntity(std::size_t{0}); }, "No Entity found with entity_i='0'"},
  };
  for (const auto& [call, message] : outOfRange)
    EXPECT_THROW_MSG(call(), std::out_of_range, message);
  EXPECT_THROW_MSG(list.getAttribute(AttributePath("x")), std::runtime_error,
                   "Invalid path Rack.Servers : 'x' is not an entity index");
}

TEST(LinkAttributeTest, ReparentingFollowsOwnership)
{
  for (bool owns : {true, false})
  {
    SCOPED_TRACE(owns);
    Entity oldOwner("Rack", "Old");
    Entity newOwner("Rack", "New");
    auto list = std::make_unique<ListAttribute>("Servers", owns, nullptr);
    list->setParent(&oldOwner);
    Entity* a = list->addEntity(makeEntity("Server", "A", EntityID(1, 1)));
    auto link = std::make_unique<LinkAttribute>("One", owns, &oldOwner);
    Entity* b = link->addEntity(makeEntity("Server", "B", EntityID(2, 2)));
    EXPECT_EQ(a->getParent(), &oldOwner); // adding sets the parent whatever the flag
    EXPECT_EQ(b->getParent(), &oldOwner);
    newOwner.addAttribute(std::move(list));
    newOwner.addAttribute(std::move(link));
    EXPECT_EQ(a->getParent(), owns ? &newOwner : &oldOwner);
    EXPECT_EQ(b->getParent(), owns ? &newOwner : &oldOwner);
  }
}

TEST(LinkAttributeTest, EqualityComparesRelationshipAndEntitiesButNotOwnership)
{
  // Links of "uses" holding the entities of the given IDs, owning them or not.
  const auto link = [](const char* relationship, bool owns, const IDs& ids)
  {
    auto made = std::make_unique<ListAttribute>("L", relationship, AccessType::ReadOnly, owns, nullptr);
    for (const auto& id : ids)
      made->addEntity(makeEntity("T", "N", id));
    return made;
  };
  const auto base = link("uses", true, {EntityID(1, 1), EntityID(2, 2)});
  EXPECT_TRUE(base->isEqual(*link("uses", false, {EntityID(1, 1), EntityID(2, 2)})));
  EXPECT_TRUE(*base == *link("uses", true, {EntityID(1, 1), EntityID(2, 2)}));
  for (const auto& other : {link("uses", true, {EntityID(1, 1)}), link("uses", true, {}),
                            link("owns", true, {EntityID(1, 1), EntityID(2, 2)}),
                            link("uses", true, {EntityID(1, 1), EntityID(2, 3)}),
                            link("uses", true, {EntityID(1, 1), EntityID(2, 2), EntityID(3, 3)})})
  {
    EXPECT_FALSE(base->isEqual(*other));
    EXPECT_FALSE(other->isEqual(*base));
  }
  LinkAttribute single("L", "uses", AccessType::ReadOnly, true, nullptr);
  LinkAttribute empty("L", "uses", AccessType::ReadOnly, false, nullptr);
  EXPECT_TRUE(single.isEqual(empty));
  single.addEntity(makeEntity("T", "N", EntityID(1, 1)));
  EXPECT_FALSE(single.isEqual(empty));
  EXPECT_FALSE(empty.isEqual(single));
}

TEST(LinkAttributeTest, ListAndArrayStreamAlikeButForTheirType)
{
  for (auto kind : OmbrixTest::kStreamKinds)
  {
    ListAttribute list("Items", "holds", AccessType::ReadWrite, true, nullptr);
    ArrayAttribute array("Items", "holds", AccessType::ReadWrite, true, nullptr);
    list.addEntity(makeEntity("T", "A", EntityID(1, 1)));
    array.addEntity(makeEntity("T", "A", EntityID(1, 1)));
    FileSystem::DataOStream listOut(kind);
    FileSystem::DataOStream arrayOut(kind);
    list.toStream(listOut);
    array.toStream(arrayOut);
    std::string listData = listOut.data();
    // Writing the array's type number in the list's stream makes the two identical.
    const std::string l = OmbrixTest::streamed(std::int32_t{8}, kind);
    const auto at = listData.find(l, listData.find("Items"));
    ASSERT_NE(at, std::string::npos);
    listData.replace(at, l.size(), OmbrixTest::streamed(std::int32_t{10}, kind));
    EXPECT_EQ(listData, arrayOut.data());
    EXPECT_NE(listOut.data(), arrayOut.data());
  }
}

#include "ombrix/model/EntityID.h"

#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityCollection.h"

#include "support/TestSupport.h"

#include <climits>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

using Ombrix::Model::EntityID;

TEST(EntityIDTest, FromStringTable)
{
  const std::tuple<const char*, int, int> cases[] = {
      {"12-34", 12, 34},
      {"7", 7, 7},
      {"", 0, 0},
      {"-7", -7, -7},
      {"-5-7", -5, 7},
      {"4--9", 4, -9},
      {"-3--9", -3, -9},
      {" 12- 34x", 12, 34},
      {"2147483647-0", INT_MAX, 0},
      {"-2147483648-1", INT_MIN, 1},
  };
  for (const auto& [text, first, second] : cases)
    EXPECT_EQ(EntityID::fromString(text), EntityID(first, second)) << text;
  for (const char* text : {"x-1", "1-x", "-", "3-"})
    EXPECT_THROW_MSG(EntityID::fromString(text), std::invalid_argument, "invalid stoi argument");
  for (const char* text : {"2147483648-1", "99999999999"})
    EXPECT_THROW_MSG(EntityID::fromString(text), std::out_of_range, "stoi argument out of range");
}

TEST(EntityIDTest, TextRoundTripsAndBothElementsCount)
{
  for (const EntityID id : {EntityID(3, 9), EntityID(-3, -9), EntityID(0, 0), EntityID(-3, 12),
                            EntityID(INT_MIN, INT_MAX), EntityID(INT_MAX, INT_MIN)})
    EXPECT_EQ(EntityID::fromString(toString(id)), id) << toString(id);
  EXPECT_EQ(toString(EntityID(-3, -9)), "-3--9");
  EXPECT_EQ(toString(EntityID(17, 520)), "17-520");
  EXPECT_NE(EntityID(1, 2), EntityID(2, 1));
  EXPECT_NE(EntityID(0, -1), EntityID(-1, 0));
  EXPECT_TRUE(EntityID(1, 9) < EntityID(2, 0));
  EXPECT_FALSE(EntityID(2, 0) < EntityID(1, 9));
}

TEST(EntityIDTest, GeneratedIDsAreDistinctAlsoAcrossThreadsAndAGivenIDDrawsNone)
{
  constexpr int perThread = 2000;
  std::vector<int> firsts[2];
  auto build = [](std::vector<int>& out)
  {
    Ombrix::Model::EntityCollection model;
    for (int i = 0; i < perThread; ++i)
      model.addRootEntity(std::make_unique<Ombrix::Model::Entity>("Pump", "P"));
    for (const auto* entity : model)
      out.push_back(entity->getUniqueID()[0]);
  };
  std::thread other(build, std::ref(firsts[1]));
  build(firsts[0]);
  other.join();
  std::set<int> all(firsts[0].begin(), firsts[0].end());
  all.insert(firsts[1].begin(), firsts[1].end());
  EXPECT_EQ(all.size(), 2u * perThread);
  EXPECT_GE(*all.begin(), 0);

  EntityID id(5, 5);
  id.generateNew();
  EXPECT_NE(id, EntityID(5, 5));

  // An entity given its ID draws no fresh one.
  const EntityID before;
  const Ombrix::Model::Entity known("Pump", "P1", EntityID(3, 17), KorvanSDK::AccessType::ReadOnly);
  const EntityID after;
  EXPECT_EQ(known.getUniqueID(), EntityID(3, 17));
  EXPECT_EQ(known.getAccessType(), KorvanSDK::AccessType::ReadOnly);
  EXPECT_EQ(after[0], before[0] + 1); // the counter moved by `after` alone
  const Ombrix::Model::Entity fresh("Pump", "P2");
  EXPECT_EQ(fresh.getUniqueID()[0], after[0] + 1);
}

TEST(EntityIDTest, ConvertsToAndFromTheHostForms)
{
  const EntityID id(-4, 11);
  const KorvanSDK_Model_EntityID c = id.toCEntityID();
  EXPECT_EQ(std::make_pair(c.id[0], c.id[1]), std::make_pair(-4, 11));
  EXPECT_EQ(EntityID::fromCEntityID(c), id);
  EXPECT_EQ(EntityID(KorvanSDK::Model::EntityID(id)), id);
}

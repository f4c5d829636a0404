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
  struct Case
  {
    const char* text;
    int first;
    int second;
  };
  const Case cases[] = {
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
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(EntityID::fromString(c.text), EntityID(c.first, c.second));
  }
}

TEST(EntityIDTest, FromStringFailures)
{
  EXPECT_THROW_MSG(EntityID::fromString("x-1"), std::invalid_argument, "invalid stoi argument");
  EXPECT_THROW_MSG(EntityID::fromString("1-x"), std::invalid_argument, "invalid stoi argument");
  EXPECT_THROW_MSG(EntityID::fromString("-"), std::invalid_argument, "invalid stoi argument");
  EXPECT_THROW_MSG(EntityID::fromString("3-"), std::invalid_argument, "invalid stoi argument");
  EXPECT_THROW_MSG(EntityID::fromString("2147483648-1"), std::out_of_range, "stoi argument out of range");
  EXPECT_THROW_MSG(EntityID::fromString("99999999999"), std::out_of_range, "stoi argument out of range");
}

TEST(EntityIDTest, TextRoundTrips)
{
  const EntityID ids[] = {
      {3, 9}, {-3, -9}, {0, 0}, {17, 520}, {-3, 12}, {INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}};
  for (const auto& id : ids)
  {
    const std::string text = Ombrix::Model::toString(id);
    SCOPED_TRACE(text);
    EXPECT_EQ(EntityID::fromString(text), id);
  }
  EXPECT_EQ(Ombrix::Model::toString(EntityID(-3, -9)), "-3--9");
  EXPECT_EQ(Ombrix::Model::toString(EntityID(17, 520)), "17-520");
}

TEST(EntityIDTest, EqualityComparesBothElements)
{
  EXPECT_EQ(EntityID(1, 2), EntityID(1, 2));
  EXPECT_NE(EntityID(1, 2), EntityID(2, 1));
  EXPECT_NE(EntityID(0, -1), EntityID(-1, 0));
  EXPECT_TRUE(EntityID(1, 9) < EntityID(2, 0));
}

TEST(EntityIDTest, GeneratedIDsAreDistinct)
{
  std::set<int> firsts;
  for (int i = 0; i < 1000; ++i)
    firsts.insert(EntityID()[0]);
  EXPECT_EQ(firsts.size(), 1000u);

  EntityID id(5, 5);
  const EntityID before = id;
  id.generateNew();
  EXPECT_NE(id, before);
  EXPECT_GE(id[0], 0);
}

TEST(EntityIDTest, ThreadsBuildingTheirOwnModelsDrawDistinctIDs)
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
}

TEST(EntityIDTest, AnEntityGivenItsIDDrawsNoFreshOne)
{
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
  EXPECT_EQ(c.id[0], -4);
  EXPECT_EQ(c.id[1], 11);
  EXPECT_EQ(EntityID::fromCEntityID(c), id);
  const KorvanSDK::Model::EntityID host = id;
  EXPECT_EQ(EntityID(host), id);
}

#include "ombrix/model/EntityError.h"

#include "ombrix/model/Entity.h"

#include "support/Tables.h"

#include <gtest/gtest.h>

namespace
{

using namespace Ombrix::Model;

TEST(EntityError, LevelTexts)
{
  OmbrixTest::expectNames({{0, "Information"}, {1, "Warning"}, {2, "Error"}, {3, "Fatal"}},
                          entityErrorLevelToString, entityErrorLevelFromString,
                          static_cast<EntityErrorLevel>(9));
  EXPECT_EQ(entityErrorLevelToString(static_cast<EntityErrorLevel>(4)), "");
}

TEST(EntityError, ConstructionFromEntityTakesItsIdAndEqualityComparesEveryField)
{
  const Entity pump("Pump", "P1", EntityID(8, 9), KorvanSDK::AccessType::ReadOnly);
  EXPECT_EQ(EntityError(&pump, "too hot", EntityErrorLevel::Warning),
            EntityError(EntityID(8, 9), "too hot", EntityErrorLevel::Warning));
  EXPECT_EQ(EntityError(static_cast<const Entity*>(nullptr), "m", EntityErrorLevel::Error).getEntityID(),
            EntityID(0, 0));

  const EntityError base(EntityID(1, 2), "m", EntityErrorLevel::Error);
  EntityError withModelError = base;
  withModelError.setAIModelError("diverged");
  EntityError emptyModelError = base;
  emptyModelError.setAIModelError(std::string());
  EntityError otherEntity = base;
  otherEntity.setEntity(EntityID(1, 3));
  for (const auto& other : {EntityError(EntityID(1, 2), "n", EntityErrorLevel::Error),
                            EntityError(EntityID(1, 2), "m", EntityErrorLevel::Fatal), withModelError,
                            emptyModelError, otherEntity})
    EXPECT_NE(base, other); // != is the negation of ==
}

TEST(EntityError, StreamRoundTripAndCuts)
{
  EntityError withModelError(EntityID(-4, 5), "line\twith tab", EntityErrorLevel::Fatal);
  withModelError.setAIModelError("NaN in layer 3");
  const EntityError old(EntityID(7, 7), "old", EntityErrorLevel::Warning);
  for (const auto kind : OmbrixTest::kStreamKinds)
  {
    for (const auto& original :
         {EntityError(), withModelError, EntityError(EntityID(1, 1), "", EntityErrorLevel::Information)})
      EXPECT_EQ(OmbrixTest::roundTrip(original, kind, old), original);
  }
  OmbrixTest::expectCutsFail(OmbrixTest::streamed(withModelError, FileSystem::DataStreamKind::Binary), old);
}

} // namespace

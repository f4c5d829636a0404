#include "ombrix/model/EntityError.h"

#include "ombrix/model/Entity.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <gtest/gtest.h>

namespace
{

using namespace Ombrix::Model;

TEST(EntityError, LevelTextsRoundTripAndUnknownTextFallsBack)
{
  const std::pair<EntityErrorLevel, const char*> cases[] = {
      {EntityErrorLevel::Information, "Information"},
      {EntityErrorLevel::Warning, "Warning"},
      {EntityErrorLevel::Error, "Error"},
      {EntityErrorLevel::Fatal, "Fatal"},
  };
  for (const auto& [level, text] : cases)
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(entityErrorLevelToString(level), text);
    EXPECT_EQ(entityErrorLevelFromString(text, EntityErrorLevel::Information), level);
  }
  EXPECT_EQ(static_cast<int>(EntityErrorLevel::Information), 0);
  EXPECT_EQ(static_cast<int>(EntityErrorLevel::Fatal), 3);
  EXPECT_EQ(entityErrorLevelToString(static_cast<EntityErrorLevel>(4)), "");
  for (const char* text : {"error", " Error", "Error ", ""})
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(entityErrorLevelFromString(text, EntityErrorLevel::Warning), EntityErrorLevel::Warning);
  }
}

TEST(EntityError, ConstructionFromEntityTakesItsId)
{
  Entity pump("Pump", "P1");
  pump.setUniqueID(EntityID(8, 9));
  EntityError fromEntity(&pump, "too hot", EntityErrorLevel::Warning);
  EXPECT_EQ(fromEntity, EntityError(EntityID(8, 9), "too hot", EntityErrorLevel::Warning));
  EXPECT_EQ(EntityError(static_cast<const Entity*>(nullptr), "m", EntityErrorLevel::Error).getEntityID(),
            EntityID(0, 0));
}

TEST(EntityError, EqualityComparesEveryField)
{
  const EntityError base(EntityID(1, 2), "m", EntityErrorLevel::Error);
  EntityError withModelError = base;
  withModelError.setAIModelError("diverged");
  EntityError otherEntity = base;
  otherEntity.setEntity(EntityID(1, 3));
  const EntityError differing[] = {
      EntityError(EntityID(1, 2), "n", EntityErrorLevel::Error),
      EntityError(EntityID(1, 2), "m", EntityErrorLevel::Fatal),
      withModelError,
      otherEntity,
  };
  for (const auto& other : differing)
  {
    EXPECT_NE(base, other);
    EXPECT_FALSE(base == other);
  }
  EntityError emptyModelError = base;
  emptyModelError.setAIModelError(std::string());
  EXPECT_NE(base, emptyModelError);
}

TEST(EntityError, StreamRoundTrip)
{
  EntityError withModelError(EntityID(-4, 5), "line\twith tab", EntityErrorLevel::Fatal);
  withModelError.setAIModelError("NaN in layer 3");
  const EntityError cases[] = {EntityError(), withModelError,
                               EntityError(EntityID(1, 1), "", EntityErrorLevel::Information)};
  for (const auto kind : {FileSystem::DataStreamKind::Binary, FileSystem::DataStreamKind::Text})
  {
    for (const auto& original : cases)
    {
      FileSystem::DataOStream out(kind);
      out << original;
      EntityError read(EntityID(7, 7), "old", EntityErrorLevel::Warning);
      FileSystem::DataIStream in(out.data(), kind);
      in >> read;
      ASSERT_TRUE(in.good());
      EXPECT_EQ(read, original);
    }
  }
}

TEST(EntityError, FailedReadLeavesTheErrorUnchanged)
{
  FileSystem::DataOStream out;
  out << EntityError(EntityID(2, 2), "m", EntityErrorLevel::Error);
  const std::string data = out.data();
  const EntityError before(EntityID(7, 7), "old", EntityErrorLevel::Warning);
  for (std::size_t length = 0; length < data.size(); ++length)
  {
    SCOPED_TRACE(length);
    EntityError read = before;
    FileSystem::DataIStream in(data.substr(0, length));
    in >> read;
    EXPECT_FALSE(in.good());
    EXPECT_EQ(read, before);
  }
}

} // namespace

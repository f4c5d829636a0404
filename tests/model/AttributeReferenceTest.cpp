#include "ombrix/model/AttributeReference.h"

#include "ombrix/model/EntityCollection.h"

#include "model/ModelTestSupport.h"
#include "support/Tables.h"

#include <gtest/gtest.h>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using Reference = AttributeReference<Attribute>;

// Pump 3-4 with Results.Time (a double inside a composite).
class AttributeReferenceTest : public ::testing::Test
{
protected:
  AttributeReferenceTest()
  {
    auto pump = OmbrixTest::makeEntity("Pump", "P1", {3, 4});
    OmbrixTest::addValue(OmbrixTest::addComposite(*pump, "Results"), "Time", 0.0);
    collection.addRootEntity(std::move(pump));
  }
  Entity& pump() { return *collection.getEntity(EntityID(3, 4)); }
  Attribute& time() { return pump().getAttribute(AttributePath("Results.Time")); }

  EntityCollection collection;
};

TEST_F(AttributeReferenceTest, AttachRecordsEntityAndRelativePath)
{
  Reference toEntity(pump());
  EXPECT_EQ(toEntity.getEntityID(), EntityID(3, 4));
  EXPECT_TRUE(toEntity.getAttributePath().empty());
  EXPECT_EQ(toEntity.get(), &pump());
  Reference toTime(&time());
  EXPECT_EQ(toTime.getEntityID(), EntityID(3, 4));
  EXPECT_EQ(toTime.getAttributePath().toString(), "Results.Time");
  EXPECT_EQ(&toTime.ref(), &time());
  EXPECT_TRUE(static_cast<bool>(toTime));

  // An attribute outside any entity, or none, leaves the reference empty.
  CompositeAttribute root("Root", AccessType::ReadWrite, nullptr);
  for (Attribute* outside : {&OmbrixTest::addValue(root, "Count", 1), static_cast<IntAttribute*>(nullptr)})
  {
    Reference reference(pump());
    reference.attach(static_cast<Attribute*>(outside));
    EXPECT_TRUE(reference.empty());
    EXPECT_FALSE(static_cast<bool>(reference));
    EXPECT_FALSE(reference.getEntityID().has_value());
    EXPECT_TRUE(reference.getAttributePath().empty());
  }
}

TEST_F(AttributeReferenceTest, ReattachFindsThePlaceInARebuiltCollectionOrKeepsTheMessage)
{
  Reference reference(time());
  Reference owner(pump());
  EntityCollection other = OmbrixTest::roundTrip(collection, FileSystem::DataStreamKind::Binary);
  EXPECT_TRUE(reference.reattach(other));
  EXPECT_EQ(reference.get(), &other.getEntity(EntityID(3, 4))->getAttribute(AttributePath("Results.Time")));
  EXPECT_EQ(reference.lastError(), "");
  EXPECT_TRUE(owner.reattach(other));
  EXPECT_EQ(owner.get(), other.getEntity(EntityID(3, 4)));

  // A failed reattach drops an earlier resolution; the place stays for a later one.
  EntityCollection empty;
  EXPECT_FALSE(reference.reattach(empty));
  EXPECT_EQ(reference.get(), nullptr);
  EXPECT_EQ(reference.lastError(), "No Entity found with entityID='3-4'");
  EXPECT_TRUE(reference.reattach(collection));
  EXPECT_EQ(reference.lastError(), "");

  Reference unresolvable(EntityID(3, 4), AttributePath("Results.Missing"));
  EXPECT_NO_THROW(EXPECT_FALSE(unresolvable.reattach(collection)));
  EXPECT_FALSE(static_cast<bool>(unresolvable));
  EXPECT_EQ(unresolvable.lastError(), "Invalid path [3-4] of type Pump : Results.Missing");
  EXPECT_EQ(unresolvable.getEntityID(), EntityID(3, 4));
  Reference withoutId;
  EXPECT_FALSE(withoutId.reattach(collection));
  EXPECT_TRUE(withoutId.empty());
  EXPECT_EQ(withoutId.lastError(), "");
}

TEST_F(AttributeReferenceTest, EqualityComparesPlacesNotPointers)
{
  Reference attached(time());
  Reference byPlace(EntityID(3, 4), AttributePath("Results.Time"));
  EXPECT_TRUE(attached == byPlace);
  EXPECT_TRUE(Reference() == Reference());
  EXPECT_TRUE(attached != Reference(EntityID(3, 4), AttributePath("Results")));
  EXPECT_TRUE(attached != Reference(EntityID(3, 5), AttributePath("Results.Time")));
  EXPECT_TRUE(Reference() != Reference(EntityID(0, 0), AttributePath()));
  EXPECT_TRUE(byPlace.isAttribute(time()));
  EXPECT_TRUE(attached.isAttribute(&time()));
  EXPECT_FALSE(byPlace.isAttribute(&pump()));
}

TEST_F(AttributeReferenceTest, StreamRoundTripKeepsThePlaceUnresolvedAndCutsChangeNothing)
{
  for (const auto kind : OmbrixTest::kStreamKinds)
  {
    for (const auto& original : {Reference(time()), Reference(EntityID(-1, 7), AttributePath()), Reference()})
    {
      const Reference read =
          OmbrixTest::roundTrip(original, kind, Reference(EntityID(1, 1), AttributePath("x")));
      EXPECT_TRUE(read == original);
      EXPECT_EQ(read.get(), nullptr);
    }
  }
  OmbrixTest::expectCutsFail(OmbrixTest::streamed(Reference(EntityID(5, 6), AttributePath("a.b")),
                                                  FileSystem::DataStreamKind::Binary),
                             Reference(EntityID(1, 2), AttributePath("c")));
}

} // namespace

#include "ombrix/model/AttributeReference.h"

#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "support/TestSupport.h"

#include <gtest/gtest.h>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using Reference = AttributeReference<Attribute>;

// Pump 3-4 with Results.Time (a double inside a composite).
EntityCollection makeCollection()
{
  auto pump = std::make_unique<Entity>("Pump", "P1");
  pump->setUniqueID(EntityID(3, 4));
  auto* results = static_cast<CompositeAttribute*>(
      pump->createAttribute(AttributeType::Composite, "Results", AccessType::ReadOnly));
  results->createAttribute(AttributeType::Double, "Time", AccessType::ReadWrite);
  return EntityCollection(std::move(pump));
}

TEST(AttributeReference, AttachRecordsEntityAndRelativePath)
{
  auto collection = makeCollection();
  Entity& pump = *collection.getEntity(EntityID(3, 4));
  Attribute& time = pump.getAttribute(AttributePath("Results.Time"));

  Reference toEntity(pump);
  EXPECT_EQ(toEntity.getEntityID(), EntityID(3, 4));
  EXPECT_TRUE(toEntity.getAttributePath().empty());
  EXPECT_EQ(toEntity.get(), &pump);

  Reference toTime(&time);
  EXPECT_EQ(toTime.getEntityID(), EntityID(3, 4));
  EXPECT_EQ(toTime.getAttributePath().toString(), "Results.Time");
  EXPECT_EQ(&toTime.ref(), &time);
  EXPECT_TRUE(static_cast<bool>(toTime));
}

TEST(AttributeReference, AttributeOutsideAnyEntityLeavesReferenceEmpty)
{
  CompositeAttribute root("Root", AccessType::ReadWrite, nullptr);
  Attribute* child = root.createAttribute(AttributeType::Int, "Count", AccessType::ReadWrite);
  auto collection = makeCollection();

  Reference reference(collection.getEntity(EntityID(3, 4)));
  reference.attach(child);
  EXPECT_TRUE(reference.empty());
  EXPECT_FALSE(static_cast<bool>(reference));
  EXPECT_FALSE(reference.getEntityID().has_value());
  EXPECT_TRUE(reference.getAttributePath().empty());

  reference.attach(static_cast<Attribute*>(nullptr));
  EXPECT_TRUE(reference.empty());
}

TEST(AttributeReference, ReattachFindsTheAttributeInARebuiltCollection)
{
  auto collection = makeCollection();
  Reference reference(collection.getEntity(EntityID(3, 4))->getAttribute(AttributePath("Results.Time")));
  Reference owner(collection.getEntity(EntityID(3, 4)));

  FileSystem::DataOStream out;
  out << collection;
  EntityCollection other;
  FileSystem::DataIStream in(out.data());
  in >> other;
  ASSERT_TRUE(in.good());

  EXPECT_TRUE(reference.reattach(other));
  Attribute& expected = other.getEntity(EntityID(3, 4))->getAttribute(AttributePath("Results.Time"));
  EXPECT_EQ(reference.get(), &expected);
  EXPECT_EQ(reference.lastError(), "");
  EXPECT_TRUE(owner.reattach(other));
  EXPECT_EQ(owner.get(), other.getEntity(EntityID(3, 4)));
}

TEST(AttributeReference, ReattachWithoutIdChangesNothing)
{
  auto collection = makeCollection();
  Reference reference;
  EXPECT_FALSE(reference.reattach(collection));
  EXPECT_TRUE(reference.empty());
  EXPECT_EQ(reference.lastError(), "");
}

TEST(AttributeReference, UnresolvablePlacesStayUnresolvedAndKeepTheMessage)
{
  auto collection = makeCollection();
  struct Case
  {
    EntityID id;
    const char* path;
    const char* error;
  };
  const Case cases[] = {
      {EntityID(3, 4), "Results.Missing", "Invalid path [3-4] of type Pump : Results.Missing"},
      {EntityID(9, 9), "Results.Time", "No Entity found with entityID='9-9'"},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.path);
    Reference reference(c.id, AttributePath(c.path));
    EXPECT_NO_THROW(EXPECT_FALSE(reference.reattach(collection)));
    EXPECT_FALSE(static_cast<bool>(reference));
    EXPECT_EQ(reference.lastError(), c.error);
    EXPECT_EQ(reference.getEntityID(), c.id);
  }
}

TEST(AttributeReference, FailedReattachDropsAnEarlierResolution)
{
  auto collection = makeCollection();
  Reference reference(collection.getEntity(EntityID(3, 4))->getAttribute(AttributePath("Results.Time")));
  EntityCollection empty;
  EXPECT_FALSE(reference.reattach(empty));
  EXPECT_EQ(reference.get(), nullptr);
  EXPECT_EQ(reference.lastError(), "No Entity found with entityID='3-4'");
  EXPECT_TRUE(reference.reattach(collection));
  EXPECT_EQ(reference.lastError(), "");
}

TEST(AttributeReference, EqualityComparesPlacesNotPointers)
{
  auto collection = makeCollection();
  Attribute& time = collection.getEntity(EntityID(3, 4))->getAttribute(AttributePath("Results.Time"));
  Reference attached(time);
  Reference byPlace(EntityID(3, 4), AttributePath("Results.Time"));
  EXPECT_TRUE(attached == byPlace);
  EXPECT_FALSE(attached != byPlace);
  EXPECT_TRUE(Reference() == Reference());
  EXPECT_TRUE(attached != Reference(EntityID(3, 4), AttributePath("Results")));
  EXPECT_TRUE(attached != Reference(EntityID(3, 5), AttributePath("Results.Time")));
  EXPECT_TRUE(Reference() != Reference(EntityID(0, 0), AttributePath()));

  EXPECT_TRUE(byPlace.isAttribute(time));
  EXPECT_TRUE(attached.isAttribute(&time));
  EXPECT_FALSE(byPlace.isAttribute(collection.getEntity(EntityID(3, 4))));
}

TEST(AttributeReference, StreamRoundTripKeepsThePlaceAndIsUnresolved)
{
  auto collection = makeCollection();
  const Reference cases[] = {
      Reference(collection.getEntity(EntityID(3, 4))->getAttribute(AttributePath("Results.Time"))),
      Reference(EntityID(-1, 7), AttributePath()),
      Reference(),
  };
  for (const auto kind : {FileSystem::DataStreamKind::Binary, FileSystem::DataStreamKind::Text})
  {
    for (const auto& original : cases)
    {
      FileSystem::DataOStream out(kind);
      out << original;
      Reference read(EntityID(1, 1), AttributePath("x"));
      FileSystem::DataIStream in(out.data(), kind);
      in >> read;
      ASSERT_TRUE(in.good());
      EXPECT_TRUE(read == original);
      EXPECT_EQ(read.get(), nullptr);
    }
  }
}

TEST(AttributeReference, TruncatedStreamLeavesTheReferenceUnchanged)
{
  FileSystem::DataOStream out;
  out << Reference(EntityID(5, 6), AttributePath("a.b"));
  const std::string data = out.data();
  const Reference before(EntityID(1, 2), AttributePath("c"));
  for (std::size_t length = 0; length < data.size(); ++length)
  {
    SCOPED_TRACE(length);
    Reference read = before;
    FileSystem::DataIStream in(data.substr(0, length));
    in >> read;
    EXPECT_FALSE(in.good());
    EXPECT_TRUE(read == before);
  }
}

} // namespace

#include "ombrix/ai/AIModuleDefinitionCollection.h"

#include "support/Tables.h"

#include <gtest/gtest.h>

namespace
{

using AISystem::ModuleType;
using Ombrix::AIModuleDefinition;
using Ombrix::AIModuleDefinitionCollection;

std::unique_ptr<AIModuleDefinition> definition(ModuleType type, Utilities::bytearray data)
{
  return std::make_unique<AIModuleDefinition>(type, data);
}

TEST(AIModuleDefinitionCollection, IdentifiersRunInOrderOfFirstInsertion)
{
  AIModuleDefinitionCollection collection;
  auto carried = definition(ModuleType::ONNX, {1});
  carried->assignId(7);
  auto [first, firstNew] = collection.insertDefinition(std::move(carried));
  EXPECT_TRUE(firstNew);
  EXPECT_EQ(first->getId(), 0u) << "insertion overwrites a carried identifier";

  auto duplicate = definition(ModuleType::ONNX, {1});
  duplicate->assignId(3);
  EXPECT_EQ(collection.insertDefinition(std::move(duplicate)), std::make_pair(first, false));
  ASSERT_NE(duplicate, nullptr) << "a refused duplicate stays with the caller, untouched";
  EXPECT_EQ(duplicate->getId(), 3u);
  EXPECT_EQ(collection.insertDefinition(nullptr), (std::pair<AIModuleDefinition*, bool>(nullptr, false)));
  EXPECT_FALSE(collection.hasPython());

  auto [second, secondNew] = collection.insertDefinition(definition(ModuleType::Python, {1}));
  EXPECT_TRUE(secondNew);
  EXPECT_EQ(second->getId(), 1u);
  EXPECT_EQ(collection.size(), 2u);
  EXPECT_EQ(collection.getNextId(), 2u);
  EXPECT_EQ(collection.getDefinition(1), second);
  EXPECT_EQ(collection.getDefinition(5), nullptr);
  EXPECT_EQ(std::as_const(collection).getDefinition(0)->getType(), ModuleType::ONNX);
  EXPECT_TRUE(collection.hasPython());

  // Clearing keeps identifiers unique. A type just above Python is not Python.
  collection.clear();
  EXPECT_TRUE(collection.empty());
  EXPECT_EQ(collection.getDefinition(0), nullptr);
  EXPECT_EQ(collection.insertDefinition(definition(static_cast<ModuleType>(49), {1})).first->getId(), 2u);
  EXPECT_FALSE(collection.hasPython());
}

TEST(AIModuleDefinitionCollection, EqualityIsIdentityOfTheStoredObjects)
{
  AIModuleDefinitionCollection a;
  AIModuleDefinitionCollection b;
  EXPECT_EQ(a, b);
  a.insertDefinition(definition(ModuleType::ONNX, {1}));
  b.insertDefinition(definition(ModuleType::ONNX, {1}));
  EXPECT_NE(a, b);
  EXPECT_EQ(a, a);
  AIModuleDefinitionCollection copy(a);
  AIModuleDefinitionCollection assigned;
  assigned = a;
  for (const AIModuleDefinitionCollection* c : {&copy, &assigned})
  {
    EXPECT_NE(*c, a);
    EXPECT_EQ(*c->getDefinition(0), *a.getDefinition(0));
    EXPECT_NE(c->getDefinition(0), a.getDefinition(0));
    EXPECT_EQ(c->getNextId(), a.getNextId());
  }
  EXPECT_EQ(assigned.insertDefinition(definition(ModuleType::ONNX, {9})).first->getId(), 1u);
  AIModuleDefinitionCollection emptyCopy(b);
  emptyCopy.clear();
  EXPECT_EQ(emptyCopy, AIModuleDefinitionCollection());
}

TEST(AIModuleDefinitionCollection, StreamRoundTripInBothKindsWithAbsentEntries)
{
  // A collection with an absent entry can only come from a stream: build that stream by hand.
  AIModuleDefinition stored(ModuleType::Python, {4, 5});
  stored.assignId(3);
  FileSystem::DataOStream out;
  out.beginSection("AIModuleDefinitionCollection");
  out << std::uint64_t(3) << true << stored << false << true << AIModuleDefinition(ModuleType::ONNX, {});
  out << std::uint64_t(11);
  out.endSection();

  AIModuleDefinitionCollection read;
  read.insertDefinition(definition(ModuleType::Trivial, {1}));
  FileSystem::DataIStream in(out.data());
  in >> read;
  ASSERT_TRUE(in.good());
  ASSERT_EQ(read.size(), 3u);
  auto it = read.begin();
  EXPECT_EQ(**it, stored);
  EXPECT_EQ((*it)->getId(), 3u);
  EXPECT_EQ(*++it, nullptr);
  EXPECT_FALSE((*++it)->getId().has_value());
  EXPECT_EQ(read.getNextId(), 11u);
  EXPECT_EQ(read.getDefinition(3), read.begin()->get());
  EXPECT_TRUE(read.hasPython());
  // Writing it again, or a copy of it, or what a text stream of it reads back, gives the same bytes: absent
  // entries survive.
  EXPECT_EQ(OmbrixTest::streamed(read, FileSystem::DataStreamKind::Binary), out.data());
  EXPECT_EQ(OmbrixTest::streamed(AIModuleDefinitionCollection(read), FileSystem::DataStreamKind::Binary),
            out.data());
  const auto viaText = OmbrixTest::roundTrip(read, FileSystem::DataStreamKind::Text);
  EXPECT_EQ(OmbrixTest::streamed(viaText, FileSystem::DataStreamKind::Binary), out.data());

  // A corrupt count fails the read and keeps the entries.
  FileSystem::DataOStream corrupt;
  corrupt.beginSection("AIModuleDefinitionCollection");
  corrupt << (std::uint64_t(1) << 62);
  corrupt.endSection();
  FileSystem::DataIStream again(corrupt.data());
  again >> read;
  EXPECT_FALSE(again.good());
  EXPECT_EQ(read.size(), 3u);
  EXPECT_EQ(read.getNextId(), 11u);
}

} // namespace

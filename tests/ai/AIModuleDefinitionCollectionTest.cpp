#include "ombrix/ai/AIModuleDefinitionCollection.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

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
  auto [first, firstNew] = collection.insertDefinition(definition(ModuleType::ONNX, {1}));
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(firstNew);
  EXPECT_EQ(first->getId(), 0u);

  auto duplicate = definition(ModuleType::ONNX, {1});
  duplicate->assignId(3);
  auto [found, foundNew] = collection.insertDefinition(std::move(duplicate));
  EXPECT_EQ(found, first);
  EXPECT_FALSE(foundNew);
  // A refused duplicate stays with the caller, untouched.
  ASSERT_NE(duplicate, nullptr);
  EXPECT_EQ(duplicate->getId(), 3u);

  auto [second, secondNew] = collection.insertDefinition(definition(ModuleType::Python, {1}));
  EXPECT_TRUE(secondNew);
  EXPECT_EQ(second->getId(), 1u);
  EXPECT_EQ(collection.size(), 2u);
  EXPECT_EQ(collection.getNextId(), 2u);
}

TEST(AIModuleDefinitionCollection, InsertionOverwritesACarriedIdentifier)
{
  AIModuleDefinitionCollection collection;
  auto carried = definition(ModuleType::Trivial, {});
  carried->assignId(7);
  EXPECT_EQ(collection.insertDefinition(std::move(carried)).first->getId(), 0u);
  EXPECT_EQ(collection.insertDefinition(nullptr), (std::pair<AIModuleDefinition*, bool>(nullptr, false)));
  EXPECT_EQ(collection.size(), 1u);
}

TEST(AIModuleDefinitionCollection, LookupAndPython)
{
  AIModuleDefinitionCollection collection;
  collection.insertDefinition(definition(ModuleType::ONNX, {1}));
  EXPECT_FALSE(collection.hasPython());
  auto* python = collection.insertDefinition(definition(ModuleType::Python, {2})).first;
  EXPECT_TRUE(collection.hasPython());
  EXPECT_EQ(collection.getDefinition(1), python);
  EXPECT_EQ(collection.getDefinition(5), nullptr);
  const auto& constant = collection;
  EXPECT_EQ(constant.getDefinition(0)->getType(), ModuleType::ONNX);

  AIModuleDefinitionCollection nearlyPython;
  nearlyPython.insertDefinition(definition(static_cast<ModuleType>(49), {}));
  nearlyPython.insertDefinition(definition(ModuleType::NeuralNetwork, {}));
  EXPECT_FALSE(nearlyPython.hasPython());
}

TEST(AIModuleDefinitionCollection, ClearKeepsIdentifiersUnique)
{
  AIModuleDefinitionCollection collection;
  collection.insertDefinition(definition(ModuleType::ONNX, {1}));
  collection.insertDefinition(definition(ModuleType::ONNX, {2}));
  collection.clear();
  EXPECT_TRUE(collection.empty());
  EXPECT_EQ(collection.getDefinition(0), nullptr);
  EXPECT_EQ(collection.insertDefinition(definition(ModuleType::ONNX, {1})).first->getId(), 2u);
}

TEST(AIModuleDefinitionCollection, EqualityIsIdentityOfTheStoredObjects)
{
  AIModuleDefinitionCollection a;
  AIModuleDefinitionCollection b;
  EXPECT_EQ(a, b);
  a.insertDefinition(definition(ModuleType::ONNX, {1}));
  b.insertDefinition(definition(ModuleType::ONNX, {1}));
  EXPECT_NE(a, b);
  AIModuleDefinitionCollection copy(a);
  EXPECT_NE(copy, a);
  EXPECT_EQ(*copy.getDefinition(0), *a.getDefinition(0));
  EXPECT_NE(copy.getDefinition(0), a.getDefinition(0));
  EXPECT_EQ(copy.getNextId(), a.getNextId());
  EXPECT_EQ(a, a);

  AIModuleDefinitionCollection assigned;
  assigned = a;
  EXPECT_NE(assigned, a);
  EXPECT_EQ(assigned.insertDefinition(definition(ModuleType::ONNX, {9})).first->getId(), 1u);

  AIModuleDefinitionCollection emptyCopy(b);
  emptyCopy.clear();
  EXPECT_EQ(emptyCopy, AIModuleDefinitionCollection());
}

TEST(AIModuleDefinitionCollection, StreamRoundTripWithAbsentEntries)
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

  // Writing it again gives the same bytes: absent entries survive.
  FileSystem::DataOStream again;
  again << read;
  EXPECT_EQ(again.data(), out.data());
  // Copies keep absent entries too.
  AIModuleDefinitionCollection copy(read);
  FileSystem::DataOStream copied;
  copied << copy;
  EXPECT_EQ(copied.data(), out.data());
}

TEST(AIModuleDefinitionCollection, TextStreamRoundTrip)
{
  AIModuleDefinitionCollection original;
  original.insertDefinition(definition(ModuleType::ONNX, {1, 2, 3}));
  original.insertDefinition(definition(ModuleType::TorchScript, {}));
  FileSystem::DataOStream out(FileSystem::DataStreamKind::Text);
  out << original;
  AIModuleDefinitionCollection read;
  FileSystem::DataIStream in(out.data(), FileSystem::DataStreamKind::Text);
  in >> read;
  ASSERT_TRUE(in.good());
  ASSERT_EQ(read.size(), 2u);
  EXPECT_EQ(*read.getDefinition(0), *original.getDefinition(0));
  EXPECT_EQ(*read.getDefinition(1), *original.getDefinition(1));
  EXPECT_EQ(read.getNextId(), 2u);
}

TEST(AIModuleDefinitionCollection, CorruptCountFailsAndKeepsTheEntries)
{
  FileSystem::DataOStream out;
  out.beginSection("AIModuleDefinitionCollection");
  out << (std::uint64_t(1) << 62);
  out.endSection();
  AIModuleDefinitionCollection read;
  read.insertDefinition(definition(ModuleType::ONNX, {1}));
  FileSystem::DataIStream in(out.data());
  in >> read;
  EXPECT_FALSE(in.good());
  EXPECT_EQ(read.size(), 1u);
  EXPECT_EQ(read.getNextId(), 1u);
}

} // namespace

#include "ombrix/ai/AIModuleReference.h"

#include "ombrix/ai/AIModuleDefinition.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "ai/RecordingModules.h"

#include <gtest/gtest.h>

namespace
{

using Ombrix::AIModuleDefinition;
using Ombrix::AIModuleReference;
using OmbrixTest::RecordingModuleCollection;

TEST(AIModuleReference, ReattachLooksUpTheDefinitionIdentifier)
{
  RecordingModuleCollection modules;
  auto& module = modules.add(2);
  AIModuleDefinition definition(AISystem::ModuleType::ONNX, {1});
  definition.assignId(2);
  AIModuleReference reference(definition);
  EXPECT_TRUE(reference.empty());
  reference.reattach(modules);
  EXPECT_EQ(reference.get(), &module);
  EXPECT_TRUE(static_cast<bool>(reference));
  reference.clear();
  EXPECT_TRUE(reference.empty());
  EXPECT_EQ(reference.getId(), 2u);

  AIModuleReference unknown(std::optional<std::size_t>(5));
  unknown.reattach(modules);
  EXPECT_TRUE(unknown.empty());
  EXPECT_EQ(modules.calls, (std::vector<std::string>{"find 2", "find 5"}));
}

TEST(AIModuleReference, WithoutIdentifierReattachDoesNothing)
{
  RecordingModuleCollection modules;
  modules.add(0);
  AIModuleReference fromNull(static_cast<const AIModuleDefinition*>(nullptr));
  EXPECT_FALSE(fromNull.getId().has_value());
  fromNull.reattach(modules);
  EXPECT_TRUE(fromNull.empty());
  EXPECT_TRUE(modules.calls.empty());
}

TEST(AIModuleReference, EqualityByIdentifierOnly)
{
  RecordingModuleCollection modules;
  modules.add(1);
  AIModuleReference attached(std::optional<std::size_t>(1));
  attached.reattach(modules);
  EXPECT_EQ(attached, AIModuleReference(std::optional<std::size_t>(1)));
  EXPECT_NE(attached, AIModuleReference(std::optional<std::size_t>(0)));
  EXPECT_NE(attached, AIModuleReference());
  EXPECT_EQ(AIModuleReference(), AIModuleReference(static_cast<const AIModuleDefinition*>(nullptr)));
}

TEST(AIModuleReference, StreamFormAndRoundTrip)
{
  FileSystem::DataOStream out;
  out << AIModuleReference(std::optional<std::size_t>(6));
  FileSystem::DataOStream expected;
  expected.beginSection("AIModuleReference");
  expected.key("DefinitionId");
  expected << true << std::uint64_t(6);
  expected.endSection();
  EXPECT_EQ(out.data(), expected.data());

  for (const auto& original : {AIModuleReference(), AIModuleReference(std::optional<std::size_t>(0))})
  {
    FileSystem::DataOStream written;
    written << original;
    RecordingModuleCollection modules;
    modules.add(3);
    AIModuleReference read(std::optional<std::size_t>(3));
    read.reattach(modules);
    FileSystem::DataIStream in(written.data());
    in >> read;
    ASSERT_TRUE(in.good());
    EXPECT_EQ(read, original);
    EXPECT_TRUE(read.empty());
  }
}

} // namespace

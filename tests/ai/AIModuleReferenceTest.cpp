#include "ombrix/ai/AIModuleReference.h"

#include "ombrix/ai/AIModuleDefinition.h"

#include "ai/RecordingModules.h"
#include "support/Tables.h"

#include <gtest/gtest.h>

namespace
{

using Ombrix::AIModuleDefinition;
using Ombrix::AIModuleReference;
using Id = std::optional<std::size_t>;

TEST(AIModuleReference, ReattachLooksUpTheDefinitionIdentifierIfAny)
{
  OmbrixTest::RecordingModuleCollection modules;
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

  AIModuleReference unknown(Id(5));
  AIModuleReference fromNull(static_cast<const AIModuleDefinition*>(nullptr));
  EXPECT_FALSE(fromNull.getId().has_value());
  for (AIModuleReference* r : {&unknown, &fromNull})
  {
    r->reattach(modules);
    EXPECT_TRUE(r->empty());
  }
  EXPECT_EQ(modules.calls, (std::vector<std::string>{"find 2", "find 5"}));
}

TEST(AIModuleReference, EqualityByIdentifierOnly)
{
  OmbrixTest::RecordingModuleCollection modules;
  modules.add(1);
  AIModuleReference attached(Id(1));
  attached.reattach(modules);
  EXPECT_EQ(attached, AIModuleReference(Id(1)));
  EXPECT_NE(attached, AIModuleReference(Id(0)));
  EXPECT_NE(attached, AIModuleReference());
  EXPECT_EQ(AIModuleReference(), AIModuleReference(static_cast<const AIModuleDefinition*>(nullptr)));
}

TEST(AIModuleReference, StreamFormRoundTripAndCuts)
{
  const AIModuleReference six(Id(6));
  EXPECT_EQ(OmbrixTest::streamed(six, FileSystem::DataStreamKind::Text),
            "<AIModuleReference>\n  DefinitionId true 6\n</AIModuleReference>\n");
  OmbrixTest::RecordingModuleCollection modules;
  modules.add(3);
  for (const auto kind : OmbrixTest::kStreamKinds)
  {
    for (const auto& original : {AIModuleReference(), AIModuleReference(Id(0)), six})
    {
      AIModuleReference attached(Id(3));
      attached.reattach(modules);
      const AIModuleReference read = OmbrixTest::roundTrip(original, kind, attached);
      EXPECT_EQ(read, original);
      EXPECT_TRUE(read.empty()) << "a read reference is not attached";
    }
  }
  OmbrixTest::expectCutsFail(OmbrixTest::streamed(six, FileSystem::DataStreamKind::Binary),
                             AIModuleReference(Id(3)));
}

} // namespace

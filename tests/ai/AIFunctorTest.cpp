#include "ombrix/ai/AIFunctor.h"

#include "ombrix/ai/AIModuleDefinition.h"
#include "ombrix/model/EntityCollection.h"

#include "ai/RecordingModules.h"
#include "model/ModelTestSupport.h"
#include "support/Tables.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <tuple>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::Chronology;
using Ombrix::AIFunctor;
using Ombrix::AIModuleDefinition;
using OmbrixTest::RecordingModule;
using Reference = AttributeReference<Attribute>;
using Calls = std::vector<std::string>;

// Network N (1-1) with doubles A = 1.5, B = 2 and Sum; functors add A and B into Sum with module 0.
class AIFunctorTest : public ::testing::Test
{
protected:
  AIFunctorTest() : definition(AISystem::ModuleType::ONNX, {1, 2})
  {
    auto network = OmbrixTest::makeEntity("Network", "N", {1, 1});
    OmbrixTest::addValue(*network, "A", 1.5);
    OmbrixTest::addValue(*network, "B", 2.0);
    OmbrixTest::addValue(*network, "Sum", 0.0);
    entities.addRootEntity(std::move(network));
    definition.assignId(0);
  }

  Entity& network() { return *entities.getEntity(EntityID(1, 1)); }
  Attribute& attribute(const char* name) { return network().getAttribute(AttributePath(name)); }
  AIFunctor makeFunctor(const std::string& name = "F")
  {
    return AIFunctor(name, &network(), {Reference(attribute("A")), Reference(attribute("B"))},
                     {Reference(attribute("Sum"))}, &definition);
  }

  EntityCollection entities;
  AIModuleDefinition definition;
  OmbrixTest::RecordingModuleCollection modules;
};

TEST_F(AIFunctorTest, LifecycleCallsTheModuleInOrder)
{
  modules.add(0);
  AIFunctor functor = makeFunctor();
  EXPECT_FALSE(functor.isInitialized());
  EXPECT_EQ(functor.getDefinitionId(), 0u);
  functor.initialize(modules, entities, true, false);
  EXPECT_TRUE(functor.isInitialized());
  EXPECT_EQ(functor.execute(),
            std::vector<EntityError>{EntityError(EntityID(1, 1), "checked", EntityErrorLevel::Information)});
  EXPECT_EQ(attribute("Sum").getDoubleValue(Chronology::Current, false), 3.5);
  functor.initialize(modules, entities, false, false); // again before terminate: changes nothing
  functor.terminate();
  EXPECT_FALSE(functor.isInitialized());
  functor.terminate(); // twice: does not reach the module again
  EXPECT_EQ(modules.calls, (Calls{"find 0", "initialise true", "check F inputs 2 outputs 1",
                                  "execute F owner N inputs 2 outputs 1", "terminate"}));
  EXPECT_THROW_MSG(functor.execute(), std::runtime_error, "Error in AI Model : F No Model");
  // After terminate the functor can be initialised again.
  functor.initialize(modules, entities, false, false);
  EXPECT_EQ(functor.execute().size(), 1u);
  EXPECT_EQ(modules.calls.at(6), "initialise false");
}

TEST_F(AIFunctorTest, ModuleRefusingToStartLeavesTheFunctorUninitialised)
{
  RecordingModule& module = modules.add(0);
  const std::tuple<const char*, const char*, Calls> cases[] = {
      {"initialise", "Error in AI Model : F - cannot load", {"find 0", "initialise true"}},
      {"check",
       "Error in AI Model : F - does not fit",
       {"find 0", "initialise true", "check F inputs 2 outputs 1", "terminate"}},
  };
  for (const auto& [refusal, message, calls] : cases)
  {
    SCOPED_TRACE(message);
    module.fail = refusal;
    modules.calls.clear();
    AIFunctor functor = makeFunctor();
    EXPECT_THROW_MSG(functor.initialize(modules, entities, true, false), std::runtime_error, message);
    EXPECT_EQ(modules.calls, calls);
    EXPECT_FALSE(functor.isInitialized());
    EXPECT_THROW_MSG(functor.execute(), std::runtime_error, "Error in AI Model : F No Model");
  }
}

TEST_F(AIFunctorTest, ExecutionFailuresAndMissingModulesCarryTheFunctorName)
{
  AIFunctor never = makeFunctor("never initialised");
  AIFunctor unknown = makeFunctor("unknown to the runtime");
  unknown.initialize(modules, entities, false, false);
  RecordingModule& module = modules.add(0);
  AIFunctor withoutDefinition("without definition", &network(), {}, {}, nullptr);
  withoutDefinition.initialize(modules, entities, false, false);
  EXPECT_EQ(modules.calls, Calls{"find 0"}) << "without a definition nothing is looked up";
  for (AIFunctor* functor : {&never, &unknown, &withoutDefinition})
    EXPECT_THROW_MSG(functor->execute(), std::runtime_error,
                     "Error in AI Model : " + functor->getName() + " No Model");

  AIFunctor functor = makeFunctor("Flow model");
  functor.initialize(modules, entities, false, false);
  module.fail = "execute";
  EXPECT_THROW_MSG(functor.execute(), std::runtime_error, "Error in AI Model : Flow model - x");
  module.fail = "execute with an int";
  EXPECT_THROW_MSG(functor.execute(), std::runtime_error, "Error in AI Model : Flow model - Unknown Error");
}

TEST_F(AIFunctorTest, InitialisingAgainstARebuiltCollectionAttachesThere)
{
  modules.add(0);
  for (const bool outputsOnly : {false, true})
  {
    SCOPED_TRACE(outputsOnly);
    EntityCollection rebuilt = OmbrixTest::roundTrip(entities, FileSystem::DataStreamKind::Binary);
    Entity& copy = *rebuilt.getEntity(EntityID(1, 1));
    AIFunctor functor = makeFunctor();
    modules.calls.clear();
    functor.initialize(modules, rebuilt, false, outputsOnly);
    EXPECT_EQ(functor.getOwner().get(), &copy);
    EXPECT_EQ(functor.getOutputs().at(0).get(), &copy.getAttribute(AttributePath("Sum")));
    if (outputsOnly)
    {
      // Neither the module nor the inputs are attached: the inputs still point into the first collection.
      EXPECT_EQ(functor.getInputs().at(0).get(), &attribute("A"));
      EXPECT_THROW_MSG(functor.execute(), std::runtime_error, "Error in AI Model : F No Model");
      functor.terminate();
      EXPECT_TRUE(modules.calls.empty());
      continue;
    }
    EXPECT_EQ(functor.getInputs().at(1).get(), &copy.getAttribute(AttributePath("B")));
    functor.execute();
    EXPECT_EQ(copy.getAttribute(AttributePath("Sum")).getDoubleValue(Chronology::Current, false), 3.5);
    EXPECT_EQ(attribute("Sum").getDoubleValue(Chronology::Current, false), 0.0);
  }
}

TEST_F(AIFunctorTest, EqualityIgnoresOwnerAndInitialisation)
{
  modules.add(0);
  AIFunctor base = makeFunctor();
  AIFunctor otherOwner("F", nullptr, base.getInputs(), base.getOutputs(), &definition);
  otherOwner.initialize(modules, entities, false, false);
  EXPECT_EQ(base, otherOwner);

  AIModuleDefinition otherDefinition(AISystem::ModuleType::ONNX, {1, 2});
  otherDefinition.assignId(1);
  const AIFunctor differing[] = {
      makeFunctor("G"),
      AIFunctor("F", &network(), {Reference(attribute("A"))}, base.getOutputs(), &definition),
      AIFunctor("F", &network(), base.getInputs(), {Reference(attribute("A"))}, &definition),
      AIFunctor("F", &network(), base.getInputs(), base.getOutputs(), &otherDefinition),
      AIFunctor("F", &network(), base.getInputs(), base.getOutputs(), nullptr),
  };
  for (const auto& other : differing)
    EXPECT_NE(base, other); // != is the negation of ==
}

TEST_F(AIFunctorTest, StreamFormRoundTripAndCuts)
{
  // The sections of the text form, with the section name as the format has it.
  EXPECT_EQ(OmbrixTest::streamed(AIFunctor("F", nullptr, {}, {}, nullptr), FileSystem::DataStreamKind::Text),
            R"(<AIFunctor>
  Name "F"
  Owner
  <AttributeReference>
    EntityID false
    AttributePath 0
  </AttributeReference>
  <Inputs>
    0
  </Inputs>
  <Ouptuts>
    0
  </Ouptuts>
  <Model>
    <AIModuleReference>
      DefinitionId false
    </AIModuleReference>
  </Model>
</AIFunctor>
)");
  modules.add(0);
  AIFunctor original = makeFunctor();
  original.initialize(modules, entities, false, false);
  for (const auto kind : OmbrixTest::kStreamKinds)
  {
    AIFunctor read = OmbrixTest::roundTrip(original, kind);
    EXPECT_EQ(read, original);
    EXPECT_FALSE(read.isInitialized());
    EXPECT_EQ(read.getOwner(), original.getOwner());
    read.initialize(modules, entities, false, false);
    EXPECT_EQ(read.getInputs().at(1).get(), &attribute("B"));
    EXPECT_EQ(read.execute().size(), 1u);
  }
  OmbrixTest::expectCutsFail(OmbrixTest::streamed(original, FileSystem::DataStreamKind::Binary),
                             makeFunctor("Before"), 7);
}

} // namespace

#include "ombrix/ai/AIFunctor.h"

#include "ombrix/ai/AIModuleDefinition.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "ai/RecordingModules.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>
#include <tuple>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;
using Ombrix::AIFunctor;
using Ombrix::AIModuleDefinition;
using OmbrixTest::RecordingModule;
using OmbrixTest::RecordingModuleCollection;
using Reference = AttributeReference<Attribute>;

class AIFunctorTest : public ::testing::Test
{
protected:
  AIFunctorTest() : definition(AISystem::ModuleType::ONNX, {1, 2})
  {
    auto network = std::make_unique<Entity>("Network", "N");
    network->setUniqueID(EntityID(1, 1));
    for (const char* name : {"A", "B", "Sum"})
      network->createAttribute(AttributeType::Double, name, AccessType::ReadWrite);
    static_cast<DoubleAttribute&>(network->getAttribute(AttributePath("A"))).set(1.5);
    static_cast<DoubleAttribute&>(network->getAttribute(AttributePath("B"))).set(2.0);
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
  RecordingModuleCollection modules;
};

TEST_F(AIFunctorTest, LifecycleCallsTheModuleInOrder)
{
  modules.add(0);
  AIFunctor functor = makeFunctor();
  EXPECT_FALSE(functor.isInitialized());
  EXPECT_EQ(functor.getDefinitionId(), 0u);

  functor.initialize(modules, entities, true, false);
  EXPECT_TRUE(functor.isInitialized());
  const auto errors = functor.execute();
  EXPECT_EQ(errors, (std::vector<EntityError>{
                        EntityError(EntityID(1, 1), "checked", EntityErrorLevel::Information)}));
  EXPECT_EQ(attribute("Sum").getDoubleValue(Chronology::Current, false), 3.5);
  // A second initialisation before terminate changes nothing.
  functor.initialize(modules, entities, false, false);
  functor.terminate();
  EXPECT_FALSE(functor.isInitialized());
  // Terminating twice does not reach the module again.
  functor.terminate();
  EXPECT_EQ(modules.calls,
            (std::vector<std::string>{"find 0", "initialise true", "check F inputs 2 outputs 1",
                                      "execute F owner N inputs 2 outputs 1", "terminate"}));
  EXPECT_THROW_MSG(functor.execute(), std::runtime_error, "Error in AI Model : F No Model");

  // After terminate the functor can be initialised again.
  functor.initialize(modules, entities, false, false);
  EXPECT_NO_THROW(functor.execute());
  EXPECT_EQ(modules.calls.at(6), "initialise false");
}

TEST_F(AIFunctorTest, ModuleRefusingToStartLeavesTheFunctorUninitialised)
{
  RecordingModule& module = modules.add(0);
  const std::tuple<RecordingModule::Refusal, const char*, std::vector<std::string>> cases[] = {
      {RecordingModule::Refusal::Initialise,
       "Error in AI Model : F - cannot load",
       {"find 0", "initialise true"}},
      {RecordingModule::Refusal::Check,
       "Error in AI Model : F - does not fit",
       {"find 0", "initialise true", "check F inputs 2 outputs 1", "terminate"}},
  };
  for (const auto& [refusal, message, calls] : cases)
  {
    SCOPED_TRACE(message);
    module.refuse = refusal;
    modules.calls.clear();
    AIFunctor functor = makeFunctor();
    EXPECT_THROW_MSG(functor.initialize(modules, entities, true, false), std::runtime_error, message);
    EXPECT_EQ(modules.calls, calls);
    EXPECT_FALSE(functor.isInitialized());
    EXPECT_THROW_MSG(functor.execute(), std::runtime_error, "Error in AI Model : F No Model");
  }
}

TEST_F(AIFunctorTest, ExecutionFailuresCarryTheFunctorName)
{
  RecordingModule& module = modules.add(0);
  const std::pair<RecordingModule::Failure, const char*> cases[] = {
      {RecordingModule::Failure::Standard, "Error in AI Model : Flow model - x"},
      {RecordingModule::Failure::Other, "Error in AI Model : Flow model - Unknown Error"},
  };
  AIFunctor functor = makeFunctor("Flow model");
  functor.initialize(modules, entities, false, false);
  for (const auto& [failure, message] : cases)
  {
    SCOPED_TRACE(message);
    module.failure = failure;
    EXPECT_THROW_MSG(functor.execute(), std::runtime_error, message);
  }
}

TEST_F(AIFunctorTest, NoModelCases)
{
  // Never initialised.
  EXPECT_THROW_MSG(makeFunctor().execute(), std::runtime_error, "Error in AI Model : F No Model");

  // Identifier unknown to the runtime.
  AIFunctor unknown = makeFunctor();
  unknown.initialize(modules, entities, false, false);
  EXPECT_THROW_MSG(unknown.execute(), std::runtime_error, "Error in AI Model : F No Model");

  // No definition at all: nothing is looked up.
  modules.add(0);
  modules.calls.clear();
  AIFunctor withoutDefinition("G", &network(), {}, {}, nullptr);
  withoutDefinition.initialize(modules, entities, false, false);
  EXPECT_TRUE(modules.calls.empty());
  EXPECT_THROW_MSG(withoutDefinition.execute(), std::runtime_error, "Error in AI Model : G No Model");
}

TEST_F(AIFunctorTest, OutputsOnlyAttachesOutputsButNoModuleAndNoInputs)
{
  modules.add(0);
  AIFunctor functor = makeFunctor();
  FileSystem::DataOStream out;
  out << entities;
  EntityCollection rebuilt;
  FileSystem::DataIStream in(out.data());
  in >> rebuilt;
  ASSERT_TRUE(in.good());

  functor.initialize(modules, rebuilt, true, true);
  EXPECT_TRUE(modules.calls.empty());
  Entity& copy = *rebuilt.getEntity(EntityID(1, 1));
  EXPECT_EQ(functor.getOutputs().at(0).get(), &copy.getAttribute(AttributePath("Sum")));
  // The inputs were not re-attached: they still point into the first collection.
  EXPECT_EQ(functor.getInputs().at(0).get(), &attribute("A"));
  EXPECT_THROW_MSG(functor.execute(), std::runtime_error, "Error in AI Model : F No Model");
  functor.terminate();
  EXPECT_TRUE(modules.calls.empty());
}

TEST_F(AIFunctorTest, InitialisingAgainstARebuiltCollectionWritesIntoIt)
{
  modules.add(0);
  AIFunctor functor = makeFunctor();
  FileSystem::DataOStream out;
  out << entities;
  EntityCollection rebuilt;
  FileSystem::DataIStream in(out.data());
  in >> rebuilt;
  ASSERT_TRUE(in.good());

  functor.initialize(modules, rebuilt, false, false);
  functor.execute();
  Entity& copy = *rebuilt.getEntity(EntityID(1, 1));
  EXPECT_EQ(copy.getAttribute(AttributePath("Sum")).getDoubleValue(Chronology::Current, false), 3.5);
  EXPECT_FALSE(attribute("Sum").hasValue(Chronology::Current, false) &&
               attribute("Sum").getDoubleValue(Chronology::Current, false) == 3.5);
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
  {
    EXPECT_NE(base, other);
    EXPECT_FALSE(base == other);
  }
}

TEST_F(AIFunctorTest, StreamLayout)
{
  const AIFunctor functor = makeFunctor();
  FileSystem::DataOStream out;
  out << functor;

  FileSystem::DataOStream expected;
  expected.beginSection("AIFunctor");
  expected.key("Name");
  expected << std::string("F");
  expected.key("Owner");
  expected << Reference(network());
  expected.beginSection("Inputs");
  expected << functor.getInputs();
  expected.endSection();
  expected.beginSection("Ouptuts");
  expected << functor.getOutputs();
  expected.endSection();
  expected.beginSection("Model");
  expected << functor.getModel();
  expected.endSection();
  expected.endSection();
  EXPECT_EQ(out.data(), expected.data());
}

TEST_F(AIFunctorTest, StreamRoundTripGivesAnUninitialisedEqualFunctor)
{
  modules.add(0);
  AIFunctor original = makeFunctor();
  original.initialize(modules, entities, false, false);
  for (const auto kind : {FileSystem::DataStreamKind::Binary, FileSystem::DataStreamKind::Text})
  {
    FileSystem::DataOStream out(kind);
    out << original;
    AIFunctor read;
    FileSystem::DataIStream in(out.data(), kind);
    in >> read;
    ASSERT_TRUE(in.good());
    EXPECT_EQ(read, original);
    EXPECT_EQ(read.getName(), "F");
    EXPECT_FALSE(read.isInitialized());
    EXPECT_EQ(read.getOwner(), original.getOwner());

    read.initialize(modules, entities, false, false);
    EXPECT_EQ(read.getInputs().at(1).get(), &attribute("B"));
    EXPECT_EQ(read.execute().size(), 1u);
  }
}

TEST_F(AIFunctorTest, TruncatedStreamLeavesTheFunctorUnchanged)
{
  FileSystem::DataOStream out;
  out << makeFunctor();
  const AIFunctor before = makeFunctor("Before");
  for (std::size_t length = 0; length < out.data().size(); length += 7)
  {
    SCOPED_TRACE(length);
    AIFunctor read = before;
    FileSystem::DataIStream in(out.data().substr(0, length));
    in >> read;
    EXPECT_FALSE(in.good());
    EXPECT_EQ(read, before);
  }
}

} // namespace

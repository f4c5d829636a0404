#include "ombrix/runtime/AIRuntimeModuleCollection.h"

#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/runtime/NeuralNetworkFormat.h"
#include "ombrix/runtime/TransformedFormat.h"

#include "ai/RecordingModules.h"
#include "support/TestSupport.h"

#include <cmath>
#include <gtest/gtest.h>

namespace
{

using namespace Ombrix::Model;
using AISystem::ModuleType;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;
using Ombrix::AIFunctor;
using Ombrix::AIRuntimeModuleCollection;
using Ombrix::Transformation;
using Ombrix::TransformationType;
using Reference = AttributeReference<Attribute>;

// Out = A + 2 B + 0.5
Utilities::bytearray linearNetwork()
{
  return Ombrix::NeuralNetworkFormat::write(
      Ombrix::DenseNetwork({Ombrix::DenseLayer{2, 1, Ombrix::Activation::Identity, {1.0, 2.0}, {0.5}}}));
}

// Module identifiers, in order of insertion.
enum Module : std::size_t
{
  Network,
  Trivial,
  Onnx,
  Python,
  Broken,
  Scaled, // the network with A and B scaled to (x - 1) / 2 and Out as 10 y
};

// Cells with values of every kind, and one definition of each module above.
struct Cells
{
  Cells()
  {
    for (int c = 0; c < cells; ++c)
    {
      auto cell = std::make_unique<Entity>("Cell", "Cell " + std::to_string(c));
      cell->setUniqueID(EntityID(c, 1));
      for (const char* name : {"A", "B", "Out"})
        cell->createAttribute(AttributeType::Double, name, AccessType::ReadOnly);
      for (const char* name : {"N", "Count"})
        cell->createAttribute(AttributeType::Int, name, AccessType::ReadOnly);
      cell->createAttribute(AttributeType::Bool, "Flag", AccessType::ReadOnly);
      cell->createAttribute(AttributeType::String, "Name", AccessType::ReadOnly);
      cell->createAttribute(AttributeType::Float, "Ratio", AccessType::ReadOnly);
      cell->getAttribute(AttributePath("A")).setDoubleValue(c, Chronology::Current, false);
      cell->getAttribute(AttributePath("B")).setDoubleValue(0.25 * c, Chronology::Current, false);
      entities.addRootEntity(std::move(cell));
    }
    const Ombrix::TransformedFormat::Content scaled{
        {Transformation(TransformationType::SimpleScaling, {0.5, -0.5}),
         Transformation(TransformationType::SimpleScaling, {0.5, -0.5})},
        {Transformation(TransformationType::SimpleScaling, {0.1, 0.0})},
        ModuleType::NeuralNetwork,
        linearNetwork()};
    for (auto [type, data] : std::initializer_list<std::pair<ModuleType, Utilities::bytearray>>{
             {ModuleType::NeuralNetwork, linearNetwork()},
             {ModuleType::Trivial, {}},
             {ModuleType::ONNX, {1}},
             {ModuleType::Python, {2}},
             {ModuleType::NeuralNetwork, {1, 2, 3}},
             {ModuleType::Transformed, Ombrix::TransformedFormat::write(scaled)}})
      definitions.insertDefinition(std::make_unique<Ombrix::AIModuleDefinition>(type, data));
  }

  Attribute& at(int cell, const char* name)
  {
    return entities.getEntity(EntityID(cell, 1))->getAttribute(AttributePath(name));
  }
  double value(int cell, const char* name)
  {
    return at(cell, name).getDoubleValue(Chronology::Current, false);
  }

  AIFunctor functor(Module module, int cell, std::vector<const char*> inputs,
                    std::vector<const char*> outputs, const std::string& name = "F")
  {
    AIFunctor::References in, out;
    for (const char* input : inputs)
      in.emplace_back(at(cell, input));
    for (const char* output : outputs)
      out.emplace_back(at(cell, output));
    return AIFunctor(name, entities.getEntity(EntityID(cell, 1)), in, out, definitions.getDefinition(module));
  }

  static constexpr int cells = 40;
  EntityCollection entities;
  Ombrix::AIModuleDefinitionCollection definitions;
};

class AIRuntimeModuleCollectionTest : public ::testing::Test, public Cells
{
};

TEST_F(AIRuntimeModuleCollectionTest, RunsEachModuleTypeThroughItsFunctorsAtTheChosenChronologies)
{
  AIRuntimeModuleCollection runtime(definitions);
  EXPECT_EQ(runtime.size(), definitions.size());
  at(3, "Name").setStringValue("probe", Chronology::Current, false);
  // The trivial module reads a shortcut input as the value it leads to.
  static_cast<ShortcutAttribute&>(
      *entities.getEntity(EntityID(3, 1))
           ->createAttribute(AttributeType::Shortcut, "Alias", AccessType::ReadOnly))
      .addShortcut(AttributePath("Name"));
  AIFunctor functors[] = {
      functor(Network, 3, {"A", "B"}, {"Out"}),
      functor(Scaled, 4, {"A", "B"}, {"Out"}),
      functor(Trivial, 3, {"Alias", "A", "N"}, {"Name", "B", "Count"}),
      functor(Network, 5, {"N", "Flag"}, {"Count"}), // Int and Bool in, Int out (rounded)
      functor(Network, 6, {"A", "B"}, {"Ratio"}),
  };
  at(5, "N").setIntValue(2, Chronology::Current, false);
  at(3, "N").setIntValue(-7, Chronology::Current, false);
  at(5, "Flag").setBoolValue(true, Chronology::Current, false);
  for (auto& f : functors)
  {
    f.initialize(runtime, entities, false, false);
    EXPECT_TRUE(f.execute().empty());
  }
  EXPECT_EQ(value(3, "Out"), 3 + 2 * 0.75 + 0.5);
  EXPECT_DOUBLE_EQ(value(4, "Out"), 10 * ((4 - 1) / 2.0 + 2 * (1 - 1) / 2.0 + 0.5));
  EXPECT_EQ(at(3, "Name").getStringValue(Chronology::Current, false), "probe");
  EXPECT_EQ(value(3, "B"), 3.0);
  EXPECT_EQ(at(3, "Count").getIntValue(Chronology::Current, false), -7);
  EXPECT_EQ(at(5, "Count").getIntValue(Chronology::Current, false), 5); // 2 + 2 + 0.5 rounds away from 0
  EXPECT_EQ(at(6, "Ratio").getFloatValue(Chronology::Current, false), 6 + 3 + 0.5f);

  // A runtime that reads and writes at other chronologies.
  AIRuntimeModuleCollection chosen;
  chosen.setChronologies(Chronology::Initial, Chronology::Next);
  chosen.add(*definitions.getDefinition(Network));
  EXPECT_THROW_MSG(chosen.add(*definitions.getDefinition(Network)), std::invalid_argument,
                   "AI runtime: module 0 exists already");
  at(2, "A").setDoubleValue(7, Chronology::Initial, false);
  at(2, "B").setDoubleValue(1, Chronology::Initial, false);
  AIFunctor f = functor(Network, 2, {"A", "B"}, {"Out"});
  f.initialize(chosen, entities, false, false);
  f.execute();
  EXPECT_EQ(at(2, "Out").getDoubleValue(Chronology::Next, false), 7 + 2 * 1 + 0.5);
  EXPECT_EQ(value(2, "Out"), 0.0);
}

TEST_F(AIRuntimeModuleCollectionTest, RefusesAtInitialisationWhatWouldFailAtTheFirstStep)
{
  AIRuntimeModuleCollection runtime(definitions);
  AIFunctor unresolved = functor(Network, 1, {"A", "B"}, {"Out"});
  unresolved.getInputs()[1] = Reference(EntityID(9, 9), AttributePath("B"));
  std::pair<AIFunctor, const char*> cases[] = {
      {functor(Network, 1, {"A"}, {"Out"}), "module 0 (NeuralNetwork) expects 2 inputs, the functor has 1"},
      {functor(Network, 1, {"A", "B"}, {"Out", "Count"}),
       "module 0 (NeuralNetwork) gives 1 output for 2 inputs, the functor has 2 outputs"},
      {std::move(unresolved),
       "module 0 (NeuralNetwork): input 1 (9-9:B) is unresolved: No Entity found with entityID='9-9'"},
      {functor(Network, 1, {"A", "Name"}, {"Out"}), "module 0 (NeuralNetwork): input 1 (1-1:Name) is of type "
                                                    "String, expected a number (Int, Bool, Float or Double)"},
      {functor(Network, 1, {"A", "B"}, {"Flag"}),
       "module 0 (NeuralNetwork): output 0 (1-1:Flag) is of type Bool, expected Int, Float or Double"},
      {functor(Trivial, 1, {"A"}, {"N"}),
       "module 1 (Trivial): output 0 (1-1:N) is of type Int, expected Double like input 0"},
      {functor(Trivial, 1, {"A"}, {}),
       "module 1 (Trivial) gives 1 output for 1 input, the functor has 0 outputs"},
      {functor(Onnx, 1, {"A"}, {"Out"}),
       "module 2 (ONNX): this build has no runtime for module type \"ONNX\""},
      {functor(Python, 1, {"A"}, {"Out"}),
       "module 3 (Python): this build has no runtime for module type \"Python\""},
      {functor(Broken, 1, {"A"}, {"Out"}),
       "module 4 (NeuralNetwork): NeuralNetwork data: does not start with the signature \"OMNN\""},
      {functor(Scaled, 1, {"A"}, {"Out"}),
       "module 5 (Transformed) has 2 input transformations, the functor has 1 inputs"},
  };
  for (auto& [f, message] : cases)
  {
    SCOPED_TRACE(message);
    EXPECT_THROW_MSG(f.initialize(runtime, entities, false, false), std::runtime_error,
                     std::string("Error in AI Model : F - ") + message);
    EXPECT_FALSE(f.isInitialized());
  }
}

TEST_F(AIRuntimeModuleCollectionTest, ProblemsOfOneEntityComeBackAsEntityErrors)
{
  AIRuntimeModuleCollection runtime(definitions);
  // Cell 1's A holds no value at any chronology.
  static_cast<DoubleAttribute&>(at(1, "A"))
      .container()
      .replace(std::make_unique<Data::ChronologicalValue<double>>());
  at(2, "A").setDoubleValue(NAN, Chronology::Current, false);
  at(3, "A").setDoubleValue(3e9, Chronology::Current, false);
  AIFunctor functors[] = {functor(Network, 1, {"A", "B"}, {"Out"}), functor(Network, 2, {"A", "B"}, {"Out"}),
                          functor(Network, 3, {"A", "B"}, {"Count"})};
  const auto error = [](int cell, const std::string& text, const std::string& moduleText = "")
  {
    EntityError e(EntityID(cell, 1), text, EntityErrorLevel::Error);
    if (!moduleText.empty())
      e.setAIModelError(moduleText);
    return e;
  };
  const std::vector<EntityError> expected = {
      error(1, "Input 0 (1-1:A) of \"F\" could not be read: Chronology Out Of Range"),
      error(2, "Output 0 (2-1:Out) of \"F\" not written: the module gave nan", "result nan is not finite"),
      error(3, "Output 0 (3-1:Count) of \"F\" not written: 3000000002 does not fit an Int",
            "result 3000000002 does not fit an Int")};
  for (std::size_t f = 0; f < 3; ++f)
  {
    functors[f].initialize(runtime, entities, false, false);
    EXPECT_EQ(functors[f].execute(), std::vector<EntityError>{expected[f]});
  }
  for (int cell : {1, 2})
    EXPECT_EQ(value(cell, "Out"), 0.0) << cell; // left alone
  EXPECT_EQ(runtime.executeBatch(functors), expected);
}

TEST_F(AIRuntimeModuleCollectionTest, BatchGivesTheResultsOfExecutingOneByOne)
{
  // Two identical models: one run functor by functor, the other in one batch.
  Cells other;
  OmbrixTest::RecordingModuleCollection recording;
  recording.add(Python);
  // Functors of every module kind, initialised against `runtime` but for the recorded one.
  const auto build = [&recording](Cells& model, AISystem::AIModuleCollection& runtime)
  {
    model.at(4, "B").setDoubleValue(NAN, Chronology::Current, false); // one entity error amid the batch
    std::vector<AIFunctor> functors;
    for (int c = 0; c < cells; ++c)
    {
      if (c == 7)
        functors.push_back(model.functor(Python, c, {"A"}, {"Out"}, "recorded"));
      else if (c % 5 == 0)
        functors.push_back(model.functor(Trivial, c, {"A"}, {"B"}, "copy " + std::to_string(c)));
      else
        functors.push_back(
            model.functor(c % 2 ? Network : Scaled, c, {"A", "B"}, {"Out"}, "F" + std::to_string(c)));
      functors.back().initialize(c == 7 ? recording : runtime, model.entities, false, false);
    }
    return functors;
  };
  AIRuntimeModuleCollection runtime(definitions), otherRuntime(other.definitions);
  auto single = build(*this, runtime);
  auto batched = build(other, otherRuntime);
  std::vector<EntityError> expected;
  for (auto& f : single)
    for (auto& error : f.execute())
      expected.push_back(error);
  EXPECT_EQ(otherRuntime.executeBatch(batched), expected);
  ASSERT_EQ(expected.size(), 2u); // the NaN, then the recording module's note
  for (int c = 0; c < cells; ++c)
  {
    SCOPED_TRACE(c);
    for (const char* name : {"B", "Out"})
    {
      const double a = value(c, name), b = other.value(c, name);
      EXPECT_TRUE(a == b || (std::isnan(a) && std::isnan(b)));
    }
  }

  // A functor without module stops the batch before anything runs.
  other.at(1, "Out").setDoubleValue(-1, Chronology::Current, false);
  batched.back().terminate();
  EXPECT_THROW_MSG(otherRuntime.executeBatch(batched), std::runtime_error,
                   "Error in AI Model : F39 No Model");
  EXPECT_EQ(other.value(1, "Out"), -1);
}

} // namespace

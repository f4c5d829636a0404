#include "ombrix/model/SolutionControl.h"

#include "ombrix/model/EntityCollection.h"

#include "model/ModelTestSupport.h"
#include "support/TestSupport.h"

#include <cmath>
#include <stdexcept>

using namespace Ombrix::Model;
using C = KorvanSDK::Chronology;
using OmbrixTest::addValue;

namespace
{

// A solution-control entity with every default path; `transient` adds "Transient.Time Varying".
std::unique_ptr<Entity> solutionControlEntity(std::optional<bool> transient)
{
  auto entity = OmbrixTest::makeEntity("Solution Control", "Solution Control", EntityID(1, 1));
  auto& results = OmbrixTest::addComposite(*entity, "Results");
  addValue<int>(results, "Iteration", 12);
  addValue<bool>(results, "IsFirstIteration", false);
  addValue<bool>(results, "IsLastIteration", true);
  addValue<double>(results, "Time", 0.25);
  addValue<bool>(results, "IsFirstTimeStep", true);
  addValue<bool>(results, "IsLastTimeStep", false);
  addValue<bool>(results, "IsConverged", true);
  addValue<int>(OmbrixTest::addComposite(*entity, "Iterations"), "Number of Iterations", 100);
  auto& transientGroup = OmbrixTest::addComposite(*entity, "Transient");
  if (transient)
    addValue<bool>(transientGroup, "Time Varying", *transient);
  auto& definition = OmbrixTest::addComposite(transientGroup, "Definition");
  addValue<double>(definition, "Time Step", 0.01);
  addValue<int>(definition, "Time Step Number of Iterations", 7);
  addValue<double>(definition, "Total Simulation Time", 2.0);
  addValue<bool>(OmbrixTest::addComposite(*entity, "Ombrix Control"), "Stop On Convergence", false);
  return entity;
}

} // namespace

TEST(SolutionControlTest, DefinitionDefaults)
{
  const SolutionControlDefinition d;
  const std::pair<AttributePath, const char*> paths[] = {
      {d.getIterationPath(), "Results.Iteration"},
      {d.getNumberOfIterationsPath(), "Iterations.Number of Iterations"},
      {d.getIsFirstIterationPath(), "Results.IsFirstIteration"},
      {d.getIsLastIterationPath(), "Results.IsLastIteration"},
      {d.getIsTransientPath(), "Transient.Time Varying"},
      {d.getTimePath(), "Results.Time"},
      {d.getTimeStepPath(), "Transient.Definition.Time Step"},
      {d.getTimeStepNumberOfIterationsPath(), "Transient.Definition.Time Step Number of Iterations"},
      {d.getTotalSimulationTimePath(), "Transient.Definition.Total Simulation Time"},
      {d.getIsFirstTimeStepPath(), "Results.IsFirstTimeStep"},
      {d.getIsLastTimeStepPath(), "Results.IsLastTimeStep"},
      {d.getIsConvergedPath(), "Results.IsConverged"},
      {d.getStopOnConvergence(), "Ombrix Control.Stop On Convergence"},
  };
  for (const auto& [path, text] : paths)
  {
    SCOPED_TRACE(text);
    EXPECT_EQ(path, AttributePath(text));
  }
  EXPECT_EQ(d.getSolutionControlName(), "Solution Control");
  EXPECT_EQ(d.getSolutionControlType(), "Solution Control");
}

TEST(SolutionControlTest, NullEntityGivesFallbacks)
{
  const SolutionControlConst control;
  EXPECT_EQ(control.getIteration(), -1);
  EXPECT_EQ(control.getNumberOfIterations(), -1);
  EXPECT_TRUE(std::isnan(control.getTime()));
  EXPECT_TRUE(std::isnan(control.getTimeStep()));
  EXPECT_TRUE(std::isnan(control.getTotalSimulationTime()));
  EXPECT_FALSE(control.isFirstIteration());
  EXPECT_FALSE(control.isLastIteration());
  EXPECT_FALSE(control.isTimeVarying());
  EXPECT_FALSE(control.isFirstTimeStep());
  EXPECT_FALSE(control.isLastTimeStep());
  EXPECT_FALSE(control.isConverged());
  EXPECT_FALSE(control.isStopOnConvergence());
  EXPECT_FALSE(control.isValid());
  EXPECT_FALSE(static_cast<bool>(control));
  SolutionControl writer;
  writer.setNumberOfIterations(3); // nothing to write, no failure
  writer.setTimeStep(1.f);
}

TEST(SolutionControlTest, ReadsThroughTheDefinitionPaths)
{
  auto entity = solutionControlEntity(false);
  const SolutionControlConst control(entity.get(), SolutionControlDefinition());
  EXPECT_TRUE(control.isValid());
  EXPECT_EQ(control.getIteration(), 12);
  EXPECT_EQ(control.getNumberOfIterations(), 100);
  EXPECT_FALSE(control.isFirstIteration());
  EXPECT_TRUE(control.isLastIteration());
  EXPECT_FALSE(control.isTransient());
  EXPECT_EQ(control.getTime(), 0.25);
  EXPECT_EQ(control.getTimeStep(), 0.01);
  EXPECT_EQ(control.getTotalSimulationTime(), 2.0);
  EXPECT_TRUE(control.isFirstTimeStep());
  EXPECT_FALSE(control.isLastTimeStep());
  EXPECT_TRUE(control.isConverged());
  EXPECT_FALSE(control.isStopOnConvergence());
}

TEST(SolutionControlTest, IterationCountFollowsTimeVarying)
{
  struct Case
  {
    std::optional<bool> transient;
    int expected;
  };
  const Case cases[] = {{true, 7}, {false, 100}, {std::nullopt, 100}};
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.expected);
    auto entity = solutionControlEntity(c.transient);
    SolutionControl control(*entity, SolutionControlDefinition());
    EXPECT_EQ(control.getNumberOfIterations(), c.expected);
    control.setNumberOfIterations(c.expected + 1);
    EXPECT_EQ(control.getNumberOfIterations(), c.expected + 1);
  }
  auto entity = solutionControlEntity(true);
  SolutionControl control(*entity, SolutionControlDefinition());
  control.setNumberOfIterations(50);
  EXPECT_EQ(
      entity->getAttribute(AttributePath("Iterations.Number of Iterations")).getIntValue(C::Current, false),
      100);
}

TEST(SolutionControlTest, ValidityNeedsTypeAndName)
{
  auto entity = solutionControlEntity(false);
  entity->setName("Other");
  EXPECT_FALSE(SolutionControlConst(entity.get(), SolutionControlDefinition()).isValid());
  entity->setName("Solution Control");
  entity->setType("Other");
  EXPECT_FALSE(SolutionControlConst(entity.get(), SolutionControlDefinition()).isValid());
}

TEST(SolutionControlTest, MissingAttributeRaisesTheLookupError)
{
  auto entity = solutionControlEntity(true);
  SolutionControlDefinition definition;
  definition.setTimePath(AttributePath("Results.Missing"));
  const SolutionControlConst control(entity.get(), definition);
  EXPECT_THROW_MSG(control.getTime(), std::runtime_error,
                   "Invalid path [1-1] of type Solution Control : Results.Missing");
  definition.setIsTransientPath(AttributePath("Nope"));
  EXPECT_FALSE(SolutionControlConst(entity.get(), definition).isTimeVarying());
}

TEST(SolutionControlTest, WritersStoreIntoTheTargetsOwnType)
{
  auto entity = solutionControlEntity(true);
  SolutionControl control(*entity, SolutionControlDefinition());
  control.setTimeStep(0.5f);
  control.setTotalSimulationTime(4.0f, C::Initial);
  control.setStopOnConvergence(true);
  EXPECT_EQ(control.getTimeStep(), 0.5);
  EXPECT_EQ(control.getTotalSimulationTime(C::Initial), 4.0);
  EXPECT_EQ(control.getTimeStep(C::Initial), 0.01);
  EXPECT_TRUE(control.isStopOnConvergence());
}

TEST(SolutionControlTest, FromCollection)
{
  EntityCollection collection(OmbrixTest::makeEntity("Other", "X", EntityID(5, 5)));
  EXPECT_EQ(SolutionControlConst(collection).get(), nullptr);
  collection.addRootEntity(solutionControlEntity(false));
  SolutionControl control(collection);
  EXPECT_TRUE(control.isValid());
  EXPECT_EQ(control.get(), collection.getEntity(EntityID(1, 1)));
  EXPECT_EQ(control.getIteration(), 12);
}

#include "ombrix/model/SolutionControl.h"

#include "ombrix/model/EntityCollection.h"

#include "model/ModelTestSupport.h"
#include "support/TestSupport.h"

#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>

using namespace Ombrix::Model;
using C = KorvanSDK::Chronology;
using OmbrixTest::addValue;

namespace
{

// A solution-control entity with every default path, spelled out here so that the reads through a default
// definition pin each path's text; `transient` adds "Transient.Time Varying".
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

TEST(SolutionControlTest, ReadsThroughTheDefinitionPathsOrGivesFallbacksWithoutEntity)
{
  using S = const SolutionControlConst&;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // {read, without entity, with solutionControlEntity(false)}; bools read as 0 and 1.
  const std::tuple<const char*, std::function<double(S)>, double, double> cases[] = {
      {"iteration", [](S c) { return c.getIteration(); }, -1, 12},
      {"number of iterations", [](S c) { return c.getNumberOfIterations(); }, -1, 100},
      {"time", [](S c) { return c.getTime(); }, nan, 0.25},
      {"time step", [](S c) { return c.getTimeStep(); }, nan, 0.01},
      {"total time", [](S c) { return c.getTotalSimulationTime(); }, nan, 2.0},
      {"first iteration", [](S c) { return c.isFirstIteration(); }, 0, 0},
      {"last iteration", [](S c) { return c.isLastIteration(); }, 0, 1},
      {"time varying", [](S c) { return c.isTimeVarying(); }, 0, 0},
      {"first time step", [](S c) { return c.isFirstTimeStep(); }, 0, 1},
      {"last time step", [](S c) { return c.isLastTimeStep(); }, 0, 0},
      {"converged", [](S c) { return c.isConverged(); }, 0, 1},
      {"stop on convergence", [](S c) { return c.isStopOnConvergence(); }, 0, 0},
      {"valid", [](S c) { return c.isValid(); }, 0, 1},
  };
  auto entity = solutionControlEntity(false);
  const SolutionControlConst without;
  const SolutionControlConst with(entity.get(), SolutionControlDefinition());
  for (const auto& [name, read, fallback, value] : cases)
  {
    SCOPED_TRACE(name);
    if (std::isnan(fallback))
      EXPECT_TRUE(std::isnan(read(without)));
    else
      EXPECT_EQ(read(without), fallback);
    EXPECT_EQ(read(with), value);
  }
  SolutionControl writer;
  writer.setNumberOfIterations(3); // nothing to write, no failure
  writer.setTimeStep(1.f);
}

TEST(SolutionControlTest, IterationCountFollowsTimeVarying)
{
  // A transient model counts the iterations of a time step; the steady count stays as it was.
  for (const auto& [transient, expected, steady] :
       {std::tuple{std::optional<bool>(true), 7, 100}, {false, 100, 51}, {std::nullopt, 100, 51}})
  {
    SCOPED_TRACE(expected);
    auto entity = solutionControlEntity(transient);
    SolutionControl control(*entity, SolutionControlDefinition());
    EXPECT_EQ(control.getNumberOfIterations(), expected);
    control.setNumberOfIterations(expected == 7 ? 8 : 51);
    EXPECT_EQ(control.getNumberOfIterations(), expected == 7 ? 8 : 51);
    EXPECT_EQ(
        entity->getAttribute(AttributePath("Iterations.Number of Iterations")).getIntValue(C::Current, false),
        steady);
  }
}

TEST(SolutionControlTest, ValidityNeedsTypeAndNameAndTheCollectionGivesItsControl)
{
  auto entity = solutionControlEntity(false);
  for (const auto& [type, name] : {std::pair{"Other", "Solution Control"}, {"Solution Control", "Other"}})
  {
    entity->setType(type);
    entity->setName(name);
    EXPECT_FALSE(SolutionControlConst(entity.get(), SolutionControlDefinition()).isValid()) << type << name;
  }
  EntityCollection collection(OmbrixTest::makeEntity("Other", "X", EntityID(5, 5)));
  EXPECT_EQ(SolutionControlConst(collection).get(), nullptr);
  collection.addRootEntity(solutionControlEntity(false));
  SolutionControl control(collection);
  EXPECT_TRUE(control.isValid());
  EXPECT_EQ(control.get(), collection.getEntity(EntityID(1, 1)));
  EXPECT_EQ(control.getIteration(), 12);
}

TEST(SolutionControlTest, WritersStoreIntoTheTargetsOwnTypeAndMissingAttributesRaiseTheLookupError)
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
  SolutionControlDefinition definition;
  definition.setTimePath(AttributePath("Results.Missing"));
  EXPECT_THROW_MSG(SolutionControlConst(entity.get(), definition).getTime(), std::runtime_error,
                   "Invalid path [1-1] of type Solution Control : Results.Missing");
  definition.setIsTransientPath(AttributePath("Nope"));
  EXPECT_FALSE(SolutionControlConst(entity.get(), definition).isTimeVarying());
}

#include "ombrix/csv/CSVSimulationTime.h"

#include "csv/CSVTestModel.h"

#include <cmath>
#include <limits>

namespace
{

using Ombrix::CSVSimulationTime;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

CSVSimulationTime steady(int iteration)
{
  CSVSimulationTime t;
  t.setIteration(iteration);
  return t;
}

CSVSimulationTime transient(int iteration, double time, double step = 0.1)
{
  CSVSimulationTime t;
  t.setIteration(iteration);
  t.setTime(time);
  t.setTimeStep(step);
  return t;
}

TEST(CSVSimulationTime, DefaultsAndSetTime)
{
  CSVSimulationTime t;
  EXPECT_EQ(t.getIteration(), -1);
  EXPECT_FALSE(t.isTransient());
  EXPECT_TRUE(std::isnan(t.getTime()));
  EXPECT_TRUE(std::isnan(t.getTimeStep()));
  EXPECT_TRUE(t == CSVSimulationTime());
  t.setTime(0.0);
  EXPECT_TRUE(t.isTransient());
  t.setTime(nan);
  EXPECT_FALSE(t.isTransient());
}

TEST(CSVSimulationTime, ResetKeepsTimeStepAndTransientFlag)
{
  CSVSimulationTime t = transient(4, 2.0, 0.5);
  t.reset();
  EXPECT_EQ(t.getIteration(), -1);
  EXPECT_TRUE(std::isnan(t.getTime()));
  EXPECT_EQ(t.getTimeStep(), 0.5);
  EXPECT_TRUE(t.isTransient());
}

TEST(CSVSimulationTime, CompareIsAsymmetricAtTheEnds)
{
  struct Case
  {
    const char* name;
    CSVSimulationTime self, other;
    double tolerance;
    bool expected;
  };
  const Case cases[] = {
      {"steady equal iterations", steady(3), steady(3), 0.1, true},
      {"steady different iterations", steady(3), steady(4), 0.1, false},
      {"transient vs steady", transient(3, 1.0), steady(3), 0.1, false},
      {"lower end included", transient(3, 0.9), transient(3, 1.0), 0.1, true},
      {"upper end excluded", transient(3, 1.1), transient(3, 1.0), 0.1, false},
      {"inside, other iteration", transient(3, 1.05), transient(4, 1.0), 0.1, false},
      {"exactly equal times, zero tolerance", transient(3, 1.0), transient(3, 1.0), 0.0, true},
      {"below the interval", transient(3, 0.8), transient(3, 1.0), 0.1, false},
      {"NaN time against number", transient(3, 1.0), steady(3), 0.1, false},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.self.compare(c.other, c.tolerance), c.expected);
  }
}

TEST(CSVSimulationTime, EqualityIgnoresTimeStep)
{
  EXPECT_TRUE(transient(3, 1.0, 0.1) == transient(3, 1.0, 0.2));
  EXPECT_FALSE(transient(3, 1.0) == transient(3, 1.5));
  EXPECT_FALSE(transient(3, 1.0) == transient(4, 1.0));
  EXPECT_FALSE(transient(3, 1.0) == steady(3));
  EXPECT_TRUE(steady(3) == steady(3));
}

TEST(CSVSimulationTime, Ordering)
{
  struct Case
  {
    const char* name;
    CSVSimulationTime a, b;
    bool expected;
  };
  const Case cases[] = {
      {"transient before steady", transient(9, 5.0), steady(1), true},
      {"steady never before transient", steady(1), transient(9, 5.0), false},
      {"earlier time first", transient(9, 1.0), transient(1, 2.0), true},
      {"later time not first", transient(1, 2.0), transient(9, 1.0), false},
      {"equal times by iteration", transient(1, 2.0), transient(2, 2.0), true},
      {"steady by iteration", steady(1), steady(2), true},
      {"steady equal", steady(2), steady(2), false},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.a < c.b, c.expected);
  }
  // reset() keeps a transient value transient with a NaN time: it is ordered neither way by time.
  CSVSimulationTime withNaN = transient(1, 2.0);
  withNaN.reset();
  EXPECT_FALSE(withNaN < transient(2, 1.0));
  EXPECT_FALSE(transient(2, 1.0) < withNaN);
}

TEST(CSVSimulationTime, FromSolutionControl)
{
  using namespace CSVTest;
  EntityCollection collection;
  collection.addRootEntity(makeSolutionControl(12, true, 0.5, 0.25));
  const CSVSimulationTime t(SolutionControlConst(collection), Chronology::Current);
  EXPECT_EQ(t.getIteration(), 12);
  EXPECT_TRUE(t.isTransient());
  EXPECT_EQ(t.getTime(), 0.5);
  EXPECT_EQ(t.getTimeStep(), 0.25);

  EntityCollection steadyModel;
  steadyModel.addRootEntity(makeSolutionControl(3, false, 0.5, 0.25));
  const CSVSimulationTime s(SolutionControlConst(steadyModel), Chronology::Current);
  EXPECT_EQ(s.getIteration(), 3);
  EXPECT_FALSE(s.isTransient());
  EXPECT_TRUE(std::isnan(s.getTime()));
  EXPECT_TRUE(std::isnan(s.getTimeStep()));

  const CSVSimulationTime invalid{SolutionControlConst(), Chronology::Current};
  EXPECT_TRUE(invalid == CSVSimulationTime());
  EXPECT_TRUE(std::isnan(invalid.getTimeStep()));
}

} // namespace

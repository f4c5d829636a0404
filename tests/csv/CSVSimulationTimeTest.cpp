#include "ombrix/csv/CSVSimulationTime.h"

#include "csv/CSVTestModel.h"

#include <cmath>
#include <limits>

namespace
{

using Ombrix::CSVSimulationTime;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Steady while the time is NaN (setTime decides).
CSVSimulationTime at(int iteration, double time = nan, double step = 0.1)
{
  CSVSimulationTime t;
  t.setIteration(iteration);
  t.setTime(time);
  t.setTimeStep(step);
  return t;
}

CSVSimulationTime reset(CSVSimulationTime t)
{
  t.reset();
  return t;
}

TEST(CSVSimulationTime, DefaultsSetTimeResetAndFromSolutionControl)
{
  using namespace CSVTest;
  CSVSimulationTime t;
  EXPECT_EQ(timeText(t), "-1 0 nan nan");
  t.setTime(0.0);
  EXPECT_EQ(timeText(t), "-1 1 0 nan");
  t.setTime(nan);
  EXPECT_EQ(timeText(t), "-1 0 nan nan");
  // reset() keeps the time step and the transient flag.
  EXPECT_EQ(timeText(reset(at(4, 2.0, 0.5))), "-1 1 nan 0.5");

  // From a solution control: a steady one has no time, and none gives the defaults.
  EntityCollection transientModel, steadyModel;
  transientModel.addRootEntity(makeSolutionControl(12, true, 0.5, 0.25));
  steadyModel.addRootEntity(makeSolutionControl(3, false, 0.5, 0.25));
  EXPECT_EQ(timeText(CSVSimulationTime(SolutionControlConst(transientModel), Chronology::Current)),
            "12 1 0.5 0.25");
  EXPECT_EQ(timeText(CSVSimulationTime(SolutionControlConst(steadyModel), Chronology::Current)),
            "3 0 nan nan");
  EXPECT_EQ(timeText(CSVSimulationTime(SolutionControlConst(), Chronology::Current)), "-1 0 nan nan");
}

// compare() takes the lower end of its tolerance interval and leaves out the upper one.
TEST(CSVSimulationTime, OrderingEqualityAndCompare)
{
  struct Case
  {
    const char* name;
    CSVSimulationTime a, b;
    bool less, equal, compared;
    double tolerance = 0.1;
  };
  // A reset transient value keeps a NaN time: it is ordered neither way by time.
  const Case cases[] = {
      {"transient before steady", at(9, 5.0), at(1), true, false, false},
      {"steady never before transient", at(1), at(9, 5.0), false, false, false},
      {"earlier time first", at(9, 1.0), at(1, 2.0), true, false, false},
      {"later time not first", at(1, 2.0), at(9, 1.0), false, false, false},
      {"equal times by iteration", at(1, 2.0), at(2, 2.0), true, false, false},
      {"steady by iteration", at(1), at(2), true, false, false},
      {"steady equal", at(2), at(2), false, true, true},
      {"time step not compared", at(3, 1.0, 0.1), at(3, 1.0, 0.2), false, true, true},
      {"transient and steady, same iteration", at(3, 1.0), at(3), true, false, false},
      {"NaN time first", reset(at(1, 2.0)), at(2, 1.0), false, false, false},
      {"NaN time second", at(2, 1.0), reset(at(1, 2.0)), false, false, false},
      {"lower end included", at(3, 0.9), at(3, 1.0), true, false, true},
      {"upper end excluded", at(3, 1.1), at(3, 1.0), false, false, false},
      {"inside, other iteration", at(3, 1.05), at(4, 1.0), false, false, false},
      {"below the interval", at(3, 0.8), at(3, 1.0), true, false, false},
      {"equal times, zero tolerance", at(3, 1.0), at(3, 1.0), false, true, true, 0.0},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.a < c.b, c.less);
    EXPECT_EQ(c.a == c.b, c.equal);
    EXPECT_EQ(c.a.compare(c.b, c.tolerance), c.compared);
  }
}

} // namespace

// CSVSimulationTime: the point of a solve that a data file belongs to (iteration and, for a transient
// solve, time and time step), with the comparisons the exchange uses. A small regular value type.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/SolutionControlConst.h"
#include "ombrix/sdk/Chronology.h"

#include <limits>

namespace Ombrix
{

class OMBRIX_API CSVSimulationTime
{
public:
  CSVSimulationTime() = default;
  // Reads the solution-control entity; an invalid solution control gives the default value. The
  // transient flag is read at Current whatever `chronology` says; iteration, time and time step at
  // `chronology`, each left at its default when its attribute is missing.
  CSVSimulationTime(const Model::SolutionControlConst& solutionControl, KorvanSDK::Chronology chronology);

  // Iteration back to -1 and time back to NaN; time step and transient flag are kept.
  void reset();

  bool isTransient() const { return m_transient; }
  int getIteration() const { return m_iteration; }
  void setIteration(int iteration) { m_iteration = iteration; }
  double getTime() const { return m_time; }
  // Stores the time; the value is transient exactly when `time` is a number.
  void setTime(double time);
  double getTimeStep() const { return m_timeStep; }
  void setTimeStep(double timeStep) { m_timeStep = timeStep; }

  // Same transient flag and iteration; for transient values this time must also lie in
  // [other.time - tolerance, other.time + tolerance) unless the times are exactly equal.
  bool compare(const CSVSimulationTime& other, double tolerance) const;

private:
  int m_iteration = -1;
  bool m_transient = false;
  double m_time = std::numeric_limits<double>::quiet_NaN();
  double m_timeStep = std::numeric_limits<double>::quiet_NaN();
};

// Transient flags and iterations equal and, when transient, times exactly equal; the time step is
// never compared.
OMBRIX_API bool operator==(const CSVSimulationTime& a, const CSVSimulationTime& b);
// A transient value sorts before a steady one; transient values with different times sort by time,
// otherwise by iteration.
OMBRIX_API bool operator<(const CSVSimulationTime& a, const CSVSimulationTime& b);

} // namespace Ombrix

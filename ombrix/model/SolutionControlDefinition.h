// Where the solution-control entity is (its type and name) and where each of its quantities lives
// inside it (one path per quantity, relative to the entity). A copyable value held by the collection.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/model/AttributePath.h"

#include <string>

namespace Ombrix::Model
{

class OMBRIX_API SolutionControlDefinition
{
public:
  const std::string& getSolutionControlName() const { return m_name; }
  void setSolutionControlName(const std::string& name) { m_name = name; }
  const std::string& getSolutionControlType() const { return m_type; }
  void setSolutionControlType(const std::string& type) { m_type = type; }

  const AttributePath& getIterationPath() const { return m_iteration; }
  void setIterationPath(const AttributePath& path) { m_iteration = path; }
  const AttributePath& getNumberOfIterationsPath() const { return m_numberOfIterations; }
  void setNumberOfIterationsPath(const AttributePath& path) { m_numberOfIterations = path; }
  const AttributePath& getIsFirstIterationPath() const { return m_isFirstIteration; }
  void setIsFirstIterationPath(const AttributePath& path) { m_isFirstIteration = path; }
  const AttributePath& getIsLastIterationPath() const { return m_isLastIteration; }
  void setIsLastIterationPath(const AttributePath& path) { m_isLastIteration = path; }
  const AttributePath& getIsTransientPath() const { return m_isTransient; }
  void setIsTransientPath(const AttributePath& path) { m_isTransient = path; }
  const AttributePath& getTimePath() const { return m_time; }
  void setTimePath(const AttributePath& path) { m_time = path; }
  const AttributePath& getTimeStepPath() const { return m_timeStep; }
  void setTimeStepPath(const AttributePath& path) { m_timeStep = path; }
  const AttributePath& getTimeStepNumberOfIterationsPath() const { return m_timeStepNumberOfIterations; }
  void setTimeStepNumberOfIterationsPath(const AttributePath& path) { m_timeStepNumberOfIterations = path; }
  const AttributePath& getTotalSimulationTimePath() const { return m_totalSimulationTime; }
  void setTotalSimulationTimePath(const AttributePath& path) { m_totalSimulationTime = path; }
  const AttributePath& getIsFirstTimeStepPath() const { return m_isFirstTimeStep; }
  void setIsFirstTimeStepPath(const AttributePath& path) { m_isFirstTimeStep = path; }
  const AttributePath& getIsLastTimeStepPath() const { return m_isLastTimeStep; }
  void setIsLastTimeStepPath(const AttributePath& path) { m_isLastTimeStep = path; }
  const AttributePath& getIsConvergedPath() const { return m_isConverged; }
  void setIsConvergedPath(const AttributePath& path) { m_isConverged = path; }
  const AttributePath& getStopOnConvergence() const { return m_stopOnConvergence; }
  void setStopOnConvergence(const AttributePath& path) { m_stopOnConvergence = path; }

  friend bool operator==(const SolutionControlDefinition&, const SolutionControlDefinition&) = default;

private:
  std::string m_name = "Solution Control";
  std::string m_type = "Solution Control";
  AttributePath m_iteration = "Results.Iteration";
  AttributePath m_numberOfIterations = "Iterations.Number of Iterations";
  AttributePath m_isFirstIteration = "Results.IsFirstIteration";
  AttributePath m_isLastIteration = "Results.IsLastIteration";
  AttributePath m_isTransient = "Transient.Time Varying";
  AttributePath m_time = "Results.Time";
  AttributePath m_timeStep = "Transient.Definition.Time Step";
  AttributePath m_timeStepNumberOfIterations = "Transient.Definition.Time Step Number of Iterations";
  AttributePath m_totalSimulationTime = "Transient.Definition.Total Simulation Time";
  AttributePath m_isFirstTimeStep = "Results.IsFirstTimeStep";
  AttributePath m_isLastTimeStep = "Results.IsLastTimeStep";
  AttributePath m_isConverged = "Results.IsConverged";
  AttributePath m_stopOnConvergence = "Ombrix Control.Stop On Convergence";
};

OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const SolutionControlDefinition& d);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, SolutionControlDefinition& d);

} // namespace Ombrix::Model

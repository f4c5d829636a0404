#include "ombrix/model/SolutionControlDefinition.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <array>
#include <utility>

namespace Ombrix::Model
{
namespace
{

using PathGetter = const AttributePath& (SolutionControlDefinition::*)() const;
using PathSetter = void (SolutionControlDefinition::*)(const AttributePath&);

struct PathField
{
  const char* key;
  PathGetter get;
  PathSetter set;
};

const std::array<PathField, 13> pathFields{{
    {"Iteration", &SolutionControlDefinition::getIterationPath, &SolutionControlDefinition::setIterationPath},
    {"NumberOfIterations", &SolutionControlDefinition::getNumberOfIterationsPath,
     &SolutionControlDefinition::setNumberOfIterationsPath},
    {"IsFirstIteration", &SolutionControlDefinition::getIsFirstIterationPath,
     &SolutionControlDefinition::setIsFirstIterationPath},
    {"IsLastIteration", &SolutionControlDefinition::getIsLastIterationPath,
     &SolutionControlDefinition::setIsLastIterationPath},
    {"IsTransient", &SolutionControlDefinition::getIsTransientPath,
     &SolutionControlDefinition::setIsTransientPath},
    {"Time", &SolutionControlDefinition::getTimePath, &SolutionControlDefinition::setTimePath},
    {"TimeStep", &SolutionControlDefinition::getTimeStepPath, &SolutionControlDefinition::setTimeStepPath},
    {"TimeStepNumberOfIterations", &SolutionControlDefinition::getTimeStepNumberOfIterationsPath,
     &SolutionControlDefinition::setTimeStepNumberOfIterationsPath},
    {"TotalSimulationTime", &SolutionControlDefinition::getTotalSimulationTimePath,
     &SolutionControlDefinition::setTotalSimulationTimePath},
    {"IsFirstTimeStep", &SolutionControlDefinition::getIsFirstTimeStepPath,
     &SolutionControlDefinition::setIsFirstTimeStepPath},
    {"IsLastTimeStep", &SolutionControlDefinition::getIsLastTimeStepPath,
     &SolutionControlDefinition::setIsLastTimeStepPath},
    {"IsConverged", &SolutionControlDefinition::getIsConvergedPath,
     &SolutionControlDefinition::setIsConvergedPath},
    {"StopOnConvergence", &SolutionControlDefinition::getStopOnConvergence,
     &SolutionControlDefinition::setStopOnConvergence},
}};

} // namespace

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const SolutionControlDefinition& d)
{
  out.beginSection("SolutionControlDefinition");
  out.key("Name");
  out << d.getSolutionControlName();
  out.key("Type");
  out << d.getSolutionControlType();
  for (const auto& field : pathFields)
  {
    out.key(field.key);
    out << (d.*field.get)();
  }
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, SolutionControlDefinition& d)
{
  SolutionControlDefinition read;
  std::string text;
  in.beginSection("SolutionControlDefinition");
  in.key("Name");
  in >> text;
  read.setSolutionControlName(text);
  in.key("Type");
  in >> text;
  read.setSolutionControlType(text);
  for (const auto& field : pathFields)
  {
    AttributePath path;
    in.key(field.key);
    in >> path;
    (read.*field.set)(path);
  }
  in.endSection();
  if (in)
    d = std::move(read);
  return in;
}

} // namespace Ombrix::Model

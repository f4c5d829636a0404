// Reads the solve's quantities (iteration, time, time step, flags) from the solution-control entity
// through the paths of a SolutionControlDefinition. Readers of a missing entity give fallbacks
// (-1, NaN, false); a missing attribute raises the path lookup's "Invalid path ..." error, except for
// isTimeVarying, which never raises.
#pragma once

#include "ombrix/model/Entity.h"
#include "ombrix/model/SolutionControlDefinition.h"

namespace Ombrix::Model
{

class EntityCollection;

class OMBRIX_API SolutionControlConst
{
public:
  using Chronology = KorvanSDK::Chronology;

  SolutionControlConst() = default;
  SolutionControlConst(const Entity* entity, const SolutionControlDefinition& definition);
  // The collection's solution-control entity (null when it has none) and its definition.
  explicit SolutionControlConst(const EntityCollection& collection);

  const Entity* get() const { return m_entity; }
  const SolutionControlDefinition& getDefinition() const { return m_definition; }

  // The entity is set and its type and own name are those of the definition.
  bool isValid() const;
  explicit operator bool() const { return isValid(); }

  int getIteration(Chronology chronology = Chronology::Current, bool user = false) const;
  // The time step's iteration count when time-varying, else the steady count.
  int getNumberOfIterations(Chronology chronology = Chronology::Current, bool user = false) const;
  bool isFirstIteration(Chronology chronology = Chronology::Current, bool user = false) const;
  bool isLastIteration(Chronology chronology = Chronology::Current, bool user = false) const;
  bool isTimeVarying(Chronology chronology = Chronology::Current, bool user = false) const;
  bool isTransient(Chronology chronology = Chronology::Current, bool user = false) const
  {
    return isTimeVarying(chronology, user);
  }
  double getTime(Chronology chronology = Chronology::Current, bool user = false) const;
  double getTotalSimulationTime(Chronology chronology = Chronology::Current, bool user = false) const;
  double getTimeStep(Chronology chronology = Chronology::Current, bool user = false) const;
  bool isFirstTimeStep(Chronology chronology = Chronology::Current, bool user = false) const;
  bool isLastTimeStep(Chronology chronology = Chronology::Current, bool user = false) const;
  bool isConverged(Chronology chronology = Chronology::Current, bool user = false) const;
  bool isStopOnConvergence(Chronology chronology = Chronology::Current, bool user = false) const;

protected:
  const AttributePath& iterationCountPath(Chronology chronology, bool user) const;
  bool readBool(const AttributePath& path, Chronology chronology, bool user) const;
  double readDouble(const AttributePath& path, Chronology chronology, bool user) const;

  const Entity* m_entity = nullptr;
  SolutionControlDefinition m_definition;
};

} // namespace Ombrix::Model

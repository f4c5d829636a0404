// SolutionControlConst over a mutable entity, with the few writers a host may use. Writers do nothing
// when there is no entity.
#pragma once

#include "ombrix/model/SolutionControlConst.h"

namespace Ombrix::Model
{

class OMBRIX_API SolutionControl : public SolutionControlConst
{
public:
  SolutionControl() = default;
  SolutionControl(Entity* entity, const SolutionControlDefinition& definition);
  SolutionControl(Entity& entity, const SolutionControlDefinition& definition);
  explicit SolutionControl(EntityCollection& collection);

  Entity* get() const { return m_mutableEntity; }

  // Writes the path that getNumberOfIterations reads (chosen by isTimeVarying at `chronology`).
  void setNumberOfIterations(int value, Chronology chronology = Chronology::Current, bool user = false);
  void setStopOnConvergence(bool value, Chronology chronology = Chronology::Current, bool user = false);
  // Stored through the target's own value type (a double target receives the float widened).
  void setTimeStep(float value, Chronology chronology = Chronology::Current, bool user = false);
  void setTotalSimulationTime(float value, Chronology chronology = Chronology::Current, bool user = false);

private:
  Entity* m_mutableEntity = nullptr;
};

} // namespace Ombrix::Model

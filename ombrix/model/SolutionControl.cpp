#include "ombrix/model/SolutionControl.h"

#include "ombrix/model/EntityCollection.h"

namespace Ombrix::Model
{

SolutionControl::SolutionControl(Entity* entity, const SolutionControlDefinition& definition)
    : SolutionControlConst(entity, definition), m_mutableEntity(entity)
{
}

SolutionControl::SolutionControl(Entity& entity, const SolutionControlDefinition& definition)
    : SolutionControl(&entity, definition)
{
}

SolutionControl::SolutionControl(EntityCollection& collection)
    : SolutionControl(collection.hasSolutionControl() ? collection.getSolutionControl() : nullptr,
                      collection.getSolutionControlDefinition())
{
}

void SolutionControl::setNumberOfIterations(int value, Chronology chronology, bool user)
{
  if (!m_mutableEntity)
    return;
  m_mutableEntity->getAttribute(iterationCountPath(chronology, user)).setIntValue(value, chronology, user);
}

void SolutionControl::setStopOnConvergence(bool value, Chronology chronology, bool user)
{
  if (m_mutableEntity)
    m_mutableEntity->getAttribute(m_definition.getStopOnConvergence()).setBoolValue(value, chronology, user);
}

void SolutionControl::setTimeStep(float value, Chronology chronology, bool user)
{
  if (m_mutableEntity)
    m_mutableEntity->getAttribute(m_definition.getTimeStepPath()).setFloatValue(value, chronology, user);
}

void SolutionControl::setTotalSimulationTime(float value, Chronology chronology, bool user)
{
  if (m_mutableEntity)
    m_mutableEntity->getAttribute(m_definition.getTotalSimulationTimePath())
        .setFloatValue(value, chronology, user);
}

} // namespace Ombrix::Model

#include "ombrix/model/SolutionControl.h"

#include "ombrix/model/EntityCollection.h"

#include <limits>

namespace Ombrix::Model
{
namespace
{
const Entity* solutionControlOf(const EntityCollection& collection)
{
  return collection.hasSolutionControl() ? collection.getSolutionControl() : nullptr;
}
} // namespace

SolutionControlConst::SolutionControlConst(const Entity* entity, const SolutionControlDefinition& definition)
    : m_entity(entity), m_definition(definition)
{
}

SolutionControlConst::SolutionControlConst(const EntityCollection& collection)
    : m_entity(solutionControlOf(collection)), m_definition(collection.getSolutionControlDefinition())
{
}

bool SolutionControlConst::isValid() const
{
  return m_entity && m_entity->type() == m_definition.getSolutionControlType() &&
         m_entity->name() == m_definition.getSolutionControlName();
}

int SolutionControlConst::getIteration(Chronology chronology, bool user) const
{
  if (!m_entity)
    return -1;
  return m_entity->getAttribute(m_definition.getIterationPath()).getIntValue(chronology, user);
}

const AttributePath& SolutionControlConst::iterationCountPath(Chronology chronology, bool user) const
{
  return isTimeVarying(chronology, user) ? m_definition.getTimeStepNumberOfIterationsPath()
                                         : m_definition.getNumberOfIterationsPath();
}

int SolutionControlConst::getNumberOfIterations(Chronology chronology, bool user) const
{
  if (!m_entity)
    return -1;
  return m_entity->getAttribute(iterationCountPath(chronology, user)).getIntValue(chronology, user);
}

bool SolutionControlConst::readBool(const AttributePath& path, Chronology chronology, bool user) const
{
  if (!m_entity)
    return false;
  return m_entity->getAttribute(path).getBoolValue(chronology, user);
}

double SolutionControlConst::readDouble(const AttributePath& path, Chronology chronology, bool user) const
{
  if (!m_entity)
    return std::numeric_limits<double>::quiet_NaN();
  return m_entity->getAttribute(path).getDoubleValue(chronology, user);
}

bool SolutionControlConst::isFirstIteration(Chronology chronology, bool user) const
{
  return readBool(m_definition.getIsFirstIterationPath(), chronology, user);
}

bool SolutionControlConst::isLastIteration(Chronology chronology, bool user) const
{
  return readBool(m_definition.getIsLastIterationPath(), chronology, user);
}

bool SolutionControlConst::isTimeVarying(Chronology chronology, bool user) const
{
  try
  {
    return readBool(m_definition.getIsTransientPath(), chronology, user);
  }
  catch (const std::exception&)
  {
    return false; // a model without the flag is steady
  }
}

double SolutionControlConst::getTime(Chronology chronology, bool user) const
{
  return readDouble(m_definition.getTimePath(), chronology, user);
}

double SolutionControlConst::getTotalSimulationTime(Chronology chronology, bool user) const
{
  return readDouble(m_definition.getTotalSimulationTimePath(), chronology, user);
}

double SolutionControlConst::getTimeStep(Chronology chronology, bool user) const
{
  return readDouble(m_definition.getTimeStepPath(), chronology, user);
}

bool SolutionControlConst::isFirstTimeStep(Chronology chronology, bool user) const
{
  return readBool(m_definition.getIsFirstTimeStepPath(), chronology, user);
}

bool SolutionControlConst::isLastTimeStep(Chronology chronology, bool user) const
{
  return readBool(m_definition.getIsLastTimeStepPath(), chronology, user);
}

bool SolutionControlConst::isConverged(Chronology chronology, bool user) const
{
  return readBool(m_definition.getIsConvergedPath(), chronology, user);
}

bool SolutionControlConst::isStopOnConvergence(Chronology chronology, bool user) const
{
  return readBool(m_definition.getStopOnConvergence(), chronology, user);
}

SolutionControl::SolutionControl(Entity* entity, const SolutionControlDefinition& definition)
    : SolutionControlConst(entity, definition), m_mutableEntity(entity)
{
}

SolutionControl::SolutionControl(Entity& entity, const SolutionControlDefinition& definition)
    : SolutionControl(&entity, definition)
{
}

SolutionControl::SolutionControl(EntityCollection& collection)
    : SolutionControl(const_cast<Entity*>(solutionControlOf(collection)),
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

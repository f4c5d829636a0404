#include "ombrix/model/SolutionControlConst.h"

#include "ombrix/model/EntityCollection.h"

#include <exception>
#include <limits>

namespace Ombrix::Model
{

SolutionControlConst::SolutionControlConst(const Entity* entity, const SolutionControlDefinition& definition)
    : m_entity(entity), m_definition(definition)
{
}

SolutionControlConst::SolutionControlConst(const EntityCollection& collection)
    : m_entity(collection.hasSolutionControl() ? collection.getSolutionControl() : nullptr),
      m_definition(collection.getSolutionControlDefinition())
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

} // namespace Ombrix::Model

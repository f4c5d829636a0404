#include "ombrix/csv/CSVSimulationTime.h"

#include "ombrix/model/Attribute.h"

#include <cmath>

namespace Ombrix
{

namespace
{

const Model::Attribute* findIn(const Model::Entity& entity, const Model::AttributePath& path)
{
  return entity.findAttribute(path, false);
}

} // namespace

CSVSimulationTime::CSVSimulationTime(const Model::SolutionControlConst& solutionControl,
                                     KorvanSDK::Chronology chronology)
{
  if (!solutionControl.isValid())
    return;
  const Model::Entity& entity = *solutionControl.get();
  const Model::SolutionControlDefinition& definition = solutionControl.getDefinition();
  // Whether the solve is transient is a property of the run, read at Current on purpose.
  m_transient = solutionControl.isTimeVarying(KorvanSDK::Chronology::Current, false);
  if (const Model::Attribute* iteration = findIn(entity, definition.getIterationPath()))
    m_iteration = iteration->getIntValue(chronology, false);
  if (!m_transient)
    return;
  if (const Model::Attribute* time = findIn(entity, definition.getTimePath()))
    m_time = time->getDoubleValue(chronology, false);
  if (const Model::Attribute* timeStep = findIn(entity, definition.getTimeStepPath()))
    m_timeStep = timeStep->getDoubleValue(chronology, false);
}

void CSVSimulationTime::reset()
{
  m_iteration = -1;
  m_time = std::numeric_limits<double>::quiet_NaN();
}

void CSVSimulationTime::setTime(double time)
{
  m_time = time;
  m_transient = !std::isnan(time);
}

bool CSVSimulationTime::compare(const CSVSimulationTime& other, double tolerance) const
{
  if (m_transient != other.m_transient)
    return false;
  if (m_transient && m_time != other.m_time)
  {
    // Lower end included, upper end excluded.
    if (other.m_time - tolerance > m_time || m_time >= other.m_time + tolerance)
      return false;
  }
  return m_iteration == other.m_iteration;
}

bool operator==(const CSVSimulationTime& a, const CSVSimulationTime& b)
{
  if (a.isTransient() != b.isTransient() || a.getIteration() != b.getIteration())
    return false;
  return !a.isTransient() || a.getTime() == b.getTime();
}

bool operator<(const CSVSimulationTime& a, const CSVSimulationTime& b)
{
  if (a.isTransient() != b.isTransient())
    return a.isTransient();
  if (a.isTransient() && !(a.getTime() == b.getTime()))
    return b.getTime() > a.getTime();
  return a.getIteration() < b.getIteration();
}

} // namespace Ombrix

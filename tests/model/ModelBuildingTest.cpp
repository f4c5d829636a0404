// Building a model in code: values at paths, and the solution-control entity.
#include "ombrix/model/ModelBuilding.h"

#include "ombrix/model/SolutionControl.h"

#include "support/TestSupport.h"

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

TEST(ModelBuilding, SolutionControlEntityReadsAsValid)
{
  SolutionControlDefinition definition;
  definition.setTimePath(AttributePath("Clock.Now"));
  const std::unique_ptr<Entity> entity = makeSolutionControlEntity(definition, EntityID(7, 1));
  const SolutionControlConst control(entity.get(), definition);
  EXPECT_TRUE(control.isValid());
  EXPECT_EQ(control.getIteration(Chronology::Current, false), 0);
  EXPECT_EQ(control.getTime(Chronology::Current, false), 0.0);
  EXPECT_EQ(entity->getAttribute(AttributePath("Clock.Now")).getUnit(), "s");
  EXPECT_TRUE(control.isFirstIteration(Chronology::Current, false));
  EXPECT_EQ(entity->getAttribute(definition.getStopOnConvergence()).getAccessType(), AccessType::ReadWrite);
  EXPECT_EQ(entity->getAttribute(definition.getIterationPath()).getAccessType(), AccessType::ReadOnly);

  definition.setTimeStepPath(AttributePath("Results.Iteration.Step"));
  EXPECT_THROW_MSG(makeSolutionControlEntity(definition), std::invalid_argument,
                   "Cannot add the attribute Results.Iteration.Step: 'Iteration' is not a composite");
}

TEST(ModelBuilding, AttributeAtPathRefusesWhatCannotBeAdded)
{
  Entity entity("Tank", "T", EntityID(1, 2), AccessType::ReadWrite);
  Attribute& power = addAttributeAt(entity, AttributePath("Heater.Power"), AttributeType::Double,
                                    AccessType::ReadWrite, "W");
  EXPECT_EQ(power.getUnit(), "W");
  EXPECT_EQ(entity.getAttribute(AttributePath("Heater")).getAccessType(), AccessType::ReadOnly);
  EXPECT_THROW_MSG(
      addAttributeAt(entity, AttributePath("Heater.Power"), AttributeType::Int, AccessType::ReadWrite),
      std::invalid_argument, "Cannot add the attribute Heater.Power: it exists already");
  EXPECT_THROW_MSG(addAttributeAt(entity, AttributePath(), AttributeType::Int, AccessType::ReadWrite),
                   std::invalid_argument, "Cannot add an attribute at an empty path");
}

} // namespace

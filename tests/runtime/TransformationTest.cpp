#include "ombrix/runtime/Transformation.h"

#include "support/TestSupport.h"

#include <cmath>
#include <gtest/gtest.h>

namespace
{

using Ombrix::Transformation;
using Ombrix::TransformationType;

TEST(Transformation, MapsToTheModelAndBack)
{
  struct Case
  {
    TransformationType type;
    std::vector<double> parameters;
    double value;
    double model;
  };
  const Case cases[] = {
      {TransformationType::Identity, {}, 3.0, 3.0},
      {TransformationType::Inverse, {}, 4.0, 0.25},
      {TransformationType::SimpleScaling, {2.0, 1.0}, 3.0, 7.0},
      {TransformationType::MeanStdDevScaling, {300.0, 20.0}, 330.0, 1.5},
      {TransformationType::PowerLaw, {2.0, 0.5}, 9.0, 6.0},
      // Between points, beyond the last (along the end segment) and before the first.
      {TransformationType::Curve, {0.0, 0.0, 1.0, 10.0, 3.0, 20.0}, 2.0, 15.0},
      {TransformationType::Curve, {0.0, 0.0, 1.0, 10.0, 3.0, 20.0}, 5.0, 30.0},
      {TransformationType::Curve, {0.0, 0.0, 1.0, 10.0, 3.0, 20.0}, -1.0, -10.0},
      // A falling curve is undone as well.
      {TransformationType::Curve, {0.0, 5.0, 2.0, 1.0, 4.0, 0.0}, 3.0, 0.5},
  };
  for (const auto& c : cases)
  {
    SCOPED_TRACE(Ombrix::transformationTypeToString(c.type) + " " + std::to_string(c.value));
    const Transformation transformation(c.type, c.parameters);
    EXPECT_DOUBLE_EQ(transformation.toModel(c.value), c.model);
    EXPECT_DOUBLE_EQ(transformation.fromModel(c.model), c.value);
  }
  EXPECT_EQ(Transformation().toModel(-2.5), -2.5);
  EXPECT_TRUE(std::isinf(Transformation(TransformationType::Inverse, {}).toModel(0.0)));
}

TEST(Transformation, RefusesParametersThatDoNotSuitTheType)
{
  const std::tuple<TransformationType, std::vector<double>, const char*> cases[] = {
      {static_cast<TransformationType>(0),
       {},
       "transformation type 0 has no name (Inverse -1, Identity 1, Curve 2, PowerLaw 3, SimpleScaling 4, "
       "MeanStdDevScaling 5)"},
      {TransformationType::Identity, {1.0}, "transformation Identity: 1 parameters, expected 0"},
      {TransformationType::SimpleScaling, {1.0}, "transformation SimpleScaling: 1 parameters, expected 2"},
      {TransformationType::SimpleScaling, {0.0, 1.0}, "transformation SimpleScaling: the factor a is 0"},
      {TransformationType::MeanStdDevScaling,
       {1.0, 0.0},
       "transformation MeanStdDevScaling: the standard deviation is not positive"},
      {TransformationType::PowerLaw, {1.0, INFINITY}, "transformation PowerLaw: parameter 1 is not finite"},
      {TransformationType::PowerLaw,
       {1.0, 0.0},
       "transformation PowerLaw: the factor c and the power p must not be 0"},
      {TransformationType::Curve,
       {0.0, 0.0, 1.0},
       "transformation Curve: 3 parameters, expected pairs x y of at least two points"},
      {TransformationType::Curve,
       {0.0, 0.0, 0.0, 1.0},
       "transformation Curve: x of point 1 does not exceed the previous point's"},
      {TransformationType::Curve,
       {0.0, 0.0, 1.0, 1.0, 2.0, 1.0},
       "transformation Curve: y of point 2 breaks the curve's monotony, so it could not be undone"},
  };
  for (const auto& [type, parameters, message] : cases)
    EXPECT_THROW_MSG(Transformation(type, parameters), std::invalid_argument, message);
}

} // namespace

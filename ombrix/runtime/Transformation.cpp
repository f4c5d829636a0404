#include "ombrix/runtime/Transformation.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

namespace Ombrix
{

std::size_t Transformation::parameterCount(TransformationType type)
{
  switch (type)
  {
  case TransformationType::SimpleScaling:
  case TransformationType::MeanStdDevScaling:
  case TransformationType::PowerLaw:
    return 2;
  default:
    return 0;
  }
}

Transformation::Transformation(TransformationType type, std::vector<double> parameters)
    : m_type(type), m_parameters(std::move(parameters))
{
  const std::string name = transformationTypeToString(type);
  const auto fail = [&](const std::string& what)
  { throw std::invalid_argument("transformation " + name + ": " + what); };
  if (name.empty())
    throw std::invalid_argument("transformation type " + std::to_string(static_cast<int>(type)) +
                                " has no name (Inverse -1, Identity 1, Curve 2, PowerLaw 3, SimpleScaling 4, "
                                "MeanStdDevScaling 5)");
  const std::size_t count = m_parameters.size();
  if (type == TransformationType::Curve)
  {
    if (count < 4 || count % 2 != 0)
      fail(std::to_string(count) + " parameters, expected pairs x y of at least two points");
  }
  else if (count != parameterCount(type))
    fail(std::to_string(count) + " parameters, expected " + std::to_string(parameterCount(type)));
  for (std::size_t i = 0; i < count; ++i)
  {
    if (!std::isfinite(m_parameters[i]))
      fail("parameter " + std::to_string(i) + " is not finite");
  }
  const auto& p = m_parameters;
  switch (type)
  {
  case TransformationType::SimpleScaling:
    if (p[0] == 0)
      fail("the factor a is 0");
    break;
  case TransformationType::MeanStdDevScaling:
    if (!(p[1] > 0))
      fail("the standard deviation is not positive");
    break;
  case TransformationType::PowerLaw:
    if (p[0] == 0 || p[1] == 0)
      fail("the factor c and the power p must not be 0");
    break;
  case TransformationType::Curve:
  {
    const bool rising = p[3] > p[1];
    for (std::size_t i = 2; i < count; i += 2)
    {
      if (!(p[i] > p[i - 2]))
        fail("x of point " + std::to_string(i / 2) + " does not exceed the previous point's");
      if (rising ? !(p[i + 1] > p[i - 1]) : !(p[i + 1] < p[i - 1]))
        fail("y of point " + std::to_string(i / 2) +
             " breaks the curve's monotony, so it could not be undone");
    }
    break;
  }
  default:
    break;
  }
}

double Transformation::toModel(double value) const
{
  const auto& p = m_parameters;
  switch (m_type)
  {
  case TransformationType::Inverse:
    return 1.0 / value;
  case TransformationType::SimpleScaling:
    return p[0] * value + p[1];
  case TransformationType::MeanStdDevScaling:
    return (value - p[0]) / p[1];
  case TransformationType::PowerLaw:
    return p[0] * std::pow(value, p[1]);
  case TransformationType::Curve:
    return curve(value, 0, 1);
  default:
    return value;
  }
}

double Transformation::fromModel(double value) const
{
  const auto& p = m_parameters;
  switch (m_type)
  {
  case TransformationType::Inverse:
    return 1.0 / value;
  case TransformationType::SimpleScaling:
    return (value - p[1]) / p[0];
  case TransformationType::MeanStdDevScaling:
    return value * p[1] + p[0];
  case TransformationType::PowerLaw:
    return std::pow(value / p[0], 1.0 / p[1]);
  case TransformationType::Curve:
    return curve(value, 1, 0);
  default:
    return value;
  }
}

// Piecewise linear through the points, reading coordinate `from` of each point and giving coordinate
// `to`; beyond the ends the end segments go on. Along y the points may fall: they are searched in the
// direction they run.
double Transformation::curve(double value, std::size_t from, std::size_t to) const
{
  const auto& p = m_parameters;
  const std::size_t points = p.size() / 2;
  const bool falling = p[2 + from] < p[from];
  std::size_t segment = 0; // between point `segment` and the next
  while (segment + 2 < points &&
         (falling ? value < p[2 * (segment + 1) + from] : value > p[2 * (segment + 1) + from]))
    ++segment;
  const double a = p[2 * segment + from], b = p[2 * segment + 2 + from];
  const double ya = p[2 * segment + to], yb = p[2 * segment + 2 + to];
  return ya + (value - a) * (yb - ya) / (b - a);
}

} // namespace Ombrix

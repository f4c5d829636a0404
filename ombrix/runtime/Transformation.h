// One value's transformation between the model's attributes and an AI module's own scale: a
// TransformationType with its parameters. `toModel` maps an attribute's value to the module's input;
// `fromModel` maps a module's output back to an attribute's value, undoing the same mapping, so one set
// of parameters describes an attribute's scale whether it feeds the module or receives its results.
// A small regular value; the mappings are documented in docs/ai-runtime.md.
#pragma once

#include "ombrix/OmbrixAIExport.h"
#include "ombrix/ai/TransformationType.h"

#include <cstddef>
#include <vector>

namespace Ombrix
{

class OMBRIX_AI_API Transformation
{
public:
  // Identity.
  Transformation() = default;
  // Parameters per type, f being toModel:
  //   Identity           none               f(x) = x
  //   Inverse            none               f(x) = 1 / x
  //   SimpleScaling      a, b (a != 0)      f(x) = a x + b
  //   MeanStdDevScaling  mean, sd (sd > 0)  f(x) = (x - mean) / sd
  //   PowerLaw           c, p (c, p != 0)   f(x) = c x^p
  //   Curve              x0, y0, x1, y1, ... at least two points, x strictly increasing, y strictly
  //                      monotonic: f goes linearly between the points and on along the end segments.
  // Throws std::invalid_argument naming the type when the parameters do not suit it (count, a value
  // that is not finite, a condition above) or the type has no name.
  Transformation(TransformationType type, std::vector<double> parameters);

  TransformationType type() const { return m_type; }
  const std::vector<double>& parameters() const { return m_parameters; }

  // Results that are not finite (1 / 0, a negative base to a fractional power) are the caller's to
  // report; nothing is thrown.
  double toModel(double value) const;
  double fromModel(double value) const;

  bool operator==(const Transformation&) const = default;

  // How many parameters `type` takes; 0 for Curve, whose count is two per point.
  static std::size_t parameterCount(TransformationType type);

private:
  double curve(double value, std::size_t from, std::size_t to) const;

  TransformationType m_type = TransformationType::Identity;
  std::vector<double> m_parameters;
};

} // namespace Ombrix

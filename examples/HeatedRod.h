// The heated rod of the example solvers (exchange_solver.cpp, ai_solver.cpp): a transient 1D heat
// equation in a steel rod heated at its left end, and the model the solvers share with their client.
// Header-only; each program includes it once.
#pragma once

#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/SolutionControl.h"
#include "ombrix/model/ValueAttribute.h"

#include "ExampleModel.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

namespace HeatedRod
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

// Steel rod, 0.1 m long, discretised in cells of equal width.
struct Rod
{
  double length = 0.1;          // m
  double conductivity = 50.0;   // W/(m K)
  double diffusivity = 1.4e-5;  // m^2/s
  double ambient = 300.0;       // K, right end
  double probePosition = 0.025; // m from the heated end
  std::vector<double> temperature;

  explicit Rod(std::size_t cells) : temperature(cells, 300.0) {}

  double cellWidth() const { return length / static_cast<double>(temperature.size()); }

  // One backward-Euler step (unconditionally stable) with the heat flux `flux` (W/m^2) entering the left
  // end; returns the largest temperature change of the step.
  double step(double flux, double dt)
  {
    const std::size_t n = temperature.size();
    const double dx = cellWidth();
    const double r = diffusivity * dt / (dx * dx);
    // Tridiagonal system a[i] T[i-1] + b[i] T[i] + c[i] T[i+1] = d[i], solved by the Thomas algorithm.
    std::vector<double> a(n, -r), b(n, 1.0 + 2.0 * r), c(n, -r), d(temperature);
    b[0] = 1.0 + r;
    d[0] += flux * diffusivity / conductivity * dt / dx;
    b[n - 1] = 1.0 + 3.0 * r; // half a cell to the wall held at the ambient temperature
    d[n - 1] += 2.0 * r * ambient;
    for (std::size_t i = 1; i < n; ++i)
    {
      const double m = a[i] / b[i - 1];
      b[i] -= m * c[i - 1];
      d[i] -= m * d[i - 1];
    }
    std::vector<double> next(n);
    next[n - 1] = d[n - 1] / b[n - 1];
    for (std::size_t i = n - 1; i-- > 0;)
      next[i] = (d[i] - c[i] * next[i + 1]) / b[i];
    double change = 0;
    for (std::size_t i = 0; i < n; ++i)
      change = std::max(change, std::abs(next[i] - temperature[i]));
    temperature = std::move(next);
    return change;
  }

  // Linear interpolation between cell centres.
  double at(double x) const
  {
    const double position =
        std::clamp(x / cellWidth() - 0.5, 0.0, static_cast<double>(temperature.size() - 1));
    const auto i = static_cast<std::size_t>(position);
    if (i + 1 >= temperature.size())
      return temperature.back();
    return temperature[i] + (position - static_cast<double>(i)) * (temperature[i + 1] - temperature[i]);
  }

  double mean() const
  {
    double sum = 0;
    for (double t : temperature)
      sum += t;
    return sum / static_cast<double>(temperature.size());
  }
};

using ExampleModel::addValue;

inline std::unique_ptr<Entity> makeEntity(const std::string& type, const std::string& name, EntityID id)
{
  auto entity = std::make_unique<Entity>(type, name);
  entity->setUniqueID(id);
  return entity;
}

// The solution control, the rod with its outputs, its two ends in a list (the heat flux of the left end
// is the client's input, reached through the rod's shortcut "Heater Flux"), and optionally a field of
// `fieldEntities` entities with ten read-only temperatures each, to exchange a large model.
inline void buildModel(EntityCollection& collection, const Rod& rod, long fieldEntities)
{
  const SolutionControlDefinition& d = collection.getSolutionControlDefinition();
  auto control = makeEntity(d.getSolutionControlType(), d.getSolutionControlName(), EntityID(1, 1));
  addValue(*control, d.getIterationPath(), AttributeType::Int, AccessType::ReadOnly);
  addValue(*control, d.getNumberOfIterationsPath(), AttributeType::Int, AccessType::ReadOnly);
  addValue(*control, d.getIsFirstIterationPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getIsLastIterationPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getIsTransientPath(), AttributeType::Bool, AccessType::ReadOnly);
  addValue(*control, d.getTimePath(), AttributeType::Double, AccessType::ReadOnly, "s");
  addValue(*control, d.getTimeStepPath(), AttributeType::Double, AccessType::ReadOnly, "s");
  addValue(*control, d.getTotalSimulationTimePath(), AttributeType::Double, AccessType::ReadOnly, "s");
  addValue(*control, d.getIsConvergedPath(), AttributeType::Bool, AccessType::ReadOnly);
  collection.addRootEntity(std::move(control));

  auto solid = makeEntity("Solid", "Rod", EntityID(2, 1));
  addValue(*solid, "Probe.Temperature", AttributeType::Double, AccessType::ReadOnly, "K");
  addValue(*solid, "Probe.Position", AttributeType::Double, AccessType::ReadOnly, "m")
      .setDoubleValue(rod.probePosition, Chronology::Current, false);
  addValue(*solid, "Mean Temperature", AttributeType::Double, AccessType::ReadOnly, "K");
  auto* ends =
      static_cast<ListAttribute*>(solid->createAttribute(AttributeType::List, "Ends", AccessType::ReadOnly));
  ends->setOwnsEntities(true);
  auto left = makeEntity("Boundary", "Left End", EntityID(3, 1));
  addValue(*left, "Heat Flux", AttributeType::Double, AccessType::ReadWrite, "W/m^2")
      .setDoubleValue(0.0, Chronology::Current, false);
  ends->addEntity(std::move(left));
  auto right = makeEntity("Boundary", "Right End", EntityID(4, 1));
  addValue(*right, "Temperature", AttributeType::Double, AccessType::ReadWrite, "K")
      .setDoubleValue(rod.ambient, Chronology::Current, false);
  ends->addEntity(std::move(right));
  auto* heater = static_cast<ShortcutAttribute*>(
      solid->createAttribute(AttributeType::Shortcut, "Heater Flux", AccessType::ReadWrite));
  heater->addShortcut(AttributePath("Ends.0.Heat Flux"));
  collection.addRootEntity(std::move(solid));

  for (long e = 0; e < fieldEntities; ++e)
  {
    auto cell = makeEntity("Field Cell", "Cell " + std::to_string(e), EntityID(static_cast<int>(e), 100));
    for (int a = 0; a < 10; ++a)
      addValue(*cell, "T" + std::to_string(a), AttributeType::Double, AccessType::ReadOnly, "K");
    collection.addRootEntity(std::move(cell));
  }
}

} // namespace HeatedRod

// The example solver with a trained network in place of the client process: the heated rod of
// exchange_solver.cpp, whose heater flux a small network chooses at each synchronised step. The network
// was trained offline (train_controller.py) to imitate exchange_client's PI controller from recorded
// exchanges; it reads the probe temperature, the mean temperature, the current heater flux and the time,
// and answers the new heater flux. It runs in the solver's process through an AI functor and the AI
// runtime: no exchange directory, no second process.
#include "ombrix/exchange/AIEventHandlerOptions.h"
#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"
#include "ombrix/runtime/AIRuntimeModuleCollection.h"

#include "ExchangeExample.h"
#include "HeatedRod.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace
{

using namespace Ombrix::Model;
using ExchangeExample::Arguments;
using ExchangeExample::Stopwatch;
using HeatedRod::Rod;
using KorvanSDK::Chronology;
using Reference = AttributeReference<Attribute>;

Utilities::bytearray readFile(const std::string& path)
{
  std::ifstream in(path, std::ios::binary);
  if (!in)
    throw std::runtime_error("cannot read the network " + path);
  return Utilities::bytearray(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class Solver
{
public:
  explicit Solver(const Arguments& arguments)
      : m_rod(static_cast<std::size_t>(arguments.number("cells"))), m_steps(arguments.number("steps")),
        m_timeStep(arguments.real("time-step")), m_syncStart(arguments.number("sync-start")),
        m_syncInterval(arguments.number("sync-interval")), m_network(arguments.text("network")),
        m_verbose(arguments.number("verbose") != 0)
  {
    if (m_rod.temperature.size() < 2 || m_steps < 1 || !(m_timeStep > 0) || m_syncInterval < 1)
      throw std::invalid_argument("cells >= 2, steps >= 1, time-step > 0 and sync-interval >= 1 are needed");
    HeatedRod::buildModel(m_model, m_rod, 0);
    Entity* rod = m_model.getEntity(EntityID(2, 1));
    m_probe = &rod->getAttribute(AttributePath("Probe.Temperature"));
    m_mean = &rod->getAttribute(AttributePath("Mean Temperature"));
    m_heater = &rod->getAttribute(AttributePath("Heater Flux"));
    m_time = &m_model.getEntity(EntityID(1, 1))
                  ->getAttribute(m_model.getSolutionControlDefinition().getTimePath());
  }

  int run()
  {
    setUpNetwork();
    Stopwatch total;
    double network = 0;
    long executions = 0;
    for (long step = 1; step <= m_steps; ++step)
    {
      m_rod.step(m_heater->getDoubleValue(Chronology::Current, false), m_timeStep);
      m_probe->setDoubleValue(m_rod.at(m_rod.probePosition), Chronology::Current, false);
      m_mean->setDoubleValue(m_rod.mean(), Chronology::Current, false);
      m_time->setDoubleValue(static_cast<double>(step) * m_timeStep, Chronology::Current, false);
      const bool sync = step >= m_syncStart && (step - m_syncStart) % m_syncInterval == 0;
      if (sync)
      {
        Stopwatch watch;
        const auto errors = m_options.functors[0].execute();
        network += watch.lap();
        ++executions;
        for (const auto& error : errors)
          std::printf("solver: %s\n", error.getMessage().c_str());
      }
      if (m_verbose || sync)
        std::printf("step %3ld  t %7.1f s  probe %8.3f K  heater flux %9.1f W/m^2%s\n", step,
                    static_cast<double>(step) * m_timeStep,
                    m_probe->getDoubleValue(Chronology::Current, false),
                    m_heater->getDoubleValue(Chronology::Current, false), sync ? "" : "  (no exchange)");
    }
    const double wall = total.lap();
    m_options.functors[0].terminate();
    std::printf(
        "solver: finished %ld steps (%ld network executions), simulated %.1f s; probe %.3f K, heater flux "
        "%.1f W/m^2\n",
        m_steps, executions, static_cast<double>(m_steps) * m_timeStep,
        m_probe->getDoubleValue(Chronology::Current, false),
        m_heater->getDoubleValue(Chronology::Current, false));
    std::printf("solver: wall time per step %.3f ms; network %.1f us per execution\n",
                wall * 1000.0 / static_cast<double>(m_steps),
                executions ? network * 1e6 / static_cast<double>(executions) : 0.0);
    return ExchangeExample::exitSuccess;
  }

private:
  // The network's definition and its functor are project data: a host keeps them in its data streams.
  // They go through a stream here as well, and the runtime is built from what was read back.
  void setUpNetwork()
  {
    Ombrix::AIModuleDefinitionCollection definitions;
    auto* definition = definitions
                           .insertDefinition(std::make_unique<Ombrix::AIModuleDefinition>(
                               AISystem::ModuleType::Transformed, readFile(m_network)))
                           .first;
    Ombrix::AIEventHandlerOptions options;
    Entity* rod = m_model.getEntity(EntityID(2, 1));
    options.functors.emplace_back("Heater controller", rod,
                                  Ombrix::AIFunctor::References{Reference(*m_probe), Reference(*m_mean),
                                                                Reference(*m_heater), Reference(*m_time)},
                                  Ombrix::AIFunctor::References{Reference(*m_heater)}, definition);
    FileSystem::DataOStream out;
    out << definitions << options;
    FileSystem::DataIStream in(out.data());
    in >> m_definitions >> m_options;
    if (!in)
      throw std::runtime_error("the project data could not be read back");

    m_runtime = std::make_unique<Ombrix::AIRuntimeModuleCollection>(m_definitions);
    // Throws, naming the functor and the module, when the network does not fit these attributes.
    m_options.functors[0].initialize(*m_runtime, m_model, false, false);
  }

  Rod m_rod;
  long m_steps;
  double m_timeStep;
  long m_syncStart;
  long m_syncInterval;
  std::string m_network;
  bool m_verbose;
  EntityCollection m_model;
  Attribute* m_probe = nullptr;
  Attribute* m_mean = nullptr;
  Attribute* m_heater = nullptr;
  Attribute* m_time = nullptr;
  Ombrix::AIModuleDefinitionCollection m_definitions;
  std::unique_ptr<Ombrix::AIRuntimeModuleCollection> m_runtime; // outlives the functors
  Ombrix::AIEventHandlerOptions m_options;
};

} // namespace

int main(int argc, char** argv)
{
  return ExchangeExample::runProgram<Solver>("ai_solver", argc, argv,
                                             {{"steps", "40"},
                                              {"time-step", "10"},
                                              {"cells", "40"},
                                              {"sync-start", "1"},
                                              {"sync-interval", "1"},
                                              {"network", OMBRIX_EXAMPLE_NETWORK},
                                              {"verbose", "0"}});
}

// The AI runtime on a 4-64-64-1 network (ReLU, ReLU, identity): the cost of one functor's execute, and
// the cost per functor of executing a batch of functors at once (AIRuntimeModuleCollection::
// executeBatch), for the "NeuralNetwork" and "TorchScript" module types. With libtorch,
// ai_bench_torch.cpp adds libtorch's own forward call on the same batch as the reference; Compute shows
// the network alone, without reading and writing attributes.
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"
#include "ombrix/runtime/AIRuntimeModuleCollection.h"
#include "ombrix/runtime/NeuralNetworkFormat.h"
#include "ombrix/runtime/NeuralNetworkModule.h"
#include "ombrix/runtime/TorchScriptModule.h"

#include <benchmark/benchmark.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

namespace
{

constexpr std::int64_t batchSize = 10000;

const Ombrix::DenseNetwork& network()
{
  static const Ombrix::DenseNetwork result = []
  {
    std::mt19937_64 random(42);
    std::uniform_real_distribution<double> weight(-0.3, 0.3);
    const std::size_t widths[] = {4, 64, 64, 1};
    const Ombrix::Activation activations[] = {Ombrix::Activation::Relu, Ombrix::Activation::Relu,
                                              Ombrix::Activation::Identity};
    std::vector<Ombrix::DenseLayer> layers;
    for (std::size_t l = 0; l < 3; ++l)
    {
      Ombrix::DenseLayer layer{widths[l], widths[l + 1], activations[l], {}, {}};
      for (std::size_t i = 0; i < layer.inputs * layer.outputs; ++i)
        layer.weights.push_back(weight(random));
      for (std::size_t o = 0; o < layer.outputs; ++o)
        layer.biases.push_back(weight(random));
      layers.push_back(std::move(layer));
    }
    return Ombrix::DenseNetwork(std::move(layers));
  }();
  return result;
}

// `cells` entities of four inputs and one output, one functor per entity, all on the module of `type`.
struct Setup
{
  Setup(AISystem::ModuleType type, std::int64_t cells)
  {
    const auto data = type == AISystem::ModuleType::TorchScript
                          ? Ombrix::TorchScriptModule::fromNetwork(network())
                          : Ombrix::NeuralNetworkFormat::write(network());
    auto* definition =
        definitions.insertDefinition(std::make_unique<Ombrix::AIModuleDefinition>(type, data)).first;
    runtime = std::make_unique<Ombrix::AIRuntimeModuleCollection>(definitions);
    for (std::int64_t c = 0; c < cells; ++c)
    {
      auto cell = std::make_unique<Entity>("Cell", "Cell " + std::to_string(c));
      cell->setUniqueID(EntityID(static_cast<int>(c), 1));
      Ombrix::AIFunctor::References inputs, outputs;
      for (int i = 0; i < 4; ++i)
      {
        Attribute* input =
            cell->createAttribute(AttributeType::Double, "In" + std::to_string(i), AccessType::ReadOnly);
        input->setDoubleValue(0.01 * static_cast<double>(c % 97) - 0.3 * i, Chronology::Current, false);
        inputs.emplace_back(*input);
      }
      outputs.emplace_back(*cell->createAttribute(AttributeType::Double, "Out", AccessType::ReadWrite));
      functors.emplace_back("Cell " + std::to_string(c), cell.get(), inputs, outputs, definition);
      entities.addRootEntity(std::move(cell));
    }
    for (auto& functor : functors)
      functor.initialize(*runtime, entities, false, false);
  }

  EntityCollection entities;
  Ombrix::AIModuleDefinitionCollection definitions;
  std::unique_ptr<Ombrix::AIRuntimeModuleCollection> runtime;
  std::vector<Ombrix::AIFunctor> functors;
};

} // namespace

// Also used by ai_bench_torch.cpp.
void perFunctor(benchmark::State& state, std::int64_t functors)
{
  state.SetItemsProcessed(state.iterations() * functors);
  state.counters["per_functor"] =
      benchmark::Counter(static_cast<double>(functors),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

std::vector<std::uint8_t> torchScriptArchive()
{
  return Ombrix::TorchScriptModule::fromNetwork(network());
}

namespace
{

void Execute(benchmark::State& state, AISystem::ModuleType type)
{
  Setup setup(type, 1);
  for (auto _ : state)
    benchmark::DoNotOptimize(setup.functors[0].execute());
  perFunctor(state, 1);
}

void Batch(benchmark::State& state, AISystem::ModuleType type)
{
  Setup setup(type, state.range(0));
  for (auto _ : state)
    benchmark::DoNotOptimize(setup.runtime->executeBatch(setup.functors));
  perFunctor(state, state.range(0));
}

void Compute(benchmark::State& state)
{
  Ombrix::NeuralNetworkModule module(network());
  std::vector<double> in(static_cast<std::size_t>(state.range(0)) * 4, 0.25),
      out(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
  {
    module.compute(in.data(), out.size(), 4, out.data());
    benchmark::DoNotOptimize(out.data());
  }
  perFunctor(state, state.range(0));
}

} // namespace

BENCHMARK_CAPTURE(Execute, NeuralNetwork, AISystem::ModuleType::NeuralNetwork);
BENCHMARK_CAPTURE(Batch, NeuralNetwork, AISystem::ModuleType::NeuralNetwork)->Arg(batchSize);
BENCHMARK(Compute)->Arg(batchSize);
#if OMBRIX_WITH_TORCH
BENCHMARK_CAPTURE(Execute, TorchScript, AISystem::ModuleType::TorchScript);
BENCHMARK_CAPTURE(Batch, TorchScript, AISystem::ModuleType::TorchScript)->Arg(batchSize);
#endif

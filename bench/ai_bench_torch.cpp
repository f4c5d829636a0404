// The reference of ai_bench: libtorch's own forward call on the same network and batch, the batch
// already a tensor. The only source of the benchmark that sees libtorch's headers, compiled as C++17
// (those of libtorch 1.13 do not compile as C++20 with clang).
#include <benchmark/benchmark.h>
#include <cstdint>
#include <sstream>
#include <string>
#include <torch/script.h>
#include <vector>

// From ai_bench.cpp: the benchmarked network as a TorchScript archive, and the per-functor counter.
std::vector<std::uint8_t> torchScriptArchive();
void perFunctor(benchmark::State& state, std::int64_t functors);

namespace
{

void TorchForward(benchmark::State& state)
{
  const auto bytes = torchScriptArchive();
  std::istringstream archive(std::string(bytes.begin(), bytes.end()));
  auto module = torch::jit::load(archive);
  module.eval();
  c10::InferenceMode inference;
  const auto input = torch::full({state.range(0), 4}, 0.25, torch::kDouble);
  for (auto _ : state)
    benchmark::DoNotOptimize(module.forward({input}).toTensor().data_ptr<double>());
  perFunctor(state, state.range(0));
}

} // namespace

BENCHMARK(TorchForward)->Arg(10000);

// Speed of the CSV exchange files: data-file write and read-and-apply, definition-file write and full
// rebuild, for models of N/10 entities with 10 double attributes each (one chronology).
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/log/LogManager.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <string>

namespace
{

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

constexpr int attributesPerEntity = 10;

void buildModel(EntityCollection& collection, std::int64_t rows)
{
  const std::int64_t entities = rows / attributesPerEntity;
  for (std::int64_t e = 0; e < entities; ++e)
  {
    auto entity = std::make_unique<Entity>("Cell", "C" + std::to_string(e), AccessType::ReadWrite, nullptr);
    entity->setUniqueID(EntityID(static_cast<int>(e), 17));
    for (int a = 0; a < attributesPerEntity; ++a)
    {
      auto* value = static_cast<DoubleAttribute*>(
          entity->createAttribute(AttributeType::Double, "Value" + std::to_string(a), AccessType::ReadWrite));
      value->setUnit("Pa");
      value->set(static_cast<double>(e) * 0.001 + a, Chronology::Initial);
    }
    collection.addRootEntity(std::move(entity));
  }
}

std::string scratch(const char* name)
{
  return (std::filesystem::temp_directory_path() / (std::string("ombrix_csv_bench_") + name)).string();
}

void setRate(benchmark::State& state, std::int64_t rows)
{
  state.SetItemsProcessed(state.iterations() * rows);
  state.SetComplexityN(rows);
}

void BM_DataWrite(benchmark::State& state)
{
  EntityCollection collection;
  buildModel(collection, state.range(0));
  Ombrix::CSVDataFileParser parser(collection, {Chronology::Initial});
  const std::string path = scratch("out.csv");
  for (auto _ : state)
    benchmark::DoNotOptimize(parser.saveAs(path));
  setRate(state, state.range(0));
  std::filesystem::remove(path);
}

void BM_DataReadApply(benchmark::State& state)
{
  EntityCollection collection;
  buildModel(collection, state.range(0));
  const std::string path = scratch("in.csv");
  Ombrix::CSVDataFileParser parser(collection, {Chronology::Initial});
  parser.saveAs(path);
  parser.setKorvanSDK(true);
  for (auto _ : state)
    benchmark::DoNotOptimize(parser.parseFile(path));
  setRate(state, state.range(0));
  std::filesystem::remove(path);
}

void BM_DataReadApplyUserWrites(benchmark::State& state)
{
  EntityCollection collection;
  buildModel(collection, state.range(0));
  const std::string path = scratch("in_user.csv");
  Ombrix::CSVDataFileParser parser(collection, {Chronology::Initial});
  parser.saveAs(path);
  for (auto _ : state)
    benchmark::DoNotOptimize(parser.parseFile(path));
  setRate(state, state.range(0));
  std::filesystem::remove(path);
}

// The same with the log on at the level of range(1) (Warning or Informational); reports the log's bytes per
// read as a counter.
void BM_DataReadApplyLogged(benchmark::State& state)
{
  EntityCollection collection;
  buildModel(collection, state.range(0));
  const std::string path = scratch("in_logged.csv");
  const std::string logPath = scratch("logged.log");
  Ombrix::CSVDataFileParser parser(collection, {Chronology::Initial});
  parser.saveAs(path);
  Ombrix::LogManager::instance().initialize(logPath, static_cast<Ombrix::LogLevel>(state.range(1)));
  for (auto _ : state)
    benchmark::DoNotOptimize(parser.parseFile(path));
  Ombrix::LogManager::instance().terminate();
  state.counters["log_bytes_per_read"] =
      static_cast<double>(std::filesystem::file_size(logPath)) / static_cast<double>(state.iterations());
  setRate(state, state.range(0));
  std::filesystem::remove(path);
  std::filesystem::remove(logPath);
}

// def.csv rows: one per attribute.
std::int64_t definitionRows(std::int64_t rows)
{
  return rows / attributesPerEntity * attributesPerEntity;
}

void BM_DefinitionWrite(benchmark::State& state)
{
  EntityCollection collection;
  buildModel(collection, state.range(0));
  Ombrix::CSVDefinitionFileParser parser(collection);
  parser.setChronologies({Chronology::Initial});
  const std::string path = scratch("def.csv");
  for (auto _ : state)
    benchmark::DoNotOptimize(parser.saveAs(path));
  setRate(state, definitionRows(state.range(0)));
  std::filesystem::remove(path);
}

void BM_DefinitionRebuild(benchmark::State& state)
{
  const std::string path = scratch("def_read.csv");
  {
    EntityCollection collection;
    buildModel(collection, state.range(0));
    Ombrix::CSVDefinitionFileParser parser(collection);
    parser.setChronologies({Chronology::Initial});
    parser.saveAs(path);
  }
  // A client rebuilds into an empty collection; dropping the previous model is not part of that, so it
  // happens outside the timed region.
  auto target = std::make_unique<EntityCollection>();
  for (auto _ : state)
  {
    Ombrix::CSVDefinitionFileParser reader(*target);
    benchmark::DoNotOptimize(reader.parseFile(path));
    state.PauseTiming();
    target = std::make_unique<EntityCollection>();
    state.ResumeTiming();
  }
  setRate(state, definitionRows(state.range(0)));
  std::filesystem::remove(path);
}

} // namespace

BENCHMARK(BM_DataWrite)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DataReadApply)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DataReadApplyUserWrites)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DataReadApplyLogged)
    ->Args({100000, static_cast<int>(Ombrix::LogLevel::Warning)})
    ->Args({100000, static_cast<int>(Ombrix::LogLevel::Informational)})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DefinitionWrite)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DefinitionRebuild)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);

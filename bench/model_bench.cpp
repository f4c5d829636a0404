// Building and searching an entity collection: N entities of 10 double attributes each, lookups by ID,
// by type and name, and by attribute path inside an entity.
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueAttribute.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace Ombrix::Model;

namespace
{

constexpr int kAttributesPerEntity = 10;
constexpr int kTypes = 10;

const std::vector<std::string>& attributeNames()
{
  static const std::vector<std::string> names = []
  {
    std::vector<std::string> result;
    for (int a = 0; a < kAttributesPerEntity; ++a)
      result.push_back("Value " + std::to_string(a));
    return result;
  }();
  return names;
}

std::string typeOf(std::int64_t i)
{
  return "Type " + std::to_string(i % kTypes);
}

std::string nameOf(std::int64_t i)
{
  return "Entity " + std::to_string(i);
}

std::unique_ptr<EntityCollection> build(std::int64_t n)
{
  auto collection = std::make_unique<EntityCollection>();
  for (std::int64_t i = 0; i < n; ++i)
  {
    auto entity = std::make_unique<Entity>(typeOf(i), nameOf(i));
    entity->setUniqueID(EntityID(static_cast<int>(i), 1));
    for (const auto& name : attributeNames())
    {
      entity->createAttribute(KorvanSDK::AttributeType::Double, name, KorvanSDK::AccessType::ReadWrite)
          ->setDoubleValue(static_cast<double>(i), KorvanSDK::Chronology::Initial, false);
    }
    collection->addRootEntity(std::move(entity));
  }
  return collection;
}

std::size_t heapInUse()
{
  return mallinfo2().uordblks;
}

void BM_BuildCollection(benchmark::State& state)
{
  const std::int64_t n = state.range(0);
  const double attributes = static_cast<double>(n * kAttributesPerEntity);
  std::size_t heapGrowth = 0;
  for (auto _ : state)
  {
    const std::size_t heapBefore = heapInUse();
    auto collection = build(n);
    benchmark::DoNotOptimize(collection.get());
    state.PauseTiming();
    heapGrowth = std::max(heapGrowth, heapInUse() - heapBefore);
    collection.reset();
    state.ResumeTiming();
  }
  state.counters["time_per_attribute"] = benchmark::Counter(
      attributes, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  // Heap in use with the whole collection built (entity and list overhead shared out): the peak of
  // the build. Resident-set growth would hide reused pages after the first iteration.
  state.counters["peak_heap_bytes_per_attribute"] = static_cast<double>(heapGrowth) / attributes;
}

// One collection at a time, kept between the lookup benchmarks of the same size.
EntityCollection& collectionOf(std::int64_t n)
{
  static std::int64_t size = -1;
  static std::unique_ptr<EntityCollection> collection;
  if (size != n)
  {
    collection.reset();
    collection = build(n);
    size = n;
    collection->getEntity(EntityID(0, 1)); // builds the lookup index outside the timed loop
  }
  return *collection;
}

std::vector<std::int64_t> randomIndices(std::int64_t n)
{
  std::mt19937_64 rng(42);
  std::vector<std::int64_t> indices(4096);
  for (auto& i : indices)
    i = static_cast<std::int64_t>(rng() % static_cast<std::uint64_t>(n));
  return indices;
}

void BM_LookupByID(benchmark::State& state)
{
  const std::int64_t n = state.range(0);
  const EntityCollection& collection = collectionOf(n);
  std::vector<EntityID> ids;
  for (std::int64_t i : randomIndices(n))
    ids.emplace_back(static_cast<int>(i), 1);
  std::size_t k = 0;
  for (auto _ : state)
  {
    benchmark::DoNotOptimize(collection.getEntity(ids[k++ & 4095]));
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_LookupByTypeAndName(benchmark::State& state)
{
  const std::int64_t n = state.range(0);
  const EntityCollection& collection = collectionOf(n);
  std::vector<std::pair<std::string, std::string>> keys;
  for (std::int64_t i : randomIndices(n))
    keys.emplace_back(typeOf(i), nameOf(i));
  std::size_t k = 0;
  for (auto _ : state)
  {
    const auto& key = keys[k++ & 4095];
    benchmark::DoNotOptimize(collection.getEntity(key.first, key.second));
  }
  state.SetItemsProcessed(state.iterations());
}

void BM_LookupByPath(benchmark::State& state)
{
  const std::int64_t n = state.range(0);
  const EntityCollection& collection = collectionOf(n);
  std::vector<const Entity*> entities;
  for (std::int64_t i : randomIndices(n))
    entities.push_back(collection[static_cast<std::size_t>(i)]);
  // The last child: the longest scan among an entity's attributes.
  const AttributePath path(attributeNames().back());
  std::size_t k = 0;
  for (auto _ : state)
  {
    benchmark::DoNotOptimize(&entities[k++ & 4095]->getAttribute(path));
  }
  state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK(BM_BuildCollection)
    ->RangeMultiplier(8)
    ->Range(1 << 10, 1 << 17)
    ->Arg(100000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LookupByID)->RangeMultiplier(8)->Range(1 << 10, 1 << 17)->Arg(100000);
BENCHMARK(BM_LookupByTypeAndName)->RangeMultiplier(8)->Range(1 << 10, 1 << 17)->Arg(100000);
BENCHMARK(BM_LookupByPath)->RangeMultiplier(8)->Range(1 << 10, 1 << 17)->Arg(100000);

namespace
{

// A reader's pattern: make an entity, give it its identity, then look up an entity already listed.
void BM_LookupWhileMakingEntities(benchmark::State& state)
{
  const std::int64_t n = state.range(0);
  const EntityCollection& collection = collectionOf(n);
  std::vector<EntityID> ids;
  for (std::int64_t i : randomIndices(n))
    ids.emplace_back(static_cast<int>(i), 1);
  std::size_t k = 0;
  for (auto _ : state)
  {
    Entity entity("Fresh", "Fresh");
    entity.setUniqueID(EntityID(-1, static_cast<int>(k)));
    entity.setName("Renamed");
    benchmark::DoNotOptimize(collection.getEntity(ids[k++ & 4095]));
  }
  state.SetItemsProcessed(state.iterations());
}

} // namespace

BENCHMARK(BM_LookupWhileMakingEntities)->RangeMultiplier(8)->Range(1 << 10, 1 << 17)->Arg(100000);

// Splitting and joining CSV tables of N rows of 8 short fields, as in the exchange's data files.
#include "ombrix/platform/CSVParser.h"

#include <benchmark/benchmark.h>
#include <string>

namespace
{

FileSystem::CSVParser::Table makeTable(std::size_t rows)
{
  FileSystem::CSVParser::Table table(rows);
  for (std::size_t i = 0; i < rows; ++i)
  {
    table[i] = {"Entity",
                std::to_string(i) + "-1",
                "Name" + std::to_string(i % 97),
                "Results.Time",
                "ReadWrite",
                "s",
                "Double",
                std::to_string(0.5 * static_cast<double>(i))};
  }
  return table;
}

void parseText(benchmark::State& state)
{
  FileSystem::CSVParser writer;
  writer.rows() = makeTable(static_cast<std::size_t>(state.range(0)));
  const std::string text = writer.toText();
  for (auto _ : state)
  {
    // A fresh parser per file, as the exchange file classes use it; its rows are freed in the loop too.
    FileSystem::CSVParser parser;
    parser.parseText(text);
    benchmark::DoNotOptimize(parser.rows().data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  state.SetComplexityN(state.range(0));
}

void toText(benchmark::State& state)
{
  FileSystem::CSVParser parser;
  parser.rows() = makeTable(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state)
  {
    std::string text = parser.toText();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(parseText)->Range(1 << 10, 1 << 20)->Complexity()->Unit(benchmark::kMicrosecond);
BENCHMARK(toText)->Range(1 << 10, 1 << 20)->Complexity()->Unit(benchmark::kMicrosecond);

// `ombrix_fuzz_seeds DIR`: writes, into DIR/<target>/, seed inputs for every fuzz target, made by the
// library's own writers, so that the fuzzers start from valid files and the replay tests follow the
// formats as they change. Each input starts with the flag byte its target reads first, if any.
#include "ombrix/ai/AIFunctor.h"
#include "ombrix/ai/AIModuleDefinitionCollection.h"
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/exchange/AIEventHandlerOptions.h"
#include "ombrix/exchange/AliveFileReaderWriter.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/exchange/StateFileReaderWriter.h"
#include "ombrix/exchange/TrivialEventHandlerOptions.h"
#include "ombrix/platform/DataOStream.h"
#ifdef OMBRIX_FUZZ_AI
#include "ombrix/runtime/NeuralNetworkFormat.h"
#include "ombrix/runtime/TransformedFormat.h"
#endif

#include "FuzzSupport.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

namespace
{

using namespace Ombrix;
using KorvanSDK::Chronology;

std::filesystem::path root;
int written = 0;

void save(const std::string& target, const std::string& name, std::string_view input)
{
  // A target's folder is emptied before its first seed: seeds of an older format must not linger.
  static std::set<std::string> emptied;
  if (emptied.insert(target).second)
    std::filesystem::remove_all(root / target);
  std::filesystem::create_directories(root / target);
  OmbrixFuzz::writeFile((root / target / name).string(), input);
  ++written;
}

void seed(const std::string& target, const std::string& name, unsigned char flags, const std::string& body)
{
  save(target, name, static_cast<char>(flags) + body);
}

std::string fileText(const std::string& path)
{
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The flag bits of the CSV targets: bit 0 full entity names, bits 2-6 the chronologies.
unsigned char csvFlags(const std::set<Chronology>& chronologies, bool fullNames)
{
  unsigned char flags = fullNames ? 1 : 0;
  for (Chronology c : chronologies)
    flags = static_cast<unsigned char>(flags | (4 << static_cast<int>(c)));
  return flags;
}

void csvSeeds()
{
  using C = Chronology;
  const std::set<Chronology> sets[] = {{C::Initial},
                                       {C::Initial, C::Current},
                                       {C::Current},
                                       {C::Initial, C::Continue, C::TimeStepStart, C::Current, C::Next}};
  Model::EntityCollection model;
  OmbrixFuzz::buildModel(model);
  const std::string path = OmbrixFuzz::scratchFile("seed.csv");
  int n = 0;
  for (const auto& chronologies : sets)
    for (bool fullNames : {false, true})
    {
      const std::string suffix = std::to_string(n++);
      // Links and shortcuts have their place in the Initial column only: without it the writer refuses.
      if (chronologies.count(Chronology::Initial))
      {
        CSVDefinitionFileParser definition(model);
        definition.setChronologies(chronologies);
        definition.setUseFullEntityNames(fullNames);
        if (!definition.saveAs(path))
          OmbrixFuzz::fail("cannot write the seed definition file");
        seed("definition_file", "def-" + suffix, csvFlags(chronologies, fullNames), fileText(path));
        seed("csv_parser", "def-" + suffix, 0, fileText(path));
      }
      CSVDataFileParser data(model, chronologies);
      data.setUseFullEntityNames(fullNames);
      if (!data.saveAs(path))
        OmbrixFuzz::fail("cannot write the seed data file");
      seed("data_file", "out-" + suffix, csvFlags(chronologies, fullNames), fileText(path));
      seed("csv_parser", "out-" + suffix, 32, fileText(path));
    }
  CSVDataFileParser answer(model, {Chronology::Current});
  answer.setIterationWord(CSVDataFileParser::iterationEnd);
  if (!answer.saveAs(path))
    OmbrixFuzz::fail("cannot write the seed data file");
  seed("data_file", "out-end", csvFlags({Chronology::Current}, false), fileText(path));
}

// The state and alive targets read the whole input as the file.
void exchangeFileSeeds()
{
  const std::string path = OmbrixFuzz::scratchFile("seed.state");
  for (KorvanSDK::SolveState state : {KorvanSDK::SolveState::NoFile, KorvanSDK::SolveState::Failed})
  {
    StateFileReaderWriter(path).writeState(state, 1);
    save("state_file", "state-" + std::to_string(static_cast<int>(state)), fileText(path));
  }
  const std::string alivePath = OmbrixFuzz::scratchFile("seed.alive");
  {
    AliveFileReaderWriter alive(alivePath);
    alive.start();
    alive.stop();
  }
  save("alive_file", "alive", fileText(alivePath));
}

template <typename Record>
void streamSeed(const std::string& target, const std::string& name, unsigned record, const Record& value)
{
  for (auto kind : {FileSystem::DataStreamKind::Binary, FileSystem::DataStreamKind::Text})
  {
    FileSystem::DataOStream out(kind);
    out << value;
    if (!out.good())
      OmbrixFuzz::fail("cannot write the seed stream " + name);
    const bool text = kind == FileSystem::DataStreamKind::Text;
    seed(target, name + (text ? "-text" : "-binary"),
         static_cast<unsigned char>(record << 1 | (text ? 1 : 0)), out.data());
  }
}

void streamSeeds()
{
  CSVEventHandlerOptions csv;
  csv.ombrixDirectory = "/tmp/exchange dir";
  csv.fileMode = CSVFileMode::Sequential;
  csv.syncStartIteration = 3;
  csv.readFailureHandling = ReadFailureHandling::Retry;
  streamSeed("options_stream", "csv", 0, csv);
  streamSeed("options_stream", "trivial", 2, TrivialEventHandlerOptions{});

  AIModuleDefinitionCollection definitions;
  auto* network = definitions
                      .insertDefinition(std::make_unique<AIModuleDefinition>(
                          AISystem::ModuleType::NeuralNetwork, Utilities::bytearray{1, 2, 3, 0, 255}))
                      .first;
  definitions.insertDefinition(
      std::make_unique<AIModuleDefinition>(AISystem::ModuleType::Trivial, Utilities::bytearray{}));
  using Reference = Model::AttributeReference<Model::Attribute>;
  const Model::EntityID pump(3, 17);
  const AIFunctor functor("Surrogate", nullptr,
                          {Reference(pump, Model::AttributePath("Speed")),
                           Reference(pump, Model::AttributePath("Geometry.Inlet.Diameter"))},
                          {Reference(Model::EntityID(4, 17), Model::AttributePath("Load"))}, network);
  AIEventHandlerOptions ai;
  ai.functors = {functor, functor};
  streamSeed("options_stream", "ai", 1, ai);
  streamSeed("ai_stream", "definitions", 0, definitions);
  streamSeed("ai_stream", "definition", 1, *network);
  streamSeed("ai_stream", "functor", 2, functor);
  streamSeed("ai_stream", "reference", 3, AIModuleReference(*network));
}

#ifdef OMBRIX_FUZZ_AI
// Small networks of every activation, and a Transformed definition that wraps one.
void neuralNetworkSeeds()
{
  const auto bytes = [](const Utilities::bytearray& data) { return std::string(data.begin(), data.end()); };
  using Ombrix::Activation;
  const DenseNetwork single({DenseLayer{1, 1, Activation::Identity, {2.0}, {0.5}}});
  const DenseNetwork layered({DenseLayer{2, 3, Activation::Relu, {1, -1, 0.5, 2, -0.25, 0}, {0, 1, -1}},
                              DenseLayer{3, 2, Activation::Tanh, {1, 2, 3, -1, -2, -3}, {0.1, -0.1}},
                              DenseLayer{2, 1, Activation::Sigmoid, {0.5, 0.5}, {0}}});
  TransformedFormat::Content transformed;
  transformed.inputs = {Transformation(TransformationType::MeanStdDevScaling, {300, 20}),
                        Transformation(TransformationType::Curve, {0, 0, 1, 2, 3, 5})};
  transformed.outputs = {Transformation(TransformationType::SimpleScaling, {0.001, 0})};
  transformed.innerType = AISystem::ModuleType::NeuralNetwork;
  transformed.innerData = NeuralNetworkFormat::write(layered);
  save("neural_network", "single.bin", bytes(NeuralNetworkFormat::write(single)));
  save("neural_network", "layered.bin", bytes(transformed.innerData));
  save("neural_network", "transformed.bin", bytes(TransformedFormat::write(transformed)));
}
#endif

} // namespace

int main(int argc, char** argv)
{
  if (argc != 2)
  {
    std::fprintf(stderr, "usage: %s DIR\n", argv[0]);
    return 2;
  }
  root = argv[1];
  csvSeeds();
  exchangeFileSeeds();
  streamSeeds();
#ifdef OMBRIX_FUZZ_AI
  neuralNetworkSeeds();
#endif
  std::printf("wrote %d seeds into %s\n", written, root.c_str());
  return 0;
}

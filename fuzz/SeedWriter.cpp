// `ombrix_fuzz_seeds DIR`: writes, into DIR/<target>/, seed inputs for every fuzz target, made by the
// library's own writers, so that the fuzzers start from valid files and the replay tests follow the
// formats as they change. Each input starts with the selector byte its target reads first.
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

void seed(const std::string& target, const std::string& name, unsigned char selector, const std::string& body)
{
  // A target's folder is emptied before its first seed: seeds of an older format must not linger.
  static std::set<std::string> emptied;
  if (emptied.insert(target).second)
    std::filesystem::remove_all(root / target);
  std::filesystem::create_directories(root / target);
  std::string input(1, static_cast<char>(selector));
  input += body;
  OmbrixFuzz::writeFile((root / target / name).string(), input);
  ++written;
}

std::string fileText(const std::string& path)
{
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The selector bits of the CSV targets: bit 0 full entity names, bits 2-6 the chronologies.
unsigned char csvSelector(const std::set<Chronology>& chronologies, bool fullNames)
{
  unsigned char selector = fullNames ? 1 : 0;
  for (Chronology c : chronologies)
    selector = static_cast<unsigned char>(selector | (4 << static_cast<int>(c)));
  return selector;
}

void csvSeeds()
{
  const std::vector<std::set<Chronology>> sets = {{Chronology::Initial},
                                                  {Chronology::Initial, Chronology::Current},
                                                  {Chronology::Current},
                                                  {Chronology::Initial, Chronology::Continue,
                                                   Chronology::TimeStepStart, Chronology::Current,
                                                   Chronology::Next}};
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
        definition.setChronologies({chronologies.begin(), chronologies.end()});
        definition.setUseFullEntityNames(fullNames);
        if (!definition.saveAs(path))
          OmbrixFuzz::fail("cannot write the seed definition file");
        const std::string def = fileText(path);
        seed("definition_file", "def-" + suffix, csvSelector(chronologies, fullNames), def);
        seed("csv_parser", "def-" + suffix, 0, def);
      }

      CSVDataFileParser data(model, {chronologies.begin(), chronologies.end()});
      data.setUseFullEntityNames(fullNames);
      if (!data.saveAs(path))
        OmbrixFuzz::fail("cannot write the seed data file");
      const std::string out = fileText(path);
      seed("data_file", "out-" + suffix, csvSelector(chronologies, fullNames), out);
      seed("csv_parser", "out-" + suffix, 32, out);
    }
  CSVDataFileParser answer(model, {Chronology::Current});
  answer.setIterationWord(CSVDataFileParser::iterationEnd);
  if (!answer.saveAs(path))
    OmbrixFuzz::fail("cannot write the seed data file");
  seed("data_file", "out-end", csvSelector({Chronology::Current}, false), fileText(path));
}

void exchangeFileSeeds()
{
  const std::string path = OmbrixFuzz::scratchFile("seed.state");
  for (KorvanSDK::SolveState state : {KorvanSDK::SolveState::NoFile, KorvanSDK::SolveState::Failed})
  {
    StateFileReaderWriter(path).writeState(state, 1);
    // The state target reads the whole input as the file: its selector byte is the file's first byte.
    const std::string text = fileText(path);
    seed("state_file", "state-" + std::to_string(static_cast<int>(state)),
         static_cast<unsigned char>(text[0]), text.substr(1));
  }
  const std::string alivePath = OmbrixFuzz::scratchFile("seed.alive");
  {
    AliveFileReaderWriter alive(alivePath);
    alive.start();
    alive.stop();
  }
  const std::string text = fileText(alivePath);
  seed("alive_file", "alive", static_cast<unsigned char>(text[0]), text.substr(1));
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
  const AIFunctor::References inputs = {
      Model::AttributeReference<Model::Attribute>(Model::EntityID(3, 17), Model::AttributePath("Speed")),
      Model::AttributeReference<Model::Attribute>(Model::EntityID(3, 17),
                                                  Model::AttributePath("Geometry.Inlet.Diameter"))};
  const AIFunctor::References outputs = {
      Model::AttributeReference<Model::Attribute>(Model::EntityID(4, 17), Model::AttributePath("Load"))};
  const AIFunctor functor("Surrogate", nullptr, inputs, outputs, network);
  AIEventHandlerOptions ai;
  ai.functors = {functor, functor};
  streamSeed("options_stream", "ai", 1, ai);
  streamSeed("ai_stream", "definitions", 0, definitions);
  streamSeed("ai_stream", "definition", 1, *network);
  streamSeed("ai_stream", "functor", 2, functor);
  streamSeed("ai_stream", "reference", 3, AIModuleReference(*network));
}

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
  std::printf("wrote %d seeds into %s\n", written, root.c_str());
  return 0;
}

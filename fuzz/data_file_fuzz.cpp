// The data file, applied to a model with every attribute kind: any text is applied or refused with an
// exception, and the values it leaves write a file that, applied to a fresh model, writes the same file.
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/platform/CSVParser.h"

#include "FuzzSupport.h"

#include <exception>

namespace
{

using Ombrix::CSVDataFileParser;

struct Side
{
  Ombrix::Model::EntityCollection model;
  CSVDataFileParser parser;

  Side(const CSVDataFileParser::ChronologySet& chronologies, unsigned flags) : parser(model, chronologies)
  {
    OmbrixFuzz::buildModel(model);
    parser.setUseFullEntityNames(flags & 1);
    parser.setIgnoreNonExisting(flags & 2);
    parser.setKorvanSDK(true);
  }

  bool read(const std::string& text)
  {
    FileSystem::CSVParser csv(',', false, false, '\n', true);
    csv.parseText(text);
    return parser.parseData(csv.rows());
  }

  std::string write() const
  {
    FileSystem::CSVParser csv(',', false, false, '\n', true);
    csv.rows() = parser.generateData();
    return csv.toText();
  }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::string_view text = OmbrixFuzz::asText(data, size);
  if (text.empty())
    return 0;
  // First byte: full entity names, ignoring unknown rows, and the value columns (at least one).
  const unsigned flags = OmbrixFuzz::takeFlags(text);
  auto chronologies = OmbrixFuzz::chronologiesOf(flags);
  if (chronologies.empty())
    chronologies.insert(KorvanSDK::Chronology::Current);

  Side solver(chronologies, flags);
  try
  {
    solver.read(std::string(text));
  }
  catch (const std::exception&)
  {
    return 0;
  }
  const std::string first = solver.write();
  Side client(chronologies, flags);
  client.parser.setFatalErrors(true);
  try
  {
    if (!client.read(first))
      OmbrixFuzz::fail("a written data file is not applied:\n" + first);
  }
  catch (const std::exception& error)
  {
    OmbrixFuzz::fail(std::string("a written data file is refused: ") + error.what() + "\n" + first);
  }
  if (client.write() != first)
    OmbrixFuzz::fail("a data file applied to a fresh model writes another file:\n" + first);
  return 0;
}

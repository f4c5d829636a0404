// The definition file: any text is read into a collection or refused with an exception, and a model read
// from it writes a file that reads back to a model writing the same file (read, write, read, write).
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/platform/CSVParser.h"

#include "FuzzSupport.h"

#include <exception>

namespace
{

using Ombrix::CSVDefinitionFileParser;

std::string write(Ombrix::Model::EntityCollection& collection, const CSVDefinitionFileParser& settings)
{
  CSVDefinitionFileParser writer(collection);
  writer.setChronologies(settings.getChronologies());
  writer.setUseFullEntityNames(settings.getUseFullEntityNames());
  FileSystem::CSVParser csv(',', false, false, '\n', true);
  csv.rows() = writer.generateData();
  return csv.toText();
}

bool read(const std::string& text, CSVDefinitionFileParser& reader)
{
  FileSystem::CSVParser csv(',', false, false, '\n', true);
  csv.parseText(text);
  return reader.parseData(csv.rows());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::string_view text = OmbrixFuzz::asText(data, size);
  if (text.empty())
    return 0;
  // First byte: full entity names, fatal content errors, and the value columns written back.
  const unsigned flags = OmbrixFuzz::takeFlags(text);
  auto chronologies = OmbrixFuzz::chronologiesOf(flags);

  Ombrix::Model::EntityCollection model;
  CSVDefinitionFileParser reader(model);
  reader.setUseFullEntityNames(flags & 1);
  reader.setFatalErrors(flags & 2);
  reader.setChronologies(chronologies);
  try
  {
    if (!read(std::string(text), reader))
      return 0;
  }
  catch (const std::exception&)
  {
    return 0;
  }

  std::string first;
  try
  {
    first = write(model, reader);
  }
  catch (const std::exception&)
  {
    return 0; // the writer refuses what the format cannot carry
  }
  Ombrix::Model::EntityCollection rebuilt;
  CSVDefinitionFileParser rereader(rebuilt);
  rereader.setUseFullEntityNames(reader.getUseFullEntityNames());
  rereader.setFatalErrors(true);
  rereader.setChronologies(chronologies);
  try
  {
    if (!read(first, rereader))
      OmbrixFuzz::fail("a written definition file is not read back:\n" + first);
  }
  catch (const std::exception& error)
  {
    OmbrixFuzz::fail(std::string("a written definition file is refused: ") + error.what() + "\n" + first);
  }
  if (write(rebuilt, rereader) != first)
    OmbrixFuzz::fail("a definition file read back writes another file:\n" + first);
  return 0;
}

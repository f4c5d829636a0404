#include "ModelFiles.h"

#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/model/Attribute.h"
#include "ombrix/model/ValueText.h"
#include "ombrix/platform/CSVParser.h"

#include "ToolError.h"

#include <algorithm>
#include <filesystem>

namespace Ombrix::Tools
{

using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

const CSVDataFileParser::ChronologySet& ModelFiles::allChronologies()
{
  static const CSVDataFileParser::ChronologySet all{Chronology::Initial, Chronology::Continue,
                                                    Chronology::TimeStepStart, Chronology::Current,
                                                    Chronology::Next};
  return all;
}

namespace
{

template <typename Read> void reading(const std::string& path, Read&& read)
{
  bool found = false;
  try
  {
    found = read();
  }
  catch (const std::exception& error)
  {
    throw ToolError(error.what());
  }
  std::error_code ignored;
  if (!found && !std::filesystem::exists(path, ignored))
    throw ToolError(path + " does not exist");
}

} // namespace

void ModelFiles::readDefinition(const std::string& path, Model::EntityCollection& collection)
{
  CSVDefinitionFileParser parser(collection);
  parser.setChronologies(allChronologies());
  reading(path, [&] { return parser.parseFile(path); });
}

void ModelFiles::readData(const std::string& path, CSVDataFileParser& parser)
{
  parser.setKorvanSDK(true);
  reading(path, [&] { return parser.parseFile(path); });
}

bool ModelFiles::isDefinitionFile(const std::string& path)
{
  FileSystem::CSVParser parser;
  try
  {
    parser.parseFile(path);
  }
  catch (const std::exception&)
  {
    return false;
  }
  const auto& rows = parser.rows();
  for (std::size_t r = 0; r + 1 < rows.size(); ++r)
    if (rows[r].size() >= 5 && rows[r][0] == "<<" && rows[r][1] == "START" && rows[r][2] == "CSV")
    {
      const auto& header = rows[r + 1];
      return std::find(header.begin(), header.end(), "Type") != header.end() ||
             std::find(header.begin(), header.end(), "Access") != header.end();
    }
  return false;
}

std::string ModelFiles::definitionFor(const std::string& dataFile, const std::string& given)
{
  if (!given.empty())
    return given;
  const std::filesystem::path beside = std::filesystem::path(dataFile).parent_path() / "def.csv";
  std::error_code ignored;
  if (!std::filesystem::exists(beside, ignored))
    throw ToolError(dataFile +
                    " is a data file, and there is no def.csv beside it: give its definition file with "
                    "--def");
  return beside.string();
}

std::string ModelFiles::valueText(const Model::Attribute& attribute, Chronology chronology)
{
  switch (attribute.getAttributeType(false))
  {
  case AttributeType::Int:
    return Model::toText(attribute.getIntValue(chronology, false));
  case AttributeType::Bool:
    return attribute.getBoolValue(chronology, false) ? "1" : "0";
  case AttributeType::Float:
    return Model::toText(attribute.getFloatValue(chronology, false), Model::NumberFormat::RoundTrip);
  case AttributeType::Double:
    return Model::toText(attribute.getDoubleValue(chronology, false), Model::NumberFormat::RoundTrip);
  default:
    return attribute.getStringValue(chronology, false);
  }
}

} // namespace Ombrix::Tools

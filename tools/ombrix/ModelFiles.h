// ModelFiles: models rebuilt from the exchange's CSV files the way the client rebuilds them: the
// definition file, then data files applied as internal writes (whatever the access), with every
// chronology column the file has.
#pragma once

#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/model/EntityCollection.h"

#include <string>

namespace Ombrix::Tools
{

class ModelFiles
{
public:
  // Every chronology: a data file is read with the value columns it has.
  static const CSVDataFileParser::ChronologySet& allChronologies();

  // Rebuilds `collection` from the definition file. Throws ToolError with the reader's message (or
  // "<path> does not exist") when it cannot.
  static void readDefinition(const std::string& path, Model::EntityCollection& collection);
  // Applies the data file to `collection` through `parser` (made on `collection`); throws ToolError as
  // readDefinition.
  static void readData(const std::string& path, CSVDataFileParser& parser);
  // Whether the file's column header is that of a definition file (it has a "Type" or "Access" column).
  // False for a file without a readable frame; its reader then says what is wrong.
  static bool isDefinitionFile(const std::string& path);
  // The definition file of the data file `dataFile`: `given`, or else def.csv in its directory.
  static std::string definitionFor(const std::string& dataFile, const std::string& given);

  // The value of a value attribute at `chronology` as text: numbers in the shortest form that reads back
  // the same, bools 1 or 0, strings as they are.
  static std::string valueText(const Model::Attribute& attribute, KorvanSDK::Chronology chronology);
};

} // namespace Ombrix::Tools

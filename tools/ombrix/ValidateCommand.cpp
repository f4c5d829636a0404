#include "ValidateCommand.h"

#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/model/Attribute.h"
#include "ombrix/model/Entity.h"
#include "ombrix/model/EntityCollection.h"
#include "ombrix/model/ValueText.h"
#include "ombrix/platform/CSVParser.h"
#include "ombrix/sdk/AttributeType.h"

#include "Console.h"
#include "ExchangeFiles.h"
#include "ExitCode.h"
#include "ModelFiles.h"
#include "ToolError.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <optional>

namespace Ombrix::Tools
{

using KorvanSDK::AttributeType;
using Problem = ValidateCommand::Problem;
using Table = FileSystem::CSVParser::Table;

namespace
{

// Where the frame of a table is: its header row and footer row (indexes), as the reader finds them.
struct Frame
{
  std::optional<std::size_t> header;
  std::optional<std::size_t> footer;
};

Frame findFrame(const Table& rows)
{
  Frame frame;
  for (std::size_t r = 0; r < rows.size() && !frame.header; ++r)
  {
    const auto& row = rows[r];
    if (row.size() >= 5 && row[0] == "<<" && row[1] == "START" && row[2] == "CSV" && row.back() == ">>" &&
        row[3].size() >= 4 && row[3].compare(0, 3, "VER") == 0 &&
        std::isdigit(static_cast<unsigned char>(row[3][3])))
      frame.header = r;
  }
  if (!frame.header)
    return frame;
  const FileSystem::CSVParser::Row footer{"<<", "END", "CSV", rows[*frame.header][3], ">>"};
  for (std::size_t r = rows.size(); r-- > *frame.header + 2;)
    if (rows[r] == footer)
    {
      frame.footer = r;
      break;
    }
  return frame;
}

// What a value's text would do that its reader lets through: text after the number, NaN or an infinity, or
// digits that the six-decimal format of the writers drops.
std::optional<std::string> numberProblem(const std::string& text, AttributeType type, bool roundTrip)
{
  if (type != AttributeType::Int && type != AttributeType::Float && type != AttributeType::Double)
    return std::nullopt;
  std::size_t used = 0;
  double value = 0;
  std::string fixed;
  double back = 0;
  try
  {
    if (type == AttributeType::Int)
    {
      Model::parseInt(text, &used);
      return std::nullopt;
    }
    if (type == AttributeType::Float)
    {
      const float number = Model::parseFloat(text, &used);
      value = number;
      fixed = Model::toText(number);
      back = Model::parseFloat(fixed);
    }
    else
    {
      value = Model::parseDouble(text, &used);
      fixed = Model::toText(value);
      back = Model::parseDouble(fixed);
    }
  }
  catch (const std::exception&)
  {
    return std::nullopt; // the reader reports it
  }
  if (std::isnan(value))
    return std::string("is NaN: it travels, but every computation it enters gives NaN");
  if (std::isinf(value))
    return std::string("is infinite: it travels, but no solver quantity is");
  if (back != value && !roundTrip)
    return "is written " + fixed +
           " by the default six-decimal number format, which reads back as another "
           "number: the value changes when the model is written again (use the "
           "round-trip number format, or a unit that needs fewer decimals)";
  return std::nullopt;
}

// "<path>, row <n>: <text>" of the readers becomes {n, text}; other messages concern the whole file.
Problem fromReader(const std::string& path, const std::string& message)
{
  const std::string prefix = path + ", row ";
  if (message.rfind(prefix, 0) == 0)
  {
    const std::size_t colon = message.find(": ", prefix.size());
    const std::string digits = message.substr(prefix.size(), colon - prefix.size());
    if (colon != std::string::npos && !digits.empty() && std::all_of(digits.begin(), digits.end(), ::isdigit))
      return {std::stoul(digits), message.substr(colon + 2)};
  }
  return {0, message};
}

// The solution-control paths a data file must carry for its reader to know its iteration and time: for a
// definition file, the iteration and the transient flag, and the time and time step of a transient solve;
// for a data file, those of the four that its definition has.
std::vector<std::string> requiredControlPaths(const Model::Entity* control, bool transient)
{
  const Model::SolutionControlDefinition definition;
  const std::vector<Model::AttributePath> all{definition.getIterationPath(), definition.getIsTransientPath(),
                                              definition.getTimePath(), definition.getTimeStepPath()};
  std::vector<std::string> paths;
  for (std::size_t p = 0; p < all.size(); ++p)
    if (control ? control->hasAttribute(all[p]) : (p < 2 || transient))
      paths.push_back(all[p].toString());
  return paths;
}

std::string joined(const std::vector<std::string>& items)
{
  std::string text;
  for (const auto& item : items)
    text += (text.empty() ? "" : ", ") + item;
  return text;
}

} // namespace

ValidateCommand::ValidateCommand()
    : Command(
          "validate",
          "Report every problem of a definition file (def.csv) or a data file (out.csv, in.csv), each as "
          "file:row: message. Besides the reader's own messages (values read strictly as numbers of their "
          "type, every faulty row reported, not only the first), it reports what a reader would silently "
          "accept or alter: text after a number (50OO, 5000 W/m2, 2.5 for an Int), values the six-decimal "
          "number format would change, NaN and infinities, a UTF-8 byte-order mark, ';' as separator, "
          "missing solution-control rows. Exits 1 on any problem.",
          "  ombrix validate /tmp/exchange/def.csv\n"
          "  ombrix validate /tmp/exchange/in.csv --reader solver --skip-read-only --json")
{
}

void ValidateCommand::do_addOptions(CLI::App& command)
{
  command.add_option("FILE", m_file, "the definition or data file")->required()->check(CLI::ExistingFile);
  command
      .add_option("--def", m_definition, "the definition file of a data file (default: def.csv beside it)")
      ->check(CLI::ExistingFile);
  command
      .add_option(
          "--reader", m_reader,
          "read a data file as the solver reads in.csv (values need write access) or as the client reads "
          "out.csv (default: by the file name, solver for in*.csv)")
      ->check(CLI::IsMember({"solver", "client"}));
  command.add_flag("--skip-read-only", m_skipReadOnly,
                   "pass over rows of read-only attributes, as a solver does that reads a whole model back");
  command.add_flag(
      "--round-trip", m_roundTrip,
      "the exchange writes numbers in the round-trip form (as the examples and the Python client "
      "do): do not report values that the default six-decimal format would change");
  command.add_flag("--json", m_json, "print the problems as one JSON object");
}

std::vector<Problem> ValidateCommand::validate(bool& definition) const
{
  std::vector<Problem> problems;
  const std::string text = ExchangeFiles::readText(m_file);
  if (text.rfind("\xEF\xBB\xBF", 0) == 0)
    problems.push_back({1,
                        "The file begins with a UTF-8 byte-order mark, which hides its header row from the "
                        "reader: save it as UTF-8 without byte-order mark"});

  FileSystem::CSVParser splitter;
  Table rows;
  try
  {
    splitter.parseFile(m_file);
    rows = splitter.rows();
  }
  catch (const std::exception& error)
  {
    problems.push_back({0, error.what()});
  }
  const Frame frame = findFrame(rows);
  for (std::size_t r = 0; r < rows.size() && (!frame.header || r < *frame.header); ++r)
    if (rows[r].size() == 1 && rows[r][0].find("<<;START;CSV") != std::string::npos)
      problems.push_back({r + 1,
                          "Fields are separated by ';': the exchange files separate them with ',' (as a "
                          "spreadsheet saves them with ';' as its list separator)"});

  const std::string name = std::filesystem::path(m_file).filename().string();
  definition = name == "def.csv" || ModelFiles::isDefinitionFile(m_file);
  // Every problem the reader reports, not only the first.
  std::vector<std::string> reported;
  const auto read = [&](CSVFileParserBase& parser)
  {
    parser.setFatalErrors(false);
    parser.setStrictNumbers(true);
    parser.setErrorObserver([&](const std::string& message) { reported.push_back(message); });
    try
    {
      parser.parseFile(m_file);
    }
    catch (const std::exception& error)
    {
      if (std::find(reported.begin(), reported.end(), error.what()) == reported.end())
        reported.push_back(error.what());
    }
  };
  Model::EntityCollection collection;
  if (definition)
  {
    CSVDefinitionFileParser reader(collection);
    reader.setChronologies(ModelFiles::allChronologies());
    read(reader);
  }
  else
  {
    const std::string definitionFile = ModelFiles::definitionFor(m_file, m_definition);
    try
    {
      ModelFiles::readDefinition(definitionFile, collection);
    }
    catch (const ToolError& error)
    {
      throw ToolError("its definition file does not read: " + std::string(error.what()));
    }
    CSVDataFileParser reader(collection, ModelFiles::allChronologies());
    const std::string readerSide = !m_reader.empty()          ? m_reader
                                   : name.rfind("in", 0) == 0 ? "solver"
                                                              : "client";
    reader.setKorvanSDK(readerSide == "client");
    reader.setSkipReadOnly(m_skipReadOnly);
    read(reader);
  }
  for (const std::string& message : reported)
  {
    Problem problem = fromReader(m_file, message);
    // The frame errors name no row: place them where the reader looked.
    if (problem.row == 0 && message == "Missing FileHeader")
      problem.row = frame.header ? *frame.header + 1 : 1;
    else if (problem.row == 0 && message == "Unsupported file version." && frame.header)
      problem.row = *frame.header + 1;
    else if (problem.row == 0 && message == "Missing FileFooter")
      problem.row = rows.size();
    problems.push_back(problem);
  }

  // What the reader lets through, row by row.
  if (frame.header && *frame.header + 1 < rows.size())
  {
    const auto& header = rows[*frame.header + 1];
    const auto column = [&](const std::string& wanted) -> std::optional<std::size_t>
    {
      for (std::size_t c = header.size(); c-- > 0;)
        if (header[c] == wanted)
          return c;
      return std::nullopt;
    };
    const auto idColumn = column("EntityID"), typeColumn = column("EntityType"),
               pathColumn = column("AttributePath"), kindColumn = column("Type");
    auto nameColumn = column("EntityName");
    if (!nameColumn)
      nameColumn = column("FullEntityName");
    std::vector<std::size_t> valueColumns;
    for (std::size_t c = 0; c < header.size(); ++c)
      if (header[c] == "InitValue" ||
          (header[c].size() > 5 && header[c].compare(header[c].size() - 5, 5, "Value") == 0))
        valueColumns.push_back(c);

    const Model::SolutionControlDefinition controlDefinition;
    const std::size_t end = frame.footer.value_or(rows.size());
    std::map<std::string, std::size_t> controlRows; // path -> row number
    std::optional<bool> transient;
    for (std::size_t r = *frame.header + 2; r < end; ++r)
    {
      const auto& row = rows[r];
      if (row.size() != header.size() || !idColumn || !pathColumn)
        continue;
      const std::string& path = row[*pathColumn];
      AttributeType type = AttributeType::Unknown;
      if (kindColumn)
        type = KorvanSDK::attributeTypeFromString(row[*kindColumn], AttributeType::Unknown);
      else
      {
        try
        {
          if (const Model::Entity* entity = collection.getEntity(Model::EntityID::fromString(row[*idColumn])))
            if (const Model::Attribute* attribute = entity->findAttribute(Model::AttributePath(path)))
              type = attribute->getAttributeType(true);
        }
        catch (const std::exception&)
        {
          // The reader reports a malformed ID or path.
        }
      }
      if (typeColumn && nameColumn && row[*typeColumn] == controlDefinition.getSolutionControlType() &&
          row[*nameColumn] == controlDefinition.getSolutionControlName())
      {
        controlRows.emplace(path, r + 1);
        if (path == controlDefinition.getIsTransientPath().toString())
          for (const std::size_t c : valueColumns)
            if (!row[c].empty())
            {
              try
              {
                transient = Model::parseBool(row[c]);
              }
              catch (const std::exception&)
              {
              }
            }
      }
      for (const std::size_t c : valueColumns)
        if (!row[c].empty())
          if (const auto problem = numberProblem(row[c], type, m_roundTrip))
            problems.push_back({r + 1, header[c] + " of " + row[*idColumn] + ":" + path + " ('" + row[c] +
                                           "') " + *problem});
    }

    // The solution-control rows that give a data file its iteration and time.
    const Model::Entity* control = collection.getEntity(controlDefinition.getSolutionControlType(),
                                                        controlDefinition.getSolutionControlName());
    const std::size_t firstRow = *frame.header + 3;
    if (definition && controlRows.empty())
      problems.push_back({firstRow, "No solution-control entity ('" +
                                        controlDefinition.getSolutionControlType() + "' '" +
                                        controlDefinition.getSolutionControlName() +
                                        "'): data files will carry no iteration or time; define " +
                                        joined(requiredControlPaths(nullptr, true))});
    else if (definition || control)
    {
      std::vector<std::string> missing;
      for (const std::string& path :
           requiredControlPaths(definition ? nullptr : control, transient.value_or(false)))
        if (!controlRows.count(path))
          missing.push_back(path);
      if (!missing.empty())
        problems.push_back({controlRows.empty() ? firstRow
                                                : std::min_element(controlRows.begin(), controlRows.end(),
                                                                   [](const auto& a, const auto& b)
                                                                   { return a.second < b.second; })
                                                      ->second,
                            "Missing solution-control rows: " + joined(missing) + " of '" +
                                controlDefinition.getSolutionControlType() + "' '" +
                                controlDefinition.getSolutionControlName() + "' are required"});
    }
  }
  std::stable_sort(problems.begin(), problems.end(),
                   [](const Problem& a, const Problem& b) { return a.row < b.row; });
  return problems;
}

int ValidateCommand::do_run()
{
  bool definition = false;
  const std::vector<Problem> problems = validate(definition);
  std::string out;
  if (m_json)
  {
    out = "{\"file\": " + Console::jsonString(m_file) + ", \"kind\": \"" +
          (definition ? "definition" : "data") + "\", \"problems\": [";
    for (std::size_t p = 0; p < problems.size(); ++p)
      out += std::string(p ? ", " : "") + "{\"row\": " + std::to_string(problems[p].row) +
             ", \"message\": " + Console::jsonString(problems[p].message) + "}";
    out += "], \"count\": " + std::to_string(problems.size()) + "}\n";
  }
  else
  {
    for (const Problem& problem : problems)
      out += m_file + ":" + (problem.row ? std::to_string(problem.row) + ":" : std::string()) + " " +
             problem.message + "\n";
    if (problems.empty())
      out = m_file + ": no problems\n";
  }
  std::fputs(out.c_str(), stdout);
  return problems.empty() ? exitFine : exitProblems;
}

} // namespace Ombrix::Tools

#include "Recording.h"

#include "ombrix/model/Attribute.h"
#include "ombrix/model/ValueText.h"
#include "ombrix/platform/CSVParser.h"
#include "ombrix/sdk/Chronology.h"

#include "ModelFiles.h"
#include "ToolError.h"

#include <cmath>

namespace Ombrix::Tools
{

using KorvanSDK::AttributeType;
using KorvanSDK::Chronology;

std::size_t Recording::column(const std::string& name, bool numeric)
{
  const auto [found, added] = m_index.emplace(name, m_columns.size());
  if (added)
  {
    m_columns.push_back({name, numeric});
    for (Row& row : m_rows)
      row.values.resize(m_columns.size());
  }
  return found->second;
}

void Recording::addFile(const std::string& direction, const CSVDataFileParser& parser)
{
  const CSVSimulationTime time = parser.getFileSimulationTime();
  const double seconds = time.isTransient() ? time.getTime() : std::numeric_limits<double>::quiet_NaN();
  const auto sameTime = [&](const Row& row)
  {
    return row.iteration == time.getIteration() &&
           (std::isnan(row.time) ? std::isnan(seconds) : row.time == seconds);
  };
  Row* row = nullptr;
  for (auto it = m_rows.rbegin(); it != m_rows.rend() && !row; ++it)
    if (sameTime(*it))
      row = &*it;
  if (!row)
  {
    m_rows.push_back(Row{time.getIteration(), seconds, std::vector<std::string>(m_columns.size())});
    row = &m_rows.back();
  }
  (direction == "out" ? row->hasOut : row->hasIn) = true;
  for (const auto& applied : parser.getAppliedValues())
  {
    const Model::Attribute& attribute = *applied.attribute;
    std::string name = direction + ":" + Model::toString(attribute.getEntityIDAndAttributePath());
    if (applied.chronology != Chronology::Current)
      name += "@" + KorvanSDK::chronologyToString(applied.chronology);
    const bool numeric = attribute.getAttributeType(false) != AttributeType::String;
    // column() may widen every row, but it adds no row: `row` stays valid.
    const std::size_t c = column(name, numeric);
    row->values[c] = ModelFiles::valueText(attribute, applied.chronology);
  }
  if (direction == "in")
    row->values[column(endColumn, true)] = parser.isEndRequested() ? "1" : "0";
}

Recording::Place Recording::parseColumn(const std::string& name)
{
  Place place;
  const std::size_t idStart = name.find(':') + 1;
  const std::size_t idEnd = name.find(':', idStart);
  if (idStart == 0 || idEnd == std::string::npos)
    throw ToolError("'" + name + "' is not a value column (<direction>:<ID>:<path>)");
  place.id = name.substr(idStart, idEnd - idStart);
  place.path = name.substr(idEnd + 1);
  const std::size_t at = place.path.rfind('@');
  if (at != std::string::npos)
  {
    const std::string word = place.path.substr(at + 1);
    const Chronology chronology = KorvanSDK::chronologyFromString(word, Chronology::Current);
    if (KorvanSDK::chronologyToString(chronology) == word)
    {
      place.chronology = chronology;
      place.path.erase(at);
    }
  }
  return place;
}

void Recording::saveCsv(const std::string& path) const
{
  FileSystem::CSVParser writer;
  auto& rows = writer.rows();
  rows.push_back({"iteration", "time"});
  for (const Column& column : m_columns)
    rows.back().push_back(column.name);
  for (const Row& row : m_rows)
  {
    rows.push_back(
        {std::to_string(row.iteration),
         std::isnan(row.time) ? std::string() : Model::toText(row.time, Model::NumberFormat::RoundTrip)});
    rows.back().insert(rows.back().end(), row.values.begin(), row.values.end());
    rows.back().resize(m_columns.size() + 2);
  }
  if (!writer.saveAs(path))
    throw ToolError("cannot write " + path);
}

Recording Recording::loadCsv(const std::string& path)
{
  FileSystem::CSVParser reader;
  try
  {
    reader.parseFile(path);
  }
  catch (const std::exception& error)
  {
    throw ToolError(error.what());
  }
  const auto& rows = reader.rows();
  if (rows.empty() || rows[0].size() < 2 || rows[0][0] != "iteration" || rows[0][1] != "time")
    throw ToolError(path +
                    " is not a recording: its first row does not begin with the columns iteration,time");
  Recording recording;
  for (std::size_t c = 2; c < rows[0].size(); ++c)
    recording.column(rows[0][c], true);
  for (std::size_t r = 1; r < rows.size(); ++r)
  {
    const auto& fields = rows[r];
    if (fields.empty())
      continue;
    if (fields.size() != rows[0].size())
      throw ToolError(path + ", row " + std::to_string(r + 1) + ": " + std::to_string(fields.size()) +
                      " fields, the header has " + std::to_string(rows[0].size()));
    Row row;
    try
    {
      std::size_t used = 0;
      row.iteration = Model::parseInt(fields[0], &used);
      if (used != fields[0].size() ||
          (!fields[1].empty() && (row.time = Model::parseDouble(fields[1], &used), used != fields[1].size())))
        throw std::invalid_argument("not a number");
    }
    catch (const std::exception&)
    {
      throw ToolError(path + ", row " + std::to_string(r + 1) + ": the iteration '" + fields[0] +
                      "' or time '" + fields[1] + "' is not a number");
    }
    row.values.assign(fields.begin() + 2, fields.end());
    recording.m_rows.push_back(std::move(row));
  }
  return recording;
}

} // namespace Ombrix::Tools

#if !defined(OMBRIX_WITH_HDF5)
void Ombrix::Tools::Recording::saveHdf5(const std::string&) const
{
  throw ToolError("this ombrix was built without HDF5 (Debian: libhdf5-dev): record with --format csv");
}
#endif

// Recording: the data files of an exchange as a time-series table, one row per iteration and one column per
// exchanged value. Columns are named "<direction>:<ID>:<path>" ("out" for the solver's values, "in" for the
// client's), with "@<Chronology>" after the path for a chronology other than Current; "in:end" is 1 where
// the client asked the solver to end. The first two columns are the iteration and the simulation time (empty
// for a steady solve). Saved as CSV (numbers in the shortest text that reads back the same, bools 1 or 0,
// an empty field where a value was not exchanged) and, when built with HDF5, as HDF5.
#pragma once

#include "ombrix/csv/CSVDataFileParser.h"

#include <limits>
#include <map>
#include <string>
#include <vector>

namespace Ombrix::Tools
{

class Recording
{
public:
  struct Column
  {
    std::string name;
    bool numeric = true;
  };
  struct Row
  {
    int iteration = -1;
    double time = std::numeric_limits<double>::quiet_NaN();
    std::vector<std::string> values; // by column; "" where not exchanged
    bool hasOut = false;
    bool hasIn = false;
  };

  static inline const std::string endColumn = "in:end";

  const std::vector<Column>& getColumns() const { return m_columns; }
  const std::vector<Row>& getRows() const { return m_rows; }

  // Adds the values that `parser` applied in its last read (recording of applied values on) of a file of
  // `direction` ("out" or "in"), to the row of the file's simulation time: the last row with that time, or
  // a new one.
  void addFile(const std::string& direction, const CSVDataFileParser& parser);

  // Throws ToolError when the file cannot be written or read, or is not a recording.
  void saveCsv(const std::string& path) const;
  static Recording loadCsv(const std::string& path);
  // The HDF5 layout is in RecordingHdf5.cpp. Throws ToolError in a build without HDF5.
  void saveHdf5(const std::string& path) const;

  // The ID and path text and the chronology of a value column's name after its "<direction>:".
  struct Place
  {
    std::string id;
    std::string path;
    KorvanSDK::Chronology chronology = KorvanSDK::Chronology::Current;
  };
  static Place parseColumn(const std::string& name);

private:
  std::size_t column(const std::string& name, bool numeric);

  std::vector<Column> m_columns;
  std::map<std::string, std::size_t> m_index;
  std::vector<Row> m_rows;
};

} // namespace Ombrix::Tools

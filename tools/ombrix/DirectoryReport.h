// DirectoryReport: what an exchange directory holds and where each side stands, as `inspect` and
// `watch` show it.
#pragma once

#include "ombrix/csv/CSVSimulationTime.h"

#include "Console.h"
#include "ExchangeFiles.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Ombrix::Tools
{

struct DirectoryReport
{
  // One side of the exchange: the solver (out.*) or the client (in.*).
  struct Side
  {
    explicit Side(std::string name) : role(std::move(name)) {}
    std::string role;
    std::optional<int> state; // the number in its state file
    std::string stateName;
    std::optional<double> heartbeatAge;          // seconds
    std::optional<CSVSimulationTime> latestTime; // of its latest data file
    std::string latestFile;
    bool finished = false; // Finished or Failed: its heartbeat may stop
  };
  // A line about one file (or the directory, with an empty file name).
  struct Finding
  {
    std::string file;
    Console::Tone tone = Console::Tone::Plain;
    std::string text;
  };

  std::string directory;
  int gracePeriod = 30;
  std::vector<ExchangeFiles::Entry> entries;
  std::map<std::string, Finding> details; // what each file holds, by name
  std::vector<Finding> findings;          // problems and notes
  Side solver{"solver"};
  Side client{"client"};
  std::size_t entities = 0, attributes = 0; // of def.csv

  bool isConsistent() const;
  // The report as plain text (coloured when `colour`).
  std::string render(bool colour) const;
  // One line: the sides' states and latest iterations and the number of problems (no ages, so that it
  // changes only when the exchange moves).
  std::string summary() const;
};

} // namespace Ombrix::Tools

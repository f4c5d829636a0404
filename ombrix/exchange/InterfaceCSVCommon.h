// InterfaceCSVCommon: the exchange directory, the names of every file in it, and the counter that numbers
// the data files in sequential mode. A plain value; use one object from one thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/CSVFileMode.h"

#include <cstddef>
#include <optional>
#include <string>

namespace Ombrix
{

class OMBRIX_API InterfaceCSVCommon
{
public:
  // Keeps `directory` without its trailing slash; the root ("/", "//") is kept as "/". Only
  // CSVFileMode::Sequential engages the file counter (at 0) and only CSVFileMode::Automatic sets the
  // automatic flag; both stay as set here for the life of the object.
  explicit InterfaceCSVCommon(const std::string& directory = "", CSVFileMode mode = CSVFileMode::Fixed);

  // Bare file names in the exchange directory. The data file names carry `n` when it is given
  // ("in7.csv"), and are "in.csv" / "out.csv" otherwise.
  static std::string initFile();
  static std::string defFile();
  static std::string inFile(const std::optional<std::size_t>& n = std::nullopt);
  static std::string outFile(const std::optional<std::size_t>& n = std::nullopt);
  static std::string inStateFile();
  static std::string outStateFile();
  static std::string inAliveFile();
  static std::string outAliveFile();

  CSVFileMode getFileMode();
  // Changes the stored mode only: the counter and the automatic flag keep what the constructor gave
  // them, so switching to Sequential here does not number the data files.
  void setFileMode(CSVFileMode mode);
  // True when the object was constructed with CSVFileMode::Automatic.
  bool isAutoFileMode() const;

  // Both advance the one counter shared by the incoming and outgoing names; without a counter (any mode
  // but Sequential at construction) they do nothing. Advance once per exchanged data set.
  void increaseSequentialFileCounter(std::size_t step);
  void resetSequentialFileCounter();

protected:
  const std::string& getOmbrixPath() const;
  // The directory, "/", `name`. Always a forward slash: the platform converts it when the file is opened.
  // With an empty directory the result is "/" followed by the name; the root directory "/" gives
  // "/name" too, not "//name".
  std::string getFile(const std::string& name);
  // The data files, numbered when the counter is engaged.
  std::string getInFile();
  std::string getOutFile();
  std::string getInStateFile();
  std::string getOutStateFile();
  std::string getInAliveFile();
  std::string getOutAliveFile();
  std::string getDefFile();
  std::string getInitFile();

private:
  std::string m_ombrixPath;
  CSVFileMode m_fileMode;
  std::optional<std::size_t> m_sequentialFileCounter;
  bool m_autoFileMode;
};

} // namespace Ombrix

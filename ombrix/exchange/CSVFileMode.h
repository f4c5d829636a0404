// How the data files of the exchange are named: fixed "in.csv" / "out.csv", or numbered per exchanged
// data set ("in0.csv", "in1.csv", ...). The numbers are stored in the host's options, keep them.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string>

namespace Ombrix
{

enum class CSVFileMode : std::int32_t
{
  // The mode is settled during the exchange; the names stay fixed meanwhile.
  Automatic = -1,
  // "in.csv" and "out.csv". Every value other than -1 and 2 behaves like this one.
  Fixed = 1,
  // "in<n>.csv" and "out<n>.csv", n counted by InterfaceCSVCommon.
  Sequential = 2,
};

// "Automatic", "Sequential", and "Fixed" for every other value (they all name the files the fixed way).
OMBRIX_API std::string csvFileModeToString(CSVFileMode mode);
// Exact, case-sensitive match of those three texts; anything else gives `fallback`.
OMBRIX_API CSVFileMode csvFileModeFromString(const std::string& text,
                                             CSVFileMode fallback = CSVFileMode::Fixed);

} // namespace Ombrix

// TextTable: rows of cells printed in aligned columns of plain text; a cell may carry a colour, which
// does not count towards its width.
#pragma once

#include "Console.h"

#include <string>
#include <vector>

namespace Ombrix::Tools
{

class TextTable
{
public:
  struct Cell
  {
    std::string text;
    Console::Tone tone = Console::Tone::Plain;
  };

  explicit TextTable(std::vector<std::string> header);
  void addRow(std::vector<Cell> cells);
  // The table, one line per row, columns two blanks apart, the last column not padded.
  std::string render(bool colour) const;

private:
  std::vector<std::vector<Cell>> m_rows;
};

} // namespace Ombrix::Tools

#include "TextTable.h"

#include <algorithm>

namespace Ombrix::Tools
{

TextTable::TextTable(std::vector<std::string> header)
{
  std::vector<Cell> cells;
  for (auto& text : header)
    cells.push_back(Cell{std::move(text)});
  m_rows.push_back(std::move(cells));
}

void TextTable::addRow(std::vector<Cell> cells)
{
  m_rows.push_back(std::move(cells));
}

std::string TextTable::render(bool colour) const
{
  std::vector<std::size_t> widths;
  for (const auto& row : m_rows)
  {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t c = 0; c < row.size(); ++c)
      widths[c] = std::max(widths[c], row[c].text.size());
  }
  std::string out;
  for (const auto& row : m_rows)
  {
    std::string line;
    for (std::size_t c = 0; c < row.size(); ++c)
    {
      line += Console::paint(row[c].text, row[c].tone, colour);
      if (c + 1 < row.size())
        line += std::string(widths[c] - row[c].text.size() + 2, ' ');
    }
    out += line + "\n";
  }
  return out;
}

} // namespace Ombrix::Tools

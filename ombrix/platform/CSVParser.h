// FileSystem::CSVParser: splits CSV text into a table of rows of fields and joins such a table again.
// One thread at a time per parser.
//
// Reading: each line end ends a row; a final line without line end is still a row, and a line end at the
// very end of the text does not start another one. An empty line is a row with no fields. With quoting, a
// field that begins with a double quote runs to the matching closing quote: separators, CR and LF inside it
// are kept and a doubled quote stands for one quote. Quotes inside an unquoted field are ordinary characters.
// With acceptCRLF, a CR directly before a line end (or before the end of the text) is dropped outside quotes.
//
// Writing (with quoting): a field that contains the separator, a double quote, CR, LF or the line end (or,
// with trimFields, begins or ends with a blank or tab) is written between double quotes with each inner quote
// doubled; a row made of exactly one empty field is written as "" so that it differs from an empty row.
// Then parsing what was written gives back exactly the rows that were written. Without quoting, fields are
// written as they are and such fields do not survive the round trip.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <string>
#include <string_view>
#include <vector>

namespace FileSystem
{

class OMBRIX_API CSVParser
{
public:
  using Row = std::vector<std::string>;
  using Table = std::vector<Row>;

  // `trimFields` removes blanks and tabs around unquoted fields (and around the quotes of quoted ones) when
  // reading; `skipEmptyRows` drops rows with no fields when reading, in addition to the flag of each parse
  // call. Throws std::invalid_argument when the separator equals the line end, or, with quoting, when either
  // of them is a double quote.
  CSVParser(char separator = ',', bool trimFields = false, bool skipEmptyRows = false, char lineEnd = '\n',
            bool quoting = true);

  // Reads the whole file and splits it; the rows replace rows(), or are appended after them with `append`.
  // A parser keeps the rows it replaces and reuses their storage for the next parse, so that a parser
  // used for every iteration's file does not allocate its rows anew each time (clear() releases them).
  // Returns true. Throws std::runtime_error when the file cannot be read ("Cannot read CSV file '<path>'")
  // and when the text is malformed (a quoted field that is not closed, or text after a closing quote);
  // rows() is left as it was when it throws.
  bool parseFile(const std::string& path, bool append = false, bool skipEmptyRows = false,
                 bool acceptCRLF = true);
  // The same on text in memory; messages name "CSV text" instead of the file.
  bool parseText(std::string_view text, bool append = false, bool skipEmptyRows = false,
                 bool acceptCRLF = true);

  // With `reject`, parsing throws std::runtime_error for text holding a NUL byte ("<source> holds a NUL
  // byte at offset <n>, ...") and writing throws std::invalid_argument for rows holding one ("CSV row <r>,
  // field <f> holds a NUL byte, ... (the row begins <first fields>)"): for text formats, where a NUL byte
  // only comes from a file that was zero-filled instead of written (a power loss). Off by default.
  void setRejectNul(bool reject) { m_rejectNul = reject; }

  // Writes all rows in one go, replacing the file as a whole through a temporary file (see
  // AtomicFileWriter), or appending to it. Returns false when the file cannot be written; a replaced file
  // is then left as it was.
  bool saveAs(const std::string& path, bool append = false) const;
  // The text that saveAs writes.
  std::string toText() const;

  Table& rows() { return m_rows; }
  const Table& rows() const { return m_rows; }
  // Drops the rows and the storage kept for the next parse.
  void clear()
  {
    m_rows.clear();
    m_spare.clear();
  }

private:
  void split(std::string_view text, Table& out, bool skipEmptyRows, bool acceptCRLF,
             const std::string& source, std::size_t first) const;
  void parseInto(std::string_view text, bool append, bool skipEmptyRows, bool acceptCRLF,
                 const std::string& source);
  bool needsQuotes(std::string_view field) const;
  void appendRow(std::string& out, const Row& row) const;
  [[noreturn]] void throwNulInRow() const;

  char m_separator;
  bool m_trimFields;
  bool m_skipEmptyRows;
  char m_lineEnd;
  bool m_quoting;
  bool m_rejectNul = false;
  Table m_rows;
  Table m_spare; // the rows of the parse before last, kept for their storage
};

} // namespace FileSystem

// The two encodings of FileSystem::DataOStream / DataIStream and the names allowed for their sections and
// keys. The grammars below are the file formats that the streams write and read.
//
// Binary kind (all integers little-endian, two's complement):
//   stream        = item*
//   item          = section-begin | section-end | key | value
//   section-begin = 0x01 string          (the section name)
//   section-end   = 0x02                 (closes the innermost open section)
//   key           = 0x03 string          (the key name)
//   value         = bool | intN | float | double | string
//   bool          = one byte 0x00 or 0x01
//   intN          = N/8 bytes            (int8 .. uint64 by their width)
//   float, double = the IEEE 754 bit pattern as uint32 / uint64
//   string        = uint64 length, then length bytes (nothing more when empty)
// Values carry no tag: the reader must ask for the types in the order they were written.
//
// Text kind (one item per line, indented by two blanks per open section):
//   section-begin = indent "<" name ">" LF
//   section-end   = indent "</" name ">" LF
//   key           = indent name, followed by the values written after it on the same line
//   value         = " " token, appended to the current key or value line; a value written right after a
//                   section tag starts a line of its own
//   bool          = "true" | "false"     (reading also accepts "1" | "0")
//   integer       = decimal, "-" for negatives
//   float, double = shortest text that reads back to the same value (std::to_chars), "inf", "-inf", "nan"
//   string        = '"' { byte other than '\' and '"' | '\\' | '\"' } '"'   (blanks, LF and NUL kept)
// Reading treats any run of blanks, tabs, CR and LF between items as a separator and does not check
// indentation or line breaks; every token must end at such a run or at the end of the data.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <cstdint>
#include <string_view>

namespace FileSystem
{

enum class DataStreamKind : std::int32_t
{
  Binary = 0,
  Text = 1
};

// Tag bytes of the binary kind.
enum class DataStreamTag : std::uint8_t
{
  SectionBegin = 0x01,
  SectionEnd = 0x02,
  Key = 0x03
};

// True when `name` can name a section or key: not empty, and free of control characters, blanks, DEL and
// the characters < > / " \ so that the text kind can tell names, tags and values apart. Both kinds apply the
// same rule, so that a stream that works in one kind works in the other.
inline bool isValidDataStreamName(std::string_view name)
{
  if (name.empty())
    return false;
  for (const char c : name)
  {
    const auto byte = static_cast<unsigned char>(c);
    if (byte <= 0x20 || byte == 0x7f || c == '<' || c == '>' || c == '/' || c == '"' || c == '\\')
      return false;
  }
  return true;
}

} // namespace FileSystem

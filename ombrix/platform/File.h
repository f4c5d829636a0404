// Questions about single files, and the narrow file streams used for the small exchange files.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <fstream>
#include <locale>
#include <string>

namespace FileSystem
{

// Narrow file streams for the small exchange files; paths use forward slashes on every system. Numbers
// are written and read in the classic "C" form whatever locale the host made global, so that both sides
// of an exchange read what the other wrote ("21003", never "21,003").
class ZQifstream : public std::ifstream
{
public:
  ZQifstream() { imbue(std::locale::classic()); }
  explicit ZQifstream(const std::string& path, std::ios::openmode mode = std::ios::in)
  {
    imbue(std::locale::classic());
    open(path, mode);
  }
};

class ZQofstream : public std::ofstream
{
public:
  ZQofstream() { imbue(std::locale::classic()); }
  explicit ZQofstream(const std::string& path, std::ios::openmode mode = std::ios::out)
  {
    imbue(std::locale::classic());
    open(path, mode);
  }
};

class OMBRIX_API File
{
public:
  // True when `path` names an existing regular file (or a link to one). Never throws.
  static bool exists(const std::string& path);
  // Removes the file if it exists; true when no file is left behind. Never throws.
  static bool remove(const std::string& path);
  // Writes `content` to a temporary name beside `path` and renames it into place, so that a reader
  // sees either the old or the new content in full. Returns false when writing or renaming fails.
  static bool writeAtomically(const std::string& path, const std::string& content);
  // Replaces `content` with the whole content of the regular file `path`, read with one read call. Returns
  // false, leaving `content` empty, when `path` is not a readable regular file.
  static bool readAll(const std::string& path, std::string& content);
};

} // namespace FileSystem

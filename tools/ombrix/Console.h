// Console: where a command's results (stdout) and diagnostics (stderr) go, and whether they are coloured:
// only on a terminal, and never when NO_COLOR is set. One thread at a time.
#pragma once

#include <cstdio>
#include <string>

namespace Ombrix::Tools
{

class Console
{
public:
  enum class Tone
  {
    Plain,
    Good,    // green
    Note,    // yellow
    Problem, // red
  };

  // Colour for `stream` when it is a terminal and the environment has no NO_COLOR.
  static bool wantsColour(std::FILE* stream);
  static bool isTerminal(std::FILE* stream);

  // `text` wrapped in the colour of `tone` when `colour` is on.
  static std::string paint(const std::string& text, Tone tone, bool colour);
  // `text` as a JSON string literal, quotes included.
  static std::string jsonString(const std::string& text);
  // A duration in seconds for people: "0.4 s", "12 s", "3 min 5 s", "2 h 4 min", "3 d".
  static std::string duration(double seconds);
  // A size in bytes for people: "812 B", "12.4 kB", "3.1 MB".
  static std::string size(unsigned long long bytes);
};

} // namespace Ombrix::Tools

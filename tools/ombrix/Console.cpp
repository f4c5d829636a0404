#include "Console.h"

#include <cmath>
#include <cstdlib>
#include <unistd.h>

namespace Ombrix::Tools
{

bool Console::isTerminal(std::FILE* stream)
{
  return ::isatty(::fileno(stream)) == 1;
}

bool Console::wantsColour(std::FILE* stream)
{
  const char* noColour = std::getenv("NO_COLOR");
  return isTerminal(stream) && (noColour == nullptr || *noColour == '\0');
}

std::string Console::paint(const std::string& text, Tone tone, bool colour)
{
  if (!colour || tone == Tone::Plain)
    return text;
  const char* code = tone == Tone::Good ? "32" : tone == Tone::Note ? "33" : "31";
  return std::string("\033[") + code + "m" + text + "\033[0m";
}

std::string Console::jsonString(const std::string& text)
{
  std::string out = "\"";
  for (const char c : text)
  {
    switch (c)
    {
    case '"':
      out += "\\\"";
      break;
    case '\\':
      out += "\\\\";
      break;
    case '\n':
      out += "\\n";
      break;
    case '\t':
      out += "\\t";
      break;
    case '\r':
      out += "\\r";
      break;
    default:
      if (static_cast<unsigned char>(c) < 0x20)
      {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
        out += escaped;
      }
      else
        out += c;
    }
  }
  return out + "\"";
}

std::string Console::duration(double seconds)
{
  char text[64];
  const double s = std::abs(seconds);
  const char* sign = seconds < 0 ? "-" : "";
  if (s < 10)
    std::snprintf(text, sizeof text, "%s%.1f s", sign, s);
  else if (s < 60)
    std::snprintf(text, sizeof text, "%s%.0f s", sign, std::floor(s));
  else if (s < 3600)
    std::snprintf(text, sizeof text, "%s%d min %d s", sign, static_cast<int>(s / 60),
                  static_cast<int>(s) % 60);
  else if (s < 86400)
    std::snprintf(text, sizeof text, "%s%d h %d min", sign, static_cast<int>(s / 3600),
                  static_cast<int>(s / 60) % 60);
  else
    std::snprintf(text, sizeof text, "%s%.0f d", sign, std::floor(s / 86400));
  return text;
}

std::string Console::size(unsigned long long bytes)
{
  char text[32];
  if (bytes < 1000)
    std::snprintf(text, sizeof text, "%llu B", bytes);
  else if (bytes < 1000ULL * 1000)
    std::snprintf(text, sizeof text, "%.1f kB", static_cast<double>(bytes) / 1e3);
  else if (bytes < 1000ULL * 1000 * 1000)
    std::snprintf(text, sizeof text, "%.1f MB", static_cast<double>(bytes) / 1e6);
  else
    std::snprintf(text, sizeof text, "%.1f GB", static_cast<double>(bytes) / 1e9);
  return text;
}

} // namespace Ombrix::Tools

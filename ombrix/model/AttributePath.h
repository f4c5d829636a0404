// The address of an attribute inside an entity: an ordered sequence of segment names, written joined by
// "." ("Results.Time"). There is no escaping: a segment never contains ".". A small regular value type.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <compare>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace FileSystem
{
class DataOStream;
class DataIStream;
} // namespace FileSystem

namespace Ombrix::Model
{

class OMBRIX_API AttributePath
{
public:
  using Segments = std::vector<std::string>;
  static constexpr char pathSeparator = '.';

  AttributePath() = default;
  AttributePath(const AttributePath&) = default;
  AttributePath(AttributePath&&) noexcept = default;
  // Text is split at every "."; empty segments are kept except a trailing one ('a..b' has three
  // segments, '.a' two, 'a.' one). A null pointer or zero length gives the empty path.
  AttributePath(const std::string& text);
  AttributePath(const char* text);
  AttributePath(const char* text, std::uint64_t length);
  // Each element is parsed as text and the results appended in order.
  AttributePath(std::initializer_list<std::string> texts);

  AttributePath& operator=(const AttributePath&) = default;
  AttributePath& operator=(AttributePath&&) noexcept = default;
  AttributePath& operator=(const std::string& text);
  AttributePath& operator=(const char* text);

  // Segments joined by "."; leading empty segments leave no trace (['','a'] gives 'a').
  std::string toString() const;

  bool startsWith(const AttributePath& prefix) const;
  bool endsWith(const AttributePath& suffix);

  // Segments [pos, pos + count), clamped to the end; empty when pos is past the end.
  AttributePath subPath(std::size_t pos, std::size_t count) const;
  // Preconditions: not empty.
  AttributePath& pop_front();
  AttributePath& pop_back();
  AttributePath& push_front(const AttributePath& path);
  void push_back(const AttributePath& path);
  AttributePath& operator/=(const AttributePath& path);
  AttributePath operator/(const AttributePath& path);

  Segments::iterator begin() { return m_segments.begin(); }
  Segments::iterator end() { return m_segments.end(); }
  Segments::const_iterator begin() const { return m_segments.begin(); }
  Segments::const_iterator end() const { return m_segments.end(); }
  Segments::const_iterator cbegin() const { return m_segments.cbegin(); }
  Segments::const_iterator cend() const { return m_segments.cend(); }
  Segments::reverse_iterator rbegin() { return m_segments.rbegin(); }
  Segments::reverse_iterator rend() { return m_segments.rend(); }
  Segments::const_reverse_iterator rbegin() const { return m_segments.rbegin(); }
  Segments::const_reverse_iterator rend() const { return m_segments.rend(); }
  Segments::const_reverse_iterator crbegin() const { return m_segments.crbegin(); }
  Segments::const_reverse_iterator crend() const { return m_segments.crend(); }

  std::size_t size() const { return m_segments.size(); }
  bool empty() const { return m_segments.empty(); }
  const std::string& front() const { return m_segments.front(); }
  const std::string& back() const { return m_segments.back(); }
  const std::string& operator[](std::size_t i) const { return m_segments[i]; }
  const Segments& segments() const { return m_segments; }
  // A path of exactly these segments (no parsing).
  static AttributePath fromSegments(Segments segments);

private:
  void appendParsed(const char* text, std::size_t length);

  Segments m_segments;
};

OMBRIX_API bool operator==(const AttributePath& a, const AttributePath& b);
OMBRIX_API bool operator!=(const AttributePath& a, const AttributePath& b);
// Not the strict form of <=>: true as soon as `a` runs out, so p < p is true and a prefix is less than
// every path it starts. Containers that need a strict weak order must use <=>.
OMBRIX_API bool operator<(const AttributePath& a, const AttributePath& b);
// Ordinary lexicographic comparison of the segments.
OMBRIX_API std::strong_ordering operator<=>(const AttributePath& a, const AttributePath& b);

// Streams carry the segments exactly (empty segments included).
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const AttributePath& path);
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AttributePath& path);

} // namespace Ombrix::Model

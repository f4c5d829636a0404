#include "ombrix/model/AttributePath.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include <algorithm>
#include <cstring>

namespace Ombrix::Model
{

AttributePath::AttributePath(const std::string& text)
{
  appendParsed(text.data(), text.size());
}

AttributePath::AttributePath(const char* text)
{
  if (text)
    appendParsed(text, std::strlen(text));
}

AttributePath::AttributePath(const char* text, std::uint64_t length)
{
  if (text)
    appendParsed(text, static_cast<std::size_t>(length));
}

AttributePath::AttributePath(std::initializer_list<std::string> texts)
{
  for (const auto& text : texts)
    appendParsed(text.data(), text.size());
}

AttributePath& AttributePath::operator=(const std::string& text)
{
  m_segments.clear();
  appendParsed(text.data(), text.size());
  return *this;
}

AttributePath& AttributePath::operator=(const char* text)
{
  m_segments.clear();
  if (text)
    appendParsed(text, std::strlen(text));
  return *this;
}

void AttributePath::appendParsed(const char* text, std::size_t length)
{
  std::size_t start = 0;
  for (std::size_t i = 0; i < length; ++i)
  {
    if (text[i] == pathSeparator)
    {
      m_segments.emplace_back(text + start, i - start);
      start = i + 1;
    }
  }
  if (start < length)
    m_segments.emplace_back(text + start, length - start);
}

std::string AttributePath::toString() const
{
  std::string result;
  for (const auto& segment : m_segments)
  {
    if (!result.empty())
      result += pathSeparator;
    result += segment;
  }
  return result;
}

bool AttributePath::startsWith(const AttributePath& prefix) const
{
  if (prefix.size() > size())
    return false;
  return std::equal(prefix.m_segments.begin(), prefix.m_segments.end(), m_segments.begin());
}

bool AttributePath::endsWith(const AttributePath& suffix)
{
  if (suffix.size() > size())
    return false;
  return std::equal(suffix.m_segments.rbegin(), suffix.m_segments.rend(), m_segments.rbegin());
}

AttributePath AttributePath::subPath(std::size_t pos, std::size_t count) const
{
  AttributePath result;
  if (pos >= size())
    return result;
  const std::size_t last = count > size() - pos ? size() : pos + count;
  for (std::size_t i = pos; i < last; ++i)
    result.appendParsed(m_segments[i].data(), m_segments[i].size());
  return result;
}

AttributePath& AttributePath::pop_front()
{
  m_segments.erase(m_segments.begin());
  return *this;
}

AttributePath& AttributePath::pop_back()
{
  m_segments.pop_back();
  return *this;
}

AttributePath& AttributePath::push_front(const AttributePath& path)
{
  m_segments.insert(m_segments.begin(), path.m_segments.begin(), path.m_segments.end());
  return *this;
}

void AttributePath::push_back(const AttributePath& path)
{
  m_segments.insert(m_segments.end(), path.m_segments.begin(), path.m_segments.end());
}

AttributePath& AttributePath::operator/=(const AttributePath& path)
{
  push_back(path);
  return *this;
}

AttributePath AttributePath::operator/(const AttributePath& path)
{
  AttributePath result(*this);
  result.push_back(path);
  return result;
}

AttributePath AttributePath::fromSegments(Segments segments)
{
  AttributePath path;
  path.m_segments = std::move(segments);
  return path;
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const AttributePath& path)
{
  return out << path.segments();
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, AttributePath& path)
{
  AttributePath::Segments segments;
  in >> segments;
  if (in)
    path = AttributePath::fromSegments(std::move(segments));
  return in;
}

bool operator==(const AttributePath& a, const AttributePath& b)
{
  return a.segments() == b.segments();
}

bool operator!=(const AttributePath& a, const AttributePath& b)
{
  return !(a == b);
}

bool operator<(const AttributePath& a, const AttributePath& b)
{
  auto i = a.begin();
  auto j = b.begin();
  for (; i != a.end() && j != b.end(); ++i, ++j)
  {
    if (*i != *j)
      return *i < *j;
  }
  if (i == a.end())
    return true; // deliberately also when both have ended
  return false;
}

std::strong_ordering operator<=>(const AttributePath& a, const AttributePath& b)
{
  auto i = a.begin();
  auto j = b.begin();
  for (; i != a.end() && j != b.end(); ++i, ++j)
  {
    if (const int c = i->compare(*j); c != 0)
      return c < 0 ? std::strong_ordering::less : std::strong_ordering::greater;
  }
  if (i == a.end())
    return j == b.end() ? std::strong_ordering::equal : std::strong_ordering::less;
  return std::strong_ordering::greater;
}

} // namespace Ombrix::Model

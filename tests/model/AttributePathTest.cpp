#include "ombrix/model/AttributePath.h"

#include "support/Tables.h"

#include <cstring>
#include <string>
#include <vector>

using Ombrix::Model::AttributePath;
using Segments = std::vector<std::string>;

TEST(AttributePathTest, ParsingTable)
{
  // {text, segments, joined again}
  const std::tuple<const char*, Segments, const char*> cases[] = {
      {"", {}, ""},
      {"a", {"a"}, "a"},
      {"a.b", {"a", "b"}, "a.b"},
      {"a..b", {"a", "", "b"}, "a..b"},
      {".a", {"", "a"}, "a"},
      {"a.", {"a"}, "a"},
      {"..", {"", ""}, ""},
      {"Transient.Definition.Time Step",
       {"Transient", "Definition", "Time Step"},
       "Transient.Definition.Time Step"},
      {" a . b ", {" a ", " b "}, " a . b "},
  };
  for (const auto& [text, segments, joined] : cases)
  {
    SCOPED_TRACE(text);
    AttributePath assignedChars("x.y.z"), assignedString("x");
    assignedChars = text;
    assignedString = std::string(text);
    const AttributePath forms[] = {AttributePath(std::string(text)), AttributePath(text), assignedChars,
                                   assignedString,
                                   AttributePath((std::string(text) + ".z").c_str(), std::strlen(text))};
    for (const auto& path : forms)
      EXPECT_EQ(path.segments(), segments);
    EXPECT_EQ(forms[0].toString(), joined);
  }
}

TEST(AttributePathTest, NullLengthListAndSubPathForms)
{
  AttributePath assigned("x");
  assigned = static_cast<const char*>(nullptr);
  const AttributePath abc("a.b.c");
  const std::pair<AttributePath, Segments> cases[] = {
      {AttributePath(static_cast<const char*>(nullptr)), {}},
      {AttributePath(nullptr, 5), {}},
      {AttributePath("a.b", 0), {}},
      {AttributePath("a.bc", 3), {"a", "b"}},
      {assigned, {}},
      {AttributePath{"Results.Time", "x"}, {"Results", "Time", "x"}},
      {abc.subPath(5, 1), {}},
      {abc.subPath(3, 1), {}},
      {abc.subPath(1, 100), {"b", "c"}},
      {abc.subPath(0, 2), {"a", "b"}},
      {abc.subPath(2, 1), {"c"}},
      {abc.subPath(1, 0), {}},
      // Each segment is parsed again, and an empty one parses to nothing.
      {AttributePath("a..b").subPath(0, 3), {"a", "b"}},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i)
    EXPECT_EQ(cases[i].first.segments(), cases[i].second) << "row " << i;
  EXPECT_EQ(cases[5].first.front(), "Results");
  EXPECT_EQ(cases[5].first.back(), "x");
}

TEST(AttributePathTest, PrefixSuffixAndOrder)
{
  // {path, other, path starts with other, path ends with other, path < other, path <=> other}
  const std::tuple<const char*, const char*, bool, bool, bool, int> cases[] = {
      {"a.b.c", "", true, true, false, 1},
      {"", "", true, true, true, 0}, // < is not the strict form of <=>
      {"a", "a", true, true, true, 0},
      {"a.b.c", "a.b", true, false, false, 1},
      {"a.b.c", "b.c", false, true, true, -1},
      {"a.b.c", "a.b.c", true, true, true, 0},
      {"a.b.c", "b", false, false, true, -1},
      {"a.b.c", "a.b.c.d", false, false, true, -1},
      {"a.b.c", "x.a.b.c", false, false, true, -1},
      {"a.b.c", "a.bb", false, false, true, -1},
      {"a.b", "a", true, false, false, 1},
      {"a.c", "a.b", false, false, false, 1},
      {"ab", "abc", false, false, true, -1}, // a segment that is a proper prefix of the other is less
      {"B", "a", false, false, true, -1},    // byte order
  };
  for (const auto& [text, otherText, starts, ends, less, order] : cases)
  {
    SCOPED_TRACE(testing::Message() << text << " vs " << otherText);
    AttributePath path(text);
    const AttributePath other(otherText);
    EXPECT_EQ(path.startsWith(other), starts);
    EXPECT_EQ(path.endsWith(other), ends);
    EXPECT_EQ(path < other, less);
    const auto threeWay = path <=> other;
    EXPECT_EQ((threeWay < 0) ? -1 : (threeWay > 0 ? 1 : 0), order);
    EXPECT_EQ(path == other, order == 0);
    EXPECT_EQ(path != other, order != 0);
  }
}

TEST(AttributePathTest, Editing)
{
  AttributePath path("b.c");
  path.push_front(AttributePath("x.a"));
  EXPECT_EQ(path.toString(), "x.a.b.c");
  path.pop_front();
  EXPECT_EQ(path.toString(), "a.b.c");
  path.pop_back();
  EXPECT_EQ(path.toString(), "a.b");
  path.push_back(AttributePath("c.d"));
  EXPECT_EQ(path.toString(), "a.b.c.d");
  path /= AttributePath("e");
  EXPECT_EQ(path.toString(), "a.b.c.d.e");
  EXPECT_EQ((path / AttributePath("f")).toString(), "a.b.c.d.e.f");
  EXPECT_EQ(path.toString(), "a.b.c.d.e");
}

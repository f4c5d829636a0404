#include "ombrix/model/AttributePath.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

#include "support/TestSupport.h"

#include <string>
#include <vector>

using Ombrix::Model::AttributePath;
using Segments = std::vector<std::string>;

TEST(AttributePathTest, ParsingTable)
{
  struct Case
  {
    const char* text;
    Segments segments;
    const char* joined;
  };
  const Case cases[] = {
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
  for (const auto& c : cases)
  {
    SCOPED_TRACE(c.text);
    const AttributePath fromString{std::string(c.text)};
    const AttributePath fromChars(c.text);
    EXPECT_EQ(fromString.segments(), c.segments);
    EXPECT_EQ(fromChars.segments(), c.segments);
    EXPECT_EQ(fromString.toString(), c.joined);
    AttributePath assigned("x.y.z");
    assigned = c.text;
    EXPECT_EQ(assigned.segments(), c.segments);
  }
}

TEST(AttributePathTest, NullAndLengthForms)
{
  EXPECT_TRUE(AttributePath(static_cast<const char*>(nullptr)).empty());
  EXPECT_TRUE(AttributePath(nullptr, 5).empty());
  EXPECT_TRUE(AttributePath("a.b", 0).empty());
  EXPECT_EQ(AttributePath("a.bc", 3).segments(), (Segments{"a", "b"}));
  EXPECT_EQ(AttributePath().toString(), "");
}

TEST(AttributePathTest, InitializerListParsesEachElement)
{
  const AttributePath path{"Results.Time", "x"};
  EXPECT_EQ(path.segments(), (Segments{"Results", "Time", "x"}));
  EXPECT_EQ(path.front(), "Results");
  EXPECT_EQ(path.back(), "x");
}

TEST(AttributePathTest, SubPath)
{
  const AttributePath abc("a.b.c");
  EXPECT_TRUE(abc.subPath(5, 1).empty());
  EXPECT_TRUE(abc.subPath(3, 1).empty());
  EXPECT_EQ(abc.subPath(1, 100).segments(), (Segments{"b", "c"}));
  EXPECT_EQ(abc.subPath(0, 2).segments(), (Segments{"a", "b"}));
  EXPECT_EQ(abc.subPath(2, 1).segments(), (Segments{"c"}));
  EXPECT_TRUE(abc.subPath(1, 0).empty());
  // Each segment is parsed again, and an empty one parses to nothing.
  EXPECT_EQ(AttributePath("a..b").subPath(0, 3).segments(), (Segments{"a", "b"}));
}

TEST(AttributePathTest, StreamsCarryEmptySegments)
{
  for (auto kind : {FileSystem::DataStreamKind::Binary, FileSystem::DataStreamKind::Text})
  {
    const AttributePath original = AttributePath::fromSegments({"", "a", "", "b c"});
    FileSystem::DataOStream out(kind);
    out << original;
    FileSystem::DataIStream in(out.data(), kind);
    AttributePath read("x");
    in >> read;
    EXPECT_TRUE(in.good());
    EXPECT_EQ(read, original);
  }
}

TEST(AttributePathTest, StartsWithAndEndsWith)
{
  AttributePath abc("a.b.c");
  EXPECT_TRUE(abc.startsWith(AttributePath()));
  EXPECT_TRUE(abc.endsWith(AttributePath()));
  AttributePath empty;
  EXPECT_TRUE(empty.startsWith(AttributePath()));
  EXPECT_TRUE(empty.endsWith(AttributePath()));
  EXPECT_TRUE(abc.startsWith(AttributePath("a.b")));
  EXPECT_TRUE(abc.startsWith(abc));
  EXPECT_FALSE(abc.startsWith(AttributePath("b")));
  EXPECT_FALSE(abc.startsWith(AttributePath("a.b.c.d")));
  EXPECT_FALSE(abc.startsWith(AttributePath("a.bb")));
  EXPECT_TRUE(abc.endsWith(AttributePath("b.c")));
  EXPECT_FALSE(abc.endsWith(AttributePath("a.b")));
  EXPECT_FALSE(abc.endsWith(AttributePath("x.a.b.c")));
}

TEST(AttributePathTest, LessIsNotTheStrictFormOfThreeWay)
{
  const AttributePath a("a");
  const AttributePath ab("a.b");
  EXPECT_TRUE(a < a);
  EXPECT_TRUE(AttributePath() < AttributePath());
  EXPECT_TRUE((a <=> a) == 0);
  EXPECT_TRUE(a < ab);
  EXPECT_FALSE(ab < a);
  EXPECT_TRUE((a <=> ab) < 0);
  EXPECT_TRUE((ab <=> a) > 0);
  EXPECT_TRUE(AttributePath("a.b") < AttributePath("a.c"));
  EXPECT_FALSE(AttributePath("a.c") < AttributePath("a.b"));
  // A segment that is a proper prefix of the other is less.
  EXPECT_TRUE((AttributePath("ab") <=> AttributePath("abc")) < 0);
  EXPECT_TRUE(AttributePath("ab") < AttributePath("abc"));
  EXPECT_TRUE((AttributePath("B") <=> AttributePath("a")) < 0); // byte order
  EXPECT_TRUE(a == AttributePath("a"));
  EXPECT_TRUE(a != ab);
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
  const AttributePath joined = path / AttributePath("f");
  EXPECT_EQ(joined.toString(), "a.b.c.d.e.f");
  EXPECT_EQ(path.toString(), "a.b.c.d.e");
}

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"
#include "ombrix/platform/File.h"

#include "support/TestSupport.h"

#include <bit>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

using FileSystem::DataIStream;
using FileSystem::DataOStream;
using FileSystem::DataStreamKind;

namespace WidgetSpace
{

// A model-like type with its own stream operators, also held through unique_ptr.
struct Widget
{
  std::int32_t size = 0;
  std::string label;
  bool operator==(const Widget&) const = default;
};

DataOStream& operator<<(DataOStream& out, const Widget& widget)
{
  out.beginSection("Widget");
  out.key("Size");
  out << widget.size;
  out.key("Label");
  out << widget.label;
  out.endSection();
  return out;
}

DataIStream& operator>>(DataIStream& in, Widget& widget)
{
  in.beginSection("Widget");
  in.key("Size");
  in >> widget.size;
  in.key("Label");
  in >> widget.label;
  in.endSection();
  return in;
}

DataOStream& operator<<(DataOStream& out, const std::unique_ptr<Widget>& widget)
{
  out << static_cast<bool>(widget);
  if (widget)
    out << *widget;
  return out;
}

DataIStream& operator>>(DataIStream& in, std::unique_ptr<Widget>& widget)
{
  bool present = false;
  if (!(in >> present))
    return in;
  if (!present)
  {
    widget.reset();
    return in;
  }
  auto read = std::make_unique<Widget>();
  if (in >> *read)
    widget = std::move(read);
  return in;
}

} // namespace WidgetSpace

namespace
{

using WidgetSpace::Widget;

const DataStreamKind kinds[] = {DataStreamKind::Binary, DataStreamKind::Text};

const char* kindName(DataStreamKind kind)
{
  return kind == DataStreamKind::Binary ? "Binary" : "Text";
}

template <typename T> void expectRoundTrip(DataStreamKind kind, const T& value)
{
  DataOStream out(kind);
  out.key("Value");
  out << value << std::int32_t{7};
  ASSERT_TRUE(out.good());

  DataIStream in(out.data(), kind);
  T read{};
  std::int32_t after = 0;
  in.key("Value");
  in >> read >> after;
  EXPECT_TRUE(in.good());
  EXPECT_TRUE(in.atEnd());
  EXPECT_EQ(after, 7);
  if constexpr (std::is_floating_point_v<T>)
  {
    if (std::isnan(value) && kind == DataStreamKind::Text)
    {
      EXPECT_TRUE(std::isnan(read));
      EXPECT_EQ(std::signbit(read), std::signbit(value));
    }
    else
    {
      using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
      EXPECT_EQ(std::bit_cast<Bits>(read), std::bit_cast<Bits>(value));
    }
  }
  else
  {
    EXPECT_EQ(read, value);
  }
}

template <typename T> void expectIntegerExtremes(DataStreamKind kind)
{
  using Limits = std::numeric_limits<T>;
  for (const T value : {Limits::min(), Limits::max(), T(0), T(1), T(Limits::min() + 1), T(Limits::max() - 1)})
  {
    SCOPED_TRACE(std::to_string(value));
    expectRoundTrip(kind, value);
  }
}

template <typename T> void expectFloatingRoundTrips(DataStreamKind kind)
{
  using Limits = std::numeric_limits<T>;
  const T values[] = {T(0),
                      -T(0),
                      T(0.1),
                      T(1) / T(3),
                      T(-2.5),
                      Limits::denorm_min(),
                      -Limits::denorm_min(),
                      Limits::min() / T(3),
                      Limits::min(),
                      Limits::max(),
                      Limits::lowest(),
                      Limits::epsilon(),
                      Limits::infinity(),
                      -Limits::infinity(),
                      Limits::quiet_NaN(),
                      -Limits::quiet_NaN()};
  for (const T value : values)
  {
    SCOPED_TRACE(value);
    expectRoundTrip(kind, value);
  }
}

// A record that uses every kind of item, for the round-trip and truncation tests.
struct Sample
{
  bool flag = false;
  std::int8_t i8 = 0;
  std::uint16_t u16 = 0;
  std::int64_t i64 = 0;
  float f = 0;
  double d = 0;
  std::string text;
  std::vector<std::string> names;
  std::optional<std::uint64_t> id;
  std::optional<std::string> none;
  std::vector<Widget> widgets;
  std::vector<std::unique_ptr<Widget>> owned;
  std::vector<std::vector<std::int32_t>> grid;
  std::vector<bool> bits;
};

Sample makeSample()
{
  Sample sample;
  sample.flag = true;
  sample.i8 = -128;
  sample.u16 = 65535;
  sample.i64 = -1234567890123;
  sample.f = 0.3f;
  sample.d = -1e-300;
  sample.text = "say \"hi\"\n\\ ok";
  sample.names = {"", "a b", "</Record>"};
  sample.id = 42;
  sample.widgets = {{1, "one"}, {2, ""}};
  sample.owned.push_back(std::make_unique<Widget>(Widget{3, "three"}));
  sample.owned.push_back(nullptr);
  sample.grid = {{}, {1, -2}};
  sample.bits = {true, false, true};
  return sample;
}

void writeSample(DataOStream& out, const Sample& sample)
{
  out.beginSection("Record");
  out.key("Flag");
  out << sample.flag;
  out.key("Small");
  out << sample.i8 << sample.u16;
  out.key("Large");
  out << sample.i64;
  out.beginSection("Reals");
  out << sample.f << sample.d;
  out.endSection();
  out.key("Text");
  out << sample.text;
  out.key("Names");
  out << sample.names;
  out.key("Id");
  out << sample.id;
  out.key("None");
  out << sample.none;
  out.beginSection("Widgets");
  out << sample.widgets << sample.owned;
  out.endSection();
  out.key("Grid");
  out << sample.grid;
  out.key("Bits");
  out << sample.bits;
  out.endSection();
}

void readSample(DataIStream& in, Sample& sample)
{
  in.beginSection("Record");
  in.key("Flag");
  in >> sample.flag;
  in.key("Small");
  in >> sample.i8 >> sample.u16;
  in.key("Large");
  in >> sample.i64;
  in.beginSection("Reals");
  in >> sample.f >> sample.d;
  in.endSection();
  in.key("Text");
  in >> sample.text;
  in.key("Names");
  in >> sample.names;
  in.key("Id");
  in >> sample.id;
  in.key("None");
  in >> sample.none;
  in.beginSection("Widgets");
  in >> sample.widgets >> sample.owned;
  in.endSection();
  in.key("Grid");
  in >> sample.grid;
  in.key("Bits");
  in >> sample.bits;
  in.endSection();
}

void expectSampleEqual(const Sample& read, const Sample& written)
{
  EXPECT_EQ(read.flag, written.flag);
  EXPECT_EQ(read.i8, written.i8);
  EXPECT_EQ(read.u16, written.u16);
  EXPECT_EQ(read.i64, written.i64);
  EXPECT_EQ(read.f, written.f);
  EXPECT_EQ(read.d, written.d);
  EXPECT_EQ(read.text, written.text);
  EXPECT_EQ(read.names, written.names);
  EXPECT_EQ(read.id, written.id);
  EXPECT_EQ(read.none, written.none);
  EXPECT_EQ(read.widgets, written.widgets);
  ASSERT_EQ(read.owned.size(), 2u);
  ASSERT_NE(read.owned[0], nullptr);
  EXPECT_EQ(*read.owned[0], *written.owned[0]);
  EXPECT_EQ(read.owned[1], nullptr);
  EXPECT_EQ(read.grid, written.grid);
  EXPECT_EQ(read.bits, written.bits);
}

std::string le64(std::uint64_t value)
{
  std::string bytes;
  for (int i = 0; i < 8; ++i)
    bytes += static_cast<char>((value >> (8 * i)) & 0xff);
  return bytes;
}

// A read into a target that starts as `initial`; true when the target still holds it afterwards.
template <typename T> std::function<bool(DataIStream&)> keeps(T initial)
{
  return [initial](DataIStream& in)
  {
    T value = initial;
    in >> value;
    return value == initial;
  };
}

template <typename P>
concept Writable = requires(DataOStream& out, P p)
{
  out << p;
};

} // namespace

static_assert(!Writable<int*>, "raw pointers must not be written as bools");
static_assert(Writable<const char*>);

TEST(DataStream, IntegersRoundTripAtTheirExtremes)
{
  for (const DataStreamKind kind : kinds)
  {
    SCOPED_TRACE(kindName(kind));
    expectIntegerExtremes<std::int8_t>(kind);
    expectIntegerExtremes<std::uint8_t>(kind);
    expectIntegerExtremes<std::int16_t>(kind);
    expectIntegerExtremes<std::uint16_t>(kind);
    expectIntegerExtremes<std::int32_t>(kind);
    expectIntegerExtremes<std::uint32_t>(kind);
    expectIntegerExtremes<std::int64_t>(kind);
    expectIntegerExtremes<std::uint64_t>(kind);
    expectRoundTrip(kind, true);
    expectRoundTrip(kind, false);
  }
}

TEST(DataStream, FloatingPointRoundTripsExactly)
{
  for (const DataStreamKind kind : kinds)
  {
    SCOPED_TRACE(kindName(kind));
    expectFloatingRoundTrips<float>(kind);
    expectFloatingRoundTrips<double>(kind);
  }
  // The binary kind keeps the NaN payload as well.
  expectRoundTrip(DataStreamKind::Binary, std::bit_cast<double>(0x7ff4000000000123ull));
}

TEST(DataStream, StringsRoundTrip)
{
  const std::string strings[] = {"",
                                 "plain",
                                 " blanks around ",
                                 "\"",
                                 "\\",
                                 "\\\"",
                                 "ends with a backslash\\",
                                 "quote \"inside\" here",
                                 "line\nbreak\r\n",
                                 std::string("nul\0byte\0", 9),
                                 "<Tag>",
                                 "</Tag>",
                                 "\xc3\xa4\xe2\x82\xac\xff"};
  for (const DataStreamKind kind : kinds)
  {
    for (const std::string& text : strings)
    {
      SCOPED_TRACE(std::string(kindName(kind)) + ": " + text);
      expectRoundTrip(kind, text);
    }
  }
  DataOStream out(DataStreamKind::Text);
  out << "c string";
  DataIStream in(out.data(), DataStreamKind::Text);
  std::string read;
  in >> read;
  EXPECT_EQ(read, "c string");
}

TEST(DataStream, BinaryEncodingIsExact)
{
  DataOStream out;
  out.beginSection("Ab");
  out.key("K");
  out << std::int32_t{-2} << std::string("xy") << std::string() << true << std::uint16_t{0x1234} << 1.0
      << -0.0f;
  out.endSection();
  const std::string expected = "\x01" + le64(2) + "Ab" + "\x03" + le64(1) + "K" + "\xfe\xff\xff\xff" +
                               le64(2) + "xy" + le64(0) + "\x01" + "\x34\x12" +
                               std::string("\0\0\0\0\0\0\xf0\x3f", 8) + std::string("\0\0\0\x80", 4) + "\x02";
  EXPECT_EQ(out.data(), expected);
}

TEST(DataStream, TextEncodingIsReadable)
{
  DataOStream out(DataStreamKind::Text);
  out.beginSection("Options");
  out.key("Directory");
  out << std::string("C:\\dir \"x\"");
  out.key("Attempts");
  out << std::int32_t{-3};
  out.key("Flag");
  out << true;
  out.key("Ratio");
  out << 0.1 << 1e300 << -std::numeric_limits<double>::infinity() << std::numeric_limits<float>::quiet_NaN();
  out.beginSection("Inner");
  out << std::uint64_t{2} << 1.5f;
  out.key("Empty");
  out.endSection();
  out.endSection();
  EXPECT_EQ(out.data(), "<Options>\n"
                        "  Directory \"C:\\\\dir \\\"x\\\"\"\n"
                        "  Attempts -3\n"
                        "  Flag true\n"
                        "  Ratio 0.1 1e+300 -inf nan\n"
                        "  <Inner>\n"
                        "    2 1.5\n"
                        "    Empty\n"
                        "  </Inner>\n"
                        "</Options>\n");

  // Indentation and line breaks are not checked on reading; 1 and 0 are booleans too.
  DataIStream in("<A>\tK 1 0\r\n\n \"x y\"\n</A>", DataStreamKind::Text);
  bool yes = false;
  bool no = true;
  std::string text;
  in.beginSection("A");
  in.key("K");
  in >> yes >> no >> text;
  EXPECT_TRUE(in.good());
  EXPECT_TRUE(yes);
  EXPECT_FALSE(no);
  EXPECT_EQ(text, "x y");
  in.endSection();
  EXPECT_TRUE(in.good());
  EXPECT_TRUE(in.atEnd());
}

TEST(DataStream, RecordsWithSectionsVectorsAndOptionalsRoundTrip)
{
  for (const DataStreamKind kind : kinds)
  {
    SCOPED_TRACE(kindName(kind));
    const Sample written = makeSample();
    DataOStream out(kind);
    writeSample(out, written);
    ASSERT_TRUE(out.good());

    DataIStream in(out.data(), kind);
    Sample read;
    read.none = "to be reset";
    readSample(in, read);
    EXPECT_TRUE(in.good());
    EXPECT_TRUE(in.atEnd());
    expectSampleEqual(read, written);
  }
}

TEST(DataStream, WrongNamesFailAndLeaveTargetsUnchanged)
{
  for (const DataStreamKind kind : kinds)
  {
    SCOPED_TRACE(kindName(kind));
    DataOStream out(kind);
    out.beginSection("Outer");
    out.key("Count");
    out << std::int32_t{5};
    out.endSection();
    const std::string data = out.data();

    const auto readWith = [&](const char* section, const char* key)
    {
      DataIStream in(data, kind);
      std::int32_t count = -1;
      in.beginSection(section);
      in.key(key);
      in >> count;
      in.endSection();
      return std::pair(in.good(), count);
    };
    EXPECT_EQ(readWith("Outer", "Count"), std::pair(true, 5));
    EXPECT_EQ(readWith("Outer2", "Count"), std::pair(false, -1));
    EXPECT_EQ(readWith("Oute", "Count"), std::pair(false, -1));
    EXPECT_EQ(readWith("Outer", "count"), std::pair(false, -1));
    EXPECT_EQ(readWith("Outer", "Coun"), std::pair(false, -1));
    EXPECT_EQ(readWith("Outer", "bad name"), std::pair(false, -1));

    // A value where a closing tag is expected, and a closing tag without an open section.
    DataIStream early(data, kind);
    early.beginSection("Outer");
    early.endSection();
    EXPECT_FALSE(early.good());
    DataIStream unopened(data, kind);
    unopened.endSection();
    EXPECT_FALSE(unopened.good());

    // Once failed, nothing is read any more.
    DataIStream failed(data, kind);
    failed.setFailed();
    failed.beginSection("Outer");
    failed.key("Count");
    std::int32_t count = -1;
    failed >> count;
    EXPECT_EQ(count, -1);
  }
}

TEST(DataStream, EveryTruncationFailsCleanly)
{
  for (const DataStreamKind kind : kinds)
  {
    SCOPED_TRACE(kindName(kind));
    DataOStream out(kind);
    writeSample(out, makeSample());
    const std::string& data = out.data();
    // Trailing line ends carry nothing; text cut there is still complete.
    const std::size_t complete = kind == DataStreamKind::Text ? data.find_last_not_of('\n') + 1 : data.size();
    for (std::size_t length = 0; length < complete; ++length)
    {
      SCOPED_TRACE(length);
      DataIStream in(data.substr(0, length), kind);
      Sample read;
      readSample(in, read);
      ASSERT_FALSE(in.good());
    }
  }
}

TEST(DataStream, CorruptCountsAndLengthsFail)
{
  const std::string huge = le64(std::uint64_t{1} << 62);
  {
    DataIStream in(huge + "abc");
    std::vector<std::int8_t> values = {9};
    in >> values;
    EXPECT_FALSE(in.good());
    EXPECT_EQ(values, std::vector<std::int8_t>{9});
  }
  {
    DataIStream in(huge + "abc");
    std::string text = "kept";
    in >> text;
    EXPECT_FALSE(in.good());
    EXPECT_EQ(text, "kept");
  }
  {
    DataIStream in("18446744073709551615 1 2", DataStreamKind::Text);
    std::vector<std::uint64_t> values = {9};
    in >> values;
    EXPECT_FALSE(in.good());
    EXPECT_EQ(values, std::vector<std::uint64_t>{9});
  }
  {
    // A count that fits but elements that run out: the elements read so far stay.
    DataIStream in("3 1 2", DataStreamKind::Text);
    std::vector<std::int32_t> values;
    in >> values;
    EXPECT_FALSE(in.good());
    EXPECT_EQ(values, (std::vector<std::int32_t>{1, 2}));
  }
}

TEST(DataStream, MalformedValuesFail)
{
  struct Case
  {
    const char* name;
    std::string data;
    DataStreamKind kind;
    std::function<bool(DataIStream&)> read; // reads, returns whether the target kept its value
  };
  const auto keepsInt32 = keeps<std::int32_t>(11);
  const auto keepsString = keeps<std::string>("old");
  const Case cases[] = {
      {"word for an integer", "abc", DataStreamKind::Text, keepsInt32},
      {"fraction for an integer", "1.5", DataStreamKind::Text, keepsInt32},
      {"plus sign", "+1", DataStreamKind::Text, keepsInt32},
      {"digits glued to a word", "12ab", DataStreamKind::Text, keepsInt32},
      {"integer out of range", "2147483648", DataStreamKind::Text, keepsInt32},
      {"nothing left", "  \n", DataStreamKind::Text, keepsInt32},
      {"int8 out of range", "128", DataStreamKind::Text, keeps<std::int8_t>(3)},
      {"negative unsigned", "-1", DataStreamKind::Text, keeps<std::uint32_t>(3)},
      {"double out of range", "1e999", DataStreamKind::Text, keeps<double>(3)},
      {"bool word", "yes", DataStreamKind::Text, keeps<bool>(true)},
      {"bool byte 2", "\x02", DataStreamKind::Binary, keeps<bool>(true)},
      {"short integer", "\x01\x02\x03", DataStreamKind::Binary, keepsInt32},
      {"string without quotes", "abc", DataStreamKind::Text, keepsString},
      {"string not closed", "\"abc", DataStreamKind::Text, keepsString},
      {"unknown escape", "\"a\\nb\"", DataStreamKind::Text, keepsString},
      {"backslash at the end", "\"a\\", DataStreamKind::Text, keepsString},
      {"text after the closing quote", "\"a\"b", DataStreamKind::Text, keepsString},
      {"string shorter than its length", le64(5) + "abcd", DataStreamKind::Binary, keepsString},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    DataIStream in(c.data, c.kind);
    EXPECT_TRUE(c.read(in));
    EXPECT_FALSE(in.good());
  }
}

TEST(DataStream, UnknownKindFails)
{
  const auto unknown = static_cast<DataStreamKind>(7);
  DataOStream out(unknown);
  out << std::string("x");
  EXPECT_FALSE(out.good());
  EXPECT_EQ(out.data(), "");

  DataIStream in(std::string(9, '\0'), unknown);
  std::string text = "kept";
  in >> text;
  EXPECT_FALSE(in.good());
  EXPECT_EQ(text, "kept");

  DataOStream numbers(unknown);
  numbers << std::int32_t{1};
  EXPECT_FALSE(numbers.good());
}

TEST(DataStream, WriterFailsOnMisuseAndThenWritesNothing)
{
  const std::string badNames[] = {"",    "a b", "tab\t", "line\n", "<a>", "a>",
                                  "a/b", "/a",  "q\"",   "back\\", "\x7f"};
  for (const DataStreamKind kind : kinds)
  {
    for (const std::string& name : badNames)
    {
      SCOPED_TRACE(std::string(kindName(kind)) + ": " + name);
      DataOStream section(kind);
      section.beginSection(name);
      EXPECT_FALSE(section.good());
      DataOStream key(kind);
      key.key(name);
      EXPECT_FALSE(key.good());
      EXPECT_EQ(key.data(), "");
    }
    DataOStream unopened(kind);
    unopened.endSection();
    EXPECT_FALSE(unopened.good());

    DataOStream nullText(kind);
    nullText << static_cast<const char*>(nullptr);
    EXPECT_FALSE(nullText.good());

    DataOStream failed(kind);
    failed.key("A");
    const std::string before = failed.data();
    failed.setFailed();
    failed.beginSection("B");
    failed << std::int64_t{1} << std::string("x") << std::vector<int>{1, 2};
    failed.endSection();
    EXPECT_EQ(failed.data(), before);
  }
  EXPECT_TRUE(FileSystem::isValidDataStreamName("Value:"));
  EXPECT_TRUE(FileSystem::isValidDataStreamName("\xc3\xa4"));
}

TEST(DataStream, SavesAndReadsFiles)
{
  OmbrixTest::TempDir dir;
  for (const DataStreamKind kind : kinds)
  {
    SCOPED_TRACE(kindName(kind));
    const std::string path = dir.file(std::string("sample.") + kindName(kind));
    const Sample written = makeSample();
    DataOStream out(kind);
    writeSample(out, written);
    ASSERT_TRUE(out.saveAs(path));
    EXPECT_EQ(OmbrixTest::readFile(path), out.data());

    DataIStream in = DataIStream::fromFile(path, kind);
    Sample read;
    readSample(in, read);
    EXPECT_TRUE(in.good());
    expectSampleEqual(read, written);

    out.setFailed();
    EXPECT_FALSE(out.saveAs(dir.file("failed")));
    EXPECT_FALSE(FileSystem::File::exists(dir.file("failed")));
  }
  DataOStream out;
  EXPECT_FALSE(out.saveAs(dir.file("no/such/dir/file")));
  EXPECT_FALSE(DataIStream::fromFile(dir.file("missing"), DataStreamKind::Binary).good());
}

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"
#include "ombrix/platform/File.h"

#include "support/Tables.h"
#include "support/TestSupport.h"

#include <bit>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <tuple>

using FileSystem::DataIStream;
using FileSystem::DataOStream;
using FileSystem::DataStreamKind;
using OmbrixTest::kStreamKinds;

namespace
{

// One body for writing and reading a record: io() streams out of a DataOStream and into a DataIStream.
template <typename... T> void io(DataOStream& out, const T&... values)
{
  (out << ... << values);
}
template <typename... T> void io(DataIStream& in, T&... values)
{
  (in >> ... >> values);
}

// A key and the values after it.
template <typename S, typename... T> void item(S& s, const char* key, T&&... values)
{
  s.key(key);
  io(s, values...);
}

// A model-like type with its own stream operators, found by argument-dependent lookup inside a vector. Its
// size follows the opening tag without a key.
struct Widget
{
  std::int32_t size = 0;
  std::string label;
  bool operator==(const Widget&) const = default;
};

template <typename S, typename W> S& streamWidget(S& s, W& widget)
{
  s.beginSection("Widget");
  io(s, widget.size);
  item(s, "Label", widget.label);
  s.endSection();
  return s;
}

DataOStream& operator<<(DataOStream& out, const Widget& widget)
{
  return streamWidget(out, widget);
}

DataIStream& operator>>(DataIStream& in, Widget& widget)
{
  return streamWidget(in, widget);
}

const char* kindName(DataStreamKind kind)
{
  return kind == DataStreamKind::Binary ? "Binary" : kind == DataStreamKind::Text ? "Text" : "unknown";
}

// The value after a key, then another value on the same line, read back bit for bit (NaN as NaN in text).
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
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    if (std::isnan(value) && kind == DataStreamKind::Text)
      EXPECT_TRUE(std::isnan(read) && std::signbit(read) == std::signbit(value));
    else
      EXPECT_EQ(std::bit_cast<Bits>(read), std::bit_cast<Bits>(value));
  }
  else
    EXPECT_EQ(read, value);
}

// Every limit of each arithmetic type and the values between them that an encoding could get wrong.
template <typename... T> void expectExtremes(DataStreamKind kind)
{
  const auto each = [kind](auto zero)
  {
    using U = decltype(zero);
    using L = std::numeric_limits<U>;
    std::vector<U> values{L::min(), L::max(), L::lowest(), U(0), U(1), U(L::min() + 1), U(L::max() - 1)};
    if constexpr (std::is_floating_point_v<U>)
      values.insert(values.end(),
                    {-U(0), U(0.1), U(1) / U(3), U(-2.5), L::denorm_min(), -L::denorm_min(), L::min() / U(3),
                     L::epsilon(), L::infinity(), -L::infinity(), L::quiet_NaN(), -L::quiet_NaN()});
    for (const U value : values)
    {
      SCOPED_TRACE(::testing::PrintToString(value));
      expectRoundTrip(kind, value);
    }
  };
  (each(T()), ...);
}

// A record that uses every kind of item, for the round-trip and truncation tests: one field table for
// writing and reading.
using Sample = std::tuple<bool, std::int8_t, std::uint16_t, std::int64_t, float, double, std::string,
                          std::vector<std::string>, std::optional<std::uint64_t>, std::optional<std::string>,
                          std::vector<Widget>, std::vector<std::vector<std::int32_t>>, std::vector<bool>>;

// Differs in every field from the target it is read into, so that a field left unread shows when the target
// is written again; the target's text option has a value for the disengaged one to reset.
const Sample kSample(true, -128, 65535, -1234567890123, 0.3f, -1e-300, "say \"hi\"\n\\ ok",
                     {"", "a b", "</Record>"}, 42, {}, {{1, "one"}, {2, ""}}, {{}, {1, -2}},
                     {true, false, true});

Sample readTarget()
{
  Sample target;
  std::get<9>(target) = "to be reset";
  return target;
}

template <typename S, typename T>
void streamSample(S& s, T& sample, const char* section = "Record", const char* key = "Field")
{
  s.beginSection(section);
  std::apply([&s, key](auto&... fields) { (item(s, key, fields), ...); }, sample);
  s.endSection();
}

std::string dataOf(const Sample& sample, DataStreamKind kind)
{
  DataOStream out(kind);
  streamSample(out, sample);
  EXPECT_TRUE(out.good());
  return out.data();
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

TEST(DataStream, ValuesRoundTripExactly)
{
  using namespace std::string_literals;
  for (const DataStreamKind kind : kStreamKinds)
  {
    SCOPED_TRACE(kindName(kind));
    expectExtremes<bool, std::int8_t, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t, std::uint32_t,
                   std::int64_t, std::uint64_t, float, double>(kind);
    for (const std::string& text : {""s, "plain"s, " blanks around "s, "\""s, "\\"s, "\\\""s,
                                    "ends with a backslash\\"s, "quote \"inside\" here"s, "line\nbreak\r\n"s,
                                    "nul\0byte\0"s, "<Tag>"s, "</Tag>"s, "\xc3\xa4\xe2\x82\xac\xff"s})
    {
      SCOPED_TRACE(text);
      expectRoundTrip(kind, text);
    }
    EXPECT_EQ(OmbrixTest::streamed("c string", kind), OmbrixTest::streamed(std::string("c string"), kind));
  }
  // The binary kind keeps the NaN payload as well.
  expectRoundTrip(DataStreamKind::Binary, std::bit_cast<double>(0x7ff4000000000123ull));
}

TEST(DataStream, EncodingsAreExact)
{
  DataOStream binary;
  binary.beginSection("Ab");
  binary.key("K");
  binary << std::int32_t{-2} << std::string("xy") << std::string() << true << std::uint16_t{0x1234} << 1.0
         << -0.0f;
  binary.endSection();
  EXPECT_EQ(binary.data(), "\x01" + le64(2) + "Ab" + "\x03" + le64(1) + "K" + "\xfe\xff\xff\xff" + le64(2) +
                               "xy" + le64(0) + "\x01" + "\x34\x12" + std::string("\0\0\0\0\0\0\xf0\x3f", 8) +
                               std::string("\0\0\0\x80", 4) + "\x02");

  DataOStream out(DataStreamKind::Text);
  out.beginSection("Options");
  item(out, "Directory", std::string("C:\\dir \"x\""));
  item(out, "Attempts", std::int32_t{-3});
  item(out, "Flag", true);
  item(out, "Ratio", 0.1, 1e300, -std::numeric_limits<double>::infinity(),
       std::numeric_limits<float>::quiet_NaN());
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
  std::tuple<bool, bool, std::string> read(false, true, "");
  in.beginSection("A");
  std::apply([&in](auto&... values) { item(in, "K", values...); }, read);
  in.endSection();
  EXPECT_TRUE(in.good() && in.atEnd());
  EXPECT_EQ(read, std::tuple(true, false, std::string("x y")));
}

// Read back, a record written again gives the same bytes: every member was read.
TEST(DataStream, RecordsRoundTripInMemoryAndThroughFiles)
{
  OmbrixTest::TempDir dir;
  for (const DataStreamKind kind : kStreamKinds)
  {
    SCOPED_TRACE(kindName(kind));
    DataOStream out(kind);
    streamSample(out, kSample);
    const std::string& data = out.data();
    const std::string path = dir.file(std::string("sample.") + kindName(kind));
    ASSERT_TRUE(out.saveAs(path));
    EXPECT_EQ(OmbrixTest::readFile(path), data);
    DataIStream sources[] = {DataIStream(data, kind), DataIStream::fromFile(path, kind)};
    for (DataIStream& in : sources)
    {
      Sample read = readTarget();
      streamSample(in, read);
      EXPECT_TRUE(in.good() && in.atEnd());
      EXPECT_EQ(dataOf(read, kind), data);
    }

    out.setFailed();
    EXPECT_FALSE(out.saveAs(dir.file("failed")));
    EXPECT_FALSE(FileSystem::File::exists(dir.file("failed")));
  }
  EXPECT_FALSE(DataOStream().saveAs(dir.file("no/such/dir/file")));
  EXPECT_FALSE(DataIStream::fromFile(dir.file("missing"), DataStreamKind::Binary).good());
}

TEST(DataStream, MisreadsAndTruncationsFail)
{
  for (const DataStreamKind kind : kStreamKinds)
  {
    SCOPED_TRACE(kindName(kind));
    const std::string data = dataOf(kSample, kind);
    // Wrong names, and a stream that failed before: nothing reaches the target.
    const Sample before = readTarget();
    for (const auto& [section, key, failedBefore] :
         {std::tuple("Record2", "Field", false), std::tuple("Recor", "Field", false),
          std::tuple("Record", "field", false), std::tuple("Record", "Fiel", false),
          std::tuple("Record", "bad name", false), std::tuple("Record", "Field", true)})
    {
      SCOPED_TRACE(std::string(section) + " " + key);
      DataIStream in(data, kind);
      if (failedBefore)
        in.setFailed();
      Sample read = before;
      streamSample(in, read, section, key);
      EXPECT_FALSE(in.good());
      EXPECT_TRUE(read == before);
    }

    // A closing tag without an open section, or where a key or a value follows.
    DataIStream unopened(data, kind), early(data, kind), late(data, kind);
    unopened.endSection();
    early.beginSection("Record");
    early.endSection();
    late.beginSection("Record");
    late.key("Field");
    late.endSection();
    EXPECT_FALSE(unopened.good() || early.good() || late.good());

    // Trailing line ends carry nothing; text cut there is still complete.
    const std::size_t complete = kind == DataStreamKind::Text ? data.find_last_not_of('\n') + 1 : data.size();
    for (std::size_t length = 0; length < complete; ++length)
    {
      SCOPED_TRACE(length);
      DataIStream in(data.substr(0, length), kind);
      Sample read = readTarget();
      streamSample(in, read);
      ASSERT_FALSE(in.good());
    }
  }
}

TEST(DataStream, MalformedValuesAndCountsFailAndLeaveTargetsUnchanged)
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
  const std::string huge = le64(std::uint64_t{1} << 62);
  const auto text = DataStreamKind::Text;
  const auto binary = DataStreamKind::Binary;
  const Case cases[] = {
      {"word for an integer", "abc", text, keepsInt32},
      {"fraction for an integer", "1.5", text, keepsInt32},
      {"plus sign", "+1", text, keepsInt32},
      {"digits glued to a word", "12ab", text, keepsInt32},
      {"integer out of range", "2147483648", text, keepsInt32},
      {"nothing left", "  \n", text, keepsInt32},
      {"int8 out of range", "128", text, keeps<std::int8_t>(3)},
      {"negative unsigned", "-1", text, keeps<std::uint32_t>(3)},
      {"double out of range", "1e999", text, keeps<double>(3)},
      {"bool word", "yes", text, keeps<bool>(true)},
      {"bool byte 2", "\x02", binary, keeps<bool>(true)},
      {"short integer", "\x01\x02\x03", binary, keepsInt32},
      {"string without quotes", "abc", text, keepsString},
      {"string not closed", "\"abc", text, keepsString},
      {"unknown escape", "\"a\\nb\"", text, keepsString},
      {"backslash at the end", "\"a\\", text, keepsString},
      {"text after the closing quote", "\"a\"b", text, keepsString},
      {"string shorter than its length", le64(5) + "abcd", binary, keepsString},
      {"huge string length", huge + "abc", binary, keepsString},
      {"huge vector count", huge + "abc", binary, keeps(std::vector<std::int8_t>{9})},
      {"vector count beyond the data", "18446744073709551615 1 2", text,
       keeps(std::vector<std::uint64_t>{9})},
      {"unknown kind", std::string(9, '\0'), static_cast<DataStreamKind>(7), keepsString},
  };
  for (const Case& c : cases)
  {
    SCOPED_TRACE(c.name);
    DataIStream in(c.data, c.kind);
    EXPECT_TRUE(c.read(in));
    EXPECT_FALSE(in.good());
  }
  // A count that fits but elements that run out: the elements read so far stay.
  DataIStream in("3 1 2", DataStreamKind::Text);
  std::vector<std::int32_t> values;
  in >> values;
  EXPECT_FALSE(in.good());
  EXPECT_EQ(values, (std::vector<std::int32_t>{1, 2}));
}

TEST(DataStream, WriterFailsOnMisuseAndThenWritesNothing)
{
  using Misuse = std::function<void(DataOStream&)>;
  std::vector<std::pair<std::string, Misuse>> misuses = {
      {"closing an unopened section", [](DataOStream& out) { out.endSection(); }},
      {"null text", [](DataOStream& out) { out << static_cast<const char*>(nullptr); }},
      {"setFailed", [](DataOStream& out) { out.setFailed(); }},
  };
  for (const std::string name :
       {"", "a b", "tab\t", "line\n", "<a>", "a>", "a/b", "/a", "q\"", "back\\", "\x7f"})
  {
    misuses.emplace_back("section '" + name + "'", [name](DataOStream& out) { out.beginSection(name); });
    misuses.emplace_back("key '" + name + "'", [name](DataOStream& out) { out.key(name); });
  }
  // An unknown kind writes nothing from the start.
  const auto unknown = static_cast<DataStreamKind>(7);
  for (const DataStreamKind kind : {kStreamKinds[0], kStreamKinds[1], unknown})
  {
    for (const auto& [what, misuse] : misuses)
    {
      SCOPED_TRACE(std::string(kindName(kind)) + ": " + what);
      DataOStream out(kind);
      out.key("A");
      const std::string before = out.data();
      EXPECT_EQ(std::pair(out.good(), before.empty()), std::pair(kind != unknown, kind == unknown));
      misuse(out);
      EXPECT_FALSE(out.good());
      out.beginSection("B");
      out << std::int64_t{1} << std::string("x") << std::vector<int>{1, 2} << true;
      out.endSection();
      EXPECT_EQ(out.data(), before);
    }
  }
  EXPECT_TRUE(FileSystem::isValidDataStreamName("Value:"));
  EXPECT_TRUE(FileSystem::isValidDataStreamName("\xc3\xa4"));
}

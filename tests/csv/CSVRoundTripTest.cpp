// Round trips through the exchange files: what the library writes, its own reader reads back to the same
// model (by the model comparator and by the values at every chronology written), or the writer refuses.
// Generated models cover every attribute kind, nested composites, entities placed in composites, links,
// lists, arrays, shortcuts, odd names and IDs, every chronology and extreme numbers. The generator builds,
// beside each written model, the model expected back, which holds what the definition file documents as
// not carried (entity access, root entities without attributes, the name and ID of an entity placed in a
// composite, unresolvable shortcut targets, the flag of an empty link), and it predicts the refusals.
#include "ombrix/compare/ModelComparator.h"
#include "ombrix/csv/CSVDataFileParser.h"
#include "ombrix/csv/CSVDefinitionFileParser.h"
#include "ombrix/csv/CSVValueText.h"

#include "csv/CSVTestModel.h"
#include "support/GroupingLocale.h"

#include <bit>
#include <climits>
#include <cmath>
#include <limits>
#include <set>
#include <unordered_set>

namespace
{

using namespace CSVTest;
using Ombrix::CSVDataFileParser;
using Ombrix::CSVDefinitionFileParser;
using Ombrix::CSVFileParserBase;
namespace CSVValueText = Ombrix::CSVValueText;
using Chronologies = std::set<Chronology>;

// Names and texts that a CSV file must quote, that look like numbers or words of the formats, or that
// hold the separators of the definition file's own texts.
const std::vector<std::string> oddTexts{"A",        "Time Step", "x,y", "say \"hi\"", "two\nlines", "a\r",
                                        "cr\r\nlf", " a ",       "\t",  "\xC3\x9cn",  "a->b",       "->",
                                        "k:v",      "Name",      "nan", "-1",         "#;"};

// splitmix64: the same sequence with every compiler and standard library.
struct Random
{
  std::uint64_t state;
  std::uint64_t next()
  {
    std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  std::size_t below(std::size_t n) { return static_cast<std::size_t>(next() % n); }
  bool percent(std::size_t p) { return below(100) < p; }
  bool perMille(std::size_t p) { return below(1000) < p; }
  template <typename T> const T& pick(const std::vector<T>& items) { return items[below(items.size())]; }

  template <typename T> T value()
  {
    if constexpr (std::is_same_v<T, bool>)
      return below(2) == 1;
    else if constexpr (std::is_same_v<T, int>)
      return below(3) ? static_cast<int>(next()) : pick(std::vector<int>{0, -1, INT_MIN, INT_MAX});
    else if constexpr (std::is_same_v<T, std::string>)
      // A NUL byte marks a zero-filled file to every reader, so the writers refuse it (tested with them).
      return below(4) ? pick(oddTexts) : below(2) ? std::string("tab\tin") : "";
    else
    {
      using L = std::numeric_limits<T>;
      const std::vector<T> extremes{
          T(-0.0),       L::denorm_min(), std::is_same_v<T, float> ? T(1e-40f) : T(1e-310),
          L::min(),      L::max(),        L::lowest(),
          L::infinity(), -L::infinity(),  L::quiet_NaN()};
      using Bits = std::conditional_t<std::is_same_v<T, float>, std::uint32_t, std::uint64_t>;
      const std::size_t which = below(4);
      if (which == 0)
        return pick(extremes);
      if (which == 1) // any bit pattern, NaN payloads included
        return std::bit_cast<T>(static_cast<Bits>(next()));
      return static_cast<T>(static_cast<double>(static_cast<std::int64_t>(next())) / 1e9);
    }
  }
};

// Calls `f(T())` with the value type of a value attribute kind; false for the other kinds.
template <typename F> bool withValueType(AttributeType type, F&& f)
{
  using K = AttributeType;
  return (type == K::Int && (f(int()), true)) || (type == K::Bool && (f(bool()), true)) ||
         (type == K::String && (f(std::string()), true)) || (type == K::Float && (f(float()), true)) ||
         (type == K::Double && (f(double()), true));
}

// Why a write is refused, by a phrase that its message holds.
using Refusals = std::set<std::string>;
const Refusals everyRefusal{
    "has an empty name",      "has a '.' in its name",   "add Initial to the chronologies",
    "without owning it",      "which has no attributes", "contains '|'",
    "runs through the entity"};

class Generator
{
public:
  // `expected`: build the model read back instead of the one written (same draws, same structure).
  Generator(std::uint64_t seed, bool expected) : r{seed}, m_expected(expected) {}

  void build(EntityCollection& collection)
  {
    fullNames = r.percent(50);
    // Current always: the comparator compares values there, and a file carries no other chronology's.
    chronologies = {Chronology::Current};
    for (Chronology c :
         {Chronology::Initial, Chronology::Continue, Chronology::TimeStepStart, Chronology::Next})
      if (r.percent(c == Chronology::Initial ? 95 : 30))
        chronologies.insert(c);
    m_ids.insert("1-1");
    if (r.percent(20))
    {
      // One draw per statement: the order in which arguments are evaluated differs between compilers.
      const int iteration = r.value<int>();
      const bool transient = r.percent(50);
      const double time = r.value<double>();
      collection.addRootEntity(makeSolutionControl(iteration, transient, time, r.value<double>()));
    }
    for (std::size_t i = 1 + r.below(3); i > 0; --i)
    {
      if (auto root = entity(0, false, false))
        collection.addRootEntity(std::move(root));
    }
  }

  bool fullNames = false;
  Chronologies chronologies;
  Refusals refusals;

private:
  void refuseIf(bool refused, const char* phrase)
  {
    if (refused)
      refusals.insert(phrase);
  }

  std::unique_ptr<Entity> entity(int depth, bool held, bool namedPlacedAbove)
  {
    const std::string type = text();
    const std::string name = text();
    const EntityID id = uniqueID();
    auto result = std::make_unique<Entity>(type, name, id, access(), nullptr);
    if (m_expected)
      result->setAccessType(AccessType::ReadWrite);
    refuseIf(held && fullNames && namedPlacedAbove, "runs through the entity");
    std::vector<AttributePath> targets;
    const std::size_t count = r.percent(held ? 1 : 5) ? 0 : 1 + r.below(4);
    children(*result, count, depth, "", targets, namedPlacedAbove);
    refuseIf(count == 0 && held, "which has no attributes");
    if (count == 0 && !held && m_expected)
      return nullptr; // not written
    return result;
  }

  // `prefix`: the composite's path below the nearest entity, whose shortcut `targets` grow as we go.
  void children(CompositeAttribute& parent, std::size_t count, int depth, const std::string& prefix,
                std::vector<AttributePath>& targets, bool namedPlacedAbove)
  {
    for (std::size_t i = 0; i < count; ++i)
    {
      std::string name = attributeName(parent);
      const bool emptyName = r.perMille(1);
      const std::size_t kind = r.below(depth < 3 ? 100 : 60);
      const AttributePath path(prefix + name);
      // A shortcut's targets and a link's entities go in the InitialValue column.
      refuseIf(!chronologies.count(Chronology::Initial) && ((kind >= 50 && kind < 60) || kind >= 80),
               "add Initial to the chronologies");
      Attribute* created = nullptr;
      if (kind < 50)
        created = value(parent, name, kind % 5);
      else if (kind < 60)
        created = shortcut(parent, name, targets);
      else if (kind < 72)
      {
        created = parent.createAttribute(AttributeType::Composite, name, access());
        children(static_cast<CompositeAttribute&>(*created), r.below(4), depth + 1, prefix + name + ".",
                 targets, namedPlacedAbove);
      }
      else if (kind < 80)
      {
        auto& placed = static_cast<Entity&>(*parent.createAttribute(AttributeType::Entity, name, access()));
        const std::string placedName = r.percent(50) ? "" : text();
        placed.setName(m_expected ? "" : placedName);
        placed.setUniqueID(uniqueID());
        std::vector<AttributePath> own; // its shortcuts resolve below it
        children(placed, r.below(4), depth + 1, "", own, namedPlacedAbove || !placedName.empty());
      }
      else
        created = link(parent, name, kind % 3, depth, namedPlacedAbove);
      if (created && emptyName)
      {
        created->setType(""); // no other way to an empty name: creation refuses one
        refusals.insert("has an empty name");
      }
      else if (created && created->getAttributeType(false) != AttributeType::Composite)
        targets.push_back(path);
    }
  }

  Attribute* value(CompositeAttribute& parent, const std::string& name, std::size_t which)
  {
    const AttributeType kinds[] = {AttributeType::Int, AttributeType::Bool, AttributeType::String,
                                   AttributeType::Float, AttributeType::Double};
    Attribute* created = parent.createAttribute(kinds[which], name, access());
    withValueType(kinds[which],
                  [&](auto type)
                  {
                    using T = decltype(type);
                    auto& attribute = static_cast<ValueAttribute<T>&>(*created);
                    attribute.set(r.value<T>(), Chronology::Initial);
                    for (Chronology c : {Chronology::Continue, Chronology::TimeStepStart, Chronology::Current,
                                         Chronology::Next})
                      if (r.percent(20))
                        attribute.set(r.value<T>(), c);
                  });
    if (r.percent(40))
      created->setUnit(text());
    return created;
  }

  Attribute* shortcut(CompositeAttribute& parent, const std::string& name,
                      const std::vector<AttributePath>& targets)
  {
    auto& result =
        static_cast<ShortcutAttribute&>(*parent.createAttribute(AttributeType::Shortcut, name, access()));
    for (std::size_t i = r.below(4); i > 0; --i)
    {
      if (!targets.empty() && r.percent(85))
      {
        const AttributePath& target = r.pick(targets);
        result.addShortcut(target);
        refuseIf(target.toString().find('|') != std::string::npos, "contains '|'");
      }
      else if (!m_expected)
        result.addShortcut(AttributePath("Nowhere " + std::to_string(i))); // left out when written
    }
    return &result;
  }

  Attribute* link(CompositeAttribute& parent, const std::string& name, std::size_t which, int depth,
                  bool namedPlacedAbove)
  {
    const AttributeType kinds[] = {AttributeType::Link, AttributeType::List, AttributeType::Array};
    auto& result =
        static_cast<EntityLinkAttributeBase&>(*parent.createAttribute(kinds[which], name, access()));
    const std::string relationship = r.percent(1) ? "p|q" : text();
    result.setRelationShipType(relationship);
    refuseIf(relationship.find('|') != std::string::npos, "contains '|'");
    const bool owns = r.percent(98);
    result.setOwnsEntities(owns);
    const std::size_t count = r.below(which == 0 ? 2 : 4);
    refuseIf(count > 0 && !owns, "without owning it");
    for (std::size_t i = count; i > 0; --i)
      result.addEntity(entity(depth + 1, true, namedPlacedAbove));
    if (count == 0 && m_expected)
      result.setOwnsEntities(true); // an empty link is read back as owning
    return &result;
  }

  std::string text() { return r.percent(10) ? "" : r.pick(oddTexts); }

  std::string attributeName(const CompositeAttribute& parent)
  {
    std::string name = r.perMille(1) ? "a.b" : r.percent(1) ? "p|q" : r.pick(oddTexts);
    refuseIf(name == "a.b", "has a '.' in its name");
    for (std::size_t n = 2;
         std::any_of(parent.begin(), parent.end(), [&](const auto& child) { return child->type() == name; });
         ++n)
      name += "#" + std::to_string(n);
    return name;
  }

  AccessType access() { return static_cast<AccessType>(r.below(4)); }

  EntityID uniqueID()
  {
    const std::vector<EntityID> odd{EntityID(INT_MIN, INT_MAX), EntityID(-1, -1), EntityID(0, 0),
                                    EntityID(-3, 12), EntityID(INT_MAX, INT_MIN)};
    for (;;)
    {
      const int first = static_cast<int>(r.next());
      const EntityID id = r.percent(20) ? r.pick(odd) : EntityID(first, static_cast<int>(r.below(1000)));
      if (m_ids.insert(toString(id)).second)
        return id;
    }
  }

  Random r;
  bool m_expected;
  std::unordered_set<std::string> m_ids;
};

// Calls `f(entity, attribute, path, top)` for every attribute below every entity of the collection's list
// that a file identifies, depth first through composites and placed entities, as the files do; `f`
// returns whether to go below the attribute.
template <typename F> void forEachAttribute(EntityCollection& collection, F&& f)
{
  const auto walk = [&](auto& self, Entity& entity, CompositeAttribute& composite,
                        const std::string& prefix) -> void
  {
    for (const auto& child : composite)
    {
      const std::string path = prefix + child->type();
      if (f(entity, *child, path, &composite == &entity) && child->isComposite())
        self(self, entity, static_cast<CompositeAttribute&>(*child), path + ".");
    }
  };
  for (Entity* entity : collection)
    if (entity && !(entity->getParent() && !entity->getParentLink()))
      walk(walk, *entity, *entity, "");
}

// The attribute at the same entity ID and path in `other`, if any.
template <typename C> auto counterpartOf(C& other, const Entity& entity, const std::string& path)
{
  auto* counterpart = other.findEntity(entity.getUniqueID());
  return counterpart ? counterpart->findAttribute(AttributePath(path)) : nullptr;
}

// Every value of `model` at the chronologies equals the value at the same entity ID and path of `reference`.
void expectSameValues(EntityCollection& model, const EntityCollection& reference,
                      const Chronologies& chronologies, const std::string& what)
{
  forEachAttribute(
      model,
      [&](Entity& entity, Attribute& attribute, const std::string& path, bool)
      {
        const Attribute* counterpart = counterpartOf(reference, entity, path);
        const AttributeType type = attribute.getAttributeType(false);
        if (!counterpart || counterpart->getAttributeType(false) != type)
          return true;
        withValueType(type,
                      [&](auto kind)
                      {
                        using T = decltype(kind);
                        const auto& x = static_cast<const ValueAttribute<T>&>(attribute).container();
                        const auto& y = static_cast<const ValueAttribute<T>&>(*counterpart).container();
                        for (Chronology c : chronologies)
                        {
                          const bool same = x.has(c) && y.has(c) ? CSVValueText::sameValue(x.get(c), y.get(c))
                                                                 : x.has(c) == y.has(c);
                          EXPECT_TRUE(same) << what << ": " << toString(entity.getUniqueID()) << ":" << path
                                            << " at " << KorvanSDK::chronologyToString(c);
                        }
                      });
        return true;
      });
}

void expectSame(EntityCollection& model, const EntityCollection& reference, const Chronologies& chronologies,
                const std::string& what)
{
  ModelComparator comparator;
  comparator.compareCollection(model, reference);
  for (const auto& [key, messages] : comparator.getMessages())
    ADD_FAILURE() << what << ": " << key << ": " << messages.front();
  expectSameValues(model, reference, chronologies, what);
}

// The file cannot carry the ID of an entity placed in a composite: the expected model takes the one read.
void takePlacedIDs(EntityCollection& read, EntityCollection& expected)
{
  forEachAttribute(read,
                   [&](Entity& entity, Attribute& attribute, const std::string& path, bool)
                   {
                     Attribute* theirs = counterpartOf(expected, entity, path);
                     if (attribute.isEntity() && theirs && theirs->isEntity())
                       static_cast<Entity&>(*theirs).setUniqueID(
                           static_cast<Entity&>(attribute).getUniqueID());
                     return true;
                   });
}

// New values at the chronologies for the attributes a data file carries (of those with write access).
void mutate(EntityCollection& collection, std::uint64_t seed, const Chronologies& chronologies,
            bool writableOnly)
{
  Random r{seed};
  forEachAttribute(collection,
                   [&](Entity&, Attribute& attribute, const std::string&, bool top)
                   {
                     // A data file never carries the entity's child "Name", nor anything below it.
                     if (top && attribute.type() == "Name")
                       return false;
                     if (!writableOnly || KorvanSDK::hasWriteAccess(attribute.getAccessType()))
                       withValueType(attribute.getAttributeType(false),
                                     [&](auto type)
                                     {
                                       using T = decltype(type);
                                       for (Chronology c : chronologies)
                                         static_cast<ValueAttribute<T>&>(attribute).set(r.value<T>(), c);
                                     });
                     return true;
                   });
}

class CSVRoundTripTest : public ::testing::Test
{
protected:
  // Writes with `writer` and reads with `reader`: through a file, or as text joined and split by the
  // same CSV parser in memory (the file's bytes without the disk).
  void transfer(const CSVFileParserBase& writer, CSVFileParserBase& reader, bool disk)
  {
    if (disk)
    {
      ASSERT_TRUE(writer.saveAs(path));
      ASSERT_TRUE(reader.parseFile(path));
      return;
    }
    FileSystem::CSVParser csv(',', false, false, '\n', true);
    csv.rows() = writer.generateData();
    csv.parseText(csv.toText());
    ASSERT_TRUE(reader.parseData(csv.rows()));
  }

  // def.csv, out.csv (solver to client) and in.csv (client to solver) of one generated model; the
  // predicted reasons when the definition file was refused, else none.
  Refusals roundTrip(std::uint64_t seed, bool disk)
  {
    EntityCollection source, expected, client;
    Generator written(seed, false);
    written.build(source);
    Generator(seed, true).build(expected);
    const Chronologies& chronologies = written.chronologies;
    const auto configure = [&](CSVFileParserBase& parser)
    {
      parser.setUseFullEntityNames(written.fullNames);
      parser.setNumberFormat(NumberFormat::RoundTrip);
    };

    CSVDefinitionFileParser definition(source);
    definition.setChronologies(chronologies);
    configure(definition);
    CSVDefinitionFileParser definitionReader(client);
    try
    {
      transfer(definition, definitionReader, disk);
    }
    catch (const std::runtime_error& refusal)
    {
      const std::string what = refusal.what();
      bool predicted = what.rfind("Cannot write the definition file: ", 0) == 0;
      const bool known =
          std::any_of(written.refusals.begin(), written.refusals.end(),
                      [&](const std::string& phrase) { return what.find(phrase) != std::string::npos; });
      EXPECT_TRUE(predicted && known)
          << what << " (predicted: " << ::testing::PrintToString(written.refusals) << ")";
      return written.refusals;
    }
    EXPECT_TRUE(written.refusals.empty())
        << "written, though predicted refused: " << ::testing::PrintToString(written.refusals);
    takePlacedIDs(client, expected);
    expectSame(client, expected, chronologies, "def.csv");

    mutate(source, seed, chronologies, false);
    mutate(expected, seed, chronologies, false);
    CSVDataFileParser out(source, chronologies);
    configure(out);
    CSVDataFileParser outReader(client, chronologies);
    outReader.setKorvanSDK(true);
    transfer(out, outReader, disk);
    expectSame(client, expected, chronologies, "out.csv");

    mutate(client, ~seed, chronologies, true);
    CSVDataFileParser in(client, chronologies);
    configure(in);
    for (EntityCollection* solver : {&expected, &source})
    {
      CSVDataFileParser inReader(*solver, chronologies);
      inReader.setSkipReadOnly(true);
      transfer(in, inReader, disk);
    }
    expectSame(client, expected, chronologies, "in.csv");
    expectSameValues(client, source, chronologies, "in.csv read by the solver's own model");
    return {};
  }

  OmbrixTest::TempDir dir;
  std::string path = dir.file("exchange.csv");
};

TEST_F(CSVRoundTripTest, GeneratedModelsReadBackTheSameOrAreRefused)
{
  // Under a host locale that groups digits and writes a decimal comma: the files' numbers must not change.
  const OmbrixTest::GroupingLocale locale;
  constexpr std::uint64_t models = 3000;
  std::size_t refused = 0;
  Refusals reasons;
  for (std::uint64_t seed = 1; seed <= models && !HasFailure(); ++seed)
  {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const auto predicted = roundTrip(seed, seed % 64 == 0);
    refused += predicted.empty() ? 0 : 1;
    reasons.insert(predicted.begin(), predicted.end());
  }
  // Every refusal is reached, and most models are carried, so that the round trip itself is exercised.
  EXPECT_EQ(reasons, everyRefusal);
  EXPECT_LT(refused, models / 5);
}

} // namespace

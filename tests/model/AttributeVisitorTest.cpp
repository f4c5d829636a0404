#include "ombrix/model/AttributeVisitorAbstract.h"
#include "ombrix/model/AttributeVisitorConstAbstract.h"
#include "ombrix/model/EntityExtractVisitor.h"
#include "ombrix/model/LinkAttribute.h"
#include "ombrix/model/ListAttribute.h"
#include "ombrix/model/ShortcutAttribute.h"

#include "model/ModelTestSupport.h"
#include "support/TestSupport.h"

using namespace Ombrix::Model;
using OmbrixTest::addLink;
using OmbrixTest::makeEntity;
using Names = std::vector<std::string>;

namespace
{

// Records the names of everything it is shown, in order.
class Recorder : public AttributeVisitorConstAbstract
{
public:
  Names seen;
  void visit(const Entity& e) override
  {
    seen.push_back("E:" + e.name());
    AttributeVisitorConstAbstract::visit(e);
  }
  void visit(const CompositeAttribute& c) override
  {
    seen.push_back("C:" + c.type());
    AttributeVisitorConstAbstract::visit(c);
  }
  void visit(const ValueAttribute<int>& v) override { seen.push_back("I:" + v.type()); }
  void visit(const ValueAttribute<double>& v) override { seen.push_back("D:" + v.type()); }
  void visit(const ShortcutAttribute& s) override { seen.push_back("S:" + s.type()); }
};

} // namespace

TEST(AttributeVisitorTest, ExtractListsTheEntityAndThoseItOwns)
{
  // Appending to a list, and the walk itself, are checked through the collection's flat list
  // (EntityCollectionTest).
  auto root = makeEntity("T", "Root", EntityID(1, 1));
  Entity* a = addLink<ListAttribute>(*root, "List", true).addEntity(makeEntity("T", "A", EntityID(2, 2)));
  addLink<LinkAttribute>(*a, "Link", true).addEntity(makeEntity("T", "A1", EntityID(3, 3)));
  EXPECT_EQ(OmbrixTest::entityNames(EntityExtractVisitor::extract(*root)), (Names{"Root", "A", "A1"}));
}

TEST(AttributeVisitorTest, ConstWalkVisitsChildrenInOrderAndLeavesLeavesAlone)
{
  auto root = makeEntity("T", "Root", EntityID(1, 1));
  OmbrixTest::addValue<int>(*root, "I", 1);
  auto& group = OmbrixTest::addComposite(*root, "G");
  OmbrixTest::addValue<double>(group, "D", 1.0);
  OmbrixTest::addShortcut(*root, "S", {"G"});
  addLink<LinkAttribute>(*root, "L", true).addEntity(makeEntity("T", "Child", EntityID(2, 2)));
  addLink<ListAttribute>(*root, "Refs", false).addEntity(makeEntity("T", "Ref", EntityID(3, 3)));

  Recorder recorder;
  static_cast<const Entity&>(*root).accept(recorder);
  EXPECT_EQ(recorder.seen, (Names{"E:Root", "I:I", "C:G", "D:D", "S:S", "E:Child"}));
}

#include "ombrix/log/LogManager.h"
#include "ombrix/model/AccessException.h"
#include "ombrix/model/ShortcutAttribute.h"
#include "ombrix/model/ValueAttribute.h"

#include "log/LogTestSupport.h"
#include "model/ModelTestSupport.h"
#include "support/TestSupport.h"

#include <stdexcept>

using namespace Ombrix::Model;
using KorvanSDK::AccessType;
using C = KorvanSDK::Chronology;
using Records = std::vector<std::string>;

namespace
{

// Each test starts with a fresh log at level Informational; the records are the lines after the start line.
class AttributeLogTest : public OmbrixTest::LogFileFixture
{
protected:
  void SetUp() override
  {
    LogFileFixture::SetUp();
    Ombrix::LogManager::instance().initialize(logPath, Ombrix::LogLevel::Informational);
  }

  Records records() const
  {
    Records result;
    const auto all = lines();
    for (std::size_t i = 1; i < all.size(); ++i)
      result.push_back(OmbrixTest::withoutStamp(all[i]));
    return result;
  }

  static std::string record(const std::string& text) { return "\tInformational\t\tAttribute '" + text; }

  std::unique_ptr<Entity> entity = OmbrixTest::makeEntity("Pump", "P", EntityID(12, 3));
  CompositeAttribute& group = OmbrixTest::addComposite(*entity, "Group");
  ValueAttribute<int>& value = OmbrixTest::addValue<int>(group, "Value", 0);
};

} // namespace

TEST_F(AttributeLogTest, RecordNamesPlaceChronologyAndValueText)
{
  value.setIntValue(25, C::Current, true);
  auto& d = OmbrixTest::addValue<double>(*entity, "Time", 0.0);
  d.setDoubleValue(0.5, C::Initial, true);
  d.setStringValue("2", C::Next, true);
  OmbrixTest::addValue<bool>(group, "On", false).setBoolValue(true, C::TimeStepStart, true);
  CompositeAttribute loose("Root", AccessType::ReadWrite, nullptr);
  OmbrixTest::addValue<std::string>(loose, "Name", "").setStringValue("it's %s", C::Continue, true);
  OmbrixTest::addValue<int>(*entity, "Other", 0);
  OmbrixTest::addShortcut(*entity, "Both", {"Group.Value", "Other"}).setIntValue(8, C::Current, true);
  EXPECT_EQ(records(), (Records{
                           record("12-3:Group.Value:Current ,[3]' set to '25'"),
                           record("12-3:Time:Initial ,[0]' set to '0.500000'"),
                           record("12-3:Time:Next ,[4]' set to '2.000000'"),
                           record("12-3:Group.On:TimeStepStart ,[2]' set to 'Yes'"),
                           record("0-0:Root.Name:Continue ,[1]' set to 'it's %s'"),
                           // A write through a shortcut records each target.
                           record("12-3:Group.Value:Current ,[3]' set to '8'"),
                           record("12-3:Other:Current ,[3]' set to '8'"),
                       }));
}

TEST_F(AttributeLogTest, InternalAndFailedWritesAreNotRecorded)
{
  value.setIntValue(1, C::Current, false);
  value.set(2, C::Current);
  value.setUnit("m");
  EXPECT_THROW_MSG(value.setIntValue(3, "s", C::Current, true), std::runtime_error, "Invalid Unit");
  EXPECT_THROW_MSG(value.setStringValue("x", C::Current, true), std::invalid_argument,
                   "invalid stoi argument");
  EXPECT_THROW_MSG(value.setIntValue(3, static_cast<C>(9), true), std::out_of_range,
                   "Chronology Out Of Range");
  value.setAccessType(AccessType::ReadOnly);
  EXPECT_THROW_MSG(value.setIntValue(3, C::Current, true), AccessException, "User has no write access");
  EXPECT_TRUE(records().empty());
  EXPECT_EQ(value.get(C::Current), 2);
}

TEST_F(AttributeLogTest, NothingBelowInformationalOrWhenInactive)
{
  Ombrix::LogManager::instance().initialize(logPath, Ombrix::LogLevel::Message);
  value.setIntValue(4, C::Current, true);
  EXPECT_TRUE(records().empty());
  Ombrix::LogManager::instance().terminate();
  value.setIntValue(5, C::Current, true);
  EXPECT_EQ(value.get(C::Current), 5);
  EXPECT_EQ(records(), Records{"\t\tLogger Logging Finished"});
  Ombrix::LogManager::instance().recordAttributeSetValue(nullptr, C::Current);
}

// The C++ face: owning logs, ranges, statuses, callbacks.
#include <gtest/gtest.h>

#include <ranges>
#include <stdexcept>
#include <tasklog/tasklog.hpp>

#include "support/dump.h"
#include "support/ring.h"

namespace {

static_assert(std::ranges::input_range<tasklog::EntryRange>);
static_assert(std::ranges::input_range<tasklog::CategoryRange>);
static_assert(std::is_nothrow_move_constructible_v<tasklog::Log> &&
              !std::is_copy_constructible_v<tasklog::Log>);

class Hpp : public testing::Test {
 protected:
  void SetUp() override {
    PutCategories(target);
    PutLogger(target, "Kernel.1.Logger",
              RingWords(1000, {{6, 1000, 0x9000}, {4, 1010, 1}, {0, 1020, 2}, {2, 1030, 3}}));
    target.procedures["Kernel.1.Logger.Start()"] = 1.0;
  }

  ScriptedTarget target;
  tasklog::Log log;
};

std::string NamesOf(const tasklog::CategoryRange& range) {
  std::string names;
  for (const auto& category : range) names += std::string(category.Name()) + ' ';
  return names;
}

std::string TimesOf(const tasklog::EntryRange& range) {
  std::string times;
  for (const auto& entry : range) times += std::to_string(entry.Timestamp()) + ' ';
  return times;
}

TEST_F(Hpp, FiltersCategoriesAndEntries) {
  EXPECT_TRUE(tasklog::StartLog("ctl/@1"));
  ASSERT_TRUE(log.AppendFromTarget("ctl", 1));
  EXPECT_EQ(log.StartTime(), 1000u);
  EXPECT_EQ(log.StopTime(), 1030u);
  EXPECT_EQ(log.TicksPerSecond(), 1000000u);
  EXPECT_EQ(log.CategoriesCount({.types = TL_CATS_TASKS, .name = "Ctrl"}), 1u);
  EXPECT_EQ(NamesOf(log.Categories()), "TP1 TP2 Idle Ctrl Comm ");
  EXPECT_EQ(NamesOf(log.Categories({.types = TL_CATS_TASKS})), "Idle Ctrl Comm ");
  EXPECT_EQ(NamesOf(log.Categories({.name = "none"})), "");
  const tasklog::CategoryRange named = log.Categories({.name = "Ctrl"});
  const tasklog::Category ctrl = *named.begin();
  EXPECT_EQ(TimesOf(log.Entries()), "1000 1010 1020 1030 ");
  EXPECT_EQ(TimesOf(log.Entries({.category = ctrl})), "1020 1030 ");
  EXPECT_EQ(TimesOf(log.Entries({.types = TL_LOGS_SWITCHES, .from = 1011})), "1020 ");
  EXPECT_EQ(TimesOf(log.Entries({.to = 1010})), "1000 1010 ");
  EXPECT_EQ(log.EntriesCount({.category = ctrl, .from = 1021}), 1u);
}

TEST_F(Hpp, ShowsEntriesAndCategories) {
  ASSERT_TRUE(log.AppendFromTarget("ctl", 1));
  const tasklog::EntryRange switches = log.Entries({.types = TL_LOGS_SWITCHES});
  auto entry = switches.begin();
  EXPECT_FALSE((*entry).Running());
  ++entry;
  EXPECT_EQ(EntryText((*entry).Handle()), "1020 0 Ctrl Idle");
  const tasklog::Category ctrl = (*entry).Subject().value();
  EXPECT_EQ(ctrl.Type(), ETLCatType{TLCatTask});
  EXPECT_EQ(ctrl.Id(), 2u);
  EXPECT_EQ(ctrl.Priority(), 5u);
  EXPECT_EQ(ctrl.TimeSlice(), -1);
  EXPECT_NE((*entry).Running(), ctrl);
  EXPECT_STREQ((*entry).Running().value().Name(), "Idle");
  entry++;
  EXPECT_TRUE(entry == switches.end());
}

TEST_F(Hpp, MovesLogs) {
  ASSERT_TRUE(log.AppendFromTarget("ctl", 1, [](double) { return true; }));
  tasklog::Log moved = std::move(log);
  EXPECT_EQ(moved.EntriesCount(), 4u);
  log = std::move(moved);
  EXPECT_EQ(log.EntriesCount(), 4u);
}

TEST_F(Hpp, PassesOnWhatTheCallbackThrows) {
  int calls = 0;
  const auto progress = [&](double) -> bool {
    ++calls;
    throw std::runtime_error("stop");
  };
  EXPECT_THROW((void)log.AppendFromTarget("ctl", 1, progress), std::runtime_error);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(log.EntriesCount(), 0u);
  // At the last point the work is done; the exception arrives all the same.
  const auto late = [](double fraction) { return fraction < 1.0 ? true : throw std::runtime_error("late"); };
  EXPECT_THROW((void)log.AppendFromTarget("ctl", 1, late), std::runtime_error);
  EXPECT_EQ(log.EntriesCount(), 4u);
}

TEST_F(Hpp, GivesTheTextOfAStatus) {
  target.errorTexts[0x777] = std::string(300, 't');
  EXPECT_EQ(tasklog::Status().Text(), "");
  EXPECT_TRUE(tasklog::Status());
  EXPECT_EQ(log.AppendFromTarget("ctl", 1, [](double) { return false; }), tasklog::Status(TLErrCanceled));
  EXPECT_EQ(log.AppendFromFile("no such file").Text(), "Error opening TaskLog file");
  EXPECT_EQ(log.SaveAsFile("/no such folder/log").Code(), std::uint32_t{TLErrFileOpen});
  EXPECT_EQ(tasklog::Status(0x777).Text(), std::string(300, 't'));
  EXPECT_EQ(tasklog::StartLog("ctl/@2").Text(), "scripted 0x50401");
  target.storesSizes = false;
  EXPECT_EQ(tasklog::Status(0x777).Text(), std::string(300, 't'));
}

}  // namespace

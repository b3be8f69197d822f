// A C++20 face over tasklog.h, header-only: owning logs, entries and categories as input ranges, status as
// a type with its text. What holds there for units, validity and threads holds here.
//
//   tasklog::Log log;
//   if (tasklog::Status status = log.AppendFromTarget("ctl", 1); !status) return Complain(status.Text());
//   for (const auto& entry : log.Entries({.types = TL_LOGS_SWITCHES, .from = begin, .to = end}))
//     std::cout << entry.Timestamp() << ' ' << entry.Subject()->Name() << '\n';
#ifndef TASKLOG_TASKLOG_HPP
#define TASKLOG_TASKLOG_HPP

#if __cplusplus < 201709L
#error "tasklog.hpp needs C++20 (-std=c++20); tasklog.h serves every C and C++"
#endif

#include <tasklog/tasklog.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

namespace tasklog {

// The outcome of an operation: true when it succeeded.
class [[nodiscard]] Status {
 public:
  constexpr Status(std::uint32_t code = TL_OK) : code_(code) {}

  constexpr explicit operator bool() const { return code_ == TL_OK; }
  constexpr std::uint32_t Code() const { return code_; }
  constexpr bool operator==(const Status&) const = default;

  // The text of TLGetErrorMessage(); empty for success.
  std::string Text() const {
    if (*this) return {};
    std::uint32_t size = 0;
    TLGetErrorMessage(code_, reinterpret_cast<char*>(&size), 0);
    if (size < 2 || size > longestText) size = longestText;
    // One byte more: the target-access library gets all but the last byte.
    std::string text(size + 1, '\0');
    TLGetErrorMessage(code_, text.data(), static_cast<std::uint32_t>(text.size()));
    return text.c_str();
  }

 private:
  static constexpr std::uint32_t longestText = 4096;

  std::uint32_t code_;
};

// A category of a log: borrowed, valid until the log is destroyed.
class Category {
 public:
  explicit Category(TLCategory handle) : handle_(handle) {}

  ETLCatType Type() const { return TLCategoryGetType(handle_); }
  const char* Name() const { return TLCategoryGetName(handle_); }
  std::uint32_t Id() const { return TLCategoryGetId(handle_); }
  std::uint32_t Priority() const { return TLTaskGetPriority(handle_); }
  std::int32_t TimeSlice() const { return TLTaskGetTimeslice(handle_); }
  TLCategory Handle() const { return handle_; }
  bool operator==(const Category&) const = default;

 private:
  TLCategory handle_;
};

// An entry of a log: borrowed, valid until the next append to the log.
class Entry {
 public:
  explicit Entry(TLEntry handle) : handle_(handle) {}

  ETLLogType Type() const { return TLEntryGetType(handle_); }
  std::uint64_t Timestamp() const { return TLEntryGetTimestamp(handle_); }  // ticks
  // What the entry is about: slot 0.
  std::optional<Category> Subject() const { return Slot(0); }
  // The task that ran until then (switches) or was running (all others): slot 1.
  std::optional<Category> Running() const { return Slot(1); }
  TLEntry Handle() const { return handle_; }

 private:
  std::optional<Category> Slot(std::uint32_t slot) const {
    const TLCategory category = TLEntryGetCategory(handle_, slot);
    return category ? std::optional<Category>(category) : std::nullopt;
  }

  TLEntry handle_;
};

// Owns an iterator of the library and walks it once. `Item` is what it yields. A second begin() goes on at
// the item where the walk before stopped. Iterators point to the range: do not move it while you use them.
template <class Item, class Handle, auto next, auto destroy>
class Range {
 public:
  class Iterator {
   public:
    using value_type = Item;
    using difference_type = std::ptrdiff_t;

    explicit Iterator(const Range* range) : range_(range) {}
    Item operator*() const { return Item(range_->current_); }
    Iterator& operator++() {
      range_->current_ = next(range_->handle_.get());
      return *this;
    }
    void operator++(int) { ++*this; }
    bool operator==(std::default_sentinel_t) const { return range_->current_ == nullptr; }

   private:
    const Range* range_;
  };

  // Takes the iterator over; a null one means that memory ran out.
  explicit Range(Handle handle) : handle_(handle) {
    if (!handle) throw std::bad_alloc();
    current_ = next(handle);
  }

  Iterator begin() const { return Iterator(this); }
  std::default_sentinel_t end() const { return {}; }

 private:
  struct Destroy {
    void operator()(Handle handle) const { destroy(handle); }
  };
  std::unique_ptr<std::remove_pointer_t<Handle>, Destroy> handle_;
  mutable std::invoke_result_t<decltype(next), Handle> current_ = nullptr;  // moved on by iterators
};

using CategoryRange = Range<Category, TLCategoryIterator, TLCategoryIteratorNext, TLCategoryIteratorDestroy>;
using EntryRange = Range<Entry, TLEntryIterator, TLEntryIteratorNext, TLEntryIteratorDestroy>;

struct CategoryFilter {
  std::uint64_t types = 0;     // bit n keeps kind n; 0 keeps all
  const char* name = nullptr;  // null keeps all
};

struct EntryFilter {
  std::optional<Category> category = {};  // in slot 0 or 1; empty keeps all
  std::uint64_t types = 0;                // bit n keeps type n; 0 keeps types 0 to 7
  std::uint64_t from = 0;                 // ticks, included
  std::uint64_t to = UINT64_MAX;          // ticks, included
};

// Gets the fraction done, 0.0 to 1.0; returns false to cancel.
using Progress = std::function<bool(double fraction)>;

// Arms and starts the logger of a controller; see TLStartLog().
inline Status StartLog(const std::string& target, const std::string& triggerTask = {}) {
  return TLStartLog(target.c_str(), triggerTask.c_str());
}

// Selects the scheduler's logger in place of a kernel's number.
inline constexpr std::int32_t schedulerLogger = -1;

// A log, owned. Moved-from logs may only be assigned to or destroyed.
class Log {
 public:
  Log() : handle_(Create()) {}

  // What `progress` throws cancels the append and is thrown again from here. An empty one is not called.
  Status AppendFromTarget(const std::string& target, std::int32_t kernel, const Progress& progress = {}) {
    Reporter reporter{progress, nullptr};
    const Status status = TLTaskLogAppendFromTarget(Handle(), target.c_str(), kernel,
                                                    progress ? &Reporter::Call : nullptr, &reporter);
    if (reporter.thrown) std::rethrow_exception(reporter.thrown);
    return status;
  }
  Status AppendFromFile(const std::string& path) { return TLTaskLogAppendFromFile(Handle(), path.c_str()); }
  Status SaveAsFile(const std::string& path) const { return TLTaskLogSaveAsFile(Handle(), path.c_str()); }

  std::uint64_t StartTime() const { return TLTaskLogGetStartTime(Handle()); }            // ticks
  std::uint64_t StopTime() const { return TLTaskLogGetStopTime(Handle()); }              // ticks
  std::uint64_t TicksPerSecond() const { return TLTaskLogGetTicksPerSecond(Handle()); }  // 0: unknown

  std::uint32_t CategoriesCount(const CategoryFilter& filter = {}) const {
    return TLTaskLogGetCategoriesCount(Handle(), filter.types, filter.name);
  }
  CategoryRange Categories(const CategoryFilter& filter = {}) const {
    return CategoryRange(TLTaskLogGetCategories(Handle(), filter.types, filter.name));
  }
  std::uint64_t EntriesCount(const EntryFilter& filter = {}) const {
    return TLTaskLogGetEntriesCount(Handle(), HandleOf(filter.category), filter.types, filter.from,
                                    filter.to);
  }
  EntryRange Entries(const EntryFilter& filter = {}) const {
    return EntryRange(
        TLTaskLogGetEntries(Handle(), HandleOf(filter.category), filter.types, filter.from, filter.to));
  }

  TLTaskLog Handle() const { return handle_.get(); }

 private:
  struct Destroy {
    void operator()(TLTaskLog log) const { TLTaskLogDestroy(log); }
  };
  // Carries a callback and what it threw across the C boundary.
  struct Reporter {
    const Progress& progress;
    std::exception_ptr thrown;

    static void Call(TLTaskLog, double fraction, std::int32_t* proceed, void* user) {
      auto* self = static_cast<Reporter*>(user);
      if (self->thrown) return;
      try {
        *proceed = self->progress(fraction) ? 1 : 0;
      } catch (...) {
        self->thrown = std::current_exception();
        *proceed = 0;
      }
    }
  };

  static TLTaskLog Create() {
    TLTaskLog log = nullptr;
    if (TLTaskLogCreate(&log) != TL_OK) throw std::bad_alloc();
    return log;
  }
  static TLCategory HandleOf(const std::optional<Category>& category) {
    return category ? category->Handle() : nullptr;
  }

  std::unique_ptr<std::remove_pointer_t<TLTaskLog>, Destroy> handle_;
};

}  // namespace tasklog

#endif

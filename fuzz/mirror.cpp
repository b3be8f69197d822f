#include "mirror.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "check.h"
#include "support/faultstream.h"

namespace fuzz {
namespace {

// What somebody who reads a controller lets one see: its calls, and behind which of them a fraction was
// reported.
struct Listener {
  bool Hear(double fraction) {
    reports.emplace_back(fraction, target.calls.size());
    return reports.size() - 1 != request.cancelAt;
  }

  const Request& request;
  ScriptedTarget& target;
  std::uint64_t entriesBefore;
  std::vector<std::pair<double, std::size_t>> reports = {};
};

void HearLibrary(TLTaskLog log, double fraction, std::int32_t* proceed, void* user) {
  auto& listener = *static_cast<Listener*>(user);
  if (fraction < 1.0) {
    RequireEqual("entries during an append", TLTaskLogGetEntriesCount(log, nullptr, 0, 0, UINT64_MAX),
                 listener.entriesBefore);
  }
  *proceed = listener.Hear(fraction) ? -1 : 0;
}

void RequireSame(TLCategory library, const plain::Category& model) {
  RequireEqual("kind of a category", std::uint32_t{TLCategoryGetType(library)}, std::uint32_t{model.kind});
  Require(model.name == TLCategoryGetName(library), "the name of a category is that of the model");
  RequireEqual("id of a category", TLCategoryGetId(library), model.id);
  RequireEqual("priority of a category", TLTaskGetPriority(library), model.priority);
  RequireEqual("time slice of a category", TLTaskGetTimeslice(library), model.timeSlice);
}

}  // namespace

std::uint32_t Mirror::AppendFromTarget(const Script& script, const Request& request) {
  ScriptedTarget target;
  script(target);
  Listener library{request, target, model_.EntriesCount()};
  const std::uint32_t status =
      TLTaskLogAppendFromTarget(library_.get(), request.target.c_str(), request.kernel,
                                request.reports ? HearLibrary : nullptr, &library);
  const std::vector<std::string> calls = std::exchange(target.calls, {});
  std::optional<ScriptedTarget> unchanged;
  if (!target.changes.empty()) script(unchanged.emplace());
  Listener model{request, unchanged ? *unchanged : target, library.entriesBefore};
  const plain::Progress hear = [&](double fraction) { return model.Hear(fraction); };
  RequireEqual("status of an append from a target", status,
               model_.AppendFromTarget(request.target.c_str(), request.kernel,
                                       request.reports ? hear : plain::Progress()));
  Require(calls == model.target.calls, "library and model call the target alike");
  Require(library.reports == model.reports, "library and model report alike");
  return status;
}

std::uint32_t Mirror::AppendFromFile(const char* path) {
  const std::uint32_t status = TLTaskLogAppendFromFile(library_.get(), path);
  RequireEqual("status of an append from a file", status, model_.AppendFromFile(path));
  return status;
}

std::uint32_t Mirror::AppendFromFile(const Bytes& bytes) {
  const FaultFile file(bytes);
  return AppendFromFile(file.Path());
}

Bytes Mirror::Save() const {
  FaultFile library;
  FaultFile model;
  RequireEqual("status of a save", TLTaskLogSaveAsFile(library_.get(), library.Path()),
               model_.SaveAsFile(model.Path()));
  Require(library.content == model.content, "a save by the library and by the model have the same bytes");
  return std::move(library.content);
}

void Mirror::Ask(const Question& question) const {
  TLCategory handle = nullptr;
  plain::Filter filter{nullptr, question.types, question.from, question.to};
  if (question.category && *question.category < handles_.size()) {
    handle = handles_[*question.category];
    filter.category = model_.categories[*question.category].get();
  }
  RequireEqual("count of entries",
               TLTaskLogGetEntriesCount(library_.get(), handle, filter.types, filter.from, filter.to),
               model_.EntriesCount(filter));
  const TLEntryIterator iterator =
      TLTaskLogGetEntries(library_.get(), handle, filter.types, filter.from, filter.to);
  plain::Cursor cursor = model_.Entries(filter);
  const plain::Entry* entry = nullptr;
  do {
    entry = cursor.Next();
    RequireSame(TLEntryIteratorNext(iterator), entry);
  } while (entry);
  Require(TLEntryIteratorNext(iterator) == nullptr, "an iterator at its end stays there");
  TLEntryIteratorDestroy(iterator);
}

void Mirror::RequireSame(TLEntry library, const plain::Entry* model) const {
  RequireEqual("whether there is another entry", library != nullptr, model != nullptr);
  if (!model) return;
  RequireEqual("timestamp", TLEntryGetTimestamp(library), model->timestamp);
  RequireEqual("type of an entry", std::uint32_t{TLEntryGetType(library)}, model->type);
  for (std::uint32_t slot = 0; slot < 2; ++slot) {
    const plain::Category* category = model->slots[slot];
    Require(TLEntryGetCategory(library, slot) == (category ? handles_[category->place] : nullptr),
            "an entry holds the categories of the model's");
  }
}

void Mirror::AskForCategories(std::uint64_t kinds, const char* name) const {
  std::uint32_t count = 0;
  const TLCategoryIterator iterator = TLTaskLogGetCategories(library_.get(), kinds, name);
  for (const plain::Category* category : model_.Categories(kinds, name)) {
    Require(TLCategoryIteratorNext(iterator) == handles_[category->place], "categories of a name or kind");
    ++count;
  }
  for (int time = 0; time < 2; ++time)
    Require(TLCategoryIteratorNext(iterator) == nullptr, "an iterator at its end stays there");
  TLCategoryIteratorDestroy(iterator);
  RequireEqual("count of categories", TLTaskLogGetCategoriesCount(library_.get(), kinds, name), count);
}

void Mirror::AskAround() const {
  std::vector<std::uint64_t> times = {model_.startTime, model_.stopTime, 0, UINT64_MAX};
  const auto& entries = model_.entries;
  if (!entries.empty()) {
    for (const std::size_t at : {std::size_t{0}, entries.size() / 2, entries.size() - 1}) {
      times.push_back(entries[at].timestamp);
      times.push_back(entries[at].timestamp + 1);
    }
  }
  constexpr std::uint64_t types[] = {0x0, 0xFF, 0x3B, 0x40, 0x7FFF, 0x104, 0x80};
  for (std::size_t i = 0; i < times.size(); ++i) {
    Question question{{}, types[i % std::size(types)], times[i], times[(i * 3 + 1) % times.size()]};
    Ask(question);
    question.category = i;
    Ask(question);
  }
  for (std::size_t i = 0; i < std::min<std::size_t>(model_.categories.size(), 6); ++i) {
    AskForCategories(i, model_.categories[i]->name.c_str());
    AskForCategories(i + 3, nullptr);
  }
}

void Mirror::RequireSame() {
  RequireEqual("start time", TLTaskLogGetStartTime(library_.get()), model_.startTime);
  RequireEqual("stop time", TLTaskLogGetStopTime(library_.get()), model_.stopTime);
  RequireEqual("ticks per second", TLTaskLogGetTicksPerSecond(library_.get()), model_.ticksPerSecond);
  handles_.clear();
  const TLCategoryIterator iterator = TLTaskLogGetCategories(library_.get(), 0, nullptr);
  while (const TLCategory category = TLCategoryIteratorNext(iterator)) handles_.push_back(category);
  TLCategoryIteratorDestroy(iterator);
  RequireEqual("number of categories", handles_.size(), model_.categories.size());
  for (std::size_t i = 0; i < handles_.size(); ++i) fuzz::RequireSame(handles_[i], *model_.categories[i]);
  Ask({.category = {}, .types = UINT64_MAX});
  const bool sorted =
      std::is_sorted(model_.entries.begin(), model_.entries.end(),
                     [](const plain::Entry& a, const plain::Entry& b) { return a.timestamp < b.timestamp; });
  Require(sorted, "entries lie in time order");
}

}  // namespace fuzz

#include "mirror.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <unordered_map>

#include "check.h"
#include "memoryfile.h"

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
  std::uint64_t entriesBefore;
  ScriptedTarget target = {};
  std::vector<std::tuple<double, std::size_t>> reports = {};
};

void HearLibrary(TLTaskLog log, double fraction, std::int32_t* proceed, void* user) {
  auto& listener = *static_cast<Listener*>(user);
  if (fraction < 1.0) {
    RequireEqual("entries during an append", TLTaskLogGetEntriesCount(log, nullptr, 0, 0, UINT64_MAX),
                 listener.entriesBefore);
  }
  *proceed = listener.Hear(fraction) ? -1 : 0;
}

// Categories by their place in the log, none as -1.
template <class Handle>
using Places = std::unordered_map<Handle, std::ptrdiff_t>;

template <class Handle>
Places<Handle> PlacesOf(const std::vector<Handle>& handles) {
  Places<Handle> places{{nullptr, -1}};
  for (const Handle handle : handles) places.emplace(handle, std::ssize(places) - 1);
  return places;
}

// Time, type and the places of both categories.
using Rows = std::vector<std::tuple<std::uint64_t, std::uint32_t, std::ptrdiff_t, std::ptrdiff_t>>;

Rows RowsOf(TLEntryIterator iterator, const Places<TLCategory>& places) {
  Rows rows;
  while (const TLEntry entry = TLEntryIteratorNext(iterator)) {
    rows.emplace_back(TLEntryGetTimestamp(entry), TLEntryGetType(entry),
                      places.at(TLEntryGetCategory(entry, 0)), places.at(TLEntryGetCategory(entry, 1)));
  }
  Require(TLEntryIteratorNext(iterator) == nullptr, "an iterator at its end stays there");
  TLEntryIteratorDestroy(iterator);
  return rows;
}

Rows RowsOf(plain::Cursor cursor, const Places<const plain::Category*>& places) {
  Rows rows;
  while (const plain::Entry* entry = cursor.Next()) {
    rows.emplace_back(entry->timestamp, entry->type, places.at(entry->slots[0]), places.at(entry->slots[1]));
  }
  return rows;
}

// Kind, name, id, priority and time slice.
using CategoryRows =
    std::vector<std::tuple<std::uint32_t, std::string, std::uint32_t, std::uint32_t, std::int32_t>>;

CategoryRows RowsOf(const std::vector<TLCategory>& handles) {
  CategoryRows rows;
  for (const TLCategory handle : handles) {
    rows.emplace_back(TLCategoryGetType(handle), TLCategoryGetName(handle), TLCategoryGetId(handle),
                      TLTaskGetPriority(handle), TLTaskGetTimeslice(handle));
  }
  return rows;
}

CategoryRows RowsOf(const std::vector<const plain::Category*>& categories) {
  CategoryRows rows;
  for (const plain::Category* c : categories)
    rows.emplace_back(c->kind, c->name, c->id, c->priority, c->timeSlice);
  return rows;
}

}  // namespace

std::uint32_t Mirror::AppendFromTarget(const Script& script, const Request& request) {
  const std::uint64_t entriesBefore = model_.EntriesCount();
  Listener library{request, entriesBefore};
  script(library.target);
  const std::uint32_t status =
      TLTaskLogAppendFromTarget(library_.get(), request.target.c_str(), request.kernel,
                                request.reports ? HearLibrary : nullptr, &library);
  Listener model{request, entriesBefore};
  script(model.target);
  const plain::Progress hear = [&](double fraction) { return model.Hear(fraction); };
  RequireEqual("status of an append from a target", status,
               model_.AppendFromTarget(request.target.c_str(), request.kernel,
                                       request.reports ? hear : plain::Progress()));
  RequireEqual("calls", library.target.calls, model.target.calls);
  RequireEqual("reports", library.reports, model.reports);
  return status;
}

std::uint32_t Mirror::AppendFromFile(const Bytes& bytes) {
  const MemoryFile file(bytes);
  const std::uint32_t status = TLTaskLogAppendFromFile(library_.get(), file.Path());
  RequireEqual("status of an append from a file", status, model_.AppendFromFile(file.Path()));
  return status;
}

Bytes Mirror::Save() const {
  const MemoryFile file;
  const std::uint32_t status = TLTaskLogSaveAsFile(library_.get(), file.Path());
  const Bytes library = file.Content();
  RequireEqual("status of a save", status, model_.SaveAsFile(file.Path()));
  Require(library == file.Content(), "a save by the library and by the model have the same bytes");
  return library;
}

void Mirror::Ask(const std::vector<Question>& questions) const {
  const std::vector<TLCategory> handles = Handles();
  const auto handlePlaces = PlacesOf(handles);
  const auto modelPlaces = PlacesOf(model_.Categories());
  for (const Question& question : questions) {
    TLCategory handle = nullptr;
    plain::Filter filter{nullptr, question.types, question.from, question.to};
    if (question.category && *question.category < handles.size()) {
      handle = handles[*question.category];
      filter.category = model_.categories[*question.category].get();
    }
    RequireEqual("count of entries",
                 TLTaskLogGetEntriesCount(library_.get(), handle, filter.types, filter.from, filter.to),
                 model_.EntriesCount(filter));
    const TLEntryIterator iterator =
        TLTaskLogGetEntries(library_.get(), handle, filter.types, filter.from, filter.to);
    RequireEqual("entries", RowsOf(iterator, handlePlaces), RowsOf(model_.Entries(filter), modelPlaces));
  }
}

void Mirror::AskForCategories(std::uint64_t kinds, const char* name) const {
  const std::vector<TLCategory> handles = Handles(kinds, name);
  RequireEqual("categories", RowsOf(handles), RowsOf(model_.Categories(kinds, name)));
  RequireEqual("count of categories", std::size_t{TLTaskLogGetCategoriesCount(library_.get(), kinds, name)},
               handles.size());
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
  std::vector<Question> questions;
  for (std::size_t i = 0; i < times.size(); ++i) {
    Question question{{}, types[i % std::size(types)], times[i], times[(i * 3 + 1) % times.size()]};
    questions.push_back(question);
    question.category = i;
    questions.push_back(question);
  }
  Ask(questions);
  for (std::size_t i = 0; i < std::min<std::size_t>(model_.categories.size(), 6); ++i) {
    AskForCategories(i, model_.categories[i]->name.c_str());
    AskForCategories(i + 3, nullptr);
  }
}

void Mirror::RequireSame() const {
  RequireEqual("start time", TLTaskLogGetStartTime(library_.get()), model_.startTime);
  RequireEqual("stop time", TLTaskLogGetStopTime(library_.get()), model_.stopTime);
  RequireEqual("ticks per second", TLTaskLogGetTicksPerSecond(library_.get()), model_.ticksPerSecond);
  AskForCategories(0, nullptr);
  Ask({{.category = {}, .types = UINT64_MAX}});
  const bool sorted =
      std::is_sorted(model_.entries.begin(), model_.entries.end(),
                     [](const plain::Entry& a, const plain::Entry& b) { return a.timestamp < b.timestamp; });
  Require(sorted, "entries lie in time order");
}

std::vector<TLCategory> Mirror::Handles(std::uint64_t kinds, const char* name) const {
  std::vector<TLCategory> handles;
  const TLCategoryIterator iterator = TLTaskLogGetCategories(library_.get(), kinds, name);
  while (const TLCategory category = TLCategoryIteratorNext(iterator)) handles.push_back(category);
  Require(TLCategoryIteratorNext(iterator) == nullptr, "an iterator at its end stays there");
  TLCategoryIteratorDestroy(iterator);
  return handles;
}

}  // namespace fuzz

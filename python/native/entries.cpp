// Entries as one array. The library refers to categories by address, and numbers are what is wanted, so each
// entry is gone over once; numpy gives the memory, in large pages.
#include <pybind11/numpy.h>

#include <algorithm>
#include <future>
#include <thread>

#include "arrays.h"
#include "tables.h"

namespace py = pybind11;

namespace python {
namespace {

// Small where there are few subjects, as nearly always: half as much as an entry of the library.
template <class Number>
struct Row {
  std::uint64_t time;
  std::uint16_t type;
  Number subject;
  Number running;
};
using SmallRow = Row<std::int16_t>;
using LargeRow = Row<std::int32_t>;

using Part = analysis::Lane::Segment;

// At least as many as there are: it also counts types that have no meaning, and entries outside the period.
std::uint64_t MostEntriesOf(const Part& part) {
  return part.log->EntriesCount({.from = part.from, .to = part.to});
}

// Returns where the rows end. The library applies no bound outside the log's period.
template <class Number>
Row<Number>* Fill(const analysis::Subjects& names, const Part& part, Row<Number>* row) {
  const auto numberOf = [&](const tasklog::Entry& entry, std::uint32_t slot) {
    return static_cast<Number>(names.Find(TLEntryGetCategory(entry.Handle(), slot)));  // none is all bits: -1
  };
  for (const tasklog::Entry entry : part.log->Entries({.from = part.from, .to = part.to})) {
    const std::uint64_t time = entry.Timestamp();
    if (time < part.from || time > part.to) continue;
    *row++ = {time, static_cast<std::uint16_t>(entry.Type()), numberOf(entry, 0), numberOf(entry, 1)};
  }
  return row;
}

// By two threads, each a half of the period: a third of the time is the system's, which clears new pages.
template <class Number>
Row<Number>* FillByTwo(const analysis::Subjects& names, const Part& part, Row<Number>* row) {
  Part halves[] = {part, part};
  halves[0].to = part.from + (part.to - part.from) / 2;
  halves[1].from = halves[0].to + 1;
  const std::uint64_t first = MostEntriesOf(halves[0]);
  // Where the log's period is shorter than its entries, the halves share some.
  const bool areApart = part.from < part.to && first + MostEntriesOf(halves[1]) == MostEntriesOf(part);
  if (!areApart) return Fill(names, part, row);
  Row<Number>* const middle = row + first;
  auto other = std::async(std::launch::async, [&] { return Fill(names, halves[1], middle); });
  Row<Number>* const end = Fill(names, halves[0], row);
  Row<Number>* const otherEnd = other.get();
  return end == middle ? otherEnd : std::move(middle, otherEnd, end);
}

template <class Number>
py::array Rows(const analysis::Lane& lane) {
  constexpr std::uint64_t enoughForTwo = 500'000;
  std::uint64_t most = 0;
  for (const Part& part : lane.Segments()) most += MostEntriesOf(part);
  py::array_t<Row<Number>> rows(static_cast<py::ssize_t>(most));
  Row<Number>* const begin = rows.mutable_data();
  Row<Number>* end = begin;
  {
    const py::gil_scoped_release others;
    const bool byTwo = most >= enoughForTwo && std::thread::hardware_concurrency() > 1;
    for (const Part& part : lane.Segments())
      end = byTwo ? FillByTwo(lane.Names(), part, end) : Fill(lane.Names(), part, end);
  }
  const py::ssize_t count = end - begin;
  return count == rows.size() ? rows : rows[py::slice(0, count, 1)].template cast<py::array>();
}

}  // namespace

py::array EntriesOf(const Lane& lane) {
  const analysis::Subjects& names = lane.Lanes().Names();
  const std::size_t count = names.Tasks().size() + names.MarkSubjects().size();
  return count <= INT16_MAX ? Rows<std::int16_t>(lane.Lanes()) : Rows<std::int32_t>(lane.Lanes());
}

void DescribeRows() {
  PYBIND11_NUMPY_DTYPE(SmallRow, time, type, subject, running);
  PYBIND11_NUMPY_DTYPE(LargeRow, time, type, subject, running);
}

}  // namespace python

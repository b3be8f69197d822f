// What a lane holds, as columns. Each is filled without the interpreter and handed over without a copy.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "lane.h"

namespace python {

// An array of the lane's entries of types 0 to 7: time, type, subject, running.
pybind11::array EntriesOf(const Lane& lane);
// Once, before the first array: what a row of it is.
void DescribeRows();
// Dictionaries of columns, in the order of time; jobs in that of their ends.
pybind11::dict RunsOf(const Lane& lane);
pybind11::dict JobsOf(const Lane& lane);
// Both selectors as text; with "begin", "end" and, as numbers, "unmatched" and what the command prints:
// "json".
pybind11::dict LatenciesOf(const Lane& lane, const std::string& begin, const std::string& end);

// What entries, runs and jobs refer to by number: (name, kind, id, priority, time slice).
pybind11::list SubjectsOf(const Lane& lane);
pybind11::dict GapsOf(const Lane& lane);

}  // namespace python

// Small controllers for tests, as scenario files. Time advances with each read of a buffer only, so that
// what is read is the same every time.
#pragma once

#include <string>

// The scheduler's logger with `slots` cells: a task every 10 ms that runs for 2 ms, so 2 records in 10 ms.
// Each read finds it `step` later. The timer counts microseconds from 1 s on.
inline std::string SteppedScenario(const std::string& step, int slots) {
  return "clock = \"stepped\"\nstep = \"" + step +
         "\"\n[timer]\nresolution_ns = 1000.0\nstart_ticks = 1000000\n[scheduler]\nslots = " +
         std::to_string(slots) +
         "\n[[scheduler.task]]\nname = \"Ctrl\"\npriority = 5\nperiod = \"10ms\"\noffset = \"1ms\"\nrun = "
         "\"2ms\"\n";
}

// A kernel whose logger works like the scheduler's, for behind SteppedScenario().
inline std::string SteppedKernel(int number) {
  const std::string n = std::to_string(number);
  return "[[kernel]]\nnumber = " + n + "\nslots = 64\n[[kernel.task]]\nname = \"Axis" + n +
         "\"\npriority = 5\nperiod = \"10ms\"\noffset = \"1ms\"\nrun = \"2ms\"\n";
}

// A fault, for behind all others: `keys` says what goes wrong and when.
inline std::string Fault(const std::string& keys) { return "[[fault]]\n" + keys + "\n"; }

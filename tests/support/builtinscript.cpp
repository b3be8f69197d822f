// The script that the stand-alone scripted library follows while no test has put one in force: a small
// machine, so that a program that knows only the library's exports has something to read.
#include "support/ring.h"

namespace {

struct BuiltinScript : ScriptedTarget {
  BuiltinScript() {
    PutCategories(*this);
    PutLogger(*this, "Kernel.1.Logger",
              RingWords(1000, Laps({{4, 1000, 1}, {0, 1010, 2}, {6, 1020, 0x9000}, {7, 1030, 0x53544B4F}},
                                   {{4, 990, 3}})));
    procedures["Kernel.1.Logger.Start()"] = 1.0;
    procedures["Kernel.2.Logger.Start()"] = 0.0;
    errorTexts[0x50201] = "scripted: no such variable";
  }
};

BuiltinScript script;

}  // namespace

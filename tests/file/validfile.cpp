// The same two tasks in every version; stamps, names, events and ids as the version has them.
#include "validfile.h"

#include <algorithm>

Bytes ValidFile(std::uint16_t baseVersion, std::uint16_t fileVersion) {
  const auto version = std::max(baseVersion, fileVersion);
  const char* stampName = version > 0x0101 ? "TP1" : nullptr;
  const char* eventName = version > 0x0102 ? "OVRN" : nullptr;
  ByteWriter writer;
  writer.Header({.baseVersion = baseVersion, .fileVersion = fileVersion, .tickRate = 2000001, .divisor = 2},
                2);
  writer.Section({"Idle",
                  0,
                  10,
                  {{4, 0, 1000},
                   {5, 2, 2000},
                   {7, 8, 3000, stampName},
                   {8, 8, 3000, eventName},
                   {0xABCDEF02, 1, 4000},
                   {3, 0, 5000}}});
  writer.Section({"Ctrl", 5, -1, {{3, 0, 1000}, {2, 2, 2000}, {5, 1, 4000}, {0, 2, 4500}, {2, 0, 5000}}});
  if (version > 0x0100) writer.Section({"Stamps", 0, 0, {{3, 0, 1000}, {7, 9, 3000, stampName}}});
  if (version > 0x0102) writer.Section({"Events", 0, 0, {{3, 0, 1000}, {8, 0, 3500, eventName}}});
  return writer.Result();
}

std::string EntriesOfValidFile(std::uint32_t effectiveVersion) {
  std::string entries = "2000 0 Ctrl Idle; ";
  if (effectiveVersion > 0x0100)
    entries += effectiveVersion > 0x0101 ? "3000 6 TP1 Ctrl; " : "3000 6  Ctrl; ";
  if (effectiveVersion > 0x0102) entries += "3500 7 OVRN Ctrl; ";
  return entries + "4000 0 Idle Ctrl; 4500 2 Ctrl Idle";
}

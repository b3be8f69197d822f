// At which sizes operations are counted; shared by the program that runs them and the test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace growth {

struct Setting {
  std::size_t entries;
  std::uint32_t taskCount;
};

// Of operations that look at all entries: each size is twice the one before.
inline constexpr std::size_t smallest = 2000;
inline constexpr Setting linearSettings[] = {{smallest, 8},   {2 * smallest, 8},   {4 * smallest, 8},
                                             {smallest, 512}, {2 * smallest, 512}, {4 * smallest, 512}};
// Of exports, of which there are many.
inline constexpr std::size_t smallestExport = 1000;
inline constexpr Setting exportSettings[] = {{smallestExport, 8},       {2 * smallestExport, 8},
                                             {4 * smallestExport, 8},   {smallestExport, 512},
                                             {2 * smallestExport, 512}, {4 * smallestExport, 512}};
// The same, of the shapes of shapes.h. The largest file has more records than the reader sorts at once.
constexpr std::size_t SmallestShape(bool isFile) { return isFile ? 1100 : 400; }
// Of operations that must not.
inline constexpr std::size_t few = 4096;
inline constexpr std::size_t many = 16 * few;
inline constexpr Setting flatSettings[] = {{few, 64}, {many, 64}};

// The name of a count.
inline std::string LabelOf(const std::string& operation, Setting setting) {
  return operation + "/" + std::to_string(setting.entries) + "/" + std::to_string(setting.taskCount);
}

}  // namespace growth

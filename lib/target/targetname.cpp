// Kernel suffix of a target name: find, read, replace.
#include "target/target.h"

namespace {

using Position = std::string_view::size_type;

// The place of the first of the digits at the end of a name. The first character never counts as one: a name
// is never a suffix alone.
Position FindDigits(std::string_view target) {
  Position begin = target.size();
  while (begin > 1 && target[begin - 1] >= '1' && target[begin - 1] <= '8') --begin;
  return begin;
}

}  // namespace

Position FindKernelSuffix(std::string_view target) {
  const Position digits = FindDigits(target);
  if (digits < 2 || target[digits - 1] != '@') return std::string_view::npos;
  const char separator = target[digits - 2];
  return separator == '/' || separator == '\\' ? digits - 2 : std::string_view::npos;
}

u32 KernelOfTarget(std::string_view target) {
  if (FindKernelSuffix(target) == std::string_view::npos) return 0;
  u32 kernel = 0;
  for (const char digit : target.substr(FindDigits(target)))
    kernel = 10 * kernel + static_cast<u32>(digit - '0');
  return kernel;
}

std::string WorkingTargetName(std::string_view target, i32 kernel) {
  std::string name(target.substr(0, FindKernelSuffix(target)));
  if (kernel > 0) name += "/@" + std::to_string(kernel);
  return name;
}

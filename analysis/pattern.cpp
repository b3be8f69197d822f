#include "pattern.h"

namespace analysis {
namespace {

// Where the set that begins at `open` ends, on its bracket; npos when it does not, and is no set then.
std::size_t EndOfSet(std::string_view pattern, std::size_t open) {
  std::size_t first = open + 1;
  if (first < pattern.size() && pattern[first] == '!') ++first;
  return pattern.find(']', first + 1);  // a bracket in front is a member
}

bool IsInSet(std::string_view set, char byte) {
  const bool isNegated = set[0] == '!';
  if (isNegated) set.remove_prefix(1);
  const auto value = static_cast<unsigned char>(byte);
  bool isIn = false;
  for (std::size_t i = 0; i < set.size(); ++i) {
    const auto low = static_cast<unsigned char>(set[i]);
    const bool isRange = i + 2 < set.size() && set[i + 1] == '-';
    const auto high = isRange ? static_cast<unsigned char>(set[i + 2]) : low;
    isIn |= low <= value && value <= high;
    if (isRange) i += 2;
  }
  return isIn != isNegated;
}

// Matches one byte with what stands at `place`, which is moved behind it.
bool MatchesOne(std::string_view pattern, std::size_t& place, char byte) {
  const char sign = pattern[place];
  const std::size_t end = sign == '[' ? EndOfSet(pattern, place) : std::string_view::npos;
  if (end != std::string_view::npos) {
    const std::string_view set = pattern.substr(place + 1, end - place - 1);
    place = end + 1;
    return IsInSet(set, byte);
  }
  if (sign == '\\' && place + 1 < pattern.size()) ++place;
  return pattern[place++] == byte || sign == '?';
}

}  // namespace

// What follows the last star is tried at one place after the other.
bool MatchesPattern(std::string_view pattern, std::string_view name) {
  std::size_t inPattern = 0;
  std::size_t behindStar = std::string_view::npos;
  std::size_t retry = 0;
  for (std::size_t inName = 0; inName < name.size();) {
    if (inPattern < pattern.size() && pattern[inPattern] == '*') {
      behindStar = ++inPattern;
      retry = inName;
    } else if (inPattern < pattern.size() && MatchesOne(pattern, inPattern, name[inName])) {
      ++inName;
    } else if (behindStar == std::string_view::npos) {
      return false;
    } else {
      inPattern = behindStar;
      inName = ++retry;
    }
  }
  return pattern.find_first_not_of('*', inPattern) == std::string_view::npos;
}

std::string PatternOf(std::string_view name) {
  std::string pattern;
  for (const char byte : name) {
    if (std::string_view("*?[\\").find(byte) != std::string_view::npos) pattern += '\\';
    pattern += byte;
  }
  return pattern;
}

}  // namespace analysis

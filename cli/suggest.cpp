#include "suggest.h"

#include <fmt/format.h>

#include <algorithm>

#include "text.h"

namespace cli {
namespace {

// Longer words are not compared: the effort grows with the square, and nobody types them.
constexpr std::size_t longestWord = 256;

bool SameLetter(char a, char b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  return lower(a) == lower(b);
}

}  // namespace

std::size_t EditDistance(std::string_view a, std::string_view b) {
  // rows[2] is the row being filled, the others the two before it: a swap reaches back two.
  std::vector<std::size_t> rows[3];
  for (auto& row : rows) row.resize(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) rows[2][j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::rotate(std::begin(rows), std::begin(rows) + 1, std::end(rows));
    rows[2][0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = rows[1][j - 1] + (SameLetter(a[i - 1], b[j - 1]) ? 0 : 1);
      rows[2][j] = std::min({rows[1][j] + 1, rows[2][j - 1] + 1, replaced});
      const bool swapped = i > 1 && j > 1 && SameLetter(a[i - 1], b[j - 2]) && SameLetter(a[i - 2], b[j - 1]);
      if (swapped) rows[2][j] = std::min(rows[2][j], rows[0][j - 2] + 1);
    }
  }
  return rows[2][b.size()];
}

std::string Suggestion(std::string_view word, const std::vector<std::string>& names) {
  if (word.size() > longestWord) return {};
  const std::string* nearest = nullptr;
  std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
  for (const std::string& name : names) {
    if (name.size() > longestWord) continue;
    const std::size_t distance = EditDistance(word, name);
    if (distance >= least) continue;
    least = distance;
    nearest = &name;
  }
  return nearest ? "; did you mean " + Quoted(*nearest) + "?" : std::string();
}

std::string Listed(const std::vector<std::string>& parts, const char* lastWord) {
  std::string list;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) list += i + 1 == parts.size() ? fmt::format(" {} ", lastWord) : ", ";
    list += parts[i];
  }
  return list;
}

std::string Alternatives(const std::vector<std::string>& names) {
  std::vector<std::string> quoted;
  for (const std::string& name : names) quoted.push_back(Quoted(name));
  return Listed(quoted, "or");
}

}  // namespace cli

#include <cmath>
#include <nlohmann/json.hpp>

#include "call.h"
#include "cli/args.h"
#include "cli/failure.h"

namespace viewer {
namespace {

[[noreturn]] void Refuse(const char* key, const char* kind) {
  throw cli::Failure(fmt::format("the key '{}' of a call is not {}", key, kind));
}

}  // namespace

bool Request::Has(const char* key) const { return keys_.contains(key) && !keys_[key].is_null(); }

const nlohmann::json& Request::At(const char* key) const {
  if (!Has(key)) throw cli::Failure(fmt::format("a call lacks the key '{}'", key));
  return keys_[key];
}

Ticks Request::Time(const char* key) const {
  const nlohmann::json& value = At(key);
  const auto ticks = value.is_string() ? cli::ParseNumber(value.get<std::string>()) : std::nullopt;
  if (!ticks) Refuse(key, "a number of ticks");
  return *ticks;
}

double Request::Number(const char* key) const {
  const nlohmann::json& value = At(key);
  if (!value.is_number()) Refuse(key, "a number");
  return value.get<double>();
}

std::size_t Request::Index(const char* key) const {
  const double number = Number(key);
  if (!(number >= 0 && number < 4294967296.0) || number != std::floor(number)) Refuse(key, "an index");
  return static_cast<std::size_t>(number);
}

bool Request::Flag(const char* key) const { return Has(key) && At(key).is_boolean() && At(key).get<bool>(); }

std::string Request::Text(const char* key) const {
  const nlohmann::json& value = At(key);
  if (!value.is_string()) Refuse(key, "a text");
  return value.get<std::string>();
}

std::vector<std::string> Request::Texts(const char* key) const {
  std::vector<std::string> texts;
  if (!Has(key)) return texts;
  for (const nlohmann::json& value : At(key)) {
    if (!value.is_string()) Refuse(key, "a list of texts");
    texts.push_back(value.get<std::string>());
  }
  return texts;
}

}  // namespace viewer

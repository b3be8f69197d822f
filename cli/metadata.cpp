#include "metadata.h"

#include <nlohmann/json.hpp>
#include <stdexcept>

#include "analysis/meanings.h"
#include "args.h"

namespace cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr int schema = 1;

// Ticks need 64 bits, which numbers in JSON need not have.
Json TicksText(std::uint64_t ticks) { return std::to_string(ticks); }

std::uint64_t Ticks(const Json& object, const char* key) {
  if (const auto ticks = ParseNumber(object.at(key).get_ref<const std::string&>())) return *ticks;
  throw std::runtime_error(std::string(key) + " is not a number of ticks");
}

// Empty stands for unknown here and null there.
Json TextOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

std::string Text(const Json& object, const char* key) {
  const Json& value = object.at(key);
  return value.is_null() ? std::string() : value.get<std::string>();
}

Json PeriodJson(const Period& period) {
  return {{"startTicks", TicksText(period.start)}, {"stopTicks", TicksText(period.stop)}};
}

Json LoggerJson(const RecordedLogger& logger) {
  Json files = Json::array();
  for (const RecordedFile& file : logger.files) {
    files.push_back({{"name", file.name}});
    files.back().update(PeriodJson(file.period));
  }
  Json gaps = Json::array();
  for (const Gap& gap : logger.gaps) {
    gaps.push_back({{"fromTicks", TicksText(gap.from)}, {"toTicks", TicksText(gap.to)}});
  }
  Json json{{"name", logger.name}};
  json["ticksPerSecond"] = logger.ticksPerSecond == 0 ? Json() : Json(logger.ticksPerSecond);
  if (!logger.files.empty()) {
    json.update(PeriodJson({logger.files.front().period.start, logger.files.back().period.stop}));
  }
  json.update({{"reads", logger.reads}, {"files", files}, {"gaps", gaps}});
  return json;
}

RecordedLogger ParseLogger(const Json& json) {
  RecordedLogger logger{.name = Text(json, "name"), .reads = json.at("reads").get<std::uint64_t>()};
  const Json& rate = json.at("ticksPerSecond");
  if (!rate.is_null()) logger.ticksPerSecond = rate.get<std::uint64_t>();
  for (const Json& file : json.at("files")) {
    logger.files.push_back({Text(file, "name"), {Ticks(file, "startTicks"), Ticks(file, "stopTicks")}});
  }
  for (const Json& gap : json.at("gaps")) {
    logger.gaps.push_back({Ticks(gap, "fromTicks"), Ticks(gap, "toTicks")});
  }
  return logger;
}

std::string Switches(const Json& json) {
  const std::string text = Text(json, "switches");
  std::string mistake;
  if (!text.empty() && !analysis::Meanings::Parse(text, mistake)) {
    throw std::runtime_error("switches: " + mistake);
  }
  return text;
}

Metadata Parse(const Json& json) {
  if (json.at("schema") != schema) throw std::runtime_error("a newer version of this program reads it");
  Metadata metadata{.tool = Text(json, "tool"),
                    .target = Text(json, "target"),
                    .startedAt = Text(json, "startedAt"),
                    .endedAt = Text(json, "endedAt"),
                    .switches = Switches(json),
                    .idleTask = Text(json, "idleTask"),
                    .merged = json.at("merged").get<bool>(),
                    .endedBy = {},
                    .loggers = {}};
  if (const Json& by = json.at("endedBy"); !by.is_null()) {
    metadata.endedBy = Happening{Text(by, "what"), Text(by, "logger"), Ticks(by, "ticks")};
  }
  for (const Json& logger : json.at("loggers")) metadata.loggers.push_back(ParseLogger(logger));
  if (metadata.loggers.empty()) throw std::runtime_error("it names no logger");
  return metadata;
}

}  // namespace

std::string ToJson(const Metadata& metadata) {
  Json json{{"schema", schema},
            {"tool", metadata.tool},
            {"target", metadata.target},
            {"startedAt", metadata.startedAt},
            {"endedAt", metadata.endedAt},
            {"endedBy", Json()},
            {"switches", TextOrNull(metadata.switches)},
            {"idleTask", TextOrNull(metadata.idleTask)},
            {"merged", metadata.merged},
            {"loggers", Json::array()}};
  if (const auto& by = metadata.endedBy) {
    json["endedBy"] = {
        {"what", by->what}, {"logger", TextOrNull(by->logger)}, {"ticks", TicksText(by->ticks)}};
  }
  for (const RecordedLogger& logger : metadata.loggers) json["loggers"].push_back(LoggerJson(logger));
  // Names from a controller may be no UTF-8.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Metadata ParseMetadata(const std::string& json) {
  try {
    return Parse(Json::parse(json));
  } catch (const Json::exception& error) {
    const std::string text = error.what();  // "[json.exception.parse_error.101] parse error at line 1, ..."
    throw std::runtime_error(text.substr(text.find("] ") + 2));
  }
}

bool LooksLikeMetadata(const std::string& json) {
  const Json parsed = Json::parse(json, nullptr, false);
  return parsed.is_object() && parsed.contains("schema") && parsed.contains("loggers");
}

}  // namespace cli

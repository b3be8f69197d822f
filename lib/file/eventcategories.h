// Finds the categories that the records of a file name again and again.
#pragma once

#include <functional>
#include <string_view>

#include "model/model.h"

// Stands before the log's registry for one section, whose categories are of one kind. No two testpoints share
// name and id, and no two timing issues share a name, so a category that fits is the right one.
class EventCategories {
 public:
  explicit EventCategories(_STLTaskLog& log) : log_(log) {}

  _STLCategory* Testpoint(std::string_view name, u32 id) {
    _STLCategory*& place = recent_[(std::hash<std::string_view>()(name) + id) % recentCount];
    if (!place || place->GetId() != id || place->name != name)
      place = log_.FindOrCreateTestpoint(std::string(name), id);
    return place;
  }
  _STLCategory* TimingIssue(std::string_view name) {
    _STLCategory*& place = recent_[std::hash<std::string_view>()(name) % recentCount];
    if (!place || place->name != name) place = log_.FindOrCreateTimingIssue(std::string(name));
    return place;
  }

 private:
  static constexpr std::size_t recentCount = thresholds::remembered;

  _STLTaskLog& log_;
  _STLCategory* recent_[recentCount] = {};
};

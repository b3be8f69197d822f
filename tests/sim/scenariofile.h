// A scenario in a file of its own, so that each test meets a controller of its own.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace simtest {

class ScenarioFile {
 public:
  explicit ScenarioFile(const std::string& text) {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    static int count = 0;
    path_ = testing::TempDir() + "sim_" + test->name() + std::to_string(++count) + ".toml";
    std::ofstream(path_) << text;
  }
  ~ScenarioFile() { std::remove(path_.c_str()); }
  ScenarioFile(const ScenarioFile&) = delete;
  ScenarioFile& operator=(const ScenarioFile&) = delete;

  const char* Target() const { return path_.c_str(); }
  std::string Kernel(int number) const { return path_ + "/@" + std::to_string(number); }

 private:
  std::string path_;
};

}  // namespace simtest

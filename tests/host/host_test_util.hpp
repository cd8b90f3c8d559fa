// Helpers of the host tests: a temporary folder that removes itself, files
// in it, and the JSON lines of a log.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdlib.h>
#include <string>
#include <vector>

#include "../calendar/date_oracle.hpp"
#include "host/format.hpp"
#include "host/hostdate.hpp"
#include "host/process_host.hpp"
#include "run/missing.hpp"

namespace qvt::testing {

class TempDir {
 public:
  TempDir() {
    std::string t = (std::filesystem::temp_directory_path() / "qvt-host-test-XXXXXX").string();
    if (!::mkdtemp(t.data())) throw std::runtime_error("mkdtemp failed");
    path_ = t;
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string file(const std::string& name) const { return path_ + "/" + name; }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream f(file(name), std::ios::binary | std::ios::trunc);
    f << bytes;
  }
  std::string read(const std::string& name) const {
    std::ifstream f(file(name), std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
  }
  bool exists(const std::string& name) const { return std::filesystem::exists(file(name)); }
  std::vector<std::string> entries() const {
    std::vector<std::string> r;
    for (const auto& e : std::filesystem::directory_iterator(path_)) r.push_back(e.path().filename().string());
    return r;
  }

 private:
  std::string path_;
};

// Every line of a JSON-lines log, parsed.
inline std::vector<nlohmann::json> jsonLines(const std::string& log) {
  std::vector<nlohmann::json> r;
  std::istringstream in(log);
  for (std::string line; std::getline(in, line);)
    if (!line.empty()) r.push_back(nlohmann::json::parse(line));
  return r;
}

// The message numbers of group 900 in a JSON-lines log, in order.
inline std::vector<int> hostNumbers(const std::string& log) {
  std::vector<int> r;
  for (const auto& j : jsonLines(log))
    if (j.at("group") == 900) r.push_back(j.at("number").get<int>());
  return r;
}

}  // namespace qvt::testing

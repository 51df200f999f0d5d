#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <vector>

namespace fabscope::internal {

// A test with a folder of its own, which is gone afterwards.
class FolderTest : public ::testing::Test {
 protected:
  FolderTest() {
    std::string name = ::testing::TempDir() + "/fabscope-XXXXXX";
    folder = mkdtemp(name.data());
  }
  ~FolderTest() override { std::filesystem::remove_all(folder); }

  // Of all that is in the folder, sorted.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
  }
  static std::string Read(const std::filesystem::path& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
  }

  std::filesystem::path folder;
};

}  // namespace fabscope::internal

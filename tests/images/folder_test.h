// What the tests of image files share.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "images/whole_file.h"

namespace fliglaf::test {

/// An empty folder of the running test, removed with what it holds.
class FolderTest : public ::testing::Test {
 protected:
  FolderTest() { std::filesystem::create_directories(folder_); }
  ~FolderTest() override { std::filesystem::remove_all(folder_); }

  [[nodiscard]] std::filesystem::path File(const std::string& name) const { return folder_ / name; }

  std::filesystem::path Write(const std::string& name, const std::string& content) const {
    std::ofstream(File(name), std::ios::binary) << content;
    return File(name);
  }

  static std::string Content(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  /// The names in the folder, sorted.
  [[nodiscard]] std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
  }

 private:
  std::filesystem::path folder_ = std::filesystem::path(::testing::TempDir()) /
                                  ("fliglaf-images-" + std::to_string(std::random_device{}()));
};

/// The message of the ImageError that `call` throws; a test failure without one.
std::string ErrorOf(auto call) {
  try {
    call();
  } catch (const ImageError& error) {
    return error.what();
  }
  ADD_FAILURE() << "no ImageError";
  return {};
}

}  // namespace fliglaf::test

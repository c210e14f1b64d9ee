#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace QZTools {

/// What a program left behind.
struct Outcome {
  std::string out;
  std::string messages;
  int status = -1;
};

/// Runs tools through the shell in a folder of its own, which ends with the test.
class ToolRun : public testing::Test {
 protected:
  ToolRun() {
    std::string name = testing::TempDir() + "qztools-XXXXXX";
    folder = mkdtemp(name.data());
  }
  ~ToolRun() override { std::filesystem::remove_all(folder); }

  std::string path(const std::string& name) const { return (folder / name).string(); }

  void write(const std::string& name, const std::string& content) const {
    std::ofstream(path(name), std::ios::binary) << content;
  }

  std::string read(const std::string& name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  bool exists(const std::string& name) const { return std::filesystem::exists(path(name)); }

  /// Runs a shell command in the folder, with the tools on the path.
  Outcome run(const std::string& command) const {
    const std::string script = "cd '" + folder.string() + "' && PATH='" QZ_TOOLS "':\"$PATH\" && export PATH && { " +
                               command + "\n} >.out 2>.err";
    const int status = std::system(script.c_str());
    return {read(".out"), read(".err"), WIFEXITED(status) ? WEXITSTATUS(status) : -1};
  }

  /// The one message of a run that fails, and puts nothing out.
  std::string refusal(const std::string& command) const {
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 1) << command;
    EXPECT_EQ(outcome.out, "") << command;
    return outcome.messages;
  }

 private:
  std::filesystem::path folder;
};

}  // namespace QZTools

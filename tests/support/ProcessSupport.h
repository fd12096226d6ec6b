#pragma once

#include <string>
#include <vector>

// Running programs from tests: shell words, bounded runs and what they wrote.
namespace testing_support {

// |text| as one shell word.
std::string quoted(const std::string& text);
// Runs |command| through the shell, bounded to two minutes; returns its exit status.
int run(const std::string& command);
// |command| (shell words) run on an X server of its own, which ends with it.
std::string onPrivateDisplay(const std::string& command);
std::vector<std::string> readLines(const std::string& path);
std::string readAll(const std::string& path);

}  // namespace testing_support

#include "tests/support/ProcessSupport.h"

#include <sys/wait.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace testing_support {

std::string quoted(const std::string& text) {
    std::string out = "'";
    for (char c : text)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

int run(const std::string& command) {
    const int status = std::system(("timeout 120 sh -c " + quoted(command)).c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string onPrivateDisplay(const std::string& command) {
    return quoted(PARLEY_TEST_SUPPORT_DIR "/on-private-display.sh") + " " + command;
}

std::vector<std::string> readLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string text; std::getline(in, text);)
        lines.push_back(text);
    return lines;
}

std::string readAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

}  // namespace testing_support

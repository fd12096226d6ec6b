// parley-share's arguments (NUL-separated in the input): parsed or refused with a reason, and a
// file URI shares the same files, or is refused alike, as an operand and after --url.
#include "apps/parley-share/ShareCommandLine.h"
#include "platform/core/PathText.h"
#include "tests/fuzz/FuzzSupport.h"

using fuzz_support::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<std::string> arguments(1);
    for (size_t i = 0; i < size; ++i)
        data[i] == 0 ? arguments.emplace_back() : arguments.back() += static_cast<char>(data[i]);
    const ShareCommandLine line = ShareCommandLine::parse(arguments);
    require(line.isValid() || !line.error().empty());
    for (const std::string& argument : arguments) {
        if (platform::PathText::schemeOf(argument) != "file")
            continue;
        const ShareCommandLine operand = ShareCommandLine::parse({argument});
        const ShareCommandLine option = ShareCommandLine::parse({"--url", argument});
        require(operand.isValid() == option.isValid());
        require(operand.files() == option.files());
    }
    return 0;
}

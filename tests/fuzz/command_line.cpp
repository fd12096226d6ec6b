// parley-share's arguments (NUL-separated in the input): parsed or refused with a reason.
#include "apps/parley-share/ShareCommandLine.h"
#include "tests/fuzz/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<std::string> arguments;
    std::string current;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] == 0) {
            arguments.push_back(current);
            current.clear();
        } else {
            current += static_cast<char>(data[i]);
        }
    }
    arguments.push_back(current);
    const ShareCommandLine line = ShareCommandLine::parse(arguments);
    fuzz_support::require(line.isValid() || !line.error().empty());
    return 0;
}

// parley-share's arguments (NUL-separated in the input): parsed or refused with a reason.
#include "apps/parley-share/ShareCommandLine.h"
#include "tests/fuzz/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<std::string> arguments(1);
    for (size_t i = 0; i < size; ++i)
        data[i] == 0 ? arguments.emplace_back() : arguments.back() += static_cast<char>(data[i]);
    const ShareCommandLine line = ShareCommandLine::parse(arguments);
    fuzz_support::require(line.isValid() || !line.error().empty());
    return 0;
}

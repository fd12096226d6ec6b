// The hand-off store's file holding any bytes: it opens, reads, and is replaced by a readable file
// at the next flush.
#include <fstream>

#include "platform/core/DefaultsSuite.h"
#include "tests/fuzz/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const int once = setenv("XDG_CONFIG_HOME", fuzz_support::scratch().c_str(), 1);
    (void)once;
    const std::string path = platform::DefaultsSuite::pathForSuite("fuzz.group");
    std::filesystem::create_directories(path.substr(0, path.rfind('/')));
    std::ofstream(path, std::ios::binary) << fuzz_support::text(data, size);
    const platform::PropertyValue url(std::string("public.url"));
    {
        platform::DefaultsSuite suite("fuzz.group");
        suite.objectForKey("ParleyMacSharePathArray");
        suite.setObject(url, "ParleyMacShareType");
        fuzz_support::require(suite.synchronize());
    }
    const auto type = platform::DefaultsSuite("fuzz.group").objectForKey("ParleyMacShareType");
    fuzz_support::require(type && *type == url);
    return 0;
}

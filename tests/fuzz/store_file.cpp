// The hand-off store's file holding any bytes: it opens, reads, and is replaced by a readable
// file at the next flush.
#include <filesystem>

#include "platform/core/DefaultsSuite.h"
#include "tests/fuzz/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool once = [] {
        setenv("XDG_CONFIG_HOME", fuzz_support::scratch().c_str(), 1);
        return true;
    }();
    (void)once;
    const std::string path = platform::DefaultsSuite::pathForSuite("fuzz.group");
    std::filesystem::create_directories(path.substr(0, path.rfind('/')));
    fuzz_support::writeFile(path, fuzz_support::text(data, size));
    {
        platform::DefaultsSuite suite("fuzz.group");
        suite.objectForKey("ParleyMacSharePathArray");
        suite.setObject(platform::PropertyValue(std::string("public.url")), "ParleyMacShareType");
        fuzz_support::require(suite.synchronize());
    }
    platform::DefaultsSuite reread("fuzz.group");
    const auto type = reread.objectForKey("ParleyMacShareType");
    fuzz_support::require(type && *type == platform::PropertyValue(std::string("public.url")));
    return 0;
}

// A bundle whose Info.plist and string table hold any bytes: identity and texts are read or fall
// back, never crash. The first input byte picks the file under test.
#include <fstream>

#include "platform/core/Bundle.h"
#include "tests/fuzz/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const bool infoPlist = data[0] & 1;
    const std::string bytes = fuzz_support::text(data + 1, size - 1);
    const std::string contents = fuzz_support::scratch() + "/Fuzz.appex/Contents";
    std::filesystem::create_directories(contents + "/Resources/en.lproj");
    std::ofstream(contents + "/Info.plist") << (infoPlist ? bytes : "<plist><dict/></plist>");
    std::ofstream(contents + "/Resources/en.lproj/ShareLocalizable.strings")
        << (infoPlist ? "" : bytes);
    setenv("LANGUAGE", "en", 1);
    platform::Bundle opened(fuzz_support::scratch() + "/Fuzz.appex");
    opened.bundleIdentifier();
    opened.objectForInfoDictionaryKey("TeamIdentifier");
    fuzz_support::require(
        !opened.localizedStringForKey("share_to_friend", "", "ShareLocalizable").empty());
    return 0;
}

// A bundle whose Info.plist and string table hold any bytes: identity and texts are read or
// fall back, never crash. The first input byte picks the file under test.
#include <filesystem>

#include "platform/core/Bundle.h"
#include "tests/fuzz/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    const bool infoPlist = data[0] & 1;
    const std::string bytes = fuzz_support::text(data + 1, size - 1);
    const std::string bundle = fuzz_support::scratch() + "/Fuzz.appex";
    std::filesystem::create_directories(bundle + "/Contents/Resources/en.lproj");
    fuzz_support::writeFile(bundle + "/Contents/Info.plist",
                            infoPlist ? bytes : std::string("<plist><dict/></plist>"));
    fuzz_support::writeFile(bundle + "/Contents/Resources/en.lproj/ShareLocalizable.strings",
                            infoPlist ? std::string() : bytes);
    setenv("LANGUAGE", "en", 1);
    platform::Bundle opened(bundle);
    opened.bundleIdentifier();
    opened.objectForInfoDictionaryKey("TeamIdentifier");
    const std::string text =
        opened.localizedStringForKey("share_to_friend", "", "ShareLocalizable");
    fuzz_support::require(!text.empty());
    return 0;
}

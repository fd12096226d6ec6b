// URL text and file paths: parsing never crashes, and a file URL always names an item by a real
// last component and survives a round trip through its text.
#include "platform/core/Url.h"
#include "tests/fuzz/FuzzSupport.h"

using fuzz_support::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input = fuzz_support::text(data, size);
    if (auto url = platform::Url::URLWithString(input)) {
        url->pathExtension();  // through lastPathComponent
        require(url->absoluteString() == input);
        require(!url->isFileURL() ||
                (!url->path().empty() && url->path().find('\0') == std::string::npos));
    }
    if (input.find('\0') != std::string::npos)
        return 0;
    const platform::Url file = platform::Url::fileURLWithPath("/" + input);
    const std::string name = file.lastPathComponent();
    require(name != "." && name != ".." && !name.empty());
    require(file.path() == "/" || file.path().find("//") == std::string::npos);
    const auto again = platform::Url::URLWithString(file.absoluteString());
    require(again && again->isFileURL() && again->path() == file.path());
    return 0;
}

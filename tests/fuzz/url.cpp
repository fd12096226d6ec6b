// URL text and file paths: parsing never crashes, a file URL always names an item by a real last
// component and survives a round trip through its text, a file URL names what the file URI reader
// names, and percent-decoding what was encoded gives the bytes back.
#include "platform/core/Url.h"
#include "platform/core/PathText.h"
#include "tests/fuzz/FuzzSupport.h"

using fuzz_support::require;
using platform::PathText;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input = fuzz_support::text(data, size);
    const auto url = platform::Url::URLWithString(input);
    if (url) {
        url->pathExtension();  // through lastPathComponent
        require(url->absoluteString() == input);
        require(!url->isFileURL() ||
                (!url->path().empty() && url->path().find('\0') == std::string::npos));
    }
    if (PathText::schemeOf(input) == "file")
        require(PathText::pathOfFileURI(input).has_value() == (url && url->isFileURL()));
    require(PathText::percentDecoded(PathText::percentEncoded(input)) == input);
    const std::string last = PathText::lastPathComponent(input);
    require(last == "/" || last.find('/') == std::string::npos);
    require(last == PathText::lastPathComponent(PathText::withoutTrailingSlashes(input)));
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

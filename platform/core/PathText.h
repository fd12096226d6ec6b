#pragma once

#include <optional>
#include <string>

namespace platform {

// Path and URI text, byte for byte: file names need not be UTF-8, so every function here takes
// and gives raw bytes. The one place where paths and file URIs are encoded, decoded and cut up.
// Qt's path and URL classes hold Unicode text, so of Qt only the byte-array percent functions
// serve here.
class PathText {
  public:
    // |bytes| with every byte but the unreserved characters (letters, digits, "-", ".", "_", "~")
    // and those in |keep| written as "%XX" (upper-case hex).
    static std::string percentEncoded(const std::string& bytes, const std::string& keep = {});
    // |text| with every "%XX" turned into its byte; nullopt when a "%" is not followed by two hex
    // digits.
    static std::optional<std::string> percentDecoded(const std::string& text);

    // |path| without its trailing slashes; "/" (or only slashes) stays "/".
    static std::string withoutTrailingSlashes(const std::string& path);
    // The last component of |path|, trailing slashes ignored: "/a/b/" gives "b", "/" gives "/".
    static std::string lastPathComponent(const std::string& path);
    // The folder that holds |path|'s last component: "/a/b/" gives "/a", "/a" and "/" give "/",
    // a bare name gives ".".
    static std::string folderOf(const std::string& path);

    // The lower-case scheme of "scheme:rest" (a letter, then letters, digits, "+", "-" or "."),
    // or empty when |text| has none.
    static std::string schemeOf(const std::string& text);
    // The path that a local file URI names: "file:///p", "file://localhost/p" (any case) or
    // "file:/p" give "/p", percent-decoded. Raw bytes above 0x7F are taken as they stand (a person
    // may type a name in UTF-8). nullopt for another host, an empty or relative path, a broken
    // escape, an encoded NUL, or a raw blank, control character, "?" or "#" (a desktop escapes
    // these in a name; raw, they would start a query or fragment, which names no file).
    static std::optional<std::string> pathOfFileURI(const std::string& uri);
};

}  // namespace platform

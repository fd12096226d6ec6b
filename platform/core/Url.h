#pragma once

#include <optional>
#include <string>

namespace platform {

// A URL: either a file URL made from a path, or any other absolute URL kept as text.
class Url {
  public:
    // fileURLWithPath: |path| is taken as raw bytes (names need not be UTF-8). A relative path
    // is taken from the current directory; "." and ".." components and repeated or trailing
    // slashes are resolved by the text alone, so the last component always names the item.
    static Url fileURLWithPath(const std::string& path);
    // URLWithString: nullopt when |text| is not an absolute URL with a scheme (checked strictly:
    // ASCII only, no spaces, valid percent-escapes). A file URL is read by
    // PathText::pathOfFileURI and refused when that names no local path.
    static std::optional<Url> URLWithString(const std::string& text);

    bool isFileURL() const { return isFile_; }
    // The URL as text; a file URL is "file://" and the percent-encoded path.
    std::string absoluteString() const;
    // The file system path of a file URL, as raw bytes; empty for other URLs.
    const std::string& path() const { return path_; }
    // Last component of path() (for other URLs, of the URL's decoded path).
    std::string lastPathComponent() const;
    // The host of a URL with an authority ("example.org" in "https://me@example.org:8/a"),
    // without user or port; empty for a file URL and for URLs without one.
    std::string host() const;
    // Text after the last dot of the last path component; empty when there is none.
    std::string pathExtension() const;

  private:
    Url() = default;
    bool isFile_ = false;
    std::string path_;
    std::string text_;
};

}  // namespace platform
